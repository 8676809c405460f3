#include "halvex/platform/kernix/SyncGuard.h"

#include <gtest/gtest.h>

#include <future>
#include <latch>
#include <mutex>
#include <thread>
#include <tuple>
#include <vector>

#include "halvex/platform/kernix/LockFreeSpinLock.h"

namespace {

/// Whether another thread could lock now, in the given mode; it unlocks again.
bool othersMay(ISyncGuard& guard, bool write) {
    return std::async(std::launch::async,
                      [&] {
                          const bool locked = write ? guard.TryLockWrite() : guard.TryLockRead();
                          if (locked) write ? guard.UnlockWrite() : guard.UnlockRead();
                          return locked;
                      })
        .get();
}

}  // namespace

TEST(SyncGuard, WhoKeepsWhomOut) {
    CCriticalSectionSyncGuard section;
    CReaderWriterSyncGuard shared;
    const std::tuple<ISyncGuard*, bool, bool> rows[] = {
        {&section, false, false}, {&section, true, false}, {&shared, false, true}, {&shared, true, false}};
    for (const auto& [guard, holdForWriting, readersEnter] : rows) {
        {
            const CReadWriteLock lock(*guard, holdForWriting);
            EXPECT_EQ(othersMay(*guard, false), readersEnter);
            EXPECT_FALSE(othersMay(*guard, true));
        }
        EXPECT_TRUE(othersMay(*guard, true)) << "free again";
    }
    const CReadWriteLock outer(section, false);
    ASSERT_TRUE(section.TryLockWrite()) << "recursive in either mode";
    section.UnlockWrite();
    EXPECT_FALSE(othersMay(section, false)) << "still inside";
}

TEST(SyncGuard, AWaitingWriterIsNotOvertakenByNewReaders) {
    CReaderWriterSyncGuard guard;
    guard.LockRead();
    std::thread writer([&] { const CReadWriteLock lock(guard, true); });
    while (othersMay(guard, false)) std::this_thread::yield();  // until the writer waits
    guard.UnlockRead();
    writer.join();
    EXPECT_TRUE(othersMay(guard, true));
}

TEST(SyncGuard, CountsUnderContentionComeOutRight) {
    CReaderWriterSyncGuard guard;
    LockFreeSpinLock spin;
    int guarded = 0, spun = 0, unequal = 0;
    std::latch start(4);
    const auto count = [&] {
        start.arrive_and_wait();
        for (int i = 0; i < 5000; ++i) {
            {
                const CReadWriteLock lock(guard, true);
                ++guarded;
            }
            const CReadWriteLock lock(guard, false);
            const int seen = guarded;
            const std::lock_guard spinning(spin);
            ++spun;
            if (seen != guarded) ++unequal;
        }
    };
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) threads.emplace_back(count);
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(guarded, 20000);
    EXPECT_EQ(spun, 20000);
    EXPECT_EQ(unequal, 0) << "nobody writes while a reader is inside";
}
