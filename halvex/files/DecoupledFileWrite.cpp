#include "halvex/files/DecoupledFileWrite.h"

#include <array>
#include <span>
#include <utility>

#include "halvex/files/OpenFileTable.h"
#include "halvex/platform/kernix/Watchdog.h"
#include "halvex/platform/os/Thread.h"

namespace {

using FileData = CDecoupledFileWrite::FileData;

constexpr std::uint32_t kStopTimeout = 3000;  // [ms]
constexpr std::int64_t kLongestQueue = 0x7fffffff;

/// A file that holds no more than its version word gets its header.
constexpr std::uint64_t kVersionWordSize = 4;

/// Requests for one file that are written together.
constexpr std::size_t kLongestRun = 256;
/// Memory of a request that is kept for later ones.
constexpr std::size_t kKeptBytes = 8192;

bool isAppend(const FileData& request) {
    return !request.bNewFile && !request.bCloseFile;
}

halvex::OpenFileTable::Bytes bytesOf(const CMemoryBuffer& buffer) {
    return {buffer.data(), buffer.size()};
}

/// Before its memory serves the next request.
void giveBackLarge(FileData& request) {
    for (CMemoryBuffer* buffer : {&request.bufHeader, &request.bufData}) {
        if (buffer->size() > kKeptBytes) *buffer = CMemoryBuffer();
    }
}

}  // namespace

CDecoupledFileWrite::CDecoupledFileWrite() : CDecoupledFileWrite(std::string_view("DecoupledFileWrite")) {}

CDecoupledFileWrite::CDecoupledFileWrite(const CDecoupledFileWrite&)
    : CDecoupledFileWrite(std::string_view("DecoupledFileWrite_invalid")) {}

CDecoupledFileWrite::CDecoupledFileWrite(std::string_view queueName)
    : m_mapOpenFiles(std::make_unique<halvex::OpenFileTable>()),
      m_ActiveObject("CDecoupledFileWrite", &CDecoupledFileWrite::WorkerThread, this, kStopTimeout),
      m_Queue(queueName, kLongestQueue),
      m_run(kLongestRun + 1) {}

CDecoupledFileWrite::~CDecoupledFileWrite() {
    m_ActiveObject.StopThread();
}

bool CDecoupledFileWrite::Write(FileData& request) {
    if (request.strFileName.GetLength() < 1) return false;
    if (request.bufData.empty() && request.bufHeader.empty() && !request.bCloseFile) return false;
    if (!m_started.load(std::memory_order_acquire) && !start()) return false;
    using Level = CDualPriorityQueue<FileData>::Level;
    if (!m_Queue.Push(request, request.bCloseFile ? Level::high : Level::low)) return false;
    // An announcement that nobody has taken yet serves this request, too (see QueueLevel::empty); all producers would
    // write to it otherwise.
    return m_hDataEvent.isSet() || m_hDataEvent.Set();
}

bool CDecoupledFileWrite::start() {
    const CReadWriteLock lock(m_StartGuard, true);
    if (m_started.load(std::memory_order_relaxed)) return true;
    constexpr int kCallerLine = 61;
    if (!m_ActiveObject.StartThread("DecoupledFileWrite.cpp", kCallerLine, "CDecoupledFileWrite::Write")) return false;
    m_started.store(true, std::memory_order_release);
    return true;
}

void CDecoupledFileWrite::WaitUntilIdle() {
    std::unique_lock lock(m_idleMutex);
    m_becameIdle.wait(lock, [this] { return m_idle && m_Queue.empty(); });
}

std::uint64_t CDecoupledFileWrite::FailedOperations() const {
    return m_mapOpenFiles->failures();
}

void CDecoupledFileWrite::setIdle(bool idle) {
    const std::lock_guard lock(m_idleMutex);
    m_idle = idle;
    if (idle) m_becameIdle.notify_all();
}

