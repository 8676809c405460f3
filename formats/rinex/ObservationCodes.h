#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "formats/rinex/ObservationHeader.h"

namespace halvex::rinex {

/// Code of three characters as it stands in a file of `version`: type, band digit, attribute letter (blank: unknown
/// tracking). Empty when it is none. Before version 3.03 the BeiDou signal B1I is written with band 1; it comes out
/// under band 2, where later versions have it, so that B1C keeps band 1 for itself.
[[nodiscard]] std::optional<ObservationCode> parseObservationCode(std::string_view text, CALN::eCALSATSYSTEM system,
                                                                  double version);

/// The codes of one system for the observation types of a RINEX 2 file ("C1", "P2", ...), column by column. RINEX 2
/// does not say how a signal was tracked. It is taken as this, with phase, Doppler and signal strength following the
/// code that the file has beside them:
///
///   GPS      C1 -> C1C, P1 -> C1W, C2 -> C2X, P2 -> C2W, C5 -> C5X; L1 -> L1C, with P1 and no C1: L1W; L2 -> L2W, with
///            C2 and no P2: L2X; L5 -> L5X
///   GLONASS  C1 -> C1C, P1 -> C1P, C2 -> C2C, P2 -> C2P; L1 -> L1C, with P1 and no C1: L1P; L2 -> L2C, with P2: L2P
///   Galileo  attribute X on bands 1, 5, 6, 7, 8
///   SBAS     C on band 1, X on band 5
///   BeiDou   attribute I; bands 1 and 2 are both B1I (band 2), 6 and 7 as they are
///   QZSS     C on band 1, X on bands 2, 5, 6
///   NavIC    A on band 5
///
/// A type that none of this covers keeps its own letters and a blank attribute.
[[nodiscard]] std::vector<ObservationCode> codesOfTypes(const std::vector<std::string>& types,
                                                        CALN::eCALSATSYSTEM system);

}  // namespace halvex::rinex
