#pragma once

#include "halvex/platform/Export.h"

/// A position, Earth-centred and Earth-fixed (WGS-84 unless said otherwise) [m]. Plain value.
struct ORBIT_COORD {
    double x = 0.0;
    double y = 0.0;
    double z = 0.0;

    friend bool operator==(const ORBIT_COORD&, const ORBIT_COORD&) = default;
};

/// A position by geographic latitude and longitude [rad] and height above the WGS-84 ellipsoid [m]. Plain value.
struct ORBIT_GEOGRAPHIC {
    double latitude = 0.0;
    double longitude = 0.0;
    double height = 0.0;

    friend bool operator==(const ORBIT_GEOGRAPHIC&, const ORBIT_GEOGRAPHIC&) = default;
};

/// A site by its geographic position: latitude and longitude [rad], height above the WGS-84 ellipsoid [m].
class CGeoCoord {
public:
    constexpr CGeoCoord() = default;
    constexpr CGeoCoord(double latitude, double longitude, double height)
        : m_latitude(latitude), m_longitude(longitude), m_height(height) {}

    [[nodiscard]] constexpr double GetLatitude() const { return m_latitude; }
    [[nodiscard]] constexpr double GetLongitude() const { return m_longitude; }
    [[nodiscard]] constexpr double GetHeight() const { return m_height; }

    friend bool operator==(const CGeoCoord&, const CGeoCoord&) = default;

private:
    double m_latitude = 0.0;
    double m_longitude = 0.0;
    double m_height = 0.0;
};

namespace CALN {

/// A site as the computation library wants it: the same point in both kinds of coordinates.
struct SCalCoordinateSet {
    ORBIT_COORD cartesian;
    ORBIT_GEOGRAPHIC geographic;
};

}  // namespace CALN

namespace halvex {

/// The WGS-84 ellipsoid [m]. Semi-minor axis to the digits the geometry was always computed with; NIMA TR8350.2, 3.2.
inline constexpr double kEarthSemiMajorAxis = 6378137.0;
inline constexpr double kEarthSemiMinorAxis = 6356752.314247833;

/// Geographic coordinates by a single step of Bowring's method (Survey Review 23, 1976): better than a tenth of a
/// millimetre up to the heights of aircraft. On the axis of the Earth the longitude is 0, the latitude +-pi/2 and the
/// height follows the formula as it stands, p / cos(latitude) - N.
[[nodiscard]] HALVEX_EXPORT ORBIT_GEOGRAPHIC toGeographic(const ORBIT_COORD& position);

/// The inverse, exact.
[[nodiscard]] HALVEX_EXPORT ORBIT_COORD toCartesian(const ORBIT_GEOGRAPHIC& position);

/// A site's horizon, worked out once for any number of satellites. Plain value.
class HALVEX_EXPORT LocalFrame {
public:
    LocalFrame(const ORBIT_COORD& site, const ORBIT_GEOGRAPHIC& geographic);
    explicit LocalFrame(const ORBIT_COORD& site) : LocalFrame(site, toGeographic(site)) {}

    struct Direction {
        double elevation = 0.0;  ///< above the horizon [rad]
        double azimuth = 0.0;    ///< clockwise from north, 0 <= azimuth < 2 pi [rad]
    };
    /// Where a position stands in the sky, by straight geometry: no light time, no refraction. NaN at the site itself.
    [[nodiscard]] Direction directionTo(const ORBIT_COORD& position) const;

    /// North, east and up parts of a difference of positions.
    [[nodiscard]] ORBIT_COORD northEastUp(const ORBIT_COORD& difference) const;

    [[nodiscard]] const ORBIT_COORD& site() const { return m_site; }
    /// Unit vectors; east has no z part.
    [[nodiscard]] const ORBIT_COORD& north() const { return m_north; }
    [[nodiscard]] const ORBIT_COORD& east() const { return m_east; }
    [[nodiscard]] const ORBIT_COORD& up() const { return m_up; }

private:
    ORBIT_COORD m_site;
    ORBIT_COORD m_north, m_east, m_up;
};

}  // namespace halvex
