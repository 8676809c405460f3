#include "formats/rinex/TimeSystems.h"

#include <algorithm>
#include <array>

namespace halvex::rinex {

int gpsMinusUtc(const SMjdTime& utc) {
    // First day of each new value; the value is the number of days passed.
    static constexpr std::array<std::int32_t, 18> kSteps = {
        44786, 45151, 45516, 46247, 47161, 47892, 48257, 48804, 49169,
        49534, 50083, 50630, 51179, 53736, 54832, 56109, 57204, 57754,
    };
    return static_cast<int>(std::upper_bound(kSteps.begin(), kSteps.end(), utc.GetMjdDay()) - kSteps.begin());
}

SMjdTime toGpsTime(const SMjdTime& epoch, TimeSystem system, const std::optional<int>& leapSeconds) {
    SMjdTime gps = epoch;
    if (system == TimeSystem::beidou) gps.AddSeconds(kGpsMinusBeiDou);
    if (system == TimeSystem::glonass) gps.AddSeconds(leapSeconds.value_or(gpsMinusUtc(epoch)));
    return gps;
}

}  // namespace halvex::rinex
