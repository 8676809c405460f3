#pragma once

#include <cstddef>
#include <functional>
#include <vector>

/// A run of bytes, owned by value: the payload of a request. One thread at a time.
class CMemoryBuffer {
public:
    CMemoryBuffer() = default;
    CMemoryBuffer(const void* data, std::size_t size) { assign(data, size); }

    /// Replaces the content by a copy of `size` bytes at `data`, which may lie inside this buffer; null leaves it
    /// empty. The memory is used again where it suffices.
    void assign(const void* data, std::size_t size) {
        const auto* bytes = static_cast<const unsigned char*>(data);
        const std::less<const unsigned char*> before;
        if (bytes == nullptr) {
            clear();
        } else if (!before(bytes, m_bytes.data()) && before(bytes, m_bytes.data() + m_bytes.size())) {
            m_bytes = std::vector<unsigned char>(bytes, bytes + size);
        } else {
            m_bytes.assign(bytes, bytes + size);
        }
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
