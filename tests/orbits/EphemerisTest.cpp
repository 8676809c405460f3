#include <array>
#include <cmath>
#include <limits>

#include "tests/orbits/Convert.h"
#include "tests/support/OrbitSamples.h"

namespace {

using namespace halvex::test;

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

CHalvexEphemeris someGps() {
    return as<CHalvexEphemeris>(circularOrbit<CALN::CALX_SAT_EPHEMERIS>(7, 388800));
}

TEST(GpsEphemeris, PlausibilityBounds) {
    struct Row {
        const char* what;
        std::size_t offset;
        char type;
        double first, last;  // still plausible
    };
    const Row rows[] = {{"PRN", 6, 'B', 1, 32},
                        {"week", 10, 'H', 0, 9999},
                        {"M0", 36, 'd', -10, 10},
                        {"delta n", 44, 'd', -1e-6, 1e-6},
                        {"e", 52, 'd', -10, 10},
                        {"sqrt(A)", 60, 'd', 4500, 6000},
                        {"i0", 76, 'd', -10, 10},
                        {"OMEGA dot", 92, 'd', -1e-6, 1e-6},
                        {"Cuc", 108, 'f', -0.001, 0.001},
                        {"Cus", 112, 'f', -0.001, 0.001},
                        {"Crs", 120, 'f', -1000, 1000},
                        {"toe", 132, 'I', 0, 604800},
                        {"af0", 140, 'f', -0.01, 0.01},
                        {"af1", 144, 'f', -1e-6, 1e-6},
                        {"af2", 148, 'f', -1e-9, 1e-9},
                        {"delay 1", 152, 'd', -1e-9, 1e-9},
                        {"delay 2", 160, 'd', -1e-9, 1e-9}};
    const auto plausible = [](const Row& row, double value) {
        return patched(someGps(), row.offset, row.type, value).IsDataValid();
    };
    for (const Row& row : rows) {
        const bool isReal = row.type == 'd' || row.type == 'f';
        for (const double sign : {-1.0, 1.0}) {
            double inside = sign < 0.0 ? row.first : row.last;
            double outside = row.type == 'd' ? std::nextafter(inside, sign * HUGE_VAL) : inside + sign;
            if (row.type == 'f') {  // the floats on either side of the bound, which is a double
                auto below = static_cast<float>(inside);
                if (std::abs(double{below}) > std::abs(inside)) below = std::nextafter(below, 0.0F);
                inside = below;
                outside = std::nextafter(below, static_cast<float>(sign * HUGE_VAL));
            }
            EXPECT_TRUE(plausible(row, inside)) << row.what << ' ' << inside;
            EXPECT_FALSE((isReal || outside >= 0.0) && plausible(row, outside)) << row.what << ' ' << outside;
        }
        EXPECT_FALSE(isReal && plausible(row, kNan)) << row.what;
    }
    const Row untested[] = {
        {"URA", 12, 'd', 0, kNan},   {"OMEGA0", 68, 'd', 0, kNan},       {"omega", 84, 'd', 0, kNan},
        {"IDOT", 100, 'd', 0, kNan}, {"Crc", 116, 'f', 0, kNan},         {"Cic", 124, 'f', 0, kNan},
        {"Cis", 128, 'f', 0, kNan},  {"toc", 136, 'I', 0, 4294967295.0}, {"health", 8, 'H', 0, 1}};
    for (const Row& row : untested) EXPECT_TRUE(plausible(row, row.last)) << row.what;
    CHalvexEphemeris cleared = someGps();
    cleared.Clear();
    EXPECT_FALSE(cleared.IsDataValid());
    EXPECT_EQ(cleared.GetSatID().number, 255);
}

TEST(GpsEphemeris, EquivalenceAtTheResolutionOfEachField) {
    struct Row {
        const char* what;
        std::size_t offset;
        char type;
        int exponent;
    };
    const Row rows[] = {
        {"URA", 12, 'd', 4},     {"TGD", 32, 'f', -31},       {"M0", 36, 'd', -31},     {"delta n", 44, 'd', -43},
        {"e", 52, 'd', -33},     {"sqrt(A)", 60, 'd', -19},   {"OMEGA0", 68, 'd', -31}, {"i0", 76, 'd', -31},
        {"omega", 84, 'd', -31}, {"OMEGA dot", 92, 'd', -43}, {"IDOT", 100, 'd', -43},  {"Cuc", 108, 'f', -29},
        {"Cus", 112, 'f', -29},  {"Crc", 116, 'f', -5},       {"Crs", 120, 'f', -5},    {"Cic", 124, 'f', -29},
        {"Cis", 128, 'f', -29},  {"toe", 132, 'I', 0},        {"toc", 136, 'I', 4},     {"af0", 140, 'f', -31},
        {"af1", 144, 'f', -43},  {"af2", 148, 'f', -55}};
    const CHalvexEphemeris zero;
    for (const Row& row : rows) {
        const double step = std::ldexp(1.0, row.exponent);
        EXPECT_FALSE(patched(zero, row.offset, row.type, step).EquivalentAll(zero)) << row.what;
        EXPECT_FALSE(zero.EquivalentAll(patched(zero, row.offset, row.type, step))) << row.what;
        EXPECT_TRUE(patched(zero, row.offset, row.type, 0.9375 * step).EquivalentAll(zero)) << row.what;
        EXPECT_TRUE(row.type == 'I' || !patched(zero, row.offset, row.type, kNan).EquivalentAll(zero)) << row.what;
    }
    for (const unsigned offset : {6U, 7U, 10U, 20U, 22U, 24U, 28U, 30U}) {  // PRN, flags, week, words but the fourth
        EXPECT_FALSE(patched(zero, offset, std::uint8_t{1}).EquivalentAll(zero)) << offset;
    }
    for (const unsigned offset : {26U, 152U, 160U}) {  // fourth word, extra delays
        EXPECT_TRUE(patched(zero, offset, std::uint8_t{1}).EquivalentAll(zero)) << offset;
    }
    const auto withHealth = [&zero](double health) { return patched(zero, 8, 'H', health); };
    EXPECT_TRUE(withHealth(1).EquivalentAll(withHealth(2)));
    EXPECT_FALSE(withHealth(0).EquivalentAll(withHealth(1)));
    for (std::size_t offset = 6; offset < CHalvexEphemeris::kSavedSize; ++offset) {
        EXPECT_FALSE(patched(zero, offset, std::uint8_t{1}) == zero) << offset;
    }
    const auto notANumber = patched(zero, 116, 'f', kNan);
    EXPECT_FALSE(notANumber == notANumber);
}

TEST(GpsEphemeris, IssuesOlderEphemeridesAccuracyAndFlags) {
    const std::array<unsigned short, 3> issues[] = {{10, 10, 0},  {11, 10, 1},  {10, 11, 0}, {250, 30, 1},
                                                    {30, 230, 0}, {30, 231, 1}, {231, 30, 1}};
    for (const auto& [a, b, newer] : issues)
        EXPECT_EQ(CHalvexEphemeris::IsBiggerIODE(a, b), newer == 1) << a << ' ' << b;
    EXPECT_EQ(CHalvexEphemeris::GetIode(0x3FF), 0xFF);

    const std::pair<double, bool> distances[] = {{30, true}, {59.999, true}, {60, false},   {0.001, true},
                                                 {0, false}, {-30, false},   {86400, false}};
    for (const auto& [seconds, older] : distances) {
        const SMjdTime beforeMidnight(2111, 86390.0), then(2111, 86390.0 + seconds);
        EXPECT_EQ(CHalvexEphemeris::MustOlderEphemerisBeUsed(then, beforeMidnight), older) << seconds;
    }
    EXPECT_TRUE(patched(someGps(), 132, 388859U).MustOlderEphemerisBeUsed(someGps()));
    EXPECT_FALSE(someGps().MustOlderEphemerisBeUsed(patched(someGps(), 132, 388859U)));
    const double accuracies[] = {2.0,   2.8,   4.0,   5.7,    8.0,    11.3,   16.0, 32.0,   64.0,
                                 128.0, 256.0, 512.0, 1024.0, 2048.0, 4096.0, 15.0, 3276.8, 0.0};
    for (unsigned short index = 0; index < 18; ++index) {
        EXPECT_EQ(CHalvexEphemeris::GetSvAccuracy(index), accuracies[index]) << index;
    }
    EXPECT_EQ(CHalvexEphemeris::GetSvAccuracy(65535), 0.0);

    unsigned char flags = 0x7F;
    CHalvexEphemeris::SetAsSimulated(flags);
    EXPECT_TRUE(flags == 0xFF && CHalvexEphemeris::IsSimulated(flags));
    CHalvexEphemeris::UnsetAsSimulated(flags);
    EXPECT_TRUE(flags == 0x7F && !CHalvexEphemeris::IsSimulated(flags));
}

CHalvexEphemerisGLO someGlonass() {
    return as<CHalvexEphemerisGLO>(glonassOrbit(7, 388800.5));
}

TEST(GlonassEphemeris, IdentityCoversTheBroadcastContentAlone) {
    struct Row {
        const char* what;
        std::size_t offset;
        double step;    // one unit of the field
        double widest;  // units
    };
    std::vector<Row> rows = {{"tau_n", 107, 0x1p-30, 2097151}, {"gamma_n", 123, 0x1p-40, 1023}};
    for (std::size_t i = 0; i < 3; ++i) {
        rows.push_back({"position", 35 + 8 * i, 1000 * 0x1p-11, 67108863});
        rows.push_back({"velocity", 59 + 8 * i, 1000 * 0x1p-20, 8388607});
        rows.push_back({"acceleration", 83 + 8 * i, 1000 * 0x1p-30, 15});
    }
    const CHalvexEphemerisGLO base = patched(CHalvexEphemerisGLO(), 156, 'I', 0x123456);
    const auto identity = [](CHalvexEphemerisGLO ephemeris) {
        EXPECT_TRUE(GenerateNavIdentValues(ephemeris));
        return ephemeris.GetCRC24();
    };
    EXPECT_EQ(identity(base), 0U) << "the check sum of zeros";
    std::vector<std::uint32_t> seen{0, identity(patched(base, 31, 1U))};
    for (const Row& row : rows) {
        const auto with = [&](double units) { return patched(base, row.offset, units * row.step); };
        EXPECT_EQ(identity(with(0.49)), 0U) << row.what;
        EXPECT_EQ(identity(with(0.5)), identity(with(1))) << row.what << ", half is rounded away from zero";
        EXPECT_EQ(identity(with(-0.5)), identity(with(-1))) << row.what;
        EXPECT_EQ(identity(with(-row.widest - 0.49)), identity(with(-row.widest))) << row.what;
        for (const double units : {1.0, -1.0}) seen.push_back(identity(with(units)));
        for (const double units : {row.widest + 0.5, -row.widest - 1, 1e300, kNan}) {
            CHalvexEphemerisGLO wide = with(units);
            EXPECT_FALSE(GenerateNavIdentValues(wide)) << row.what << ' ' << units;
            EXPECT_EQ(wide.GetCRC24(), 0x123456U) << row.what;
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
        const bool counts = offset != 7 && offset < 151;
        EXPECT_EQ(other == zero, !identifies) << offset;
        EXPECT_EQ(other != zero, identifies) << offset;
        EXPECT_EQ(other.EquivalentAll(zero), !counts) << offset;
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
    const std::array<unsigned, 3> rows[] = {{388800000, 2111, 388782000},
                                            {17990, 2110, 604799990},
                                            {18000, 2111, 0},
                                            {388800504, 2111, 388782500},
                                            {388800506, 2111, 388782510}};
    for (const auto& [ms, week, utc] : rows) {
        const auto ephemeris = patched(someGlonass(), 23, ms);
        EXPECT_EQ(ephemeris.GetUTCWeek(table), week) << ms;
        EXPECT_EQ(ephemeris.GetUTCMsec(table), utc) << ms;
    }
    for (const auto& [slot, valid] : {std::pair{0, false}, {1, true}, {24, true}, {25, false}, {255, false}}) {
        EXPECT_EQ(patched(someGlonass(), 5, 'B', slot).IsDataValid(), valid) << slot;
    }
    EXPECT_TRUE(patched(someGlonass(), 21, 'H', 9999).IsDataValid());
    EXPECT_FALSE(patched(someGlonass(), 21, 'H', 10000).IsDataValid());

    CHalvexEphemerisGLO ephemeris = someGlonass();
    for (const auto& [health, healthy] : {std::pair{0.9, true}, {1.0, false}, {-1.0, true}, {kNan, true}}) {
        ephemeris.SetHealth(health);
        EXPECT_EQ(ephemeris.IsHealthy(), healthy) << health;
    }
    ephemeris.SetSimulated(true);
    EXPECT_TRUE(ephemeris.IsSimulated() && ephemeris.GetEphemerisSource() == 1);
    ephemeris.SetSimulated(false);
    EXPECT_FALSE(ephemeris.IsSimulated());
}

TEST(IonoUtc, LeapSecondDayAndValidity) {
    CHalvexIonoUtc parameters;
    EXPECT_FALSE(parameters.IsSimulated());
    parameters.SetLeapSecondsData(17, 274, 57753);  // 31 December 2016, a Saturday; 274 is 18 in eight bits
    EXPECT_EQ(parameters.GetLeapSecondsWeekNumber(), 1929U);
    EXPECT_EQ(parameters.GetLeapSecondsDayNumber(), 7);
    EXPECT_EQ(parameters.GetDeltaTls(), 17);
    EXPECT_EQ(parameters.GetDeltaTlsf(), 18);
    EXPECT_EQ(parameters.GetLeapSecondsMjd(), 57753);
    parameters.SetLeapSecondsDayNumber(1);
    EXPECT_EQ(parameters.GetLeapSecondsMjd(), 57747);
    parameters = patched(patched(parameters, 93, 2000U), 97, 86399U);
    EXPECT_EQ(parameters.getValidMJDStart(), 44244 + 14000 - 7);
    EXPECT_EQ(parameters.getValidMJDEnd(), 44244 + 14000 + 7);
    parameters = patched(parameters, 97, 86400U);
    EXPECT_EQ(parameters.getValidMJDEnd(), 44244 + 14001 + 7);
    EXPECT_EQ(patched(parameters, 93, 0x7FFFFFFFU).getValidMJDEnd(), 2147483647) << "the last of all days";
}

}  // namespace
