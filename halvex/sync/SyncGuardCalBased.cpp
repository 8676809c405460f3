#include "halvex/sync/SyncGuardCalBased.h"

#include "halvex/sync/CalLocks.h"

CSyncGuardCalBased::~CSyncGuardCalBased() {
    delete m_lock;
    m_lock = nullptr;
}

bool CSyncGuardCalBased::LockRead() {
    m_lock->acquireReadLock();
    return true;
}

bool CSyncGuardCalBased::LockWrite() {
    m_lock->acquireWriteLock();
    return true;
}

CSyncGuardCalBasedDummy::CSyncGuardCalBasedDummy() : CSyncGuardCalBased(new CCalDummyReaderWriterLock) {}
