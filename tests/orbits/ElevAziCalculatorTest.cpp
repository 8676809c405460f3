#include "halvex/orbits/HalvexElevAziCalculator.h"
#include "halvex/orbits/HalvexEphemerisBDS.h"
#include "halvex/orbits/HalvexEphemerisGAL.h"
#include "halvex/orbits/HalvexEphemerisNAVIC.h"
#include "halvex/orbits/HalvexEphemerisQZSS.h"
#include "halvex/orbits/ThinAlmanacs.h"
#include "tests/orbits/Convert.h"
#include "tests/support/OrbitSamples.h"

namespace {

using namespace halvex::test;

constexpr double kToe = 397312;  // a multiple of 4096 s
const SMjdTime kNow(2111, kToe);

/// Feeds `count` satellites of each system over the longitudes 0.05, 0.1 ..., as ephemerides or as almanacs.
struct Sky {
    CHalvexElevAziCalculator calculator{0, 0, 0, nullptr};
    bool almanacs = false;

    template <class Ephemeris, class Almanac>
    void add(int first, int count) {
        for (int i = 0; i < count; ++i) {
            const auto satId = static_cast<unsigned char>(first + i);
            constexpr double kLag = std::is_same_v<Ephemeris, CHalvexEphemerisBDS> ? 14 : 0;
            if (almanacs) {
                EXPECT_TRUE(calculator.ProcessNewAlmanac(Almanac(circularOrbit<Almanac>(satId, kToe, 0.05 * (i + 1)))));
            } else {
                EXPECT_TRUE(calculator.ProcessNewEphemeris(
                    Ephemeris(circularOrbit<Ephemeris>(satId, kToe - kLag, 0.05 * (i + 1)))));
            }
        }
    }
    void addAll() {
        for (int i = 0; i < 3; ++i) {
            const auto number = static_cast<unsigned char>(1 + i);
            if (almanacs) {
                const auto gps = circularOrbit<CALN::CALX_SAT_ALMANAC>(number, kToe, 0.05 * (i + 1));
                EXPECT_TRUE(calculator.ProcessNewAlmanac(as<CHalvexAlmanac>(gps)));
            } else {
                const auto gps = circularOrbit<CALN::CALX_SAT_EPHEMERIS>(number, kToe, 0.05 * (i + 1));
                EXPECT_TRUE(calculator.ProcessNewEphemeris(as<CHalvexEphemeris>(gps)));
            }
        }
        for (unsigned char slot = 1; slot <= 2; ++slot) {
            CALN::CALX_SAT_ALMANAC_GLONASS almanac;
            almanac.satId = slot, almanac.week = kWeek, almanac.referenceMilliseconds = 397312000;
            almanac.health = 1, almanac.deltaT = -2656;
            const auto ephemeris = as<CHalvexEphemerisGLO>(glonassOrbit(slot, kToe));
            EXPECT_TRUE(almanacs ? calculator.ProcessNewAlmanac(as<CHalvexAlmanacGlonass>(almanac))
                                 : calculator.ProcessNewEphemeris(ephemeris));
        }
        add<CHalvexEphemerisGAL, CHalvexAlmanacGal>(57, 4);
        add<CHalvexEphemerisBDS, CHalvexAlmanacBds>(6, 5);
        add<CHalvexEphemerisQZSS, CHalvexAlmanacQzss>(193, 6);
        add<CHalvexEphemerisNAVIC, CHalvexAlmanacNavic>(1, 7);
    }
};

TEST(ElevAziCalculator, CountsBySystemInTheirOrder) {
    for (const bool almanacs : {false, true}) {
        Sky sky;
        sky.almanacs = almanacs;
        sky.addAll();
        unsigned char gps = 9, glonass = 9, beidou = 9, galileo = 9, qzss = 9;
        EXPECT_TRUE(sky.calculator.GetVisibilityCount({0, 0, 0}, kNow, 0.1, gps, glonass, beidou, galileo, qzss));
        EXPECT_TRUE(gps == 3 && glonass == 2 && beidou == 5 && galileo == 4 && qzss == 6)
            << almanacs << ' ' << int{gps} << int{glonass} << int{beidou} << int{galileo} << int{qzss};
        CSiteRawDataHistoryItem item;
        EXPECT_TRUE(sky.calculator.GetVisibilityCount({0, 0, 0}, kNow, 0.1, item));
        EXPECT_TRUE(item.visibleGps == 3 && item.visibleGlonass == 2 && item.visibleBeidou == 5 &&
                    item.visibleGalileo == 4 && item.visibleQzss == 6);
        CALN::SCalElevationAzimuth table;
        EXPECT_TRUE(sky.calculator.GetElevAziData({0, 0, 0}, kNow, table, false));
        double elevation = 0.0, azimuth = 0.0;
        EXPECT_TRUE(table.getEleAzi({CALN::eCALSATSYSTEM_NAVIC, 7}, elevation, azimuth)) << "there, though not counted";

        const CGeoCoord otherSide(0, kPi, 0);
        EXPECT_TRUE(sky.calculator.GetVisibilityCount(otherSide, kNow, 0.0, item));
        EXPECT_EQ(item.visibleGps + item.visibleGlonass + item.visibleBeidou + item.visibleGalileo + item.visibleQzss,
                  0);
        for (const bool bad : {false, true}) {  // no orbit serves that time; no site
            item = {9, 9, 9, 9, 9};
            EXPECT_TRUE(sky.calculator.GetVisibilityCount({bad ? 1.6 : 0.0, 0, 0}, bad ? kNow : SMjdTime(1900, 0.0),
                                                          0.1, item));
            EXPECT_TRUE(item.visibleGps == 0 && item.visibleGlonass == 0 && item.visibleBeidou == 0 &&
                        item.visibleGalileo == 0 && item.visibleQzss == 0);
        }
        sky.calculator.Reset();
        EXPECT_FALSE(sky.calculator.GetElevAziData({0, 0, 0}, kNow, table, true));
    }
}

TEST(ElevAziCalculator, TheMaskItselfIsNotVisible) {
    CHalvexElevAziCalculator calculator(0, 0, 0, nullptr);
    auto record = circularOrbit<CALN::CALX_SAT_EPHEMERIS>(7, kToe, 0.5);
    EXPECT_TRUE(calculator.ProcessNewEphemeris(as<CHalvexEphemeris>(record)));
    CALN::SCalElevationAzimuth table;
    double elevation = 0.0, azimuth = 0.0;
    EXPECT_TRUE(calculator.GetElevAziData({0, 0, 0}, kNow, table, false));
    ASSERT_TRUE(table.getEleAzi({CALN::eCALSATSYSTEM_GPS, 7}, elevation, azimuth));
    EXPECT_NEAR(elevation, std::atan2(std::cos(0.5) - 6378137 / 26560e3, std::sin(0.5)), 1e-12);
    EXPECT_NEAR(azimuth, kPi / 2, 1e-12);
    const auto visible = [&](double mask) {
        CSiteRawDataHistoryItem item;
        EXPECT_TRUE(calculator.GetVisibilityCount({0, 0, 0}, kNow, mask, item));
        return item.visibleGps;
    };
    EXPECT_EQ(visible(elevation), 0);
    EXPECT_EQ(visible(std::nextafter(elevation, 0.0)), 1);
    CALN::SCalSatEpochDataOrbit direction;
    const MDB::CPrnIdZ9 prn(CALN::eCALSATSYSTEM_GPS, 7);
    EXPECT_TRUE(calculator.GetSatElevAziData(prn, {0, 0, 0}, kNow, direction));
    EXPECT_NEAR(direction.elevation, elevation, 1e-12);
    EXPECT_FALSE(calculator.GetSatElevAziData({CALN::eCALSATSYSTEM_GPS, 8}, {0, 0, 0}, kNow, direction));
    EXPECT_FALSE(calculator.GetSatElevAziData(prn, {std::nan(""), 0, 0}, kNow, direction));

    record.health = 1;
    record.toe = kToe + 16;
    EXPECT_TRUE(calculator.ProcessNewEphemeris(as<CHalvexEphemeris>(record)));
    const SMjdTime later(2111, kToe + 16);
    EXPECT_FALSE(calculator.GetElevAziData({0, 0, 0}, later, table, false)) << "not healthy";
    EXPECT_TRUE(calculator.GetElevAziData({0, 0, 0}, later, table, true));
}

TEST(ElevAziCalculator, OnlyConversionsFail) {
    CHalvexElevAziCalculator calculator(0, 0, 0, nullptr);
    const auto gps = as<CHalvexEphemeris>(circularOrbit<CALN::CALX_SAT_EPHEMERIS>(7, kToe));
    EXPECT_FALSE(calculator.ProcessNewEphemeris(patched(gps, 36, std::nan(""))));
    EXPECT_FALSE(calculator.ProcessNewEphemeris(patched(as<CHalvexEphemerisGLO>(glonassOrbit(7, kToe)), 131, 0.5)));
    EXPECT_FALSE(calculator.ProcessNewAlmanac(patched(CHalvexAlmanac(), 5, std::nan(""))));
    EXPECT_FALSE(calculator.ProcessNewAlmanac(patched(CHalvexAlmanacGlonass(), 24, std::nan(""))));
    EXPECT_TRUE(calculator.ProcessNewEphemeris(patched(gps, 60, 1.0))) << "the engine refuses it, which is not told";
    EXPECT_TRUE(calculator.ProcessNewEphemeris(CHalvexEphemerisGAL()));
    EXPECT_TRUE(calculator.ProcessNewAlmanac(CHalvexAlmanacNavic()));
    CALN::SCalElevationAzimuth table;
    EXPECT_FALSE(calculator.GetElevAziData({0, 0, 0}, kNow, table, true)) << "nothing was kept";
}

}  // namespace
