#pragma once

#include <array>
#include <string_view>

#include "halvex/platform/caln/Frequency.h"
#include "halvex/platform/caln/SatelliteSystem.h"

namespace halvex::rinex {

/// Which tracking attributes of a slot's band go to which value of the slot, the preferred one first. The band itself
/// is halvex::slotBand's. A record holds one value of each kind on a slot; what a file has beside it is counted as
/// lost.
struct SlotSignalOrder {
    std::string_view civil;    ///< codes for pseudorange C: C/A and the other open signals
    std::string_view precise;  ///< codes for pseudorange P: P, and P(Y) with or without codes
    std::string_view phase;    ///< signals for phase, Doppler and C/N0
};

/// The order of one slot; all empty where the slot stays empty.
[[nodiscard]] SlotSignalOrder slotSignalOrder(CALN::eCALSATSYSTEM system, int slot);

/// The attributes that the five values of a slot come from; 0: the value has never been there.
struct SlotSignals {
    char pseudorangeC = 0;
    char pseudorangeP = 0;
    char phase = 0;
    char doppler = 0;
    char cno = 0;

    friend bool operator==(const SlotSignals&, const SlotSignals&) = default;
};

/// All slots of one satellite.
using SatelliteSignals = std::array<SlotSignals, kFrequencySlots>;

/// The preferred signal everywhere: for records of which nothing more is known.
[[nodiscard]] SatelliteSignals preferredSignals(CALN::eCALSATSYSTEM system);

}  // namespace halvex::rinex
