#pragma once

#include <string>

#include "formats/rinex/ObservationHeader.h"

namespace halvex::rinex {

/// The header as a RINEX 3.05 file has it: lines of at most 80 columns, each ended by LF, from RINEX VERSION / TYPE to
/// END OF HEADER; lists that do not fit one line are continued. Records with nothing to say are left out, and so are
/// types of RINEX 2 that no code stands for.
///
/// Texts are cut to their columns, control characters become blanks, and a number too wide for its columns is left
/// blank. Wavelength factors have no place in RINEX 3 and are not written; the time system stands in the record of the
/// first observation, so without that time the reader takes the default of the file's system.
[[nodiscard]] std::string headerText(const ObservationHeader& header);

}  // namespace halvex::rinex
