#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <map>
#include <tuple>

#include "formats/rinex/SatelliteName.h"
#include "formats/rtcm3/Ssr.h"
#include "tests/formats/SsrEntries.h"

namespace halvex::rtcm3 {
namespace {

/// Widths as they are published: ahead of the count of satellites, the count, a satellite, the rest of its entry, and
/// of each bias, whose count are the first five bits of the rest.
struct Widths {
    unsigned number, subType;
    char system;
    unsigned head, count, satellite, rest, bias;
};
constexpr Widths kWidths[] = {
    {1057, 0, 'G', 62, 6, 6, 129, 0},  {1058, 0, 'G', 61, 6, 6, 70, 0},    {1059, 0, 'G', 61, 6, 6, 5, 19},
    {1060, 0, 'G', 62, 6, 6, 199, 0},  {1063, 0, 'R', 59, 6, 5, 129, 0},   {1064, 0, 'R', 58, 6, 5, 70, 0},
    {1065, 0, 'R', 58, 6, 5, 5, 19},   {1066, 0, 'R', 59, 6, 5, 199, 0},   {1240, 0, 'E', 62, 6, 6, 131, 0},
    {1241, 0, 'E', 61, 6, 6, 70, 0},   {1242, 0, 'E', 61, 6, 6, 5, 19},    {1243, 0, 'E', 62, 6, 6, 201, 0},
    {1258, 0, 'C', 62, 6, 6, 139, 0},  {1259, 0, 'C', 61, 6, 6, 70, 0},    {1260, 0, 'C', 61, 6, 6, 5, 19},
    {1261, 0, 'C', 62, 6, 6, 209, 0},  {1265, 0, 'G', 63, 6, 6, 22, 32},   {1267, 0, 'E', 63, 6, 6, 22, 32},
    {1270, 0, 'C', 63, 6, 6, 22, 32},  {4076, 23, 'G', 73, 6, 6, 199, 0},  {4076, 25, 'G', 72, 6, 6, 5, 19},
    {4076, 43, 'R', 73, 6, 6, 199, 0}, {4076, 45, 'R', 72, 6, 6, 5, 19},   {4076, 63, 'E', 73, 6, 6, 199, 0},
    {4076, 65, 'E', 72, 6, 6, 5, 19},  {4076, 103, 'C', 73, 6, 6, 199, 0},
};

unsigned bits(const Frame& frame, std::size_t from, unsigned width) {
    unsigned value = 0;
    for (std::size_t i = from; i < from + width; ++i) value = value * 2 + (frame.message[i / 8] >> (7 - i % 8)) % 2;
    return value;
}

using Counts = std::map<std::tuple<unsigned, unsigned, std::string>, std::uint64_t>;

/// Counts the entries of a message by number, sub-type and satellite. What is left of it has to be padding.
void scan(const Frame& frame, bool oldBeidou, Counts& counts) {
    for (const Widths& widths : kWidths) {
        if (widths.number != frame.number || widths.subType != frame.subType) continue;
        const unsigned rest = widths.rest + (oldBeidou && frame.number == 1261 ? 16U : 0U);
        std::size_t at = widths.head + widths.count;
        for (unsigned i = bits(frame, widths.head, widths.count); i > 0; --i) {
            const unsigned satellite = bits(frame, at, widths.satellite);
            at += widths.satellite;
            if (widths.bias != 0) at += bits(frame, at, 5) * widths.bias;
            at += rest;
            const std::string name{widths.system, static_cast<char>('0' + satellite / 10),
                                   static_cast<char>('0' + satellite % 10)};
            ++counts[{frame.number, frame.subType, name}];
        }
        EXPECT_LT(frame.message.size() * 8 - at, 8U) << frame.number << '.' << frame.subType;
        return;
    }
    EXPECT_TRUE(frame.number == 1264 || frame.subType == 201) << frame.number << '.' << frame.subType;
}

/// Largest values of what was read [m]; electron content [TECU].
struct Extremes {
    double orbit = 0.0, clock = 0.0, codeBias = 0.0, content = 0.0;

