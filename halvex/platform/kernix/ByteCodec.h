#pragma once

#include <bit>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <type_traits>

namespace halvex {

/// The numbers that are persisted: integers other than bool and char, and the two IEEE floating-point formats.
template <class T>
concept Persistable = (std::integral<T> && !std::same_as<T, bool>) || std::same_as<T, float> || std::same_as<T, double>;

template <std::size_t Size>
using UnsignedOfSize = std::conditional_t<
    Size == 1, std::uint8_t,
    std::conditional_t<Size == 2, std::uint16_t, std::conditional_t<Size == 4, std::uint32_t, std::uint64_t>>>;

/// Little-endian bytes at `to`, which has room for them. The one place where a number becomes bytes.
template <Persistable T>
inline void storeLittleEndian(unsigned char* to, T value) {
    auto bits = std::bit_cast<UnsignedOfSize<sizeof(T)>>(value);
    if constexpr (std::endian::native == std::endian::little) {
        std::memcpy(to, &bits, sizeof bits);
    } else {
        for (std::size_t i = 0; i < sizeof bits; ++i) to[i] = static_cast<unsigned char>(bits >> (8 * i));
    }
}

/// The number whose little-endian bytes stand at `from`.
template <Persistable T>
[[nodiscard]] inline T loadLittleEndian(const unsigned char* from) {
    UnsignedOfSize<sizeof(T)> bits = 0;
    if constexpr (std::endian::native == std::endian::little) {
        std::memcpy(&bits, from, sizeof bits);
    } else {
        for (std::size_t i = 0; i < sizeof bits; ++i) {
            bits = static_cast<decltype(bits)>(bits | (static_cast<decltype(bits)>(from[i]) << (8 * i)));
        }
    }
    return std::bit_cast<T>(bits);
}

/// Reads fields from a buffer one after another. A read past the end gives 0 and marks the reader as failed for good,
/// so that a whole field list can be read before ok() is asked. Refers to the caller's bytes; one thread at a time.
class ByteReader {
public:
    ByteReader(const unsigned char* buffer, std::size_t size)
        : m_at(buffer), m_left(buffer != nullptr ? size : 0), m_ok(buffer != nullptr) {}
    explicit ByteReader(std::span<const unsigned char> bytes) : ByteReader(bytes.data(), bytes.size()) {}

    template <Persistable T>
    void operator()(T& value) {
        const unsigned char* from = take(sizeof(T));
        value = from != nullptr ? loadLittleEndian<T>(from) : T{};
    }
    /// A bool is one byte: 0 is false, anything else true.
    void operator()(bool& value) {
        std::uint8_t byte = 0;
        (*this)(byte);
        value = byte != 0;
    }
    /// The next `count` bytes, or null (and failed) when fewer are left.
    [[nodiscard]] const unsigned char* take(std::size_t count) {
        if (!m_ok || m_left < count) {
            m_ok = false;
            return nullptr;
        }
        const unsigned char* from = m_at;
        m_at += count;
        m_left -= count;
        return from;
    }
    [[nodiscard]] std::size_t left() const { return m_left; }
    [[nodiscard]] const unsigned char* position() const { return m_at; }
    [[nodiscard]] bool ok() const { return m_ok; }
    void fail() { m_ok = false; }

private:
    const unsigned char* m_at;
    std::size_t m_left;
    bool m_ok;
};

/// Writes fields into a buffer one after another. Nothing is written past its end: the first field that does not fit
/// marks the writer as failed and it writes no more. Refers to the caller's bytes; one thread at a time.
class ByteWriter {
public:
    ByteWriter(unsigned char* buffer, std::size_t size)
        : m_at(buffer), m_left(buffer != nullptr ? size : 0), m_ok(buffer != nullptr) {}

    template <Persistable T>
    void operator()(T value) {
        if (unsigned char* to = take(sizeof(T))) storeLittleEndian(to, value);
    }
    void operator()(bool value) { (*this)(static_cast<std::uint8_t>(value ? 1 : 0)); }
    /// Room for the next `count` bytes, or null (and failed) when fewer are left.
    [[nodiscard]] unsigned char* take(std::size_t count) {
        if (!m_ok || m_left < count) {
            m_ok = false;
            return nullptr;
        }
        unsigned char* to = m_at;
        m_at += count;
        m_left -= count;
        return to;
    }
    [[nodiscard]] std::size_t left() const { return m_left; }
    [[nodiscard]] bool ok() const { return m_ok; }

private:
    unsigned char* m_at;
    std::size_t m_left;
    bool m_ok;
};

/// Counts the bytes of a field list.
class ByteCounter {
public:
    template <class T>
    requires Persistable<T> || std::same_as<T, bool>
    void operator()(T) { m_size += sizeof(T); }
    [[nodiscard]] std::size_t size() const { return m_size; }

private:
    std::size_t m_size = 0;
};

}  // namespace halvex
