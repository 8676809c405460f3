#pragma once

#include <atomic>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "halvex/platform/Export.h"

/// One thread's entry in the process's list of working threads, for as long as it lives. A host looks through
/// GetThreads() and so learns which threads are there and which have gone silent. Any thread may ask; the entry belongs
/// to the thread that made it.
class HALVEX_EXPORT CWatchdogClient {
public:
    struct Thread {
        std::string info;
        std::uint32_t threadId = 0;
        std::uint32_t allowedSilence = 0;  ///< [ms]
        std::uint64_t silence = 0;         ///< since the last sign of life [ms]
        /// Silent for longer than it may be.
        [[nodiscard]] bool overdue() const { return allowedSilence != 0 && silence > allowedSilence; }
    };

    /// Enters the calling thread. `allowedSilence` [ms] is how long it may go without a sign of life; 0: for ever, as
    /// one may that sleeps until it is needed.
    CWatchdogClient(std::string_view threadInfo, std::uint32_t allowedSilence);
    ~CWatchdogClient() { NotifyWatchdogThisThreadClosing(); }
    CWatchdogClient(const CWatchdogClient&) = delete;
    CWatchdogClient& operator=(const CWatchdogClient&) = delete;

    /// A sign of life.
    void NotifyWatchdog();
    /// Takes the entry out of the list; afterwards signs of life have no effect.
    void NotifyWatchdogThisThreadClosing();

    /// The entries of all threads, in the order in which they came.
    [[nodiscard]] static std::vector<Thread> GetThreads();

private:
    std::string m_info;
    std::uint32_t m_threadId;
    std::uint32_t m_allowedSilence;
    std::atomic<std::uint64_t> m_lastSign;
};
