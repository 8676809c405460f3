#pragma once

#include <cstdint>
#include <string_view>

#include "halvex/platform/Export.h"

namespace os {

/// The calling thread's number as the operating system counts them.
[[nodiscard]] HALVEX_EXPORT std::uint32_t currentThreadId();

/// Names a thread of this process for debuggers and process lists, which show the first 15 characters. Where the system
/// has no names for threads, or no such thread, nothing happens.
HALVEX_EXPORT void setThreadName(std::uint32_t threadId, std::string_view name);

}  // namespace os
