#include <gtest/gtest.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <map>

#include "formats/rtcm3/StreamReader.h"
#include "halvex/platform/pio/Rtcm3.h"
#include "tests/formats/NetworkNumbers.h"

namespace halvex::rtcm3 {
namespace {

class Rtcm3RealData : public testing::Test {
protected:
    void SetUp() override {
        if (std::getenv("HALVEX_DATA") == nullptr) GTEST_SKIP() << "HALVEX_DATA is not set: no real data to read";
        m_folder = std::getenv("HALVEX_DATA") + std::string("/rtcm/");
    }
    std::string m_folder;
};

/// Frames by message number, found without the reader.
std::map<unsigned, std::uint64_t> scan(const std::string& name) {
    std::ifstream in(name, std::ios::binary);
    const std::vector<char> text(std::istreambuf_iterator<char>(in), {});
    const std::vector<unsigned char> bytes(text.begin(), text.end());
    std::map<unsigned, std::uint64_t> counts;
    for (std::size_t i = 0; i + 6 <= bytes.size();) {
        const std::size_t length = (bytes[i + 1] & 3U) * 256U + bytes[i + 2];
        const bool whole = bytes[i] == 0xD3 && i + length + 6 <= bytes.size();
        if (!whole || PIO::RTCM3::ComputeCRC24({&bytes[i], length + 6}) != 0) {
            ++i;
            continue;
        }
        ++counts[bytes[i + 3] * 16U + bytes[i + 4] / 16U];
        i += length + 6;
    }
    return counts;
}

TEST_F(Rtcm3RealData, EveryMessageIsFound) {
    using Counts = std::map<unsigned, std::uint64_t>;
    const std::pair<const char*, Counts> rows[] = {
        {"clk.rtcm", {{1060, 53}, {1059, 53}, {1066, 53}, {1065, 53}, {1243, 53}, {1261, 53}, {1264, 4}}},
        {"separate_clk_orbit.rtcm", {{1057, 78}, {1058, 77}, {1063, 77}, {1064, 77}, {1240, 77}, {1241, 77}}},
        {"pygpsdata-NTRIP-4076.log", {{4076, 11}}},
        {"pygpsdata-1240-1264.log", {{1240, 1}, {1241, 1}, {1242, 2}, {1243, 2}, {1260, 2}, {1261, 2}, {1264, 1}}},
        {"week-rollover-STR17.rtcm3", {{1077, 1126}, {1127, 1126}, {1019, 113}, {1020, 38}, {1045, 113}, {1006, 38}}},
        {"week-rollover-STR24.rtcm3", {{1074, 1133}, {1124, 1134}, {1019, 314}, {1042, 44}, {1044, 3}, {1046, 28}}},
        {"eph.rtcm", {{1019, 512}, {1020, 400}, {1042, 208}, {1044, 48}, {1045, 256}, {1046, 288}}},
        {"1012_first.rtcm", {{1004, 148}, {1012, 148}, {1030, 5}, {1031, 5}, {1032, 15}, {1006, 15}}},
        {"switch-legacy-msm-legacy-msm.rtcm", {{4094, 27}, {1004, 253}, {1077, 48}}},
        {"pygpsdata-NTRIP-USCL00CHL0.log", {{1001, 1}, {1013, 1}, {1029, 1}, {1137, 1}, {1230, 1}}},
        {"SYNTHETIC-network-messages.rtcm", {{1014, 1}, {1017, 2}, {1039, 2}}},
    };
    for (const auto& [file, some] : rows) {
        SCOPED_TRACE(file);
        const Counts want = scan(m_folder + file);
        for (const auto& [number, count] : some) EXPECT_EQ(want.at(number), count) << number;
        FrameReader reader;
        ASSERT_TRUE(reader.open(m_folder + file));
        while (reader.next()) {
        }
        Counts found;
        for (const auto& [type, count] : reader.counts()) found[type.number] += count.count;
        EXPECT_EQ(found, want);
        EXPECT_EQ(reader.badChecks(), 0U);
    }
}

/// What a station measured: code and phase in metres, by second and satellite.
struct Measured {
    double code = 0.0, phase = 0.0;
    bool lost = false;
};
std::map<std::pair<SMjdTime, CALN::SCalSatID>, Measured> measuredOnL1(const std::string& name) {
    std::map<std::pair<SMjdTime, CALN::SCalSatID>, Measured> all;
    const SMjdTime latest(2400, 0.0);
    StreamReader reader(latest);
    reader.setPreview(lookAhead(name, latest));
    if (!reader.open(name)) return all;
    rinex::ObservationEpoch epoch;
    for (auto result = reader.next(epoch); result != StreamReader::Result::end; result = reader.next(epoch)) {
        if (result != StreamReader::Result::epoch) continue;
        for (const auto& satellite : epoch.satellites) {
            const bool glonass = satellite.id.system == CALN::eCALSATSYSTEM_GLONASS;
            if (!glonass && satellite.id.system != CALN::eCALSATSYSTEM_GPS) continue;
            const auto& codes = reader.header().codes[satellite.id.system];
            const auto at = std::find(codes.begin(), codes.end(), rinex::ObservationCode{'C', '1', 'C'});
            if (at == codes.end()) continue;
            const auto* value = &epoch.valuesOf(satellite)[static_cast<std::size_t>(at - codes.begin())];
            const auto channel = reader.header().glonassChannels.find(satellite.id);
            const bool known = !glonass || channel != reader.header().glonassChannels.end();
            if (!known || !value[0].present || !value[1].present) continue;
            const double frequency = glonass ? 1602e6 + channel->second * 562500 : 1575.42e6;
            all[{epoch.time, satellite.id}] = {value[0].value, value[1].value * 299792458.0 / frequency,
                                               (value[1].lossOfLock & 1U) != 0};
        }
    }
    EXPECT_EQ(reader.losses().badMessages, 0U);
    return all;
}

TEST_F(Rtcm3RealData, TwoStationsSeventyMetresApartAgree) {
    // Differences of stations: code of satellites to one another, and code less phase of one satellite over time.
    constexpr double kTwiceTheDistance = 140.0;
    constexpr double kNoise = 12.0;
    const auto one = measuredOnL1(m_folder + "week-rollover-STR17.rtcm3");
    const auto other = measuredOnL1(m_folder + "week-rollover-STR24.rtcm3");
    ASSERT_FALSE(one.empty());
    EXPECT_EQ(one.begin()->first.first, SMjdTime(2009, 604218.0));  // the week turns over in between
    EXPECT_EQ(one.rbegin()->first.first, SMjdTime(2010, 543.0));
    SMjdTime time;
    double firstOfEpoch = 0.0;
    std::map<CALN::SCalSatID, double> codeLessPhase;
    std::size_t compared = 0;
    for (const auto& [key, a] : one) {
        const auto found = other.find(key);
        if (found == other.end()) continue;
        const Measured& b = found->second;
        const double difference = a.code - b.code;
        if (std::exchange(time, key.first) != key.first) firstOfEpoch = difference;
        ASSERT_LT(std::fabs(difference - firstOfEpoch), kTwiceTheDistance + kNoise);
        const double ambiguity = difference - (a.phase - b.phase);
        const auto [known, isNew] = codeLessPhase.emplace(key.second, ambiguity);
        if (a.lost || b.lost || isNew) {
            known->second = ambiguity;
        } else {
            ASSERT_LT(std::fabs(ambiguity - known->second), kNoise) << +key.second.number;
        }
        ++compared;
    }
    EXPECT_GT(compared, 15000U);
}

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

TEST_F(Rtcm3RealData, EveryValueOfTheSyntheticFrames) {
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
    FrameReader frames;
    ASSERT_TRUE(frames.open(m_folder + "SYNTHETIC-network-messages.rtcm"));
    while (const auto frame = frames.next()) {
        NetworkMessage message;
        ASSERT_TRUE(readNetworkMessage(*frame, message));
        EXPECT_EQ(std::visit(test::NetworkNumbers(), message), want.at(at++)) << "frame " << at;
    }
    EXPECT_EQ(at, 23U);
}

}  // namespace
}  // namespace halvex::rtcm3
