#include "halvex/observations/ContLockCount.h"

#include <algorithm>

std::uint16_t CContLockCount::getCount(CALN::eCALFREQUENCY frequency, const MDB::CPrnIdZ9& satellite, bool lossOfLock,
                                       const SMjdTime& now) {
    if (frequency >= CALN::kFrequencyCount) return 0;
    SMjdTime& start = m_starts[frequency][satellite];
    if (lossOfLock || start.GetMjdDay() == 0) {
        start = now;
        return 0;
    }
    constexpr double kLast = 65535.0;
    const double fiftieths = std::clamp((now.GetDifferenceInSeconds(start) + 0.025) * 20.0, 0.0, kLast);
    const auto steps = static_cast<std::uint32_t>(fiftieths);
    return static_cast<std::uint16_t>(std::min<std::uint32_t>(steps * 5, 65535));
}

void CContLockCount::Clear() {
    for (auto& starts : m_starts) starts.clear();
}
