#pragma once

#include "halvex/platform/Export.h"
#include "halvex/platform/caln/Lock.h"
#include "halvex/platform/kernix/SyncGuard.h"

/// A guard over a reader-writer lock of the computation library, which it owns. Trying is not supported: it always
/// fails, without touching the lock. How readers and writers meet, and whether a thread may lock twice, the lock says.
///
/// A copy shares the lock and believes that it owns it, too: of all copies only one may be destroyed. Who copies sees
/// to that.
class HALVEX_EXPORT CSyncGuardCalBased : public ISyncGuard {
public:
    /// Takes the lock over; null: only destroying the guard is allowed then.
    explicit CSyncGuardCalBased(CALN::ICalReaderWriterLock* lock) : m_lock(lock) {}
    CSyncGuardCalBased(const CSyncGuardCalBased&) = default;
    CSyncGuardCalBased& operator=(const CSyncGuardCalBased&) = default;
    ~CSyncGuardCalBased() override;

    [[nodiscard]] bool TryLockRead() override { return false; }
    bool LockRead() override;
    void UnlockRead() override { m_lock->releaseReadLock(); }
    [[nodiscard]] bool TryLockWrite() override { return false; }
    bool LockWrite() override;
    void UnlockWrite() override { m_lock->releaseWriteLock(); }

private:
    CALN::ICalReaderWriterLock* m_lock;
};

/// A guard that locks nothing, for objects that one thread alone uses.
class HALVEX_EXPORT CSyncGuardCalBasedDummy : public CSyncGuardCalBased {
public:
    CSyncGuardCalBasedDummy();
};
