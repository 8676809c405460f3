#include "formats/rinex/ObservationWriter.h"

#include <gtest/gtest.h>

#include <limits>
#include <tuple>

#include "formats/rinex/ObservationHeaderWriter.h"
#include "formats/rinex/ObservationReader.h"
#include "tests/formats/RinexText.h"
#include "tests/support/FileSizeLimit.h"

namespace halvex::rinex {
namespace {

using namespace test;

constexpr CALN::SCalSatID kG05{CALN::eCALSATSYSTEM_GPS, 5};

SatelliteSignals preferred(const CALN::SCalSatID& satellite) {
    return preferredSignals(satellite.system);
}

ObservationHeader header(std::initializer_list<CALN::SCalSatID> satellites) {
    ObservationHeader header;
    header.markerName = "SIMU";
    for (const CALN::SCalSatID& satellite : satellites) addColumns(header, satellite, preferred(satellite));
    return header;
}

CHalvexStationObservation station(std::uint32_t milliseconds, const std::vector<CHalvexObservation>& observations) {
    CHalvexStationObservation station;
    station.setGPSWeek(2138);
    station.setGPSFraction(milliseconds);
    for (const CHalvexObservation& observation : observations) station.AddObservation(observation, false);
    return station;
}

/// What stands behind the header after writing the stations, and how much is left out.
std::string body(const ObservationHeader& header, const std::vector<CHalvexStationObservation>& stations) {
    const TemporaryFolder folder;
    ObservationWriter writer;
    EXPECT_TRUE(writer.open(folder.path("f"), header));
    for (const CHalvexStationObservation& each : stations) EXPECT_TRUE(writer.write(each, preferred));
    EXPECT_TRUE(writer.close());
    return bodyOf(folder.path("f")) + std::to_string(writer.unwritten());
}

CHalvexObservation full() {
    CHalvexObservation gps(CPrnID(5, CPrnID::PRN_GPS));
    gps.setPseudorangeC(0, 20123456.789);
    gps.setPseudorangeP(0, 20123457.001);
    gps.setPhase(0, -105745123.5, true);
    gps.setDoppler(0, -0.25F);
    gps.setCNO(0, 53.9F);
    gps.setLossOfLock(0, true);
    gps.setParityKnown(0, false);
    gps.setPhase(1, 0.001, true);
    gps.setParityKnown(1, true);
    gps.setPseudorangeC(2, 1.0);
    gps.setCNO(2, 5.0F);
    return gps;
}

TEST(ObservationWriter, ColumnsArePinned) {
    CHalvexObservation glonass(CPrnID(26, CPrnID::PRN_GLONASS));
    glonass.setPhase(1, 7.0, true);
    glonass.setParityKnown(1, false);
    CHalvexStationObservation first = station(5 * 86400000 + 59999, {full(), glonass});
    first.setClockOffsetCode(-0.000123456789);
    EXPECT_EQ(body(header({kG05, {CALN::eCALSATSYSTEM_GLONASS, 1}}), {first, station(6 * 86400000 + 86399000, {})}),
              "> 2021 01 01 00 00 59.9990000  0  2      -0.000123456789\n"
              "G05  20123456.789 8  20123457.001 8-105745123.50038        -0.250          53.900  "
              "                                         0.001                                  "
              "         1.000 1                                         5.000\n"
              "R26                                                                                "
              "                                         7.0002\n"
              "> 2021 01 02 23 59 59.0000000  0  0\n0");
}

TEST(ObservationWriter, ValuesAtTheLimitsOfTheColumns) {
    // want: empty: blank, and counted
    const std::tuple<double, const char*> rows[] = {{9999999999.999, "9999999999.999"},
                                                    {10000000000.0, ""},
                                                    {-999999999.999, "-999999999.999"},
                                                    {-999999999.9999, ""},
                                                    {0.0004999, "         0.000"},
                                                    {1.0005001, "         1.001"},
                                                    {-std::numeric_limits<double>::infinity(), ""},
                                                    {std::numeric_limits<double>::quiet_NaN(), ""}};
    for (const auto& [value, want] : rows) {
        CHalvexObservation gps(CPrnID(5, CPrnID::PRN_GPS));
        gps.setPseudorangeC(0, value);
        EXPECT_EQ(body(header({kG05}), {station(0, {gps})}),
                  "> 2020 12 27 00 00  0.0000000  0  1\nG05" + std::string(want) + (*want == 0 ? "\n1" : "\n0"));
    }
}

/// A record takes any system and number, a file does not; nor has it a column for every value.
TEST(ObservationWriter, WhatTheFileHasNoPlaceForIsLeftOutAndCounted) {
    ObservationHeader columns;
    columns.codes[CALN::eCALSATSYSTEM_GPS] = {{'L', '2', 'W'}, {'L', '1', 'W'}, {'C', '8', 'X'}};
    CHalvexObservation number = full(), system = full();
    number.setPrnID(CPrnID(200, CPrnID::PRN_GPS));
    system.setPrnID(CPrnID());
    EXPECT_EQ(body(columns, {station(0, {number, full(), system})}),
              "> 2020 12 27 00 00  0.0000000  0  1\nG05         0.001\n" + std::to_string(7 + 2 * 8));
}

TEST(ObservationWriter, HeaderIsInGpsTime) {
    ObservationHeader beidou = header({kG05});
    beidou.version = 2.11;
    beidou.timeSystem = TimeSystem::beidou;
    beidou.leapSeconds = 4;
    beidou.firstObservation = SMjdTime(2021, 1, 1, 0, 0, 0.0);
    const TemporaryFolder folder;
    ObservationWriter writer;
    ASSERT_TRUE(writer.open(folder.path("f"), beidou) && writer.close());
    const ObservationHeader written = readerOf(readFile(folder.path("f"))).header();
    EXPECT_EQ(written.leapSeconds, 18) << "counted from BeiDou time before";
    EXPECT_EQ(std::tuple(written.version, written.timeSystem, written.firstObservation),
              std::tuple(3.05, TimeSystem::gps, SMjdTime(2021, 1, 1, 0, 0, 14.0)));
}

TEST(ObservationWriter, AFileThatTakesNoMoreIsTold) {
    const TemporaryFolder folder;
    ObservationWriter writer;
    EXPECT_FALSE(writer.open(folder.path("no/folder"), header({kG05})));
    const FileSizeLimit limit(100000);
    ASSERT_TRUE(writer.open(folder.path("f"), header({kG05})));
    int written = 0;
    while (written < 1000 && writer.write(station(0, {full()}), preferred)) ++written;
    EXPECT_LT(written, 1000);
    EXPECT_NE(writer.error().text().find(folder.path("f") + ": cannot be written: "), std::string::npos);
    EXPECT_FALSE(writer.close());
}

}  // namespace
}  // namespace halvex::rinex
