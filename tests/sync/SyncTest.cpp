#include <gmock/gmock.h>

#include <thread>

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
/// What another thread finds while this one reads, while it writes, and afterwards.
template <class Lock>
std::string elsewhereMeanwhile(Lock& guard) {
    CALN::ICalReaderWriterLock& lock = guard;
    std::string found;
    lock.acquireReadLock();
    found += elsewhere(guard);
    lock.releaseReadLock();
    lock.acquireWriteLock();
    found += elsewhere(guard);
    lock.releaseWriteLock();
    return found + elsewhere(guard);
}

}  // namespace

TEST(CalLocks, WhoKeepsWhomOut) {
    CCalReaderWriterLockHalvex shared;
    CCalReaderWriterLockHalvex2 exclusive;
    EXPECT_EQ(elsewhereMeanwhile(shared), "r-w");
    EXPECT_EQ(elsewhereMeanwhile(exclusive), "--w") << "readers keep each other out";
    CCalLockHalvex lock;
    lock.acquire();
    EXPECT_EQ(elsewhere(lock), '-');
    lock.release();
    EXPECT_EQ(elsewhere(lock), 'w');
}

TEST(SyncGuardCalBased, HandsOnToTheLockThatItOwnsAndNeverTries) {
    std::vector<std::string> calls;
    {
        CSyncGuardCalBased guard(new RecordingLock(calls));
        EXPECT_FALSE(guard.TryLockRead() || guard.TryLockWrite());
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
