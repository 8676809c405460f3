#pragma once

#include <cstdint>
#include <system_error>

#include "halvex/platform/Export.h"
#include "halvex/platform/kernix/FileWriteBuffer.h"
#include "halvex/platform/kernix/IndexedFileRecord.h"
#include "halvex/platform/os/CString.h"
#include "halvex/time/GPSTimeCompare.h"

namespace halvex {

/// When an index entry is due: with the first record, and then with the first one that is ten minutes of week or more
/// behind the last entry's. That time stays in the week it was counted in: a record of a later week is always past it.
class HALVEX_EXPORT IndexSchedule {
public:
    [[nodiscard]] bool isDue(const CIndexedFileRecordHeader& record) const;
    void entryWritten(const CIndexedFileRecordHeader& record);

private:
    GPSTimeCompare m_next;
};

/// Head of a record of `size` bytes that is written now, by the clock's UTC (no leap seconds are added).
[[nodiscard]] HALVEX_EXPORT CIndexedFileRecordHeader recordWrittenNow(std::uint32_t size);

}  // namespace halvex

/// Writes the index file of an indexed file set: a version word, then entries (CIndexedFileIndex) in the order of
/// writing, the first record's and then one for every ten minutes of blocks. One thread at a time.
class HALVEX_EXPORT CIndexedWrite {
public:
    /// Opens the index file; one of another version is logged, DELETED and created anew.
    bool Open(const CString& fileName, bool overwrite);
    /// Writes an entry for the record that the time-info file takes next, if one is due, and flushes it. Open() does
    /// not begin the schedule anew.
    void SetIndexPos(std::uint16_t week, std::uint32_t milliseconds, CFileWriteBuffer& timeInfoFile);

    [[nodiscard]] std::error_code GetLastError() const { return m_file.GetLastError(); }

private:
    halvex::IndexSchedule m_schedule;
    CFileWriteBuffer m_file;
};

/// Writes an indexed file set, three files from one base name N, none of which may be changed by others meanwhile:
///   N      the blocks' bytes alone, for as long as the set is open: it is emptied at every Open()
///   N"t"   time-info file: version word, then a record for each block (CIndexedFileRecordHeader and the bytes)
///   N"i"   index file (CIndexedWrite)
/// CIndexedReadFile replays N"t". One thread at a time.
///
/// Write errors are not reported by AddBlock(): a block for which there is no room is missing in that file, whole. A
/// killed process loses the blocks since the last Flush() that are still in the buffers (4096 bytes of the time-info
/// file, or one larger block); what it may leave behind half-written is cut off when the set is opened for appending.
class HALVEX_EXPORT CIndexedWriteFile {
public:
    CIndexedWriteFile() = default;
    /// Copying transfers the three open files (CFileWriteBuffer) and copies the times.
    CIndexedWriteFile(CIndexedWriteFile&) = default;
    CIndexedWriteFile(CIndexedWriteFile&&) = default;
    CIndexedWriteFile& operator=(CIndexedWriteFile&) = default;
    CIndexedWriteFile& operator=(CIndexedWriteFile&&) = default;
    virtual ~CIndexedWriteFile();

    /// Opens the set; false when the time-info file cannot be opened or the names get longer than 259 characters. The
    /// other two files may fail: their part is not written then. A set whose time-info file has another version is
    /// logged, all three files are DELETED, and it is created anew; false when one of them cannot be deleted.
    ///
    /// Appending (`overwrite` false) first cuts off, and logs as a notice, an incomplete last record, and index entries
    /// that are incomplete or lead past the last whole record. That is left alone unless the raw file, which only one
    /// writer can have open, was opened: another writer may be about to complete them.
    bool Open(const char* baseName, bool overwrite);
    [[nodiscard]] bool IsOpen() const { return m_timeInfo.IsOpen(); }
    /// Closes the raw and the time-info file. The index file stays open until the next Open() or the end of the object.
    void Close();
    /// Hands the raw and the time-info file's buffers to the system.
    void Flush();

    /// Appends a block, stamped with the GPS week and milliseconds of week of the clock's UTC (no leap seconds are
    /// added). Null with a size above 0 is ignored.
    void AddBlock(const unsigned char* data, std::uint32_t size);
    /// What went wrong last since Open(), of the time-info file or else the raw file or else the index; none when all
    /// is well. AddBlock() does not tell: who must know asks here, before Close().
    [[nodiscard]] std::error_code GetLastError() const;
    /// Time stamp of the last block added to this object; false before the first.
    bool GetLastWriteTime(std::uint32_t& week, std::uint32_t& milliseconds) const;

private:
    std::uint32_t m_lastWriteWeek = 0;
    std::uint32_t m_lastWriteMilliseconds = 0;
    CFileWriteBuffer m_raw;
    CFileWriteBuffer m_timeInfo;
    CIndexedWrite m_index;
};
