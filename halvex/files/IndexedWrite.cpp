#include "halvex/files/IndexedWrite.h"

#include <array>
#include <cstring>

#include "halvex/files/IndexedRead.h"
#include "halvex/files/IndexedRepair.h"
#include "halvex/platform/kernix/IndexedFileRecord.h"
#include "halvex/platform/kernix/Logging.h"
#include "halvex/platform/os/File.h"
#include "halvex/time/SystemTime.h"

namespace {

constexpr std::uint32_t kIndexInterval = 600000;  // [ms]
constexpr std::uint32_t kIndexBuffer = 128;
constexpr std::uint32_t kTimeInfoBuffer = 4096;

/// A longer name would be cut by CIndexedReadFile, and its index not be found.
constexpr std::size_t kLongestName = 259;

}  // namespace

bool halvex::IndexSchedule::isDue(const CIndexedFileRecordHeader& record) const {
    return GPSTimeCompare(record.week, record.milliseconds) >= m_next;
}

void halvex::IndexSchedule::entryWritten(const CIndexedFileRecordHeader& record) {
    m_next.SetTime(record.week, record.milliseconds + kIndexInterval);
}

CIndexedFileRecordHeader halvex::recordWrittenNow(std::uint32_t size) {
    CSystemTime now;
    now.SetToCurrentUTCTime();
    return {.week = static_cast<std::uint16_t>(now.GetGpsWeek()),
            .milliseconds = static_cast<std::uint32_t>(now.GetGpsWeekMilliseconds()),
            .size = size};
}

bool CIndexedWrite::Open(const CString& fileName, bool overwrite) {
    std::uint32_t version = kIndexedFileVersion;
    if (!m_file.Open(fileName, kIndexBuffer, 0, overwrite, os::kShareReadWrite, &version)) return false;
    if (m_file.GetFileSizeEx() == 0 || version == kIndexedFileVersion) return true;
    ILogging::getInstance().Log("CIndexedWrite::Open", ILogging::kError,
                                "CIndexedWrite::Open wrong version -> deleted file {}, version {}", fileName.str(),
                                version);
    m_file.Close();
    return !os::deleteFile(fileName) && Open(fileName, overwrite);
}

void CIndexedWrite::SetIndexPos(std::uint16_t week, std::uint32_t milliseconds, CFileWriteBuffer& timeInfoFile) {
    const CIndexedFileRecordHeader record{.week = week, .milliseconds = milliseconds};
    if (!m_schedule.isDue(record)) return;
    CIndexedFileIndex entry{.week = week, .milliseconds = milliseconds};
    if (!timeInfoFile.GetFilePosition(entry.position)) return;
    std::array<unsigned char, CIndexedFileIndex::kSavedSize> bytes{};
    entry.save(bytes.data());
    m_file.Write(bytes.data(), bytes.size());
    m_file.Flush();
    m_schedule.entryWritten(record);
}

CIndexedWriteFile::~CIndexedWriteFile() = default;

bool CIndexedWriteFile::Open(const char* baseName, bool overwrite) {
    Close();
    const CString raw(baseName);
    const CString timeInfo = raw + "t";
    const CString index = raw + "i";
    if (raw.IsEmpty() || timeInfo.str().size() > kLongestName) return false;

    m_raw.Open(raw, overwrite ? 1 : 0, 1, true, os::kShareNone, nullptr);
    if (!overwrite && m_raw.IsOpen()) halvex::cutIncompleteRecord(timeInfo, index, "CIndexedWriteFile::Open");
    m_index.Open(index, overwrite);
    std::uint32_t version = kIndexedFileVersion;
    if (!m_timeInfo.Open(timeInfo, kTimeInfoBuffer, 0, overwrite, os::kShareReadWrite, &version)) return false;
    if (m_timeInfo.GetFileSizeEx() == 0 || version == kIndexedFileVersion) return true;

    ILogging::getInstance().Log("CIndexedWriteFile::Open", ILogging::kError,
                                "CIndexedWriteFile::Open wrong version -> deleted file {}, version {}", timeInfo.str(),
                                version);
    m_timeInfo.Close();
    return !os::deleteFile(raw) && !os::deleteFile(timeInfo) && !os::deleteFile(index) && Open(baseName, overwrite);
}

void CIndexedWriteFile::Close() {
    m_raw.Close();
    m_timeInfo.Close();
}

void CIndexedWriteFile::Flush() {
    m_raw.Flush();
    m_timeInfo.Flush();
}

void CIndexedWriteFile::AddBlock(const unsigned char* data, std::uint32_t size) {
    if (data == nullptr && size > 0) return;
    const CIndexedFileRecordHeader header = halvex::recordWrittenNow(size);
    // Before the record is in the buffer: the entry leads to where it will stand.
    m_index.SetIndexPos(header.week, header.milliseconds, m_timeInfo);
    m_lastWriteWeek = header.week;
    m_lastWriteMilliseconds = header.milliseconds;

    const auto copyTo = [=](unsigned char* to) {
        if (size > 0) std::memcpy(to, data, size);
    };
    if (unsigned char* space = m_raw.GetSpace(size)) copyTo(space);
    if (unsigned char* space = m_timeInfo.GetSpace(header.recordSize())) {
        header.save(space);
        copyTo(space + CIndexedFileRecordHeader::kSavedSize);
    }
}

std::error_code CIndexedWriteFile::GetLastError() const {
    for (const std::error_code error : {m_timeInfo.GetLastError(), m_raw.GetLastError(), m_index.GetLastError()}) {
        if (error) return error;
    }
    return {};
}

bool CIndexedWriteFile::GetLastWriteTime(std::uint32_t& week, std::uint32_t& milliseconds) const {
    week = m_lastWriteWeek;
    milliseconds = m_lastWriteMilliseconds;
    return week > 0;
}
