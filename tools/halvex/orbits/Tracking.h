#pragma once

#include <map>
#include <string>

#include "tools/halvex/orbits/Sky.h"

namespace halvex::tool {

/// Compares the predicted sky with what a station tracked, epoch by epoch of its observation file. A satellite is
/// tracked when any value of it is there. Systems without any orbit are left out of the judgement.
class Tracking {
public:
    /// Elevation [deg] above which a healthy satellite is expected to be tracked.
    static constexpr double kExpected = 15.0;
    /// Refraction lifts a satellite at the horizon by about 0.6 degrees: one that is tracked deeper than this [deg]
    /// contradicts its orbit.
    static constexpr double kRefraction = -1.0;

    /// Reads the file from `from` to `to`, where these are set. Failure on a fault in it, unless `keepGoing`, and when
    /// there is no epoch.
    Tracking(OrbitFiles& orbits, const Site& site, const std::string& file, const SMjdTime& from, const SMjdTime& to,
             bool keepGoing);

    [[nodiscard]] std::string text() const;
    [[nodiscard]] Json json() const;

private:
    /// Satellite epochs of one system, or of all.
    struct Counts {
        std::uint64_t tracked = 0;
        std::uint64_t below = 0;         ///< of these, predicted below the horizon
        std::uint64_t withoutOrbit = 0;  ///< of these, with no orbit at that time
        std::uint64_t expected = 0;      ///< healthy ones predicted above kExpected
        std::uint64_t met = 0;           ///< of these, tracked

        void add(const Counts& other);
        [[nodiscard]] double share() const { return static_cast<double>(met) / static_cast<double>(expected); }
        [[nodiscard]] std::vector<std::string> row(std::string_view name) const;
        [[nodiscard]] Json json() const;
    };
    /// A satellite that was tracked and should not have been.
    struct Surprise {
        std::uint64_t epochs = 0;
        double lowest = 0.0;  ///< elevation [rad]
        SMjdTime first, last;
    };

    void judge(OrbitFiles& orbits, const CGeoCoord& site, const SMjdTime& t,
               const std::vector<CALN::SCalSatID>& tracked);
    [[nodiscard]] Counts all() const;
    [[nodiscard]] bool agrees() const;

    std::string m_file;
    std::uint64_t m_epochs = 0;
    std::uint64_t m_faults = 0;
    SMjdTime m_first, m_last;
    std::map<CALN::eCALSATSYSTEM, Counts> m_systems;
    std::map<CALN::SCalSatID, Surprise> m_below, m_withoutOrbit;
    std::map<CALN::eCALSATSYSTEM, std::uint64_t> m_leftOut;  // tracked satellite epochs of systems without orbits
};

}  // namespace halvex::tool
