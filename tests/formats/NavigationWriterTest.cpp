#include "formats/rinex/NavigationWriter.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

#include "tests/formats/NavigationText.h"

namespace halvex::rinex {
namespace {

using Result = NavigationReader::Result;

/// A file with these records as text; the number of those left out.
std::pair<std::string, std::uint64_t> written(const NavigationHeader& header,
                                              const std::vector<NavigationRecord>& records) {
    std::string folder = (std::filesystem::temp_directory_path() / "halvex-nav-XXXXXX").string();
    EXPECT_NE(mkdtemp(folder.data()), nullptr);
    NavigationWriter writer;
    EXPECT_TRUE(writer.open(folder + "/nav", header));
    for (const NavigationRecord& record : records) EXPECT_TRUE(writer.write(record));
    EXPECT_TRUE(writer.close()) << writer.error().text();
    std::ifstream file(folder + "/nav");
    std::string text{std::istreambuf_iterator<char>(file), {}};
    std::filesystem::remove_all(folder);
    return {text, writer.unwritten()};
}

std::vector<NavigationRecord> recordsOf(NavigationReader reader) {
    std::vector<NavigationRecord> records;
    NavigationRecord record;
    while (reader.next(record) == Result::record) records.push_back(record);
    return records;
}

TEST(NavigationWriter, WhatIsWrittenIsReadAsItWas) {
    const auto records = recordsOf(
        test::navigationReaderOf(test::navigationVersion("4.00") + test::endOfHeader() + test::numberedRecords()));
    ASSERT_EQ(records.size(), 17U);
    NavigationHeader header;
    header.leapSeconds = LeapSecondRecord{18, 19, 2185, 7};
    header.ionosphere.push_back({"BDSB", {1.1878e5, 0.0, -3.67e6, 1.0}, 'X', 40});
    header.timeSystems.push_back({"GAGP", -1.2514647096e-9, 1.199040867e-14, 518400, 2191, "E11", 5});

    const auto [text3, unwritten3] = written(header, records);
    EXPECT_EQ(unwritten3, 10U) << "two CNAV, three B-CNAV, five that are no ephemeris";
    EXPECT_EQ(recordsOf(test::navigationReaderOf(text3)).size(), 7U);
    EXPECT_EQ(text3.substr(0, text3.find("END OF HEADER")).substr(81 + 80),
              "BDSB   1.1878e+05  0.0000e+00 -3.6700e+06  1.0000e+00 X 40  IONOSPHERIC CORR\n"
              "GAGP -1.2514647096e-09 1.199040867e-14 518400 2191 E11    5 TIME SYSTEM CORR\n"
              "    18    19  2185     7                                    LEAP SECONDS\n" +
                  std::string(60, ' '));
    header.version = 4.0;
    const auto [text4, unwritten4] = written(header, records);
    EXPECT_EQ(unwritten4, 0U);
    EXPECT_EQ(recordsOf(test::navigationReaderOf(text4)), records);
}

TEST(NavigationWriter, OneRecordAsText) {
    CALN::CALX_SAT_EPHEMERIS_GLONASS glonass;
    glonass.satId = 3;
    glonass.week = 1525;
    glonass.referenceSeconds = 3 * 86400 + 915.0;
    glonass.frameTime = 11700 - 900;
    glonass.tauN = 0.342596322298e-4;
    glonass.position = {2562112.30469, -25304867.6758, 1e-120};
    glonass.frequencyNumber = -3;
    const std::string want =
        "R03 2009 04 01 00 15 00-3.425963222980e-05 0.000000000000e+00 2.592000000000e+05\n"
        "     2.562112304690e+03 0.000000000000e+00 0.000000000000e+00 0.000000000000e+00\n"
        "    -2.530486767580e+04 0.000000000000e+00 0.000000000000e+00-3.000000000000e+00\n"
        "     0.000000000000e+00 0.000000000000e+00 0.000000000000e+00 0.000000000000e+00\n"
        "     0.000000000000e+00 0.000000000000e+00 0.000000000000e+00 0.000000000000e+00\n";
    CALN::CALX_SAT_EPHEMERIS unnamed, endless;
    unnamed.satId = 33;
    endless.satId = 1;
    endless.crs = 1e100;
    const auto [text, unwritten] = written({}, {unnamed, glonass, endless});
    EXPECT_EQ(text.substr(text.find("END OF HEADER\n") + 14), want);
    EXPECT_EQ(unwritten, 2U);
}

}  // namespace
}  // namespace halvex::rinex
