#include "halvex/platform/kernix/FileWriteBuffer.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <limits>
#include <new>
#include <utility>

#include "halvex/platform/kernix/ByteCodec.h"

namespace {

/// A buffer that one large piece has made larger than this is given back once it is written.
constexpr std::size_t kKeptCapacity = std::size_t{1} << 20;

constexpr std::uint64_t kLargestPiece = std::numeric_limits<std::size_t>::max() / 2;

}  // namespace

CFileWriteBuffer::CFileWriteBuffer(CFileWriteBuffer& source) noexcept {
    *this = source;
}

CFileWriteBuffer::CFileWriteBuffer(CFileWriteBuffer&& source) noexcept {
    *this = source;
}

CFileWriteBuffer& CFileWriteBuffer::operator=(CFileWriteBuffer& source) noexcept {
    if (this == &source) return *this;
    Close();
    m_file = std::move(source.m_file);
    m_buffer = std::move(source.m_buffer);
    m_capacity = std::exchange(source.m_capacity, 0);
    m_used = std::exchange(source.m_used, 0);
    m_threshold = source.m_threshold;
    m_error = source.m_error;
    return *this;
}

CFileWriteBuffer::~CFileWriteBuffer() {
    Close();
}

bool CFileWriteBuffer::succeeded(std::error_code error) {
    if (error) m_error = error;
    return !error;
}

bool CFileWriteBuffer::Open(const char* name, std::uint32_t bufferSize, std::uint32_t /*reserved*/, bool overwrite,
                            std::uint32_t shareMode, std::uint32_t* version) {
    Close();
    m_error.clear();
    m_threshold = bufferSize > 1 ? bufferSize : 0;
    if (!succeeded(m_file.openForWriting(name, shareMode))) return false;
    if ((!overwrite || succeeded(m_file.truncate(0))) && (version == nullptr || prepareVersion(version))) return true;
    (void)m_file.close();
    return false;
}

bool CFileWriteBuffer::prepareVersion(std::uint32_t* version) {
    std::array<unsigned char, sizeof *version> word{};
    std::size_t found = 0;
    if (!succeeded(m_file.readAt(0, word, found))) return false;
    if (found == word.size()) {
        *version = halvex::loadLittleEndian<std::uint32_t>(word.data());
        return true;
    }
    halvex::storeLittleEndian(word.data(), *version);
    return succeeded(m_file.truncate(0)) && succeeded(m_file.append(word));
}

bool CFileWriteBuffer::makeRoom(std::uint64_t size) {
    if (!IsOpen()) return succeeded(std::make_error_code(std::errc::bad_file_descriptor));
    if (size > kLargestPiece) return succeeded(std::make_error_code(std::errc::not_enough_memory));
    if (m_used > 0 && m_used + size > m_threshold && !Flush()) return false;
    const std::size_t needed = m_used + static_cast<std::size_t>(size);
    if (needed <= m_capacity) return true;

    const std::size_t capacity = std::max<std::size_t>(needed, m_threshold);
    std::unique_ptr<unsigned char[]> larger(new (std::nothrow) unsigned char[capacity]);
    if (!larger) return succeeded(std::make_error_code(std::errc::not_enough_memory));
    if (m_used > 0) std::memcpy(larger.get(), m_buffer.get(), m_used);
    m_buffer = std::move(larger);
    m_capacity = capacity;
    return true;
}

unsigned char* CFileWriteBuffer::GetSpace(std::uint64_t size) {
    // A piece of no bytes has a place too: null means failure.
    if (!makeRoom(std::max<std::uint64_t>(size, 1))) return nullptr;
    unsigned char* space = m_buffer.get() + m_used;
    m_used += static_cast<std::size_t>(size);
    return space;
}

bool CFileWriteBuffer::Write(const void* data, std::uint64_t size) {
    if (size >= m_threshold) return WriteUnbuffered(data, size);
    if (data == nullptr && size > 0) return succeeded(std::make_error_code(std::errc::invalid_argument));
    unsigned char* space = GetSpace(size);
    if (space != nullptr && size > 0) std::memcpy(space, data, static_cast<std::size_t>(size));
    return space != nullptr;
}

bool CFileWriteBuffer::WriteUnbuffered(const void* data, std::uint64_t size) {
    if (size > kLargestPiece || (data == nullptr && size > 0)) {
        return succeeded(std::make_error_code(std::errc::invalid_argument));
    }
    const std::span piece(static_cast<const unsigned char*>(data), static_cast<std::size_t>(size));
    return WriteUnbuffered({&piece, 1});
}

bool CFileWriteBuffer::WriteUnbuffered(std::span<const std::span<const unsigned char>> pieces) {
    return Flush() && succeeded(m_file.append(pieces));
}

bool CFileWriteBuffer::Flush() {
    if (!IsOpen()) return succeeded(std::make_error_code(std::errc::bad_file_descriptor));
    if (!succeeded(m_file.append(pending()))) return false;
    m_used = 0;
    if (m_capacity > std::max<std::size_t>(m_threshold, kKeptCapacity)) {
        m_buffer.reset();
        m_capacity = 0;
    }
    return true;
}

bool CFileWriteBuffer::Close() {
    if (!IsOpen()) return true;
    const bool flushed = Flush();
    m_used = 0;
    m_capacity = 0;
    m_buffer.reset();
    return succeeded(m_file.close()) && flushed;
}

bool CFileWriteBuffer::GetFilePosition(std::uint64_t& position) {
    std::uint64_t written = 0;
    if (!succeeded(m_file.size(written))) return false;
    position = written + m_used;
    return true;
}

std::uint64_t CFileWriteBuffer::GetFileSizeEx() {
    std::uint64_t size = 0;
    return succeeded(m_file.size(size)) ? size : 0;
}
