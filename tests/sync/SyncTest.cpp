#include <gmock/gmock.h>

#include <barrier>
#include <thread>

#include "halvex/sync/CalFrequencyMgrHalvex.h"
#include "halvex/sync/CalLocks.h"
#include "halvex/sync/SyncGuardCalBased.h"

using testing::ElementsAre;

namespace {

struct RecordingLock final : CALN::ICalReaderWriterLock {
    explicit RecordingLock(std::vector<std::string>& list) : calls(list) {}
    ~RecordingLock() override { calls.emplace_back("deleted"); }
    void acquireReadLock() override { calls.emplace_back("acquireRead"); }
    void acquireWriteLock() override { calls.emplace_back("acquireWrite"); }
    void releaseReadLock() override { calls.emplace_back("releaseRead"); }
    void releaseWriteLock() override { calls.emplace_back("releaseWrite"); }
    std::vector<std::string>& calls;
};

/// What another thread finds: 'r' it may read, 'w' it may write, '-' neither.
template <class Guard>
char elsewhere(Guard& guard) {
    char found = '-';
    std::thread([&] {
        if (guard.TryLockWrite()) {
            guard.UnlockWrite();
            found = 'w';
        } else if (guard.TryLockRead()) {
            guard.UnlockRead();
            found = 'r';
        }
    }).join();
    return found;
}

}  // namespace

TEST(CalLocks, WhoKeepsWhomOut) {
    CCalReaderWriterLockHalvex shared;
    shared.acquireReadLock();
    EXPECT_EQ(elsewhere(shared), 'r');
    shared.releaseReadLock();
    shared.acquireWriteLock();
    EXPECT_EQ(elsewhere(shared), '-');
    shared.releaseWriteLock();
    EXPECT_EQ(elsewhere(shared), 'w');

    CCalReaderWriterLockHalvex2 exclusive;
    exclusive.acquireReadLock();
    exclusive.acquireWriteLock();
    exclusive.releaseWriteLock();
    EXPECT_EQ(elsewhere(exclusive), '-') << "readers keep each other out";
    exclusive.releaseReadLock();
    EXPECT_EQ(elsewhere(exclusive), 'w');

    CCalLockHalvex lock;
    lock.acquire();
    EXPECT_EQ(elsewhere(lock), '-');
    lock.release();
    EXPECT_EQ(elsewhere(lock), 'w');
}

TEST(CalLocks, GuardDataThroughTheInterfaceOfTheComputationLibrary) {
    constexpr int kThreads = 4;
    constexpr int kRounds = 2000;
    CCalReaderWriterLockHalvex shared;
    CCalReaderWriterLockHalvex2 exclusive;
    for (CALN::ICalReaderWriterLock* lock :
         {static_cast<CALN::ICalReaderWriterLock*>(&shared), static_cast<CALN::ICalReaderWriterLock*>(&exclusive)}) {
        int first = 0;
        int second = 0;
        std::barrier start(kThreads);
        std::vector<std::thread> threads;
        for (int i = 0; i < kThreads; ++i) {
            threads.emplace_back([&, i] {
                start.arrive_and_wait();
                for (int round = 0; round < kRounds; ++round) {
                    if (i % 2 == 0) {
                        lock->acquireWriteLock();
                        ++first;
                        ++second;
                        lock->releaseWriteLock();
                    } else {
                        lock->acquireReadLock();
                        EXPECT_EQ(first, second);
                        lock->releaseReadLock();
                    }
                }
            });
        }
        for (std::thread& thread : threads) thread.join();
        EXPECT_EQ(first, kThreads / 2 * kRounds);
    }
}

TEST(SyncGuardCalBased, HandsOnToTheLockThatItOwnsAndNeverTries) {
    std::vector<std::string> calls;
    {
        CSyncGuardCalBased guard(new RecordingLock(calls));
        EXPECT_FALSE(guard.TryLockRead());
        EXPECT_FALSE(guard.TryLockWrite());
        EXPECT_TRUE(guard.LockRead());
        guard.UnlockRead();
        { const CReadWriteLock scope(guard, true); }
        // A copy shares the lock; it is never destroyed here.
        alignas(CSyncGuardCalBased) unsigned char place[sizeof guard];
        (new (place) CSyncGuardCalBased(guard))->LockRead();
    }
    EXPECT_THAT(calls,
                ElementsAre("acquireRead", "releaseRead", "acquireWrite", "releaseWrite", "acquireRead", "deleted"));
    { CSyncGuardCalBased none(nullptr); }

    CSyncGuardCalBasedDummy dummy;
    EXPECT_TRUE(dummy.LockWrite() && dummy.LockWrite() && dummy.LockRead()) << "locks nothing";
    EXPECT_FALSE(dummy.TryLockWrite());
}

TEST(CalFrequencyMgr, OwnLockAndChannels) {
    CCalFrequencyMgrHalvex manager;
    const CALN::SCalSatID satellite(CALN::eCALSATSYSTEM_GLONASS, 3);
    std::thread feeder([&] {
        for (int i = 0; i < 1000; ++i) manager.setGlonassChannel(satellite, i % 7);
    });
    for (int i = 0; i < 1000; ++i) EXPECT_LT(manager.getGlonassChannel(satellite).value_or(0), 7);
    feeder.join();
    EXPECT_EQ(manager.getGlonassChannel(satellite), 999 % 7);
}
