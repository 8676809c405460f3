#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <system_error>

#include "halvex/platform/Export.h"
#include "halvex/platform/os/File.h"

/// A file that is read through a window, mostly forward. Owns the open file. One thread at a time.
///
/// The file may grow or be cut off while it is open: nothing is mapped, what is gone is simply not there any more.
/// Operations return false or null on failure; GetLastError() keeps the system's reason until the next Open(), and
/// stays clear when a range was merely not in the file.
class HALVEX_EXPORT CFileReadBuffer {
public:
    CFileReadBuffer() = default;
    /// Copying transfers the open file and leaves the source closed.
    CFileReadBuffer(CFileReadBuffer& source) noexcept;
    CFileReadBuffer(CFileReadBuffer&& source) noexcept;
    CFileReadBuffer& operator=(CFileReadBuffer& source) noexcept;
    CFileReadBuffer& operator=(CFileReadBuffer&& source) noexcept { return *this = source; }
    ~CFileReadBuffer() = default;

    /// Opens an existing file, closing the one before it, if any; share modes as in os::File. With `version` the word
    /// in the file's first 4 bytes is stored there, and a file without one is refused.
    bool Open(const char* name, std::uint32_t shareMode = os::kShareReadWrite, std::uint32_t* version = nullptr);
    [[nodiscard]] bool IsOpen() const { return m_file.isOpen(); }
    bool Close();

    /// The bytes [position, position + size), or null when the file does not hold all of them. They stay until the next
    /// call on this object. The range is checked against the file before anything is allocated for it.
    [[nodiscard]] const unsigned char* GetData(std::uint64_t position, std::uint64_t size);
    /// Size of the file now; 0 when it cannot be told.
    [[nodiscard]] std::uint64_t GetFileSizeEx();
    [[nodiscard]] std::error_code GetLastError() const { return m_error; }

private:
    bool refill(std::uint64_t position, std::uint64_t size);
    bool succeeded(std::error_code error);

    struct HALVEX_EXPORT FreeWindow {
        void operator()(unsigned char* window) const;
    };

    os::File m_file;
    std::unique_ptr<unsigned char[], FreeWindow> m_window;
    std::size_t m_capacity = 0;  ///< bytes allocated
    std::uint64_t m_start = 0;   ///< position of the window in the file
    std::size_t m_filled = 0;    ///< bytes of the file in the window
    std::error_code m_error;
};
