#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <vector>

#include "halvex/platform/mjd/MjdTime.h"

namespace halvex::tool {

/// How a stream of epochs goes on: its interval, which is the commonest step, and its gaps, longer than one and a half
/// of these. Memory is bounded, however long the stream is.
class EpochSteps {
public:
    struct Gap {
        SMjdTime after;
        double seconds = 0.0;
    };

    void add(const SMjdTime& time);

    [[nodiscard]] std::uint64_t epochs() const { return m_epochs; }
    [[nodiscard]] const std::optional<SMjdTime>& first() const { return m_first; }
    [[nodiscard]] const std::optional<SMjdTime>& last() const { return m_last; }
    [[nodiscard]] double interval() const { return static_cast<double>(commonStep()) / 1000.0; }  ///< [s], 0: none
    [[nodiscard]] std::uint64_t gapCount() const;
    /// The first gaps in the order of their time.
    [[nodiscard]] std::vector<Gap> gaps() const;
    /// Epochs that are not later than the one before.
    [[nodiscard]] std::uint64_t backwardSteps() const;

private:
    static constexpr std::size_t kMostSteps = 1000;
    static constexpr std::size_t kMostGaps = 10;
    struct Step {
        std::uint64_t count = 0;
        std::vector<SMjdTime> starts;
    };

    [[nodiscard]] std::int64_t commonStep() const;
    [[nodiscard]] bool isGap(std::int64_t step) const { return 2 * step > 3 * commonStep(); }

    std::uint64_t m_epochs = 0;
    std::optional<SMjdTime> m_first, m_last;
    std::map<std::int64_t, Step> m_steps;  // by length [ms]
};

}  // namespace halvex::tool
