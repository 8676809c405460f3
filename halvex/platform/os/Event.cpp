#include "halvex/platform/os/Event.h"

#include <condition_variable>

namespace os {

/// Where one thread sleeps while it waits for several events.
class EventWaiter {
public:
    void wake() {
        const std::lock_guard lock(m_mutex);
        m_woken = true;
        m_condition.notify_one();
    }
    /// False when `until` has passed.
    bool sleep(std::optional<std::chrono::steady_clock::time_point> until) {
        std::unique_lock lock(m_mutex);
        const auto woken = [this] { return m_woken; };
        if (!until) {
            m_condition.wait(lock, woken);
        } else if (!m_condition.wait_until(lock, *until, woken)) {
            return false;
        }
        m_woken = false;
        return true;
    }

private:
    std::mutex m_mutex;
    std::condition_variable m_condition;
    bool m_woken = false;
};

bool Event::Set() {
    if (m_announced.exchange(true)) return true;
    const std::lock_guard lock(m_mutex);
    for (EventWaiter* waiter : m_waiters) waiter->wake();
    return true;
}

bool Event::take() {
    return m_reset == Reset::manual ? m_announced.load() : m_announced.load() && m_announced.exchange(false);
}

void Event::enter(EventWaiter& waiter) {
    const std::lock_guard lock(m_mutex);
    m_waiters.push_back(&waiter);
}

void Event::leave(EventWaiter& waiter) {
    const std::lock_guard lock(m_mutex);
    std::erase(m_waiters, &waiter);
}

std::optional<std::size_t> waitAny(std::span<Event* const> events, std::optional<std::chrono::milliseconds> timeout) {
    const auto taken = [events]() -> std::optional<std::size_t> {
        for (std::size_t i = 0; i < events.size(); ++i) {
            if (events[i]->take()) return i;
        }
        return std::nullopt;
    };
    if (const auto index = taken()) return index;

    std::optional<std::chrono::steady_clock::time_point> until;
    if (timeout) until = std::chrono::steady_clock::now() + *timeout;
    EventWaiter waiter;
    for (Event* event : events) event->enter(waiter);
    std::optional<std::size_t> index;
    // Entered first, looked again afterwards: an announcement is either seen here or wakes the waiter.
    do {
        index = taken();
    } while (!index && waiter.sleep(until));
    for (Event* event : events) event->leave(waiter);
    return index;
}

}  // namespace os
