#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "halvex/platform/caln/SatelliteSystem.h"
#include "halvex/platform/mjd/MjdTime.h"
#include "tools/halvex/pictures/Svg.h"

namespace halvex::tool {

/// The systems whose visible satellites are counted, in the order of their counts.
inline constexpr std::array<CALN::eCALSATSYSTEM, 5> kCountedSystems = {
    CALN::eCALSATSYSTEM_GPS, CALN::eCALSATSYSTEM_GLONASS, CALN::eCALSATSYSTEM_GALILEO, CALN::eCALSATSYSTEM_BEIDOU,
    CALN::eCALSATSYSTEM_QZSS};

/// Visible satellites at an epoch.
struct VisibleSatellites {
    SMjdTime t;
    std::array<unsigned, kCountedSystems.size()> counts{};

    [[nodiscard]] unsigned sum() const {
        unsigned total = 0;
        for (const unsigned count : counts) total += count;
        return total;
    }
};

/// A picture of the counts over time: a step curve for each system that is ever seen and one for the sum. A count holds
/// until the next epoch. The epochs, of which there is at least one, are in order; the mask is in degrees.
[[nodiscard]] std::string drawTimeline(const std::string& site, double mask,
                                       const std::vector<VisibleSatellites>& epochs);

}  // namespace halvex::tool
