#include "tools/halvex/signals/Atmosphere.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace halvex::tool {
namespace {

constexpr double kSpeedOfLight = 299792458.0;  // [m/s]

double polynomial(const std::array<double, 4>& c, double x) {
    return c[0] + x * (c[1] + x * (c[2] + x * c[3]));
}

}  // namespace

double klobucharDelay(const KlobucharCoefficients& coefficients, const ORBIT_GEOGRAPHIC& site, double elevation,
                      double azimuth, double gpsSeconds) {
    // The model's own constants; angles in semicircles.
    constexpr double kPi = std::numbers::pi;
    const double e = elevation / kPi;
    const double psi = 0.0137 / (e + 0.11) - 0.022;
    const double latitude = std::clamp(site.latitude / kPi + psi * std::cos(azimuth), -0.416, 0.416);
    const double longitude = site.longitude / kPi + psi * std::sin(azimuth) / std::cos(latitude * kPi);
    const double magnetic = latitude + 0.064 * std::cos((longitude - 1.617) * kPi);
    double localTime = std::fmod(43200.0 * longitude + gpsSeconds, 86400.0);
    if (localTime < 0.0) localTime += 86400.0;
    const double amplitude = std::max(0.0, polynomial(coefficients.alpha, magnetic));
    const double period = std::max(72000.0, polynomial(coefficients.beta, magnetic));
    const double x = 2.0 * kPi * (localTime - 50400.0) / period;
    const double x2 = x * x;
    const double vertical = 5e-9 + (std::abs(x) < 1.57 ? amplitude * (1.0 - x2 / 2.0 + x2 * x2 / 24.0) : 0.0);
    const double above = 0.53 - e;
    return kSpeedOfLight * (1.0 + 16.0 * above * above * above) * vertical;
}

double troposphereDelay(const ORBIT_GEOGRAPHIC& site, double elevation) {
    const double height = std::clamp(site.height, -500.0, 10000.0);
    const double pressure = 1013.25 * std::pow(1.0 - 2.2557e-5 * height, 5.2568);  // [hPa]
    const double gravity = 1.0 - 0.00266 * std::cos(2.0 * site.latitude) - 0.28e-6 * height;
    const double wet = 0.10 * std::exp(-height / 2000.0);
    const double sine = std::sin(elevation);
    return (0.0022768 * pressure / gravity + wet) * 1.001 / std::sqrt(0.002001 + sine * sine);
}

}  // namespace halvex::tool
