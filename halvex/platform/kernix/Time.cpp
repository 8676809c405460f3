#include "halvex/platform/kernix/Time.h"

#include <atomic>
#include <cmath>

namespace TIME {
namespace {

std::atomic<double> deltaSeconds{0.0};
static_assert(std::atomic<double>::is_always_lock_free);

}  // namespace

void SetDeltaUTCTime(double seconds) {
    if (std::isfinite(seconds)) deltaSeconds.store(seconds, std::memory_order_relaxed);
}

double GetDeltaUTCTime() {
    return deltaSeconds.load(std::memory_order_relaxed);
}

}  // namespace TIME
