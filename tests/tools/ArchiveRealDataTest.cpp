#include <gtest/gtest.h>

#include <cmath>

#include "tests/formats/IndependentRinex.h"
#include "tests/formats/RealData.h"
#include "tests/tools/Station.h"

namespace halvex::test {
namespace {

/// An epoch's time, "2024 07 08 00 00 01.0000000" or "05 3 24 ...", as numbers: the two sides print it differently.
std::vector<double> timeOf(const PrintedEpoch& epoch) {
    std::istringstream words(epoch.time);
    std::vector<double> numbers;
    for (double number = 0.0; words >> number;) numbers.push_back(number);
    if (!numbers.empty() && numbers[0] < 80) numbers[0] += 2000;
    if (numbers.size() > 5) numbers[5] = std::round(numbers[5] * 1000.0);
    return numbers;
}

/// The name under which a source has what a replayed file calls `code`.
std::string sourceType(const std::map<std::string, PrintedValue>& source, const std::string& code, char system) {
    if (source.count(code) != 0) return code;
    if (system == 'C' && code[1] == '2') {  // RINEX 3.02 calls it band 1
        const std::string older = {code[0], '1', code[2]};
        if (source.count(older) != 0) return older;
    }
    const bool precise = code[0] == 'C' && (code[2] == 'W' || code[2] == 'P') && (system == 'G' || system == 'R');
    return {precise ? 'P' : code[0], code[1]};
}

using ArchiveRealData = RealData;

/// What has been archived comes back to the last printed digit.
void compare(const std::string& source) {
    const TemporaryFolder folder;
    const ToolRun archived = runTool({"archive", source, "--out", folder.path("archive"), "--json"});
    ASSERT_EQ(archived.status, 0) << archived.err;
    const auto report = nlohmann::json::parse(archived.out);
    std::vector<std::string> replay = {"replay", "--rinex", folder.path("again.rnx")};
    for (const auto& set : report["sets"]) replay.push_back(set["set"]);
    const ToolRun replayed = runTool(replay);
    ASSERT_EQ(replayed.status, 0) << replayed.err;

    std::vector<PrintedEpoch> again;
    ASSERT_TRUE(
        readIndependently(folder.path("again.rnx"), [&](const PrintedEpoch& epoch) { again.push_back(epoch); }));
    std::size_t epochs = 0, values = 0, replayedValues = 0, roundedDoppler = 0;
    ASSERT_TRUE(readIndependently(source, [&](const PrintedEpoch& epoch) {
        if (epoch.flag == '6') return;
        ASSERT_LT(epochs, again.size());
        const PrintedEpoch& other = again[epochs++];
        ASSERT_EQ(timeOf(other), timeOf(epoch));
        ASSERT_EQ(other.satellites.size(), epoch.satellites.size()) << epoch.time;
        for (const auto& [name, printed] : epoch.satellites) {
            for (const auto& [type, value] : printed) values += value.thousandths != 0 ? 1U : 0U;
            const auto found = other.satellites.find(name);
            ASSERT_NE(found, other.satellites.end()) << epoch.time << " " << name;
            for (const auto& [code, value] : found->second) {
                ++replayedValues;
                const auto from = printed.find(sourceType(printed, code, name[0]));
                ASSERT_NE(from, printed.end()) << epoch.time << " " << name << " " << code;
                if (code[0] == 'L' && from->second.lost) {
                    ASSERT_TRUE(value.lost) << epoch.time << " " << name << " " << code;
                }
                const long long difference = std::llabs(value.thousandths - from->second.thousandths);
                if (code[0] == 'D' && difference == 1) {
                    ++roundedDoppler;
                } else {
                    ASSERT_EQ(difference, 0) << epoch.time << " " << name << " " << code;
                }
            }
        }
    }));
    EXPECT_EQ(epochs, again.size());

    // Nothing is dropped in silence: what did not come back has been counted.
    std::size_t lost = 0;
    for (const auto& input : report["inputs"]) {
        for (const auto& [code, count] : input["notInTheRecord"].items()) lost += count.get<std::size_t>();
        EXPECT_EQ(input["other"]["Doppler values rounded to a float"].get<std::size_t>(), roundedDoppler);
    }
    EXPECT_EQ(replayedValues + lost, values);
}

TEST_F(ArchiveRealData, ComesBackToTheLastPrintedDigit) {
    for (const char* file :
         {"obs/3034265G.21O.gz", "obs/SEPT265G.21O.gz", "obs/ESBC00DNK_R_20201770000_01D_30S_MO.rnx.gz",
          "obs/TLSE00FRA_R_20220010000_01H_30S_MO.rnx.gz", "obs/TLSE00FRA_R_20241900000_15M_01S_MO.rnx.gz",
          "obs/TLSG00FRA_R_20241900000_15M_01S_MO.rnx.gz", "obs/network_2021001/delf0010.21o",
          "obs/network_2021001/zegv0010.21o", "obs/network_2021001/wsra0010.21o", "obs/network_2021001/eijs0010.21o",
          "obs/rinex2_2005092/07590920.05o", "obs/rinex2_2005092/30400920.05o", "odd/AJAC3550.21O",
          "odd/FAA100PYF_R_20161700100_15M_01S_MO", "odd/IGEO_2025290_excerpt_event4.rnx", "odd/mixed211.05o",
          "odd/osn31700.16o", "odd/sptu0150.16o", "odd/test_input_rinex2_obs_IncompleteHeader.06o"}) {
        SCOPED_TRACE(file);
        compare(path(file));
    }
}

}  // namespace
}  // namespace halvex::test
