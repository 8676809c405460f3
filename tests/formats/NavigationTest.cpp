#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>
#include <sstream>

#include "formats/rinex/NavigationWriter.h"
#include "formats/rinex/SatelliteName.h"
#include "tests/formats/Gzip.h"
#include "tests/formats/NavigationText.h"

namespace halvex::rinex {
namespace {

using namespace test;
using Result = NavigationReader::Result;
using Gps = CALN::CALX_SAT_EPHEMERIS;
using Qzss = CALN::CALX_SAT_EPHEMERIS_QZSS;
using Glonass = CALN::CALX_SAT_EPHEMERIS_GLONASS;
using Galileo = CALN::CALX_SAT_EPHEMERIS_GALILEO;
using Beidou = CALN::CALX_SAT_EPHEMERIS_BEIDOU;
using Navic = CALN::CALX_SAT_EPHEMERIS_NAVIC;
using Values = std::vector<double>;

const std::string kHeader3 = navigationVersion("3.05") + endOfHeader();
const std::string kHeader4 = navigationVersion("4.00") + endOfHeader();

/// What stands in a file without faults.
std::vector<NavigationRecord> recordsOf(NavigationReader& reader) {
    std::vector<NavigationRecord> records;
    for (NavigationRecord record; reader.next(record) == Result::record;) records.push_back(record);
    EXPECT_EQ(reader.error().message, "");
    return records;
}
std::vector<NavigationRecord> recordsOf(const std::string& text) {
    auto reader = readerOf<NavigationReader>(text);
    return recordsOf(reader);
}

/// The one record of a file; anything else throws.
template <class Record>
Record only(const std::string& text) {
    const auto records = recordsOf(text);
    EXPECT_EQ(records.size(), 1U);
    return std::get<Record>(records.at(0));
}

/// All that the reader gives, a word for each record and a line for each error; why it cannot even begin.
std::string story(const std::string& text) {
    auto reader = readerOf<NavigationReader>(text);
    std::string told;
    NavigationRecord record;
    for (auto result = reader.next(record); result != Result::end; result = reader.next(record)) {
        told += result == Result::error ? "! " + reader.error().text() + '\n'
                                        : satelliteName(reader.satellite()) + '@' + std::to_string(reader.line()) + ' ';
    }
    return told.empty() && !reader.error().message.empty() ? "! " + reader.error().text() : told;
}

template <class... Numbers>
Values values(const Numbers&... numbers) {
    return {static_cast<double>(numbers)...};
}
template <class... More>
Values join(Values values, const More&... more) {
    (values.insert(values.end(), more.begin(), more.end()), ...);
    return values;
}
Values orbit(const CALN::CALX_SAT_EPHEMERIS_COMMON& r, double fourth, double twelfth) {
    return values(r.af0, r.af1, r.af2, fourth, r.crs, r.deltaN, r.m0, r.cuc, r.e, r.cus, r.sqrtA, twelfth, r.cic,
                  r.omega0, r.cis, r.i0, r.crc, r.omega, r.omegaDot, r.idot);
}

template <class Record>
Values axis(const Record& r, std::size_t i) {
    return values(r.position[i] / 1000, r.velocity[i] / 1000, r.acceleration[i] / 1000);
}

/// The members in the order in which their fields are printed; a spare field shows its own number.
struct InPrintedOrder {
    Values operator()(const Gps& r) const {
        if (r.messageType == CALN::eCALGPSMESSAGE_LNAV) {
            return join(orbit(r, 4, r.toe),
                        values(r.codeOnL2, r.week, r.l2pDataFlag, r.ura, r.health, r.tgd, r.iodc, r.transmissionTime));
        }
        const Values cnav2 = values(r.iscL1Cd, r.iscL1Cp, 34, 35);
        return join(orbit(r, r.aDot, r.top),
                    values(r.deltaNDot, r.uraiNed0, r.uraiNed1, r.uraiEd, r.health, r.tgd, r.uraiNed2, r.iscL1CA,
                           r.iscL2C, r.iscL5I5, r.iscL5Q5),
                    r.messageType == CALN::eCALGPSMESSAGE_CNAV2 ? cnav2 : Values(),
                    values(r.transmissionTime, r.topWeek));
    }
    Values operator()(const Glonass& r) const {
        return join(values(-r.tauN, r.gammaN, r.frameTime - 10800), axis(r, 0), values(7), axis(r, 1),
                    values(r.frequencyNumber), axis(r, 2),
                    values(r.ageOfData, r.controlFlags, r.deltaTauN, r.accuracyIndex));
    }
    Values operator()(const Galileo& r) const {
        return join(orbit(r, r.iodNav, r.toe),
                    values(r.dataSources, r.week, 23, 24, 25, r.bgdE5aE1, r.bgdE5bE1, r.transmissionTime));
    }
    Values operator()(const Beidou& r) const {
        const Values old = values(21, r.week, 23, r.ura, r.health, r.tgd1, r.tgd2, r.transmissionTime, r.aodc);
        if (r.messageType <= CALN::eCALBDSMESSAGE_D2) return join(orbit(r, r.aode, r.toe), old);
        const Values begin = join(orbit(r, r.aDot, r.toe), values(r.deltaNDot, r.satelliteType, r.top, r.sisaiOe,
                                                                  r.sisaiOcb, r.sisaiOc1, r.sisaiOc2));
        const Values quality = values(r.sismai, r.health, r.integrityFlags);
        if (r.messageType == CALN::eCALBDSMESSAGE_CNAV3) {
            return join(begin, quality, values(r.tgdB2bI, r.transmissionTime));
        }
        const bool first = r.messageType == CALN::eCALBDSMESSAGE_CNAV1;
        return join(begin, first ? values(r.iscB1Cd, 29) : values(28, r.iscB2ad), values(r.tgdB1Cp, r.tgdB2ap), quality,
                    values(r.iodc, r.transmissionTime, 37, 38, r.iode));
    }
    Values operator()(const Navic& r) const {
        return join(orbit(r, r.iodec, r.toe), values(21, r.week, 23, r.ura, r.health, r.tgd, 27, r.transmissionTime));
    }
    Values operator()(const SbasOrbit& r) const {
        return join(values(r.clockBias, r.clockDrift, r.transmissionTime), axis(r, 0), values(r.health), axis(r, 1),
                    values(r.ura), axis(r, 2), values(r.iodn));
    }
    Values operator()(const SystemTimeOffset& r) const { return values(1, 2, 3, r.transmissionTime, r.a0, r.a1, r.a2); }
    Values operator()(const EarthOrientation& r) const {
        return join({}, r.xp, values(4), r.yp, values(r.transmissionTime), r.deltaUt1);
    }
    Values operator()(const IonosphereModel& r) const { return std::visit(*this, r.model); }
    Values operator()(const KlobucharModel& m) const { return join({}, m.alpha, m.beta, values(m.region)); }
    Values operator()(const NeQuickModel& m) const { return join({}, m.ai, values(m.disturbanceFlags)); }
    Values operator()(const BdgimModel& m) const { return join({}, m.alpha); }
};

TEST(NavigationReader, EveryFieldOfEveryMessageIsTakenFromItsPlace) {
    auto reader = readerOf<NavigationReader>(kHeader4 + numberedRecords());
    NavigationRecord record;
    std::size_t records = 0;
    for (; reader.next(record) == Result::record; ++records) {
        const Values got = std::visit(InPrintedOrder(), record);
        Values want(got.size());
        std::iota(want.begin(), want.end(), 1.0);
        EXPECT_EQ(got, want) << "record of line " << reader.line();
    }
    EXPECT_EQ(records, 17U) << reader.error().text();
    const auto& offset = std::get<SystemTimeOffset>(record);
    EXPECT_EQ(offset.pair + offset.sbasId + offset.utcId + offset.source.message, "GAUTWAASUTCGALIFNV");
    EXPECT_EQ(offset.source.satellite, CALN::SCalSatID(CALN::eCALSATSYSTEM_GALILEO, 0));
}

TEST(NavigationReader, NumbersWeeksAndFlagsAsTheRecordsKeepThem) {
    const auto gps = only<Gps>(kHeader3 + numberedRecord("G07" + kGpsEpoch, 8));
    EXPECT_EQ(values(gps.satId, gps.source, gps.toc), values(7, CALN::eCALORBITSOURCE_FILE, 12));
    EXPECT_EQ(values(gps.uraIndex, gps.fitIntervalFlag), values(6, 1)) << "24 m and 29 hours";
    EXPECT_EQ(only<Qzss>(kHeader3 + numberedRecord("J10" + kGpsEpoch, 8)).satId, 202);

    const auto galileo = only<Galileo>(kHeader3 + numberedRecord("E36" + kGpsEpoch, 8));
    EXPECT_EQ(values(galileo.satId, galileo.sisaIndex, galileo.pageType1Week, galileo.pageType1Seconds),
              values(92, Galileo::kNoSisa, 22, 28));
    const Galileo::SignalStatus want[] = {{1, 0}, {1, 1}, {0, 0}};  // 25 is 000 011 001
    EXPECT_TRUE(galileo.e1b == want[0] && galileo.e5a == want[1] && galileo.e5b == want[2]);

    const auto beidou = only<Beidou>(kHeader3 + numberedRecord("C05" + kBeidouEpoch, 8));
    EXPECT_EQ(values(beidou.messageType, beidou.week, beidou.toc), values(CALN::eCALBDSMESSAGE_D2, 22, 12));
    EXPECT_EQ(beidou.GetRefTimeClock(), SMjdTime(2006, 6, 4, 0, 0, 26.0));
    // No week in the message: toe in Saturday's last hour, the epoch in Sunday's first.
    std::string text = numberedRecord("C30" + kBeidouEpoch, 9);
    text.replace(text.find(" 1.200000000000E+01"), 19, " 6.040000000000E+05");
    EXPECT_EQ(only<Beidou>(kHeader4 + "> EPH C30 CNV3\n" + text).week, 21);
}

TEST(NavigationReader, GlonassTime) {
    const std::string lines =
        "-.342596322298D-04-.272848410532D-11 0.900000000000D+03\n"
        "    0.256211230469D+04-0.189046859741D+00-0.186264514923D-08 0.000000000000D+00\n"
        "   -0.253048676758D+05 0.253620147705D+00-0.931322574615D-09 0.253000000000D+03\n"
        "   -0.194164404297D+05-0.356233310700D+01 0.279396772385D-08 0.100000000000D+01\n";
    const std::string version2 = navigationVersion("2.01", "GLONASS NAV DATA", " ");
    const std::string text = " 3 09  4  1  0 15  0.0 " + lines;
    const auto r = only<Glonass>(version2 + endOfHeader() + text);
    // Wednesday, 15 leap seconds by history; a frequency number printed as a byte, and no accuracy in this version.
    EXPECT_EQ(values(r.week, r.referenceSeconds, r.tb, r.referenceSecondsOfDay, r.frameTime, r.fourYearInterval,
                     r.dayNumber, r.tauN, r.position[0], r.frequencyNumber, r.accuracyIndex),
              values(1525, 3 * 86400 + 900 + 15, 13, 11700, 11700, 4, 366 + 31 + 28 + 31 + 1, 0.342596322298e-4,
                     2562112.30469, -3, 15));
    EXPECT_EQ(only<Glonass>(version2 + record("    10", "LEAP SECONDS") + endOfHeader() + text).referenceSeconds,
              3 * 86400 + 910.0);

    const auto status = [](const std::string& line) {
        return only<Glonass>(kHeader3 + numberedRecord("R24 2021 12 31 22 00 00", 4) + line);
    };
    EXPECT_EQ(status("").dayNumber, 732) << "1 January in Moscow";
    const auto known = status("     1.790000000000e+02 5.587935447693e-09 2.000000000000e+00 6.000000000000e+00\n");
    EXPECT_EQ(values(known.controlFlags, known.modification, known.deltaTauN, known.accuracyIndex, known.healthFlags,
                     known.health),
              values(51, 1, 5.587935447693e-9, 2, 6, 3));
    const auto unknown = status("                         .999999999999e+09 1.500000000000e+01\n");
    EXPECT_EQ(values(unknown.deltaTauN, unknown.accuracyIndex, unknown.health), values(0, 15, 1));
}

/// Puts `field` into the place `index` of a numbered record.
std::string with(std::string text, int index, std::string field, std::size_t indent = 4) {
    const auto place = static_cast<std::size_t>(index);
    const std::size_t at = indent + place / 4 * (indent + 77) + place % 4 * 19;
    return text.replace(at, 19, field.insert(0, 19 - field.size(), ' '));
}

TEST(NavigationReader, AccuracyFitAndDataSources) {
    const std::string gps = numberedRecord("G07" + kGpsEpoch, 8);
    int want = 0;
    std::istringstream accuracies("0 0  2.0 0  2.4 0  2.8 1  3.4 1  4.85 2  5.7 3  4096 14  6144 14  8192 15");
    for (std::string metres; accuracies >> metres >> want;) {
        EXPECT_EQ(only<Gps>(kHeader3 + with(gps, 24, metres)).uraIndex, want) << metres;
    }
    std::istringstream intervals("0 0  4 0  6 1  1 1");
    for (std::string hours; intervals >> hours >> want;) {
        EXPECT_EQ(only<Gps>(kHeader3 + with(gps, 29, hours)).fitIntervalFlag, want) << hours;
    }
    EXPECT_EQ(only<Gps>(kHeader3 + with(with(gps, 24, ""), 29, "")).uraIndex, 0);
    for (const std::string unknown : {"", ".999900000000E+09"}) {
        EXPECT_EQ(only<Gps>(kHeader3 + with(gps, 28, unknown)).transmissionTime, 12.0);
    }
    const std::string galileo = numberedRecord("E11" + kGpsEpoch, 8);
    const int messages[][3] = {{517, 2, 1}, {513, 2, 2}, {516, 2, 3}, {258, 1, 0}, {7 + 256, 1, 0}};
    for (const auto& [sources, type, reception] : messages) {
        const auto r = only<Galileo>(kHeader3 + with(galileo, 21, std::to_string(sources)));
        EXPECT_TRUE(r.navType == type && r.inavReception == reception) << sources;
    }
    EXPECT_EQ(only<Galileo>(kHeader3 + with(galileo, 24, "3.119999885559")).sisaIndex, 107);
}

TEST(NavigationReader, FormsOfLines) {
    const std::string full = numberedRecord("G07" + kGpsEpoch, 8);
    const auto want = only<Gps>(kHeader3 + full);
    std::string other = full;
    for (std::size_t at = 0; (at = other.find('E', at)) != std::string::npos; ++at) other[at] = "Dde"[at % 3];
    EXPECT_EQ(only<Gps>(kHeader3 + other), want) << "exponents";
    EXPECT_EQ(only<Gps>(kHeader3 + with(full, 20, ".200000000000D+02")), want);
    const std::string cut = full.substr(0, full.rfind(" 3.000000000000E+01"));
    EXPECT_EQ(only<Gps>(kHeader3 + cut), want) << "nothing behind the fit interval, not even a line's end";
    EXPECT_EQ(only<Gps>(kHeader3 + "G 7" + full.substr(3) + "\n\n"), want);
    EXPECT_EQ(only<Gps>(gzip(kHeader3 + full)), want);
    // Version 2: a column less, years of two digits.
    const std::string header2 = navigationVersion("2", "NAVIGATION DATA", " ") + endOfHeader();
    EXPECT_EQ(only<Gps>(header2 + numberedRecord(" 7 80  6  8  0  0 12.0", 8, 3)), want);
    EXPECT_EQ(only<SbasOrbit>(navigationVersion("2.10", "H: GEO NAV MSG DATA", " ") + endOfHeader() +
                              numberedRecord("20 05  6  8  0  0 12.0", 4, 3))
                  .referenceTime,
              SMjdTime(2005, 6, 8, 0, 0, 12.0));
}

/// Every fault is told with its line, and the record behind it is read.
TEST(NavigationReader, FaultsAndWhereItGoesOn) {
    using Rows = std::vector<std::pair<std::string, std::string>>;
    const auto expectFaults = [](const std::string& header, const std::string& behind, const Rows& rows) {
        for (const auto& [text, error] : rows) {
            const auto line = std::ranges::count(header + text, '\n') + 1;
            EXPECT_EQ(story(header + text + behind), "! f:" + error + "\nG07@" + std::to_string(line) + ' ');
        }
    };
    const std::string good = numberedRecord("G07" + kGpsEpoch, 8);
    const auto firstLines = [&good](std::size_t lines) { return good.substr(0, 81 * lines); };
    const Rows rows3{
        {with(good, 6, "6.0x"), "4: G07: columns 43 to 61: \"               6.0x\" is no number"},
        {with(good, 2, ""), "3: G07: columns 43 to 61: the clock drift is missing"},
        {with(good, 27, "27.5"), "9: G07: columns 62 to 80: IODC is no integer"},
        {with(good, 25, "-1"), "9: G07: columns 24 to 42: the health is out of range"},
        {with(good, 12, "604800"), "6: G07: columns 5 to 23: toe is no second of a week"},
        {with(good, 12, "302413"), "8: G07: columns 43 to 61: week 22 does not fit the epoch, which is in week 22"},
        {"G33" + good.substr(3), "3: satellite G33: GPS has satellites 1 to 32"},
        {"rubbish\n\nmore of it\n", "3: \"rub\" is no satellite"},
        {"G07 1980 02 30 00 00 12" + good.substr(23), "3: G07: the epoch \"1980 02 30 00 00 12\" is no date and time"},
        {firstLines(5), "8: the record of line 3 ends early: 5 of 8 lines"},
        {firstLines(1).substr(0, 80) + "x\n" + good.substr(81), "3: G07: column 81: text behind the last field: \"x\""},
        {with(numberedRecord("E11" + kGpsEpoch, 8), 21, "512"),
         "8: E11: the data sources name neither I/NAV nor F/NAV"},
        {with(numberedRecord("R11" + kGpsEpoch, 4), 11, "14"), "6: R11: there is no frequency number 14"},
    };
    expectFaults(kHeader3, good, rows3);
    EXPECT_EQ(story(kHeader3 + with(good, 12, "302412")), "G07@3 ") << "half a week is within";
    EXPECT_EQ(story(kHeader3 + firstLines(7)), "! f:9: the file ends inside a record: 7 of 8 lines\n");

    const Rows rows4{
        {good, "3: a record begins with \"> \""},
        {"> EPH G08 LNAV\n" + good, "4: satellite G07, announced G08"},
        {"> EPH\n", "3: \"> EPH\" announces no record"},
        {"> EPH G07 LNAV\n", "4: the record of line 3 ends early: 0 of 8 lines"},
        {"> ION G07 LNAV\n" + good, "4: \"G07\" stands where blanks belong"},
    };
    expectFaults(kHeader4, "> EPH G07 LNAV\n" + good, rows4);
    const std::string header2 = navigationVersion("2.11", "N: GPS NAV DATA", " ") + endOfHeader();
    const std::string good2 = numberedRecord(" 7 80  6  8  0  0 12.0", 8, 3);
    EXPECT_EQ(story(header2 + with(good2, 16, "", 3) + good2), "! f:7: G07: columns 4 to 22: i0 is missing\nG07@11 ");
}

TEST(NavigationReader, UnknownRecordsOfVersion4AreCounted) {
    const std::string known = "> EPH G07 LNAV\n" + numberedRecord("G07" + kGpsEpoch, 8);
    auto reader =
        readerOf<NavigationReader>(kHeader4 + "> EPH R01 L1OC\nR01 what\n    ever\n" + known + "> NEW L01 XNAV\n" +
                                   "> EPH R99 L1OC\nR99\n" + known + "> ION I05 L1NV\n    1\n");
    EXPECT_EQ(recordsOf(reader).size(), 2U);
    EXPECT_THAT(reader.skipped(), testing::ElementsAre(std::pair("EPH R L1OC", 2), std::pair("ION I L1NV", 1),
                                                       std::pair("NEW L XNAV", 1)));
}

TEST(NavigationReader, HeaderOfEveryVersion) {
    const auto old = readerOf<NavigationReader>(
        navigationVersion("2.10", "N: GPS NAV DATA", " ") +
        record("    0.1118D-07  .7451D-08 -0.5960D-07", "ION ALPHA") +
        record("   -.133179128170D-06 .107469588780D-12    552960     1025", "DELTA-UTC: A0,A1,T,W") +
        record("  2009     4     1    0.158790498972E-06", "CORR TO SYSTEM TIME") + record("what", "NEW LABEL") +
        record("    13", "LEAP SECONDS") + endOfHeader());
    const TimeSystemCorrection& utc = old.header().timeSystems.at(0);
    const TimeSystemCorrection& glonass = old.header().timeSystems.at(1);
    EXPECT_EQ(old.header().ionosphere.at(0).type + utc.type + glonass.type, "GPSAGPUTGLUT");
    EXPECT_EQ(old.header().ionosphere.at(0).parameters, (std::array{0.1118e-7, 0.7451e-8, -0.596e-7, 0.0}));
    EXPECT_EQ(values(utc.a0, utc.a1, utc.secondsOfWeek, utc.week, glonass.week, glonass.secondsOfWeek),
              values(-.13317912817e-6, .10746958878e-12, 552960, 1025, 1525, 3 * 86400));
    EXPECT_TRUE(old.header().unknownRecords == 1 && old.header().leapSeconds->seconds == 13);

    const auto beidou = readerOf<NavigationReader>(
        navigationVersion("3.05") + record("     4     5   829     7BDS", "LEAP SECONDS") + endOfHeader());
    const LeapSecondRecord& leap = *beidou.header().leapSeconds;
    EXPECT_TRUE(leap.seconds == 18 && leap.future == 19 && leap.week == 2185 && leap.day == 7);
}

TEST(NavigationReader, HeadersThatAreRefused) {
    EXPECT_EQ(story(""), "! f: the file is empty");
    EXPECT_EQ(story(navigationVersion("3.05")), "! f:1: END OF HEADER is missing");
    EXPECT_EQ(story(endOfHeader()), "! f:1: the first line is no RINEX VERSION / TYPE record");
    EXPECT_EQ(story(navigationVersion("3.05", "GLONASS")),
              "! f:1: RINEX VERSION / TYPE: this is no navigation file but \"GLONASS\"");
    EXPECT_EQ(story(navigationVersion("3.05") + record("", std::string(21, 'X'))),
              "! f:2: a header line has 80 columns; this one goes on behind them");
}

TEST(NavigationReader, DamageAnywhereComesToAnEnd) {
    expectEnd(kHeader4 + numberedRecords(), 3, story);
}

/// A file with these records as text; the number of those left out.
std::pair<std::string, std::uint64_t> written(const NavigationHeader& header,
                                              const std::vector<NavigationRecord>& records) {
    const TemporaryFolder folder;
    NavigationWriter writer;
    EXPECT_TRUE(writer.open(folder.path("nav"), header));
    for (const NavigationRecord& record : records) EXPECT_TRUE(writer.write(record));
    EXPECT_TRUE(writer.close()) << writer.error().text();
    return {readFile(folder.path("nav")), writer.unwritten()};
}

TEST(NavigationWriter, WhatIsWrittenIsReadAsItWas) {
    const auto records = recordsOf(kHeader4 + numberedRecords());
    ASSERT_EQ(records.size(), 17U);
    NavigationHeader header;
    header.leapSeconds = LeapSecondRecord{18, 19, 2185, 7};
    header.ionosphere.push_back({"BDSB", {1.1878e5, 0.0, -3.67e6, 1.0}, 'X', 40});
    header.timeSystems.push_back({"GAGP", -1.2514647096e-9, 1.199040867e-14, 518400, 2191, "E11", 5});

    const auto [text3, unwritten3] = written(header, records);
    EXPECT_EQ(unwritten3, 10U) << "two CNAV, three B-CNAV, five that are no ephemeris";
    auto reader = readerOf<NavigationReader>(text3);
    const IonosphereCorrection& beta = reader.header().ionosphere.at(0);
    const TimeSystemCorrection& offset = reader.header().timeSystems.at(0);
    EXPECT_EQ(values(beta.parameters[2], beta.timeMark, beta.satellite, offset.a1, offset.utcId, offset.week),
              values(-3.67e6, 'X', 40, 1.199040867e-14, 5, 2191));
    EXPECT_EQ(offset.source, "E11");
    EXPECT_EQ(recordsOf(reader).size(), 7U);
    EXPECT_EQ(text3.substr(0, text3.find("END OF HEADER")).substr(81 + 80),
              "BDSB   1.1878e+05  0.0000e+00 -3.6700e+06  1.0000e+00 X 40  IONOSPHERIC CORR\n"
              "GAGP -1.2514647096e-09 1.199040867e-14 518400 2191 E11    5 TIME SYSTEM CORR\n"
              "    18    19  2185     7                                    LEAP SECONDS\n" +
                  std::string(60, ' '));
    header.version = 4.0;
    const auto [text4, unwritten4] = written(header, records);
    EXPECT_EQ(unwritten4, 0U);
    EXPECT_EQ(recordsOf(text4), records);
}

TEST(NavigationWriter, WhatHasNoPlaceInItsColumns) {
    Gps unnamed, endless, tiny;
    unnamed.satId = 33;
    endless.satId = tiny.satId = 1;
    endless.crs = 1e100;
    tiny.crs = 1e-120;
    tiny.af0 = -0.5;
    const auto [text, unwritten] = written({}, {unnamed, endless, tiny});
    EXPECT_EQ(unwritten, 2U);
    EXPECT_EQ(text.substr(text.find("END OF HEADER\n") + 14, 162),
              "G01 1980 01 06 00 00 00-5.000000000000e-01 0.000000000000e+00 0.000000000000e+00\n"
              "     0.000000000000e+00 0.000000000000e+00 0.000000000000e+00 0.000000000000e+00\n");
}

}  // namespace
}  // namespace halvex::rinex
