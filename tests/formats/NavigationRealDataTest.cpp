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
using Counts = std::map<char, int>;

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

TEST_F(NavigationRealData, RecordsOfEverySystem) {
    const std::map<std::string, Counts> files{
        {"nav/BRDC00IGS_R_20220010000_01D_MN.rnx.gz",
         {{'G', 422}, {'R', 1104}, {'E', 5675}, {'C', 1056}, {'J', 120}, {'S', 10375}}},
        {"nav/ESBC00DNK_R_20201770000_01D_MN.rnx.gz",
         {{'G', 257}, {'R', 510}, {'E', 1602}, {'C', 357}, {'J', 15}, {'S', 2130}}},
        {"nav/SEPT2650.21P", {{'G', 49}, {'E', 253}, {'J', 19}}},
        {"nav/JDPR00IND_R_20241460600_01H_30S_MN.rnx",
         {{'G', 22}, {'R', 26}, {'E', 96}, {'C', 37}, {'J', 8}, {'I', 13}}},
        {"nav/brdc0910.09n.gz", {{'G', 424}}},
        {"nav/brdc0910.09g.gz", {{'R', 912}}},
        {"odd/spare_filled_nav3.rnx", {{'G', 4}, {'R', 1}, {'E', 2}}},
    };
    for (const auto& [name, want] : files) {
        Counts counts;
        const auto errors = read(name, [&counts](const NavigationReader& reader, const NavigationRecord&) {
            ++counts[satelliteName(reader.satellite()).front()];
        });
        EXPECT_EQ(errors, std::vector<std::string>()) << name;
        EXPECT_EQ(counts, want) << name;
    }
}

TEST_F(NavigationRealData, MessagesOfVersion4) {
    std::map<std::pair<char, MessageKind>, int> counts;
    const auto errors = read("nav/BRD400DLR_S_20220010000_01D_MN.rnx.gz", [&](const auto& reader, const auto&) {
        ++counts[{satelliteName(reader.satellite()).front(), reader.kind()}];
    });
    EXPECT_EQ(errors, std::vector<std::string>());
    using enum MessageKind;
    const std::vector<std::tuple<char, MessageKind, int>> ephemerides{
        {'G', lnav, 423},        {'G', cnav, 315},     {'R', glonass, 1106},    {'E', galileo, 2869 + 2832},
        {'C', beidouD1, 894},    {'C', beidouD2, 175}, {'C', beidouCnav1, 649}, {'C', beidouCnav2, 651},
        {'C', beidouCnav3, 472}, {'J', lnav, 121},     {'J', cnav, 205},        {'J', cnav2, 199},
        {'I', navic, 153},       {'S', sbas, 8577},    {'C', timeOffset, 96},   {'J', earthOrientation, 75},
        {'J', klobuchar, 276},   {'E', nequick, 3},    {'C', bdgim, 10}};
    for (const auto& [system, kind, count] : ephemerides) {
        EXPECT_EQ((counts[{system, kind}]), count) << system << static_cast<int>(kind);
    }
}

/// Two merged files of one day, one of each version: an orbit that both have is the same one.
TEST_F(NavigationRealData, TheTwoVersionsAgree) {
    std::map<std::tuple<int, int, double, double>, CALN::CALX_SAT_EPHEMERIS_COMMON> orbits;
    const auto visitOrbit = [](const NavigationRecord& record, auto take) {
        if (const auto* gps = std::get_if<CALN::CALX_SAT_EPHEMERIS>(&record)) {
            if (gps->messageType == CALN::eCALGPSMESSAGE_LNAV) take(gps->iodc, *gps);
        } else if (const auto* galileo = std::get_if<CALN::CALX_SAT_EPHEMERIS_GALILEO>(&record)) {
            if (galileo->navType == galileo->kINav) take(galileo->iodNav, *galileo);
        }
    };
    const auto keyOf = [](int issue, const auto& orbit) {
        return std::tuple(int{orbit.satId}, issue, orbit.toe, orbit.toc);
    };
    read("nav/BRDC00IGS_R_20220010000_01D_MN.rnx.gz", [&](const auto&, const NavigationRecord& record) {
        visitOrbit(record, [&](int issue, const auto& orbit) { orbits[keyOf(issue, orbit)] = orbit; });
    });
    int compared = 0;
    std::vector<std::pair<int, double>> differing;
    read("nav/BRD400DLR_S_20220010000_01D_MN.rnx.gz", [&](const auto&, const NavigationRecord& record) {
        visitOrbit(record, [&](int issue, const auto& orbit) {
            const auto found = orbits.find(keyOf(issue, orbit));
            if (found == orbits.end()) return;
            ++compared;
            const auto& other = found->second;
            const bool same = orbit.week == other.week && std::fabs(orbit.m0 - other.m0) < 2e-11 &&
                              std::fabs(orbit.sqrtA - other.sqrtA) < 1e-7 &&
                              std::fabs(orbit.omegaDot - other.omegaDot) < 1e-19 &&
                              std::fabs(orbit.af0 - other.af0) < 1e-14;
            if (!same) differing.emplace_back(orbit.satId, orbit.toe);
        });
    });
    EXPECT_GT(compared, 2000);
    // Of these the second file has one copy with a receiver's bit errors: a root of the axis 0.4 m^0.5 off, a bias.
    EXPECT_EQ(differing, (std::vector<std::pair<int, double>>{{7, 568800.0}, {68, 565800.0}}));
}

TEST_F(NavigationRealData, OddFiles) {
    int records = 0;
    const auto errorsOf = [&](const std::string& name) {
        return read("odd/" + name, [&records](const auto&, const auto&) { ++records; });
    };
    using Errors = std::vector<std::string>;
    EXPECT_EQ(errorsOf("galileo3.15n"),
              Errors{"odd/galileo3.15n:29: E12: columns 62 to 80: \" . 000000000000D+00\" is no number"});
    EXPECT_EQ(records, 2);
    const std::string tooLong = ":1: a header line has 80 columns; this one goes on behind them";
    for (const std::string name :
         {"test_input_rinex2_nav_BadHeader.99n", "test_input_rinex2_nav_InvalidLineLength.99n"}) {
        EXPECT_EQ(errorsOf(name), Errors{"odd/" + name + tooLong});
    }
    EXPECT_EQ(errorsOf("test_input_rinex3_nav_BadHeader.15n"),
              Errors{"odd/test_input_rinex3_nav_BadHeader.15n:1: RINEX VERSION / TYPE: version 3.33 is not supported; "
                     "2.00 to 2.12, 3.00 to 3.05 and 4.0x are"});
    EXPECT_EQ(errorsOf("test_input_rinex2_nav_UnknownHeaderLabel.99n"), Errors());
}

}  // namespace
}  // namespace halvex::rinex
