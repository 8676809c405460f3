#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>

namespace halvex::rtcm3 {

/// Reads fields of a message, highest bit first. What would go past the end is read as 0, and ok() is false from then
/// on: who reads a whole message looks once, at its end. Refers to the caller's bytes. One thread at a time.
class BitReader {
public:
    explicit BitReader(std::span<const unsigned char> bytes) : m_bytes(bytes) {}

    /// The next `width` bits (0 to 64) as a number without a sign.
    [[nodiscard]] std::uint64_t bits(unsigned width) {
        if (width > left()) {
            m_ok = false;
            m_bit = m_bytes.size() * 8;
        }
        if (width == 0 || !m_ok) return 0;
        const std::size_t byte = m_bit / 8;
        const auto shift = static_cast<unsigned>(m_bit % 8);
        m_bit += width;
        std::uint64_t value = load(byte) << shift;
        if (width + shift > 64) value |= static_cast<std::uint64_t>(m_bytes[byte + 8]) >> (8 - shift);
        return value >> (64 - width);
    }
    /// The same in two's complement.
    [[nodiscard]] std::int64_t signedBits(unsigned width) {
        if (width == 0) return 0;
        return static_cast<std::int64_t>(bits(width) << (64 - width)) >> (64 - width);
    }
    /// The same as a sign and a magnitude (data type intS): 1 to 64 bits.
    [[nodiscard]] std::int64_t signMagnitude(unsigned width) {
        const bool negative = flag();
        const auto magnitude = static_cast<std::int64_t>(bits(width - 1));
        return negative ? -magnitude : magnitude;
    }
    [[nodiscard]] bool flag() { return bits(1) != 0; }
    /// The same for numbers that an unsigned holds: up to 32 bits.
    [[nodiscard]] unsigned number(unsigned width) { return static_cast<unsigned>(bits(width)); }
    /// The next bits as the number of a record's member, which is wide enough for them.
    template <class T>
    void take(unsigned width, T& value) {
        value = static_cast<T>(bits(width));
    }
    /// The same in two's complement.
    template <class T>
    void takeSigned(unsigned width, T& value) {
        value = static_cast<T>(signedBits(width));
    }
    void skip(std::size_t width) {
        if (width > left()) {
            m_ok = false;
            width = left();
        }
        m_bit += width;
    }

    /// Bits not yet read.
    [[nodiscard]] std::size_t left() const { return m_bytes.size() * 8 - m_bit; }
    [[nodiscard]] std::size_t position() const { return m_bit; }
    /// Nothing has been read past the end.
    [[nodiscard]] bool ok() const { return m_ok; }

private:
    /// Eight bytes, the first highest; zeros behind the end.
    [[nodiscard]] std::uint64_t load(std::size_t byte) const {
        std::uint64_t word = 0;
        const std::size_t available = m_bytes.size() - byte;
        std::memcpy(&word, m_bytes.data() + byte, available < sizeof word ? available : sizeof word);
        return std::endian::native == std::endian::little ? __builtin_bswap64(word) : word;
    }

    std::span<const unsigned char> m_bytes;
    std::size_t m_bit = 0;
    bool m_ok = true;
};

}  // namespace halvex::rtcm3
