#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <system_error>

#include "halvex/platform/Export.h"

namespace os {

/// Who else may have the file open: nobody, or everybody who shares it too. Every other value is refused.
inline constexpr std::uint32_t kShareNone = 0;
inline constexpr std::uint32_t kShareReadWrite = 3;

/// One open regular file. Owns its descriptor, which no child program inherits; moving hands it on.
///
/// The share mode is held as an advisory lock of the open file: it counts among all File objects of all processes, and
/// ends with close() or with the process. Programs that do not lock are not kept out. Opening never waits for a lock: a
/// file that somebody holds otherwise gives std::errc::device_or_resource_busy.
///
/// Positions and sizes are in bytes. Interrupted and short transfers are continued. One thread at a time; nothing
/// throws, every failure is an error code. On an object that is not open: std::errc::bad_file_descriptor.
class HALVEX_EXPORT File {
public:
    File() = default;
    ~File();
    File(File&& other) noexcept;
    File& operator=(File&& other) noexcept;

    /// Opens an existing file. Null and empty names and anything but a regular file are refused.
    [[nodiscard]] std::error_code openForReading(const char* name, std::uint32_t shareMode);
    /// Opens a file for reading and appending; it is created when missing and never emptied here, so that whoever has
    /// to empty it does so with the lock in hand.
    [[nodiscard]] std::error_code openForWriting(const char* name, std::uint32_t shareMode);
    [[nodiscard]] bool isOpen() const { return m_descriptor >= 0; }

    [[nodiscard]] std::error_code size(std::uint64_t& bytes) const;
    /// Fills `to` from `position` on; `count` is less than asked for only at the end of the file or after an error.
    [[nodiscard]] std::error_code readAt(std::uint64_t position, std::span<unsigned char> to, std::size_t& count) const;
    /// Tells the system to read ahead generously; an advice, nothing more.
    void expectSequentialReading() const;
    /// Adds `bytes` at the end of the file, wherever that is by now, all or nothing: a write that fails half-way (a
    /// full disk) is cut off again, unless somebody else has written behind it.
    [[nodiscard]] std::error_code append(std::span<const unsigned char> bytes) { return append({&bytes, 1}); }
    /// Adds all of `pieces`, one behind the other, in as few calls as possible; all or nothing.
    [[nodiscard]] std::error_code append(std::span<const std::span<const unsigned char>> pieces);
    [[nodiscard]] std::error_code truncate(std::uint64_t size);
    /// Waits until the content has reached the disk.
    [[nodiscard]] std::error_code sync();
    /// Says what the system reports at the last moment; the file is closed in any case. Closing twice is harmless.
    [[nodiscard]] std::error_code close();

private:
    friend HALVEX_EXPORT std::error_code replaceFile(const std::string&, std::span<const unsigned char>);
    std::error_code open(const char* name, int flags, std::uint32_t shareMode);
    void takeBack(std::uint64_t appended);
    void discard();

    int m_descriptor = -1;
};

/// Removes a file (not a folder). The name is gone at once; who has the file open keeps it until he closes it.
HALVEX_EXPORT std::error_code deleteFile(const char* name);

/// Puts `bytes` in the place of a file's content, or makes the file: a reader sees the one or the other, never half of
/// it, and after a power cut stands one of the two. Written to `name` with ".new" appended, which is then renamed; who
/// replaces the same file at the same time gets std::errc::device_or_resource_busy.
HALVEX_EXPORT std::error_code replaceFile(const std::string& name, std::span<const unsigned char> bytes);

/// How many files and other descriptors this process may have open.
[[nodiscard]] HALVEX_EXPORT std::uint64_t openFilesLimit();
/// Raises that limit as far as the process is allowed to by itself; false when it stands there already.
HALVEX_EXPORT bool raiseOpenFilesLimit();

}  // namespace os
