#include "halvex/platform/kernix/FileReadBuffer.h"

#include <algorithm>
#include <limits>
#include <new>
#include <utility>

#include "halvex/platform/kernix/ByteCodec.h"

namespace {

/// Large enough that the system call is lost in the copying, small enough to stay in a core's cache.
constexpr std::size_t kWindow = std::size_t{256} << 10;

/// Windows begin at multiples of this in the file as in memory: the system copies whole pages a good deal faster.
constexpr std::size_t kPage = 4096;
constexpr std::align_val_t kAlignment{kPage};

}  // namespace

CFileReadBuffer::CFileReadBuffer(CFileReadBuffer& source) noexcept {
    *this = source;
}

CFileReadBuffer::CFileReadBuffer(CFileReadBuffer&& source) noexcept {
    *this = source;
}

CFileReadBuffer& CFileReadBuffer::operator=(CFileReadBuffer& source) noexcept {
    if (this == &source) return *this;
    m_file = std::move(source.m_file);
    m_window = std::move(source.m_window);
    m_capacity = std::exchange(source.m_capacity, 0);
    m_start = source.m_start;
    m_filled = std::exchange(source.m_filled, 0);
    m_error = source.m_error;
    return *this;
}

void CFileReadBuffer::FreeWindow::operator()(unsigned char* window) const {
    ::operator delete[](window, kAlignment);
}

bool CFileReadBuffer::succeeded(std::error_code error) {
    if (error) m_error = error;
    return !error;
}

bool CFileReadBuffer::Open(const char* name, std::uint32_t shareMode, std::uint32_t* version) {
    Close();
    m_error.clear();
    if (!succeeded(m_file.openForReading(name, shareMode))) return false;
    m_file.expectSequentialReading();
    if (version == nullptr) return true;
    const unsigned char* word = GetData(0, sizeof *version);
    if (word != nullptr) {
        *version = halvex::loadLittleEndian<std::uint32_t>(word);
    } else {
        Close();
    }
    return word != nullptr;
}

bool CFileReadBuffer::Close() {
    m_window.reset();
    m_capacity = 0;
    m_filled = 0;
    return succeeded(m_file.close());
}

const unsigned char* CFileReadBuffer::GetData(std::uint64_t position, std::uint64_t size) {
    const auto held = [&] {
        return position >= m_start && position - m_start <= m_filled && size <= m_filled - (position - m_start);
    };
    if (m_window && held()) return m_window.get() + (position - m_start);
    return refill(position, size) ? m_window.get() + (position - m_start) : nullptr;
}

bool CFileReadBuffer::refill(std::uint64_t position, std::uint64_t size) {
    std::uint64_t fileSize = 0;
    if (!succeeded(m_file.size(fileSize))) return false;
    if (position > fileSize || size > fileSize - position) return false;
    if (size > std::numeric_limits<std::size_t>::max() / 2) {
        return succeeded(std::make_error_code(std::errc::not_enough_memory));
    }

    m_filled = 0;
    const std::size_t before = static_cast<std::size_t>(position % kPage);
    const std::size_t needed = std::max(before + static_cast<std::size_t>(size), kWindow);
    // A window that one large range has opened wide is given back as soon as small ranges are asked for again.
    if (needed > m_capacity || m_capacity > std::max(needed, 4 * kWindow)) {
        m_capacity = 0;
        m_window.reset(static_cast<unsigned char*>(::operator new[](needed, kAlignment, std::nothrow)));
        if (!m_window) return succeeded(std::make_error_code(std::errc::not_enough_memory));
        m_capacity = needed;
    }
    std::size_t count = 0;
    if (!succeeded(m_file.readAt(position - before, {m_window.get(), m_capacity}, count))) return false;
    m_start = position - before;
    m_filled = count;
    return count >= before + size;  // less when the file was cut off since its size was asked
}

std::uint64_t CFileReadBuffer::GetFileSizeEx() {
    std::uint64_t size = 0;
    return succeeded(m_file.size(size)) ? size : 0;
}
