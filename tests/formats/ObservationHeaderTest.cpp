#include "formats/rinex/ObservationHeader.h"

#include <gtest/gtest.h>

#include <sstream>

#include "formats/rinex/ObservationCodes.h"
#include "formats/rinex/ObservationHeaderWriter.h"
#include "tests/formats/RinexText.h"

namespace halvex::rinex {
namespace {

using test::endOfHeader;
using test::readerOf;
using test::record;
using test::version;

std::string joined(const std::vector<ObservationCode>& codes) {
    std::string text;
    for (const ObservationCode& code : codes) text += (text.empty() ? "" : " ") + code.text();
    return text;
}

std::vector<std::string> words(const std::string& text) {
    std::istringstream stream(text);
    return {std::istream_iterator<std::string>(stream), {}};
}

TEST(ObservationCodes, TypesOfVersion2BecomeCodesBySystem) {
    struct Row {
        CALN::eCALSATSYSTEM system;
        const char* types;
        const char* codes;
    };
    using namespace CALN;
    const Row rows[] = {
        {eCALSATSYSTEM_GPS, "C1 P1 L1 D1 S1 C2 P2 L2 S2 C5 L5", "C1C C1W L1C D1C S1C C2X C2W L2W S2W C5X L5X"},
        {eCALSATSYSTEM_GPS, "P1 L1 C2 L2 D2", "C1W L1W C2X L2X D2X"},
        {eCALSATSYSTEM_GPS, "L1 L2 S7 T1", "L1C L2W S7  T1 "},
        {eCALSATSYSTEM_GLONASS, "C1 P1 L1 C2 L2", "C1C C1P L1C C2C L2C"},
        {eCALSATSYSTEM_GLONASS, "P1 L1 P2 C2 L2 L5", "C1P L1P C2P C2C L2P L5 "},
        {eCALSATSYSTEM_GLONASS, "L2", "L2C"},
        {eCALSATSYSTEM_GALILEO, "C1 L5 D6 S7 C8 C2 P1", "C1X L5X D6X S7X C8X C2  P1 "},
        {eCALSATSYSTEM_SBAS, "C1 L1 C5 P1", "C1C L1C C5X P1 "},
        {eCALSATSYSTEM_BEIDOU, "C1 L2 C7 S6 C5", "C2I L2I C7I S6I C5 "},
        {eCALSATSYSTEM_QZSS, "C1 L1 L2 C5 C6", "C1C L1C L2X C5X C6X"},
        {eCALSATSYSTEM_NAVIC, "C5 L5 C1", "C5A L5A C1 "},
    };
    for (const Row& row : rows) EXPECT_EQ(joined(codesOfTypes(words(row.types), row.system)), row.codes) << row.types;
}

TEST(ObservationCodes, BeidouB1IHasBand2WhateverTheVersion) {
    const auto text = [](const char* code, double fileVersion) {
        return parseObservationCode(code, CALN::eCALSATSYSTEM_BEIDOU, fileVersion)->text();
    };
    EXPECT_EQ(text("C1I", 3.02), "C2I");
    EXPECT_EQ(text("L1X", 3.02), "L2X");
    EXPECT_EQ(text("C1P", 3.02), "C1P");
    EXPECT_EQ(text("C1X", 3.03), "C1X");
    EXPECT_EQ(text("C2I", 3.0), "C2I");
    EXPECT_EQ(parseObservationCode("C1I", CALN::eCALSATSYSTEM_GPS, 3.02)->text(), "C1I");
    for (const char* bad : {"", "C", "Q1C", "C0C", "CAC", "C1c", "C1CC"}) {
        EXPECT_FALSE(parseObservationCode(bad, CALN::eCALSATSYSTEM_GPS, 3.05)) << bad;
    }
}

TEST(ObservationHeader, EveryRecordOfVersion3) {
    const auto reader = readerOf(
        version("3.02", "E (GALILEO)") +
        record("PROG                ME                  20240101 000000 UTC", "PGM / RUN BY / DATE") +
        record("  a comment", "COMMENT") + record("MARK", "MARKER NAME") + record("10001M001", "MARKER NUMBER") +
        record("GEODETIC", "MARKER TYPE") + record("WATCHER             SOME AGENCY", "OBSERVER / AGENCY") +
        record("R1                  RTYPE               1.0", "REC # / TYPE / VERS") +
        record("A1                  ATYPE           NONE", "ANT # / TYPE") +
        record("  4375274.       587466.1234  4589095.     ", "APPROX POSITION XYZ") +
        record("         .9030         .0000       -1.5000", "ANTENNA: DELTA H/E/N") +
        record("DBHZ", "SIGNAL STRENGTH UNIT") +
        record("C   14 C1I L1I D1I S1I C7I L7I D7I S7I C6I L6I D6I S6I C5X", "SYS / # / OBS TYPES") +
        record("       L5X", "SYS / # / OBS TYPES") + record("E    2 C1C S1C", "SYS / # / OBS TYPES") +
        record("C 1000   2 C1I L5X", "SYS / SCALE FACTOR") + record("E   10", "SYS / SCALE FACTOR") +
        record("C L1I -0.25000  11 C01 C02 C03 C04 C05 C06 C07 C08 C09 C10", "SYS / PHASE SHIFT") +
        record("                   C11", "SYS / PHASE SHIFT") + record("E", "SYS / PHASE SHIFTS") +
        record(" 10 R01  1 R02 -4 R03  5 R04  6 R05  1 R06 -4 R07  5 R08  6", "GLONASS SLOT / FRQ #") +
        record("    R25 -7 R10 -7", "GLONASS SLOT / FRQ #") +
        record(" C1C  -71.940              C2P    1.500", "GLONASS COD/PHS/BIS") +
        record("     1", "RCV CLOCK OFFS APPL") +
        record("  2021    09    22    06    30   00.0000000", "TIME OF FIRST OBS") +
        record("  2021     9    22     6    30   60.5000000     GAL", "TIME OF LAST OBS") +
        record("     1.000", "INTERVAL") + record("    18    18  1929     7", "LEAP SECONDS") +
        record("    56", "# OF SATELLITES") + record("?", "SOMETHING NEW") + record("?", "") + endOfHeader());
    ASSERT_EQ(reader.error().message, "");
    const ObservationHeader& header = reader.header();
    EXPECT_EQ(header.version, 3.02);
    EXPECT_EQ(header.fileSystem, 'E');
    EXPECT_EQ(header.timeSystem, TimeSystem::galileo);
    EXPECT_EQ(header.program + '|' + header.runBy + '|' + header.date, "PROG|ME|20240101 000000 UTC");
    EXPECT_EQ(header.comments, std::vector<std::string>({"  a comment"}));
    EXPECT_EQ(header.markerName + '|' + header.markerNumber + '|' + header.markerType, "MARK|10001M001|GEODETIC");
    EXPECT_EQ(header.observer + '|' + header.agency, "WATCHER|SOME AGENCY");
    EXPECT_EQ(header.receiverNumber + '|' + header.receiverType + '|' + header.receiverVersion, "R1|RTYPE|1.0");
    EXPECT_EQ(header.antennaNumber + '|' + header.antennaType, "A1|ATYPE           NONE");
    EXPECT_EQ(header.position, (std::array{4375274.0, 587466.1234, 4589095.0}));
    EXPECT_EQ(header.antennaDelta, (std::array{0.903, 0.0, -1.5}));
    EXPECT_EQ(joined(header.codes[CALN::eCALSATSYSTEM_BEIDOU]),
              "C2I L2I D2I S2I C7I L7I D7I S7I C6I L6I D6I S6I C5X L5X");
    std::vector<double> factors(14, 1.0);
    factors.front() = factors.back() = 1000.0;
    EXPECT_EQ(header.scaleFactors[CALN::eCALSATSYSTEM_BEIDOU], factors);
    EXPECT_EQ(header.scaleFactors[CALN::eCALSATSYSTEM_GALILEO], std::vector<double>(2, 10.0));
    ASSERT_EQ(header.phaseShifts.size(), 2U);
    EXPECT_EQ(header.phaseShifts[0].code->text(), "L2I");
    EXPECT_EQ(header.phaseShifts[0].cycles, -0.25);
    ASSERT_EQ(header.phaseShifts[0].satellites.size(), 11U);
    EXPECT_EQ(header.phaseShifts[0].satellites[10].number, 11);
    EXPECT_FALSE(header.phaseShifts[1].code || header.phaseShifts[1].cycles);
    EXPECT_EQ(header.glonassChannels.size(), 10U);
    EXPECT_EQ(header.glonassChannels.at({CALN::eCALSATSYSTEM_GLONASS, 25}), -7);
    EXPECT_EQ(header.glonassBiases,
              (std::map<ObservationCode, double>{{{'C', '1', 'C'}, -71.94}, {{'C', '2', 'P'}, 1.5}}));
    EXPECT_TRUE(header.clockOffsetApplied);
    EXPECT_EQ(header.firstObservation, SMjdTime(2021, 9, 22, 6, 30, 0.0));
    EXPECT_EQ(header.lastObservation, SMjdTime(2021, 9, 22, 6, 31, 0.5));
    EXPECT_EQ(header.interval, 1.0);
    EXPECT_EQ(header.leapSeconds, 18);
    EXPECT_EQ(header.unknownRecords, 2U);
}

TEST(ObservationHeader, Version2) {
    const auto reader =
        readerOf(version("2.11", "R (GLONASS)") + record("     1     2", "WAVELENGTH FACT L1/2") +
                 record("     2     2     2   G14   G 5", "WAVELENGTH FACT L1/2") +
                 record("    10    C1    P1    L1    C2    P2    L2    D1    D2    S1", "# / TYPES OF OBSERV") +
                 record("          S2", "# / TYPES OF OBSERV") + endOfHeader());
    ASSERT_EQ(reader.error().message, "");
    EXPECT_EQ(reader.header().timeSystem, TimeSystem::glonass);
    EXPECT_EQ(joined(reader.header().codes[CALN::eCALSATSYSTEM_GLONASS]), "C1C C1P L1C C2C C2P L2P D1C D2P S1C S2P");
    using Factors = std::map<unsigned char, std::array<int, 2>>;
    EXPECT_EQ(reader.header().wavelengthFactors, (Factors{{0, {1, 2}}, {5, {2, 2}}, {14, {2, 2}}}));
}

TEST(ObservationHeader, FaultsAreToldWithTheirLine) {
    const std::string types = record("G    2 C1C L1C", "SYS / # / OBS TYPES");
    const auto with = [&types](const std::string& content, const char* label) {
        return version("3.05") + types + record(content, label) + endOfHeader();
    };
    struct Row {
        std::string text;
        const char* error;
    };
    const Row rows[] = {
        {"", "f: the file is empty"},
        {"hello\n", "f:1: the first line is no RINEX VERSION / TYPE record"},
        {record("1.0                 COMPACT RINEX FORMAT", "CRINEX VERS   / TYPE"),
         "f:1: the file is Hatanaka-compressed; unpack it to RINEX first"},
        {record("     3.05           N: GNSS NAV DATA    M", "RINEX VERSION / TYPE"),
         "f:1: RINEX VERSION / TYPE: this is no observation file but \"N: GNSS NAV DATA\""},
        {version("1.00"),
         "f:1: RINEX VERSION / TYPE: version 1.00 is not supported; 2.00 to 2.12, 3.00 to 3.05 and 4.0x are"},
        {version("5.00"),
         "f:1: RINEX VERSION / TYPE: version 5.00 is not supported; 2.00 to 2.12, 3.00 to 3.05 and 4.0x are"},
        {version("x.yz"), "f:1: RINEX VERSION / TYPE: columns 1 to 9: \"     x.yz\" is no number"},
        {version("3.05", "Q"), "f:1: RINEX VERSION / TYPE: satellite system 'Q' is not known"},
        {version("3.05") + types, "f:2: END OF HEADER is missing"},
        {version("3.05") + types + "> 2024\n", "f:3: END OF HEADER is missing before this line"},
        {version("3.05") + endOfHeader(), "f:2: SYS / # / OBS TYPES is missing"},
        {version("2.11") + endOfHeader(), "f:2: # / TYPES OF OBSERV is missing"},
        {version("2.11") + record("     6    L1    L2    P1    P2    C1    S1    S2", "# / TYPES OF OBSERV"),
         "f:2: # / TYPES OF OBSERV: more types than announced"},
        {version("2.11") + record("   201    L1", "# / TYPES OF OBSERV"),
         "f:2: # / TYPES OF OBSERV: a count of 201 is out of range"},
        {version("2.11") + types,
         "f:2: SYS / # / OBS TYPES: belongs to RINEX 3; this file has one list of types for all systems"},
        {with("E    2 C1C", "SYS / # / OBS TYPES"), "f:4: SYS / # / OBS TYPES: 1 announced entries are missing"},
        {version("3.05") + record("E    2 C1C", "SYS / # / OBS TYPES") + types,
         "f:3: SYS / # / OBS TYPES: 1 announced types are missing before this line"},
        {with("       C1X", "SYS / # / OBS TYPES"), "f:3: SYS / # / OBS TYPES: more types than announced"},
        {with("E    1 Q1C", "SYS / # / OBS TYPES"), "f:3: SYS / # / OBS TYPES: \"Q1C\" is no observation code"},
        {with("E   -1", "SYS / # / OBS TYPES"), "f:3: SYS / # / OBS TYPES: a count of -1 is out of range"},
        {with("G    7", "SYS / SCALE FACTOR"),
         "f:3: SYS / SCALE FACTOR: a factor of 7; 1, 10, 100 and 1000 are allowed"},
        {with("G   10   1 C9C", "SYS / SCALE FACTOR"), "f:4: SYS / SCALE FACTOR: the file has no C9C"},
        {with("G L1C  0.2x", "SYS / PHASE SHIFT"),
         "f:3: SYS / PHASE SHIFT: columns 7 to 14: \" 0.2x   \" is no number"},
        {with("  1 R01 14", "GLONASS SLOT / FRQ #"), "f:3: GLONASS SLOT / FRQ #: R01: there is no channel 14"},
        {with("  1 R32  1", "GLONASS SLOT / FRQ #"),
         "f:3: GLONASS SLOT / FRQ #: satellite R32: GLONASS has satellites 1 to 31"},
        {with("  2010     3     5     0     0    0 .0000000     GPS", "TIME OF FIRST OBS"),
         "f:3: TIME OF FIRST OBS: time system \".0000000     GPS\" is not known"},
        {with("  2010     2    29     0     0    0.0000000", "TIME OF LAST OBS"),
         "f:3: TIME OF LAST OBS: \"  2010     2    29     0     0    0.0000000\" is no time"},
        {with("  2010     3     5     0     0    0.0000000     XYZ", "TIME OF FIRST OBS"),
         "f:3: TIME OF FIRST OBS: time system \"XYZ\" is not known"},
        {with("    -1.000", "INTERVAL"), "f:3: INTERVAL: an interval is not negative"},
    };
    for (const Row& row : rows) EXPECT_EQ(readerOf(row.text).error().text(), row.error) << row.text;
}

TEST(ObservationHeaderWriter, WhatIsWrittenIsReadAgain) {
    ObservationHeader header;
    header.program = "halvex";
    header.runBy = std::string(30, 'x');
    header.comments = {"one", " two\nlines"};
    header.markerName = "MARK00XXX";
    header.antennaType = "ATYPE           NONE";
    header.position = {4375274.0, -587466.1234, 4589095.5};
    header.antennaDelta = {0.1, 0.0, -0.2};
    header.interval = 0.05;
    header.timeSystem = TimeSystem::beidou;
    header.firstObservation = SMjdTime::FromDayAndMilliseconds(60000, 59999.99999999);
    header.clockOffsetApplied = true;
    header.signalStrengthUnit = "DBHZ";
    for (const char band : {'1', '2', '5', '6'}) {
        for (const char type : {'C', 'L', 'D', 'S'}) {
            for (const int system : {1, 5}) header.codes[static_cast<std::size_t>(system)].push_back({type, band, 'X'});
        }
    }
    header.scaleFactors[1].assign(16, 1000.0);
    header.scaleFactors[5].assign(16, 1.0);
    header.scaleFactors[5][3] = 10.0;
    PhaseShift shift{CALN::eCALSATSYSTEM_GPS, ObservationCode{'L', '2', 'X'}, -0.25, {}};
    for (unsigned char number = 1; number <= 12; ++number) {
        shift.satellites.emplace_back(CALN::eCALSATSYSTEM_GPS, number);
        header.glonassChannels[{CALN::eCALSATSYSTEM_GLONASS, number}] = number - 7;
    }
    header.phaseShifts = {shift, {CALN::eCALSATSYSTEM_BEIDOU, std::nullopt, std::nullopt, {}}};
    header.glonassBiases = {{{'C', '1', 'C'}, -71.94}, {{'C', '2', 'P'}, 0.5}};
    header.leapSeconds = 18;

    const std::string text = headerText(header);
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        EXPECT_LE(line.size(), 80U) << line;
        EXPECT_NE(line.substr(60).find_first_not_of(' '), std::string::npos) << line;
    }
    const auto reader = readerOf(text);
    ASSERT_EQ(reader.error().message, "");
    const ObservationHeader& again = reader.header();
    EXPECT_EQ(headerText(again), text);  // everything that is written has been read
    EXPECT_EQ(again.codes, header.codes);
    EXPECT_EQ(again.scaleFactors[1], header.scaleFactors[1]);
    EXPECT_EQ(again.scaleFactors[5], header.scaleFactors[5]);
    EXPECT_EQ(again.phaseShifts[0].satellites, shift.satellites);
    EXPECT_EQ(again.glonassChannels, header.glonassChannels);
    EXPECT_EQ(again.glonassBiases, header.glonassBiases);
    EXPECT_EQ(again.position, header.position);
    EXPECT_EQ(again.timeSystem, TimeSystem::beidou);
    EXPECT_EQ(again.firstObservation, SMjdTime::FromDayAndMilliseconds(60000, 60000.0));
    EXPECT_EQ(again.unknownRecords, 0U);
    EXPECT_NE(text.find("C   10   1 S1X"), std::string::npos) << text;
    EXPECT_NE(text.find("G L2X -0.25000  12 G01 G02 G03 G04 G05 G06 G07 G08 G09 G10  SYS / PHASE SHIFT\n"),
              std::string::npos);
    EXPECT_NE(text.find(" 12 R01 -6 R02 -5 R03 -4 R04 -3 R05 -2 R06 -1 R07  0 R08  1 GLONASS SLOT / FRQ #\n"),
              std::string::npos);
}

}  // namespace
}  // namespace halvex::rinex
