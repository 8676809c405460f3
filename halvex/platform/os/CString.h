#pragma once

#include <compare>
#include <cstddef>
#include <string>
#include <string_view>

#include "halvex/platform/Export.h"

/// Narrow string of the platform, over std::string but a type of its own, so that a function can offer both. Owns its
/// characters; compared by byte value, without regard to a locale.
class HALVEX_EXPORT CString {
public:
    CString() = default;
    CString(const char* text) : m_text(text != nullptr ? text : "") {}
    explicit CString(std::string text) : m_text(std::move(text)) {}
    explicit CString(std::string_view text) : m_text(text) {}

    CString& operator=(const char* text) { return *this = CString(text); }

    [[nodiscard]] int GetLength() const { return static_cast<int>(m_text.size()); }
    [[nodiscard]] bool IsEmpty() const { return m_text.empty(); }
    void Empty() { m_text.clear(); }
    /// Negative, 0 or positive as this string sorts before, with or after `other` in byte order.
    [[nodiscard]] int Compare(const char* other) const;

    [[nodiscard]] const std::string& str() const { return m_text; }
    operator const char*() const { return m_text.c_str(); }

    CString& operator+=(std::string_view tail) {
        m_text += tail;
        return *this;
    }
    friend CString operator+(const CString& left, const CString& right) { return CString(left.m_text + right.m_text); }
    friend CString operator+(const CString& left, const char* right) { return CString(left.m_text + right); }

    friend bool operator==(const CString&, const CString&) = default;
    friend bool operator==(const CString& left, const char* right) { return left.m_text == right; }
    friend std::strong_ordering operator<=>(const CString& left, const CString& right) {
        return left.m_text.compare(right.m_text) <=> 0;
    }

private:
    std::string m_text;
};
