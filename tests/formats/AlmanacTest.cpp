#include <gtest/gtest.h>

#include <numbers>
#include <sstream>

#include "formats/almanac/AlmanacReader.h"
#include "tests/support/TestClock.h"

namespace halvex::almanac {
namespace {

using Result = AlmanacReader::Result;
const SMjdTime kReference(1843, 0.0);

const std::string kYuma =
    "******** Week 819 almanac for PRN-01 ********\n"
    "ID:                         01\n"
    "Health:                     063\n"
    "Eccentricity:               0.4164695740E-002\n"
    "Time of Applicability(s):  319488.0000\n"
    "Orbital Inclination(rad):   0.9617124771\n"
    "Rate of Right Ascen(r/s):  -0.7954617056E-008\n"
    "SQRT(A)  (m 1/2):           5153.605957\n"
    "Right Ascen at Week(rad):  -0.1551930535E+001\n"
    "Argument of Perigee(rad):   0.374535865\n"
    "Mean Anom(rad):            -0.3011159346E+001\n"
    "Af0(s):                    -0.5722045898E-005\n"
    "Af1(s/s):                   0.3637978807E-011\n"
    "week:                        819\n\n";
const std::string kSemHeader = "2  CURRENT.ALM\n 819 319488\n\n";
const std::string kSem =
    "5\n\n0\n"
    " 0.67005157470703E-0002  0.25000000000000E-0001 -0.24774635676295E-0008\n"
    " 0.51536845703125E+0004 -0.50000000000000E+0000  0.25000000000000E+0000\n"
    "-0.12500000000000E+0000  0.10395050048828E-0003  0.36379788070917E-0011\n"
    "63\n11\n";

std::string with(std::string text, const std::string& from, const std::string& to) {
    return text.replace(text.find(from), from.size(), to);
}

std::unique_ptr<AlmanacReader> readerOf(const std::string& text, FormatError& error,
                                        const SMjdTime& reference = kReference) {
    LineReader lines;
    lines.openBytes("f", text);
    return openAlmanac(std::move(lines), error, reference);
}

CALN::CALX_SAT_ALMANAC firstOf(const std::string& text, const SMjdTime& reference = kReference) {
    FormatError error;
    CALN::CALX_SAT_ALMANAC almanac;
    const auto reader = readerOf(text, error, reference);
    EXPECT_EQ(reader->next(almanac), Result::record) << reader->error().text();
    return almanac;
}

/// Satellites with the lines of their records, and errors.
std::string story(const std::string& text) {
    FormatError error;
    const auto reader = readerOf(text, error);
    if (!reader) return "! " + error.text() + '\n';
    std::ostringstream told;
    CALN::CALX_SAT_ALMANAC almanac;
    for (auto result = reader->next(almanac); result != Result::end; result = reader->next(almanac)) {
        if (result == Result::error) told << "! " << reader->error().text() << '\n';
        if (result == Result::record) told << 'G' << int{almanac.satId} << " at " << reader->recordLine() << '\n';
    }
    return told.str();
}

TEST(Almanac, Yuma) {
    CALN::CALX_SAT_ALMANAC want;
    want.satId = 1;
    want.source = CALN::eCALORBITSOURCE_FILE;
    want.week = 1843;
    want.toa = 319488.0;
    want.health = 63;
    want.m0 = -3.011159346;
    want.e = 0.004164695740;
    want.sqrtA = 5153.605957;
    want.omega0 = -1.551930535;
    want.i = 0.9617124771;
    want.omega = 0.374535865;
    want.omegaDot = -0.7954617056e-8;
    want.af0 = -0.5722045898e-5;
    want.af1 = 0.3637978807e-11;
    EXPECT_EQ(firstOf(kYuma), want);
}

TEST(Almanac, SemHasSemicirclesAndAnInclinationOffset) {
    const auto got = firstOf(kSemHeader + kSem);
    EXPECT_EQ(got.GetCalSatID(), CALN::SCalSatID(CALN::eCALSATSYSTEM_GPS, 5));
    EXPECT_EQ(got.source, CALN::eCALORBITSOURCE_FILE);
    EXPECT_EQ(got.GetReferenceTime(), SMjdTime(1843, 319488.0));
    EXPECT_EQ(got.health, 63);
    EXPECT_EQ(got.e, 0.0067005157470703);
    EXPECT_EQ(got.sqrtA, 5153.6845703125);
    EXPECT_NEAR(got.i, 0.325 * std::numbers::pi, 1e-15);
    EXPECT_NEAR(got.omegaDot, -0.24774635676295e-8 * std::numbers::pi, 1e-22);
    EXPECT_EQ(got.omega0, -std::numbers::pi / 2);
    EXPECT_EQ(got.omega, std::numbers::pi / 4);
    EXPECT_EQ(got.m0, -std::numbers::pi / 8);
    EXPECT_EQ(got.af0, 0.10395050048828e-3);
    EXPECT_EQ(got.af1, 0.36379788070917e-11);
}

TEST(Almanac, WeeksAreUnrolledToTheNearestOne) {
    const struct {
        SMjdTime reference;
        const char* week;
        int want;
    } rows[] = {
        {{1843 + 512, 319487.0}, "819", 1843},
        {{1843 + 512, 319489.0}, "819", 2867},
        {{1843 - 512, 319489.0}, "819", 1843},
        {{1843 - 512, 319487.0}, "819", 819},
        {{0, 0.0}, "819", 819},
        {{0, 0.0}, "1843", 1843},
    };
    for (const auto& row : rows) EXPECT_EQ(firstOf(with(kYuma, " 819\n\n", row.week), row.reference).week, row.want);
    const test::TestClock clock(2036, 1, 1);
    EXPECT_EQ(now(), SMjdTime(2036, 1, 1, 0, 0, 0.0));
}

TEST(Almanac, YumaFaultsAndWhereItGoesOn) {
    const struct {
        const char *from, *to, *error;
    } rows[] = {
        {"01\n", "33\n", "2: satellite 33: GPS has satellites 1 to 32"},
        {"Health:", "Wealth:", "3: key \"Wealth\" is unknown"},
        {"Health:                     063", "ID: 1", "3: key \"ID\" stands twice in this record"},
        {"063", "0 63", "3: Health: \"0 63\" is no number"},
        {"063", "256", "2: satellite 1: the health is not 0 to 255"},
        {"0.4164695740E-002", "1.0", "2: satellite 1: the eccentricity is not 0 to 1"},
        {"319488.0000", "604800", "2: satellite 1: the time of applicability is not within a week"},
        {"5153.605957", "0", "2: satellite 1: the root of the semi-major axis is not positive"},
        {" 819\n", " -1\n", "2: satellite 1: the week is not 0 to 65535"},
        {" 819\n", " 65536\n", "2: satellite 1: the week is not 0 to 65535"},
        {"Mean Anom(rad):", "Mean Anom(rad) ", "11: a line without a key: a colon is missing"},
        {"week:                        819\n", "", "13: the record ends here without \"week\""},
    };
    for (const auto& row : rows) {
        const bool shorter = std::string(row.to).empty();
        EXPECT_EQ(story(with(kYuma, row.from, row.to) + kYuma),
                  "! f:" + std::string(row.error) + "\nG1 at " + (shorter ? "16" : "17") + '\n');
    }
    EXPECT_EQ(story("\n" + kYuma.substr(46, kYuma.size() - 47) + kYuma.substr(46)), "G1 at 2\nG1 at 15\n");
}

TEST(Almanac, SemFaultsAndWhereItGoesOn) {
    const struct {
        const char *from, *to, *error;
    } rows[] = {
        {"5\n", "0\n", "4: satellite 0: GPS has satellites 1 to 32"},
        {"\n63\n", "\n", "11: this line of a record holds one whole number"},
        {"\n63\n", "\n256\n", "4: satellite 5: the health is not 0 to 255"},
        {"\n0\n", "\nx\n", "6: this line of a record holds one whole number"},
        {"+0004 ", "+0004x", "8: this line of a record holds three numbers"},
        {"E-0011", "E-0011 1", "9: this line of a record holds three numbers"},
    };
    for (const auto& row : rows) {
        const bool shorter = std::string(row.to) == "\n";
        EXPECT_EQ(story(kSemHeader + with(kSem, row.from, row.to) + '\n' + kSem),
                  "! f:" + std::string(row.error) + "\nG5 at " + (shorter ? "12" : "13") + '\n');
    }
    const std::pair<std::string, const char*> files[] = {
        {"2x\n", "! f:1: the first line does not begin with the number of records\n"},
        {"2\n", "! f:1: the file ends in its header\n"},
        {"2\n819 1 1\n", "! f:2: the second line is not week and time of applicability\n"},
        {kSemHeader + kSem, "G5 at 4\n! f:11: 2 records are announced, 1 are here\n"},
        {kSemHeader + kSem + kSem + kSem, "G5 at 4\nG5 at 12\n! f:20: 2 records are announced, more follow\n"},
        {kSemHeader + kSem + "6\n0\n", "G5 at 4\n! f:13: the file ends inside a record\n"},
        {"\nno almanac\n", "! f:2: this is no YUMA or SEM almanac\n"},
        {"", "! f: this is no YUMA or SEM almanac\n"},
    };
    for (const auto& [text, want] : files) EXPECT_EQ(story(text), want);
}

}  // namespace
}  // namespace halvex::almanac
