#pragma once

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "halvex/platform/kernix/LockFreeSpinLock.h"
#include "halvex/platform/kernix/Monitor.h"

namespace halvex {

/// One level of a CDualPriorityQueue: first in, first out, bounded. Any thread pushes, one thread pops.
///
/// An element is copied once, outside the lock, into an object on the heap; popping moves it out, and the emptied
/// object serves a later element, so that a queue in steady use allocates nothing. Monitor elements: "In" and "Out"
/// count what was pushed and popped, "Size" is what waits.
template <class Element>
class QueueLevel : public CMonitorElementContainer {
public:
    QueueLevel(std::string_view path, std::int64_t maxCount) : CMonitorElementContainer(path), m_maxCount(maxCount) {}

    /// False, with nothing queued, when more elements wait than may.
    bool Push(const Element& element) {
        if (size() > m_maxCount) return false;
        Holder holder = emptyHolder();
        if (holder) {
            *holder = element;
        } else {
            holder = std::make_unique<Element>(element);
        }
        {
            const std::lock_guard lock(m_lock);
            m_waiting.push_back(std::move(holder));
            m_pushed.fetch_add(1);
        }
        return true;
    }

    /// Moves the oldest element out; false when there is none. What `element` held is overwritten.
    bool Pop(Element& element) {
        if (empty()) return false;
        if (m_next == m_taken.size()) takeAll();
        if (m_next == m_taken.size()) return false;
        Holder& holder = m_taken[m_next++];
        std::swap(element, *holder);
        keepEmptied(std::move(holder));
        m_popped.store(m_popped.load(std::memory_order_relaxed) + 1, std::memory_order_relaxed);
        return true;
    }

    /// Who has pushed and then finds, by a sequentially consistent load, that the popping thread has been told of
    /// something to do, need not tell it again, if that one forgets so by a sequentially consistent store before it
    /// looks here.
    [[nodiscard]] bool empty() const { return size() <= 0; }

private:
    using Holder = std::unique_ptr<Element>;

    static constexpr std::size_t kReturned = 32;  ///< emptied holders that go back together
    static constexpr std::size_t kSpare = 1024;   ///< emptied holders that are kept

    Holder emptyHolder() {
        const std::lock_guard lock(m_spareLock);
        if (m_spare.empty()) return nullptr;
        Holder holder = std::move(m_spare.back());
        m_spare.pop_back();
        return holder;
    }

    void keepEmptied(Holder holder) {
        m_returned.push_back(std::move(holder));
        if (m_returned.size() < kReturned) return;
        {
            const std::lock_guard lock(m_spareLock);
            while (m_spare.size() < kSpare && !m_returned.empty()) {
                m_spare.push_back(std::move(m_returned.back()));
                m_returned.pop_back();
            }
        }
        m_returned.clear();
    }

    /// All that waits, in one go: the lock is taken once for many elements.
    void takeAll() {
        m_taken.clear();
        m_next = 0;
        const std::lock_guard lock(m_lock);
        m_taken.swap(m_waiting);
    }

    static constexpr std::size_t kCacheLine = 64;

    [[nodiscard]] std::int64_t size() const { return m_pushed.load() - m_popped.load(std::memory_order_relaxed); }

    const std::int64_t m_maxCount;

    alignas(kCacheLine) LockFreeSpinLock m_lock;
    std::vector<Holder> m_waiting;  // guarded by m_lock
    alignas(kCacheLine) LockFreeSpinLock m_spareLock;
    std::vector<Holder> m_spare;  // guarded by m_spareLock
    /// Counted under m_lock: what is taken over has been counted, or the taker would forget of it.
    alignas(kCacheLine) std::atomic<std::int64_t> m_pushed{0};
    /// Written by the popping thread alone.
    alignas(kCacheLine) std::atomic<std::int64_t> m_popped{0};
    // The popping thread's own.
    std::vector<Holder> m_taken;
    std::size_t m_next = 0;
    std::vector<Holder> m_returned;

    CMonitorReading m_in{*this, "In", [this] { return static_cast<double>(m_pushed.load()); }};
    CMonitorReading m_out{*this, "Out", [this] { return static_cast<double>(m_popped.load()); }};
    CMonitorReading m_size{*this, "Size", [this] { return static_cast<double>(std::max<std::int64_t>(size(), 0)); }};
};

}  // namespace halvex

/// A queue with two levels, of which the high one is always emptied first. Any thread pushes, one thread pops. It
/// stands in the monitoring tree as "Queue/NAME", its levels as "Queue/NAME/High" and "Queue/NAME/Low".
template <class Element>
class CDualPriorityQueue : public CMonitorElementContainer {
public:
    enum class Level { high, low };

    /// `maxCount` holds for each level.
    CDualPriorityQueue(std::string_view name, std::int64_t maxCount)
        : CMonitorElementContainer("Queue/" + std::string(name)),
          m_high(path() + "/High", maxCount),
          m_low(path() + "/Low", maxCount) {}

    /// Queues a copy; false when the level is full.
    bool Push(const Element& element, Level level) {
        return level == Level::high ? m_high.Push(element) : m_low.Push(element);
    }
    /// The oldest element of the high level or, when that is empty, of the low one; false when both are empty.
    bool Pop(Element& element) { return m_high.Pop(element) || m_low.Pop(element); }
    [[nodiscard]] bool empty() const { return m_high.empty() && m_low.empty(); }

private:
    halvex::QueueLevel<Element> m_high;
    halvex::QueueLevel<Element> m_low;
};
