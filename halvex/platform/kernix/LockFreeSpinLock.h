#pragma once

#include <atomic>
#include <thread>

/// A lock for sections of a few instructions, usable with std::lock_guard. A waiting thread spins on a read and, after
/// a while, gives its processor away, so that a holder who was interrupted gets on. Not recursive, not fair.
class LockFreeSpinLock {
public:
    LockFreeSpinLock() = default;
    LockFreeSpinLock(const LockFreeSpinLock&) = delete;
    LockFreeSpinLock& operator=(const LockFreeSpinLock&) = delete;

    void lock() {
        for (int spins = 0; !try_lock(); ++spins) {
            if (spins >= kSpinsBeforeYield) std::this_thread::yield();
        }
    }
    [[nodiscard]] bool try_lock() {
        // The plain read first: an exchange would take the cache line from the holder at every try.
        return !m_taken.load(std::memory_order_relaxed) && !m_taken.exchange(true, std::memory_order_acquire);
    }
    void unlock() { m_taken.store(false, std::memory_order_release); }

private:
    static constexpr int kSpinsBeforeYield = 64;

    std::atomic<bool> m_taken{false};
};
