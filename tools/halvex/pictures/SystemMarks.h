#pragma once

#include <string_view>

#include "halvex/platform/caln/SatelliteSystem.h"
#include "tools/halvex/pictures/Svg.h"

namespace halvex::tool {

inline constexpr double kMarkRadius = 5.0;

/// Colour of a system in pictures ("#rrggbb"). Each stands out against the panel by 3.4 to 1 and more, and any two
/// differ for the three kinds of colour-blindness too.
[[nodiscard]] std::string_view colourOf(CALN::eCALSATSYSTEM system);
/// Dashes of a system's lines, as an attribute that may be empty: print without colours keeps them apart.
[[nodiscard]] std::string_view dashesOf(CALN::eCALSATSYSTEM system);
/// Draws a satellite of a system: each has a shape of its own, filled when the satellite is healthy, else hollow.
void drawMark(Svg& svg, CALN::eCALSATSYSTEM system, Point at, bool healthy);

}  // namespace halvex::tool
