#include <cmath>
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

/// A day's orbits and a station's observations of it: epochs, and the share of expected satellites without BeiDou,
/// whose newest ones receivers did not know for years.
TEST_F(OrbitsRealData, WhatStationsTrackedWasPredictedAboveTheirHorizon) {
    const std::tuple<const char*, const char*, int> rows[] = {
        {"nav/BRDC00IGS_R_20220010000_01D_MN.rnx.gz", "obs/TLSE00FRA_R_20220010000_01H_30S_MO.rnx.gz", 120},
        {"nav/ESBC00DNK_R_20201770000_01D_MN.rnx.gz", "obs/ESBC00DNK_R_20201770000_01D_30S_MO.rnx.gz", 2880},
    };
    for (const auto& [orbits, observations, epochs] : rows) {
        const json report = jsonOf({"sky", path(orbits), "--tracked", path(observations)});
        EXPECT_EQ(report["epochs"], epochs) << observations;
        EXPECT_EQ(report["agrees"], true) << report["belowHorizon"];
        EXPECT_EQ(report["withoutOrbit"].size(), 0U) << report["withoutOrbit"];
        for (const char* const system : {"GPS", "GLONASS", "Galileo"}) {
            EXPECT_GT(report["systems"][system]["share"], 0.99) << observations << " " << system;
        }
    }
}

TEST_F(StreamRealData, ANetwork) {
    const json report = jsonOf({"network", path("rtcm/1012_first.rtcm")});
    for (const auto& message : report["messages"]) {
        const int references = message.value("referenceStations", 12);
        EXPECT_TRUE(references == 12 || references == 13) << message;
        for (const auto& satellite : message.value("satellites", json::array())) {
            EXPECT_LT(satellite["byDistance"].get<double>() + satellite["ionosphericByDistance"].get<double>(), 0.5);
        }
    }
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
        const json report = jsonOf({"orbits", path(file)});
        const json& read = report["navigation"];
        EXPECT_EQ(std::tuple(read["orbits"], read["faults"], read["from"], read["to"]), std::tuple(orbits, 0, from, to))
            << file;
        for (const auto& satellite : report["positions"]) {
            const auto& at = satellite["position"];
            const double radius = std::hypot(at[0].get<double>(), at[1].get<double>(), at[2].get<double>());
            EXPECT_TRUE(radius > 2.3e7 && radius < 4.6e7) << satellite["satellite"] << ' ' << radius;
        }
    }
}

TEST_F(StreamRealData, WhatWasTrackedIsWhereTheStreamsOrbitsSay) {
    const std::string file = path("rtcm/week-rollover-STR17.rtcm3");
    const json report = jsonOf({"sky", file, "--tracked", file});
    EXPECT_EQ(std::tuple(report["epochs"], report["agrees"]), std::tuple(1126, true));
    for (const char* const system : {"GPS", "GLONASS", "Galileo", "QZSS"}) {
        EXPECT_EQ(report["systems"][system]["share"], 1.0) << system;
    }
    EXPECT_EQ(jsonOf({"status", file})["epochs"], 1126);
}

}  // namespace
}  // namespace halvex::test
