#include "formats/rinex/ObservationHeader.h"

#include <gtest/gtest.h>

#include <sstream>
#include <tuple>

#include "formats/rinex/ObservationCodes.h"
#include "formats/rinex/ObservationHeaderWriter.h"
#include "tests/formats/RinexText.h"

namespace halvex::rinex {
namespace {

using namespace test;

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
    using namespace CALN;
    const std::tuple<eCALSATSYSTEM, const char*, const char*> rows[] = {
        {eCALSATSYSTEM_GPS, "C1 P1 L1 D1 S1 C2 P2 L2 S2 C5 L5", "C1C C1W L1C D1C S1C C2X C2W L2W S2W C5X L5X"},
        {eCALSATSYSTEM_GPS, "L1 L2 S7 T1", "L1C L2W S7  T1 "},
        {eCALSATSYSTEM_GLONASS, "C1 P1 L1 C2 L2", "C1C C1P L1C C2C L2C"},
        {eCALSATSYSTEM_GLONASS, "P1 L1 P2 C2 L2 L5", "C1P L1P C2P C2C L2P L5 "},
        {eCALSATSYSTEM_GALILEO, "C1 L5 D6 S7 C8 C2 P1", "C1X L5X D6X S7X C8X C2  P1 "},
        {eCALSATSYSTEM_SBAS, "C1 L1 C5 P1", "C1C L1C C5X P1 "},
        {eCALSATSYSTEM_BEIDOU, "C1 L2 C7 S6 C5", "C2I L2I C7I S6I C5 "},
        {eCALSATSYSTEM_QZSS, "C1 L1 L2 C5 C6", "C1C L1C L2X C5X C6X"},
        {eCALSATSYSTEM_NAVIC, "C5 L5 C1", "C5A L5A C1 "},
    };
    for (const auto& [system, types, want] : rows) EXPECT_EQ(joined(codesOfTypes(words(types), system)), want) << types;
}

TEST(ObservationHeader, EveryRecordOfVersion3IsReadAndWritten) {
    const std::string station =
        record("PROG                ME                  20240101 000000 UTC", "PGM / RUN BY / DATE") +
        record("  a comment", "COMMENT") + record("MARK", "MARKER NAME") + record("10001M001", "MARKER NUMBER") +
        record("GEODETIC", "MARKER TYPE") + record("WATCHER             SOME AGENCY", "OBSERVER / AGENCY") +
        record("R1                  RTYPE               1.0", "REC # / TYPE / VERS") +
        record("A1                  ATYPE           NONE", "ANT # / TYPE");
    const std::string moreBeidou = record("       L5X", "SYS / # / OBS TYPES");
    const std::string moreShift = record("                   C11", "SYS / PHASE SHIFT");
    const std::string galileo = record("E    2 C1C S1C", "SYS / # / OBS TYPES");
    const std::string unit = record("DBHZ", "SIGNAL STRENGTH UNIT"), interval = record("     1.000", "INTERVAL");
    const std::string applied = record("     1", "RCV CLOCK OFFS APPL");
    const std::string channels =
        record(" 10 R01  1 R02 -4 R03  5 R04  6 R05  1 R06 -4 R07  5 R08  6", "GLONASS SLOT / FRQ #");
    const auto reader = readerOf(
        version("3.02", "E (GALILEO)") + station +
        record("  4375274.       587466.1234  4589095.     ", "APPROX POSITION XYZ") +
        record("         .9030         .0000       -1.5000", "ANTENNA: DELTA H/E/N") + unit +
        record("C   14 C1I L1I D1I S1I C7I L7I D7I S7I C6I L6I D6I S6I C5X", "SYS / # / OBS TYPES") + moreBeidou +
        galileo + record("C 1000   2 C1I L5X", "SYS / SCALE FACTOR") + record("E   10", "SYS / SCALE FACTOR") +
        record("C L1I -0.25000  11 C01 C02 C03 C04 C05 C06 C07 C08 C09 C10", "SYS / PHASE SHIFT") + moreShift +
        record("E", "SYS / PHASE SHIFTS") + channels + record("    R25 -7 R10 -7", "GLONASS SLOT / FRQ #") +
        record(" C1C  -71.940              C2P    1.500", "GLONASS COD/PHS/BIS") + applied +
        record("  2021    09    22    06    30   00.0000000", "TIME OF FIRST OBS") +
        record("  2021     9    22     6    30   60.5000000     GAL", "TIME OF LAST OBS") + interval +
        record("    18    18  1929     7", "LEAP SECONDS") + record("?", "SOMETHING NEW") + record("?", "") +
        endOfHeader());
    ASSERT_EQ(reader.error().message, "");
    EXPECT_EQ(reader.header().version, 3.02);
    EXPECT_EQ(reader.header().unknownRecords, 2U);
    const std::string written = headerText(reader.header());
    EXPECT_EQ(
        written,
        version("3.05", "E: Galileo") + station +
            record("  4375274.0000   587466.1234  4589095.0000", "APPROX POSITION XYZ") +
            record("        0.9030        0.0000       -1.5000", "ANTENNA: DELTA H/E/N") + galileo +
            record("C   14 C2I L2I D2I S2I C7I L7I D7I S7I C6I L6I D6I S6I C5X", "SYS / # / OBS TYPES") + moreBeidou +
            unit + interval + record("  2021     9    22     6    30    0.0000000     GAL", "TIME OF FIRST OBS") +
            record("  2021     9    22     6    31    0.5000000     GAL", "TIME OF LAST OBS") + applied +
            record("E   10   2 C1C S1C", "SYS / SCALE FACTOR") + record("C 1000   2 C2I L5X", "SYS / SCALE FACTOR") +
            record("C L2I -0.25000  11 C01 C02 C03 C04 C05 C06 C07 C08 C09 C10", "SYS / PHASE SHIFT") + moreShift +
            record("E", "SYS / PHASE SHIFT") + channels + record("    R10 -7 R25 -7", "GLONASS SLOT / FRQ #") +
            record(" C1C  -71.940 C2P    1.500", "GLONASS COD/PHS/BIS") + record("    18", "LEAP SECONDS") +
            endOfHeader());
    EXPECT_EQ(headerText(readerOf(written).header()), written);
}

TEST(ObservationHeader, WrittenRecordsKeepToTheirColumns) {
    ObservationHeader header;
    header.runBy = std::string(30, 'x');
    header.comments = {" two\nlines"};
    header.firstObservation = SMjdTime::FromDayAndMilliseconds(60000, 59999.99999999);
    const std::string text = headerText(header);
    EXPECT_NE(text.find(record(std::string(20, ' ') + std::string(20, 'x'), "PGM / RUN BY / DATE")), text.npos) << text;
    EXPECT_NE(text.find(record(" two lines", "COMMENT")), text.npos) << text;
    EXPECT_EQ(readerOf(text).header().firstObservation, SMjdTime::FromDayAndMilliseconds(60000, 60000.0));
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
    const std::pair<std::string, const char*> rows[] = {
        {"", "f: the file is empty"},
        {record("1.0                 COMPACT RINEX FORMAT", "CRINEX VERS   / TYPE"),
         "f:1: the file is Hatanaka-compressed; unpack it to RINEX first"},
        {record("     3.05           N: GNSS NAV DATA    M", "RINEX VERSION / TYPE"),
         "f:1: RINEX VERSION / TYPE: this is no observation file but \"N: GNSS NAV DATA\""},
        {version("3.05") + endOfHeader(), "f:2: SYS / # / OBS TYPES is missing"},
        {version("3.05") + record("E    2 C1C", "SYS / # / OBS TYPES") + types,
         "f:3: SYS / # / OBS TYPES: 1 announced types are missing before this line"},
        {with("E    1 Q1C", "SYS / # / OBS TYPES"), "f:3: SYS / # / OBS TYPES: \"Q1C\" is no observation code"},
        {with("G   10   1 C9C", "SYS / SCALE FACTOR"), "f:4: SYS / SCALE FACTOR: the file has no C9C"},
        {with("G L1C  0.2x", "SYS / PHASE SHIFT"),
         "f:3: SYS / PHASE SHIFT: columns 7 to 14: \" 0.2x   \" is no number"},
    };
    for (const auto& [text, error] : rows) EXPECT_EQ(readerOf(text).error().text(), error) << text;
}

}  // namespace
}  // namespace halvex::rinex
