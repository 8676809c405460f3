#include "tools/halvex/pictures/Labels.h"

#include <algorithm>

namespace halvex::tool {
namespace {

/// Where a label lies as seen from its marker, the best one first: right and left read most easily.
constexpr Point kDirections[] = {{1.0, 0.0},   {-1.0, 0.0}, {0.0, -1.0}, {0.0, 1.0}, {0.8, -0.8},  {0.8, 0.8},
                                 {-0.8, -0.8}, {-0.8, 0.8}, {1.0, -0.4}, {1.0, 0.4}, {-1.0, -0.4}, {-1.0, 0.4}};
constexpr double kRingWidth = 5.0;

}  // namespace

std::optional<Box> Labels::place(Point marker, double radius, double width, double height, double reach) {
    const int rings = static_cast<int>((reach - radius) / kRingWidth);
    for (int ring = 0; ring <= rings; ++ring) {
        const double distance = radius + ring * kRingWidth;
        for (const auto& [dx, dy] : kDirections) {
            const Point centre{marker.x + dx * (distance + width / 2.0), marker.y + dy * (distance + height / 2.0)};
            const Box box{centre.x - width / 2.0, centre.y - height / 2.0, width, height};
            const auto overlaps = [&box](const Box& other) { return box.overlaps(other); };
            if (m_area.contains(box) && std::none_of(m_taken.begin(), m_taken.end(), overlaps)) {
                m_taken.push_back(box);
                return box;
            }
        }
    }
    return std::nullopt;
}

}  // namespace halvex::tool
