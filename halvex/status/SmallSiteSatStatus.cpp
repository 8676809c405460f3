#include "halvex/status/SmallSiteSatStatus.h"

#include <algorithm>

CHalvexSmallSiteSatStatus::CHalvexSmallSiteSatStatus(const CHalvexSiteSatStatus& status)
    : m_site(status), m_clusterId(status.GetClusterID()), m_epochTime(status.GetEpochTime()) {
    for (const CPrnID::PrnType type : kSystems) {
        unsigned low = 0, mid = 0, high = 0;
        status.GetSatsStatus(type, true, true, low, mid, high);
        SetSatsStatus(type, true, low, mid, high);
    }
}

bool CHalvexSmallSiteSatStatus::SetSatsStatus(CPrnID::PrnType type, bool /*firstFrequency*/, unsigned low, unsigned mid,
                                              unsigned high) {
    const auto found = std::find(kSystems.begin(), kSystems.end(), type);
    if (found == kSystems.end()) return false;
    std::uint8_t* counts = m_counts.data() + static_cast<std::size_t>(found - kSystems.begin()) * kLevels;
    for (const unsigned count : {low, mid, high}) *counts++ = static_cast<std::uint8_t>(std::min(count, 255U));
    return true;
}

bool CHalvexSmallSiteSatStatus::GetSatsStatus(CPrnID::PrnType type, bool /*firstFrequency*/, unsigned& low,
                                              unsigned& mid, unsigned& high) const {
    low = mid = high = 0;
    bool found = false;
    for (std::size_t i = 0; i < kSystems.size(); ++i) {
        if (type != CPrnID::PRN_NONE && type != kSystems[i]) continue;
        low += m_counts[i * kLevels];
        mid += m_counts[i * kLevels + 1];
        high += m_counts[i * kLevels + 2];
        found = true;
    }
    return found;
}
