#pragma once

#include <optional>

#include "formats/rinex/NavigationRecords.h"
#include "halvex/platform/caln/Coordinates.h"

namespace halvex::tool {

inline constexpr double kSpeedOfLight = 299792458.0;  ///< [m/s]

/// The way of a signal from a satellite to a site.
struct SignalPath {
    double range = 0.0;  ///< from where the satellite was when it left, less the satellite's clock offset [m]
    ORBIT_COORD from;    ///< that place, in the Earth-fixed frame of the arrival
};

/// Of a signal that arrives at a GPS second of the week; empty when the elements are no orbit.
[[nodiscard]] std::optional<SignalPath> signalPath(const rinex::NavigationRecord& ephemeris, double gpsSeconds,
                                                   const ORBIT_COORD& site);

}  // namespace halvex::tool
