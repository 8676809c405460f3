#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

#include "halvex/platform/caln/Coordinates.h"
#include "halvex/platform/caln/GeodeticSettings.h"
#include "halvex/platform/caln/SatPosition.h"

namespace {

using std::numbers::pi;

constexpr double degrees(double d, double m = 0.0, double s = 0.0) {
    return (d + m / 60 + s / 3600) * pi / 180;
}

TEST(Geometry, GeographicAndCartesian) {
    // The first is the worked example of EPSG guidance note 7-2, geocentric conversions.
    const std::tuple<ORBIT_GEOGRAPHIC, ORBIT_COORD, double> rows[] = {
        {{degrees(53, 48, 33.820), degrees(2, 7, 46.380), 73.0}, {3771793.968, 140253.342, 5124304.349}, 1e-3},
        {{-pi / 2, 0, 1000}, {0, 0, -6357752.314247833}, 1e-8},
        {{0, pi, 10}, {-6378147, 0, 0}, 1e-8}};
    for (const auto& [geographic, want, tolerance] : rows) {
        const ORBIT_COORD cartesian = halvex::toCartesian(geographic);
        EXPECT_LT(std::hypot(cartesian.x - want.x, cartesian.y - want.y, cartesian.z - want.z), tolerance) << want.x;
        const ORBIT_GEOGRAPHIC back = halvex::toGeographic(want);
        EXPECT_NEAR(back.latitude, geographic.latitude, 1e-9) << want.x;
        if (want.x == 0) continue;
        EXPECT_NEAR(back.longitude, geographic.longitude, 1e-9) << want.x;
        EXPECT_NEAR(back.height, geographic.height, 1e-3) << want.x;
    }
    for (const double z : {6356752.0, -6400000.0}) {  // on the axis
        const ORBIT_GEOGRAPHIC pole = halvex::toGeographic({0, 0, z});
        EXPECT_EQ(pole.longitude, 0.0);
        EXPECT_NEAR(pole.latitude, std::copysign(pi / 2, z), 1e-15);
        EXPECT_NEAR(pole.height, -6399593.626, 1e-2) << "0 / cos(latitude) - N, as the formula stands";
    }
}

TEST(Geometry, DirectionsInTheSky) {
    const double a = halvex::kEarthSemiMajorAxis, b = halvex::kEarthSemiMinorAxis;
    const std::tuple<const char*, ORBIT_COORD, ORBIT_COORD, double, double> rows[] = {
        {"south", {a, 0, 0}, {a, 0, -1e6}, 0, pi},
        {"a hair west of north: 2 pi is 0", {a, 0, 0}, {a, -1e-20, 1e6}, 0, 0},
        {"zenith", {a, 0, 0}, {a + 1e6, 0, 0}, pi / 2, 0},
        {"half up in the north-east", {a, 0, 0}, {a + 1e6, 1e6, 1e6}, std::asin(1 / std::sqrt(3.0)), pi / 4},
        {"under the feet, westwards", {0, a, 0}, {1e5, a - 1e5, 0}, -pi / 4, 3 * pi / 2},
        {"from the north pole along the prime meridian", {0, 0, b}, {1e6, 0, b}, 0, pi},
        {"from the south pole to 90 E", {0, 0, -b}, {0, 1e6, -b}, 0, pi / 2}};
    for (const auto& [what, site, satellite, elevation, azimuth] : rows) {
        const auto direction = halvex::LocalFrame(site).directionTo(satellite);
        EXPECT_NEAR(direction.elevation, elevation, 1e-12) << what;
        EXPECT_NEAR(direction.azimuth, azimuth, 1e-12) << what;
        EXPECT_TRUE(direction.azimuth >= 0.0 && direction.azimuth < 2 * pi) << what;
    }
}

TEST(GeodeticSettings, DefaultsAndScopes) {
    // PZ-90.11 to ITRF2008: -0.003, -0.001, 0.000 m; 0.019, -0.042, 0.002 milliarcseconds.
    const double mas = pi / 180 / 3600 / 1000;
    const auto transformed = [](ORBIT_COORD p) {
        halvex::transformPZ90ToWGS84(p);
        return p;
    };
    const ORBIT_COORD p = transformed({2e7, 1e7, -1.5e7});
    EXPECT_NEAR(p.x, 2e7 - 0.003 + (0.002 * 1e7 + 0.042 * -1.5e7) * mas, 1e-8);
    EXPECT_NEAR(p.y, 1e7 - 0.001 + (-0.002 * 2e7 + 0.019 * -1.5e7) * mas, 1e-8);
    EXPECT_NEAR(p.z, -1.5e7 + (-0.042 * 2e7 - 0.019 * 1e7) * mas, 1e-8);
    {
        const ScopedPZ90ToWGS84 scope({{{{1, 2, 3}, {4, 5, 6}, {7, 8, 9}}}, {10, 20, 30}});
        EXPECT_EQ(transformed({1, 10, 100}), (ORBIT_COORD{331, 674, 1017}));
    }
    EXPECT_EQ(CGlobalGeodeticSettings::GetPZ90ToWGS84(), CGlobalGeodeticSettings::defaults());
}

}  // namespace
