#include <array>

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

/// Feeds `count` satellites of a system, over longitudes 0.05, 0.1 ...
template <class Ephemeris>
void add(CHalvexElevAziCalculator& calculator, int first, int count) {
    for (int i = 0; i < count; ++i) {
        const auto satId = static_cast<unsigned char>(first + i);
        EXPECT_TRUE(calculator.ProcessNewEphemeris(circularOrbit<Ephemeris>(satId, kToe, 0.05 * (i + 1))));
    }
}
std::array<int, 5> counts(const CSiteRawDataHistoryItem& item) {
    return {item.visibleGps, item.visibleGlonass, item.visibleBeidou, item.visibleGalileo, item.visibleQzss};
}

TEST(ElevAziCalculator, CountsBySystemInTheirOrder) {
    CHalvexElevAziCalculator calculator(0, 0, 0, nullptr);
    for (unsigned char n = 1; n <= 3; ++n) {
        const auto almanac = as<CHalvexAlmanac>(circularOrbit<CALN::CALX_SAT_ALMANAC>(n, kToe));
        EXPECT_TRUE(calculator.ProcessNewAlmanac(almanac));
        const auto glonass = as<CHalvexEphemerisGLO>(glonassOrbit(n, kToe));
        EXPECT_TRUE(n == 3 || calculator.ProcessNewEphemeris(glonass));
    }
    add<CHalvexEphemerisGAL>(calculator, 57, 4);
    add<CHalvexEphemerisBDS>(calculator, 6, 5);
    add<CHalvexEphemerisQZSS>(calculator, 193, 6);
    add<CHalvexEphemerisNAVIC>(calculator, 1, 7);
    CSiteRawDataHistoryItem item{9, 9, 9, 9, 9};
    EXPECT_TRUE(calculator.GetVisibilityCount({0, 0, 0}, kNow, 0.1, item));
    EXPECT_EQ(counts(item), (std::array{3, 2, 5, 4, 6}));
    unsigned char n[5] = {};
    EXPECT_TRUE(calculator.GetVisibilityCount({0, 0, 0}, kNow, 0.1, n[0], n[1], n[2], n[3], n[4]));
    EXPECT_EQ(counts({n[0], n[1], n[2], n[3], n[4]}), counts(item));
    CALN::SCalElevationAzimuth table;
    EXPECT_TRUE(calculator.GetElevAziData({0, 0, 0}, kNow, table, false));
    double elevation = 0.0, azimuth = 0.0;
    EXPECT_TRUE(table.getEleAzi({CALN::eCALSATSYSTEM_NAVIC, 7}, elevation, azimuth)) << "there, though not counted";

    for (const CGeoCoord& site : {CGeoCoord{0, kPi, 0}, CGeoCoord{1.6, 0, 0}}) {  // the Earth is between; no site
        item = {9, 9, 9, 9, 9};
        EXPECT_TRUE(calculator.GetVisibilityCount(site, kNow, 0.0, item));
        EXPECT_EQ(counts(item), (std::array{0, 0, 0, 0, 0}));
    }
    calculator.Reset();
    EXPECT_FALSE(calculator.GetElevAziData({0, 0, 0}, kNow, table, true));
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

    const SMjdTime later(2111, kToe + 7200);
    record.health = 1, record.toe = record.toc = kToe + 7200;
    EXPECT_TRUE(calculator.ProcessNewEphemeris(as<CHalvexEphemeris>(record)));
    EXPECT_FALSE(calculator.GetElevAziData({0, 0, 0}, later, table, false)) << "an older healthy orbit does not help";
    EXPECT_FALSE(calculator.GetSatElevAziData(prn, {0, 0, 0}, later, direction));
    EXPECT_TRUE(calculator.GetElevAziData({0, 0, 0}, later, table, true));
    EXPECT_FALSE(calculator.GetElevAziData({std::nan(""), 0, 0}, later, table, true));
    EXPECT_FALSE(table.getEleAzi(prn.getCalSatID(), direction.elevation, direction.azimuth)) << "emptied";
}

TEST(ElevAziCalculator, OnlyConversionsFail) {
    CHalvexElevAziCalculator calculator(0, 0, 0, nullptr);
    const auto gps = as<CHalvexEphemeris>(circularOrbit<CALN::CALX_SAT_EPHEMERIS>(7, kToe));
    EXPECT_FALSE(calculator.ProcessNewEphemeris(patched(gps, 36, std::nan(""))));
    EXPECT_FALSE(calculator.ProcessNewEphemeris(CHalvexEphemerisGLO()));
    EXPECT_FALSE(calculator.ProcessNewAlmanac(CHalvexAlmanac()) ||
                 calculator.ProcessNewAlmanac(CHalvexAlmanacGlonass()));
    EXPECT_TRUE(calculator.ProcessNewEphemeris(patched(gps, 60, 1.0))) << "the engine refuses it, which is not told";
    EXPECT_TRUE(calculator.ProcessNewEphemeris(CHalvexEphemerisGAL()));
    EXPECT_TRUE(calculator.ProcessNewAlmanac(CHalvexAlmanacNavic()));
    CALN::SCalElevationAzimuth table;
    EXPECT_FALSE(calculator.GetElevAziData({0, 0, 0}, kNow, table, true)) << "nothing was kept";
}

}  // namespace
