#pragma once

#include <cstdint>

#include "halvex/platform/Export.h"

namespace os {

/// The calling thread's number as the operating system counts them.
[[nodiscard]] HALVEX_EXPORT std::uint32_t currentThreadId();

}  // namespace os
