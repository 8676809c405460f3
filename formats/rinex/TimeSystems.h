#pragma once

#include <optional>

#include "formats/rinex/ObservationHeader.h"
#include "halvex/platform/mjd/MjdTime.h"

namespace halvex::rinex {

/// GPS - UTC [s] at an instant of UTC, from the announcements of the IERS (Bulletin C) up to 1 January 2017; 0 before
/// July 1981. Files carry the past of decades, the process-wide table only the current and the next value.
[[nodiscard]] int gpsMinusUtc(const SMjdTime& utc);

/// BeiDou time is this far behind GPS time [s]. BDS-SIS-ICD-2.1, 3.3.
inline constexpr int kGpsMinusBeiDou = 14;

/// An epoch of a file on the GPS scale. GPS, Galileo, QZSS and NavIC time agree to well under a microsecond; BeiDou
/// time is 14 s behind; files in GLONASS time print UTC (RINEX 4.01, 4.1.3), shifted by `leapSeconds` or, without, by
/// history.
[[nodiscard]] SMjdTime toGpsTime(const SMjdTime& epoch, TimeSystem system, const std::optional<int>& leapSeconds);

}  // namespace halvex::rinex
