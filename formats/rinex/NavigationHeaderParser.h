#pragma once

#include <string_view>

#include "formats/rinex/HeaderFields.h"
#include "formats/rinex/NavigationRecords.h"

namespace halvex::rinex {

/// Takes the lines of a navigation file's header into a NavigationHeader, one by one. Refers to the header it fills.
class NavigationHeaderParser {
public:
    explicit NavigationHeaderParser(NavigationHeader& header) : m_header(header) {}

    [[nodiscard]] HeaderFault take(std::string_view line);
    /// END OF HEADER has been taken.
    [[nodiscard]] bool ended() const { return m_ended; }

private:
    struct Record;

    HeaderFault takeVersion(std::string_view line);
    HeaderFault takeProgram(std::string_view line);
    HeaderFault takeComment(std::string_view line);
    HeaderFault takeIonosphere(std::string_view line);
    HeaderFault takeAlpha(std::string_view line);
    HeaderFault takeBeta(std::string_view line);
    HeaderFault takeTimeSystem(std::string_view line);
    HeaderFault takeDeltaUtc(std::string_view line);
    HeaderFault takeSystemTime(std::string_view line);
    HeaderFault takeSbasUtc(std::string_view line);
    HeaderFault takeLeapSeconds(std::string_view line);
    HeaderFault takeEnd(std::string_view line);
    HeaderFault passOver(std::string_view line);
    HeaderFault takeIonosphere2(std::string_view line, const char* type);

    NavigationHeader& m_header;
    bool m_hasVersion = false;
    bool m_ended = false;
};

}  // namespace halvex::rinex
