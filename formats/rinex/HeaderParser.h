#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "formats/rinex/HeaderFields.h"
#include "formats/rinex/ObservationHeader.h"

namespace halvex::rinex {

/// Takes header records into an ObservationHeader, line by line: those of a file's header, or of one event. It keeps
/// what a record that goes over several lines has announced. Refers to the header it fills.
class HeaderParser {
public:
    enum class Place { fileHeader, event };

    using Fault = HeaderFault;

    HeaderParser(ObservationHeader& header, Place place) : m_header(header), m_place(place) {}

    [[nodiscard]] Fault take(std::string_view line);
    /// To be called behind the last line: what was announced and has not come, what is needed and missing.
    [[nodiscard]] Fault finish();
    /// END OF HEADER has been taken.
    [[nodiscard]] bool ended() const { return m_ended; }
    /// A record that the header has a place for has been taken; comments do not count.
    [[nodiscard]] bool changed() const { return m_changed; }

private:
    struct Record;
    static const std::array<Record, 42> kRecords;

    struct ScaleFactor {
        CALN::eCALSATSYSTEM system = CALN::eCALSATSYSTEM_NONE;
        double factor = 1.0;
        std::vector<ObservationCode> codes;  ///< none: all of the system
    };

    Fault passOver(std::string_view line);
    Fault takeVersion(std::string_view line);
    Fault takeProgram(std::string_view line);
    Fault takeComment(std::string_view line);
    Fault takeMarkerName(std::string_view line);
    Fault takeMarkerNumber(std::string_view line);
    Fault takeMarkerType(std::string_view line);
    Fault takeObserver(std::string_view line);
    Fault takeReceiver(std::string_view line);
    Fault takeAntenna(std::string_view line);
    Fault takePosition(std::string_view line);
    Fault takeAntennaDelta(std::string_view line);
    Fault takeInterval(std::string_view line);
    Fault takeFirstTime(std::string_view line);
    Fault takeLastTime(std::string_view line);
    Fault takeClockOffset(std::string_view line);
    Fault takeStrengthUnit(std::string_view line);
    Fault takeTypes(std::string_view line);
    Fault takeSystemTypes(std::string_view line);
    Fault takeScaleFactor(std::string_view line);
    Fault takePhaseShift(std::string_view line);
    Fault takeGlonassChannels(std::string_view line);
    Fault takeGlonassBiases(std::string_view line);
    Fault takeLeapSeconds(std::string_view line);
    Fault takeWavelengthFactors(std::string_view line);
    Fault takeEnd(std::string_view line);

    Fault takeTime(std::string_view line, std::optional<SMjdTime>& time);
    Fault announce(std::string_view line, std::size_t first, std::size_t width, int most);
    Fault applyScaleFactors();

    ObservationHeader& m_header;
    Place m_place;
    bool m_ended = false;
    bool m_changed = false;
    bool m_hasVersion = false;
    bool m_hasTypes = false;

    /// The record that goes on in the next lines, by its label, and how many entries it still owes.
    std::string_view m_continued;
    int m_owed = 0;
    CALN::eCALSATSYSTEM m_system = CALN::eCALSATSYSTEM_NONE;
    std::vector<std::string> m_types;
    std::vector<ScaleFactor> m_scaleFactors;
    std::size_t m_phaseShift = 0;
};

}  // namespace halvex::rinex
