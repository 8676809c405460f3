#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <tuple>
#include <variant>
#include <vector>

#include "formats/rinex/NavigationReader.h"
#include "halvex/orbits/HalvexElevAziCalculator.h"
#include "tools/halvex/Tool.h"

namespace halvex::tool {

/// Reads navigation files (RINEX), RTCM 3 streams and almanacs (YUMA, SEM) into an elevation-azimuth calculator,
/// through the library's classes: nothing is taken that IsDataValid refuses, that lies more than a day ahead of the
/// clock, or that has another orbit than a record with the same satellite, message, reference time and issue. Such
/// faults end the reading with a Failure or, with `keepGoing`, are counted. A file that cannot be read at all is a
/// fault, too. Disabled systems are read over.
class OrbitFiles {
public:
    /// Called with each ephemeris that is taken, after it is.
    using Listener = std::function<void(const rinex::NavigationRecord&)>;

    /// The weeks of almanacs and streams are completed to the latest that are not ahead of `when`; unset: now.
    explicit OrbitFiles(bool keepGoing, const SMjdTime& when = {}, Listener listener = nullptr);

    void read(const std::vector<std::string>& files);

    [[nodiscard]] CHalvexElevAziCalculator& calculator() { return m_calculator; }
    /// First and last reference time of what was taken: of the ephemerides or, without any, of the almanacs.
    [[nodiscard]] const SMjdTime& first() const { return span().first; }
    [[nodiscard]] const SMjdTime& last() const { return span().last; }
    /// Satellites with an orbit, by system and number.
    [[nodiscard]] const std::map<CALN::SCalSatID, std::uint64_t>& satellites() const { return m_satellites; }
    [[nodiscard]] std::uint64_t taken() const { return m_taken; }

    /// What was read: records by kind, those that are read over, duplicates, faults. For people and for --json.
    [[nodiscard]] std::string text() const;
    [[nodiscard]] Json json() const;

private:
    /// What tells one upload from another.
    using Issue = std::tuple<CALN::SCalSatID, rinex::MessageKind, std::int64_t, unsigned>;

    struct Span {
        void add(const SMjdTime& time) {
            if (!first.IsSet() || time < first) first = time;
            if (time > last) last = time;
        }
        SMjdTime first, last;
    };
    [[nodiscard]] const Span& span() const { return m_ephemerides.first.IsSet() ? m_ephemerides : m_almanacs; }

    /// Where a record came from and what it is.
    struct Origin {
        std::string place;  // "FILE:LINE", "FILE: byte OFFSET"
        CALN::SCalSatID satellite;
        rinex::MessageKind kind = rinex::MessageKind::lnav;
    };

    void readNavigation(LineReader lines);
    void readStream(ByteInput input);
    void readAlmanac(LineReader lines);
    void take(const Origin& origin, const rinex::NavigationRecord& record);
    template <class Ephemeris, class Record>
    void takeEphemeris(const Origin& origin, const Record& record, unsigned issue);
    /// A disabled system's orbit is counted as read over.
    bool isPassedOver(CALN::eCALSATSYSTEM system);
    void passOver(const std::string& what) { ++m_passedOver[what]; }
    void fault(const std::string& text);

    bool m_keepGoing;
    Listener m_listener;
    CHalvexElevAziCalculator m_calculator;
    std::map<Issue, ORBIT_COORD> m_issues;  // where each puts its satellite at its reference time
    std::map<CALN::SCalSatID, std::uint64_t> m_satellites;
    std::map<std::string, std::uint64_t> m_passedOver;
    std::uint64_t m_taken = 0;
    std::uint64_t m_duplicates = 0;
    std::uint64_t m_faults = 0;
    std::string m_firstFault;
    Span m_ephemerides, m_almanacs;
    SMjdTime m_almanacReference, m_latestPlausible;
};

}  // namespace halvex::tool
