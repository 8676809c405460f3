#include "tools/halvex/orbits/Site.h"

#include <array>
#include <cmath>
#include <filesystem>
#include <numbers>
#include <optional>

#include "formats/io/FixedNumber.h"
#include "tools/halvex/Tool.h"
#include "tools/halvex/streams/EpochSource.h"

namespace halvex::tool {
namespace {

/// Three numbers with commas between them; empty when the text is not of that form.
std::optional<std::array<double, 3>> threeNumbers(std::string_view text) {
    std::array<double, 3> numbers{};
    for (std::size_t i = 0; i < numbers.size(); ++i) {
        const std::size_t comma = i + 1 < numbers.size() ? text.find(',') : text.size();
        if (comma == std::string_view::npos || parseDecimal(text.substr(0, comma), numbers[i]) != Field::number) {
            return std::nullopt;
        }
        text.remove_prefix(std::min(comma + 1, text.size()));
    }
    return numbers;
}

CGeoCoord fromCartesian(const std::array<double, 3>& position) {
    const ORBIT_GEOGRAPHIC geographic = toGeographic({position[0], position[1], position[2]});
    return {geographic.latitude, geographic.longitude, geographic.height};
}

/// On Earth or in its air; the centre of the Earth, which headers without a position name, is not.
bool isOnEarth(const std::array<double, 3>& position) {
    const double distance = std::hypot(position[0], position[1], position[2]);
    return distance > 6.3e6 && distance < 6.5e6;
}

}  // namespace

Site parseSite(const std::string& text) {
    if (const auto numbers = threeNumbers(text)) {
        if (isOnEarth(*numbers)) return {text, fromCartesian(*numbers)};
        const auto [latitude, longitude, height] = *numbers;
        constexpr double kDegree = std::numbers::pi / 180.0;
        if (!(std::abs(latitude) <= 90.0 && std::abs(longitude) <= 360.0 && height > -1e4 && height < 1e5)) {
            throw Failure("the site '" + text +
                              "' is no place on Earth: give LAT,LON,H in degrees and metres, or X,Y,Z in metres",
                          Failure::kWrongUsage);
        }
        return {text, CGeoCoord(latitude * kDegree, longitude * kDegree, height)};
    }
    std::error_code ignored;
    if (!std::filesystem::exists(text, ignored)) {
        throw Failure("the site '" + text + "' is neither LAT,LON,H nor X,Y,Z nor an observation file",
                      Failure::kWrongUsage);
    }
    EpochSource source(text);
    const rinex::ObservationHeader& header = source.header();
    rinex::ObservationEpoch epoch;
    if (!header.position && source.next(epoch) == EpochSource::Result::error) throw source.error();
    if (!header.position || !isOnEarth(*header.position)) {
        throw Failure(text + ": its header has no position; give the site as LAT,LON,H or X,Y,Z");
    }
    return {header.markerName.empty() ? text : header.markerName, fromCartesian(*header.position), true};
}

}  // namespace halvex::tool
