#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace halvex {

/// Builds text in a fixed piece of memory that the caller owns, never past its end: numbers as printf writes them in
/// the C locale. What does not fit, and a number that is not finite, makes it fail for good; what was written stays.
/// One thread at a time.
class SentenceText {
public:
    SentenceText(char* begin, std::size_t size) : m_begin(begin), m_at(begin), m_end(begin + size) {}

    void put(char c) {
        if (hasRoom(1)) *m_at++ = c;
    }
    void put(std::string_view text);
    /// "%02u"
    void twoDigits(std::uint32_t value) {
        if (value >= 100 || !hasRoom(2)) return number(value, 2);
        *m_at++ = static_cast<char>('0' + value / 10);
        *m_at++ = static_cast<char>('0' + value % 10);
    }
    /// "%0*u", up to ten digits
    void number(std::uint32_t value, int digits);
    /// "%0*d", up to ten digits
    void signedNumber(std::int32_t value, int digits);
    /// "%0*.*f", for 1, 2, 3, 4, 6, 7 and 10 decimals and a width of up to 20. The nearest decimal, to even where two
    /// are as near: what the value is exactly counts, not its product with the power of ten.
    template <int kDecimals>
    void fixed(double value, int width = 0);
    void fail() { m_ok = false; }

    [[nodiscard]] bool ok() const { return m_ok; }
    [[nodiscard]] std::size_t size() const { return static_cast<std::size_t>(m_at - m_begin); }

private:
    bool hasRoom(std::size_t bytes) {
        m_ok = m_ok && bytes <= static_cast<std::size_t>(m_end - m_at);
        return m_ok;
    }
    void fixedSlowly(double magnitude, int decimals, int width);

    char* m_begin;
    char* m_at;
    char* m_end;
    bool m_ok = true;
};

}  // namespace halvex
