#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>

#include "tests/tools/Station.h"

namespace halvex::test {
namespace {

using nlohmann::literals::operator""_json_pointer;

/// What broadcast orbits are good for [m]: the tool's medians against precise ones.
TEST(OrbitsRealData, AgreeWithPreciseOnes) {
    const char* const data = std::getenv("HALVEX_DATA");
    if (data == nullptr) GTEST_SKIP() << "HALVEX_DATA is not set: no real orbits to compare";
    struct Row {
        const char* navigation;
        const char* precise;
        std::map<std::string, double> medians;
    };
    const Row rows[] = {
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
    const std::filesystem::path folder(data);
    for (const Row& row : rows) {
        const ToolRun run = runTool({"orbits", folder / row.navigation, "--compare", folder / row.precise, "--json"});
        ASSERT_EQ(run.status, 0) << run.err;
        const auto systems = nlohmann::json::parse(run.out)["systems"];
        for (const auto& [system, median] : row.medians) {
            EXPECT_LE(systems[system]["median"], median) << row.navigation << " " << system;
            // The second generation of BeiDou is what reaches the wider bound.
            EXPECT_LE(systems[system]["p95"], (system == "BeiDou" ? 2.6 : 2.1) * median)
                << row.navigation << " " << system;
        }
        EXPECT_LE(systems.value("/BeiDou geostationary/worst"_json_pointer, 0.0), 20.0) << row.navigation;
    }
}

}  // namespace
}  // namespace halvex::test
