#include <fmt/format.h>
#include <gtest/gtest.h>

#include <charconv>
#include <cmath>

#include "formats/rinex/EpochBuilder.h"
#include "formats/rinex/SatelliteName.h"
#include "formats/rtcm3/BitReader.h"
#include "formats/rtcm3/StreamReader.h"
#include "tests/formats/Gzip.h"
#include "tests/formats/RtcmFrames.h"

namespace halvex::rtcm3 {
namespace {

using test::Bits;
using test::inputOf;
using test::Msm;

constexpr double kMillisecond = 299792.458;  // of light [m]
const SMjdTime kLatest(2300, 0.0);
const SMjdTime kWeek2010(2010, 302400.0);

/// The example of a frame that the standard itself prints: 1005 of station 2003.
const std::string kPublished(
    "\xD3\x00\x13\x3E\xD7\xD3\x02\x02\x98\x0E\xDE\xEF\x34\xB4\xBD\x62\xAC\x09\x41\x98\x6F\x33\x36\x0B\x98", 25);

StreamReader readerOf(const std::string& bytes, const SMjdTime& time = kWeek2010) {
    StreamReader reader(kLatest);
    if (time.IsSet()) reader.setTime(time);
    reader.open(inputOf(bytes));
    return reader;
}

/// Epochs and ephemerides as one line each; values to the millimetre and the thousandth.
std::string story(StreamReader& reader) {
    std::string told;
    rinex::ObservationEpoch epoch;
    for (auto result = reader.next(epoch); result != StreamReader::Result::end; result = reader.next(epoch)) {
        if (result == StreamReader::Result::ephemeris) {
            const SMjdTime& at = reader.ephemeris().referenceTime;
            told += fmt::format("{} {}:{}\n", rinex::satelliteName(reader.ephemeris().satellite), at.GetGpsWeek(),
                                at.GetGpsSeconds());
            continue;
        }
        told += fmt::format("{}:{}", epoch.time.GetGpsWeek(), epoch.time.GetGpsSeconds());
        for (const auto& satellite : epoch.satellites) {
            told += ' ' + rinex::satelliteName(satellite.id);
            for (std::size_t i = 0; i < satellite.count; ++i) {
                const rinex::ObservedValue& value = epoch.valuesOf(satellite)[i];
                if (!value.present) continue;
                told += fmt::format(" {}={:.3f}", reader.header().codes[satellite.id.system][i].text(), value.value);
                if (value.lossOfLock != 0) told += fmt::format("!{}", value.lossOfLock);
            }
        }
        told += '\n';
    }
    return told;
}
std::string story(const std::string& bytes, const SMjdTime& time = kWeek2010) {
    StreamReader reader = readerOf(bytes, time);
    return story(reader);
}

TEST(Rtcm3Bits, SignsAndTheEnd) {
    const std::array<unsigned char, 2> two{0x9F, 0xFF};  // 100 11111 | 1111 1111
    BitReader in(two);
    EXPECT_TRUE(in.signedBits(3) == -4 && in.signMagnitude(4) == -7 && in.signedBits(9) == -1 && in.ok());
    EXPECT_TRUE(in.bits(1) == 0 && !in.ok());
    EXPECT_EQ(BitReader(two).signMagnitude(3), 0);
}

TEST(Rtcm3Frames, FoundWhereverTheyAre) {
    const std::string broken = kPublished.substr(0, 24) + '\x99';
    const std::string inside = "\xD3" + std::string(1, '\0') + "\x30" + kPublished + std::string(60, 'x');
    const std::tuple<const char*, std::string, unsigned, unsigned, unsigned> rows[] = {
        {"alone", kPublished, 1, 0, 0},
        {"behind text", "ICY 200 OK\r\n\r\n" + kPublished, 1, 14, 0},
        {"wrong check sum", broken + kPublished, 1, 25, 1},
        {"inside of a bad frame", inside, 1, 63, 1},
        {"reserved bits", "\xD3\x80" + kPublished, 1, 2, 0},
        {"a length that the input does not have", "\xD3\x03\xFF" + kPublished, 1, 3, 0},
        {"a preamble at the end", kPublished + "\xD3", 1, 1, 0},
        {"longest", test::frameOf(std::string(1023, 'y')) + kPublished, 2, 0, 0},
        {"packed", test::gzip(kPublished + kPublished), 2, 0, 0},
        {"across blocks", std::string(65530, '\xD3') + kPublished, 1, 65530, 0},
    };
    for (const auto& [what, bytes, frames, unframed, badChecks] : rows) {
        FrameReader reader;
        reader.open(inputOf(bytes));
        while (reader.next()) {
        }
        EXPECT_EQ(std::tuple(reader.frames(), reader.unframedBytes(), reader.badChecks()),
                  std::tuple(frames, unframed, badChecks))
            << what;
    }
    for (std::size_t size = 0; size < kPublished.size(); ++size) {
        FrameReader reader;
        reader.open(inputOf(kPublished.substr(0, size)));
        EXPECT_FALSE(reader.next()) << size;
        EXPECT_EQ(reader.unframedBytes(), size);
    }
    ByteInput text = inputOf("     3.05           OBSERVATION DATA"), stream = inputOf("\r\n" + kPublished);
    EXPECT_FALSE(isStream(text));
    EXPECT_TRUE(isStream(stream));
    EXPECT_EQ(stream.peek(99), "\r\n" + kPublished);
}

TEST(Rtcm3Station, PublishedPositionAndNames) {
    Bits names{{1033, 12}, {2003, 12}};
    for (const std::string text : {"ANT  NONE", "", "17", "RX", "1.2", "\xC3z"}) {  // "": the set-up, 0
        names.add(static_cast<std::int64_t>(text.size()), 8);
        for (const char c : text) names.add(static_cast<unsigned char>(c), 8);
    }
    StreamReader reader = readerOf(kPublished + names.frame() + Msm{.station = 2003}.frame());
    story(reader);
    const rinex::ObservationHeader& header = reader.header();
    ASSERT_TRUE(header.position);
    const auto& [x, y, z] = *header.position;
    EXPECT_LT(std::hypot(x - 1114104.5999, y + 4850729.7108, z - 3975521.4643), 1e-6);
    EXPECT_EQ((std::vector{header.antennaType, header.antennaNumber, header.receiverType, header.receiverVersion,
                           header.receiverNumber, header.markerNumber}),
              (std::vector<std::string>{"ANT  NONE", "17", "RX", "1.2", " z", "2003"}));
}

TEST(Rtcm3Msm, ValuesInUnitsOfFiles) {
    // 70.5 ms; a code of 2^10 steps of 2^-29 ms is 0.572 m, a phase of -2^12 steps of 2^-31 ms -0.572 m.
    const auto want = [](int codeExponent, int phaseExponent) {
        constexpr double kWavelength = 299792458.0 / 1575.42e6;
        return fmt::format("2010:1 G05 C1C={:.3f} L1C={:.3f}",
                           70.5 * kMillisecond + std::ldexp(kMillisecond, codeExponent),
                           (70.5 * kMillisecond - std::ldexp(kMillisecond, phaseExponent)) / kWavelength);
    };
    EXPECT_EQ(story(Msm{.code = 1024, .phase = -4096, .rate = -5000}.frame()),
              want(10 - 29, 12 - 31) + " D1C=-522.876 S1C=45.000\n");  // of -99.5 m/s
    EXPECT_EQ(story(Msm{.number = 1074, .code = 1024, .phase = -4096, .lock = 6, .cno = 45}.frame()),
              want(10 - 24, 12 - 29) + " S1C=45.000\n");  // coarser steps, no rate
    const Msm without{.code = -(1 << 19), .phase = -(1 << 23), .rate = -(1 << 14)};
    EXPECT_EQ(story(without.frame()), "2010:1 G05 S1C=45.000\n");
    const Msm nowhere{.wholeRange = 255, .roughRate = -(1 << 13), .code = 1024, .phase = -4096, .cno = 0};
    EXPECT_EQ(story(nowhere.frame()), "2010:1 G05\n");
}

TEST(Rtcm3Msm, SystemsSignalsAndTimes) {
    const auto first = [](unsigned number, unsigned satellite, unsigned signal, std::int64_t time) {
        const Msm msm{.number = number,
                      .time = time,
                      .satellites = std::uint64_t{1} << (64 - satellite),
                      .signals = std::uint32_t{1} << (32 - signal)};
        const std::string told = story(msm.frame());
        return told.substr(0, told.find('='));
    };
    constexpr std::int64_t kDayShift = 1 << 27;
    EXPECT_EQ(first(1077, 32, 24, 604799999), "2010:604799.999 G32 C5X");
    EXPECT_EQ(first(1087, 24, 9, 3 * kDayShift + 10800000), "2010:259218 R24 C2P");  // midnight UTC, 18 s on
    EXPECT_EQ(first(1087, 1, 2, 0), "2010:594018 R01 C1C");                          // 21 h UTC of the day before
    EXPECT_EQ(first(1087, 1, 2, 7 * kDayShift + 10800000), "2010:259218 R01 C1C");   // no day: the nearest
    EXPECT_EQ(first(1097, 36, 20, 5), "2010:0.005 E36 C8X");
    EXPECT_EQ(first(1107, 1, 2, 0), "2010:0 S20 C1C");
    EXPECT_EQ(first(1117, 10, 10, 0), "2010:0 J10 C6L");
    EXPECT_EQ(first(1127, 63, 25, 604799000), "2010:13 C63 C7D");
    EXPECT_EQ(first(1127, 6, 2, (1 << 30) - 14000), "2010:0 C06 C2I");
    EXPECT_EQ(first(1137, 14, 22, 0), "2010:0 I14 C5A");
    EXPECT_EQ(first(1077, 33, 2, 0), "2010:0\n");  // no such satellite, signal, time
    EXPECT_EQ(first(1077, 5, 1, 0), "2010:0\n");
    EXPECT_EQ(first(1077, 5, 2, 604800000), "");
}

TEST(Rtcm3Msm, SignalsOfTheMask) {
    std::string all;
    for (const char letter : {'G', 'R', 'E', 'S', 'C', 'J', 'I'}) {
        all += letter;
        for (unsigned id = 0; id <= 33; ++id) {
            const Signal signal = signalOfMask(systemOfLetter(letter)->code, id);
            if (signal.band != 0) all += fmt::format(" {}:{}{}", id, signal.band, signal.attribute);
        }
        all += '\n';
    }
    EXPECT_EQ(all,
              "G 2:1C 3:1P 4:1W 8:2C 9:2P 10:2W 15:2S 16:2L 17:2X 22:5I 23:5Q 24:5X 30:1S 31:1L 32:1X\n"
              "R 2:1C 3:1P 8:2C 9:2P\n"
              "E 2:1C 3:1A 4:1B 5:1X 6:1Z 8:6C 9:6A 10:6B 11:6X 12:6Z 14:7I 15:7Q 16:7X 18:8I 19:8Q 20:8X 22:5I 23:5Q "
              "24:5X\n"
              "S 2:1C 22:5I 23:5Q 24:5X\n"
              "C 2:2I 3:2Q 4:2X 8:6I 9:6Q 10:6X 14:7I 15:7Q 16:7X 22:5D 23:5P 24:5X 25:7D 30:1D 31:1P 32:1X\n"
              "J 2:1C 9:6S 10:6L 11:6X 15:2S 16:2L 17:2X 22:5I 23:5Q 24:5X 30:1S 31:1L 32:1X\n"
              "I 8:9A 22:5A\n");
}

TEST(Rtcm3Msm, DamagedOnesAreRefused) {
    Msm msm{.satellites = 0xFFULL << 40U, .signals = 0xFFU << 20U};
    const std::string whole = msm.bits().message();
    ObservationMessage message;
    const auto reads = [&](const std::string& bytes) {
        const std::vector<unsigned char> copy(bytes.begin(), bytes.end());
        return readMsm({copy, 1077, 0, 0}, message);
    };
    EXPECT_TRUE(reads(whole));
    for (std::size_t size = 0; size < whole.size(); ++size) EXPECT_FALSE(reads(whole.substr(0, size))) << size;
    msm.satellites |= 1;  // 72 cells
    EXPECT_FALSE(reads(msm.bits().message()));
    StreamReader reader = readerOf(msm.frame());
    EXPECT_EQ(story(reader), "");
    EXPECT_EQ(reader.losses().badMessages, 1U);
}

TEST(Rtcm3Stream, EpochsAreAssembled) {
    const auto at = [](unsigned number, std::int64_t time, bool more, unsigned station = 7) {
        Msm msm{number, station, time, more};
        msm.wholeRange = 255;  // none, so that a line has few values
        msm.roughRate = -(1 << 13);
        return msm.frame();
    };
    EXPECT_EQ(story(at(1077, 604799000, true) + at(1097, 604799000, false) + at(1077, 0, true) + at(1097, 1000, true) +
                    at(1077, 1000, true, 8) + at(1077, 2000, true, 8)),
              "2010:604799 G05 S1C=45.000 E05 S1C=45.000\n2011:0 G05 S1C=45.000\n2011:1 E05 S1C=45.000\n"
              "2011:1 G05 S1C=45.000\n2011:2 G05 S1C=45.000\n");
    StreamReader one = readerOf(at(1077, 0, true) + at(1077, 0, true, 8) + at(1097, 0, false));
    one.keepToFirstStation();
    EXPECT_EQ(story(one), "2010:0 G05 S1C=45.000 E05 S1C=45.000\n");
    EXPECT_EQ(one.losses().otherStations, 1U);
    StreamReader undated = readerOf(at(1077, 0, false), SMjdTime());
    EXPECT_EQ(story(undated), "");
    EXPECT_EQ(undated.losses().undatedMessages, 1U);
    const std::string schedule = Bits{{1013, 12}, {7, 12}, {58317, 16}, {100, 17}, {0, 5}, {18, 8}}.frame();
    EXPECT_EQ(story(schedule + at(1077, 86400000, false), SMjdTime()), "2010:86400 G05 S1C=45.000\n");
}

TEST(Rtcm3Stream, LockTimesAndHalfCycles) {
    const auto told = [](unsigned number, std::int64_t lock1, std::int64_t lock2, std::int64_t seconds) {
        const Msm one{.number = number, .time = 0, .lock = lock1};
        const Msm two{.number = number, .time = seconds * 1000, .lock = lock2, .half = 1};
        const std::string text = story(one.frame() + two.frame());
        const std::size_t mark = text.find('!');
        return mark == std::string::npos ? '-' : text[mark + 1];
    };
    // Indicator 224 says at least 2048 ms of lock and less than 2112.
    EXPECT_EQ((std::array{told(1077, 200, 201, 1), told(1077, 200, 199, 1), told(1077, 63, 224, 2),
                          told(1077, 63, 224, 3), told(1077, 704, 704, 3000)}),
              (std::array{'2', '3', '2', '3', '2'}));
    EXPECT_EQ((std::array{told(1074, 6, 6, 1), told(1074, 6, 5, 1), told(1074, 4, 5, 2)}), (std::array{'2', '3', '3'}));
    std::string bounds;
    for (const LockTime& lock : {lockTimeMsm(1), lockTimeMsm(15), lockTimeExtended(95), lockTimeExtended(704),
                                 lockTimeObservation(24), lockTimeObservation(126), lockTimeObservation(127)}) {
        bounds += fmt::format("{} {}, ", lock.atLeast, lock.below);
    }
    EXPECT_EQ(bounds, "32 64, 524288 0, 126 128, 67108864 0, 24000 26000, 936000 937000, 937000 0, ");
}

TEST(Rtcm3Stream, LegacyObservationsAndTheirPhases) {
    const auto gps = [](std::int64_t time, std::int64_t phase1) {
        return Bits{{1004, 12},   {7, 12}, {time, 30}, {0, 1},   {1, 5}, {0, 4},    {5, 6},           {0, 1}, {100, 24},
                    {phase1, 20}, {10, 7}, {70, 8},    {180, 8}, {2, 2}, {-50, 14}, {-(1 << 19), 20}, {0, 7}, {0, 8}}
            .frame();
    };
    const double range = 70 * kMillisecond + 2.0;
    const double wavelength = 299792458.0 / 1575.42e6;
    // The second phase is 1500 cycles nearer to the range than the first, and goes on as the first did.
    const std::int64_t far = 285469;  // 142.7345 m, 750.08 cycles
    const std::int64_t stepped = far - 570881;
    const auto line = [&](int second) {
        return fmt::format("2010:{} G05 C1C={:.3f} L1C={:.3f} S1C=45.000 C2W={:.3f}\n", second, range,
                           (range + far * 0.0005) / wavelength, range - 1.0);
    };
    const std::string text = story(gps(1000, far) + gps(2000, stepped));
    EXPECT_EQ(text.substr(0, line(1).size()), line(1));
    const std::size_t second = text.find("L1C=", line(1).size());
    double phase = 0.0;
    std::from_chars(text.data() + second + 4, text.data() + text.size(), phase);
    EXPECT_NEAR(phase, (range + far * 0.0005) / wavelength, 0.002);

    const auto glonass = [](bool more) {
        return Bits{{1012, 12}, {7, 12}, {10800000, 27}, {more, 1}, {1, 5}, {0, 4},  {24, 6}, {1, 1}, {9, 5}, {100, 25},
                    {200, 20},  {10, 7}, {34, 7},        {180, 8},  {3, 2}, {0, 14}, {0, 20}, {0, 7}, {0, 8}}
            .frame();
    };
    const double far2 = 34 * 599584.916 + 2.0;
    EXPECT_EQ(story(glonass(false)), fmt::format("2010:259218 R24 C1P={:.3f} L1P={:.3f} S1P=45.000\n", far2,
                                                 (far2 + 0.1) / (299792458.0 / (1602e6 + 2 * 562500))));
    EXPECT_EQ(story(glonass(true)), "");  // the day is left to the GPS message that follows
}

Bits gpsEphemeris(unsigned satellite, unsigned week, unsigned toe) {
    Bits bits{{1019, 12}, {satellite, 6}, {week, 10}, {1, 4}, {1, 2}, {-8, 14}, {0x34, 8}, {toe / 16, 16}};
    bits.add(-1, 8).add(-2, 16).add(-3, 22).add(0x134, 10).add(-32, 16).add(16, 16).add(-(1 << 30), 32).add(5, 16);
    bits.add(1 << 27, 32).add(-5, 16).add(std::int64_t{5153} << 19, 32).add(toe / 16, 16).add(6, 16).add(1 << 29, 32);
    bits.add(-6, 16).add(3 << 28, 32).add(64, 16).add(-(1 << 29), 32).add(-100, 24).add(-7, 8).add(0, 6);
    return bits.add(1, 1).add(1, 1);
}

TEST(Rtcm3Ephemerides, ElementsAndWeeks) {
    StreamReader reader = readerOf(gpsEphemeris(5, 988, 7200 + 16).frame(), SMjdTime());
    EXPECT_EQ(story(reader), "G05 2012:7216\n");
    const auto& r = std::get<CALN::CALX_SAT_EPHEMERIS>(reader.ephemeris().record);
    constexpr double kPi = 3.1415926535898;
    EXPECT_EQ(std::tuple(+r.satId, +r.source, r.ura, r.iodc, r.fitIntervalFlag, r.l2pDataFlag, r.sqrtA, r.e, r.crs),
              std::tuple(5, 2, 2.8, 0x134, 1, 1, 5153.0, 0x1p-6, -1.0));
    EXPECT_EQ(std::tuple(r.af0, r.af1, r.af2, r.tgd, r.cuc, r.cus, r.cic, r.cis, r.crc),
              std::tuple(-3 * 0x1p-31, -2 * 0x1p-43, -0x1p-55, -7 * 0x1p-31, 5 * 0x1p-29, -5 * 0x1p-29, 6 * 0x1p-29,
                         -6 * 0x1p-29, 2.0));
    EXPECT_EQ(
        std::tuple(r.m0, r.omega0, r.i0, r.omega, r.deltaN, r.omegaDot, r.idot),
        std::tuple(-kPi / 2, kPi / 4, kPi * 3 / 8, -kPi / 4, kPi * 0x1p-39, kPi * -100 * 0x1p-43, kPi * -0x1p-40));

    // Sent in week 2010 for the first hours of 2011, and dated by the observations beside it.
    const Msm msm{.time = 604000000, .wholeRange = 255};
    EXPECT_TRUE(story(msm.frame() + gpsEphemeris(5, 986, 0).frame()).ends_with("\nG05 2011:0\n"));
    EXPECT_EQ(story(gpsEphemeris(5, 986, 0).frame() + msm.frame(), SMjdTime()), "G05 2010:0\n");  // in doubt: no date
    EXPECT_EQ(story(gpsEphemeris(33, 986, 0).frame()), "");

    const std::string whole = gpsEphemeris(5, 988, 16).message();
    for (std::size_t size = 0; size < whole.size(); ++size) {
        StreamReader cut = readerOf(test::frameOf(whole.substr(0, size)));
        EXPECT_EQ(story(cut), "") << size;
        EXPECT_EQ(cut.losses().badMessages, size < 2 ? 0U : 1U);
    }
}

TEST(Rtcm3Ephemerides, GlonassBySignAndMagnitude) {
    const auto glonass = [](unsigned fourYears, unsigned day) {
        Bits bits{{1020, 12}, {26, 6}, {2, 5}, {1, 1}, {1, 1}, {3, 2}, {10 << 7 | 15 << 1 | 1, 12},
                  {0, 1},     {1, 1},  {41, 7}};
        for (int axis = 0; axis < 3; ++axis) bits.add(1 << 23 | 1 << 20, 24).add(1 << 26 | 5 << 11, 27).add(17, 5);
        bits.add(1, 1).add(1 << 10 | 3, 11).add(3, 2).add(0, 1).add(1 << 21 | 9, 22).add(16 | 2, 5).add(4, 5).add(1, 1);
        bits.add(4, 4).add(day, 11).add(1, 2).add(1, 1).add(0, 43).add(fourYears, 5).add(0, 22).add(0, 1).add(0, 7);
        return bits.frame();
    };
    // 17 July 2018 is day 929 from 2016 on: 10:15 in Moscow.
    StreamReader reader = readerOf(glonass(6, 929), SMjdTime());
    EXPECT_EQ(story(reader), "R26 2010:198918\n");
    const auto& r = std::get<CALN::CALX_SAT_EPHEMERIS_GLONASS>(reader.ephemeris().record);
    EXPECT_EQ(std::tuple(r.velocity[0], r.position[1], r.acceleration[2], r.gammaN, r.tauN, r.deltaTauN),
              std::tuple(-1000.0, -5000.0, -1000 * 0x1p-30, -3 * 0x1p-40, -9 * 0x1p-30, -2 * 0x1p-30));
    EXPECT_EQ(std::tuple(+r.frequencyNumber, +r.tb, r.frameTime, r.ageOfData, r.controlFlags, r.healthFlags, r.health),
              std::tuple(-5, 41, 36930U, 4, 0x7FU, 3U, 0U));
    EXPECT_EQ(story(glonass(2, 929)), "R26 2010:285318\n");  // the interval of years ago
}

}  // namespace
}  // namespace halvex::rtcm3
