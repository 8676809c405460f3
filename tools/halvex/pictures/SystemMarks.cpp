#include "tools/halvex/pictures/SystemMarks.h"

#include <fmt/format.h>

#include <vector>

namespace halvex::tool {
namespace {

struct Mark {
    CALN::eCALSATSYSTEM system;
    std::string_view colour;
    std::string_view dashes;
    std::vector<Point> corners;  // in radii; none: a circle
};

const Mark& markOf(CALN::eCALSATSYSTEM system) {
    static const Mark marks[] = {
        {CALN::eCALSATSYSTEM_GPS, "#2b7bd1", "", {}},
        {CALN::eCALSATSYSTEM_GLONASS,
         "#c8102e",
         "stroke-dasharray=\"9 3\"",
         {{-0.85, -0.85}, {0.85, -0.85}, {0.85, 0.85}, {-0.85, 0.85}}},
        {CALN::eCALSATSYSTEM_GALILEO, "#00936b", "stroke-dasharray=\"2 2\"", {{0.0, -1.15}, {1.1, 0.8}, {-1.1, 0.8}}},
        {CALN::eCALSATSYSTEM_BEIDOU,
         "#6b1070",
         "stroke-dasharray=\"9 3 2 3\"",
         {{0.0, -1.2}, {1.2, 0.0}, {0.0, 1.2}, {-1.2, 0.0}}},
        {CALN::eCALSATSYSTEM_QZSS, "#a98600", "stroke-dasharray=\"5 5\"", {{0.0, 1.15}, {-1.1, -0.8}, {1.1, -0.8}}},
        {CALN::eCALSATSYSTEM_NAVIC,
         "#1a1a1a",
         "stroke-dasharray=\"1 4\"",
         {{-0.4, -1.1},
          {0.4, -1.1},
          {0.4, -0.4},
          {1.1, -0.4},
          {1.1, 0.4},
          {0.4, 0.4},
          {0.4, 1.1},
          {-0.4, 1.1},
          {-0.4, 0.4},
          {-1.1, 0.4},
          {-1.1, -0.4},
          {-0.4, -0.4}}},
    };
    for (const Mark& mark : marks) {
        if (mark.system == system) return mark;
    }
    return marks[0];
}

}  // namespace

std::string_view colourOf(CALN::eCALSATSYSTEM system) {
    return markOf(system).colour;
}

std::string_view dashesOf(CALN::eCALSATSYSTEM system) {
    return markOf(system).dashes;
}

void drawMark(Svg& svg, CALN::eCALSATSYSTEM system, Point at, bool healthy) {
    const Mark& mark = markOf(system);
    const std::string attributes =
        fmt::format("fill=\"{}\" stroke=\"{}\" stroke-width=\"1.5\"", healthy ? mark.colour : "#ffffff", mark.colour);
    if (mark.corners.empty()) return svg.circle(at, kMarkRadius * 0.9, attributes);
    std::vector<Point> corners;
    for (const Point& corner : mark.corners) {
        corners.push_back({at.x + kMarkRadius * corner.x, at.y + kMarkRadius * corner.y});
    }
    svg.polygon(corners, attributes);
}

}  // namespace halvex::tool
