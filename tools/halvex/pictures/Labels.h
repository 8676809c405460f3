#pragma once

#include <optional>
#include <vector>

#include "tools/halvex/pictures/Svg.h"

namespace halvex::tool {

/// Finds places for the labels of points so that no label covers another one, a marker or anything else that was
/// reserved, and none leaves the area.
class Labels {
public:
    explicit Labels(const Box& area) : m_area(area) {}

    /// No label goes there. All of this comes before the first place().
    void reserve(const Box& box) { m_taken.push_back(box); }
    /// The first free place around a marker of that radius, and then in ever wider rings up to `reach` from it; the
    /// place is taken from then on. Empty when there is none.
    [[nodiscard]] std::optional<Box> place(Point marker, double radius, double width, double height, double reach);

private:
    Box m_area;
    std::vector<Box> m_taken;
};

}  // namespace halvex::tool
