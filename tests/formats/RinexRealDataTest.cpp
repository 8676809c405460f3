#include <gtest/gtest.h>

#include <array>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "formats/rinex/ObservationReader.h"
#include "tests/formats/IndependentRinex.h"

namespace halvex::rinex {
namespace {

namespace fs = std::filesystem;
using Result = ObservationReader::Result;

class RinexRealData : public testing::Test {
protected:
    void SetUp() override {
        const char* const data = std::getenv("HALVEX_DATA");
        if (data == nullptr) GTEST_SKIP() << "HALVEX_DATA is not set: no real data to read";
        m_data = data;
    }
    fs::path m_data;
};

/// Epochs, satellites, values, losses of lock, and a sum: order within a satellite differs between the two readers, but
/// whole eighths add up alike in any order.
using Totals = std::array<std::int64_t, 5>;

void add(double value, int lossOfLock, Totals& totals) {
    ++totals[2];
    if (lossOfLock != 0) ++totals[3];
    totals[4] += static_cast<std::int64_t>(value * 8.0) % 1000003;
}

Totals ofReader(const fs::path& file, std::vector<std::string>& errors) {
    Totals totals{};
    ObservationReader reader;
    ObservationEpoch epoch;
    if (!reader.open(file)) {
        errors.push_back(reader.error().text());
        return totals;
    }
    for (auto result = reader.next(epoch); result != Result::end; result = reader.next(epoch)) {
        if (result == Result::error) errors.push_back(reader.error().text());
        if (result != Result::epoch) continue;
        ++totals[0];
        totals[1] += std::ssize(epoch.satellites);
        for (const ObservedValue& value : epoch.values) {
            if (value.present) add(value.value, value.lossOfLock, totals);
        }
    }
    return totals;
}

bool ofIndependentReader(const fs::path& file, Totals& totals) {
    return test::readIndependently(file, [&totals](const test::PrintedEpoch& epoch) {
        ++totals[0];
        totals[1] += std::ssize(epoch.satellites);
        for (const auto& [satellite, values] : epoch.satellites) {
            for (const auto& [code, printed] : values) {
                const double value = printed.number();
                if (value != 0.0) add(value, printed.lossOfLock == ' ' ? 0 : printed.lossOfLock - '0', totals);
            }
        }
    });
}

TEST_F(RinexRealData, EveryObservationFileIsReadAsASecondReaderReadsIt) {
    std::vector<fs::path> files;
    for (const auto& entry : fs::recursive_directory_iterator(m_data / "obs")) {
        const std::string name = entry.path().filename();
        const bool observations = name.find("O.") != std::string::npos || name.ends_with("o");
        if (entry.is_regular_file() && observations) files.push_back(entry.path());
    }
    for (const char* odd : {"mixed211.05o", "IGEO_2025290_excerpt_event4.rnx",
                            "test_input_rinex2_obs_IncompleteHeader.06o", "sptu0150.16o", "osn31700.16o",
                            "AJAC3550.21O", "FAA100PYF_R_20161700100_15M_01S_MO", "blank.10o", "blank3.10o"}) {
        files.push_back(m_data / "odd" / odd);
    }
    ASSERT_GT(files.size(), 15U);
    for (const fs::path& file : files) {
        SCOPED_TRACE(file);

        std::vector<std::string> errors;
        Totals want{};
        ASSERT_TRUE(ofIndependentReader(file, want));
        const Totals got = ofReader(file, errors);
        EXPECT_EQ(got, want);
        EXPECT_EQ(errors, std::vector<std::string>());
    }
}

TEST_F(RinexRealData, AFaultCostsItsEpochAlone) {
    const fs::path file = m_data / "odd/test_input_rinex3_obs_BadLineSize.15o";
    std::vector<std::string> errors;
    EXPECT_EQ(ofReader(file, errors)[0], 36);
    EXPECT_EQ(errors, std::vector{file.string() + ":35: G05: column 115: signal strength \"z\" is not 0 to 9"});
}

}  // namespace
}  // namespace halvex::rinex
