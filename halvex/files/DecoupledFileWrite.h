#pragma once

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string_view>
#include <vector>

#include "halvex/platform/Export.h"
#include "halvex/platform/kernix/ActiveObject.h"
#include "halvex/platform/kernix/DualPriorityQueue.h"
#include "halvex/platform/kernix/MemoryBuffer.h"
#include "halvex/platform/kernix/SyncGuard.h"
#include "halvex/platform/os/CString.h"
#include "halvex/platform/os/Event.h"

namespace halvex {
class OpenFileTable;
}

/// Takes write requests from any thread and carries them out on a thread of its own, so that nobody who writes waits
/// for a disk. A process has one writer; callers reach it through CDecoupledFileWriteHandle.
///
/// Requests that close their file are carried out before all others; among the rest, and among the closing ones, the
/// order is that of Write(). So a closing request overtakes those that were queued before it for the same file: these
/// open it again afterwards.
///
/// A file stays open, shared, from its first request until one closes it or the writer dies. The process's limit of
/// open files is raised as far as it may be when it is reached; beyond that the file that has been idle longest is
/// closed and opened again, for appending, at its next request, so that 64 descriptors are left to others. A file that
/// was deleted or cut off in between is then begun anew, and another program may lock it; else this makes no
/// difference.
///
/// Bytes go to the system at once, each request's whole or not at all; requests for one file that wait together go in
/// one call. A killed process loses what it had not begun to write, nothing else. What cannot be opened or written is
/// lost and counted, and logged (level 3) once for its file until that works again; other files are not touched by it.
/// It is the writer's thread that logs: a log sink must not write through the writer, nor make or end handles of it.
///
/// Memory: what waits, and for 1024 requests of each level up to 16 KiB that later ones are copied into.
///
/// Monitoring: requests in "Queue/DecoupledFileWrite/High" and ".../Low" with "In", "Out" and "Size";
/// "DecoupledFileWrite" with "OpenFiles" (files), "FailedOpens" and "FailedWrites".
class HALVEX_EXPORT CDecoupledFileWrite {
public:
    /// One request.
    struct FileData {
        /// Version word of the file; 0: it has none. A new file begins with it; an existing one that has another is
        /// emptied and begun anew.
        std::uint32_t nVersion = 0;
        bool bNewFile = false;    ///< empty the file first; one that is open is closed and opened again
        bool bCloseFile = false;  ///< close the file when the data is written
        CString strFileName;      ///< full path, and what tells files apart
        CMemoryBuffer bufHeader;  ///< written only when the file holds at most 4 bytes after opening
        CMemoryBuffer bufData;
    };

    /// Starts no thread: the first request does.
    CDecoupledFileWrite();
    /// Stops the thread after the request it is at. What is still queued is discarded unwritten; open files are closed.
    /// To lose nothing, WaitUntilIdle() first.
    ~CDecoupledFileWrite();

    /// Queues a copy of `request` and returns at once. False, with nothing queued: no file name, nothing to do (no
    /// header, no data and not closing), more than 0x7fffffff requests waiting, no thread to be had.
    bool Write(FileData& request);

    /// Waits until everything that has been queued is carried out, including what other threads queue meanwhile. Must
    /// have returned before the writer is destroyed.
    void WaitUntilIdle();

    /// How often so far a file could not be opened, or a request's header or data not be written. As often as before:
    /// nothing was lost in between.
    [[nodiscard]] std::uint64_t FailedOperations() const;

protected:
    /// Carries out one request; false when its file cannot be opened. For the writer's thread.
    bool ProcessFile(FileData& request);
    /// The thread's function; `writer` is the CDecoupledFileWrite.
    static std::uint32_t WorkerThread(void* writer);

private:
    /// A writer of its own: nothing is copied.
    CDecoupledFileWrite(const CDecoupledFileWrite&);
    CDecoupledFileWrite& operator=(const CDecoupledFileWrite&);
    explicit CDecoupledFileWrite(std::string_view queueName);

    bool start();
    void work();
    void drain();
    void setIdle(bool idle);

    std::unique_ptr<halvex::OpenFileTable> m_mapOpenFiles;  ///< touched by the thread alone
    CActiveObject m_ActiveObject;
    CDualPriorityQueue<FileData> m_Queue;
    os::Event m_hDataEvent{os::Event::Reset::automatic};
    CCriticalSectionSyncGuard m_StartGuard;
    std::atomic<bool> m_started{false};
    std::vector<FileData> m_run;  ///< requests that are carried out together; the thread's own

    std::mutex m_idleMutex;  // guards m_idle
    std::condition_variable m_becameIdle;
    bool m_idle = true;
};

/// A share in the process's writer, which is made when somebody first asks for it and destroyed with the last handle,
/// as the handles are counted: a default-made one counts, a copy does not, and each that is destroyed is taken off. So
/// whoever copies a handle ends the writer early; asking for the pointer again makes a new one. Any thread.
class HALVEX_EXPORT CDecoupledFileWriteHandle {
public:
    CDecoupledFileWriteHandle();
    CDecoupledFileWriteHandle(const CDecoupledFileWriteHandle&);
    CDecoupledFileWriteHandle& operator=(const CDecoupledFileWriteHandle&);
    virtual ~CDecoupledFileWriteHandle();

    /// The writer; valid until the count of handles reaches 0.
    CDecoupledFileWrite* GetRealPointer();

private:
    static CCriticalSectionSyncGuard s_Guard;
    static std::int32_t s_RefCounter;
    static CDecoupledFileWrite* s_pDecoupledFileWrite;
};
