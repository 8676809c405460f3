#pragma once

#include <cstdint>

#include "halvex/platform/Export.h"
#include "halvex/platform/os/DateTypes.h"
#include "halvex/platform/os/Replaceable.h"

namespace os {

/// Where the process takes its time from. Called from any thread at once.
class HALVEX_EXPORT Clock {
public:
    virtual ~Clock();
    /// Now, UTC.
    [[nodiscard]] virtual SYSTEMTIME utcTime() const = 0;
    /// Now, in the local time zone (the environment's TZ, else the system's).
    [[nodiscard]] virtual SYSTEMTIME localTime() const = 0;
    /// Milliseconds since an arbitrary start: monotonic, never 0.
    [[nodiscard]] virtual std::uint64_t tickCount() const = 0;
};

/// Puts `clock` in the place of the process's clock and returns the one before it; null brings the system's clock back.
/// The caller keeps the object alive as long as it is installed.
HALVEX_EXPORT Clock* setClock(Clock* clock);

/// Installs a clock for a scope.
class ScopedClock : public ScopedService<Clock> {
public:
    explicit ScopedClock(Clock& clock) : ScopedService(&setClock, clock) {}
};

/// The three readings of the clock in force, read afresh at each call.
HALVEX_EXPORT SYSTEMTIME GetSystemTime();
HALVEX_EXPORT SYSTEMTIME GetLocalTime();
HALVEX_EXPORT std::uint64_t GetTickCount64();

}  // namespace os
