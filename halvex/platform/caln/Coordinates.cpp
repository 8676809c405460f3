#include "halvex/platform/caln/Coordinates.h"

#include <cmath>
#include <numbers>

namespace halvex {

ORBIT_GEOGRAPHIC toGeographic(const ORBIT_COORD& position) {
    constexpr double a = kEarthSemiMajorAxis;
    constexpr double b = kEarthSemiMinorAxis;
    constexpr double kSecondEccentricity2 = (a * a - b * b) / (b * b);
    constexpr double kEccentricity2 = (a * a - b * b) / (a * a);

    const double p = std::sqrt(position.x * position.x + position.y * position.y);
    const double theta = std::atan2(position.z * a, p * b);
    const double sine = std::sin(theta);
    const double cosine = std::cos(theta);

    ORBIT_GEOGRAPHIC result;
    result.latitude = std::atan2(position.z + kSecondEccentricity2 * b * sine * sine * sine,
                                 p - kEccentricity2 * a * cosine * cosine * cosine);
    result.longitude = std::atan2(position.y, position.x);
    const double sinLatitude = std::sin(result.latitude);
    const double cosLatitude = std::cos(result.latitude);
    const double n = a * a / std::sqrt(a * a * cosLatitude * cosLatitude + b * b * sinLatitude * sinLatitude);
    result.height = p / cosLatitude - n;
    return result;
}

ORBIT_COORD toCartesian(const ORBIT_GEOGRAPHIC& position) {
    constexpr double a = kEarthSemiMajorAxis;
    constexpr double b = kEarthSemiMinorAxis;
    const double sinLatitude = std::sin(position.latitude);
    const double cosLatitude = std::cos(position.latitude);
    const double n = a * a / std::sqrt(a * a * cosLatitude * cosLatitude + b * b * sinLatitude * sinLatitude);
    return {(n + position.height) * cosLatitude * std::cos(position.longitude),
            (n + position.height) * cosLatitude * std::sin(position.longitude),
            (n * (b * b) / (a * a) + position.height) * sinLatitude};
}

LocalFrame::LocalFrame(const ORBIT_COORD& site, const ORBIT_GEOGRAPHIC& geographic) : m_site(site) {
    const double sinLatitude = std::sin(geographic.latitude);
    const double cosLatitude = std::cos(geographic.latitude);
    const double sinLongitude = std::sin(geographic.longitude);
    const double cosLongitude = std::cos(geographic.longitude);
    m_north = {-sinLatitude * cosLongitude, -sinLatitude * sinLongitude, cosLatitude};
    m_east = {-sinLongitude, cosLongitude, 0.0};
    m_up = {cosLatitude * cosLongitude, cosLatitude * sinLongitude, sinLatitude};
}

ORBIT_COORD LocalFrame::northEastUp(const ORBIT_COORD& d) const {
    return {m_north.x * d.x + m_north.y * d.y + m_north.z * d.z, m_east.x * d.x + m_east.y * d.y,
            m_up.x * d.x + m_up.y * d.y + m_up.z * d.z};
}

LocalFrame::Direction LocalFrame::directionTo(const ORBIT_COORD& position) const {
    const ORBIT_COORD d{position.x - m_site.x, position.y - m_site.y, position.z - m_site.z};
    const ORBIT_COORD local = northEastUp(d);
    const double distance = std::sqrt(d.x * d.x + d.y * d.y + d.z * d.z);

    Direction result;
    // Rounding can bring the sine of a zenith a hair above 1.
    const double sine = local.z / distance;
    result.elevation = std::asin(sine > 1.0 ? 1.0 : sine < -1.0 ? -1.0 : sine);
    constexpr double kFullCircle = 2.0 * std::numbers::pi;
    result.azimuth = std::atan2(local.y, local.x);
    if (result.azimuth < 0.0) result.azimuth += kFullCircle;
    if (result.azimuth >= kFullCircle) result.azimuth = 0.0;  // a tiny negative angle plus 2 pi rounds up to 2 pi
    return result;
}

}  // namespace halvex
