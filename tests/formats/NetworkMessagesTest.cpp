#include <gtest/gtest.h>

#include <algorithm>
#include <random>

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

/// A message with at least one satellite and the numbers that went into it: the lowest ones in round 0, the highest in
/// round 1, then any.
std::pair<std::string, NetworkNumbers::Numbers> make(const Layout& layout, std::size_t round, std::mt19937_64& random) {
    test::Bits bits{{layout.number, 12}};
    NetworkNumbers::Numbers numbers{layout.number};
    const auto add = [&](int width, std::int64_t least) {
        const std::int64_t span = (std::int64_t{1} << std::abs(width)) - least;
        const std::int64_t above[] = {0, span - 1, static_cast<std::int64_t>(random() >> 1U) % span};
        numbers.push_back((width < 0 ? -span / 2 : least) + above[std::min<std::size_t>(round, 2)]);
        bits.add(numbers.back(), static_cast<unsigned>(std::abs(width)));
    };
    const bool hasSatellites = !layout.satellite.empty();
    for (std::size_t i = 0; i < layout.head.size(); ++i) {
        add(layout.head[i], hasSatellites && i + 1 == layout.head.size() ? 1 : 0);
    }
    if (hasSatellites) {
        const std::int64_t count = numbers.back();
        numbers.pop_back();
        for (std::int64_t i = 0; i < count; ++i) {
            for (const int width : layout.satellite) add(width, 0);
        }
    }
    return {bits.message(), numbers};
}

TEST(NetworkMessages, EveryFieldComesBackAndWhatIsCutOffIsRefused) {
    std::mt19937_64 random(1014);
    for (const Layout& layout : kLayouts) {
        SCOPED_TRACE(layout.number);
        for (std::size_t round = 0; round < 4; ++round) {
            auto [whole, want] = make(layout, round, random);
            const unsigned number = layout.number;
            const std::size_t epoch = number == 1031 ? 1 : number == 1035 ? 2 : 3;
            if (number == 1031 || number == 1035 || number >= 1037) want[epoch] = -want[epoch];

            const NetworkMessage before = PhysicalReference{1, 2, 3, {4, 5, 6}};
            NetworkMessage message = before;
            for (std::size_t size = 0; size < whole.size(); ++size) {
                ASSERT_FALSE(read(whole.substr(0, size), message)) << size;
                ASSERT_EQ(message, before) << size;
            }
            ASSERT_TRUE(isNetworkMessage(number) && read(whole, message));
            EXPECT_EQ(std::visit(NetworkNumbers(), message), want);
        }
    }
    NetworkMessage message;
    for (const unsigned number : {1013U, 1018U, 1033U, 1036U, 1040U}) {
        EXPECT_FALSE(isNetworkMessage(number) ||
                     read(test::Bits{{number, 12}}.message() + std::string(400, 'x'), message));
    }
}

TEST(NetworkMessages, TimesAreCompleted) {
    const SMjdTime reference(2010, 604000.0);  // 18 s ahead of UTC
    EXPECT_EQ(instantOf({EpochScale::gpsWeek, 100}, reference), SMjdTime(2011, 0.1));
    EXPECT_EQ(instantOf({EpochScale::glonassDay, 10800000}, reference), SMjdTime(2011, 18.0));
    EXPECT_FALSE(instantOf({EpochScale::gpsWeek, 604800000}, reference));
    EXPECT_FALSE(instantOf({EpochScale::glonassDay, 86401000}, reference));
    EXPECT_FALSE(instantOf({EpochScale::gpsWeek, 100}, SMjdTime()));
}

}  // namespace
}  // namespace halvex::rtcm3
