#pragma once

#include <atomic>
#include <chrono>
#include <cstddef>
#include <mutex>
#include <optional>
#include <span>
#include <vector>

#include "halvex/platform/Export.h"

namespace os {

class EventWaiter;

/// Something that threads announce and others wait for. Announcing twice before anybody has noticed is announcing once.
/// Any thread may do anything at any time; who waits must have returned before the event dies.
class HALVEX_EXPORT Event {
public:
    enum class Reset {
        automatic,  ///< whoever is told of it takes it away: one waiter goes on for each announcement
        manual,     ///< it stays announced, for everybody, until Clear()
    };

    explicit Event(Reset reset) : m_reset(reset) {}
    Event(const Event&) = delete;
    Event& operator=(const Event&) = delete;

    /// Announces. What this thread did before is seen by the thread that is told. Costs one atomic exchange when the
    /// event stands announced already. True: it never fails here, but may where an event belongs to the system.
    bool Set();
    void Clear() { m_announced.store(false); }
    /// Whether it is announced; does not take it away.
    [[nodiscard]] bool isSet() const { return m_announced.load(); }

private:
    friend HALVEX_EXPORT std::optional<std::size_t> waitAny(std::span<Event* const>,
                                                            std::optional<std::chrono::milliseconds>);
    bool take();
    void enter(EventWaiter& waiter);
    void leave(EventWaiter& waiter);

    const Reset m_reset;
    std::atomic<bool> m_announced{false};
    std::mutex m_mutex;  // guards the list
    std::vector<EventWaiter*> m_waiters;
};

/// Waits until one of `events` is announced and says which: the first in their order. Empty when `timeout` has passed
/// before; without one it waits for ever.
[[nodiscard]] HALVEX_EXPORT std::optional<std::size_t> waitAny(
    std::span<Event* const> events, std::optional<std::chrono::milliseconds> timeout = std::nullopt);

}  // namespace os
