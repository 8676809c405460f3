#include <gtest/gtest.h>

#include "tests/support/Environment.h"
#include "tests/tools/Station.h"

namespace halvex::test {
namespace {

TEST(CommandLine, WrongUsageGivesTwoAndOneReason) {
    const TemporaryFolder folder;
    writeFile(folder.path("f"), header() + epoch("00 00  0"));
    std::istringstream usages(
        "|archives|url|archive F|archive F --out A --span weekly|archive F --out A --site-number 0|archive F --out A "
        "--site ../X|"
        "replay|replay F --json --rinex r|replay F --speed 0|replay F --from yesterday|replay F --from 2021-02-29|"
        "replay F --from 2021-01-01T24:00|replay F --to 2138:604800|replay F --to 2138:nan|raw F|info|name ABCD|"
        "name ABCD 2021-01-01 --type weekly|simulate|ssr|ssr F --rtcm-time yesterday|status F --locked nan|"
        "status F --mask 5|systems disable|systems --persist|systems enable Loran|systems remove G|"
        "simulate --out F --hours -1|simulate --out F --interval nan");
    for (std::string line; std::getline(usages, line, '|');) {
        std::istringstream words(line);
        Arguments arguments{std::istream_iterator<std::string>(words), {}};
        std::replace(arguments.begin(), arguments.end(), std::string("F"), folder.path("f"));
        std::replace(arguments.begin(), arguments.end(), std::string("A"), folder.path("a"));
        const ToolRun run = runTool(arguments);
        EXPECT_EQ(run.status, 2) << line;
        EXPECT_TRUE(run.out.empty() && !run.err.empty()) << line;
    }
    EXPECT_EQ(filesIn(folder.path("")), Arguments{"f"}) << "nothing is made";
}

TEST(CommandLine, NamesOfATime) {
    EXPECT_EQ(runTool({"name", "abcd", "2021-01-02T23:59:59.999"}).out, "ABCD00XXX_R_20210022359_01D\nabcd0020.21\n");
    EXPECT_EQ(runTool({"name", "ESBC00DNK", "2020-02-29 13:45", "--period", "01H", "--type", "hourly"}).out,
              "ESBC00DNK_R_20200601345_01H\nesbc060n.20\n");
}

TEST(CommandLine, DemoDoesTheWholeJob) {
    const TemporaryFolder folder;
    const ScopedVariable temporary("TMPDIR", folder.path("").c_str());
    const ToolRun run = runTool({"demo"});
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_NE(run.out.find("every epoch, satellite and value alike"), std::string::npos) << run.out;
    EXPECT_EQ(filesIn(folder.path("")), Arguments()) << "nothing stays behind";
}

/// Epochs every 30 s with holes of 90 s and 10 min, and one that goes back.
std::string gaps() {
    std::string text = header();
    for (const char* time : {"00 00  0", "00 00 30", "00 02  0", "00 02 30", "00 12 30", "00 13  0"}) {
        text += epoch(time);
    }
    return text + "> 2021 01 01 00 13  0.0000000  5  0\n> 2021 01 01 00 13 10.0000000  0  2\n" +
           "G05  20000000.123\nG07                    1.0001\n" + epoch("00 13  0");
}

TEST(Info, OfAFileAndOfItsSet) {
    const TemporaryFolder folder;
    writeFile(folder.path("f"), gaps());
    ASSERT_EQ(runTool({"archive", folder.path("f"), "--out", folder.path("a")}).status, 0);
    const std::string set = folder.path("a/ABCD00XXX_R_20210010000_01D_30S_MO");
    const json found = jsonOf({"info", folder.path("f"), set + "t"});
    json expected = json::parse(R"({
        "kind": "RINEX 3.05 observations", "station": "ABCD", "receiver": "", "antenna": "",
        "epochs": 8, "events": 1, "from": "2021-01-01T00:00:00", "to": "2021-01-01T00:13:00", "interval": 30.0,
        "gaps": [{"after": "2021-01-01T00:00:30", "seconds": 90.0}, {"after": "2021-01-01T00:02:30", "seconds": 600.0}],
        "gapCount": 2, "backwardSteps": 1,
        "systems": {"G": {"name": "GPS", "satellites": ["G05", "G07"], "observations": {"C1C": 8, "L1C": 8}}}})");
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

    EXPECT_NE(runTool({"info", set})
                  .out.find("  gap of 600 s after 2021-01-01T00:02:30\n"
                            "  system  satellites  signal  observations\n"
                            "  GPS              2  C1C                7\n"),
              std::string::npos);
}

}  // namespace
}  // namespace halvex::test
