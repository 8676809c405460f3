#include "halvex/platform/caln/GlonassAlmanac.h"

#include <cmath>
#include <numbers>

#include "halvex/platform/caln/GlonassMotion.h"
#include "halvex/platform/caln/SatPosition.h"

namespace halvex::glonass {

ORBIT_COORD almanacPosition(const AlmanacElements& elements, double dt) {
    constexpr double kPi = std::numbers::pi;
    constexpr double kNominalInclination = 1.0995574287564276;  // 63 degrees
    constexpr double kNominalPeriod = 43200.0;                  // [s]
    constexpr double kEarthRadius = 6378136.0;                  // [m], PZ-90
    constexpr double kEarthRate = 7.292115e-5;                  // [rad/s]
    constexpr double kDegreeADay = 2.0200570046230665e-7;       // [rad/s]

    const double e = elements.e;
    const double i = kNominalInclination + elements.deltaI;
    const double period = kNominalPeriod + elements.deltaT;
    const double n = 2.0 * kPi / period;
    const double a = std::cbrt(kGm / (n * n));
    const double q = std::pow(kEarthRadius / a, 3.5);
    const double cosI = std::cos(i);
    const double sinI = std::sin(i);
    const double nodeRate = -10.0 * q * kDegreeADay * cosI;
    const double perigeeRate = 5.0 * q * kDegreeADay * (5.0 * cosI * cosI - 1.0);
    const double node = elements.lambda + (nodeRate - kEarthRate) * dt;
    const double w = elements.omega + perigeeRate * dt;

    const double anomalyAtNode = 2.0 * std::atan(std::tan(w / 2.0) * std::sqrt((1.0 - e) / (1.0 + e)));
    double perigeeTime = (anomalyAtNode - e * std::sin(anomalyAtNode)) / n;
    if (w > kPi) perigeeTime += period;
    const double m = n * (dt - perigeeTime);
    double anomaly = 0.0;
    for (int step = 0; step < 10; ++step) anomaly = m + e * std::sin(anomaly);

    const double x = a * std::cos(anomaly) - a * e;
    const double y = a * std::sqrt(1.0 - e * e) * std::sin(anomaly);
    const double sinW = std::sin(w);
    const double cosW = std::cos(w);
    const double sinNode = std::sin(node);
    const double cosNode = std::cos(node);
    ORBIT_COORD position{x * (cosW * cosNode - sinW * sinNode * cosI) + y * (-sinW * cosNode - cosW * sinNode * cosI),
                         x * (cosW * sinNode + sinW * cosNode * cosI) + y * (-sinW * sinNode + cosW * cosNode * cosI),
                         x * (sinW * sinI) + y * (cosW * sinI)};
    transformPZ90ToWGS84(position);
    return position;
}

}  // namespace halvex::glonass
