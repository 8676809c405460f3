#include <algorithm>
#include <charconv>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>

#include "formats/rinex/SatelliteName.h"
#include "formats/rtcm3/Ssr.h"
#include "tests/formats/NetworkNumbers.h"
#include "tests/formats/RealData.h"

namespace halvex::rtcm3 {
namespace {

using Rtcm3RealData = test::RealData;
using Message = std::vector<unsigned char>;

/// Remainder of the frame's bits by the polynomial of CRC-24Q, 0 when its check is good.
unsigned remainderOf(const unsigned char* bytes, std::size_t count) {
    unsigned remainder = 0;
    for (std::size_t bit = 0; bit < count * 8; ++bit) {
        remainder ^= (bytes[bit / 8] >> (7 - bit % 8) & 1U) << 23;
        remainder = (remainder << 1) ^ ((remainder & 0x800000U) != 0 ? 0x1864CFBU : 0U);
    }
    return remainder & 0xFFFFFFU;
}

/// All messages of a stream, found without the reader.
std::vector<Message> scan(const std::string& name) {
    std::ifstream in(name, std::ios::binary);
    const std::vector<char> text(std::istreambuf_iterator<char>(in), {});
    const Message bytes(text.begin(), text.end());
    std::vector<Message> messages;
    for (std::size_t i = 0; i + 6 <= bytes.size();) {
        const std::size_t length = (bytes[i + 1] & 3U) * 256U + bytes[i + 2];
        const bool isWhole = bytes[i] == 0xD3 && i + length + 6 <= bytes.size();
        if (!isWhole || length < 2 || remainderOf(&bytes[i], length + 6) != 0) {
            ++i;
            continue;
        }
        const auto begin = bytes.begin() + static_cast<std::ptrdiff_t>(i + 3);
        messages.emplace_back(begin, begin + static_cast<std::ptrdiff_t>(length));
        i += length + 6;
    }
    return messages;
}

unsigned bits(const Message& message, std::size_t from, unsigned width) {
    unsigned value = 0;
    for (std::size_t i = from; i < from + width; ++i) value = value * 2 + (message.at(i / 8) >> (7 - i % 8)) % 2;
    return value;
}

TEST_F(Rtcm3RealData, EveryMessageIsFound) {
    for (const auto& file : std::filesystem::directory_iterator(path("rtcm"))) {
        if (file.path().extension() == ".txt") continue;
        SCOPED_TRACE(file.path());
        std::map<unsigned, std::uint64_t> want, found;
        for (const Message& message : scan(file.path())) ++want[bits(message, 0, 12)];
        FrameReader reader;
        ASSERT_TRUE(reader.open(file.path()));
        while (reader.next()) {
        }
        for (const auto& [type, count] : reader.counts()) found[type.number] += count.count;
        EXPECT_EQ(found, want);
        EXPECT_EQ(reader.badChecks(), 0U);
    }
}

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
using Counts = std::map<std::tuple<unsigned, unsigned, std::string>, std::uint64_t>;

/// Counts the entries of a message by number, sub-type and satellite. What is left of it has to be padding.
void countEntries(const Message& message, bool oldBeidou, Counts& counts) {
    const unsigned number = bits(message, 0, 12), subType = number == 4076 ? bits(message, 15, 8) : 0;
    if (number == 1264 || subType == 201) return;
    const auto* widths = std::find_if(std::begin(kWidths), std::end(kWidths), [=](const Widths& known) {
        return known.number == number && known.subType == subType;
    });
    ASSERT_NE(widths, std::end(kWidths)) << number << '.' << subType;
    std::size_t at = widths->head + widths->count;
    for (unsigned i = bits(message, widths->head, widths->count); i > 0; --i) {
        const unsigned satellite = bits(message, at, widths->satellite);
        at += widths->satellite;
        if (widths->bias != 0) at += bits(message, at, 5) * widths->bias;
        at += widths->rest + (oldBeidou && number == 1261 ? 16U : 0U);
        const char name[] = {widths->system, static_cast<char>('0' + satellite / 10),
                             static_cast<char>('0' + satellite % 10)};
        ++counts[{number, subType, std::string(name, sizeof name)}];
    }
    EXPECT_LT(message.size() * 8 - at, 8U) << number << '.' << subType;
}

TEST_F(Rtcm3RealData, EveryEntryOfTheCorrections) {
    const std::tuple<const char*, double, SMjdTime> rows[] = {
        {"clk.rtcm", 171940.0, SMjdTime(2005, 171700.0)},
        {"separate_clk_orbit.rtcm", 513555.0, SMjdTime(2050, 513500.0)},
        {"pygpsdata-1240-1264.log", 340200.0, SMjdTime(2250, 339000.0)},
        {"pygpsdata-NTRIP-4076.log", 311130.0, SMjdTime(2250, 170000.0)},
    };
    for (const auto& [file, last, reference] : rows) {
        SCOPED_TRACE(file);
        const std::string name = path(std::string("rtcm/") + file);
        Counts want, found;
        for (const Message& message : scan(name)) countEntries(message, name.ends_with("clk.rtcm"), want);
        FrameReader frames;
        ASSERT_TRUE(frames.open(name));
        SMjdTime latest;
        while (const auto frame = frames.next()) {
            SsrMessages read;
            ASSERT_TRUE(readSsr(*frame, reference, read)) << frame->number << " at byte " << frame->offset;
            EXPECT_LT(read.bitsLeft, 8U) << frame->number << '.' << frame->subType;
            EXPECT_EQ(read.unknownSatellites, 0U);
            std::vector<CALN::SCalSatID> satellites;
            read.messages.at(0)->getSatIDs(satellites);
            for (const auto& id : satellites) {
                if (id.number != 0) ++found[{frame->number, frame->subType, rinex::satelliteName(id)}];
            }
            for (const auto& message : read.messages) {
                // One stream tells GLONASS time without its leap seconds.
                if (message->system != CALN::eCALSATSYSTEM_GLONASS) latest = std::max(latest, message->epoch);
                // BeiDou's toe and issue of the ephemeris agree: hours, of which issues count 720 s.
                const auto* orbits = dynamic_cast<const CALN::SSROrbitCorrMsgT*>(message.get());
                if (orbits == nullptr || message->system != CALN::eCALSATSYSTEM_BEIDOU) continue;
                for (const auto& entry : orbits->entries) {
                    if (entry.ephemerisTime == 0) continue;
                    const double hour = 3600.0 * std::floor((message->epoch.GetGpsSeconds() - 14.0) / 3600.0);
                    EXPECT_EQ(entry.ephemerisTime * 8.0, std::fmod(hour, 8192.0));
                    EXPECT_EQ(entry.issueOfData, std::fmod(hour / 720.0, 240.0));
                }
            }
        }
        EXPECT_EQ(found, want);
        EXPECT_EQ(latest, SMjdTime(reference.GetGpsWeek(), last));
    }
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
    std::ifstream in(path("rtcm/SYNTHETIC-network-messages.txt"));
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
    ASSERT_TRUE(frames.open(path("rtcm/SYNTHETIC-network-messages.rtcm")));
    while (const auto frame = frames.next()) {
        NetworkMessage message;
        ASSERT_TRUE(readNetworkMessage(*frame, message));
        EXPECT_EQ(std::visit(test::NetworkNumbers(), message), want.at(at++)) << "frame " << at;
    }
    EXPECT_EQ(at, 23U);
}

}  // namespace
}  // namespace halvex::rtcm3
