#include <tuple>

#include "tests/formats/RealData.h"
#include "tests/tools/Station.h"

namespace halvex::test {
namespace {

using nlohmann::literals::operator""_json_pointer;
using OrbitsRealData = RealData;
using StreamRealData = RealData;

/// What broadcast orbits are good for [m]: the tool's medians against precise ones.
TEST_F(OrbitsRealData, AgreeWithPreciseOnes) {
    const std::tuple<const char*, const char*, std::map<std::string, double>> rows[] = {
        {"nav/BRDC00IGS_R_20220010000_01D_MN.rnx.gz",
         "sp3/COD0MGXFIN_20220010000_01D_05M_ORB.SP3.gz",
         {{"GPS", 1.6}, {"Galileo", 1.0}, {"BeiDou", 1.4}, {"GLONASS", 2.8}, {"QZSS", 1.9}}},
        {"nav/ESBC00DNK_R_20201770000_01D_MN.rnx.gz",
         "sp3/Sta21114.sp3.gz",
         {{"GPS", 1.6}, {"Galileo", 1.0}, {"BeiDou", 1.4}, {"GLONASS", 2.9}, {"QZSS", 1.9}}},
        {"nav/SEPT2650.21P",
         "sp3/COD0MGXFIN_20212650000_01D_05M_ORB.SP3.gz",
         {{"GPS", 1.6}, {"Galileo", 1.0}, {"QZSS", 1.9}}},
    };
    for (const auto& [navigation, precise, medians] : rows) {
        const json systems = jsonOf({"orbits", path(navigation), "--compare", path(precise)})["systems"];
        for (const auto& [system, median] : medians) {
            EXPECT_LE(systems[system]["median"], median) << navigation << " " << system;
            // The second generation of BeiDou is what reaches the wider bound.
            EXPECT_LE(systems[system]["p95"], (system == "BeiDou" ? 2.6 : 2.1) * median) << navigation << " " << system;
        }
        EXPECT_LE(systems.value("/BeiDou geostationary/worst"_json_pointer, 0.0), 20.0) << navigation;
    }
}

/// Orbits and a station's observations: epochs, and the least share of expected satellites, without BeiDou, whose
/// newest ones receivers did not know for years.
TEST_F(OrbitsRealData, WhatStationsTrackedWasPredictedAboveTheirHorizon) {
    const std::tuple<const char*, const char*, int, std::size_t, double> rows[] = {
        {"nav/BRDC00IGS_R_20220010000_01D_MN.rnx.gz", "obs/TLSE00FRA_R_20220010000_01H_30S_MO.rnx.gz", 120, 0, 0.99},
        {"nav/ESBC00DNK_R_20201770000_01D_MN.rnx.gz", "obs/ESBC00DNK_R_20201770000_01D_30S_MO.rnx.gz", 2880, 0, 0.99},
        {"rtcm/week-rollover-STR17.rtcm3", "rtcm/week-rollover-STR17.rtcm3", 1126, 2, 1.0},
    };
    for (const auto& [orbits, observations, epochs, without, share] : rows) {
        const json report = jsonOf({"sky", path(orbits), "--tracked", path(observations)});
        EXPECT_EQ(report["epochs"], epochs) << observations;
        EXPECT_EQ(report["agrees"], true) << report["belowHorizon"];
        EXPECT_EQ(report["withoutOrbit"].size(), without) << report["withoutOrbit"];
        for (const char* const system : {"GPS", "GLONASS", "Galileo"}) {
            EXPECT_GE(report["systems"][system]["share"], share) << observations << " " << system;
        }
    }
}

TEST_F(StreamRealData, ANetwork) {
    const json report = jsonOf({"network", path("rtcm/1012_first.rtcm")});
    std::string counts;
    for (const auto& series : report["series"]) counts += series["message"].dump() + ":" + series["count"].dump() + " ";
    EXPECT_EQ(counts, "1030:5 1031:5 1032:15 ");
    EXPECT_TRUE(report["stations"][0]["antenna"] == "ADVNULLANTENNA" && report["stations"][0].contains("receiver"));
    EXPECT_EQ(report["other"]["messages that are cut off"], 0);
    EXPECT_LT(report["physicalStations"][0]["distance"], 1.0);
    const json text = jsonOf({"network", path("rtcm/pygpsdata-NTRIP-USCL00CHL0.log")})["messages"][0];
    EXPECT_TRUE(text["utc"] == "2024-03-13T16:35:27" && text["text"] == "Unknown" && text["station"] == 0) << text;
}

TEST_F(StreamRealData, EphemeridesAreOrbits) {
    // File, orbits that are valid and no contradiction to one another, first and last reference time.
    const std::tuple<const char*, int, const char*, const char*> rows[] = {
        {"rtcm/eph.rtcm", 1696, "2018-08-03T11:40:00", "2018-08-03T16:00:00"},
        {"rtcm/week-rollover-STR17.rtcm3", 298, "2018-07-12T19:00:00", "2018-07-15T02:00:00"},
        {"rtcm/week-rollover-STR24.rtcm3", 622, "2018-07-14T21:00:00", "2018-07-15T02:00:00"},
    };
    for (const auto& [file, orbits, from, to] : rows) {
        const json read = jsonOf({"orbits", path(file)})["navigation"];
        EXPECT_EQ(std::tuple(read["orbits"], read["faults"], read["from"], read["to"]), std::tuple(orbits, 0, from, to))
            << file;
    }
}

}  // namespace
}  // namespace halvex::test
