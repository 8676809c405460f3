#include "halvex/platform/kernix/SyncGuard.h"

ISyncGuard::~ISyncGuard() = default;
CCriticalSectionSyncGuard::~CCriticalSectionSyncGuard() = default;
CReaderWriterSyncGuard::~CReaderWriterSyncGuard() = default;

bool CReaderWriterSyncGuard::TryLockRead() {
    const std::scoped_lock lock(m_mutex);
    if (m_writerEntered) return false;
    ++m_readers;
    return true;
}

bool CReaderWriterSyncGuard::LockRead() {
    std::unique_lock lock(m_mutex);
    m_entry.wait(lock, [this] { return !m_writerEntered; });
    ++m_readers;
    return true;
}

void CReaderWriterSyncGuard::UnlockRead() {
    const std::scoped_lock lock(m_mutex);
    if (--m_readers == 0) m_lastReader.notify_one();
}

bool CReaderWriterSyncGuard::TryLockWrite() {
    const std::scoped_lock lock(m_mutex);
    if (m_writerEntered || m_readers > 0) return false;
    m_writerEntered = true;
    return true;
}

bool CReaderWriterSyncGuard::LockWrite() {
    std::unique_lock lock(m_mutex);
    m_entry.wait(lock, [this] { return !m_writerEntered; });
    m_writerEntered = true;  // from here on no reader enters
    m_lastReader.wait(lock, [this] { return m_readers == 0; });
    return true;
}

void CReaderWriterSyncGuard::UnlockWrite() {
    const std::scoped_lock lock(m_mutex);
    m_writerEntered = false;
    m_entry.notify_all();
}

CReadWriteLock::CReadWriteLock(ISyncGuard& guard, bool write) : m_guard(guard), m_write(write) {
    if (m_write) {
        m_guard.LockWrite();
    } else {
        m_guard.LockRead();
    }
}

CReadWriteLock::~CReadWriteLock() {
    if (m_write) {
        m_guard.UnlockWrite();
    } else {
        m_guard.UnlockRead();
    }
}
