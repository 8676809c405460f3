#pragma once

#include <condition_variable>
#include <cstdint>
#include <mutex>

#include "halvex/platform/Export.h"

/// Something that is read by several and written by one. The unlocking thread is the one that locked, in the same mode.
/// What a guard promises beyond that, and whether a thread may lock it twice, is said by the class behind it.
class HALVEX_EXPORT ISyncGuard {
public:
    virtual ~ISyncGuard();
    /// True means locked. The Try operations do not wait; the others wait and always succeed.
    [[nodiscard]] virtual bool TryLockRead() = 0;
    virtual bool LockRead() = 0;
    virtual void UnlockRead() = 0;
    [[nodiscard]] virtual bool TryLockWrite() = 0;
    virtual bool LockWrite() = 0;
    virtual void UnlockWrite() = 0;

protected:
    ISyncGuard() = default;
    ISyncGuard(const ISyncGuard&) = default;
    ISyncGuard& operator=(const ISyncGuard&) = default;
};

/// One exclusive section whatever the mode: readers keep each other out as well. Recursive: the thread inside may lock
/// again, in either mode, and leaves with its last unlock.
class HALVEX_EXPORT CCriticalSectionSyncGuard : public ISyncGuard {
public:
    ~CCriticalSectionSyncGuard() override;
    [[nodiscard]] bool TryLockRead() override { return m_mutex.try_lock(); }
    bool LockRead() override { return LockWrite(); }
    void UnlockRead() override { m_mutex.unlock(); }
    [[nodiscard]] bool TryLockWrite() override { return m_mutex.try_lock(); }
    bool LockWrite() override {
        m_mutex.lock();
        return true;
    }
    void UnlockWrite() override { m_mutex.unlock(); }

private:
    std::recursive_mutex m_mutex;
};

/// Shared readers, one exclusive writer. A waiting writer keeps new readers out, so it enters when those inside have
/// left; afterwards readers and writers compete again. Not recursive: a reader who locks again while a writer waits
/// would wait for himself.
class HALVEX_EXPORT CReaderWriterSyncGuard : public ISyncGuard {
public:
    ~CReaderWriterSyncGuard() override;
    [[nodiscard]] bool TryLockRead() override;
    bool LockRead() override;
    void UnlockRead() override;
    [[nodiscard]] bool TryLockWrite() override;
    bool LockWrite() override;
    void UnlockWrite() override;

private:
    std::mutex m_mutex;
    std::condition_variable m_entry;       ///< no writer is inside or waiting for readers to leave
    std::condition_variable m_lastReader;  ///< the writer that has entered is alone
    std::uint32_t m_readers = 0;
    bool m_writerEntered = false;
};

/// Holds a guard for a scope, as a reader or as a writer. The guard outlives it.
class HALVEX_EXPORT CReadWriteLock {
public:
    CReadWriteLock(ISyncGuard& guard, bool write);
    ~CReadWriteLock();
    CReadWriteLock(const CReadWriteLock&) = delete;
    CReadWriteLock& operator=(const CReadWriteLock&) = delete;

private:
    ISyncGuard& m_guard;
    const bool m_write;
};
