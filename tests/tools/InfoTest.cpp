#include <gtest/gtest.h>

#include "tests/tools/Station.h"

namespace halvex::test {
namespace {

using nlohmann::json;

/// Epochs every 30 s with holes of 90 s and 10 min, and one that goes back.
std::string gaps() {
    std::string text = header();
    for (const char* time : {"00 00  0", "00 00 30", "00 02  0", "00 02 30", "00 12 30", "00 13  0"})
        text += epoch(time);
    text += "> 2021 01 01 00 13  0.0000000  5  0\n";
    text += "> 2021 01 01 00 13 10.0000000  0  2\nG05  20000000.123\nG07                    1.0001\n";
    return text + epoch("00 13  0");
}

TEST(Info, OfAFileAndOfItsSet) {
    const TemporaryFolder folder;
    writeFile(folder.path("f"), gaps());
    ASSERT_EQ(runTool({"archive", folder.path("f"), "--out", folder.path("a")}).status, 0);
    const std::string set = folder.path("a/ABCD00XXX_R_20210010000_01D_30S_MO");
    const ToolRun run = runTool({"info", "--json", folder.path("f"), set + "t"});
    ASSERT_EQ(run.status, 0) << run.err;
    json expected = json::parse(R"({
        "kind": "RINEX 3.05 observations", "station": "ABCD", "receiver": "", "antenna": "",
        "epochs": 8, "events": 1, "from": "2021-01-01T00:00:00", "to": "2021-01-01T00:13:00", "interval": 30.0,
        "gaps": [{"after": "2021-01-01T00:00:30", "seconds": 90.0}, {"after": "2021-01-01T00:02:30", "seconds": 600.0}],
        "gapCount": 2, "backwardSteps": 1,
        "systems": {"G": {"name": "GPS", "satellites": ["G05", "G07"], "observations": {"C1C": 8, "L1C": 8}}}})");
    json found = json::parse(run.out);
    expected["file"] = folder.path("f");
    EXPECT_EQ(found[0], expected);

    expected["file"] = set;
    expected["kind"] = "indexed set";
    expected["epochs"] = 7;  // the one that went back is not in it, nor are events
    expected["events"] = 0;
    expected["backwardSteps"] = 0;
    expected["to"] = "2021-01-01T00:13:10";
    expected["systems"]["G"]["observations"] = {{"C1C", 7}, {"L1C", 7}};
    EXPECT_EQ(found[1], expected);

    const std::string text = runTool({"info", set}).out;
    EXPECT_NE(text.find("  2021-01-01T00:00:00 to 2021-01-01T00:13:10 GPS time, 7 epochs at 30 s\n"
                        "  gap of 90 s after 2021-01-01T00:00:30\n"
                        "  gap of 600 s after 2021-01-01T00:02:30\n"
                        "  system  satellites  signal  observations\n"
                        "  GPS              2  C1C                7\n"
                        "                      L1C                7\n"),
              std::string::npos)
        << text;
}

TEST(Info, ManyGapsAreCountedAndTheFirstOnesListed) {
    const TemporaryFolder folder;
    std::string text = header();
    for (int i = 0; i < 60; ++i) {
        if (i % 4 != 3) text += epoch("00 " + std::string(i < 10 ? "0" : "") + std::to_string(i) + "  0");
    }
    writeFile(folder.path("f"), text);
    const json found = json::parse(runTool({"info", folder.path("f"), "--json"}).out)[0];
    EXPECT_EQ(found["gapCount"], 14);
    ASSERT_EQ(found["gaps"].size(), 10U);
    EXPECT_EQ(found["gaps"][9]["after"], "2021-01-01T00:38:00");
}

TEST(Info, WhatWasGoodIsToldBeforeTheFault) {
    const TemporaryFolder folder;
    writeFile(folder.path("f"), header() + epoch("00 00  0") + epoch("00 00 30", "  20000000.1x3"));
    writeFile(folder.path("g"), header() + epoch("00 00  0"));
    const ToolRun run = runTool({"info", folder.path("f"), folder.path("g"), "--json"});
    EXPECT_EQ(run.status, 1);
    const json found = json::parse(run.out);
    EXPECT_TRUE(found[0]["epochs"] == 1 && found[1]["epochs"] == 1) << run.out;
    EXPECT_EQ(run.err, "halvex: " + folder.path("f") + ":9: G05: columns 4 to 17: \"  20000000.1x3\" is no number\n");
}

}  // namespace
}  // namespace halvex::test
