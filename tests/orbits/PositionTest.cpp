#include <array>

#include "halvex/platform/caln/GeodeticSettings.h"
#include "halvex/platform/caln/SatPosition.h"
#include "tests/orbits/Convert.h"
#include "tests/support/OrbitSamples.h"

namespace {

using namespace halvex::test;

const CGlobalGeodeticSettings::PZ90ToWGS84 kIdentity{{{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}}, {}};

void expectNear(const ORBIT_COORD& position, const ORBIT_COORD& expected, double tolerance, const std::string& what) {
    const ORBIT_COORD off{position.x - expected.x, position.y - expected.y, position.z - expected.z};
    EXPECT_LT(std::hypot(off.x, off.y, off.z), tolerance) << what;
}

template <class Record>
ORBIT_COORD positionOf(int (*calculate)(const Record&, double, double[3]), const Record& record, double seconds) {
    double xyz[3] = {};
    EXPECT_EQ(calculate(record, seconds, xyz), CALN::kPositionDone);
    return {xyz[0], xyz[1], xyz[2]};
}
ORBIT_COORD gpsPosition(const CALN::CALX_SAT_EPHEMERIS& record, double seconds) {
    ORBIT_COORD position;
    EXPECT_TRUE(as<CHalvexEphemeris>(record).CalcSatPosCartesian(seconds, position));
    return position;
}

/// On a circle of 26560 km, inclined by 0.9 rad, that crosses the equator at longitude 0.4 at the reference time, the
/// satellite `tk` seconds later: spherical trigonometry.
template <class Record, class Position>
void expectCircle(double toe, double lag, double gm, double earthRate, Position&& position, const char* what) {
    auto record = circularOrbit<Record>(7, toe);
    record.omega0 += 0.4;
    record.i0 = 0.9;
    const double a = 26560e3;
    // Seconds since the reference time, and what that is within half a week.
    const std::pair<double, double> times[] = {
        {1800, 1800}, {302400, 302400}, {-302400, -302400}, {302401, -302399}, {-302401, 302399}};
    for (const auto& [seconds, tk] : times) {
        const double u = std::sqrt(gm / (a * a * a)) * tk;
        const double latitude = std::asin(std::sin(0.9) * std::sin(u));
        const double longitude = 0.4 - earthRate * tk + std::atan2(std::cos(0.9) * std::sin(u), std::cos(u));
        const ORBIT_COORD expected{a * std::cos(latitude) * std::cos(longitude),
                                   a * std::cos(latitude) * std::sin(longitude), a * std::sin(latitude)};
        expectNear(position(record, toe + lag + seconds), expected, 1e-4, what + std::to_string(seconds));
    }
}

TEST(KeplerPosition, CircleTurnsWithItsPeriodAndTheEarth) {
    using namespace CALN;
    constexpr double kGps = 3.986005e14;
    constexpr double kCgcs = 3.986004418e14;
    const auto with = [](auto calculate) {
        return [calculate](const auto& record, double seconds) { return positionOf(calculate, record, seconds); };
    };
    expectCircle<CALX_SAT_EPHEMERIS>(345600, 0, kGps, kGpsEarthRate, &gpsPosition, "GPS class ");
    expectCircle<CALX_SAT_EPHEMERIS>(345600, 0, kGps, kGpsEarthRate, with(&POS_SAT_CalcSatPosCartesian), "GPS ");
    expectCircle<CALX_SAT_EPHEMERIS_GALILEO>(0, 0, kCgcs, kGpsEarthRate, with(&POS_SAT_CalcSatPosCartesianGal),
                                             "Galileo ");
    expectCircle<CALX_SAT_EPHEMERIS_BEIDOU>(345600, 14, kCgcs, 7.2921150e-5, with(&POS_SAT_CalcSatPosCartesianBds),
                                            "BeiDou ");
    expectCircle<CALX_SAT_EPHEMERIS_NAVIC>(604784, 0, kGps, kGpsEarthRate, with(&POS_SAT_CalcSatPosCartesianNavic),
                                           "NavIC ");
}

// Numbers of a separate calculation, step by step, with all elements in use. With the larger
// eccentricity ten steps do not bring Kepler's equation to rest, and the anomaly's sine is one step older than it.
TEST(KeplerPosition, TenStepsAndAllElements) {
    auto record = circularOrbit<CALN::CALX_SAT_EPHEMERIS>(7, 388800);
    record.sqrtA = 5153.5, record.m0 = 2.5, record.deltaN = 4.5e-9, record.omega0 = 1.25, record.i0 = 0.96;
    record.omega = -0.75, record.omegaDot = -8e-9, record.idot = 2e-10;
    record.cuc = 0x1p-20, record.cus = -0x1p-19, record.crc = 250, record.crs = -30;
    record.cic = 0x1p-23, record.cis = -0x1p-22;
    record.e = 0.01;
    expectNear(gpsPosition(record, 392400), {19925171.4159, 6569834.5196, 16711212.2468}, 2e-4, "e = 0.01");
    record.e = 0.7;
    expectNear(gpsPosition(record, 392400), {34052166.5374, 14224161.7302, 25932951.3048}, 2e-4, "e = 0.7");
}

TEST(KeplerPosition, WhatIsNoOrbitIsRefused) {
    auto record = circularOrbit<CALN::CALX_SAT_EPHEMERIS>(7, 388800, 0.0, 2.0e7 - 1);
    ORBIT_COORD position{1, 2, 3};
    double xyz[3] = {1, 2, 3};
    EXPECT_FALSE(as<CHalvexEphemeris>(record).CalcSatPosCartesian(388800, position));
    EXPECT_NE(CALN::POS_SAT_CalcSatPosCartesian(record, 388800, xyz), CALN::kPositionDone);
    auto geostationary = circularOrbit<CALN::CALX_SAT_EPHEMERIS_BEIDOU>(5, 388800);
    geostationary.e = std::nan("");
    EXPECT_NE(CALN::POS_SAT_CalcSatPosCartesianBds(geostationary, 388800, xyz), CALN::kPositionDone);
    auto glonass = glonassOrbit(7, 1e300);  // must not be stepped through
    EXPECT_NE(CALN::POS_SAT_CalcSatPosCartesianGlo(glonass, 388800, xyz), CALN::kPositionDone);
    EXPECT_EQ(position, (ORBIT_COORD{1, 2, 3}));
    EXPECT_TRUE(xyz[0] == 1 && xyz[1] == 2 && xyz[2] == 3);

    record = circularOrbit<CALN::CALX_SAT_EPHEMERIS>(7, 1e300);  // absurd, but it ends
    EXPECT_EQ(CALN::POS_SAT_CalcSatPosCartesian(record, 0, xyz) == 0, std::isfinite(xyz[0] + xyz[1] + xyz[2]));
}

TEST(KeplerPosition, GeostationaryBeidouStandsStill) {
    const double earthRate = 7.2921150e-5;
    const double a = std::cbrt(3.986004418e14 / (earthRate * earthRate));
    const double tilt = 5.0 * kPi / 180;
    for (const int number : {5, 6, 58, 59}) {
        auto record =
            circularOrbit<CALN::CALX_SAT_EPHEMERIS_BEIDOU>(static_cast<unsigned char>(number), 345600, 1.9 - kPi, a);
        record.omega0 += kPi;  // in the tilted frame the plane of the equator is inclined by 5 degrees
        record.i0 = tilt;
        const bool stands = number != 6 && number != 58;
        double largest = 0.0;
        for (const double seconds : {345614.0, 360000.0, 345600.0 - 43200.0, 388800.0}) {
            const ORBIT_COORD p = positionOf(&CALN::POS_SAT_CalcSatPosCartesianBds, record, seconds);
            largest = std::max(largest, std::abs(p.z));
            if (stands) expectNear(p, {a * std::cos(1.9), a * std::sin(1.9), 0}, 1e-3, std::to_string(seconds));
        }
        EXPECT_EQ(largest > 1e6, !stands) << number;
    }
}

// Numbers of another integration: in a frame that does not turn, with the gradient of the potential, in steps of 1 s.
// A step of 500 s leaves about a metre.
TEST(GlonassPosition, AgreesWithAnotherIntegration) {
    const ScopedPZ90ToWGS84 scope(kIdentity);
    auto record = glonassOrbit(7, 603900);
    record.position = {12000e3, -15000e3, 16800e3}, record.velocity = {-1200, 2100, 2650};
    record.acceleration = {1e-5, -0.8e-5, 0.5e-5};  // larger than life: the pull must show
    const std::tuple<double, ORBIT_COORD, double> rows[] = {
        {60, {11928151.28677, -14873182.84297, 16958272.28949}, 1e-4},
        {-60, {12072145.02713, -15125179.31950, 16640277.04846}, 1e-4},
        {900, {10963657.39198, -12932283.27041, 19014033.72848}, 3.0},
        {-1800, {14206142.46354, -18005365.07168, 11445192.87641}, 8.0}};
    for (const auto& [seconds, expected, tolerance] : rows) {
        const SMjdTime t(2111, 603900.0 + seconds);  // also over the week's end
        ORBIT_COORD position;
        EXPECT_TRUE(as<CHalvexEphemerisGLO>(record).CalcSatPosCartesianGlo(t, position));
        expectNear(position, expected, tolerance, std::to_string(seconds));
        expectNear(positionOf(&CALN::POS_SAT_CalcSatPosCartesianGlo, record, t.GetGpsSeconds()), position, 1e-6, "");
    }
}

/// Moves by a metre a second along x, whatever the forces, and notes where it was asked.
class Recorder final : public CHalvexEphemerisGLO {
public:
    using CHalvexEphemerisGLO::CHalvexEphemerisGLO;
    explicit Recorder(const CHalvexEphemerisGLO& ephemeris) : CHalvexEphemerisGLO(ephemeris) {}
    void ComputeEquationOfMotion(const double state[6], const double[3], double derivative[6]) const override {
        asked.push_back(state[0]);
        for (int i = 0; i < 6; ++i) derivative[i] = i == 0 ? 1.0 : 0.0;
    }
    mutable std::vector<double> asked;
};

TEST(GlonassPosition, StepsOf500SecondsAndTheRest) {
    const ScopedPZ90ToWGS84 scope({{{{0, 1, 0}, {-1, 0, 0}, {0, 0, 2}}}, {10, 20, 30}});
    auto record = glonassOrbit(7, 1000);
    record.position = {0, 5, 7};
    const CHalvexEphemerisGLO ephemeris = as<CHalvexEphemerisGLO>(record);
    const std::pair<double, std::vector<double>> rows[] = {
        {0, {0}}, {1000, {500, 500, 0}}, {-1250, {-500, -500, -250}}, {499.5, {499.5}}};
    for (const auto& [seconds, steps] : rows) {
        const Recorder recorder(ephemeris);
        ORBIT_COORD position;
        EXPECT_TRUE(recorder.CalcSatPosCartesianGlo(SMjdTime(2111, 1000.0 + seconds), position));
        std::vector<double> expected;
        double x = 0.0;
        for (const double h : steps) {
            expected.insert(expected.end(), {x, x + h / 2, x + h / 2, x + h});
            x += h;
        }
        EXPECT_EQ(recorder.asked, expected) << seconds;
        expectNear(position, {10 + 5, 20 - x, 30 + 14}, 1e-9, "transformed");
    }
}

/// Opens what is protected.
class Coordinates final : public CHalvexAlmanacGlonass {
public:
    explicit Coordinates(const CHalvexAlmanacGlonass& almanac) : CHalvexAlmanacGlonass(almanac) {}
    using CHalvexAlmanacGlonass::GetSatelliteCoordinates;
};

TEST(GlonassPosition, Almanac) {
    CALN::CALX_SAT_ALMANAC_GLONASS record;
    record.satId = 7, record.week = kWeek, record.referenceMilliseconds = 300000500;
    const std::tuple<double, std::array<double, 5>, ORBIT_COORD> rows[] = {
        // positions of a separate calculation
        {7200, {0.5, 0.03, 0.002, 0.7, -2656}, {11335033.5176, 9506032.5060, 20722868.8509}},
        {-7200, {0.5, 0.03, 0.002, 3.2, -2656}, {14220018.2540, 4582538.2938, -20699301.0187}},
        {900000, {-2.5, -0.01, 0.0005, -1.5, -2655.5}, {-4693942.4316, 13066554.1062, 21412666.8438}}};
    for (const auto& [dt, elements, expected] : rows) {
        std::tie(record.lambda, record.deltaI, record.e, record.omega, record.deltaT) = std::tuple_cat(elements);
        const Coordinates almanac(as<CHalvexAlmanacGlonass>(record));
        ORBIT_COORD position;
        const ScopedPZ90ToWGS84 scope(kIdentity);
        EXPECT_TRUE(almanac.GetSatelliteCoordinates(SMjdTime(2111, 300000.5 + dt), position));
        expectNear(position, expected, 1e-3, std::to_string(dt));
    }
}

TEST(GpsAlmanacPosition, AWeekOnEitherSideAndNoFurther) {
    auto record = circularOrbit<CALN::CALX_SAT_ALMANAC>(7, 147 * 4096.0);
    record.m0 = 1.0, record.e = 0.01, record.sqrtA = 5153.5, record.omega0 = -2.0, record.i = 0.96;
    record.omega = 0.5, record.omegaDot = -8e-9;
    const auto almanac = as<CHalvexAlmanac>(record);
    const std::tuple<double, bool, double, double> rows[] = {
        // elevation and azimuth over latitude and longitude 0, of a separate calculation
        {-561600, true, -0.673706549345, 0.483861915985},
        {604800, true, 0.411122496620, 6.186265578002},
        {604800.001, false, 9, 9},
        {-604800.001, false, 9, 9}};
    for (const auto& [tk, served, wantElevation, wantAzimuth] : rows) {
        SMjdTime t = almanac.GetRefTime();
        t.AddSeconds(tk);
        double azimuth = 9, elevation = 9;
        EXPECT_EQ(almanac.GetAzimuthElevation(t, {6378137, 0, 0}, azimuth, elevation), served) << tk;
        EXPECT_NEAR(elevation, wantElevation, 1e-9) << tk;
        EXPECT_NEAR(azimuth, wantAzimuth, 1e-9) << tk;
    }
}

}  // namespace
