#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace halvex::nmea {

/// Three letters of a sentence: "GGA" of "$GPGGA,...". Empty when the line is too short to have them.
[[nodiscard]] std::string_view sentenceId(std::string_view line);

/// What is wrong with one sentence, without its line end; empty when it is good. Every sentence has its frame and
/// checksum looked at. GGA, GGQ, LLQ and LMM, as CNMEAFormat writes them, also have their fields counted and each one
/// held against its form and range: a time of day and a date that exist, angles that lie on the Earth, units,
/// hemispheres, no value where quality 0 leaves none.
[[nodiscard]] std::optional<std::string> faultOf(std::string_view line);

}  // namespace halvex::nmea
