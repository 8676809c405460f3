#pragma once

#include <string>

#include "halvex/platform/caln/Coordinates.h"

namespace halvex::tool {

/// Where somebody looks at the sky from.
struct Site {
    std::string name;  ///< of the marker, or the words it was given in
    CGeoCoord position;
    bool named = false;  ///< the name is more than its coordinates
};

/// A site as people give it: "LAT,LON,H" (degrees north and east, metres), "X,Y,Z" (Earth-fixed metres; told apart by
/// the distance from the Earth's centre) or the name of a RINEX observation file, whose header has the position.
/// Failure when it is none, or a file without a position.
[[nodiscard]] Site parseSite(const std::string& text);

}  // namespace halvex::tool
