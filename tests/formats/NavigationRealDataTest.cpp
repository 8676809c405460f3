#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <string>
#include <tuple>
#include <vector>

#include "formats/rinex/NavigationReader.h"
#include "formats/rinex/SatelliteName.h"

namespace halvex::rinex {
namespace {

using Result = NavigationReader::Result;
class NavigationRealData : public testing::Test {
protected:
    void SetUp() override {
        const char* const data = std::getenv("HALVEX_DATA");
        if (data == nullptr) GTEST_SKIP() << "HALVEX_DATA is not set: no real data to read";
        m_data = data;
    }

    /// Reads the whole file, giving each record to `take`; its errors without the file's name.
    template <class Take>
    std::vector<std::string> read(const std::string& name, Take take) {
        NavigationReader reader;
        NavigationRecord record;
        std::vector<std::string> errors;
        const auto keepError = [&] { errors.push_back(reader.error().text().substr(m_data.string().size() + 1)); };
        if (!reader.open(m_data / name)) keepError();
        for (auto result = reader.next(record); result != Result::end; result = reader.next(record)) {
            result == Result::error ? keepError() : take(reader, record);
        }
        EXPECT_TRUE(reader.skipped().empty());
        return errors;
    }

    std::filesystem::path m_data;
};

/// Records by system and, in version 4, by the number of their kind.
TEST_F(NavigationRealData, RecordsOfEverySystemAndMessage) {
    const std::vector<std::pair<std::string, std::string>> files{
        {"nav/BRDC00IGS_R_20220010000_01D_MN.rnx.gz", "C 1056, E 5675, G 422, J 120, R 1104, S 10375, "},
        {"nav/ESBC00DNK_R_20201770000_01D_MN.rnx.gz", "C 357, E 1602, G 257, J 15, R 510, S 2130, "},
        {"nav/SEPT2650.21P", "E 253, G 49, J 19, "},
        {"nav/JDPR00IND_R_20241460600_01H_30S_MN.rnx", "C 37, E 96, G 22, I 13, J 8, R 26, "},
        {"nav/brdc0910.09n.gz", "G 424, "},
        {"nav/brdc0910.09g.gz", "R 912, "},
        {"odd/spare_filled_nav3.rnx", "E 2, G 4, R 1, "},
        {"nav/BRD400DLR_S_20220010000_01D_MN.rnx.gz",
         "C12 96, C13 1, C14 11, C16 10, C5 894, C6 175, C7 649, C8 651, C9 472, E12 2, E15 3, E4 5701, G0 423, G1 "
         "315, "
         "G12 9, G13 3, G14 4, I10 153, I12 4, I13 1, I14 2, J0 121, J1 205, J12 4, J13 75, J14 276, J2 199, R12 2, "
         "R3 1106, S11 8577, "}};
    for (const auto& [name, want] : files) {
        std::map<std::string, int> counts;
        const auto errors = read(name, [&counts](const NavigationReader& reader, const NavigationRecord&) {
            const std::string kind = std::to_string(static_cast<int>(reader.kind()));
            ++counts[satelliteName(reader.satellite())[0] + (reader.header().version < 4.0 ? "" : kind)];
        });
        std::string told;
        for (const auto& [kind, count] : counts) told += kind + ' ' + std::to_string(count) + ", ";
        EXPECT_EQ(errors, std::vector<std::string>()) << name;
        EXPECT_EQ(told, want) << name;
    }
}

/// Two merged files of one day, one of each version: what both have of GPS is the same but for when it was sent.
TEST_F(NavigationRealData, TheTwoVersionsAgree) {
    using Gps = CALN::CALX_SAT_EPHEMERIS;
    std::map<std::tuple<int, double, int>, Gps> first;
    std::vector<std::pair<int, double>> differing;
    int compared = 0;
    read("nav/BRDC00IGS_R_20220010000_01D_MN.rnx.gz", [&](const auto&, const NavigationRecord& record) {
        if (const auto* gps = std::get_if<Gps>(&record)) first[{gps->satId, gps->toe, gps->iodc}] = *gps;
    });
    read("nav/BRD400DLR_S_20220010000_01D_MN.rnx.gz", [&](const auto&, const NavigationRecord& record) {
        const auto* gps = std::get_if<Gps>(&record);
        if (gps == nullptr || gps->messageType != CALN::eCALGPSMESSAGE_LNAV) return;
        const auto found = first.find({gps->satId, gps->toe, gps->iodc});
        if (found == first.end()) return;
        ++compared;
        found->second.transmissionTime = gps->transmissionTime;
        if (found->second != *gps) differing.emplace_back(gps->satId, gps->toe);
    });
    EXPECT_GT(compared, 400);
    // Printed with fewer digits (G02, G11), an accuracy with more (G03), and a copy with a receiver's bit error (G07).
    EXPECT_EQ(differing,
              (std::vector<std::pair<int, double>>{{2, 518400.0}, {3, 576000.0}, {7, 568800.0}, {11, 518400.0}}));
}

TEST_F(NavigationRealData, OddFiles) {
    const std::string tooLong = "1: a header line has 80 columns; this one goes on behind them";
    const std::vector<std::pair<std::string, std::string>> files{
        {"galileo3.15n", "29: E12: columns 62 to 80: \" . 000000000000D+00\" is no number"},
        {"test_input_rinex2_nav_BadHeader.99n", tooLong},
        {"test_input_rinex2_nav_InvalidLineLength.99n", tooLong},
        {"test_input_rinex3_nav_BadHeader.15n",
         "1: RINEX VERSION / TYPE: version 3.33 is not supported; 2.00 to 2.12, 3.00 to 3.05 and 4.0x are"}};
    for (const auto& [name, error] : files) {
        EXPECT_EQ(read("odd/" + name, [](const auto&, const auto&) {}), std::vector{"odd/" + name + ':' + error});
    }
}

}  // namespace
}  // namespace halvex::rinex
