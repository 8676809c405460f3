#include "formats/rtcm3/EpochTime.h"

#include <cmath>

#include "formats/rinex/TimeSystems.h"

namespace halvex::rtcm3 {
namespace {

constexpr double kDay = 86400000.0;  // [ms]
constexpr double kWeek = 7.0 * kDay;
constexpr double kMoscowAhead = 3 * 3600000.0;

}  // namespace

SMjdTime nearestTime(EpochScale scale, std::int64_t milliseconds, int dayOfWeek, const SMjdTime& reference) {
    double ofWeek = static_cast<double>(milliseconds);
    double period = kWeek;
    if (scale == EpochScale::beidouWeek) {
        ofWeek += rinex::kGpsMinusBeiDou * 1000.0;
    } else if (scale != EpochScale::gpsWeek) {
        SMjdTime utc = reference;
        utc.SubtractSeconds(rinex::gpsMinusUtc(reference));
        ofWeek += rinex::gpsMinusUtc(utc) * 1000.0 - kMoscowAhead;
        if (scale == EpochScale::glonassDay) {
            period = kDay;
        } else {
            ofWeek += dayOfWeek * kDay;
        }
    }
    SMjdTime time = reference;
    time.AddMilliseconds(std::remainder(ofWeek - reference.GetGpsWeekMilliseconds(), period));
    return time;
}

}  // namespace halvex::rtcm3
