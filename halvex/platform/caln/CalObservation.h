#pragma once

#include <vector>

#include "halvex/platform/caln/Frequency.h"

namespace CALN {

/// One satellite's observation on one carrier, as the network's processing hands it out. Plain value.
struct SCalObservationFreq {
    eCALFREQUENCY frequency = eCALFREQUENCY_L1;
    double phase = 0.0;        ///< [cycles], the ambiguity already taken off where it is known
    double pseudorange = 0.0;  ///< [m]
    bool phaseValid = false;
    bool pseudorangeValid = false;
    int ambiguityFixState = 0;  ///< as CNALHalvexObservationZ9Helper says

    [[nodiscard]] bool isPhaseValid() const { return phaseValid; }
    [[nodiscard]] bool isPseudorangeValid() const { return pseudorangeValid; }

    friend bool operator==(const SCalObservationFreq&, const SCalObservationFreq&) = default;
};

/// One satellite's observations of an epoch. Plain value.
struct SCalSatObservation {
    SCalSatID satId;
    unsigned char issueOfData = 0;  ///< of the broadcast ephemeris that its processing used
    std::vector<SCalObservationFreq> frequencies;

    friend bool operator==(const SCalSatObservation&, const SCalSatObservation&) = default;
};

}  // namespace CALN
