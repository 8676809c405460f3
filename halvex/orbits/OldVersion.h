#pragma once

#include <string>

#include "halvex/platform/kernix/TraceUtil.h"

namespace halvex {

/// Category bit of trace output about orbits.
inline constexpr std::uint32_t kTraceOrbits = 1024;

/// Notes that `className` was handed a saved form of another version.
inline void traceOldVersion(const char* className, unsigned version) {
    if (!CTraceUtil::IsEnabled(kTraceOrbits)) return;
    CTraceUtil::Trace(kTraceOrbits,
                      className + std::string("::LoadData received old version ") + std::to_string(version));
}

}  // namespace halvex
