#pragma once

#include <cstddef>
#include <vector>

/// A run of bytes, owned by value: the payload of a request. One thread at a time.
class CMemoryBuffer {
public:
    CMemoryBuffer() = default;
    CMemoryBuffer(const void* data, std::size_t size) { assign(data, size); }

    /// Replaces the content by a copy of `size` bytes at `data`, which may lie inside this buffer; null leaves it
    /// empty.
    void assign(const void* data, std::size_t size) {
        const auto* bytes = static_cast<const unsigned char*>(data);
        m_bytes = bytes != nullptr ? std::vector<unsigned char>(bytes, bytes + size) : std::vector<unsigned char>();
    }
    [[nodiscard]] const unsigned char* data() const { return m_bytes.data(); }
    [[nodiscard]] unsigned char* data() { return m_bytes.data(); }
    [[nodiscard]] std::size_t size() const { return m_bytes.size(); }
    [[nodiscard]] bool empty() const { return m_bytes.empty(); }
    void clear() { m_bytes.clear(); }

    friend bool operator==(const CMemoryBuffer&, const CMemoryBuffer&) = default;

private:
    std::vector<unsigned char> m_bytes;
};
