#include "formats/rinex/EpochBuilder.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <optional>
#include <tuple>

#include "tests/formats/RinexText.h"

namespace halvex::rinex {
namespace {

using namespace test;

std::string field(double value, const std::string& digits = "  ") {
    return fmt::format("{:14.3f}{}", value, digits);
}

std::string header3(const std::string& types, const std::string& more = "", const std::string& number = "3.05") {
    return version(number) + record(types, "SYS / # / OBS TYPES") + more + endOfHeader();
}

/// An epoch of RINEX 3 at a second of 2021-01-01 00:00 (GPS week 2138, day 5).
std::string epoch3(double second, const std::vector<std::string>& satellites, char flag = '0',
                   const std::string& offset = "") {
    std::string text = fmt::format("> 2021 01 01 00 00{:11.7f}  {}{:3}{}\n", second, flag, satellites.size(), offset);
    for (const std::string& satellite : satellites) text += satellite + "\n";
    return text;
}
constexpr std::uint32_t kFriday = 5 * 86400000;

/// The station epochs of a file, with its builder.
struct Built {
    explicit Built(const std::string& text) {
        ObservationReader reader = readerOf(text);
        builder.emplace(reader.header());
        ObservationEpoch epoch;
        std::uint32_t changes = 0;
        for (auto result = reader.next(epoch); result != ObservationReader::Result::end; result = reader.next(epoch)) {
            if (result == ObservationReader::Result::error) ADD_FAILURE() << reader.error().text();
            if (changes != reader.headerChanges()) builder->setHeader(reader.header());
            changes = reader.headerChanges();
            CHalvexStationObservation station;
            if (result == ObservationReader::Result::epoch && builder->build(epoch, 7, station)) {
                stations.push_back(station);
            }
        }
    }
    std::optional<EpochBuilder> builder;
    std::vector<CHalvexStationObservation> stations;
};

/// What stands in a satellite's slots, the third decimals left out: "C20 P21 L22 D23 S24 | ...".
std::string slots(const CHalvexObservation& observation) {
    std::string text;
    for (unsigned slot = 0; slot < CHalvexObservation::kSlots; ++slot) {
        double value = 0.0;
        float small = 0.0F;
        if (slot > 0) text += '|';
        if (observation.getPseudorangeC(slot, value)) text += fmt::format("C{}", value);
        if (observation.getPseudorangeP(slot, value)) text += fmt::format("P{}", value);
        if (observation.getPhase(slot, value, true)) text += fmt::format("L{}", value);
        if (observation.getDoppler(slot, small)) text += fmt::format("D{}", small);
        if (observation.getCNO(slot, small)) text += fmt::format("S{}", small);
    }
    return text;
}

/// Phase flags of a slot as letters, Loss of lock, Parity known, half Wavelength, Anti-spoofing; its lock count.
std::string flags(const CHalvexObservation& observation, unsigned slot) {
    std::string text;
    bool on = false;
    if (observation.getLossOfLock(slot, on) && on) text += 'L';
    if (observation.getParityKnown(slot, on) && on) text += 'P';
    if (observation.getWaveLength(slot, on) && on) text += 'W';
    if (observation.getASInEffect(slot, on) && on) text += 'A';
    unsigned short lock = 0;
    return observation.getContLockCount(slot, lock) ? fmt::format("{} {}", text, lock) : text + " none";
}

TEST(EpochBuilder, WhichCodeGoesToWhichSlot) {
    // What the slots hold of columns with 1, 2, 3 ... in their order, and how many values have no slot.
    const std::tuple<const char*, const char*, std::string, const char*, unsigned> rows[] = {
        {"GPS, all three", "3.05", "G    9 C1C C1W L1C D1C S1C C2W L2W C5Q L5Q", "C1P2L3D4S5|P6L7|C8L9", 0},
        {"GPS L2: P(Y) before L2C", "3.05", "G    4 C2X L2X C2W L2W", "|C1P3L4|", 1},
        {"GPS L1: C/A before P(Y)", "3.05", "G    4 L1W S1W L1C S1C", "L3S4||", 2},
        {"companions of another signal", "3.05", "G    3 L1C D1W S1W", "L1D2S3||", 0},
        {"no phase at all", "3.05", "G    2 D2X S2X", "|D1S2|", 0},
        {"GLONASS", "3.05", "R    5 C1P L1P C2C L2C L3Q", "P1L2|C3L4|L5", 0},
        {"GLONASS G1a has no slot", "3.05", "R    2 C4A C1C", "C2||", 1},
        {"Galileo E5b between E1 and E5a", "3.05", "E    6 C1X C5X C7X C8X C6X L7X", "C1|C3L6|C2", 2},
        {"SBAS", "3.05", "S    3 C1C L5I C5I", "C1||C3L2", 0},
        {"BeiDou B1I, B2I, B3I", "3.05", "C    3 C2I C7I C6I", "C1|C2|C3", 0},
        {"BeiDou B1C has no slot", "3.03", "C    2 C1X C7I", "|C2|", 1},
        {"BeiDou B1I by its name in 3.02", "3.02", "C    3 C1I L1I C7I", "C1L2|C3|", 0},
        {"QZSS", "3.05", "J    3 C1C L2X C5X", "C1|L2|C3", 0},
        {"NavIC", "3.05", "I    2 C5A C9A", "||C1", 1},
    };
    for (const auto& [what, version, types, want, lost] : rows) {
        std::string line = types.substr(0, 1) + "05";
        for (int i = 1; i <= std::stoi(types.substr(1, 5)); ++i) line += field(i);
        const Built built(header3(types, "", version) + epoch3(0.0, {line}));
        EXPECT_EQ(slots(built.stations.at(0).observations()[0]), want) << what;
        EXPECT_EQ(built.builder->losses().total(), lost) << what;
    }
}

TEST(EpochBuilder, LossesNameTheCodeAndOutliveAChangeOfColumns) {
    const Built built(header3("G    3 L1C L1W C5A") + epoch3(0.0, {"G05" + field(1) + field(2) + field(3)}) +
                      "> 2021 01 01 00 00  0.0000000  4  1\n" + record("G    2 L1W L1C", "SYS / # / OBS TYPES") +
                      epoch3(1.0, {"G05" + field(2) + field(1)}));
    const decltype(LossCounts::values) losses = {{{CALN::eCALSATSYSTEM_GPS, {'L', '1', 'W'}}, 2},
                                                 {{CALN::eCALSATSYSTEM_GPS, {'C', '5', 'A'}}, 1}};
    EXPECT_EQ(built.builder->losses().values, losses);
    EXPECT_EQ(slots(built.stations[1].observations()[0]), "L1||");
    EXPECT_EQ(flags(built.stations[1].observations()[0], 0), "P 100");  // the columns moved, the signal did not
}

/// Epochs 2 s apart, each with L1C and L1W of G05 and the epoch's flag.
TEST(EpochBuilder, LossOfLockAndLockCounts) {
    const std::string none = field(0.0);
    const std::string l1c = field(5.0);
    const std::tuple<const char*, std::string, char, const char*> steps[] = {
        {"first sight", l1c, '0', "P 0"},
        {"goes on", l1c, '0', "P 200"},
        {"indicator", field(5.0, "1 "), '0', "LP 0"},
        {"half-cycle ambiguity is no loss of lock", field(5.0, "2 "), '0', " 200"},
        {"both", field(5.0, "3 "), '0', "L 0"},
        {"a second signal appears", l1c + field(6.0), '0', "P 200"},
        {"the first one goes", none + field(6.0), '0', "LP 0"},
        {"it goes on", none + field(6.0), '0', "P 200"},
        {"the preferred one is back", l1c + field(6.0), '0', "LP 0"},
        {"power failure", l1c + field(6.0), '1', "LP 0"},
        {"no phase", none, '0', " 0"},
        {"a missed epoch begins the count anew", l1c, '0', "P 0"},
    };
    std::string text = header3("G    2 L1C L1W");
    double second = 0.0;
    for (const auto& [what, line, flag, want] : steps) text += epoch3(second += 2.0, {"G05" + line}, flag);
    const Built built(text);
    ASSERT_EQ(built.stations.size(), std::size(steps));
    auto station = built.stations.begin();
    for (const auto& [what, line, flag, want] : steps) {
        EXPECT_EQ(flags((station++)->observations()[0], 0), want) << what;
    }
    EXPECT_EQ(built.builder->losses().powerFailures, 1U);

    const Built high(header3("S    1 L1C") + epoch3(0.0, {"S44" + field(1)}) +
                     epoch3(2.0, {"S44" + field(2), "S58" + field(3)}));
    const auto& satellites = high.stations[1].observations();
    ASSERT_EQ(satellites.size(), 2U);
    EXPECT_EQ(flags(satellites[0], 0) + flags(satellites[1], 0), "P 200P 0") << "kept apart like any other";
}

TEST(EpochBuilder, OldIndicatorsMeanWavelengthFactorsAndAntiSpoofing) {
    // Indicator, flags of G05 on L1, of G06 on L2, whose factor is 2: opposite factor, anti-spoofing, all of it.
    const std::tuple<char, const char*, const char*> rows[] = {
        {' ', "P 0", "W 0"}, {'2', "W 0", "P 0"}, {'4', "PA 0", "WA 0"}, {'7', "LWA 0", "LPA 0"}};
    for (const auto& [indicator, first, second] : rows) {
        const std::string digits = {indicator, ' '};
        const Built built(version("2.11", "G") + record("     2    L1    L2", "# / TYPES OF OBSERV") +
                          record("     1     1", "WAVELENGTH FACT L1/2") +
                          record("     1     2     1   G06", "WAVELENGTH FACT L1/2") + endOfHeader() +
                          " 21  1  1  0  0  0.0000000  0  2G05G06\n" + field(5, digits) + "\n" + field(0) +
                          field(6, digits) + "\n");
        EXPECT_EQ(flags(built.stations.at(0).observations()[0], 0), first);
        EXPECT_EQ(flags(built.stations.at(0).observations()[1], 1), second);
        EXPECT_EQ(built.builder->losses().lossOfLockBits, 0U);
    }
    const Built newer(header3("E    1 L1C") + epoch3(0.0, {"E05" + field(5, "4 ")}));
    EXPECT_EQ(newer.builder->losses().lossOfLockBits, 1U) << "BOC tracking has no flag";
}

TEST(EpochBuilder, EpochsBecomeGpsTime) {
    // Time system of TIME OF FIRST OBS, LEAP SECONDS, printed time, GPS week and milliseconds, rounded epochs.
    const std::tuple<const char*, const char*, std::string, unsigned, std::uint32_t, unsigned> rows[] = {
        {"GPS", "", "2021 01 01 00 00  1.2340000", 2138, kFriday + 1234, 0},
        {"BDT", "", "2021 01 01 00 00  0.0000000", 2138, kFriday + 14000, 0},
        {"GLO", "", "2021 01 01 00 00  0.0000000", 2138, kFriday + 18000, 0},
        {"GLO", "    17", "2021 01 01 00 00  0.0000000", 2138, kFriday + 17000, 0},
        {"GLO", "", "2016 12 31 23 59 59.0000000", 1930, 16000, 0},
        {"GLO", "", "2017 01 01 00 00  0.0000000", 1930, 18000, 0},
        {"GPS", "", "2021 01 02 23 59 59.9996000", 2139, 0, 1},
        {"GPS", "", "3236 01 06 00 00  0.0000000", 65535, 0, 0},
    };
    for (const auto& [system, leap, time, week, milliseconds, rounded] : rows) {
        const std::string first = "  2021     1     1     0     0    0.0000000     ";
        const Built built(header3("G    1 C1C", record(first + system, "TIME OF FIRST OBS") +
                                                    (*leap != 0 ? record(leap, "LEAP SECONDS") : "")) +
                          "> " + time + "  0  1\nG05" + field(1) + "\n");
        const CHalvexStationObservation& station = built.stations.at(0);
        EXPECT_EQ(std::tuple(station.getGPSWeek(), station.getGPSFraction(), built.builder->losses().roundedEpochs),
                  std::tuple(week, milliseconds, rounded))
            << system << ' ' << time;
    }
    const Built built(header3("G    1 C1C") +
                      "> 1979 12 01 00 00  0.0000000  0  0\n> 3250 12 01 00 00  0.0000000  0  0\n");
    EXPECT_TRUE(built.stations.empty());
    EXPECT_EQ(built.builder->losses().unstampedEpochs, 2U);
}

TEST(EpochBuilder, WhatBelongsToTheEpoch) {
    const Built built(
        header3("G    3 D1C S1C L2W") +
        epoch3(0.0, {"G05" + field(-1234567.891) + field(45.25) + field(1.0, " 7")}, '0', "      -0.000123456789") +
        epoch3(1.0, {}, '6') + epoch3(2.0, {}));
    ASSERT_EQ(built.stations.size(), 2U) << "cycle slips are no epoch";
    double offset = 0.0;
    ASSERT_TRUE(built.stations[0].getClockOffsetCode(offset));
    EXPECT_EQ(offset, -0.000123456789);
    EXPECT_FALSE(built.stations[1].getClockOffsetCode(offset)) << "an offset does not stay";
    EXPECT_TRUE(built.stations[1].observations().empty());
    const LossCounts losses = built.builder->losses();
    EXPECT_EQ(std::tuple(losses.roundedDoppler, losses.roundedCno, losses.cycleSlipEpochs), std::tuple(1, 0, 1));
    EXPECT_EQ(losses.signalStrengthDigits, 1U) << "a phase with a digit and no C/N0";
}

}  // namespace
}  // namespace halvex::rinex
