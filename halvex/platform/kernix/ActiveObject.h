#pragma once

#include <cstdint>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>

#include "halvex/platform/Export.h"
#include "halvex/platform/os/Event.h"

/// A thread and the event that asks it to stop. The thread function waits for that event among its own and returns when
/// it is announced. StartThread() and StopThread() may be called by any thread, but not by the thread function.
class HALVEX_EXPORT CActiveObject {
public:
    using ThreadFunction = std::uint32_t (*)(void* parameter);

    /// Does not start the thread. `stopTimeout` [ms] is how long stopping may take before it is logged.
    CActiveObject(std::string_view name, ThreadFunction function, void* parameter, std::uint32_t stopTimeout);
    /// Stops the thread.
    ~CActiveObject();
    CActiveObject(const CActiveObject&) = delete;
    CActiveObject& operator=(const CActiveObject&) = delete;

    /// Starts the thread; `file`, `line` and `caller` say who did, in the log when it fails. True when it runs, also
    /// when it did before; false when the system has no thread to give.
    bool StartThread(const char* file, int line, const char* caller);
    /// Announces the stop event and waits until the thread has ended, however long that takes: a thread cannot be taken
    /// away. One that takes longer than the time allowed is logged (level 3), and the result is false.
    bool StopThread();
    /// Announced from StopThread() until the next start.
    [[nodiscard]] os::Event& GetStopHandle() { return m_stop; }

    /// Names a thread of this process, in the first 15 characters.
    static void SetThreadName(std::uint32_t threadId, std::string_view name);

private:
    const std::string m_name;
    const ThreadFunction m_function;
    void* const m_parameter;
    const std::uint32_t m_stopTimeout;
    std::mutex m_mutex;  // guards the thread
    std::thread m_thread;
    os::Event m_stop{os::Event::Reset::manual};
    os::Event m_ended{os::Event::Reset::manual};
};
