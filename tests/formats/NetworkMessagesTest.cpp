#include <gtest/gtest.h>

#include <random>

#include "halvex/platform/z9/Rtcm3NetworkProduct.h"
#include "tests/formats/NetworkNumbers.h"
#include "tests/formats/RtcmFrames.h"

namespace halvex::rtcm3 {
namespace {

using namespace CALN;
using test::NetworkNumbers;

bool read(const std::string& bytes, NetworkMessage& message) {
    const std::vector<unsigned char> copy(bytes.begin(), bytes.end());
    Frame frame;
    frame.message = copy;
    frame.number = copy.size() < 2 ? 0 : copy[0] * 16U + copy[1] / 16U;
    return readNetworkMessage(frame, message);
}

/// Widths of a message's fields behind its number, the last before the satellites being that of their count, and of one
/// satellite's. Negative: in two's complement.
struct Layout {
    unsigned number;
    std::vector<int> head;
    std::vector<int> satellite;
};
const Layout kLayouts[] = {
    {1014, {8, 4, 5, 12, 12, -20, -21, -23}, {}},
    {1015, {8, 4, 23, 1, 12, 12, 4}, {6, 2, 3, -17}},
    {1016, {8, 4, 23, 1, 12, 12, 4}, {6, 2, 3, -17, 8}},
    {1017, {8, 4, 23, 1, 12, 12, 4}, {6, 2, 3, -17, 8, -17}},
    {1029, {12, 16, 17, 7, 8}, {8}},
    {1030, {20, 12, 7, 5}, {6, 8, 9, 6, 10, 10}},
    {1031, {17, 12, 7, 5}, {6, 8, 9, 6, 10, 10}},
    {1032, {12, 12, 6, -38, -38, -38}, {}},
    {1034, {12, 20, 5}, {6, 8, -12, -12, -14, -14}},
    {1035, {12, 17, 5}, {6, 8, -12, -12, -14, -14}},
    {1037, {8, 4, 20, 1, 12, 12, 4}, {6, 2, 3, -17}},
    {1038, {8, 4, 20, 1, 12, 12, 4}, {6, 2, 3, -17, 8}},
    {1039, {8, 4, 20, 1, 12, 12, 4}, {6, 2, 3, -17, 8, -17}},
};

TEST(NetworkMessages, EveryFieldComesBackAndWhatIsCutOffIsRefused) {
    enum class Fill { lowest, highest, random };
    std::mt19937_64 random(1014);
    for (const auto& [number, head, satellite] : kLayouts) {
        for (const Fill fill : {Fill::lowest, Fill::highest, Fill::random, Fill::random}) {
            test::Bits bits{{number, 12}};
            NetworkNumbers::Numbers want{number};
            const auto add = [&](int width) {
                const std::int64_t span = std::int64_t{1} << std::abs(width);
                const std::int64_t low = width < 0 ? -span / 2 : 0;
                const std::int64_t part = static_cast<std::int64_t>(random() % static_cast<std::uint64_t>(span));
                const std::int64_t value = low + (fill == Fill::random ? part : fill == Fill::lowest ? 0 : span - 1);
                bits.add(value, static_cast<unsigned>(std::abs(width)));
                want.push_back(value);
            };
            for (const int width : head) add(width);
            if (!satellite.empty()) {
                const std::int64_t count = want.back();
                want.pop_back();
                for (std::int64_t i = 0; i < count; ++i) {
                    for (const int width : satellite) add(width);
                }
            }
            const bool glonass = number == 1031 || number == 1035 || number >= 1037;
            const std::size_t epoch = number == 1031 ? 1 : number == 1035 ? 2 : 3;
            if (glonass) want[epoch] = -want[epoch];

            const NetworkMessage before = PhysicalReference{1, 2, 3, {4, 5, 6}};
            NetworkMessage message = before;
            const std::string whole = bits.message();
            for (std::size_t size = 0; size < whole.size(); ++size) {
                ASSERT_FALSE(read(whole.substr(0, size), message)) << number << ' ' << size;
                ASSERT_EQ(message, before) << number << ' ' << size;
            }
            ASSERT_TRUE(isNetworkMessage(number) && read(whole, message)) << number;
            EXPECT_EQ(std::visit(NetworkNumbers(), message), want);
        }
    }
    NetworkMessage message;
    for (const unsigned number : {1013U, 1018U, 1033U, 1036U, 1040U}) {
        EXPECT_FALSE(read(test::Bits{{number, 12}}.message() + std::string(400, '\xFF'), message)) << number;
        EXPECT_FALSE(isNetworkMessage(number));
    }
}

TEST(NetworkMessages, WhatTheNetworkProductSendsComesBack) {
    std::mt19937 random(1039);
    const auto below = [&](unsigned end) { return static_cast<unsigned>(random() % end); };
    const auto byte = [&](unsigned end) { return static_cast<std::uint8_t>(below(end)); };
    const auto station = [&] { return static_cast<std::uint16_t>(below(4096)); };
    const auto difference = [&] {  // in one case of eight the lowest number, which stands for none and is not sent
        return below(8) == 0 ? kNoDifference : static_cast<std::int32_t>(below(131071)) - 65535;
    };
    for (int round = 0; round < 200; ++round) {
        MsgGNSS17T sent;
        std::vector<IonoGeoMsgT> want, got;
        for (const bool glonass : {false, true}) {
            IonoGeoMsgT& message = glonass ? sent.glonass : sent.gps;
            sent.SetValidMsgType(glonass ? MsgGNSS17T::kGlonass : MsgGNSS17T::kGps);
            MsgHeaderT& head = message.header;
            head.messageNumber = glonass ? 1039 : 1017;
            head.networkId = byte(256);
            head.subnetwork = byte(16);
            head.epoch = below(1U << 20);
            head.masterStation = station();
            head.auxiliaryStation = station();
            want.push_back({head, {}, {}});
            for (unsigned i = below(16); i > 0; --i) {
                const auto system = glonass ? eCALSATSYSTEM_GLONASS : eCALSATSYSTEM_GPS;
                message.entries.push_back(
                    {byte(64), system, byte(4), byte(8), difference(), difference(), byte(256), 0});
                const IonoGeoEntryT& entry = message.entries.back();
                if (entry.geometric == kNoDifference || entry.ionospheric == kNoDifference) continue;
                want.back().entries.push_back(entry);
                ++want.back().header.satelliteCount;
            }
        }
        Z9::CRtcm3NetworkProduct product([&](std::span<const unsigned char> frame) {
            NetworkMessage message;
            EXPECT_TRUE(read({frame.begin() + 3, frame.end() - 3}, message));
            got.push_back(std::get<IonoGeoMsgT>(message));
            return true;
        });
        ASSERT_EQ(product.addAuxiliaryCombinedIonoGeoCorrection(sent), 0);
        ASSERT_EQ(got, want) << round;
    }
}

TEST(NetworkMessages, TimesAreCompleted) {
    const SMjdTime reference(2010, 604000.0);  // 18 s ahead of UTC
    const std::tuple<NetworkEpoch, SMjdTime, SMjdTime> rows[] = {
        {{EpochScale::gpsWeek, 604799900}, reference, SMjdTime(2010, 604799.9)},
        {{EpochScale::gpsWeek, 100}, reference, SMjdTime(2011, 0.1)},
        {{EpochScale::gpsWeek, 604800000}, reference, SMjdTime()},
        {{EpochScale::glonassDay, 10800000}, reference, SMjdTime(2011, 18.0)},
        {{EpochScale::glonassDay, 86401000}, reference, SMjdTime()},
        {{EpochScale::gpsWeek, 100}, SMjdTime(), SMjdTime()}};
    for (const auto& [epoch, near, want] : rows) {
        EXPECT_EQ(instantOf(epoch, near).value_or(SMjdTime()), want) << epoch.milliseconds;
    }
}

}  // namespace
}  // namespace halvex::rtcm3
