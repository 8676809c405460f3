#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "halvex/platform/caln/SatelliteSystem.h"

namespace halvex::rinex {

/// Highest satellite number of a system that an observation file may name. Wider than the numbers the house works with
/// where receivers do track more: SBAS up to S58 (PRN 158; RINEX 4.01, 3.5), GLONASS up to R31 (five bits in its
/// navigation message). Who takes such satellites over has to leave them out.
[[nodiscard]] unsigned char lastSatelliteInFiles(const SatelliteSystem& system);

/// Reads a satellite of three columns, "G05", "G 5" or, with the letter left blank, " 5" of the system `blankSystem`.
/// The result is empty when it is one, else says what is wrong.
[[nodiscard]] std::optional<std::string> parseSatellite(std::string_view text, char blankSystem, CALN::SCalSatID& id);

/// "G05".
[[nodiscard]] std::string satelliteName(const CALN::SCalSatID& id);

}  // namespace halvex::rinex
