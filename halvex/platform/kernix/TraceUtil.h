#pragma once

#include <atomic>
#include <cstdint>
#include <string_view>

#include "halvex/platform/Export.h"

/// Trace output by category, a bit each. Everything is off until a host switches a category on; a category that is off
/// costs one relaxed load. Lines go to the sink, by default the logger at level 1. Any thread may call.
class HALVEX_EXPORT CTraceUtil {
public:
    using Sink = void (*)(std::uint32_t category, std::string_view text);

    [[nodiscard]] static bool IsEnabled(std::uint32_t category) {
        return (s_enabled.load(std::memory_order_relaxed) & category) != 0;
    }
    /// Switches the categories of `mask` on, all others off; returns the mask before.
    static std::uint32_t SetEnabled(std::uint32_t mask);
    /// Writes `text` when `category` is on.
    static void Trace(std::uint32_t category, std::string_view text);
    /// Installs `sink` and returns the one before; null brings the default back.
    static Sink SetSink(Sink sink);

private:
    static std::atomic<std::uint32_t> s_enabled;
};
