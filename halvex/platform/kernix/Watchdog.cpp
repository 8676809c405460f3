#include "halvex/platform/kernix/Watchdog.h"

#include <mutex>

#include "halvex/platform/os/Clock.h"
#include "halvex/platform/os/Thread.h"

namespace {

struct ThreadList {
    std::mutex mutex;
    std::vector<const CWatchdogClient*> clients;
};

/// Never destroyed: threads may outlive the end of main().
ThreadList& threadList() {
    static auto* list = new ThreadList;
    return *list;
}

}  // namespace

CWatchdogClient::CWatchdogClient(std::string_view threadInfo, std::uint32_t allowedSilence)
    : m_info(threadInfo),
      m_threadId(os::currentThreadId()),
      m_allowedSilence(allowedSilence),
      m_lastSign(os::GetTickCount64()) {
    ThreadList& list = threadList();
    const std::lock_guard lock(list.mutex);
    list.clients.push_back(this);
}

void CWatchdogClient::NotifyWatchdog() {
    m_lastSign.store(os::GetTickCount64(), std::memory_order_relaxed);
}

void CWatchdogClient::NotifyWatchdogThisThreadClosing() {
    ThreadList& list = threadList();
    const std::lock_guard lock(list.mutex);
    std::erase(list.clients, this);
}

std::vector<CWatchdogClient::Thread> CWatchdogClient::GetThreads() {
    std::vector<Thread> threads;
    ThreadList& list = threadList();
    const std::lock_guard lock(list.mutex);
    const std::uint64_t now = os::GetTickCount64();
    for (const CWatchdogClient* client : list.clients) {
        const std::uint64_t last = client->m_lastSign.load(std::memory_order_relaxed);
        threads.push_back({client->m_info, client->m_threadId, client->m_allowedSilence, now > last ? now - last : 0});
    }
    return threads;
}
