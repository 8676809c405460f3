#include <gtest/gtest.h>

#include "halvex/status/SatelliteSystemDisablingHelper.h"
#include "tests/formats/RtcmFrames.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/tools/Station.h"

namespace halvex::test {
namespace {

/// Differences of G05 (no geometric one) and G33, which is none, or of R03.
Bits differences(unsigned tenths, bool glonass = false) {
    Bits bits{{glonass ? 1039 : 1017, 12}, {7, 8}, {3, 4}, {tenths, glonass ? 20U : 23U}, {0, 1}, {1, 12}, {2, 12}};
    bits.add(glonass ? 1 : 2, 4).add(glonass ? 3 : 5, 6).add(1, 2).add(4, 3).add(-65536, 17).add(88, 8).add(-25, 17);
    return glonass ? bits : bits.add(33, 6).add(3, 2).add(0, 3).add(1, 17).add(1, 8).add(1, 17);
}

TEST(ToolNetwork, ListsMessagesStationsAndGaps) {
    const TemporaryFolder folder;
    const std::string file = folder.path("stream");
    constexpr std::int64_t kRadius = 63781370000;  // [0.1 mm], on the equator
    const std::string stations =
        Bits{{1006, 12}, {1, 12}, {0, 10}, {kRadius, 38}, {0, 2}, {0, 38}, {0, 2}, {0, 38}, {0, 16}}.frame() +
        Bits{{1014, 12}, {7, 8}, {3, 4}, {1, 5}, {1, 12}, {2, 12}, {4000, 20}, {-1, 21}, {5, 23}}.frame() +
        Bits{{1032, 12}, {1, 12}, {9, 12}, {0, 6}, {kRadius, 38}, {-30000, 38}, {40000, 38}}.frame();
    std::string stream = stations;
    for (const unsigned second : {100U, 101U, 102U, 102U, 106U}) stream += differences(second * 10).frame();
    // Moscow is three hours ahead of UTC, GPS time 18 s.
    stream += frameOf(differences(1020).message().substr(0, 20)) + differences((10800 + 106 - 18) * 10, true).frame();
    writeFile(file, stream);

    const json report = jsonOf({"network", file, "--rtcm-time", "2018-07-15"});
    ASSERT_EQ(report["messages"].size(), 8U) << report;
    const json& first = report["messages"][2];
    EXPECT_EQ(first["offset"], stations.size());
    EXPECT_EQ(first["time"], "2018-07-15T00:01:40");
    EXPECT_EQ(report["messages"][7]["time"], "2018-07-15T00:01:46");
    EXPECT_EQ(first["satellites"], json::parse(R"([{"satellite":"G05","geometric":null,"ionospheric":-0.0125,)"
                                               R"("issueOfData":88,"cycles":"right","slips":4}])"));
    const json& auxiliary = report["auxiliaries"][0];
    EXPECT_EQ(std::tuple(auxiliary["auxiliary"], auxiliary["deltaLatitude"], auxiliary["deltaHeight"]),
              std::tuple(2, 0.1, 0.005));
    EXPECT_NEAR(auxiliary["distance"], 11057.4, 0.1);  // a tenth of a degree of a meridian on the equator
    EXPECT_NEAR(report["physicalStations"][0]["distance"], 5.0, 1e-6);
    const json& series = report["series"][1];
    EXPECT_TRUE(series["count"] == 5 && series["epochs"] == 4 && series["interval"] == 1.0) << series;
    EXPECT_EQ(series["gaps"], (json{{{"after", "2018-07-15T00:01:42"}, {"seconds", 4.0}}}));
    EXPECT_EQ(report["other"]["messages that are cut off"], 1);
    EXPECT_EQ(report["other"]["satellites of no known number"], 5);

    CSatelliteSystemDisablingHelper::SetSatSystemDisableMask(1 << 1, false);
    const ToolRun text = runTool({"network", file});
    CSatelliteSystemDisablingHelper::SetSatSystemDisableMask(0, false);
    EXPECT_EQ(text.err, "halvex: disabled and left out: GLONASS\n");
    EXPECT_NE(text.out.find("G05 geometric - m ionospheric -0.0125 m issueOfData 88 cycles right slips 4\n"),
              std::string::npos)
        << text.out;
    EXPECT_EQ(text.out.find("1039"), std::string::npos) << text.out;

    writeFile(file, "no frame");
    expectFault(runTool({"network", file}), file + ": is no RTCM 3 stream: no frame at its beginning\n");
}

TEST(ToolStreams, InfoCountsMessagesAndArchiveKeepsOneStationAndNeedsADate) {
    const TemporaryFolder folder;
    const std::string file = folder.path("stream"), out = folder.path("out");
    std::string stream;
    for (int second = 0; second < 3; ++second) {
        stream += Msm{.time = 1000 * second}.frame() + "noise" + Msm{.station = 8, .time = 1000 * second}.frame();
    }
    writeFile(file, stream);
    json report = jsonOf({"info", file}).at(0);
    const std::size_t frame = Msm().frame().size();
    EXPECT_EQ(report["messages"],
              (json{{{"number", 1077}, {"count", 6}, {"firstByte", 0}, {"lastByte", 5 * frame + 15}}}));
    EXPECT_EQ(report["stations"], (json{7, 8}));
    EXPECT_EQ(report["systems"]["G"]["satellites"], json{"G05"});
    EXPECT_EQ(report["other"]["bytes in no frame"], 15);
    EXPECT_FALSE(report.contains("from"));  // nothing tells the date

    expectFault(runTool({"archive", file, "--out", out}),
                file + ": nothing in the stream tells its date: give it with --rtcm-time\n");
    report = jsonOf({"archive", file, "--out", out, "--rtcm-time", "2018-07-15", "--rtcm-station", "8"});
    EXPECT_EQ(report["sets"][0]["epochs"], 3);
    EXPECT_TRUE(report["sets"][0]["set"].get<std::string>().starts_with(out + "/000800XXX_R_20181960000")) << report;
    EXPECT_EQ(report["inputs"][0]["other"]["messages of other stations"], 3);
    EXPECT_EQ(runTool({"orbits", file}).status, 1);
}

}  // namespace
}  // namespace halvex::test
