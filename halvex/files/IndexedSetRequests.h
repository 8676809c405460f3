#pragma once

#include <cstdint>
#include <span>
#include <system_error>

#include "halvex/files/DecoupledFileWrite.h"
#include "halvex/files/IndexedWrite.h"
#include "halvex/platform/Export.h"

namespace halvex {

/// Writes an indexed file set (CIndexedWriteFile says what that is) through the asynchronous writer: adding a block
/// costs the caller three requests and no disk. The files get the same bytes as from CIndexedWriteFile, without its
/// buffers: what the writer has carried out is on the way to the disk. One thread at a time; nobody else may write the
/// set.
///
/// A block that cannot be written is lost and counted by the writer. Index entries behind it lead past their records by
/// its size then; opening the set for appending cuts off those that lead past the end.
class HALVEX_EXPORT IndexedSetRequests {
public:
    /// The writer outlives this object.
    explicit IndexedSetRequests(CDecoupledFileWrite& writer) : m_writer(writer) {}
    ~IndexedSetRequests() { Close(); }
    IndexedSetRequests(const IndexedSetRequests&) = delete;
    IndexedSetRequests& operator=(const IndexedSetRequests&) = delete;

    /// Opens the set as CIndexedWriteFile::Open does, at once, with its checks, repairs and failures, and empties the
    /// raw file. What it reports as the reason of a failure goes to `error`.
    bool Open(const char* baseName, std::error_code& error);
    /// Appends a block, stamped with the clock's UTC. False when it is not queued whole.
    bool AddBlock(std::span<const unsigned char> block);
    /// Waits until the writer is idle, because a closing request would overtake the blocks, then has the files closed.
    void Close();

private:
    bool request(CDecoupledFileWrite::FileData& file, std::span<const unsigned char> bytes);

    CDecoupledFileWrite& m_writer;
    CDecoupledFileWrite::FileData m_raw, m_timeInfo, m_index;
    std::uint64_t m_position = 0;  ///< where the next record of the time-info file stands
    IndexSchedule m_schedule;
    bool m_open = false;
};

}  // namespace halvex
