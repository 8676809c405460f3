#pragma once

#include <cstdint>

#include "halvex/platform/mjd/MjdTime.h"

namespace halvex::rtcm3 {

/// How a message tells its time.
enum class EpochScale : std::uint8_t {
    gpsWeek,        ///< GPS, Galileo, QZSS, SBAS, NavIC: of the GPS week
    beidouWeek,     ///< of the BeiDou week
    glonassDay,     ///< of the Moscow day
    glonassInWeek,  ///< the same with the day of the week
};

/// The instant of GPS time nearest to `reference` (GPS, set) at which that clock shows these milliseconds of its week
/// or day. `dayOfWeek` (0 Sunday) counts for glonassInWeek alone. Whole milliseconds stay whole.
[[nodiscard]] SMjdTime nearestTime(EpochScale scale, std::int64_t milliseconds, int dayOfWeek,
                                   const SMjdTime& reference);

}  // namespace halvex::rtcm3
