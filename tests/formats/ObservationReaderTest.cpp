#include "formats/rinex/ObservationReader.h"

#include <fmt/format.h>
#include <gtest/gtest.h>
#include <sys/resource.h>

#include <algorithm>

#include "formats/rinex/SatelliteName.h"
#include "tests/formats/Gzip.h"
#include "tests/formats/RinexText.h"

namespace halvex::rinex {
namespace {

using namespace test;
using Result = ObservationReader::Result;

std::string header3() {
    return version("3.05") + record("G    2 C1C L1C", "SYS / # / OBS TYPES") +
           record("S    1 C1C", "SYS / # / OBS TYPES") + endOfHeader();
}

std::string header2(const std::string& types, const std::string& number = "2.11", const std::string& system = "M") {
    return version(number, system) + record(types, "# / TYPES OF OBSERV") + endOfHeader();
}

/// All that the reader gives, a word for each thing, so that a test states it in one line.
std::string story(ObservationReader& reader, std::size_t most = 10000) {
    std::string text;
    ObservationEpoch epoch;
    auto result = Result::end;
    for (std::size_t i = 0; i < most && (result = reader.next(epoch)) != Result::end; ++i) {
        if (result == Result::error) {
            text += "! " + reader.error().text() + '\n';
            continue;
        }
        text += result == Result::event ? "event " : "epoch ";
        text += std::to_string(static_cast<int>(epoch.flag)) + " at " + std::to_string(epoch.line);
        for (const auto& satellite : epoch.satellites) {
            text += ' ' + satelliteName(satellite.id);
            for (const ObservedValue& v : epoch.valuesOf(satellite)) {
                text += v.present ? fmt::format("={}", v.value) : "=-";
                if (v.lossOfLock != 0 || v.signalStrength != 0) {
                    text += '/' + std::to_string(v.lossOfLock) + std::to_string(v.signalStrength);
                }
            }
        }
        text += '\n';
    }
    return text;
}

std::string story(ObservationReader&& reader) {
    return story(reader);
}

const char* const kEpoch3 = "> 2024 07 08 00 00  1.0000000  0  2\n";

TEST(ObservationReader, FieldsOfVersion3) {
    EXPECT_EQ(story(readerOf(header3() + kEpoch3 +
                             "G05         1.50017        -2.000 8\n"
                             "S58         3.000\n"
                             "> 2024  7  8  0  0  2.0000000  1  3      -0.000000012345\n"
                             "G 1         0.0002               35 \n"
                             "G02\n"
                             "G03              48         9.000\n"
                             "> 2024 07 08 00 00  3.0000000  6  0\n\n  \n")),
              "epoch 0 at 5 G05=1.5/17=-2/08 S58=3\n"
              "epoch 1 at 8 G01=-/20=-/35 G02=-=- G03=-/48=9\n"
              "epoch 6 at 12\n");
}

TEST(ObservationReader, EpochLine) {
    ObservationEpoch epoch;
    auto three = readerOf(header3() + "> 2024 12 31 23 59 60.9999999  0  0       .123456789012\n");
    ASSERT_EQ(three.next(epoch), Result::epoch);
    EXPECT_NEAR(epoch.time.GetDifferenceInSeconds(SMjdTime(2025, 1, 1, 0, 0, 0.9999999)), 0.0, 1e-10);
    EXPECT_EQ(epoch.clockOffset, 0.123456789012);

    auto two = readerOf(header2("     1    C1") + " 80  1  6  0  0  0.0000000  0  0" + std::string(36, ' ') +
                        "-.123456789\n" + " 79  1  6  0  0  0.0000000  0  0\n");
    ASSERT_EQ(two.next(epoch), Result::epoch);
    EXPECT_EQ(epoch.time, SMjdTime(1980, 1, 6, 0, 0, 0.0));
    EXPECT_EQ(epoch.clockOffset, -0.123456789);
    ASSERT_EQ(two.next(epoch), Result::epoch);
    EXPECT_EQ(epoch.time, SMjdTime(2079, 1, 6, 0, 0, 0.0));
    EXPECT_EQ(epoch.clockOffset, std::nullopt);
}

TEST(ObservationReader, Version2ContinuesSatellitesAndFields) {
    std::string text = header2("     6    C1    L1    C2    L2    D1    S1", "2.10", "G");
    text += " 05  4  2  0  0  0.0000000  0 13G 1 02 03G04G05G06G07G08G09G10G11G12\n" + std::string(32, ' ') + "R13\n";
    std::string want = "epoch 0 at 4";
    for (int i = 1; i <= 13; ++i) {
        text += "        10.000          20.0001                         40.000          50.000 5\n        60.000\n";
        want +=
            std::string(i == 13 ? " R" : " G") + (i < 10 ? "0" : "") + std::to_string(i) + "=10=20/10=-=40=50/05=60";
    }
    EXPECT_EQ(story(readerOf(text)), want + '\n');
}

TEST(ObservationReader, EventsChangeTheHeader) {
    auto reader = readerOf(header2("     1    C1") + "                            4  3\n" +
                           record("     2    C1    P2", "# / TYPES OF OBSERV") + record("anything", "COMMENT") +
                           record("     2     2     1   G 9", "WAVELENGTH FACT L1/2") +
                           " 05  3 24 13 10 50.0000000  3  2\n" + record("NEW MARK", "MARKER NAME") +
                           record("         .5            .0            .0   ", "ANTENNA: DELTA H/E/N") +
                           "                            4  1\n" + record("only words", "COMMENT") +
                           " 05  3 24 13 11  0.0000000  0  1G05\n" + "         1.000           2.000\n");
    EXPECT_EQ(story(reader, 3), "event 4 at 4\nevent 3 at 8\nevent 4 at 11\n");
    EXPECT_EQ(reader.header().wavelengthFactors.at(9), (std::array{2, 2}));
    EXPECT_EQ(reader.header().markerName, "NEW MARK");
    EXPECT_EQ(reader.header().antennaDelta->front(), 0.5);
    EXPECT_EQ(reader.headerChanges(), 2U) << "not by words alone";
    EXPECT_EQ(story(reader), "epoch 0 at 13 G05=1=2\n");
}

TEST(ObservationReader, ScaleFactorsOfAnEventAndABadEvent) {
    EXPECT_EQ(story(readerOf(header3() + ">                              4  1\n" +
                             record("G  100   1 L1C", "SYS / SCALE FACTOR") +
                             "> 2024 07 08 00 00  1.0000000  0  1\nG05       150.000       150.000\n"
                             ">                              4  2\n" +
                             record("G    1 C5Q", "SYS / # / OBS TYPES") + record("G    2 C5Q", "SYS / # / OBS TYPES") +
                             "> 2024 07 08 00 00  1.0000000  0  1\nG05       150.000       150.000\n")),
              "event 4 at 5\nepoch 0 at 7 G05=150=1.5\n"
              "! f:11: SYS / # / OBS TYPES: 1 announced entries are missing\n"
              "epoch 0 at 12 G05=150=1.5\n");
}

/// Every fault is told with its line, and the epochs behind it are read.
TEST(ObservationReader, FaultsAndWhereItGoesOn) {
    const std::string good3 = "> 2024 07 08 00 00  9.0000000  0  1\nS20         1.000\n";
    using Row = std::pair<std::string, const char*>;
    const auto expectFault = [](const std::string& header, const Row& row, const std::string& good, const char* want) {
        const auto& [text, error] = row;
        const auto line = std::ranges::count(header + text, '\n') + 1;
        EXPECT_EQ(story(readerOf(header + text + good)),
                  "! f:" + std::string(error) + "\nepoch 0 at " + std::to_string(line) + want);
    };
    const std::string one3 = "> 2024 07 08 00 00  1.0000000  0  1\n";
    const Row rows3[] = {
        {"> 2024 10 310 0 00  1.0000000  0  2\n", "5: the fields of the epoch's time are not where they belong"},
        {"> 2024 13 08 00 00  1.0000000  0  0\n", "5: the epoch's time \"2024 13 08 00 00  1.0000000\" is none"},
        {"> 2024 07 08 00 00  1.0000000  0 -1\n", "5: the count \" -1\" behind the epoch flag is none"},
        {"G05\n", "5: an epoch line begins with \">\""},
        {one3 + "G45\n", "6: satellite G45: GPS has satellites 1 to 32"},
        {"> 2024 07 08 00 00  1.0000000  0  2\nG05\nG05\n", "7: satellite G05 stands twice in this epoch"},
        {one3 + "G05         1.000        1 .000\n", "6: G05: columns 20 to 33: \"      1 .000\" is no number"},
        {one3 + "G05         1.0008\n", "6: G05: column 18: loss-of-lock indicator \"8\" is not 0 to 7"},
        {one3 + "G05         1.000                     zzz\n",
         "6: G05: column 36: text behind the last field: \"   zzz\""},
        {"> 2024 07 08 00 00  1.0000000  0  2\nG05         1.000\n",
         "7: the epoch of line 5 ends early: 1 of 2 satellites"},
    };
    for (const Row& row : rows3) expectFault(header3(), row, good3, " S20=1\n");

    const std::string good2 = " 05  3 24 13 10  9.0000000  0  1G07\n         7.000\n";
    const Row rows2[] = {
        {" 05  3 24 13 10  1.0000000  0  1G05G06\n         5.000\n", "4: more satellites than the 1 counted"},
        {" 05  3 24 13 10  1.0000000  0  2G05G06\n         5.000\n",
         "6: G06: columns 1 to 14: \" 05  3 24 13 1\" is no number"},
        {" 05  3 24 13 10  1.0000000  0 13G01G02G03G04G05G06G07G08G09G10G11G12\n         5.000\n",
         "5: the satellite list does not go on here"},
        {" 05  3 24 13 10  1.0000000  0  1G05\n         5.000           6.000\n",
         "5: G05: column 17: text behind the last field: \"         6.000\""},
    };
    for (const Row& row : rows2) expectFault(header2("     1    C1"), row, good2, " G07=7\n");
}

TEST(ObservationReader, FilesThatEndEarly) {
    const std::pair<std::string, const char*> rows[] = {
        {header3() + kEpoch3 + "G05         1.000\n", "6: the file ends inside an epoch: 1 of 2 satellites"},
        {header3() + ">                              4  2\n" + record("x", "COMMENT"),
         "6: the file ends inside an epoch: 1 of 2 header records"},
        {header2("     6    C1    L1    C2    L2    D1    S1") +
             " 05  3 24 13 10  1.0000000  0  2G05G06\n         1.000\n\n         1.000\n",
         "7: the file ends inside an epoch: 1 of 2 satellites"},
    };
    for (const auto& [text, error] : rows) EXPECT_EQ(story(readerOf(text)), "! f:" + std::string(error) + '\n');
}

/// 64 MB of epochs in 64 members of a compressed file: peak memory stays where the first epochs have brought it.
TEST(ObservationReader, MemoryDoesNotGrowWithTheFile) {
    std::string epochs, file = gzip(header3());
    while (epochs.size() < (1U << 20U)) epochs += std::string(kEpoch3) + "G05  23629347.915 8\nS20  23629347.915\n";
    const std::string member = gzip(epochs);
    for (int i = 0; i < 64; ++i) file += member;
    auto reader = readerOf(file);
    ObservationEpoch epoch;
    ASSERT_EQ(reader.next(epoch), Result::epoch);
    rusage before{}, after{};
    getrusage(RUSAGE_SELF, &before);
    std::size_t count = 1;
    while (reader.next(epoch) == Result::epoch) ++count;
    getrusage(RUSAGE_SELF, &after);
    EXPECT_GT(count, 500000U) << reader.error().text();
    EXPECT_LT(after.ru_maxrss - before.ru_maxrss, 4096) << "KiB";
}

TEST(ObservationReader, DamageAnywhereComesToAnEnd) {
    const std::string epoch = std::string(kEpoch3) + "G05         1.50017        -2.000 8\nS58         3.000\n";
    expectEnd(header3() + epoch + ">                              4  1\n" +
                  record("G  100   1 L1C", "SYS / SCALE FACTOR") + epoch,
              6, [](const std::string& text) { return story(readerOf(text)); });
}

}  // namespace
}  // namespace halvex::rinex
