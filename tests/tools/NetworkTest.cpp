#include <gtest/gtest.h>

#include "halvex/status/SatelliteSystemDisablingHelper.h"
#include "tests/formats/RtcmFrames.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/tools/Station.h"

namespace halvex::test {
namespace {

using nlohmann::json;

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

    const ToolRun run = runTool({"network", file, "--rtcm-time", "2018-07-15", "--json"});
    ASSERT_EQ(run.status, 0) << run.err;
    const json report = json::parse(run.out);
    ASSERT_EQ(report["messages"].size(), 8U) << run.out;
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
    EXPECT_NE(text.out.find("1017  network 7 subnetwork 3 master 1 auxiliary 2 secondsOfWeek 106; G05 geometric - m "
                            "ionospheric -0.0125 m issueOfData 88 cycles right slips 4\n"),
              std::string::npos)
        << text.out;
    EXPECT_EQ(text.out.find("1039"), std::string::npos) << text.out;

    writeFile(file, "no frame");
    const ToolRun none = runTool({"network", file});
    EXPECT_EQ(std::tuple(none.status, none.err),
              std::tuple(1, "halvex: " + file + ": is no RTCM 3 stream: no frame at its beginning\n"));
}

}  // namespace
}  // namespace halvex::test
