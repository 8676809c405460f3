#include "halvex/platform/kernix/SyncGuard.h"

#include <gtest/gtest.h>

#include <future>
#include <latch>
#include <mutex>
#include <thread>
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
    struct Row {
        const char* what;
        ISyncGuard& guard;
        bool holdForWriting, readersEnter, writersEnter;
    };
    const Row rows[] = {{"section, reader inside", section, false, false, false},
                        {"section, writer inside", section, true, false, false},
                        {"shared, reader inside", shared, false, true, false},
                        {"shared, writer inside", shared, true, false, false}};
    for (const Row& row : rows) {
        {
            const CReadWriteLock lock(row.guard, row.holdForWriting);
            EXPECT_EQ(othersMay(row.guard, false), row.readersEnter) << row.what;
            EXPECT_EQ(othersMay(row.guard, true), row.writersEnter) << row.what;
        }
        EXPECT_TRUE(othersMay(row.guard, true)) << row.what << ", free again";
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
    constexpr int kThreads = 4, kRounds = 5000;
    CReaderWriterSyncGuard guard;
    LockFreeSpinLock spin;
    int guarded = 0, spun = 0, unequal = 0;
    std::latch start(kThreads);
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([&] {
            start.arrive_and_wait();
            for (int i = 0; i < kRounds; ++i) {
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
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(guarded, kThreads * kRounds);
    EXPECT_EQ(spun, kThreads * kRounds);
    EXPECT_EQ(unequal, 0) << "nobody writes while a reader is inside";
}
