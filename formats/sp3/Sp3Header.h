#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "formats/sp3/Sp3Reader.h"

namespace halvex::sp3 {

/// Reads a date and time "2022  1  1  0  0  0.00000000" that begins in column 3 of a line, as it is printed. Empty when
/// it is none.
[[nodiscard]] std::optional<SMjdTime> parseTime(std::string_view line);

/// The instant on the GPS scale. UTC and GLONASS files print UTC; TAI is 19 s ahead of GPS time.
[[nodiscard]] SMjdTime toGpsTime(const SMjdTime& printed, TimeSystem system);

/// The header, line by line. take() and finish() say what is wrong; the result is empty when all is well.
class HeaderParser {
public:
    explicit HeaderParser(Header& header) : m_header(header) {}

    [[nodiscard]] std::optional<std::string> take(std::string_view line);
    /// Behind the last line of the header: what is missing; completes the header.
    [[nodiscard]] std::optional<std::string> finish();

private:
    [[nodiscard]] std::optional<std::string> takeFirst(std::string_view line);
    [[nodiscard]] std::optional<std::string> takeSecond(std::string_view line);
    [[nodiscard]] std::optional<std::string> takeSatellites(std::string_view line);
    [[nodiscard]] std::optional<std::string> takeAccuracies(std::string_view line);
    [[nodiscard]] std::optional<std::string> takeDescription(std::string_view line);

    Header& m_header;
    std::vector<std::string> m_names;  ///< of the satellite list, in its order
    std::vector<int> m_exponents;      ///< of their accuracies
    int m_announced = 0;               ///< satellites
    int m_lines = 0;
    bool m_described = false;  ///< file type and time system are known
};

}  // namespace halvex::sp3
