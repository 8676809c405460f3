#pragma once

#include <cstdint>

#include "halvex/platform/Export.h"
#include "halvex/platform/caln/Lock.h"
#include "halvex/platform/kernix/SyncGuard.h"

/// The computation library's lock over a critical section: one thread at a time, which may enter again.
class HALVEX_EXPORT CCalLockHalvex : public CALN::CCalLock, public CCriticalSectionSyncGuard {
public:
    void acquire() override { LockWrite(); }
    void release() override { UnlockWrite(); }
};

/// The computation library's reader-writer lock over the guard with shared readers, exclusive writers and no starving
/// (CReaderWriterSyncGuard). Not recursive.
class HALVEX_EXPORT CCalReaderWriterLockHalvex : public CALN::ICalReaderWriterLock, public CReaderWriterSyncGuard {
public:
    void acquireReadLock() override { LockRead(); }
    void acquireWriteLock() override { LockWrite(); }
    void releaseReadLock() override { UnlockRead(); }
    void releaseWriteLock() override { UnlockWrite(); }
};

/// The same over a critical section: readers keep each other out as well, and the thread inside may enter again, in
/// either mode.
class HALVEX_EXPORT CCalReaderWriterLockHalvex2 : public CALN::ICalReaderWriterLock, public CCriticalSectionSyncGuard {
public:
    void acquireReadLock() override { LockRead(); }
    void acquireWriteLock() override { LockWrite(); }
    void releaseReadLock() override { UnlockRead(); }
    void releaseWriteLock() override { UnlockWrite(); }
};

/// Locks nothing: for objects that one thread alone uses.
class HALVEX_EXPORT CCalDummyReaderWriterLock : public CALN::ICalReaderWriterLock, public CALN::CCalLock {
public:
    CCalDummyReaderWriterLock() = default;
    CCalDummyReaderWriterLock(const CCalDummyReaderWriterLock&) = default;
    CCalDummyReaderWriterLock& operator=(const CCalDummyReaderWriterLock&) = default;
    ~CCalDummyReaderWriterLock() override { CheckThreadId(); }

    void acquireReadLock() override { CheckThreadId(); }
    void acquireWriteLock() override { CheckThreadId(); }
    void releaseReadLock() override { CheckThreadId(); }
    void releaseWriteLock() override { CheckThreadId(); }
    void acquire() override { CheckThreadId(); }
    void release() override { CheckThreadId(); }

    /// Where a host that looks for misuse would compare the calling thread with the owner; does nothing.
    void CheckThreadId() const {}

private:
    [[maybe_unused]] std::uint32_t m_ownerThreadId = 0;
};
