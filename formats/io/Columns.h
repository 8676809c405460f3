#pragma once

#include <cstddef>
#include <string_view>

namespace halvex {

/// `width` columns of a line from `first` on (0-based); what lies behind the end of the line is left out.
[[nodiscard]] inline std::string_view columns(std::string_view line, std::size_t first,
                                              std::size_t width = std::string_view::npos) {
    return first < line.size() ? line.substr(first, width) : std::string_view();
}

/// One column; a blank behind the end of the line.
[[nodiscard]] inline char columnAt(std::string_view line, std::size_t column) {
    return column < line.size() ? line[column] : ' ';
}

[[nodiscard]] inline bool isBlank(std::string_view text) {
    return text.find_first_not_of(' ') == std::string_view::npos;
}

[[nodiscard]] inline std::string_view withoutTrailingBlanks(std::string_view text) {
    return text.substr(0, text.find_last_not_of(' ') + 1);
}

[[nodiscard]] inline std::string_view withoutBlanks(std::string_view text) {
    text = withoutTrailingBlanks(text);
    return isBlank(text) ? std::string_view() : text.substr(text.find_first_not_of(' '));
}

}  // namespace halvex
