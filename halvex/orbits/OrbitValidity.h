#pragma once

#include "halvex/orbits/HalvexOrbitBase.h"
#include "halvex/time/SatelliteTime.h"

namespace halvex {

/// `t` minus `reference` [s]. The unset instant stands for `now`.
inline double secondsFromReference(const mjd::time& t, const SMjdTime& reference, CSatelliteTime now) {
    if (t != SMjdTime(0.0)) now = SMjdTime(t.GetGpsWeek(), t.GetGpsSeconds());
    return now.GetDifferenceInSeconds(reference);
}

/// Two weeks: beyond, no orbit is used.
inline constexpr double kOrbitValiditySeconds = IHalvexOrbitBase::AlmanacValidityGPS;

}  // namespace halvex
