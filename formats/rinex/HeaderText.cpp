#include "formats/rinex/HeaderText.h"

#include <algorithm>
#include <array>
#include <charconv>

#include "formats/rinex/HeaderFields.h"

namespace halvex::rinex {
namespace {

std::string printed(double value, std::size_t width, std::chars_format form, int places) {
    std::array<char, 64> text{};
    const auto [end, fault] = std::to_chars(text.data(), text.data() + text.size(), value, form, places);
    return fault == std::errc() ? right(std::string(text.data(), end), width) : std::string(width, ' ');
}

}  // namespace

std::string left(std::string text, std::size_t width) {
    text.resize(width, ' ');
    std::replace_if(
        text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < ' ' || c == 0x7F; }, ' ');
    return text;
}

std::string right(const std::string& text, std::size_t width) {
    return text.size() <= width ? std::string(width - text.size(), ' ') + text : std::string(width, ' ');
}

std::string integer(long long value, std::size_t width) {
    return right(std::to_string(value), width);
}

std::string decimal(double value, std::size_t width, int places) {
    return printed(value, width, std::chars_format::fixed, places);
}

std::string scientific(double value, std::size_t width, int places) {
    return printed(value, width, std::chars_format::scientific, places);
}

void HeaderText::record(const std::string& content, std::string_view label) {
    m_text += left(content, kLabelColumn);
    m_text += label;
    m_text += '\n';
}

void HeaderText::list(const std::string& head, const std::vector<std::string>& entries, std::size_t perLine,
                      std::string_view label) {
    std::string line = head;
    for (std::size_t i = 0; i < entries.size(); ++i) {
        if (i > 0 && i % perLine == 0) {
            record(line, label);
            line.assign(head.size(), ' ');
        }
        line += entries[i];
    }
    record(line, label);
}

}  // namespace halvex::rinex
