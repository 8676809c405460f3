#pragma once

#include <array>

#include "halvex/platform/caln/Coordinates.h"

namespace halvex::tool {

/// Coefficients of the broadcast ionosphere model, in powers of semicircles. IS-GPS-200, 20.3.3.5.2.5.
struct KlobucharCoefficients {
    std::array<double, 4> alpha{};
    std::array<double, 4> beta{};
};

/// Of a quiet year, to the digits that files print: whoever reads a simulated navigation file has these.
inline constexpr KlobucharCoefficients kSimulatedIonosphere{{1.1176e-8, 1.4901e-8, -5.9605e-8, -5.9605e-8},
                                                            {9.0112e4, 4.9152e4, -1.9661e5, -6.5536e4}};

/// Delay of GPS L1 code by the broadcast ionosphere model [m]; angles in radians. The delay of another carrier is
/// larger by the square of the ratio of frequencies, phases are ahead by as much as codes are late.
[[nodiscard]] double klobucharDelay(const KlobucharCoefficients& coefficients, const ORBIT_GEOGRAPHIC& site,
                                    double elevation, double azimuth, double gpsSeconds);

/// Delay by the troposphere [m], the same for all signals: Saastamoinen's dry zenith delay in the standard atmosphere
/// (Atmospheric correction for the troposphere and stratosphere, 1972) and 0.10 m of water vapour at sea level, mapped
/// by 1.001 / sqrt(0.002001 + sin^2 E) (Black and Eisner 1984). For elevations above some five degrees and heights up
/// to ten kilometres.
[[nodiscard]] double troposphereDelay(const ORBIT_GEOGRAPHIC& site, double elevation);

}  // namespace halvex::tool
