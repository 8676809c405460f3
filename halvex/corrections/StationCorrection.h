#pragma once

#include <vector>

#include "halvex/observations/HalvexUniqueID.h"
#include "halvex/platform/caln/CalObservation.h"
#include "halvex/platform/mjd/MjdTime.h"

/// What the network's processing gives for one station at one epoch: its satellites with their phases, from which known
/// ambiguities are taken off. Plain value.
struct CHalvexZ9StationCorrection {
    CHalvexUniqueSiteID stationId;
    SMjdTime epoch;  ///< GPS time
    std::vector<CALN::SCalSatObservation> satellites;

    friend bool operator==(const CHalvexZ9StationCorrection&, const CHalvexZ9StationCorrection&) = default;
};

/// Asks an observation what a producer wants to know of it.
class CNALHalvexObservationZ9Helper {
public:
    static constexpr int kFloat = 1;     ///< the ambiguity is estimated
    static constexpr int kWideLane = 2;  ///< the wide lane is fixed
    static constexpr int kFixed = 3;     ///< the ambiguity is an integer

    /// How far the ambiguity is resolved: 0 not at all, or one of the above.
    [[nodiscard]] static int getAmbiguityFixState(const CALN::SCalObservationFreq& observation) {
        return observation.ambiguityFixState;
    }
};
