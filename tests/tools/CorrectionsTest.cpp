#include <gtest/gtest.h>

#include "tests/support/TemporaryFolder.h"
#include "tests/tools/Station.h"

namespace halvex::test {
namespace {

using nlohmann::json;

class Corrections : public testing::Test {
protected:
    std::string station(const std::string& name, const std::string& position, const std::string& seed) {
        const std::string file = folder.path(name);
        const ToolRun run =
            runTool({"simulate", "--out", file, "--nav-out", nav, "--hours", "0.05", "--interval", "1", "--site",
                     name + "00XXX", "--position", position, "--seed", seed, "--atmosphere", "off"});
        EXPECT_EQ(run.status, 0) << run.err;
        return file;
    }
    const TemporaryFolder folder;
    const std::string nav = folder.path("nav");
};

TEST_F(Corrections, OfSimulatedStationsAreNothingButNoise) {
    const std::string master = station("AAAA", "55.0,8.0,50", "1");
    const std::string other = station("BBBB", "55.05,8.03,80", "2");
    const std::string frames = folder.path("rtcm");
    const ToolRun run =
        runTool({"corrections", "--master", master, "--aux", other, "--nav", nav, "--rtcm", frames, "--json"});
    ASSERT_EQ(run.status, 0) << run.err;
    const json report = json::parse(run.out);
    EXPECT_EQ(report["commonEpochs"], 180);
    EXPECT_EQ(report["stations"][0]["slips"], 0);
    EXPECT_NEAR(report["auxiliaries"][0]["distance"], 5888.0, 5.0);
    ASSERT_EQ(report["epochs"].size(), 179U) << "the first one only sets the start";
    for (const json& epoch : report["epochs"]) {
        ASSERT_GT(epoch["satellites"].size(), 15U);
        for (const json& satellite : epoch["satellites"]) {
            // No ionosphere, no troposphere: what is left is +-0.01 cycles on each phase, amplified.
            ASSERT_LT(std::abs(satellite["geometric"].get<double>()), 0.035) << epoch;
            ASSERT_LT(std::abs(satellite["ionospheric"].get<double>()), 0.03) << epoch;
        }
    }
    EXPECT_EQ(readFile(frames).substr(0, 1), "\xD3");

    const ToolRun moved = runTool({"corrections", "--master", master, "--aux", other, "--nav", nav, "--position",
                                   "55.0,8.0,50", "--position", "55.06,8.03,80"});
    EXPECT_EQ(moved.status, 1);
    EXPECT_NE(moved.err.find("BBBB00XXX: the pseudoranges miss its position by some "), std::string::npos) << moved.err;
    EXPECT_EQ(runTool({"corrections", "--master", master, "--aux", other, "--nav", nav, "--position", "1,2,3"}).status,
              2);
}

}  // namespace
}  // namespace halvex::test
