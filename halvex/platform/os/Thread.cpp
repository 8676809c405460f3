#include "halvex/platform/os/Thread.h"

#ifdef __linux__
#include <sys/syscall.h>
#include <unistd.h>
#else
#include <functional>
#include <thread>
#endif

namespace os {

std::uint32_t currentThreadId() {
#ifdef __linux__
    thread_local const auto id = static_cast<std::uint32_t>(::syscall(SYS_gettid));
#else
    thread_local const auto id = static_cast<std::uint32_t>(std::hash<std::thread::id>()(std::this_thread::get_id()));
#endif
    return id;
}

}  // namespace os
