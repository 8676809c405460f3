#include <cmath>
#include <fstream>

#include "formats/rinex/NavigationWriter.h"
#include "tests/support/TestClock.h"
#include "tests/tools/Station.h"

namespace halvex::test {
namespace {

constexpr double kToe = 388800.0;  // 2020-06-25T12:00 GPS time

/// GPS satellite 5 on a circle in the plane of the equator.
CALN::CALX_SAT_EPHEMERIS circle() {
    CALN::CALX_SAT_EPHEMERIS record;
    record.satId = 5;
    record.source = CALN::eCALORBITSOURCE_FILE;
    record.week = 2111;
    record.toe = record.toc = record.transmissionTime = kToe;
    record.sqrtA = std::sqrt(26.56e6);
    record.ura = 2.0;
    return record;
}

class Orbits : public testing::Test {
protected:
    std::string navigation(const std::vector<rinex::NavigationRecord>& records) {
        const std::string name = m_folder.path("nav.rnx");
        rinex::NavigationWriter writer;
        EXPECT_TRUE(writer.open(name, rinex::NavigationHeader()));
        for (const rinex::NavigationRecord& record : records) EXPECT_TRUE(writer.write(record));
        EXPECT_TRUE(writer.close());
        return name;
    }
    TemporaryFolder m_folder;
};

TEST_F(Orbits, PositionsAtATime) {
    const ToolRun run = runTool({"orbits", navigation({circle()}), "--at", "2020-06-25T12:10", "--json"});
    ASSERT_EQ(run.status, 0) << run.err;
    const auto position = nlohmann::json::parse(run.out)["positions"][0];
    EXPECT_EQ(position["satellite"], "G05");
    EXPECT_EQ(position["age"], 600.0);
    EXPECT_EQ(position["reference"], "2020-06-25T12:00:00");
    // Along the circle at n, seen from an Earth that has turned since the week began.
    const double a = 26.56e6;
    const double angle = std::sqrt(3.986005e14 / (a * a * a)) * 600.0 - 7.2921151467e-5 * (kToe + 600.0);
    EXPECT_NEAR(position["position"][0], a * std::cos(angle), 1e-2);
    EXPECT_NEAR(position["position"][1], a * std::sin(angle), 1e-2);
    EXPECT_NEAR(position["position"][2], 0.0, 1e-2);
}

TEST_F(Orbits, WhatCannotBeBelievedIsToldWithItsLine) {
    auto contradicting = circle();
    contradicting.m0 = 0.001;
    auto implausible = circle();
    implausible.af0 = 0.02;
    auto low = CALN::CALX_SAT_EPHEMERIS_QZSS();
    low.satId = 193, low.source = 1, low.week = 2111, low.toe = low.toc = kToe, low.sqrtA = 2000.0;
    auto future = circle();
    future.week = 2115;
    const std::pair<std::vector<rinex::NavigationRecord>, const char*> rows[] = {
        {{circle(), contradicting}, "the ephemeris of G05 contradicts an earlier one of 2020-06-25T12:00:00"},
        {{circle(), implausible}, "the ephemeris of G05 is not plausible"},
        {{circle(), low}, "the ephemeris of J01 has elements of no orbit"},
        {{circle(), future}, "the ephemeris of G05 is of the future: 2020-07-23T12:00:00"},
    };
    const TestClock now(2020, 6, 25, 13);
    for (const auto& [records, what] : rows) {
        const std::string file = navigation(records);
        const ToolRun run = runTool({"orbits", file});
        EXPECT_EQ(run.status, 1);
        EXPECT_NE(run.err.find(file + ":12: " + what), std::string::npos) << run.err;
        const ToolRun on = runTool({"orbits", file, "--keep-going", "--json"});
        EXPECT_EQ(on.status, 0) << on.err;
        EXPECT_EQ(nlohmann::json::parse(on.out)["navigation"]["faults"], 1);
        EXPECT_EQ(nlohmann::json::parse(on.out)["navigation"]["orbits"], 1);
    }
    const ToolRun twice = runTool({"orbits", navigation({circle(), circle()}), "--json"});
    EXPECT_EQ(nlohmann::json::parse(twice.out)["navigation"]["repeated"], 1);
}

TEST_F(Orbits, NothingInCommonAndNothingAtAll) {
    const std::string file = navigation({circle()});
    const std::string sp3 = m_folder.path("far.sp3");
    std::ofstream(sp3) << "#cP2022  1  1  0  0  0.00000000       1 ORBIT IGS14 FIT AIUB\n"
                          "## 2190 518400.00000000   900.00000000 59580 0.0000000000000\n"
                          "+    1   G05\n*  2022  1  1  0  0  0.00000000\n"
                          "PG05  10000.000000  20000.000000  10000.000000 999999.999999\nEOF\n";
    EXPECT_NE(runTool({"orbits", file, "--compare", sp3}).err.find("no satellite in common"), std::string::npos);
    EXPECT_NE(runTool({"orbits", file, "--at", "2020-06-27"}).err.find("no orbit serves 2020-06-27T00:00:00"),
              std::string::npos);
    EXPECT_EQ(runTool({"orbits", file, "--at", "2020-06-27", "--compare", sp3}).status, 2);
}

}  // namespace
}  // namespace halvex::test