    void note(const CALN::SSRCorrMsgBaseT& message) {
        const auto grow = [](double& extreme, double value) { extreme = std::max(extreme, std::fabs(value)); };
        test::eachOf<CALN::SSROrbitCorrMsgT>(message, [&](const auto& entry) {
            grow(orbit, entry.radial * 1e-4);
            grow(orbit, entry.crossTrack * 4e-4);
        });
        test::eachOf<CALN::SSRClockCorrMsgT>(message, [&](const auto& entry) { grow(clock, entry.c0 * 1e-4); });
        test::eachOf<CALN::SSRCodeBiasMsgT>(message, [&](const auto& entry) {
            for (const auto& bias : entry.biases) grow(codeBias, bias.bias * 0.01);
        });
        test::eachOf<CALN::QTVertIonoCorrMsgT>(message,
                                               [&](const auto& entry) { grow(content, entry.cosines.at(0) * 0.005); });
    }
};

TEST(SsrRealData, EveryEntryIsFoundAndPlausible) {
    const char* const folder = std::getenv("HALVEX_DATA");
    if (folder == nullptr) GTEST_SKIP() << "HALVEX_DATA is not set: no real data to read";
    const std::tuple<const char*, double, std::uint64_t, SMjdTime> rows[] = {
        {"clk.rtcm", 171940.0, 53U * 11U + 4U, SMjdTime(2005, 171700.0)},
        {"separate_clk_orbit.rtcm", 513555.0, 78U + 5U * 77U, SMjdTime(2050, 513500.0)},
        {"pygpsdata-1240-1264.log", 340200.0, 13, SMjdTime(2250, 339000.0)},
        {"pygpsdata-NTRIP-4076.log", 311130.0, 11, SMjdTime(2250, 170000.0)},
    };
    for (const auto& [file, last, messages, reference] : rows) {
        SCOPED_TRACE(file);
        const std::string name(file);
        FrameReader frames;
        ASSERT_TRUE(frames.open(folder + ("/rtcm/" + name)));
        Counts want, found;
        Extremes extremes;
        std::uint64_t taken = 0;
        SMjdTime latest;
        while (const auto frame = frames.next()) {
            scan(*frame, name == "clk.rtcm", want);
            SsrMessages read;
            ASSERT_TRUE(readSsr(*frame, reference, read)) << frame->number << " at byte " << frame->offset;
            EXPECT_LT(read.bitsLeft, 8U) << frame->number << '.' << frame->subType;
            EXPECT_EQ(read.unknownSatellites, 0U);
            ++taken;
            std::vector<CALN::SCalSatID> satellites;
            read.messages.at(0)->getSatIDs(satellites);
            for (const auto& id : satellites) {
                if (id.number != 0) ++found[{frame->number, frame->subType, rinex::satelliteName(id)}];
            }
            for (const auto& message : read.messages) {
                extremes.note(*message);
                // One stream tells GLONASS time without its leap seconds.
                if (message->system != CALN::eCALSATSYSTEM_GLONASS) latest = std::max(latest, message->epoch);
            }
        }
        EXPECT_EQ(found, want);
        EXPECT_GE(taken, messages);
        EXPECT_EQ(latest, SMjdTime(reference.GetGpsWeek(), last));
        // One of the streams corrects ephemerides that were hours old.
        EXPECT_LT(extremes.orbit, name == "separate_clk_orbit.rtcm" ? 50.0 : 16.0);
        EXPECT_LT(extremes.clock, 100.0);
        EXPECT_LT(extremes.codeBias, 50.0);
        EXPECT_TRUE(extremes.content == 0.0 || (extremes.content > 3.0 && extremes.content < 100.0));
    }
}

}  // namespace
}  // namespace halvex::rtcm3
