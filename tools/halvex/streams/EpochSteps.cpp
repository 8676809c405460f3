#include "tools/halvex/streams/EpochSteps.h"

#include <algorithm>
#include <cmath>

namespace halvex::tool {

void EpochSteps::add(const SMjdTime& time) {
    ++m_epochs;
    if (!m_last) {
        m_first = time;
    } else {
        const auto step = std::llround(time.GetDifferenceInSeconds(*m_last) * 1000.0);
        if (m_steps.count(step) != 0 || m_steps.size() < kMostSteps) {
            Step& entry = m_steps[step];
            if (++entry.count <= kMostGaps) entry.starts.push_back(*m_last);
        }
    }
    m_last = time;
}

std::int64_t EpochSteps::commonStep() const {
    std::int64_t step = 0;
    std::uint64_t most = 0;
    for (const auto& [length, entry] : m_steps) {
        if (length > 0 && entry.count > most) {
            most = entry.count;
            step = length;
        }
    }
    return step;
}

std::uint64_t EpochSteps::gapCount() const {
    std::uint64_t count = 0;
    for (const auto& [step, entry] : m_steps) count += isGap(step) ? entry.count : 0;
    return count;
}

std::vector<EpochSteps::Gap> EpochSteps::gaps() const {
    std::vector<Gap> list;
    for (const auto& [step, entry] : m_steps) {
        if (!isGap(step)) continue;
        for (const SMjdTime& start : entry.starts) list.push_back({start, static_cast<double>(step) / 1000.0});
    }
    std::sort(list.begin(), list.end(), [](const Gap& a, const Gap& b) { return a.after < b.after; });
    if (list.size() > kMostGaps) list.resize(kMostGaps);
    return list;
}

std::uint64_t EpochSteps::backwardSteps() const {
    std::uint64_t count = 0;
    for (const auto& [step, entry] : m_steps) count += step <= 0 ? entry.count : 0;
    return count;
}

}  // namespace halvex::tool
