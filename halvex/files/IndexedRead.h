#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "halvex/platform/Export.h"
#include "halvex/platform/kernix/FileReadBuffer.h"
#include "halvex/platform/os/CString.h"

/// Version word of the time-info and the index files.
inline constexpr std::uint32_t kIndexedFileVersion = 2;

/// Takes the blocks of a replay, on the thread that calls CIndexedReadFile::Read.
class HALVEX_EXPORT IIndexedReadNotify {
public:
    virtual ~IIndexedReadNotify();
    /// One block; the bytes stay until the call returns.
    virtual void OnIndexedBlock(const unsigned char* block, std::uint64_t size) = 0;
    /// The replay is over: at the end of the file, at its first incomplete record, or cancelled.
    virtual void OnIndexedReadEnd() = 0;
};

/// Replays the time-info file of an indexed file set from a chosen GPS time on: a version word, then records (see
/// CIndexedFileRecordHeader), each with the block that was written at its time. Times are GPS week and milliseconds of
/// that week. One thread at a time.
///
/// The file's content is not trusted: a record that the file does not hold whole ends every walk.
class HALVEX_EXPORT CIndexedReadFile {
public:
    CIndexedReadFile() = default;
    /// `notify` is not owned and outlives the reader; without one there is no replay.
    explicit CIndexedReadFile(IIndexedReadNotify* notify) : m_notify(notify) {}
    /// Copying transfers the open file (CFileReadBuffer) and copies the rest.
    CIndexedReadFile(CIndexedReadFile&) = default;
    CIndexedReadFile(CIndexedReadFile&&) = default;
    CIndexedReadFile& operator=(CIndexedReadFile&) = default;
    CIndexedReadFile& operator=(CIndexedReadFile&&) = default;

    /// Opens a time-info file as it is by now: what is appended later is not replayed. False for a missing or empty
    /// file. A file of another version is logged, DELETED, and false is returned.
    bool Open(const char* fileName);
    void Close();

    /// Hands the blocks from the first record at or after the given time to the notification target, to the end of the
    /// file or until cancelled. Week 0 starts at the present position: the first record after Open(), where it ended
    /// after a replay. False, doing nothing, without a target.
    ///
    /// The index that shortens the search is looked for at the name given to Open() followed by "i", and only its
    /// milliseconds of week are compared: in a set across a week's end it can lead into the wrong week, behind the
    /// wanted record too. A position outside the file is not followed. An index file of another version is logged and
    /// DELETED.
    bool Read(std::uint32_t week, std::uint32_t milliseconds);
    /// From within OnIndexedBlock: that block is the last, and the next Read(0, 0) begins with it again.
    void cancelRead() { m_cancelled = true; }

    /// Time of the first record; false when there is none.
    bool getFirstBlockTime(std::uint32_t& week, std::uint32_t& milliseconds);
    /// Nothing is left to replay; also true when no file is open.
    [[nodiscard]] bool isEndOfFile() const { return m_readPosition >= m_fileSize; }

    /// Deletes the three files of the set with this base name, those that exist.
    static void DeleteIndexedFile(const CString& baseName);
    /// Writes the blocks of a time-info file, one after another, into a raw file, which is created or overwritten. True
    /// when every block was copied and the last one was whole. False else, with the blocks before the fault copied; a
    /// record without bytes counts as one.
    static bool TransformTimeInfoFileToRaw(const char* timeInfoFile, const char* rawFile);

    /// Walks an open time-info file: the first block, then, with the same `position`, the next ones. The bytes belong
    /// to `file` and stay until its next use. False at the end or at an incomplete record (data null, size 0).
    static bool getFirstBlock(CFileReadBuffer& file, std::uint64_t& position, const unsigned char*& data,
                              std::uint64_t& size);
    static bool getNextBlock(CFileReadBuffer& file, std::uint64_t& position, const unsigned char*& data,
                             std::uint64_t& size);

private:
    void GotoStart(std::uint32_t week, std::uint32_t milliseconds);

    static constexpr std::size_t kNameSize = 260;

    std::uint64_t m_fileSize = 0;
    std::uint64_t m_readPosition = 0;  ///< of the next record
    bool m_cancelled = false;
    CFileReadBuffer m_file;
    IIndexedReadNotify* m_notify = nullptr;
    std::array<char, kNameSize> m_fileName{};
};
