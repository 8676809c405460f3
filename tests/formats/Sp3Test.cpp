#include <fmt/format.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <tuple>

#include "formats/rinex/SatelliteName.h"
#include "formats/sp3/PreciseOrbits.h"
#include "tests/formats/RinexText.h"

namespace halvex::sp3 {
namespace {

using test::linesOf;
using test::with;
using Result = Sp3Reader::Result;

const std::string kHeader =  // seven lines
    "#cP2022  1  1  0  0  0.00000000       2 u+U   IGS14 FIT ABCD\n"
    "## 2190 518400.00000000   900.00000000 59580 0.0000000000000\n"
    "+    3   G01L05R26  0  0  0  0  0  0  0  0  0  0  0  0  0  0\n"
    "++         5  9  0  0  0  0  0  0  0  0  0  0  0  0  0  0  0\n"
    "%c M  cc GPS ccc cccc cccc cccc cccc ccccc ccccc ccccc ccccc\n"
    "%f  1.2500000  1.025000000  0.00000000000  0.000000000000000\n"
    "/* words   \n";
const std::string kEpoch = "*  2022  1  1  0  0  0.00000000\n";
const std::string kG01 = "PG01  13882.271938 -21710.006216   5357.125462    469.127768\n";
const std::string kR26 = "PR26      0.000000      0.000000      0.000000 999999.999999\n";
const std::string kGood = "*  2022  1  1  0 15  0.00000000\n" + kR26 + "EOF\n";
const std::string kToldG01 = " G01=13882271.938,-21710006.216,5357125.462/0.000469127768";

SMjdTime at(double seconds) {
    SMjdTime time(2022, 1, 1, 0, 0, 0.0);
    time.AddSeconds(seconds);
    return time;
}

/// All that the reader gives, a line for each epoch.
std::string story(const std::string& text) {
    Sp3Reader reader;
    if (!reader.open(linesOf(text))) return "! " + reader.error().text() + '\n';
    std::string told;
    Epoch epoch;
    for (auto result = reader.next(epoch); result != Result::end; result = reader.next(epoch)) {
        if (result == Result::error) {
            told += "! " + reader.error().text() + '\n';
            continue;
        }
        told += fmt::format("{} +{:.15g} s", epoch.line, epoch.time.GetDifferenceInSeconds(at(0.0)));
        for (const auto& s : epoch.states) {
            told += ' ' + rinex::satelliteName(s.id) + '=';
            if (s.position) told += fmt::format("{:.15g},{:.15g},{:.15g}", s.position->x, s.position->y, s.position->z);
            if (s.clock) told += fmt::format("/{:.15g}", *s.clock);
            for (const auto& [on, letter] : {std::pair(s.clockEvent, 'E'), std::pair(s.clockPredicted, 'P'),
                                             std::pair(s.manoeuvre, 'M'), std::pair(s.orbitPredicted, 'p')}) {
                if (on) told += letter;
            }
        }
        told += '\n';
    }
    return told + (reader.endLineMissing() ? "no end line\n" : "");
}

TEST(Sp3Reader, Header) {
    Sp3Reader reader;
    ASSERT_TRUE(reader.open(linesOf(kHeader + kEpoch)));
    const Header& header = reader.header();
    EXPECT_EQ(header.dataUsed + header.coordinateSystem + header.orbitType + header.agency, "u+UIGS14FITABCD");
    EXPECT_EQ(std::pair(header.satellites.at(0).accuracy, header.satellites.at(1).accuracy), std::pair(0.032, 0.0))
        << "the second is the third of the list; unknown";
}

TEST(Sp3Reader, RecordsFlagsAndWhatIsReadOver) {
    EXPECT_EQ(story(with(kHeader, "#cP", "#dV") + kEpoch + kG01.substr(0, 60) + " 10  9  8 123 EP  MP\n" +
                    "EP   55   55   55     222  1234567 -1234567  5999999      -30       21 -1230000\n" +
                    "VG01  20298.880364 -18462.044804   1381.387685     -4.534317\nPL05 read over\n" + kR26 +
                    "*  2022  1  1 23 59 59.99000000\n" + with(kG01, "   469.127768", "-12345.000001") + "EOF\nPG01\n"),
              "8 +0 s" + kToldG01 + "EPMp R26=\n" + "14 +86399.99 s" +
                  with(kToldG01, "0.000469127768", "-0.012345000001") + '\n');
    EXPECT_EQ(story(with(with(kHeader, "#cP", "#aP"), "G01L05R26", "  1  5  6") + kEpoch + with(kG01, "G01", "  1") +
                    with(kG01, "G01", "  6").substr(0, 60) + "   as version a likes it\nEOF\n"),
              "8 +0 s" + kToldG01 + with(kToldG01, "G01", "G06") + '\n');
    const std::pair<const char*, int> systems[] = {{"ccc", 0}, {"BDT", 14}, {"UTC", 18}, {"TAI", -19}};
    for (const auto& [system, shift] : systems) {
        EXPECT_EQ(story(with(kHeader, "GPS", system) + kEpoch + "EOF"), "8 +" + std::to_string(shift) + " s\n");
    }
}

/// A fault costs its epoch alone, one of the header all.
TEST(Sp3Reader, FaultsAndWhereItGoesOn) {
    const std::tuple<const char*, const char*, const char*> headers[] = {
        {"#cP", "#eP", "1: SP3 version 'e' is not a, b, c or d"},
        {"2022  1  1", "2022  2 29", "1: the start \"2022  2 29  0  0  0.00000000\" is no date and time"},
        {"L05", "L 0", "3: satellite \"L 0\" is of no known system"},
        {"L05", "R26", "8: the header lists satellite R26 twice"},
        {"L05", "  0", "8: the header announces 3 satellites and lists 2"},
    };
    for (const auto& [from, to, error] : headers) {
        EXPECT_EQ(story(with(kHeader, from, to) + kGood), "! f:" + std::string(error) + '\n');
    }
    const std::pair<std::string, const char*> epochs[] = {
        {with(kEpoch, " 0  0.0", "60  0.0"), "8: the epoch \"2022  1  1  0 60  0.00000000\" is no date and time"},
        {kEpoch + with(kG01, "G01", "G02"), "9: satellite G02 is not in the header's list"},
        {kEpoch + kG01 + kG01, "10: satellite G01 stands twice in this epoch"},
        {kEpoch + with(kG01, "5357.125", "5357,125"), "9: G01: columns 33 to 46: \"5357,125462\" is no number"},
        {kEpoch + with(kG01, "469.127768", "469"), "9: G01: the line is cut off"},
        {kEpoch + kG01.substr(0, 60) + "              X\n", "9: G01: column 75: 'X' is no flag of this place"},
    };
    for (const auto& [text, error] : epochs) {
        const auto line = std::to_string(std::ranges::count(kHeader + text, '\n') + 1);
        EXPECT_EQ(story(kHeader + text + kGood), "! f:" + std::string(error) + '\n' + line + " +900 s R26=\n");
    }
    EXPECT_EQ(story(kHeader + kEpoch + kR26 + kEpoch + kG01 + kGood),
              "8 +0 s R26=\n! f:10: the epoch is not later than the one before\n12 +900 s R26=\n");
}

TEST(Sp3Reader, FilesWithoutTheirEnd) {
    const std::string whole = kHeader + kEpoch + kG01 + "PL05\n" + kR26;
    const std::string told = "8 +0 s" + kToldG01 + " R26=\n";
    EXPECT_EQ(story(whole), told + "no end line\n");
    EXPECT_EQ(story(whole + "*  2022  1  1  0 15  0.00000000\n" + kG01),
              told + "! f:13: the file ends inside an epoch: 1 of 2 satellites\nno end line\n");
    // Cut anywhere, it gives no value that the whole one has not.
    for (std::size_t i = 0; i < whole.size(); ++i) {
        const std::string cut = story(whole.substr(0, i));
        EXPECT_TRUE(cut.starts_with("! ") || cut == "no end line\n" || cut.starts_with(told)) << i << ": " << cut;
    }
}

constexpr double kStep = 900.0;

/// On a circle of the size of a GPS orbit, as fast as such orbits are in an Earth-fixed frame at most.
ORBIT_COORD circular(double seconds) {
    const double angle = 3.0 * 7.2921151467e-5 * seconds;
    return {26.56e6 * std::cos(angle), 26.56e6 * std::sin(angle) * 0.6, 26.56e6 * std::sin(angle) * 0.8};
}

TEST(PreciseOrbits, InterpolateWhereAllPointsAreThere) {
    // 40 epochs: number 20 is missing, R26 has no position at number 30.
    std::string text = kHeader;
    for (int i = 0; i < 40; ++i) {
        const ORBIT_COORD p = circular(i * kStep);
        const std::string line =
            fmt::format("*  2022  1  1 {:2} {:2}  0.00000000\nPG01{:14.6f}{:14.6f}{:14.6f} 999999.999999\n", i / 4,
                        i % 4 * 15, p.x / 1e3, p.y / 1e3, p.z / 1e3);
        if (i != 20) text += line + (i == 30 ? kR26 : with(line.substr(32), "G01", "R26"));
    }
    PreciseOrbits orbits;
    ASSERT_TRUE(orbits.read(linesOf(text)));
    const CALN::SCalSatID g01 = orbits.header().satellites[0].id, r26 = orbits.header().satellites[1].id;
    for (int nearest = -1; nearest <= 40; ++nearest) {
        for (const double offset : {-0.45, -1e-3, 0.0, 1e-9, 0.3, 0.4999}) {
            const double seconds = (nearest + offset) * kStep;
            const auto got = orbits.position(g01, at(seconds));
            const bool isEpoch = offset == 0.0 && nearest >= 0 && nearest < 40 && nearest != 20;
            const bool complete = (nearest >= 5 && nearest <= 14) || (nearest >= 26 && nearest <= 34);
            ASSERT_EQ(got.has_value(), isEpoch || complete) << nearest << " and " << offset;
            const auto [x, y, z] = circular(seconds);
            if (got) {
                ASSERT_LT(std::hypot(got->x - x, got->y - y, got->z - z), 2e-3) << nearest << " and " << offset;
            }
        }
    }
    EXPECT_FALSE(orbits.position(r26, at(30 * kStep)));
    EXPECT_FALSE(orbits.position(r26, at(34.4 * kStep)));
}

}  // namespace
}  // namespace halvex::sp3