std::uint32_t CDecoupledFileWrite::WorkerThread(void* writer) {
    CActiveObject::SetThreadName(os::currentThreadId(), "CDecoupledFileWrite::WorkerThread");
    CWatchdogClient watchdog("DecpldFileWrite", 0);
    static_cast<CDecoupledFileWrite*>(writer)->work();
    watchdog.NotifyWatchdogThisThreadClosing();
    return 0;
}

void CDecoupledFileWrite::work() {
    const std::array<os::Event*, 2> events{&m_ActiveObject.GetStopHandle(), &m_hDataEvent};
    while (os::waitAny(events) != 0) {
        setIdle(false);
        drain();
        setIdle(true);
    }
}

void CDecoupledFileWrite::drain() {
    bool popped = false;  // the first of the run holds a request already
    while (!m_ActiveObject.GetStopHandle().isSet()) {
        if (!std::exchange(popped, false) && !m_Queue.Pop(m_run[0])) return;
        const FileData& first = m_run[0];
        halvex::OpenFileTable::File* file = isAppend(first) ? m_mapOpenFiles->find(first.strFileName) : nullptr;
        if (file == nullptr) {
            ProcessFile(m_run[0]);
            giveBackLarge(m_run[0]);
            continue;
        }

        std::array<halvex::OpenFileTable::Bytes, kLongestRun> pieces;
        std::size_t count = 0;
        do {
            pieces[count] = bytesOf(m_run[count].bufData);
            ++count;
            popped = m_Queue.Pop(m_run[count]);
        } while (popped && count < kLongestRun && isAppend(m_run[count]) &&
                 m_run[count].strFileName == first.strFileName);
        m_mapOpenFiles->write(*file, std::span(pieces).first(count));
        for (FileData& done : std::span(m_run).first(count)) giveBackLarge(done);
        if (popped) std::swap(m_run[0], m_run[count]);
    }
}

bool CDecoupledFileWrite::ProcessFile(FileData& request) {
    halvex::OpenFileTable& files = *m_mapOpenFiles;
    halvex::OpenFileTable::File* file = files.find(request.strFileName);
    if (file != nullptr && request.bNewFile) {
        files.close(*file);
        file = nullptr;
    }
    if (file == nullptr) {
        if (request.bufHeader.empty() && request.bufData.empty() && request.bCloseFile) return true;
        file = files.open(request.strFileName, request.nVersion, request.bNewFile);
        if (file == nullptr) return false;
        if (!request.bufHeader.empty() && file->buffer.GetFileSizeEx() <= kVersionWordSize) {
            files.write(*file, bytesOf(request.bufHeader));
        }
    }
    files.write(*file, bytesOf(request.bufData));
    if (request.bCloseFile) files.close(*file);
    return true;
}

CCriticalSectionSyncGuard CDecoupledFileWriteHandle::s_Guard;
std::int32_t CDecoupledFileWriteHandle::s_RefCounter = 0;
CDecoupledFileWrite* CDecoupledFileWriteHandle::s_pDecoupledFileWrite = nullptr;

CDecoupledFileWriteHandle::CDecoupledFileWriteHandle() {
    const CReadWriteLock lock(s_Guard, true);
    ++s_RefCounter;
}

CDecoupledFileWriteHandle::CDecoupledFileWriteHandle(const CDecoupledFileWriteHandle&) {}

CDecoupledFileWriteHandle& CDecoupledFileWriteHandle::operator=(const CDecoupledFileWriteHandle&) {
    return *this;
}

CDecoupledFileWriteHandle::~CDecoupledFileWriteHandle() {
    const CReadWriteLock lock(s_Guard, true);
    if (--s_RefCounter == 0 && s_pDecoupledFileWrite != nullptr) {
        delete std::exchange(s_pDecoupledFileWrite, nullptr);
    }
}

CDecoupledFileWrite* CDecoupledFileWriteHandle::GetRealPointer() {
    const CReadWriteLock lock(s_Guard, true);
    if (s_pDecoupledFileWrite == nullptr) s_pDecoupledFileWrite = new CDecoupledFileWrite;
    return s_pDecoupledFileWrite;
}
