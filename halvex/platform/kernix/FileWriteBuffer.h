#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <system_error>

#include "halvex/platform/Export.h"
#include "halvex/platform/os/File.h"

/// A file that is written at its end through a buffer. Owns the open file; the destructor flushes and closes it,
/// without a report (Close() has one). One thread at a time.
///
/// A piece (what one call hands over) goes to the system whole, in one write together with the pieces before it, and a
/// write that fails is cut off the file again (os::File::append). So the file ends with a whole piece unless the
/// process or the machine dies within a write. What has been accepted keeps its position: when a flush fails, the
/// accepted bytes stay in the buffer for the next attempt, and a piece that would need their place is refused whole.
/// Only closing gives them up. A killed process loses what is still in the buffer, nothing else; against a power cut
/// there is no promise.
///
/// Operations return false or null on failure, and the reason is kept for GetLastError() until the next Open().
class HALVEX_EXPORT CFileWriteBuffer {
public:
    CFileWriteBuffer() = default;
    /// Copying transfers the open file with everything unwritten and leaves the source closed.
    CFileWriteBuffer(CFileWriteBuffer& source) noexcept;
    CFileWriteBuffer(CFileWriteBuffer&& source) noexcept;
    CFileWriteBuffer& operator=(CFileWriteBuffer& source) noexcept;
    CFileWriteBuffer& operator=(CFileWriteBuffer&& source) noexcept { return *this = source; }
    ~CFileWriteBuffer();

    /// Opens `name` (closing the file before it, if any), creating it when missing. `overwrite` empties it, once the
    /// lock of `shareMode` (os::kShareNone, os::kShareReadWrite) is held; otherwise it is appended to. A buffer of 0 or
    /// 1 bytes means no buffering. `reserved` has no effect.
    ///
    /// With `version`, the file begins with that word, 4 bytes little-endian: it is written at once to a file that is
    /// created, overwritten or shorter than 4 bytes; of any other file the word found is stored to *version, and
    /// whether that is the wanted one is for the caller to say.
    bool Open(const char* name, std::uint32_t bufferSize, std::uint32_t reserved, bool overwrite,
              std::uint32_t shareMode, std::uint32_t* version);
    [[nodiscard]] bool IsOpen() const { return m_file.isOpen(); }

    /// Adds a piece. One that is larger than the buffer is written at once.
    bool Write(const void* data, std::uint64_t size);
    /// Room for a piece of `size` bytes in the buffer, which grows for it. The piece counts as accepted; the caller
    /// fills it before he calls this object again. It is written by the next call that needs its place, by Flush() or
    /// Close().
    [[nodiscard]] unsigned char* GetSpace(std::uint64_t size);
    /// Flushes, then writes the piece at once, past the buffer.
    bool WriteUnbuffered(const void* data, std::uint64_t size);
    /// The same for several pieces together: all of them or, when that fails, none.
    bool WriteUnbuffered(std::span<const std::span<const unsigned char>> pieces);
    bool Flush();
    /// False when bytes could not be written (they are lost) or the system reports a failure. Closed in any case; true
    /// when nothing was open.
    bool Close();

    /// Where the next piece will stand: the end of the file plus what is in the buffer.
    [[nodiscard]] bool GetFilePosition(std::uint64_t& position);
    /// Size of the file without what is in the buffer; 0 when it cannot be told.
    [[nodiscard]] std::uint64_t GetFileSizeEx();
    [[nodiscard]] std::error_code GetLastError() const { return m_error; }

private:
    bool prepareVersion(std::uint32_t* version);
    bool makeRoom(std::uint64_t size);
    bool succeeded(std::error_code error);
    std::span<const unsigned char> pending() const { return {m_buffer.get(), m_used}; }

    os::File m_file;
    std::unique_ptr<unsigned char[]> m_buffer;
    std::size_t m_capacity = 0;     ///< bytes allocated
    std::size_t m_used = 0;         ///< bytes accepted and not yet written
    std::uint32_t m_threshold = 0;  ///< bytes that may wait in the buffer
    std::error_code m_error;
};
