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
    /// "%0*u"
    void number(std::uint32_t value, int digits);
    /// "%0*d"
    void signedNumber(std::int32_t value, int digits);
    /// "%0*.*f": up to ten decimals. The nearest decimal, to even where two are as near: what the value is exactly
    /// counts, not its product with the power of ten.
    void fixed(double value, int decimals, int width = 0);
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
