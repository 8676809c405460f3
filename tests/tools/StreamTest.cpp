#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <fstream>

#include "tests/formats/RtcmFrames.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/tools/Station.h"

namespace halvex {
namespace {

using namespace test;

std::string streamFile(const TemporaryFolder& folder) {
    const std::string name = folder.path("stream");
    std::ofstream out(name, std::ios::binary);
    for (int second = 0; second < 3; ++second) {
        Msm msm;
        msm.time = 1000 * second;
        msm.lock = 64;
        out << msm.frame() << "noise";
        msm.station = 8;
        out << msm.frame();
    }
    return name;
}

TEST(ToolStreams, InfoCountsMessages) {
    const TemporaryFolder folder;
    const ToolRun run = runTool({"info", streamFile(folder), "--json"});
    ASSERT_EQ(run.status, 0) << run.err;
    const auto json = nlohmann::json::parse(run.out).at(0);
    const std::size_t frame = Msm().frame().size();
    EXPECT_EQ(json["messages"],
              (nlohmann::json{{{"number", 1077}, {"count", 6}, {"firstByte", 0}, {"lastByte", 5 * frame + 15}}}));
    EXPECT_EQ(json["stations"], (nlohmann::json{7, 8}));
    EXPECT_EQ(json["systems"]["G"]["satellites"], nlohmann::json{"G05"});
    EXPECT_EQ(json["other"]["bytes in no frame"], 15);
    EXPECT_FALSE(json.contains("from"));  // nothing tells the date
}

TEST(ToolStreams, ArchiveKeepsOneStationAndNeedsADate) {
    const TemporaryFolder folder;
    const std::string file = streamFile(folder);
    const std::string out = folder.path("out");
    const ToolRun undated = runTool({"archive", file, "--out", out});
    EXPECT_EQ(undated.status, 1);
    EXPECT_EQ(undated.err, "halvex: " + file + ": nothing in the stream tells its date: give it with --rtcm-time\n");
    const ToolRun run =
        runTool({"archive", file, "--out", out, "--rtcm-time", "2018-07-15", "--rtcm-station", "8", "--json"});
    ASSERT_EQ(run.status, 0) << run.err;
    const auto json = nlohmann::json::parse(run.out);
    EXPECT_EQ(json["sets"][0]["epochs"], 3);
    EXPECT_TRUE(json["sets"][0]["set"].get<std::string>().starts_with(out + "/000800XXX_R_20181960000")) << run.out;
    EXPECT_EQ(json["inputs"][0]["other"]["messages of other stations"], 3);
    EXPECT_EQ(runTool({"orbits", file}).status, 1);
}

}  // namespace
}  // namespace halvex
