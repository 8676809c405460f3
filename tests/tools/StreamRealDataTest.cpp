#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>

#include "tests/support/TemporaryFolder.h"
#include "tests/tools/Station.h"

namespace halvex {
namespace {

class StreamRealData : public testing::Test {
protected:
    void SetUp() override {
        if (std::getenv("HALVEX_DATA") == nullptr) GTEST_SKIP() << "HALVEX_DATA is not set: no real data to read";
        folder = std::getenv("HALVEX_DATA") + std::string("/rtcm/");
    }
    std::string folder;
};

TEST_F(StreamRealData, ANetwork) {
    const auto report = nlohmann::json::parse(test::runTool({"network", folder + "1012_first.rtcm", "--json"}).out);
    for (const auto& message : report["messages"]) {
        const int references = message.value("referenceStations", 12);
        EXPECT_TRUE(references == 12 || references == 13) << message;
        for (const auto& satellite : message.value("satellites", nlohmann::json::array())) {
            EXPECT_LT(satellite["byDistance"].get<double>() + satellite["ionosphericByDistance"].get<double>(), 0.5);
        }
    }
    std::string counts;
    for (const auto& series : report["series"]) counts += series["message"].dump() + ":" + series["count"].dump() + " ";
    EXPECT_EQ(counts, "1030:5 1031:5 1032:15 ");
    EXPECT_TRUE(report["stations"][0]["antenna"] == "ADVNULLANTENNA" && report["stations"][0].contains("receiver"));
    EXPECT_TRUE(report["other"]["messages that are cut off"] == 0 &&
                report["other"]["satellites of no known number"] == 0);
    EXPECT_LT(report["physicalStations"][0]["distance"], 1.0);
    const auto text = nlohmann::json::parse(
        test::runTool({"network", folder + "pygpsdata-NTRIP-USCL00CHL0.log", "--json"}).out)["messages"][0];
    EXPECT_TRUE(text["utc"] == "2024-03-13T16:35:27" && text["text"] == "Unknown" && text["station"] == 0) << text;
}

TEST_F(StreamRealData, EphemeridesAreOrbits) {
    // File, orbits that are valid and no contradiction to one another, first and last reference time.
    const std::tuple<const char*, int, const char*, const char*> rows[] = {
        {"eph.rtcm", 1696, "2018-08-03T11:40:00", "2018-08-03T16:00:00"},
        {"week-rollover-STR17.rtcm3", 298, "2018-07-12T19:00:00", "2018-07-15T02:00:00"},
        {"week-rollover-STR24.rtcm3", 622, "2018-07-14T21:00:00", "2018-07-15T02:00:00"},
    };
    for (const auto& [file, orbits, from, to] : rows) {
        const test::ToolRun run = test::runTool({"orbits", folder + file, "--json"});
        ASSERT_EQ(run.status, 0) << run.err;
        const auto json = nlohmann::json::parse(run.out);
        const auto& read = json["navigation"];
        EXPECT_EQ(std::tuple(read["orbits"], read["faults"], read["from"], read["to"]), std::tuple(orbits, 0, from, to))
            << file;
        for (const auto& satellite : json["positions"]) {
            const auto& at = satellite["position"];
            const double radius = std::hypot(at[0].get<double>(), at[1].get<double>(), at[2].get<double>());
            EXPECT_TRUE(radius > 2.3e7 && radius < 4.6e7) << satellite["satellite"] << ' ' << radius;
        }
    }
}

TEST_F(StreamRealData, WhatWasTrackedIsWhereTheStreamsOrbitsSay) {
    const std::string file = folder + "week-rollover-STR17.rtcm3";
    const auto report = nlohmann::json::parse(test::runTool({"sky", file, "--tracked", file, "--json"}).out);
    EXPECT_EQ(std::tuple(report["epochs"], report["agrees"]), std::tuple(1126, true));
    for (const char* const system : {"GPS", "GLONASS", "Galileo", "QZSS"}) {
        EXPECT_EQ(report["systems"][system]["share"], 1.0) << system;
    }
    const auto status = nlohmann::json::parse(test::runTool({"status", file, "--json"}).out);
    EXPECT_EQ(status["epochs"], 1126);
}

}  // namespace
}  // namespace halvex
