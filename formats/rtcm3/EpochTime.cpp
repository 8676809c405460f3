#include "formats/rtcm3/EpochTime.h"

#include <cmath>

#include "formats/rinex/TimeSystems.h"

namespace halvex::rtcm3 {
namespace {

constexpr double kDay = 86400000.0;  // [ms]
constexpr double kWeek = 7 * kDay;
constexpr double kMoscowAhead = 3 * 3600000.0;

/// The instant nearest to `reference` that comes again every `period`, one of them `behind` the reference [ms]. Whole
/// milliseconds stay whole.
SMjdTime nearest(const SMjdTime& reference, double behind, double period) {
    SMjdTime time = reference;
    time.AddMilliseconds(std::remainder(behind, period));
    return time;
}

}  // namespace

SMjdTime instantNear(const SMjdTime& reference, EpochScale scale, std::int64_t milliseconds, int dayOfWeek) {
    constexpr double kSecond = 1000.0;
    const double behind = static_cast<double>(milliseconds) - reference.GetGpsWeekMilliseconds();
    if (scale == EpochScale::gpsWeek) return nearest(reference, behind, kWeek);
    if (scale == EpochScale::beidouWeek) return nearest(reference, behind + rinex::kGpsMinusBeiDou * kSecond, kWeek);
    SMjdTime utc = reference;
    utc.SubtractSeconds(rinex::gpsMinusUtc(reference));
    const double ofMoscow = behind + rinex::gpsMinusUtc(utc) * kSecond - kMoscowAhead;
    if (scale == EpochScale::glonassDay) return nearest(reference, ofMoscow, kDay);
    return nearest(reference, dayOfWeek * kDay + ofMoscow, kWeek);
}

}  // namespace halvex::rtcm3
