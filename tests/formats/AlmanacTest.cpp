#include <gtest/gtest.h>

#include <array>
#include <numbers>
#include <tuple>

#include "formats/almanac/AlmanacReader.h"
#include "tests/formats/RinexText.h"

namespace halvex::almanac {
namespace {

using test::with;
using Result = AlmanacReader::Result;

const std::string kYuma =
    "******** Week 819 almanac for PRN-01 ********\nID: 01\nHealth: 063\nEccentricity: 0.4164695740E-002\n"
    "Time of Applicability(s):  319488.0000\nOrbital Inclination(rad):   0.9617124771\n"
    "Rate of Right Ascen(r/s):  -0.7954617056E-008\nSQRT(A)  (m 1/2):           5153.605957\n"
    "Right Ascen at Week(rad):  -0.1551930535E+001\nArgument of Perigee(rad):   0.374535865\n"
    "Mean Anom(rad):            -0.3011159346E+001\nAf0(s):  -0.5722045898E-005\nAf1(s/s): 0.3637978807E-011\n"
    "week:                        819\n\n";
const std::string kSemHeader = "2  CURRENT.ALM\n 819 319488\n\n";
const std::string kSem =
    "5\n\n0\n"
    " 0.67005157470703E-0002  0.25000000000000E-0001 -0.25000000000000E-0008\n"
    " 0.51536845703125E+0004 -0.50000000000000E+0000  0.25000000000000E+0000\n"
    "-0.12500000000000E+0000  0.10395050048828E-0003  0.36379788070917E-0011\n"
    "62\n11\n";

/// Satellites with the lines of their records, and errors; the last record in `almanac`.
std::string story(const std::string& text, CALN::CALX_SAT_ALMANAC& almanac, const SMjdTime& reference = {1843, 0.0}) {
    FormatError error;
    const auto reader = openAlmanac(test::linesOf(text), error, reference);
    if (!reader) return "! " + error.text() + '\n';
    std::string told;
    for (auto result = reader->next(almanac); result != Result::end; result = reader->next(almanac)) {
        told += result == Result::error
                    ? "! " + reader->error().text()
                    : 'G' + std::to_string(almanac.satId) + " at " + std::to_string(reader->recordLine());
        told += '\n';
    }
    return told;
}

void expect(const CALN::CALX_SAT_ALMANAC& r, int health, const std::array<double, 9>& want) {
    EXPECT_TRUE(r.source == CALN::eCALORBITSOURCE_FILE && r.GetReferenceTime() == SMjdTime(1843, 319488.0));
    EXPECT_EQ(r.health, health);
    EXPECT_EQ((std::array{r.e, r.i, r.omegaDot, r.sqrtA, r.omega0, r.omega, r.m0, r.af0, r.af1}), want);
}

TEST(Almanac, ElementsAndAngles) {
    CALN::CALX_SAT_ALMANAC almanac;
    EXPECT_EQ(story(kYuma, almanac), "G1 at 2\n");
    expect(almanac, 63,
           {0.004164695740, 0.9617124771, -0.7954617056e-8, 5153.605957, -1.551930535, 0.374535865, -3.011159346,
            -0.5722045898e-5, 0.3637978807e-11});
    EXPECT_EQ(story(with(kSemHeader, "2", "1") + kSem, almanac), "G5 at 4\n");
    constexpr double kPi = std::numbers::pi;
    expect(almanac, 62,
           {0.0067005157470703, 0.325 * kPi, -0.25e-8 * kPi, 5153.6845703125, -kPi / 2, kPi / 4, -kPi / 8,
            0.10395050048828e-3, 0.36379788070917e-11});
}

TEST(Almanac, WeeksAreThoseLatestThatAreNotAhead) {
    const std::tuple<SMjdTime, const char*, int> rows[] = {
        {{1843 - 4, 319488.0}, "819", 1843},
        {{1843 - 4, 319487.0}, "819", 819},
        {{0, 0.0}, "819", 819},
        {{0, 0.0}, "1843", 1843},
    };
    for (const auto& [reference, week, want] : rows) {
        CALN::CALX_SAT_ALMANAC almanac;
        EXPECT_EQ(story(with(kYuma, " 819\n\n", week), almanac, reference), "G1 at 2\n");
        EXPECT_EQ(almanac.week, want);
    }
}

TEST(Almanac, FaultsAndWhereItGoesOn) {
    const auto yuma = [](const char* from, const char* to) { return with(kYuma, from, to) + kYuma; };
    const auto sem = [](const char* from, const char* to) { return kSemHeader + with(kSem, from, to) + '\n' + kSem; };
    const std::pair<std::string, const char*> rows[] = {
        {yuma("01\n", "33\n"), "! f:2: satellite 33: GPS has satellites 1 to 32\nG1 at 17\n"},
        {yuma("0.4164695740E-002", "1.0"), "! f:2: satellite 1: the eccentricity is not 0 to 1\nG1 at 17\n"},
        {yuma("week:                        819\n", ""), "! f:13: the record ends here without \"week\"\nG1 at 16\n"},
        {sem("\n62\n", "\n"), "! f:11: this line of a record holds one whole number\nG5 at 12\n"},
        {"2\n819 1 1\n", "! f:2: the second line is not week and time of applicability\n"},
        {kSemHeader + kSem, "G5 at 4\n! f:11: 2 records are announced, 1 are here\n"},
        {kSemHeader + kSem + kSem + kSem, "G5 at 4\nG5 at 12\n! f:20: 2 records are announced, more follow\n"},
        {kSemHeader + kSem + "6\n0\n", "G5 at 4\n! f:13: the file ends inside a record\n"},
        {"\nno almanac\n", "! f:2: this is no YUMA or SEM almanac\n"},
    };
    CALN::CALX_SAT_ALMANAC almanac;
    for (const auto& [text, want] : rows) EXPECT_EQ(story(text, almanac), want);
}

}  // namespace
}  // namespace halvex::almanac
