#include "halvex/platform/os/Thread.h"

#ifdef __linux__
#include <fcntl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <string>
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

void setThreadName([[maybe_unused]] std::uint32_t threadId, [[maybe_unused]] std::string_view name) {
#ifdef __linux__
    const std::string file = "/proc/self/task/" + std::to_string(threadId) + "/comm";
    const int descriptor = ::open(file.c_str(), O_WRONLY | O_CLOEXEC);
    if (descriptor < 0) return;
    (void)!::write(descriptor, name.data(), name.size());  // a thread without a name works as well
    ::close(descriptor);
#endif
}

}  // namespace os
