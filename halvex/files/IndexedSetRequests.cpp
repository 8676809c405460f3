#include "halvex/files/IndexedSetRequests.h"

#include <algorithm>
#include <array>
#include <limits>
#include <vector>

#include "halvex/files/IndexedRead.h"
#include "halvex/platform/os/File.h"

namespace halvex {

bool IndexedSetRequests::Open(const char* baseName, std::error_code& error) {
    Close();
    const CString base(baseName);
    CIndexedWriteFile set;
    os::File timeInfo;
    const bool opened = set.Open(base, false);
    error = set.GetLastError();
    set.Close();
    if (!opened || error) return false;
    error = timeInfo.openForReading(base + "t", os::kShareReadWrite);
    if (!error) error = timeInfo.size(m_position);
    if (error) return false;

    m_raw.strFileName = base;
    m_timeInfo.strFileName = base + "t";
    m_index.strFileName = base + "i";
    m_timeInfo.nVersion = m_index.nVersion = kIndexedFileVersion;
    m_schedule = IndexSchedule();
    m_open = true;
    return true;
}

bool IndexedSetRequests::request(CDecoupledFileWrite::FileData& file, std::span<const unsigned char> bytes) {
    file.bufData.assign(bytes.data(), bytes.size());
    return m_writer.Write(file);
}

bool IndexedSetRequests::AddBlock(std::span<const unsigned char> block) {
    if (!m_open || block.size() > std::numeric_limits<std::uint32_t>::max()) return false;
    const CIndexedFileRecordHeader header = recordWrittenNow(static_cast<std::uint32_t>(block.size()));
    if (m_schedule.isDue(header)) {
        std::array<unsigned char, CIndexedFileIndex::kSavedSize> entry{};
        CIndexedFileIndex{.week = header.week, .milliseconds = header.milliseconds, .position = m_position}.save(
            entry.data());
        if (!request(m_index, entry)) return false;
        m_schedule.entryWritten(header);
    }
    std::vector<unsigned char> record(header.recordSize());
    header.save(record.data());
    std::copy(block.begin(), block.end(), record.begin() + CIndexedFileRecordHeader::kSavedSize);
    if (!request(m_timeInfo, record)) return false;
    m_position += record.size();
    return block.empty() || request(m_raw, block);
}

void IndexedSetRequests::Close() {
    if (!m_open) return;
    m_open = false;
    m_writer.WaitUntilIdle();
    for (CDecoupledFileWrite::FileData* file : {&m_raw, &m_timeInfo, &m_index}) {
        CDecoupledFileWrite::FileData closing;
        closing.strFileName = file->strFileName;
        closing.bCloseFile = true;
        m_writer.Write(closing);
    }
}

}  // namespace halvex
