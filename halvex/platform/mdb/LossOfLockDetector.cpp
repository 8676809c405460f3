#include "halvex/platform/mdb/LossOfLockDetector.h"

#include <utility>

namespace MDB {

void CLossOfLockDetector::store(const CPrnIdZ9& satellite, int slot, bool lossOfLock, std::uint16_t lockCount) {
    if (slot < 0 || slot >= halvex::kFrequencySlots) return;
    Signal& signal = m_satellites[satellite][static_cast<std::size_t>(slot)];
    signal.lost = signal.lost || lossOfLock || lockCount < signal.lockCount;
    signal.lockCount = lockCount;
}

bool CLossOfLockDetector::takeLoss(const CPrnIdZ9& satellite, int slot) {
    const auto found = m_satellites.find(satellite);
    if (slot < 0 || slot >= halvex::kFrequencySlots || found == m_satellites.end()) return false;
    return std::exchange(found->second[static_cast<std::size_t>(slot)].lost, false);
}

IObsLossOfLock::~IObsLossOfLock() = default;

}  // namespace MDB
