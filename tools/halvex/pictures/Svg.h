#pragma once

#include <span>
#include <string>
#include <string_view>

namespace halvex::tool {

/// A place in a picture: x to the right, y downwards [units of the viewBox].
struct Point {
    double x = 0.0;
    double y = 0.0;
};

/// An upright rectangle by its upper left corner.
struct Box {
    double x = 0.0;
    double y = 0.0;
    double width = 0.0;
    double height = 0.0;

    /// They share more than an edge.
    [[nodiscard]] bool overlaps(const Box& other) const {
        return x < other.x + other.width && other.x < x + width && y < other.y + other.height && other.y < y + height;
    }
    [[nodiscard]] bool contains(const Box& other) const {
        return other.x >= x && other.y >= y && other.x + other.width <= x + width &&
               other.y + other.height <= y + height;
    }
};

/// Room that a text in any common sans-serif font needs at most [units of the viewBox].
[[nodiscard]] double textWidth(std::string_view text, double fontSize);

/// Writes a picture (SVG 1.1) on a light panel of its own, so that it reads the same on paper and on a dark page: no
/// scripts, no fonts but the viewer's sans-serif, the same bytes for the same calls. `attributes` are written as they
/// are and come from the program; text from outside goes through text() and the title, which escape it.
class Svg {
public:
    Svg(double width, double height, std::string_view title);

    void beginGroup(std::string_view attributes);
    void endGroup() { m_text += "</g>\n"; }
    void line(Point from, Point to, std::string_view attributes = "");
    void polyline(std::span<const Point> corners, std::string_view attributes = "");
    void polygon(std::span<const Point> corners, std::string_view attributes = "");
    void circle(Point centre, double radius, std::string_view attributes = "");
    void rectangle(const Box& box, std::string_view attributes = "");
    /// The base line of the text begins at `at`, or where text-anchor says.
    void text(Point at, std::string_view words, std::string_view attributes = "");

    /// The whole picture. Nothing is added afterwards.
    [[nodiscard]] std::string finish();

private:
    void shape(std::string_view element, std::span<const Point> corners, std::string_view attributes);

    std::string m_text;
};

}  // namespace halvex::tool
