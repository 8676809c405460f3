#include <gtest/gtest.h>

#include <cstdlib>

#include "tests/tools/Station.h"

namespace halvex::test {
namespace {

/// A day's orbits and a station's observations of it: epochs, and the share of expected satellites without BeiDou,
/// whose newest ones receivers did not know for years.
TEST(SkyRealData, WhatStationsTrackedWasPredictedAboveTheirHorizon) {
    const char* const data = std::getenv("HALVEX_DATA");
    if (data == nullptr) GTEST_SKIP() << "HALVEX_DATA is not set: no real data to compare with";
    const std::tuple<const char*, const char*, int> rows[] = {
        {"nav/BRDC00IGS_R_20220010000_01D_MN.rnx.gz", "obs/TLSE00FRA_R_20220010000_01H_30S_MO.rnx.gz", 120},
        {"nav/ESBC00DNK_R_20201770000_01D_MN.rnx.gz", "obs/ESBC00DNK_R_20201770000_01D_30S_MO.rnx.gz", 2880},
    };
    for (const auto& [orbits, observations, epochs] : rows) {
        const std::filesystem::path folder(data);
        const ToolRun run = runTool({"sky", folder / orbits, "--tracked", folder / observations, "--json"});
        ASSERT_EQ(run.status, 0) << run.err;
        const auto report = nlohmann::json::parse(run.out);
        EXPECT_EQ(report["epochs"], epochs) << observations;
        EXPECT_EQ(report["agrees"], true) << report["belowHorizon"];
        EXPECT_EQ(report["withoutOrbit"].size(), 0U) << report["withoutOrbit"];
        for (const char* const system : {"GPS", "GLONASS", "Galileo"}) {
            EXPECT_GT(report["systems"][system]["share"], 0.99) << observations << " " << system;
        }
    }
}

}  // namespace
}  // namespace halvex::test
