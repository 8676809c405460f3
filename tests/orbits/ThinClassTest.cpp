#include <memory>

#include "halvex/orbits/HalvexEphemerisBDS.h"
#include "halvex/orbits/HalvexEphemerisGAL.h"
#include "halvex/orbits/HalvexEphemerisNAVIC.h"
#include "halvex/orbits/HalvexEphemerisQZSS.h"
#include "halvex/orbits/ThinAlmanacs.h"
#include "halvex/platform/kernix/Assert.h"
#include "halvex/time/GPSTime.h"
#include "tests/orbits/Convert.h"
#include "tests/support/OrbitSamples.h"
#include "tests/support/TestClock.h"

namespace {

using namespace halvex::test;

template <class Ephemeris>
Ephemeris ephemeris(unsigned char satId, double seconds = 388800) {
    return Ephemeris(circularOrbit<Ephemeris>(satId, seconds));
}

/// First and last raw number that counts, and what the identifier makes of the last.
template <class Ephemeris>
void expectNumbers(int first, int last, CALN::SCalSatID lastId, double timeframe) {
    for (int number = 0; number <= 255; ++number) {
        const auto e = ephemeris<Ephemeris>(static_cast<unsigned char>(number));
        EXPECT_EQ(e.IsDataValid(), number >= first && number <= last) << number;
        EXPECT_EQ(e.IsValid(SMjdTime(2111, 388800.0)), e.IsDataValid()) << number;
    }
    auto e = ephemeris<Ephemeris>(static_cast<unsigned char>(last));
    EXPECT_EQ(e.GetSatID(), lastId);
    EXPECT_EQ(e.GetEphemerisValidatyTimeframeMinutes(), timeframe);
    EXPECT_EQ(e.GetOrbitType(), CALN::eCALEPHEMERISTYPE_EPHEMERIS);
    e.SetSimulated(true);
    EXPECT_TRUE(e.IsSimulated() && e.source == 0x81);
    EXPECT_FALSE(e.EquivalentAll(ephemeris<Ephemeris>(static_cast<unsigned char>(last))));
    e.SetSimulated(false);
    EXPECT_TRUE(!e.IsSimulated() && e.EquivalentAll(ephemeris<Ephemeris>(static_cast<unsigned char>(last))));
    e.source = 0;
    EXPECT_FALSE(e.IsDataValid() || e.IsValid(e.GetRefTime())) << "nobody has filled it";
    const SMjdTime clockAtEndOfWeek = ephemeris<Ephemeris>(1, 604784).GetRefTime();
    EXPECT_TRUE(clockAtEndOfWeek == SMjdTime(2111, 604784.0 + (lastId.system == CALN::eCALSATSYSTEM_BEIDOU ? 14 : 0)));
}

TEST(ThinEphemerides, NumbersSourcesAndTimeframes) {
    expectNumbers<CHalvexEphemerisGAL>(57, 92, {CALN::eCALSATSYSTEM_GALILEO, 36}, 180.0);
    expectNumbers<CHalvexEphemerisBDS>(1, 63, {CALN::eCALSATSYSTEM_BEIDOU, 63}, 120.0);
    expectNumbers<CHalvexEphemerisQZSS>(1, 202, {CALN::eCALSATSYSTEM_QZSS, 10}, 120.0);
    expectNumbers<CHalvexEphemerisNAVIC>(1, 7, {CALN::eCALSATSYSTEM_NAVIC, 7}, 120.0);
    MDB::CPrnIdZ9 prn;
    EXPECT_FALSE(ephemeris<CHalvexEphemerisQZSS>(192).GetPrnID(prn)) << "no QZSS satellite, though data-valid";
    EXPECT_EQ(prn.getNumber(), 192);
    EXPECT_EQ(
        as<CHalvexEphemeris>(circularOrbit<CALN::CALX_SAT_EPHEMERIS>(7, 0)).GetEphemerisValidatyTimeframeMinutes(),
        240.0);
    EXPECT_EQ(CHalvexEphemerisGLO().GetEphemerisValidatyTimeframeMinutes(), 60.0);
}

TEST(ThinEphemerides, GalileoMessageAndTimes) {
    auto e = ephemeris<CHalvexEphemerisGAL>(57 + 11, 600);
    e.toc = 604200;  // in the week before toe's
    e.pageType1Week = 2097;
    e.pageType1Seconds = 302400;
    struct Row {
        unsigned char type, reception;
        const char* text;
        bool fNav, iNav, e1b, e5b;
    };
    for (const Row& row : {Row{1, 0, "F/NAV ", true, false, false, false},
                           {2, 2, "I/NAV ", false, true, true, false},
                           {2, 3, "I/NAV ", false, true, false, true},
                           {3, 1, "NAV UNKNOWN ", false, false, false, false}}) {
        e.navType = row.type;
        e.inavReception = row.reception;
        std::string info = "old";
        e.GetAdditionalInfo(info);
        EXPECT_EQ(info, row.text + std::string("58926.500000000 ") + CGPSTime(2110, 604200.0).FormatRegional().str());
        EXPECT_EQ(e.GetNavigationType(), row.type);
        EXPECT_EQ(e.isReceivedFNav(), row.fNav);
        EXPECT_EQ(e.isReceivedINav(), row.iNav);
        EXPECT_EQ(e.isReceivedINavE1BOnly(), row.e1b);
        EXPECT_EQ(e.isReceivedINavE5bOnly(), row.e5b);
    }
    struct Counter final : IAssertHandler {
        void failed(std::string_view expression, std::string_view) override { text += expression; }
        std::string text;
    } counter;
    const ScopedAssertHandler scope(counter);
    using Type = CHalvexEphemerisGAL::eREFTIMETYPE;
    EXPECT_TRUE(e.GetRefTime(Type(1)) == SMjdTime(2110, 604200.0) && e.GetRefTime(Type(2)) == e.GetRefTime(Type(1)));
    EXPECT_EQ(counter.text, "");
    EXPECT_TRUE(e.GetRefTime(Type(0)) == SMjdTime(2111, 600.0));
    EXPECT_EQ(counter.text, "false");

    double azimuth = 0.0, elevation = 0.0;
    EXPECT_TRUE(e.GetAzimuthElevation({6378137, 0, 0}, azimuth, elevation));
    EXPECT_NEAR(azimuth, 12 * kPi / 72, 1e-15) << "a placeholder";
    EXPECT_EQ(azimuth, elevation);
}

TEST(ThinEphemerides, GalileoHealthDependsOnTheMessage) {
    struct Row {
        unsigned char type, reception;
        bool e1b, e5a, e5b;  // the signal alone is bad: still healthy?
    };
    for (const Row& row : {Row{1, 1, true, false, true},
                           {2, 1, false, true, false},
                           {2, 2, false, true, true},
                           {2, 3, true, true, false}}) {
        auto e = ephemeris<CHalvexEphemerisGAL>(57);
        e.navType = row.type;
        e.inavReception = row.reception;
        EXPECT_TRUE(e.IsHealthy());
        const std::pair<CALN::CALX_SAT_EPHEMERIS_GALILEO::SignalStatus*, bool> signals[] = {
            {&e.e1b, row.e1b}, {&e.e5a, row.e5a}, {&e.e5b, row.e5b}};
        for (const auto& [signal, healthy] : signals) {
            *signal = {1, 0};
            EXPECT_EQ(e.IsHealthy(), healthy);
            *signal = {0, 2};
            EXPECT_EQ(e.IsHealthy(), healthy);
            *signal = {};
        }
    }
}

TEST(ThinAlmanacs, NumbersHealthAndNoPosition) {
    const CHalvexAlmanacGal galileo(circularOrbit<CALN::CALX_SAT_ALMANAC_GALILEO>(57 + 35, 4096));
    CHalvexAlmanacBds beidou(circularOrbit<CALN::CALX_SAT_ALMANAC_BEIDOU>(63, 4096));
    const CHalvexAlmanacQzss qzss(circularOrbit<CALN::CALX_SAT_ALMANAC_QZSS>(202, 4096));
    const CHalvexAlmanacNavic navic(circularOrbit<CALN::CALX_SAT_ALMANAC_NAVIC>(7, 4096));
    struct Row {
        const IHalvexAlmanacBase* almanac;
        CALN::SCalSatID id;
        bool healthy;
        double reference;
    };
    for (const Row& row : {Row{&galileo, {CALN::eCALSATSYSTEM_GALILEO, 36}, true, 4096},
                           {&beidou, {CALN::eCALSATSYSTEM_BEIDOU, 63}, true, 4110},
                           {&qzss, {CALN::eCALSATSYSTEM_QZSS, 10}, false, 4096},
                           {&navic, {CALN::eCALSATSYSTEM_NAVIC, 7}, false, 4096}}) {
        EXPECT_EQ(row.almanac->GetSatID(), row.id);
        EXPECT_EQ(row.almanac->IsHealthy(), row.healthy) << int{row.id.system};
        EXPECT_TRUE(row.almanac->GetRefTime() == SMjdTime(2111, row.reference)) << int{row.id.system};
        EXPECT_EQ(row.almanac->GetOrbitType(), CALN::eCALEPHEMERISTYPE_ALMANAC);
        double azimuth = 5.0, elevation = 5.0;
        EXPECT_FALSE(row.almanac->GetAzimuthElevation(SMjdTime(2111, 4096.0), {6378137, 0, 0}, azimuth, elevation));
        EXPECT_FALSE(row.almanac->GetAzimuthElevation({6378137, 0, 0}, azimuth, elevation));
        EXPECT_TRUE(azimuth == 5.0 && elevation == 5.0);
    }
    beidou.health = 1;
    EXPECT_FALSE(beidou.IsHealthy());
}

TEST(OrbitValidity, TwoWeeksFromTheReferenceAndNowOnTwoScales) {
    const double toe = 397312;  // 97 times 4096 s: the instant that all of them can have
    auto glonassAlmanac = CALN::CALX_SAT_ALMANAC_GLONASS();
    glonassAlmanac.satId = 7, glonassAlmanac.week = kWeek, glonassAlmanac.referenceMilliseconds = 397312000;
    struct Row {
        std::unique_ptr<IHalvexOrbitBase> orbit;
        bool gpsNow;  // an unset instant means now on the GPS scale
    };
    const auto gps = as<CHalvexEphemeris>(circularOrbit<CALN::CALX_SAT_EPHEMERIS>(7, toe));
    const auto almanac = as<CHalvexAlmanac>(circularOrbit<CALN::CALX_SAT_ALMANAC>(7, toe));
    std::vector<Row> rows;
    rows.push_back({std::make_unique<CHalvexEphemeris>(gps), false});
    rows.push_back({std::make_unique<CHalvexEphemerisGLO>(as<CHalvexEphemerisGLO>(glonassOrbit(7, toe))), false});
    rows.push_back({std::make_unique<CHalvexAlmanac>(almanac), false});
    rows.push_back({std::make_unique<CHalvexAlmanacGlonass>(as<CHalvexAlmanacGlonass>(glonassAlmanac)), false});
    rows.push_back(
        {std::make_unique<CHalvexAlmanacGal>(circularOrbit<CALN::CALX_SAT_ALMANAC_GALILEO>(60, toe)), false});
    rows.push_back({std::make_unique<CHalvexEphemerisGAL>(ephemeris<CHalvexEphemerisGAL>(60, toe)), true});
    rows.push_back({std::make_unique<CHalvexEphemerisBDS>(ephemeris<CHalvexEphemerisBDS>(7, toe - 14)), true});
    rows.push_back({std::make_unique<CHalvexEphemerisQZSS>(ephemeris<CHalvexEphemerisQZSS>(193, toe)), true});
    rows.push_back({std::make_unique<CHalvexEphemerisNAVIC>(ephemeris<CHalvexEphemerisNAVIC>(7, toe)), true});

    const SMjdTime reference(2111, toe);
    const auto after = [&reference](double seconds) {
        SMjdTime t = reference;
        t.AddSeconds(seconds);
        return t;
    };
    TestClock clock;
    const auto setUtc = [&](double seconds) {  // 18 leap seconds: GPS reads 18 s more
        const auto [year, month, day, hour, minute, second] = after(seconds).GetCalendar();
        clock.utc = TestClock::stamp(year, month, day, hour, minute, static_cast<int>(second));
    };
    for (const Row& row : rows) {
        const auto& orbit = *row.orbit;
        SCOPED_TRACE(testing::Message() << typeid(orbit).name());
        for (const double sign : {-1.0, 1.0}) {
            EXPECT_TRUE(orbit.IsValid(after(sign * 1209599.999)));
            EXPECT_FALSE(orbit.IsValid(after(sign * 1209600)));
        }
        setUtc(1209600 - 5);
        EXPECT_EQ(orbit.IsValid(SMjdTime()), !row.gpsNow);
        setUtc(-1209600 - 5);
        EXPECT_EQ(orbit.IsValid(SMjdTime()), row.gpsNow);
    }
    glonassAlmanac.satId = 25;
    EXPECT_FALSE(as<CHalvexAlmanacGlonass>(glonassAlmanac).IsValid(reference)) << "no such slot";

    // The short form of azimuth and elevation reads the clock as UTC, of whichever class.
    const ORBIT_COORD site{6378137, 0, 0};
    setUtc(0);
    for (const Row& row : rows) {
        double azimuth = 1, elevation = 2, sameAzimuth = 3, sameElevation = 4;
        const bool can = row.orbit->GetAzimuthElevation(site, azimuth, elevation);
        if (!can) continue;
        EXPECT_TRUE(row.orbit->GetAzimuthElevation(reference, site, sameAzimuth, sameElevation));
        EXPECT_EQ(azimuth, sameAzimuth) << typeid(*row.orbit).name();
        EXPECT_EQ(elevation, sameElevation);
    }
}

}  // namespace
