#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace halvex::rinex {

/// Text cut or filled with blanks to `width` columns; control characters become blanks.
[[nodiscard]] std::string left(std::string text, std::size_t width);
/// Text behind as many blanks as make it `width` columns; nothing but blanks when it is too wide.
[[nodiscard]] std::string right(const std::string& text, std::size_t width);
[[nodiscard]] std::string integer(long long value, std::size_t width);
/// Decimal with a point, whatever the locale.
[[nodiscard]] std::string decimal(double value, std::size_t width, int places);
/// The same with an exponent of two digits, as 1.2500E-08.
[[nodiscard]] std::string scientific(double value, std::size_t width, int places);

/// Lines of a header, each with its label behind column 60.
class HeaderText {
public:
    void record(const std::string& content, std::string_view label);
    /// A list, `perLine` entries to a line, the first behind `head` and the others behind as many blanks.
    void list(const std::string& head, const std::vector<std::string>& entries, std::size_t perLine,
              std::string_view label);

    [[nodiscard]] std::string take() { return std::move(m_text); }

private:
    std::string m_text;
};

}  // namespace halvex::rinex
