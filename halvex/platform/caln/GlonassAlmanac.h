#pragma once

#include "halvex/platform/caln/AlmanacRecords.h"
#include "halvex/platform/caln/Coordinates.h"

namespace halvex::glonass {

/// The orbit part of a GLONASS almanac.
struct AlmanacElements {
    double lambda, deltaI, e, omega, deltaT;
};

/// WGS-84 position [m] `dt` seconds after the node passage that the almanac is given for. The plain orbit with secular
/// rates of node and perigee from the Earth's oblateness.
[[nodiscard]] ORBIT_COORD almanacPosition(const AlmanacElements& elements, double dt);

}  // namespace halvex::glonass
