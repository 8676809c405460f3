#include "halvex/files/IndexedRead.h"

#include <cstring>
#include <optional>
#include <string>

#include "halvex/platform/kernix/FileWriteBuffer.h"
#include "halvex/platform/kernix/IndexedFileRecord.h"
#include "halvex/platform/kernix/Logging.h"
#include "halvex/time/GPSTimeCompare.h"

namespace {

constexpr std::uint64_t kFirstRecord = sizeof kIndexedFileVersion;

/// The version word as it is logged: -1 when there is none.
std::int64_t versionWord(CFileReadBuffer& file) {
    const unsigned char* word = file.GetData(0, sizeof kIndexedFileVersion);
    return word != nullptr ? std::int64_t{halvex::loadLittleEndian<std::uint32_t>(word)} : -1;
}

std::optional<CIndexedFileRecordHeader> headerAt(CFileReadBuffer& file, std::uint64_t position) {
    const unsigned char* bytes = file.GetData(position, CIndexedFileRecordHeader::kSavedSize);
    return bytes != nullptr ? std::optional(CIndexedFileRecordHeader::load(bytes)) : std::nullopt;
}

/// Where the index says to begin for a time of week, as a position in the time-info file; 0 when it does not know.
std::uint64_t GetIndexPos(const std::string& indexFileName, std::uint32_t milliseconds) {
    CFileReadBuffer index;
    if (!index.Open(indexFileName.c_str()) || index.GetFileSizeEx() == 0) return 0;
    if (const std::int64_t version = versionWord(index); version != kIndexedFileVersion) {
        ILogging::getInstance().Log("CIndexedRead::GetIndexPos", ILogging::kError,
                                    "CIndexedRead::GetIndexPos, wrong version -> deleted file {}, version {}",
                                    indexFileName, version);
        index.Close();
        os::deleteFile(indexFileName.c_str());
        return 0;
    }
    std::uint64_t before = 0;
    for (std::uint64_t at = kFirstRecord;; at += CIndexedFileIndex::kSavedSize) {
        const unsigned char* bytes = index.GetData(at, CIndexedFileIndex::kSavedSize);
        if (bytes == nullptr) return 0;
        const CIndexedFileIndex entry = CIndexedFileIndex::load(bytes);
        if (entry.milliseconds == milliseconds) return entry.position;
        if (entry.milliseconds > milliseconds) return before;
        before = entry.position;
    }
}

}  // namespace

IIndexedReadNotify::~IIndexedReadNotify() = default;

bool CIndexedReadFile::Open(const char* fileName) {
    Close();
    if (!m_file.Open(fileName)) return false;
    m_fileSize = m_file.GetFileSizeEx();
    if (m_fileSize == 0) {
        Close();
        return false;
    }
    if (const std::int64_t version = versionWord(m_file); version != kIndexedFileVersion) {
        ILogging::getInstance().Log("CIndexedReadFile::Open", ILogging::kError,
                                    "CIndexedReadFile::Open, wrong version -> deleted file {}, version {}", fileName,
                                    version);
        Close();
        os::deleteFile(fileName);
        return false;
    }
    m_readPosition = kFirstRecord;
    std::strncpy(m_fileName.data(), fileName, m_fileName.size() - 1);
    return true;
}

void CIndexedReadFile::Close() {
    m_file.Close();
    m_fileName.fill('\0');
    m_fileSize = 0;
    m_readPosition = 0;
}

void CIndexedReadFile::GotoStart(std::uint32_t week, std::uint32_t milliseconds) {
    if (week == 0) return;
    const std::uint64_t indexed = GetIndexPos(std::string(m_fileName.data()) + "i", milliseconds);
    if (indexed >= kFirstRecord && indexed < m_fileSize) m_readPosition = indexed;

    const GPSTimeCompare wanted(week, milliseconds);
    while (m_readPosition < m_fileSize) {
        const auto header = headerAt(m_file, m_readPosition);
        if (!header || GPSTimeCompare(header->week, header->milliseconds) >= wanted) return;
        m_readPosition += header->recordSize();
    }
}

bool CIndexedReadFile::Read(std::uint32_t week, std::uint32_t milliseconds) {
    if (m_notify == nullptr) return false;
    m_cancelled = false;
    GotoStart(week, milliseconds);
    while (m_readPosition < m_fileSize) {
        std::uint64_t next = m_readPosition;
        const unsigned char* block = nullptr;
        std::uint64_t size = 0;
        if (!getNextBlock(m_file, next, block, size)) break;
        m_notify->OnIndexedBlock(block, size);
        if (m_cancelled) break;
        m_readPosition = next;
    }
    m_notify->OnIndexedReadEnd();
    return true;
}

bool CIndexedReadFile::getFirstBlockTime(std::uint32_t& week, std::uint32_t& milliseconds) {
    const auto header = headerAt(m_file, kFirstRecord);
    if (!header) return false;
    week = header->week;
    milliseconds = header->milliseconds;
    return true;
}

void CIndexedReadFile::DeleteIndexedFile(const CString& baseName) {
    for (const char* suffix : {"", "t", "i"}) os::deleteFile(baseName + suffix);
}

bool CIndexedReadFile::TransformTimeInfoFileToRaw(const char* timeInfoFile, const char* rawFile) {
    constexpr std::uint64_t kHeaderSize = CIndexedFileRecordHeader::kSavedSize;
    CFileReadBuffer timeInfo;
    std::uint32_t version = 0;
    if (!timeInfo.Open(timeInfoFile, os::kShareReadWrite, &version) || version != kIndexedFileVersion) return false;
    CFileWriteBuffer raw;
    if (!raw.Open(rawFile, 2, 1, true, os::kShareNone, nullptr)) return false;

    std::uint64_t position = kFirstRecord;
    auto header = headerAt(timeInfo, position);
    bool reachedEnd = false;
    bool written = true;
    while (written && header && header->size != 0) {
        const std::uint64_t size = header->size;
        const unsigned char* block = timeInfo.GetData(position + kHeaderSize, size + kHeaderSize);
        if (block != nullptr) {
            written = raw.Write(block, size);
            position += header->recordSize();
            header = CIndexedFileRecordHeader::load(block + size);
            continue;
        }
        block = timeInfo.GetData(position + kHeaderSize, size);
        reachedEnd = block != nullptr;
        written = !reachedEnd || raw.Write(block, size);
        break;
    }
    return raw.Close() && written && reachedEnd;
}

bool CIndexedReadFile::getFirstBlock(CFileReadBuffer& file, std::uint64_t& position, const unsigned char*& data,
                                     std::uint64_t& size) {
    position = 0;
    data = nullptr;
    size = 0;
    if (versionWord(file) != kIndexedFileVersion) return false;
    position = kFirstRecord;
    return getNextBlock(file, position, data, size);
}

bool CIndexedReadFile::getNextBlock(CFileReadBuffer& file, std::uint64_t& position, const unsigned char*& data,
                                    std::uint64_t& size) {
    data = nullptr;
    size = 0;
    const auto header = headerAt(file, position);
    if (!header) return false;
    data = file.GetData(position + CIndexedFileRecordHeader::kSavedSize, header->size);
    if (data == nullptr) return false;
    size = header->size;
    position += header->recordSize();
    return true;
}
