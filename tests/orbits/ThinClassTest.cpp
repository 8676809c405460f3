#include <array>

#include "halvex/orbits/HalvexEphemerisBDS.h"
#include "halvex/orbits/HalvexEphemerisGAL.h"
#include "halvex/orbits/HalvexEphemerisNAVIC.h"
#include "halvex/orbits/HalvexEphemerisQZSS.h"
#include "halvex/orbits/ThinAlmanacs.h"
#include "halvex/time/GPSTime.h"
#include "tests/orbits/Convert.h"
#include "tests/support/CapturedLog.h"
#include "tests/support/OrbitSamples.h"
#include "tests/support/TestClock.h"

namespace {

using namespace halvex::test;

template <class Ephemeris>
Ephemeris ephemeris(unsigned char satId, double seconds = 604784) {
    return Ephemeris(circularOrbit<Ephemeris>(satId, seconds));
}

/// First and last raw number that counts, and what the identifier makes of the last.
template <class Ephemeris>
void expectNumbers(int first, int last, CALN::SCalSatID lastId, double timeframe) {
    for (int number = 0; number <= 255; ++number) {
        const auto e = ephemeris<Ephemeris>(static_cast<unsigned char>(number));
        EXPECT_EQ(e.IsDataValid(), number >= first && number <= last) << number;
    }
    const auto original = ephemeris<Ephemeris>(static_cast<unsigned char>(last));
    auto e = original;
    EXPECT_EQ(e.GetSatID(), lastId);
    EXPECT_EQ(e.GetEphemerisValidatyTimeframeMinutes(), timeframe);
    e.SetSimulated(true);
    EXPECT_TRUE(e.IsSimulated() && e.source == 0x81 && !e.EquivalentAll(original));
    e.SetSimulated(false);
    EXPECT_TRUE(!e.IsSimulated() && e.EquivalentAll(original));
    e.source = 0;
    EXPECT_FALSE(e.IsDataValid() || e.IsValid(e.GetRefTime())) << "nobody has filled it";
    const double lag = lastId.system == CALN::eCALSATSYSTEM_BEIDOU ? 14 : 0;
    EXPECT_TRUE(original.GetRefTime() == SMjdTime(2111, 604784 + lag));
}

TEST(ThinEphemerides, NumbersSourcesAndTimeframes) {
    expectNumbers<CHalvexEphemerisGAL>(57, 92, {CALN::eCALSATSYSTEM_GALILEO, 36}, 180.0);
    expectNumbers<CHalvexEphemerisBDS>(1, 63, {CALN::eCALSATSYSTEM_BEIDOU, 63}, 120.0);
    expectNumbers<CHalvexEphemerisQZSS>(1, 202, {CALN::eCALSATSYSTEM_QZSS, 10}, 120.0);
    expectNumbers<CHalvexEphemerisNAVIC>(1, 7, {CALN::eCALSATSYSTEM_NAVIC, 7}, 120.0);
    MDB::CPrnIdZ9 prn;
    EXPECT_FALSE(ephemeris<CHalvexEphemerisQZSS>(192).GetPrnID(prn)) << "no QZSS satellite, though data-valid";
    EXPECT_EQ(prn.getNumber(), 192);
    EXPECT_EQ(CHalvexEphemeris().GetEphemerisValidatyTimeframeMinutes(), 240.0);
    EXPECT_EQ(CHalvexEphemerisGLO().GetEphemerisValidatyTimeframeMinutes(), 60.0);
}

TEST(ThinEphemerides, GalileoMessageAndTimes) {
    auto e = ephemeris<CHalvexEphemerisGAL>(57 + 11, 600);
    e.toc = 604200;  // in the week before toe's
    e.pageType1Week = 2097;
    e.pageType1Seconds = 302400;
    // The last number tells what is received: 1 F/NAV, 2 I/NAV, 4 of E1-B alone, 8 of E5b alone.
    const std::tuple<unsigned char, unsigned char, const char*, int> rows[] = {
        {1, 0, "F/NAV ", 1}, {2, 2, "I/NAV ", 2 + 4}, {2, 3, "I/NAV ", 2 + 8}, {3, 1, "NAV UNKNOWN ", 0}};
    for (const auto& [type, reception, text, received] : rows) {
        e.navType = type, e.inavReception = reception;
        std::string info = "old";
        e.GetAdditionalInfo(info);
        EXPECT_EQ(info, text + std::string("58926.500000000 ") + CGPSTime(2110, 604200.0).FormatRegional().str());
        EXPECT_EQ(
            e.isReceivedFNav() + 2 * e.isReceivedINav() + 4 * e.isReceivedINavE1BOnly() + 8 * e.isReceivedINavE5bOnly(),
            received);
    }
    CapturedLog log;
    using Type = CHalvexEphemerisGAL::eREFTIMETYPE;
    EXPECT_TRUE(e.GetRefTime(Type(1)) == SMjdTime(2110, 604200.0) && e.GetRefTime(Type(2)) == e.GetRefTime(Type(1)));
    EXPECT_TRUE(log.take().empty());
    EXPECT_TRUE(e.GetRefTime(Type(0)) == SMjdTime(2111, 600.0));
    EXPECT_EQ(log.take(), std::vector<std::string>{"3 CHalvexEphemerisGAL::GetRefTime: assertion failed: false"});

    double azimuth = 0.0, elevation = 0.0;
    EXPECT_TRUE(e.GetAzimuthElevation({6378137, 0, 0}, azimuth, elevation));
    EXPECT_NEAR(azimuth, 12 * kPi / 72, 1e-15) << "a placeholder";
    EXPECT_EQ(azimuth, elevation);
}

TEST(ThinEphemerides, GalileoHealthDependsOnTheMessage) {
    const std::tuple<unsigned char, unsigned char, std::array<bool, 3>> rows[] = {
        // healthy when E1-B, E5a, E5b alone is bad
        {1, 1, {true, false, true}},
        {2, 1, {false, true, false}},
        {2, 2, {false, true, true}},
        {2, 3, {true, true, false}}};
    for (const auto& [type, reception, healthy] : rows) {
        for (const unsigned bad : {0U, 1U, 2U}) {
            auto e = ephemeris<CHalvexEphemerisGAL>(57);
            e.navType = type, e.inavReception = reception;
            EXPECT_TRUE(e.IsHealthy());
            (bad == 0 ? e.e1b : bad == 1 ? e.e5a : e.e5b) = {static_cast<unsigned char>(bad % 2), 2};
            EXPECT_EQ(e.IsHealthy(), healthy[bad]);
        }
    }
}

TEST(ThinAlmanacs, NumbersHealthAndNoPosition) {
    const auto expect = []<class Almanac>(const Almanac& almanac, const CALN::SCalSatID& id, bool healthy, double lag) {
        EXPECT_EQ(almanac.GetSatID(), id);
        EXPECT_EQ(almanac.IsHealthy(), healthy) << int{id.system};
        EXPECT_TRUE(almanac.GetRefTime() == SMjdTime(2111, 4096 + lag)) << int{id.system};
        double azimuth = 5.0, elevation = 5.0;
        EXPECT_FALSE(almanac.GetAzimuthElevation(SMjdTime(2111, 4096.0), {6378137, 0, 0}, azimuth, elevation));
        EXPECT_TRUE(azimuth == 5.0 && elevation == 5.0);
    };
    expect(circularOrbit<CHalvexAlmanacGal>(57 + 35, 4096), {CALN::eCALSATSYSTEM_GALILEO, 36}, true, 0);
    expect(circularOrbit<CHalvexAlmanacBds>(63, 4096), {CALN::eCALSATSYSTEM_BEIDOU, 63}, true, 14);
    expect(circularOrbit<CHalvexAlmanacQzss>(202, 4096), {CALN::eCALSATSYSTEM_QZSS, 10}, false, 0);
    expect(circularOrbit<CHalvexAlmanacNavic>(7, 4096), {CALN::eCALSATSYSTEM_NAVIC, 7}, false, 0);
}

TEST(OrbitValidity, TwoWeeksFromTheReferenceAndNowOnTwoScales) {
    constexpr double kToe = 397312;  // a multiple of 4096 s, as almanacs want it
    auto glonass = CALN::CALX_SAT_ALMANAC_GLONASS();
    glonass.satId = 7, glonass.week = kWeek, glonass.referenceMilliseconds = 397312000;
    const auto on = [](const auto& orbit) -> std::unique_ptr<IHalvexOrbitBase> {
        return std::make_unique<std::decay_t<decltype(orbit)>>(orbit);
    };
    const std::pair<std::unique_ptr<IHalvexOrbitBase>, bool> rows[] = {
        // does an unset instant mean now on the GPS scale?
        {on(as<CHalvexEphemeris>(circularOrbit<CALN::CALX_SAT_EPHEMERIS>(7, kToe))), false},
        {on(as<CHalvexEphemerisGLO>(glonassOrbit(7, kToe))), false},
        {on(as<CHalvexAlmanac>(circularOrbit<CALN::CALX_SAT_ALMANAC>(7, kToe))), false},
        {on(as<CHalvexAlmanacGlonass>(glonass)), false},
        {on(circularOrbit<CHalvexAlmanacGal>(60, kToe)), false},
        {on(ephemeris<CHalvexEphemerisGAL>(60, kToe)), true},
        {on(ephemeris<CHalvexEphemerisBDS>(7, kToe - 14)), true},
        {on(ephemeris<CHalvexEphemerisQZSS>(193, kToe)), true},
        {on(ephemeris<CHalvexEphemerisNAVIC>(7, kToe)), true}};
    const auto after = [](double seconds) { return CTimeBase(2111, kToe + seconds); };
    TestClock clock;
    for (const auto& [orbit, gpsNow] : rows) {
        SCOPED_TRACE(testing::Message() << int{orbit->GetSatID().system} << ' ' << orbit->GetOrbitType());
        for (const double sign : {-1.0, 1.0}) {
            EXPECT_TRUE(orbit->IsValid(after(sign * 1209599.999)));
            EXPECT_FALSE(orbit->IsValid(after(sign * 1209600)));
        }
        after(1209600 - 5).ToSystemTime(clock.utc);  // 18 leap seconds: GPS reads 18 s more
        EXPECT_EQ(orbit->IsValid(SMjdTime()), !gpsNow);
        after(-1209600 - 5).ToSystemTime(clock.utc);
        EXPECT_EQ(orbit->IsValid(SMjdTime()), gpsNow);
        after(0).ToSystemTime(clock.utc);  // the short form reads the clock as UTC, of whichever class
        const ORBIT_COORD site{6378137, 0, 0};
        std::array<double, 2> now{1, 2}, same{1, 2};
        EXPECT_EQ(orbit->GetAzimuthElevation(site, now[0], now[1]),
                  orbit->GetAzimuthElevation(after(0), site, same[0], same[1]));
        EXPECT_EQ(now, same);
    }
    const auto noSlot = patched(as<CHalvexAlmanacGlonass>(glonass), 0, 'B', 25);
    EXPECT_FALSE(noSlot.IsValid(after(0)));
}

}  // namespace
