#include "tools/halvex/pictures/Svg.h"

#include <fmt/format.h>

#include <cstdint>
#include <iterator>
#include <utility>

namespace halvex::tool {
namespace {

/// Hundredths are finer than any printer; without zeros at the end the file is a third smaller.
std::string number(double value) {
    std::string text = fmt::format("{:.2f}", value);
    text.erase(text.find_last_not_of('0') + 1);
    if (text.back() == '.') text.pop_back();
    return text == "-0" ? "0" : text;
}

/// Takes one character of UTF-8 off the front; empty, and one byte less, when it is none that XML may hold.
std::string_view takeCharacter(std::string_view& text) {
    const auto byte = [&text](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    const unsigned lead = byte(0);
    const std::size_t length = lead < 0x80 ? 1 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
    bool good = lead < 0x80 || (lead >= 0xC2 && lead < 0xF5 && text.size() >= length);
    std::uint32_t code = length == 1 ? lead : lead & (0x7FU >> length);
    for (std::size_t i = 1; good && i < length; ++i) {
        good = (byte(i) & 0xC0U) == 0x80U;
        code = code << 6 | (byte(i) & 0x3FU);
    }
    constexpr std::uint32_t kShortest[] = {0, 0, 0x80, 0x800, 0x10000};
    good = good && code >= kShortest[length] && code <= 0x10FFFF && (code >= 0x20 || code == '\t') &&
           !(code >= 0xD800 && code < 0xE000) && code != 0x7F && (code & 0xFFFEU) != 0xFFFEU;
    const std::string_view character = text.substr(0, good ? length : 0);
    text.remove_prefix(good ? length : 1);
    return character;
}

std::string escaped(std::string_view text) {
    std::string out;
    while (!text.empty()) {
        const std::string_view character = takeCharacter(text);
        if (character.empty()) {
            out += '?';
        } else if (character == "&") {
            out += "&amp;";
        } else if (character == "<") {
            out += "&lt;";
        } else if (character == ">") {
            out += "&gt;";
        } else {
            out += character;
        }
    }
    return out;
}

}  // namespace

double textWidth(std::string_view text, double fontSize) {
    double characters = 0.0;
    while (!text.empty()) {
        takeCharacter(text);
        characters += 1.0;
    }
    constexpr double kWidest = 0.7;  // of the font size, on average over the letters and digits of a name
    return characters * kWidest * fontSize;
}

Svg::Svg(double width, double height, std::string_view title) {
    m_text = fmt::format(
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
        "<svg xmlns=\"http://www.w3.org/2000/svg\" viewBox=\"0 0 {0} {1}\" width=\"{0}\" height=\"{1}\" role=\"img\" "
        "font-family=\"sans-serif\" font-size=\"12\" fill=\"#1a1a1a\">\n<title>{2}</title>\n",
        number(width), number(height), escaped(title));
    rectangle({0.0, 0.0, width, height}, "fill=\"#fcfcfa\"");
}

void Svg::beginGroup(std::string_view attributes) {
    fmt::format_to(std::back_inserter(m_text), "<g {}>\n", attributes);
}

void Svg::line(Point from, Point to, std::string_view attributes) {
    fmt::format_to(std::back_inserter(m_text), "<line x1=\"{}\" y1=\"{}\" x2=\"{}\" y2=\"{}\" {}/>\n", number(from.x),
                   number(from.y), number(to.x), number(to.y), attributes);
}

void Svg::shape(std::string_view element, std::span<const Point> corners, std::string_view attributes) {
    fmt::format_to(std::back_inserter(m_text), "<{} points=\"", element);
    for (const Point& corner : corners) {
        m_text += number(corner.x) + ',' + number(corner.y) + (&corner == &corners.back() ? "" : " ");
    }
    fmt::format_to(std::back_inserter(m_text), "\" {}/>\n", attributes);
}

void Svg::polyline(std::span<const Point> corners, std::string_view attributes) {
    shape("polyline", corners, attributes);
}

void Svg::polygon(std::span<const Point> corners, std::string_view attributes) {
    shape("polygon", corners, attributes);
}

void Svg::circle(Point centre, double radius, std::string_view attributes) {
    fmt::format_to(std::back_inserter(m_text), "<circle cx=\"{}\" cy=\"{}\" r=\"{}\" {}/>\n", number(centre.x),
                   number(centre.y), number(radius), attributes);
}

void Svg::rectangle(const Box& box, std::string_view attributes) {
    fmt::format_to(std::back_inserter(m_text), "<rect x=\"{}\" y=\"{}\" width=\"{}\" height=\"{}\" {}/>\n",
                   number(box.x), number(box.y), number(box.width), number(box.height), attributes);
}

void Svg::text(Point at, std::string_view words, std::string_view attributes) {
    fmt::format_to(std::back_inserter(m_text), "<text x=\"{}\" y=\"{}\" {}>{}</text>\n", number(at.x), number(at.y),
                   attributes, escaped(words));
}

std::string Svg::finish() {
    m_text += "</svg>\n";
    return std::move(m_text);
}

}  // namespace halvex::tool
