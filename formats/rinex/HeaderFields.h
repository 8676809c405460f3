#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "formats/io/Columns.h"
#include "formats/io/FixedNumber.h"

namespace halvex::rinex {

/// Where the label of a header line begins, and the columns that a line has.
inline constexpr std::size_t kLabelColumn = 60;
inline constexpr std::size_t kHeaderColumns = 80;
/// Lines; a file whose header goes on like this is none.
inline constexpr std::uint64_t kLongestHeader = 20000;

/// A fault in words; empty when all is well.
using HeaderFault = std::optional<std::string>;

/// Text without the blanks around it.
[[nodiscard]] inline std::string textAt(std::string_view line, std::size_t first, std::size_t width) {
    return std::string(withoutBlanks(columns(line, first, width)));
}

[[nodiscard]] inline std::string notANumber(std::string_view line, std::size_t first, std::size_t width) {
    return "columns " + std::to_string(first + 1) + " to " + std::to_string(first + width) + ": \"" +
           std::string(columns(line, first, width)) + "\" is no number";
}

/// Reads a number into `value`, which keeps what it has where the columns are blank.
[[nodiscard]] inline HeaderFault readNumber(std::string_view line, std::size_t first, std::size_t width,
                                            double& value) {
    if (parseDecimal(columns(line, first, width), value) != Field::bad) return std::nullopt;
    return notANumber(line, first, width);
}
[[nodiscard]] inline HeaderFault readNumber(std::string_view line, std::size_t first, std::size_t width, int& value) {
    if (parseInteger(columns(line, first, width), value) != Field::bad) return std::nullopt;
    return notANumber(line, first, width);
}

/// Reads the version of a RINEX VERSION / TYPE line; a fault when it is none that the readers know.
[[nodiscard]] HeaderFault readVersion(std::string_view line, double& version);

}  // namespace halvex::rinex
