#include "halvex/platform/caln/SsrAllCorrections.h"

#include <algorithm>

namespace CALN {

SSRAllCorrMsgT::~SSRAllCorrMsgT() = default;

void SSRAllCorrMsgT::getDataAvlblty(ebfSSRContent* words, bool clear, bool entriesOnly, ebfSSRContent mask) const {
    if (clear) std::fill_n(words, kSystemSlots, ebfSSRContent{});
    const auto note = [=](int index, ebfSSRContent bit, const auto& slot) {
        if (slot == nullptr || (entriesOnly && slot->entries.empty())) return;
        words[index] = static_cast<ebfSSRContent>(words[index] | (bit & mask));
    };
    note(0, ebfSSR_VERTICAL_TROPOSPHERE, vertTropo);
    note(0, ebfSSR_VERTICAL_IONOSPHERE, vertIono);
    note(0, ebfSSR_BASE_COORDINATES, baseCoords);
    note(0, ebfSSR_NETWORK_GEOMETRY, netGeometry);
    for (int system = 1; system < kSystemSlots; ++system) {
        const auto i = static_cast<std::size_t>(system);
        note(system, ebfSSR_ORBIT, orbit[i]);
        note(system, ebfSSR_CLOCK, clock[i]);
        note(system, ebfSSR_HIGH_RATE_CLOCK, highRateClock[i]);
        note(system, ebfSSR_CODE_BIAS, codeBias[i]);
        note(system, ebfSSR_PHASE_BIAS, phaseBias[i]);
        note(system, ebfSSR_SLANT_TROPOSPHERE, slantTropo[i]);
        note(system, ebfSSR_SLANT_IONOSPHERE, slantIono[i]);
        note(system, ebfSSR_SIGNALS, signal[i]);
    }
}

}  // namespace CALN
