#include "tools/halvex/signals/SignalPath.h"

#include <cmath>

#include "halvex/platform/caln/KeplerOrbit.h"
#include "tools/halvex/orbits/BroadcastOrbit.h"

namespace halvex::tool {

std::optional<SignalPath> signalPath(const rinex::NavigationRecord& ephemeris, double gpsSeconds,
                                     const ORBIT_COORD& site) {
    constexpr double kUsualTravelTime = 0.075;  // [s]
    SignalPath path;
    double distance = kSpeedOfLight * kUsualTravelTime;
    // A satellite moves along the line of sight by some 3e-6 of the light's way: the second round is good to 0.1 mm,
    // the third to what a double holds.
    for (int round = 0; round < 3; ++round) {
        const double travel = distance / kSpeedOfLight;
        ORBIT_COORD place;
        if (!broadcastPosition(ephemeris, gpsSeconds - travel, place)) return std::nullopt;
        const double angle = kepler::kGps.earthRate * travel;
        const double sine = std::sin(angle);
        const double cosine = std::cos(angle);
        path.from = {cosine * place.x + sine * place.y, cosine * place.y - sine * place.x, place.z};
        const double dx = path.from.x - site.x, dy = path.from.y - site.y, dz = path.from.z - site.z;
        distance = std::sqrt(dx * dx + dy * dy + dz * dz);
    }
    path.range = distance - kSpeedOfLight * broadcastClock(ephemeris, gpsSeconds - distance / kSpeedOfLight);
    return path;
}

}  // namespace halvex::tool
