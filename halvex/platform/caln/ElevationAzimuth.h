#pragma once

#include <array>
#include <limits>

#include "halvex/platform/caln/SatelliteSystem.h"
#include "halvex/platform/mjd/MjdTime.h"

namespace CALN {

/// Where one satellite stands in the sky of a site [rad].
struct SCalSatEpochDataOrbit {
    double elevation = 0.0;
    double azimuth = 0.0;  ///< clockwise from north
};

/// Elevation and azimuth of every satellite over one site at one epoch. Plain value of fixed size: filling it allocates
/// nothing.
struct SCalElevationAzimuth {
    SMjdTime epoch;  ///< GPS scale

    SCalElevationAzimuth() { clear(); }
    void clear() { m_directions.fill({kNone, kNone}); }
    /// What is no satellite is left out.
    void setEleAzi(const SCalSatID& id, double elevation, double azimuth) {
        if (const int index = halvex::satelliteIndex(id); index >= 0) {
            m_directions[static_cast<std::size_t>(index)] = {elevation, azimuth};
        }
    }
    /// False, leaving both alone, for a satellite without an entry.
    [[nodiscard]] bool getEleAzi(const SCalSatID& id, double& elevation, double& azimuth) const {
        const int index = halvex::satelliteIndex(id);
        if (index < 0) return false;
        const SCalSatEpochDataOrbit& direction = m_directions[static_cast<std::size_t>(index)];
        if (!(direction.elevation == direction.elevation)) return false;  // NaN: no entry
        elevation = direction.elevation;
        azimuth = direction.azimuth;
        return true;
    }

private:
    static constexpr double kNone = std::numeric_limits<double>::quiet_NaN();
    std::array<SCalSatEpochDataOrbit, static_cast<std::size_t>(halvex::kSatellites)> m_directions;
};

}  // namespace CALN
