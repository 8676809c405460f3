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

/// The instant (GPS time) nearest to `reference`, which is set, at which a clock of that scale shows `milliseconds` of
/// its week or day; `dayOfWeek` (0 Sunday) is that of glonassInWeek.
[[nodiscard]] SMjdTime instantNear(const SMjdTime& reference, EpochScale scale, std::int64_t milliseconds,
                                   int dayOfWeek = 0);

}  // namespace halvex::rtcm3
