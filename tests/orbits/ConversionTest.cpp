#include <functional>

#include "tests/orbits/Convert.h"
#include "tests/support/OrbitSamples.h"

namespace {

using namespace halvex::test;

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

/// A record goes into the library's class and comes back with every field.
template <class Object, class Record>
void expectRoundTrips(const std::function<void(Record&)>& intoRange) {
    RandomFields random;
    for (int i = 0; i < 100; ++i) {
        auto record = randomRecord<Record>(random);
        if constexpr (requires { record.satId; }) record.satId = static_cast<unsigned char>(1 + record.satId % 24);
        intoRange(record);
        ASSERT_EQ(as<Record>(as<Object>(record)), record) << "case " << i;
    }
}

TEST(OrbitConversion, EveryFieldComesBack) {
    RandomFields random(7);
    int converted = 0;
    for (int i = 0; i < 100; ++i) {  // any saved form whose numbers happen to be finite
        Bytes bytes = saved(CHalvexEphemeris());
        for (std::size_t at = 6; at < bytes.size(); ++at) random(bytes[at]);
        bytes[6] = static_cast<unsigned char>(1 + bytes[6] % 32);
        bytes[7] &= 0x83;
        CHalvexEphemeris ephemeris;
        CALN::CALX_SAT_EPHEMERIS record;
        EXPECT_TRUE(ephemeris.loadData(bytes.data(), bytes.size()));
        if (!convert(ephemeris, record)) continue;
        ++converted;
        EXPECT_EQ(saved(as<CHalvexEphemeris>(record)), bytes) << "case " << i;
    }
    EXPECT_GT(converted, 50);
    expectRoundTrips<CHalvexEphemerisGLO, CALN::CALX_SAT_EPHEMERIS_GLONASS>([&](auto& r) {
        r.source &= 0x83;
        r.tb &= 0x7F;
        r.referenceSeconds = std::floor(random.number(0, 604800e3)) / 1000.0;
        for (double& x : r.position) x = random.number(-3e7, 3e7);
        for (double& v : r.velocity) v = random.number(-7e3, 7e3);
        for (double& a : r.acceleration) a = random.number(-1e-5, 1e-5);
        r.tauN = random.number(-1e-3, 1e-3);
        r.gammaN = random.number(-9e-10, 9e-10);
    });
    expectRoundTrips<CHalvexAlmanac, CALN::CALX_SAT_ALMANAC>(
        [&](auto& r) { r.toa = 4096.0 * std::floor(random.number(0, 65535.5)); });
    expectRoundTrips<CHalvexAlmanacGlonass, CALN::CALX_SAT_ALMANAC_GLONASS>([](auto&) {});
    expectRoundTrips<CHalvexTimeInfoGlonass, CALN::CALX_CLOCK_GLONASS>([](auto&) {});
    expectRoundTrips<CHalvexIonoUtc, CALN::CALX_IONO_UTC>(
        [](auto& r) { r.source = static_cast<unsigned char>(r.source % 5 == 4 ? 0x80 : r.source % 5); });
}

/// The conversion fails and leaves its target alone.
template <class From, class To>
void expectRefused(const From& from, const To& target, std::size_t what = 0) {
    To to = target;
    EXPECT_FALSE(convert(from, to)) << typeid(From).name() << ' ' << what;
    EXPECT_TRUE(saved(to) == saved(target)) << typeid(From).name() << ' ' << what;
}
template <class Object, class Record, std::size_t Count>
void expectAllRefused(const Record& good, void (*const (&spoils)[Count])(Record&)) {
    for (std::size_t i = 0; i < Count; ++i) {
        Record record = good;
        spoils[i](record);
        expectRefused(record, Object(), i);
    }
}

TEST(OrbitConversion, WhatTheClassesCannotHoldIsRefused) {
    using Gps = CALN::CALX_SAT_EPHEMERIS;
    using Glonass = CALN::CALX_SAT_EPHEMERIS_GLONASS;
    using Almanac = CALN::CALX_SAT_ALMANAC;
    const auto gps = circularOrbit<Gps>(7, 388800);
    const auto glonass = glonassOrbit(7, 388800);
    expectAllRefused<CHalvexEphemeris, Gps>(
        gps, {[](Gps& r) { r.messageType = CALN::eCALGPSMESSAGE_CNAV; }, [](Gps& r) { r.aDot = 1e-3; },
              [](Gps& r) { r.deltaNDot = 1e-15; }, [](Gps& r) { r.idot = kNan; },
              [](Gps& r) { r.delayTerm2 = HUGE_VAL; }, [](Gps& r) { r.cis = kNan; }, [](Gps& r) { r.tgd = 1e39; },
              [](Gps& r) { r.toe += 0.5; }, [](Gps& r) { r.toc = -16.0; }, [](Gps& r) { r.toe = 4294967296.0; },
              [](Gps& r) { r.toe = kNan; }, [](Gps& r) { r.satId = 0; }, [](Gps& r) { r.satId = 33; }});
    expectAllRefused<CHalvexEphemerisGLO, Glonass>(
        glonass, {[](Glonass& r) { r.velocity[1] = kNan; }, [](Glonass& r) { r.deltaTauN = kNan; },
                  [](Glonass& r) { r.referenceSeconds = -1.0; }, [](Glonass& r) { r.referenceSeconds = 4294967.296; },
                  [](Glonass& r) { r.tb = 128; }, [](Glonass& r) { r.position[2] = 32768e3; },
                  [](Glonass& r) { r.satId = 25; }});
    auto almanac = circularOrbit<Almanac>(7, 4096);
    CALN::CALX_SAT_ALMANAC_GLONASS glonassAlmanac;
    glonassAlmanac.satId = 24;
    expectAllRefused<CHalvexAlmanac, Almanac>(
        almanac, {[](Almanac& r) { r.toa = 4095.0; }, [](Almanac& r) { r.toa = -4096.0; },
                  [](Almanac& r) { r.toa = 65536.0 * 4096.0; }, [](Almanac& r) { r.af1 = kNan; },
                  [](Almanac& r) { r.satId = 33; }});
    expectAllRefused<CHalvexAlmanacGlonass, CALN::CALX_SAT_ALMANAC_GLONASS>(
        glonassAlmanac, {[](auto& r) { r.tauC = kNan; }, [](auto& r) { r.satId = 0; }});
    expectAllRefused<CHalvexIonoUtc, CALN::CALX_IONO_UTC>({}, {[](auto& r) { r.beta[3] = kNan; }});
    expectAllRefused<CHalvexTimeInfoGlonass, CALN::CALX_CLOCK_GLONASS>({}, {[](auto& r) { r.b2 = HUGE_VAL; }});

    // The other way, from saved forms that hold anything.
    expectRefused(patched(as<CHalvexEphemeris>(gps), 12, kNan), gps, 1);
    expectRefused(patched(as<CHalvexEphemeris>(gps), 128, 'f', kNan), gps, 2);
    expectRefused(CHalvexEphemeris(), gps, 3);
    const auto ephemeris = as<CHalvexEphemerisGLO>(glonass);
    expectRefused(patched(ephemeris, 83, kNan), glonass, 1);
    expectRefused(patched(ephemeris, 131, 0.5), glonass, 2);
    expectRefused(patched(ephemeris, 31, 256U), glonass, 3);
    expectRefused(CHalvexEphemerisGLO(), glonass, 4);
    expectRefused(patched(as<CHalvexAlmanac>(almanac), 77, 65536U), Almanac(), 1);
    expectRefused(CHalvexAlmanac(), almanac, 2);
    expectRefused(patched(as<CHalvexAlmanacGlonass>(glonassAlmanac), 80, kNan), glonassAlmanac, 1);
    expectRefused(CHalvexAlmanacGlonass(), glonassAlmanac, 2);
    expectRefused(patched(CHalvexIonoUtc(), 2, 128U), CALN::CALX_IONO_UTC());
}

TEST(OrbitConversion, SourcesAreMapped) {
    auto record = circularOrbit<CALN::CALX_SAT_EPHEMERIS>(7, 0);
    auto glonass = glonassOrbit(7, 0);
    const std::pair<int, int> rows[] = {{3, 3}, {4, 0}, {127, 0}, {0x82, 0x82}};
    for (const auto& [from, to] : rows) {
        record.source = glonass.source = static_cast<unsigned char>(from);
        EXPECT_EQ(saved(as<CHalvexEphemeris>(record))[7], to) << from;
        EXPECT_EQ(saved(as<CHalvexEphemerisGLO>(glonass))[6], to) << from;
    }
    // GLONASS looks at two bits of the source, GPS at seven.
    EXPECT_EQ(patched(CHalvexEphemeris(), 7, 'B', 0x87).GetSource(), 7);
    EXPECT_EQ(patched(CHalvexEphemerisGLO(), 6, 'B', 0x87).GetEphemerisSource(), 3);
}

}  // namespace
