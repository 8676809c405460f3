#include <gtest/gtest.h>

#include <charconv>
#include <cmath>
#include <cstdlib>
#include <fstream>

#include "formats/rtcm3/Observations.h"
#include "formats/rtcm3/StationMessages.h"
#include "tests/formats/NetworkNumbers.h"

namespace halvex::rtcm3 {
namespace {

class NetworkMessagesRealData : public testing::Test {
protected:
    void SetUp() override {
        if (std::getenv("HALVEX_DATA") == nullptr) GTEST_SKIP() << "HALVEX_DATA is not set: no real data to read";
        m_folder = std::getenv("HALVEX_DATA") + std::string("/rtcm/");
    }
    /// Calls for every frame of a file.
    template <class Take>
    void eachFrame(const std::string& file, Take take) {
        FrameReader reader;
        ASSERT_TRUE(reader.open(m_folder + file));
        while (const auto frame = reader.next()) take(*frame);
    }
    std::string m_folder;
};

/// How many of a field's steps make one of the unit that its name in the list of values ends with.
double stepsOf(const std::string& name) {
    static const std::pair<const char*, double> kEnds[] = {
        {"_deg", 40000},      {"heigth_m", 1000},   {"phase_diff_m", 2000},    {"_ecef_x_m", 10000},
        {"_ecef_y_m", 10000}, {"_ecef_z_m", 10000}, {"resid_epoch_time_s", 1}, {"fkp_epoch_time_s", 1},
        {"epoch_time_s", 10}, {"_mm", 2},           {"s_oh_ppm", 10},          {"_ppm", 100}};
    for (const auto& [end, steps] : kEnds) {
        if (name.ends_with(end)) return steps;
    }
    return 1;
}

TEST_F(NetworkMessagesRealData, EveryValueOfTheSyntheticFrames) {
    // Lines "# frame 1: message 1014", "name: 1.5," or "name: Some(" with "1.5," below it.
    std::vector<std::vector<std::int64_t>> want;
    std::ifstream in(m_folder + "SYNTHETIC-network-messages.txt");
    std::string line, name;
    while (std::getline(in, line)) {
        constexpr std::string_view kMessage = ": message ";
        if (line.starts_with('#')) {
            want.emplace_back();
            name.clear();
            line.erase(0, line.find(kMessage) + kMessage.size());
        }
        line.erase(0, line.find_first_not_of(' '));
        if (const auto colon = line.find(": "); colon != std::string::npos) {
            name = line.substr(0, colon);
            line.erase(0, colon + 2);
        }
        double value = 0.0;
        if (std::from_chars(line.data(), line.data() + line.size(), value).ec != std::errc()) continue;
        if (name.starts_with("glo_") && name.ends_with("_epoch_time_s")) value = -value;
        want.back().push_back(std::llround(value * stepsOf(name)));
    }
    ASSERT_EQ(want.size(), 23U);
    std::size_t at = 0;
    eachFrame("SYNTHETIC-network-messages.rtcm", [&](const Frame& frame) {
        NetworkMessage message;
        ASSERT_TRUE(readNetworkMessage(frame, message));
        EXPECT_EQ(std::visit(test::NetworkNumbers(), message), want.at(at++)) << "frame " << at;
    });
    EXPECT_EQ(at, 23U);
}

TEST_F(NetworkMessagesRealData, ANetworkAsRecorded) {
    std::map<unsigned, int> counts;
    StationDescription station;
    eachFrame("1012_first.rtcm", [&](const Frame& frame) {
        static_cast<void>(readStationMessage(frame, station));
        NetworkMessage message;
        if (!isNetworkMessage(frame.number)) return;
        ASSERT_TRUE(readNetworkMessage(frame, message));
        ++counts[frame.number];
        if (const auto* residuals = std::get_if<NetworkResiduals>(&message)) {
            EXPECT_EQ(residuals->station, 55U);
            EXPECT_TRUE(residuals->referenceStations == 12 || residuals->referenceStations == 13);
            for (const ResidualsEntry& entry : residuals->satellites) {
                EXPECT_NE(satelliteOf(systemOfNetworkMessage(frame.number), entry.satId).number, 0);
                EXPECT_LT(entry.byDistance + entry.ionoByDistance, 50) << "half a ppm";
            }
        } else if (const auto* physical = std::get_if<PhysicalReference>(&message); physical && station.position) {
            EXPECT_EQ(physical->physicalStation, 55U);
            for (std::size_t i = 0; i < 3; ++i) {
                EXPECT_NEAR(static_cast<double>(physical->position[i]) / 10000.0, station.position->at(i), 1.0);
            }
        }
    });
    EXPECT_EQ(counts, (std::map<unsigned, int>{{1030, 5}, {1031, 5}, {1032, 15}}));
    EXPECT_TRUE(station.position && !station.receiverType.empty());

    eachFrame("pygpsdata-NTRIP-USCL00CHL0.log", [](const Frame& frame) {
        NetworkMessage message;
        if (!readNetworkMessage(frame, message)) return;
        const auto& text = std::get<PIO::RTCM3::UTF8MessageC>(message);
        EXPECT_EQ(std::tuple(text.day, text.secondsOfDay, std::string(text.text.data())),
                  std::tuple(60382, 59727U, "Unknown"));  // 13 March 2024, 16:35:27
    });
}

}  // namespace
}  // namespace halvex::rtcm3
