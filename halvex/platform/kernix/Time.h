#pragma once

#include "halvex/platform/Export.h"

/// Offset of the process's wall clock from the network's reference clock. Process-wide, any thread, atomic.
namespace TIME {

/// `seconds`: the wall clock minus the reference clock; subtracting it from a reading gives the reference's time. What
/// is not a finite number is ignored.
HALVEX_EXPORT void SetDeltaUTCTime(double seconds);
/// The offset in force [s], 0 until one was set.
HALVEX_EXPORT double GetDeltaUTCTime();

}  // namespace TIME
