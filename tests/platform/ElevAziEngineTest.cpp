#include <gtest/gtest.h>

#include <atomic>
#include <boost/make_shared.hpp>
#include <latch>
#include <thread>

#include "halvex/platform/caln/ExtCalElevAziCalculator.h"
#include "halvex/platform/caln/FrequencyMgr.h"
#include "halvex/platform/caln/GeodeticSettings.h"
#include "halvex/platform/caln/SatPosition.h"
#include "tests/support/Allocations.h"
#include "tests/support/OrbitSamples.h"

namespace {

using namespace CALN;
using namespace halvex::test;
using Engine = ExtCalElevAziCalculator;

/// Hands a record of any kind to the engine.
template <class Record>
bool feed(Engine& engine, const Record& record) {
    const auto message = boost::make_shared<const BSS::TSK::MsgObjectT<Record>>(record);
    if constexpr (std::is_same_v<Record, CALX_SAT_EPHEMERIS>) return engine.ProcessGPSEphemeris(message);
    if constexpr (std::is_same_v<Record, CALX_SAT_EPHEMERIS_GLONASS>) return engine.ProcessGLOEphemeris(message);
    if constexpr (std::is_same_v<Record, CALX_SAT_EPHEMERIS_GALILEO>) return engine.ProcessGALEphemeris(message);
    if constexpr (std::is_same_v<Record, CALX_SAT_EPHEMERIS_BEIDOU>) return engine.ProcessBDSEphemeris(message);
    if constexpr (std::is_same_v<Record, CALX_SAT_EPHEMERIS_QZSS>) return engine.ProcessQZSSEphemeris(message);
    if constexpr (std::is_same_v<Record, CALX_SAT_EPHEMERIS_NAVIC>) return engine.ProcessNAVICEphemeris(message);
    if constexpr (std::is_same_v<Record, CALX_SAT_ALMANAC>) return engine.ProcessGPSAlmanach(message);
    if constexpr (std::is_same_v<Record, CALX_SAT_ALMANAC_GLONASS>) return engine.ProcessGLOAlmanach(message);
    if constexpr (std::is_same_v<Record, CALX_SAT_ALMANAC_GALILEO>) return engine.ProcessGALAlmanach(message);
    if constexpr (std::is_same_v<Record, CALX_SAT_ALMANAC_BEIDOU>) return engine.ProcessBDSAlmanach(message);
    if constexpr (std::is_same_v<Record, CALX_SAT_ALMANAC_QZSS>) return engine.ProcessQZSSAlmanach(message);
    if constexpr (std::is_same_v<Record, CALX_SAT_ALMANAC_NAVIC>) return engine.ProcessNAVICAlmanach(message);
}

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
constexpr SCalSatID kG07{eCALSATSYSTEM_GPS, 7};

SMjdTime at(double secondsOfWeek) {
    return {int{kWeek}, secondsOfWeek};
}
CALX_SAT_EPHEMERIS gps(double toe, double longitude = 0.0, unsigned char number = 7) {
    return circularOrbit<CALX_SAT_EPHEMERIS>(number, toe, longitude);
}
SCalCoordinateSet site(double latitude = 0.0, double longitude = 0.0) {
    const ORBIT_GEOGRAPHIC geographic{latitude, longitude, 0.0};
    return {halvex::toCartesian(geographic), geographic};
}
/// Reference time, as second of the week, of the orbit that serves G07; -1 when none does.
double serving(const Engine& engine, double seconds) {
    const auto position = engine.GetSatPosition(kG07, at(seconds));
    return position ? position->referenceTime.GetDifferenceInSeconds(at(0)) : -1;
}

TEST(ElevAziEngine, TheNearestReferenceTimeServes) {
    Engine engine(0, 0, 0, nullptr);
    for (const double toe : {114400, 100000, 107200}) EXPECT_TRUE(feed(engine, gps(toe)));
    const std::pair<double, double> rows[] = {{103599.9, 100000}, {103600, 107200}, {85599.9, -1}, {128800, 114400}};
    for (const auto& [seconds, toe] : rows) EXPECT_EQ(serving(engine, seconds), toe) << seconds;
}

TEST(ElevAziEngine, EqualReferenceTimesCapacityAndReset) {
    Engine engine(2, 0, 0, nullptr);
    EXPECT_TRUE(feed(engine, gps(100000, 0.1)) && feed(engine, gps(100000, 0.2)));
    EXPECT_NEAR(engine.GetSatPosition(kG07, at(100000))->position.y, 26560e3 * std::sin(0.2), 0.1)
        << "the later arrival";
    EXPECT_TRUE(feed(engine, gps(107200)));
    EXPECT_FALSE(feed(engine, gps(99984))) << "older than all of a full history";
    EXPECT_TRUE(feed(engine, gps(103600))) << "older than the newest";
    EXPECT_EQ(serving(engine, 100000), 103600) << "the oldest has gone";
    EXPECT_EQ(serving(engine, 107200), 107200);
    engine.Reset();
    EXPECT_EQ(serving(engine, 103600), -1);
}

TEST(ElevAziEngine, TheLatestGlonassEphemerisTellsTheChannel) {
    Engine engine(0, 0, 0, nullptr);
    const std::tuple<double, int, int> rows[] = {{300000, 3, 3}, {299000, -4, 3}, {301000, 99, 3}, {302000, -7, -7}};
    for (const auto& [seconds, channel, want] : rows) {
        auto record = glonassOrbit(24, seconds);
        record.frequencyNumber = static_cast<signed char>(channel);
        EXPECT_TRUE(feed(engine, record));
        EXPECT_EQ(CCalFrequencyMgr::getInstance().getGlonassChannel({eCALSATSYSTEM_GLONASS, 24}), want) << seconds;
    }
}

TEST(ElevAziEngine, AnAlmanacsTimeBehindItsWeekIsOneOfTheNext) {
    auto almanac = circularOrbit<CALX_SAT_ALMANAC>(7, 9600);
    Engine next(0, 0, 0, nullptr), behind(0, 0, 0, nullptr);
    EXPECT_TRUE(feed(next, almanac));
    --almanac.week;
    almanac.toa += 604800;
    EXPECT_TRUE(feed(behind, almanac));
    EXPECT_EQ(next.GetSatPosition(kG07, at(0))->position.y, behind.GetSatPosition(kG07, at(0))->position.y);
}

template <class Ephemeris, class Almanac>
void expectTimeframe(Ephemeris ephemeris, Almanac almanac, const SCalSatID& id, double minutes) {
    const SMjdTime reference = ephemeris.GetReferenceTime();
    const auto typeAt = [&](const Engine& engine, const SMjdTime& from, double seconds) {
        SMjdTime t = from;
        t.AddSeconds(seconds);
        const auto position = engine.GetSatPosition(id, t);
        return position ? int{position->type} : -1;
    };
    SCOPED_TRACE(int{id.system});
    Engine engine(0, 0, 0, nullptr), narrow(0, 0, 10, nullptr);
    ASSERT_TRUE(feed(engine, ephemeris) && feed(narrow, ephemeris) && feed(engine, almanac));
    EXPECT_TRUE(typeAt(narrow, reference, 600) == 1 && typeAt(narrow, reference, 600.001) == -1);
    EXPECT_TRUE(typeAt(engine, reference, minutes * 60) == 1 && typeAt(engine, reference, minutes * 60 + 0.001) == 0);
    const SMjdTime almanacTime = almanac.GetReferenceTime();
    EXPECT_TRUE(typeAt(engine, almanacTime, -1209600) == 0 && typeAt(engine, almanacTime, -1209600.001) == -1);
    engine.SetMode(Engine::kModeEphemerides);
    EXPECT_EQ(typeAt(engine, reference, minutes * 60 + 0.001), -1);
    engine.SetMode(Engine::kModeAlmanacs);
    engine.SetMode(7);  // is none: changes nothing
    EXPECT_EQ(typeAt(engine, reference, 0), 0);
}

template <class Ephemeris, class Almanac>
void expectKeplerTimeframe(unsigned char satId, const SCalSatID& id, double minutes) {
    expectTimeframe(circularOrbit<Ephemeris>(satId, 300000), circularOrbit<Almanac>(satId, 290000), id, minutes);
}

TEST(ElevAziEngine, EphemeridesBeforeAlmanacsAndTimeframes) {
    CALX_SAT_ALMANAC_GLONASS glonassAlmanac;
    glonassAlmanac.satId = 24, glonassAlmanac.week = kWeek, glonassAlmanac.referenceMilliseconds = 290000000;
    expectTimeframe(glonassOrbit(24, 300000.5), glonassAlmanac, {eCALSATSYSTEM_GLONASS, 24}, 60);
    expectKeplerTimeframe<CALX_SAT_EPHEMERIS, CALX_SAT_ALMANAC>(7, kG07, 240);
    expectKeplerTimeframe<CALX_SAT_EPHEMERIS_GALILEO, CALX_SAT_ALMANAC_GALILEO>(92, {eCALSATSYSTEM_GALILEO, 36}, 180);
    expectKeplerTimeframe<CALX_SAT_EPHEMERIS_BEIDOU, CALX_SAT_ALMANAC_BEIDOU>(63, {eCALSATSYSTEM_BEIDOU, 63}, 120);
    expectKeplerTimeframe<CALX_SAT_EPHEMERIS_QZSS, CALX_SAT_ALMANAC_QZSS>(202, {eCALSATSYSTEM_QZSS, 10}, 120);
    expectKeplerTimeframe<CALX_SAT_EPHEMERIS_NAVIC, CALX_SAT_ALMANAC_NAVIC>(14, {eCALSATSYSTEM_NAVIC, 14}, 120);
}

TEST(ElevAziEngine, WhatCannotBeUsedIsRefused) {
    Engine engine(0, 0, 0, nullptr);
    using Galileo = CALX_SAT_EPHEMERIS_GALILEO;
    using Glonass = CALX_SAT_EPHEMERIS_GLONASS;
    void (*const galileoRows[])(Galileo&) = {[](Galileo& r) { r.satId = 56; },     [](Galileo& r) { r.satId = 93; },
                                             [](Galileo& r) { r.source = 0; },     [](Galileo& r) { r.cis = kNan; },
                                             [](Galileo& r) { r.toe = HUGE_VAL; }, [](Galileo& r) { r.sqrtA = 4472.1; },
                                             [](Galileo& r) { r.e = 1.0; },        [](Galileo& r) { r.e = -0.01; }};
    void (*const glonassRows[])(Glonass&) = {[](Glonass& r) { r.satId = 25; }, [](Glonass& r) { r.velocity[2] = kNan; },
                                             [](Glonass& r) { r.position[0] = 19999e3; },
                                             [](Glonass& r) { r.referenceSeconds = 1e12; }};
    const auto expectRefused = [&engine](const auto& good, const auto& rows) {
        EXPECT_TRUE(feed(engine, good));
        for (const auto& spoil : rows) {
            auto record = good;
            spoil(record);
            EXPECT_FALSE(feed(engine, record)) << typeid(record).name() << ' ' << &spoil - rows;
        }
    };
    expectRefused(circularOrbit<Galileo>(60, 300000), galileoRows);
    expectRefused(glonassOrbit(24, 300000), glonassRows);
    CALX_SAT_ALMANAC_GLONASS almanac;
    almanac.satId = 1, almanac.deltaT = -43200;
    EXPECT_FALSE(feed(engine, almanac)) << "no period";
    EXPECT_FALSE(engine.ProcessBDSEphemeris(nullptr) || engine.ProcessGPSAlmanach(nullptr));

    SCalElevationAzimuth table;
    EXPECT_EQ(engine.GetElevAziData(site(), SMjdTime(), table, true), Engine::kBadInput);
    EXPECT_EQ(engine.GetElevAziData(site(kNan), at(300000), table, true), Engine::kBadInput);
}

TEST(ElevAziEngine, TablesAgreeWithThePositionRoutines) {
    RandomFields random;
    Engine engine(0, 0, 0, nullptr);
    std::vector<std::pair<SCalSatID, ORBIT_COORD>> expected;
    const double seconds = 301234.5;
    const auto add = [&](auto record, eCALSATSYSTEM system, auto calculate) {
        if constexpr (requires { record.sqrtA; }) anyElements(record, random);
        double p[3] = {};
        ASSERT_EQ(calculate(record, seconds, p), kPositionDone);
        ASSERT_TRUE(feed(engine, record));
        const int first = system == eCALSATSYSTEM_QZSS ? 192 : system == eCALSATSYSTEM_GALILEO ? 56 : 0;
        expected.push_back({{system, static_cast<unsigned char>(record.satId - first)}, {p[0], p[1], p[2]}});
    };
    for (unsigned char n = 1; n <= 9; ++n) {
        const auto galileo = static_cast<unsigned char>(56 + n), qzss = static_cast<unsigned char>(192 + n);
        add(gps(300000, 0, n), eCALSATSYSTEM_GPS, &POS_SAT_CalcSatPosCartesian);
        add(glonassOrbit(n, 300000 + n), eCALSATSYSTEM_GLONASS, &POS_SAT_CalcSatPosCartesianGlo);
        add(circularOrbit<CALX_SAT_EPHEMERIS_GALILEO>(galileo, 3e5), eCALSATSYSTEM_GALILEO,
            &POS_SAT_CalcSatPosCartesianGal);
        add(circularOrbit<CALX_SAT_EPHEMERIS_BEIDOU>(n, 3e5), eCALSATSYSTEM_BEIDOU, &POS_SAT_CalcSatPosCartesianBds);
        add(circularOrbit<CALX_SAT_EPHEMERIS_QZSS>(qzss, 3e5), eCALSATSYSTEM_QZSS, &POS_SAT_CalcSatPosCartesian);
        add(circularOrbit<CALX_SAT_EPHEMERIS_NAVIC>(n, 3e5), eCALSATSYSTEM_NAVIC, &POS_SAT_CalcSatPosCartesianNavic);
        SCalElevationAzimuth table;  // after every few satellites: lanes of all lengths
        const auto where = site(0.8, -2.0);
        ASSERT_EQ(engine.GetElevAziData(where, at(seconds), table, false), Engine::kDone);
        for (const auto& [id, position] : expected) {
            SCOPED_TRACE(testing::Message() << int{id.system} << ' ' << int{id.number});
            const auto direction = halvex::LocalFrame(where.cartesian, where.geographic).directionTo(position);
            double elevation = 9, azimuth = 9;
            ASSERT_TRUE(table.getEleAzi(id, elevation, azimuth));
            EXPECT_NEAR(elevation, direction.elevation, 1e-12);
            EXPECT_NEAR(azimuth, direction.azimuth, 1e-12);
            const ORBIT_COORD p = engine.GetSatPosition(id, at(seconds))->position;
            EXPECT_NEAR(std::hypot(p.x - position.x, p.y - position.y, p.z - position.z), 0.0, 1e-6);
        }
    }
}

TEST(ElevAziEngine, KeptEpochsFollowWhatChanges) {
    Engine engine(0, 2, 0, nullptr);
    const SCalSatID slot{eCALSATSYSTEM_GLONASS, 3};
    const auto elevation = [&](const SCalSatID& id, double seconds, double longitude = 0.2) {
        SCalElevationAzimuth table;
        double found = kNan, azimuth = 0.0;
        (void)engine.GetElevAziData(site(0.0, longitude), at(seconds), table, false);
        (void)table.getEleAzi(id, found, azimuth);
        return found;
    };
    EXPECT_TRUE(feed(engine, gps(300000, 0.2)) && feed(engine, glonassOrbit(3, 300000)));
    EXPECT_NEAR(elevation(kG07, 300000), kPi / 2, 1e-7);
    EXPECT_NEAR(elevation(kG07, 300000, 0.2 + kPi), -kPi / 2, 1e-7) << "another site at the same epoch";
    EXPECT_TRUE(feed(engine, gps(300000, 0.2 + kPi)));
    EXPECT_NEAR(elevation(kG07, 300000), -kPi / 2, 1e-7) << "a new orbit";
    const double before = elevation(slot, 300000);
    {
        const ScopedPZ90ToWGS84 scope({{{{0, 1, 0}, {-1, 0, 0}, {0, 0, 1}}}, {}});
        EXPECT_GT(std::abs(elevation(slot, 300000) - before), 0.5) << "other parameters";
    }
    for (const double seconds : {300000.0, 301000.0, 302000.0, 303000.0, 300000.0}) {  // more than are kept
        SCalSatEpochDataOrbit single;
        EXPECT_EQ(engine.GetSatElevAziData(slot, site(0.0, 0.2), at(seconds), single), Engine::kDone);
        EXPECT_NEAR(elevation(slot, seconds), single.elevation, 1e-12) << seconds;
    }
    engine.Reset();
    EXPECT_TRUE(std::isnan(elevation(slot, 300000)));
}

TEST(ElevAziEngine, TheConsumerMayAskBack) {
    struct Consumer final : ExtCalOrbitConsumer {
        void OnNewOrbit(const SCalSatID& id, eCALEPHEMERISTYPE type, const SMjdTime& reference) override {
            ++calls;
            const auto position = engine->GetSatPosition(id, reference);
            EXPECT_TRUE(position && position->type == type && position->referenceTime == reference);
            SCalElevationAzimuth table;
            EXPECT_EQ(engine->GetElevAziData(site(), reference, table, true), Engine::kDone);
            engine->SetMode(Engine::kModeEphemerisBeforeAlmanac);
        }
        Engine* engine = nullptr;
        int calls = 0;
    } consumer;
    Engine engine(1, 0, 0, &consumer);
    consumer.engine = &engine;
    EXPECT_TRUE(feed(engine, gps(300000)));
    EXPECT_TRUE(feed(engine, circularOrbit<CALX_SAT_ALMANAC_BEIDOU>(9, 4096)));
    EXPECT_FALSE(feed(engine, gps(299984)) || feed(engine, gps(300000, 0, 33)));
    EXPECT_EQ(consumer.calls, 2) << "not of orbits that were not taken over";
}

TEST(ElevAziEngine, QueriesAllocateNothing) {
    Engine engine(0, 0, 0, nullptr);
    for (unsigned char n = 1; n <= 24; ++n) {
        EXPECT_TRUE(feed(engine, gps(300000, 0.1 * n, n)) && feed(engine, glonassOrbit(n, 300000)));
    }
    SCalElevationAzimuth table;
    SCalSatEpochDataOrbit direction;
    const auto where = site(0.5, 0.5);
    const std::size_t before = allocations();
    int status = 0;
    for (int i = 0; i < 10; ++i) {
        status += engine.GetElevAziData(where, at(300000 + 30 * i), table, false);
        status += engine.GetSatElevAziData(kG07, where, at(300000 + 30 * i), direction);
    }
    EXPECT_EQ(allocations(), before);
    EXPECT_EQ(status, 0);
}

TEST(ElevAziEngine, ManyThreadsFeedAndAsk) {
    Engine engine(8, 2, 0, nullptr);
    std::latch start(4);
    std::atomic<int> wrong{0};
    std::vector<std::jthread> threads;
    for (unsigned char n = 1; n <= 2; ++n) {
        threads.emplace_back([&engine, &start, n] {
            start.arrive_and_wait();
            for (int i = 0; i < 200; ++i) {
                (void)feed(engine, gps(100000 + 7200 * (i % 20), 0.1 * (i % 20), n));
                (void)feed(engine, glonassOrbit(n, 100000 + 7200 * (i % 20)));
                if (i % 50 == 49) engine.Reset();
            }
        });
        threads.emplace_back([&engine, &start, &wrong, n] {
            start.arrive_and_wait();
            for (int i = 0; i < 200; ++i) {
                const SMjdTime t = at(100000 + 7200 * ((i + n) % 20));
                const SCalSatID id{eCALSATSYSTEM_GPS, n};
                const auto found = engine.GetSatPosition(id, t);  // at its reference time an orbit's longitude is known
                const bool serves = found && found->referenceTime == t;
                wrong += serves && std::abs(found->position.y - 26560e3 * std::sin(0.1 * ((i + n) % 20))) > 0.1 ? 1 : 0;
                SCalElevationAzimuth table;
                double elevation = 0.0, azimuth = 0.0;
                (void)engine.GetElevAziData(site(), t, table, true);
                wrong += table.getEleAzi(id, elevation, azimuth) && !(std::abs(elevation) <= kPi / 2) ? 1 : 0;
            }
        });
    }
    threads.clear();
    EXPECT_EQ(wrong, 0);
}

}  // namespace
