#include <array>
#include <cmath>

#include "tests/orbits/Convert.h"
#include "tests/support/OrbitSamples.h"

namespace {

using namespace halvex::test;

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

CHalvexEphemeris someGps() {
    return as<CHalvexEphemeris>(circularOrbit<CALN::CALX_SAT_EPHEMERIS>(7, 388800));
}

TEST(GpsEphemeris, PlausibilityBounds) {
    // PRN, week, M0, delta n, e, sqrt(A), i0, OMEGA dot, Cuc, Cus, Crs, toe, af0, af1, af2, the extra delays: where
    // they are saved, as what, and the last numbers that are still plausible.
    const std::tuple<std::size_t, char, double, double> rows[] = {
        {6, 'B', 1, 32},         {10, 'H', 0, 9999},      {36, 'd', -10, 10},      {44, 'd', -1e-6, 1e-6},
        {52, 'd', -10, 10},      {60, 'd', 4500, 6000},   {76, 'd', -10, 10},      {92, 'd', -1e-6, 1e-6},
        {108, 'f', -1e-3, 1e-3}, {112, 'f', -1e-3, 1e-3}, {120, 'f', -1000, 1000}, {132, 'I', 0, 604800},
        {140, 'f', -0.01, 0.01}, {144, 'f', -1e-6, 1e-6}, {148, 'f', -1e-9, 1e-9}, {152, 'd', -1e-9, 1e-9},
        {160, 'd', -1e-9, 1e-9}};
    const CHalvexEphemeris some = someGps();
    for (const auto& [offset, type, first, last] : rows) {
        SCOPED_TRACE(offset);
        const auto plausible = [&, at = offset, as = type](double value) {
            return patched(some, at, as, value).IsDataValid();
        };
        const bool isReal = type == 'd' || type == 'f';
        for (const double sign : {-1.0, 1.0}) {
            double inside = sign < 0.0 ? first : last;
            double outside = type == 'd' ? std::nextafter(inside, sign * HUGE_VAL) : inside + sign;
            if (type == 'f') {  // the floats on either side of the bound, which is a double
                auto below = static_cast<float>(inside);
                if (std::abs(double{below}) > std::abs(inside)) below = std::nextafter(below, 0.0F);
                inside = below;
                outside = std::nextafter(below, static_cast<float>(sign * HUGE_VAL));
            }
            EXPECT_TRUE(plausible(inside)) << inside;
            EXPECT_FALSE((isReal || outside >= 0.0) && plausible(outside)) << outside;
        }
        EXPECT_FALSE(isReal && plausible(kNan));
    }
    // URA, OMEGA0, omega, IDOT, Crc, Cic, Cis, health and toc are not looked at.
    for (const unsigned at : {12U, 68U, 84U, 100U}) EXPECT_TRUE(patched(some, at, kNan).IsDataValid()) << at;
    for (const unsigned at : {116U, 124U, 128U}) EXPECT_TRUE(patched(some, at, 'f', kNan).IsDataValid()) << at;
    EXPECT_TRUE(patched(patched(some, 136, 'I', 4294967295.0), 8, 'H', 1).IsDataValid());
}

TEST(GpsEphemeris, EquivalenceAtTheResolutionOfEachField) {
    const std::tuple<const char*, std::size_t, char, int> rows[] = {
        {"URA", 12, 'd', 4},     {"TGD", 32, 'f', -31},       {"M0", 36, 'd', -31},     {"delta n", 44, 'd', -43},
        {"e", 52, 'd', -33},     {"sqrt(A)", 60, 'd', -19},   {"OMEGA0", 68, 'd', -31}, {"i0", 76, 'd', -31},
        {"omega", 84, 'd', -31}, {"OMEGA dot", 92, 'd', -43}, {"IDOT", 100, 'd', -43},  {"Cuc", 108, 'f', -29},
        {"Cus", 112, 'f', -29},  {"Crc", 116, 'f', -5},       {"Crs", 120, 'f', -5},    {"Cic", 124, 'f', -29},
        {"Cis", 128, 'f', -29},  {"toe", 132, 'I', 0},        {"toc", 136, 'I', 4},     {"af0", 140, 'f', -31},
        {"af1", 144, 'f', -43},  {"af2", 148, 'f', -55}};
    const CHalvexEphemeris zero;
    for (const auto& [what, offset, type, exponent] : rows) {
        const double step = std::ldexp(1.0, exponent);
        EXPECT_FALSE(patched(zero, offset, type, step).EquivalentAll(zero)) << what;
        EXPECT_FALSE(zero.EquivalentAll(patched(zero, offset, type, step))) << what;
        EXPECT_TRUE(patched(zero, offset, type, 0.9375 * step).EquivalentAll(zero)) << what;
        EXPECT_TRUE(type == 'I' || !patched(zero, offset, type, kNan).EquivalentAll(zero)) << what;
    }
    for (const unsigned offset : {6U, 7U, 10U, 20U, 22U, 24U, 28U, 30U}) {  // PRN, flags, week, words but the fourth
        EXPECT_FALSE(patched(zero, offset, std::uint8_t{1}).EquivalentAll(zero)) << offset;
    }
    for (const unsigned offset : {26U, 152U, 160U}) {  // fourth word, extra delays
        EXPECT_TRUE(patched(zero, offset, std::uint8_t{1}).EquivalentAll(zero)) << offset;
    }
    const auto ill = patched(zero, 8, 'H', 1);
    EXPECT_TRUE(ill.EquivalentAll(patched(zero, 8, 'H', 2)) && !zero.EquivalentAll(ill));
    for (std::size_t offset = 6; offset < CHalvexEphemeris::kSavedSize; ++offset) {
        EXPECT_FALSE(patched(zero, offset, std::uint8_t{1}) == zero) << offset;
    }
    const auto notANumber = patched(zero, 116, 'f', kNan);
    EXPECT_FALSE(notANumber == notANumber);
}

TEST(GpsEphemeris, IssuesOlderEphemeridesAndAccuracy) {
    const std::array<unsigned short, 3> issues[] = {{10, 10, 0}, {11, 10, 1}, {30, 230, 0}, {30, 231, 1}, {231, 30, 1}};
    for (const auto& [a, b, newer] : issues) EXPECT_EQ(CHalvexEphemeris::IsBiggerIODE(a, b), newer) << a << ' ' << b;
    EXPECT_EQ(CHalvexEphemeris::GetIode(0x3FF), 0xFF);

    const std::pair<double, bool> distances[] = {{59.999, true}, {60, false}, {0.001, true}, {0, false}, {-30, false}};
    for (const auto& [seconds, older] : distances) {
        const SMjdTime beforeMidnight(2111, 86390.0), then(2111, 86390.0 + seconds);
        EXPECT_EQ(CHalvexEphemeris::MustOlderEphemerisBeUsed(then, beforeMidnight), older) << seconds;
    }
    auto before = someGps(), after = patched(before, 132, 388859U);
    EXPECT_TRUE(after.MustOlderEphemerisBeUsed(before) && !before.MustOlderEphemerisBeUsed(after));
    const double accuracies[] = {2.0,   2.8,   4.0,   5.7,    8.0,    11.3,   16.0, 32.0,   64.0,
                                 128.0, 256.0, 512.0, 1024.0, 2048.0, 4096.0, 15.0, 3276.8, 0.0};
    for (unsigned short index = 0; index < 18; ++index) {
        EXPECT_EQ(CHalvexEphemeris::GetSvAccuracy(index), accuracies[index]) << index;
    }
}

TEST(GlonassEphemeris, IdentityCoversTheBroadcastContentAlone) {
    // Where a field is saved, its unit, and its widest number of units: tau_n and gamma_n first.
    std::vector<std::tuple<std::size_t, double, double>> rows = {{107, 0x1p-30, 2097151}, {123, 0x1p-40, 1023}};
    for (std::size_t i = 0; i < 24; i += 8) {
        rows.push_back({35 + i, 1000 * 0x1p-11, 67108863});  // position
        rows.push_back({59 + i, 1000 * 0x1p-20, 8388607});   // velocity
        rows.push_back({83 + i, 1000 * 0x1p-30, 15});        // acceleration
    }
    const CHalvexEphemerisGLO base = patched(CHalvexEphemerisGLO(), 156, 'I', 0x123456);
    const auto identity = [](CHalvexEphemerisGLO ephemeris) {
        EXPECT_TRUE(GenerateNavIdentValues(ephemeris));
        return ephemeris.GetCRC24();
    };
    EXPECT_EQ(identity(base), 0U) << "the check sum of zeros";
    std::vector<std::uint32_t> seen{0, identity(patched(base, 31, 1U))};
    for (const auto& [offset, unit, widest] : rows) {
        SCOPED_TRACE(offset);
        const auto with = [&, at = offset, step = unit](double units) { return patched(base, at, units * step); };
        EXPECT_EQ(identity(with(0.49)), 0U);
        EXPECT_EQ(identity(with(0.5)), identity(with(1))) << "half is rounded away from zero";
        EXPECT_EQ(identity(with(-0.5)), identity(with(-1)));
        EXPECT_EQ(identity(with(-widest - 0.49)), identity(with(-widest)));
        for (const double units : {1.0, -1.0}) seen.push_back(identity(with(units)));
        for (const double units : {widest + 0.5, -widest - 1, 1e300, kNan}) {
            CHalvexEphemerisGLO wide = with(units);
            EXPECT_TRUE(!GenerateNavIdentValues(wide) && wide.GetCRC24() == 0x123456U) << units;
        }
    }
    std::sort(seen.begin(), seen.end());
    EXPECT_TRUE(std::adjacent_find(seen.begin(), seen.end()) == seen.end()) << "a change has gone unnoticed";
    CHalvexEphemerisGLO wide = patched(base, 31, 128U);
    EXPECT_FALSE(GenerateNavIdentValues(wide));
    for (const unsigned offset : {5U, 6U, 7U, 8U, 12U, 14U, 18U, 19U, 21U, 23U, 27U, 115U, 131U, 139U, 151U, 155U}) {
        EXPECT_EQ(identity(patched(base, offset, std::uint8_t{1})), 0U) << offset;
    }
}

TEST(GlonassEphemeris, EqualityAndEquivalence) {
    const CHalvexEphemerisGLO zero;
    for (std::size_t offset = 5; offset < CHalvexEphemerisGLO::kSavedSize; ++offset) {
        const auto other = patched(zero, offset, static_cast<std::uint8_t>(offset == 5 ? 1 : 2));
        const bool identifies = offset == 5 || (offset >= 31 && offset < 35) || offset >= 156;
        EXPECT_EQ(other == zero, !identifies) << offset;
        EXPECT_EQ(other != zero, identifies) << offset;
        EXPECT_EQ(other.EquivalentAll(zero), offset == 7 || offset >= 151) << offset;
    }
    for (std::size_t number = 0; number < 13; ++number) {
        const auto with = [&](double value) { return patched(zero, 35 + 8 * number, value); };
        EXPECT_TRUE(with(1e7).EquivalentAll(with(1e7 * (1 + 0.8e-14)))) << number;
        EXPECT_FALSE(with(1e7).EquivalentAll(with(1e7 * (1 + 1.3e-14)))) << number;
        EXPECT_FALSE(with(kNan).EquivalentAll(with(kNan))) << number;
    }
    const auto notANumber = patched(zero, 35, kNan);
    EXPECT_TRUE(notANumber.EquivalentAll(notANumber)) << "the same object";
}

struct EighteenSeconds final : IGPSLeapSeconds {
    int GetGPSLeapSeconds(const SMjdTime&) override { return 18; }
};

TEST(GlonassEphemeris, UtcFormsPlausibilityAndHealth) {
    EighteenSeconds table;
    const auto glonass = as<CHalvexEphemerisGLO>(glonassOrbit(7, 388800.5));
    const std::array<unsigned, 3> rows[] = {
        {17990, 2110, 604799990}, {18000, 2111, 0}, {388800504, 2111, 388782500}, {388800506, 2111, 388782510}};
    for (const auto& [ms, week, utc] : rows) {
        const auto ephemeris = patched(glonass, 23, ms);
        EXPECT_EQ(ephemeris.GetUTCWeek(table), week) << ms;
        EXPECT_EQ(ephemeris.GetUTCMsec(table), utc) << ms;
    }
    for (const auto& [slot, valid] : {std::pair{0, false}, {1, true}, {24, true}, {25, false}, {255, false}}) {
        EXPECT_EQ(patched(glonass, 5, 'B', slot).IsDataValid(), valid) << slot;
    }
    EXPECT_TRUE(patched(glonass, 21, 'H', 9999).IsDataValid() && !patched(glonass, 21, 'H', 10000).IsDataValid());
    CHalvexEphemerisGLO ephemeris = glonass;
    for (const auto& [health, healthy] :
         {std::pair{0.9, true}, {1.0, false}, {-1.0, false}, {kNan, false}, {1e30, false}}) {
        ephemeris.SetHealth(health);
        EXPECT_EQ(ephemeris.IsHealthy(), healthy) << health;
    }
    ephemeris.SetSimulated(true);
    EXPECT_TRUE(ephemeris.IsSimulated() && ephemeris.GetEphemerisSource() == 1);
}

TEST(IonoUtc, LeapSecondDayAndValidity) {
    CHalvexIonoUtc parameters;
    parameters.SetLeapSecondsData(17, 274, 57753);  // 31 December 2016, a Saturday; 274 is 18 in eight bits
    EXPECT_EQ(std::tuple(parameters.GetLeapSecondsWeekNumber(), int{parameters.GetLeapSecondsDayNumber()}),
              std::tuple(1929U, 7));
    EXPECT_EQ(std::tuple(int{parameters.GetDeltaTls()}, int{parameters.GetDeltaTlsf()}), std::tuple(17, 18));
    EXPECT_EQ(parameters.GetLeapSecondsMjd(), 57753);
    parameters.SetLeapSecondsDayNumber(1);
    EXPECT_EQ(parameters.GetLeapSecondsMjd(), 57747);
    parameters = patched(patched(parameters, 93, 2000U), 97, 86399U);
    EXPECT_EQ(std::pair(parameters.getValidMJDStart(), parameters.getValidMJDEnd()), std::pair(58237, 58251));
    parameters = patched(parameters, 97, 86400U);
    EXPECT_EQ(parameters.getValidMJDEnd(), 58252);
    EXPECT_EQ(patched(parameters, 93, 0x7FFFFFFFU).getValidMJDEnd(), 2147483647) << "the last of all days";
}

}  // namespace
