#include <fmt/format.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <sstream>
#include <tuple>

#include "formats/nmea/SentenceCheck.h"
#include "tests/support/Environment.h"
#include "tests/tools/Station.h"

namespace halvex::test {
namespace {

/// A sentence with its frame.
std::string framed(const std::string& inside) {
    unsigned sum = 0;
    for (const char c : inside) sum ^= static_cast<unsigned char>(c);
    return fmt::format("${}*{:02X}", inside, sum);
}

const std::string kCsv =
    "time, latitude, longitude, height, geoidSeparation, quality, satellites, hdop, age, station\n"
    "2020-06-25T12:00:30.25Z, 48.5, -11.25, 545.124, 47.5, 4, 9, 0.8, 1.5, 7\n"
    "\n"
    "2020-06-25T23:59:59.998, , , , , 0, , , ,\n";
const std::string kCsvAsGga =
    framed("GPGGA,120030.25,4830.0000000,N,01115.0000000,W,4,09,0.8000,497.624,M,47.500,M,1.50,0007") + "\r\n" +
    framed("GPGGA,000000.00,,,,,0,,,,,,,,0000") + "\r\n";

TEST(NmeaTool, PositionsBecomeSentences) {
    const TemporaryFolder folder;
    const CommaLocale comma;
    writeFile(folder.path("csv"), kCsv);
    EXPECT_EQ(runTool({"nmea", folder.path("csv")}).out, kCsvAsGga);

    // The same positions as JSON; GPS time is 18 s ahead of UTC, 17 s in 2016.
    writeFile(folder.path("json"),
              R"({"time":"2020-06-25T12:00:48.25","latitude":48.5,"longitude":-11.25,"height":545.124,"quality":3,)"
              R"("geoidSeparation":47.5,"satellites":9,"hdop":0.8,"age":1.5,"station":"7"})"
              "\n"
              R"({"time":"2016-12-31T23:59:47","quality":0,"results":null})");
    const ToolRun gps = runTool({"nmea", folder.path("json"), "--gps"});
    EXPECT_EQ(gps.out,
              kCsvAsGga.substr(0, kCsvAsGga.find('\n') + 1) + framed("GPGGA,235930.00,,,,,0,,,,,,,,0000") + "\r\n")
        << gps.err;

    writeFile(folder.path("all"),
              "time,latitude,longitude,results6,figure,coordinateQuality\n2020-06-25,0.0,9,6,2.5,0.25\n");
    const ToolRun all = runTool({"nmea", folder.path("all"), "--sentence", "LLQ,GGQ", "--sentence", "LMM", "--talker",
                                 "GN", "--hemisphere", "south"});
    EXPECT_NE(all.out.find("$GNLLQ,000000.00,062520,500000.000,M,10000000.000,M,1,00,0.2500,0.000,M*"), all.out.npos)
        << all.err;
    EXPECT_NE(all.out.find(",0.0000000000,6.0000000000*"), all.out.npos) << all.out;
    writeFile(folder.path("back"), all.out + gps.out);
    const ToolRun back = runTool({"nmea", "--check", folder.path("back"), "--json"});
    EXPECT_EQ(back.out, "{\"sentences\":5,\"kinds\":{\"GGA\":2,\"GGQ\":1,\"LLQ\":1,\"LMM\":1}}\n") << back.err;
}

TEST(NmeaTool, BadPositionsAreToldWithTheirLine) {
    const TemporaryFolder folder;
    const std::string head = "time,latitude,longitude,height\n";
    const std::pair<const char*, const char*> rows[] = {
        {"", "there are no positions in it"},
        {"lat,lon\n", ":1: neither JSON nor"},
        {"{\"time\":\"2020-06-25\",\"latitude\":1}", ":1: latitude or longitude is missing"},
        {"{\"time\":\"2020-06-25\",\"quality\":0}\n{", ":2: no object of JSON"},
        {"{\"results\":[0,0,0,0,0,0,0,0]}", ":1: there is no 'results7'"},
        {"H2020-06-25,1,2\n", ":2: 3 columns instead of 4"},
        {"H2020-06-25,1,2,3x\n", ":2: height cannot be '3x'"},
    };
    for (const auto& [text, why] : rows) {
        writeFile(folder.path("in"), *text == 'H' ? head + (text + 1) : text);
        expectFault(runTool({"nmea", folder.path("in")}), folder.path("in") + (*why == ':' ? "" : ": ") + why);
    }
    writeFile(folder.path("in"), head + "2020-06-25,0,90,3\n");
    for (const Arguments& bad : {Arguments{"--talker", "GPS"}, {"--sentence", "ZDA"}, {"--zone", "61"}, {"--json"}}) {
        EXPECT_EQ(runTool(Arguments{"nmea", folder.path("in")} + bad).status, 2) << bad.front();
    }
}

TEST(NmeaTool, FaultsOfSentences) {
    const std::string gga = "GPGGA,120030.25,4830.0000000,N,01115.0000000,W,4,09,0.8000,497.624,M,47.500,M,1.50,0007";
    const auto with = [&gga](const std::string& part, const std::string& other) {
        return framed(std::string(gga).replace(gga.find(part), part.size(), other));
    };
    const std::pair<std::string, const char*> rows[] = {
        {with("4830.0000000", "9000.0000000"), ""},
        {with("4830.0000000", "9000.0000001"), "field 2, latitude, cannot be"},
        {with(",N", ",E"), "field 3, hemisphere, cannot be 'E'"},
        {with("120030.25", "120030.100"), "field 1, time, cannot be"},
        {with(",09", ","), "field 7, number of satellites, is empty"},
        {with(",4,", ",0,"), "field 2, latitude, is '4830.0000000' although quality is 0"},
        {with(",0.8000", ",,"), "GGA has 14 fields, here are 15 (a negative HDOP"},
        {with("497.624", "nan"), "field 9, height, cannot be 'nan'"},
        {framed("GPGGQ,120030.25,022921,,,,,0,,,,"), "field 2, date, cannot be '022921'"},
        {framed("GPZDA,whatever"), ""},
        {framed(gga + "\x80"), "the byte 80 does not belong"},
        {"$" + gga + "*00", "its checksum is"},
        {"", "begins with '$'"},
    };
    for (const auto& [sentence, why] : rows) {
        const auto fault = nmea::faultOf(sentence);
        EXPECT_EQ(fault.has_value(), *why != '\0') << sentence << ": " << fault.value_or("");
        EXPECT_NE(fault.value_or("").find(why), std::string::npos) << sentence << ": " << fault.value_or("");
    }
    const TemporaryFolder folder;
    writeFile(folder.path("in"), framed(gga) + "\r\n\r\n" + framed("GPGGQ,") + "\r\n");
    expectFault(runTool({"nmea", "--check", folder.path("in")}),
                "halvex: " + folder.path("in") + ":3: GGQ has 11 fields, here are 1\n");
}

TEST(NmeaTool, GpsdReadsTheGga) {
    if (std::system("command -v gpsdecode >/dev/null 2>&1") != 0) GTEST_SKIP() << "gpsdecode is not installed";
    const TemporaryFolder folder;
    // It gives a position out once it has seen from two of them where an epoch ends.
    writeFile(folder.path("csv"),
              "time,latitude,longitude,height,geoidSeparation,quality,satellites,hdop\n"
              "2020-06-25T12:00:30,0,0,0,0,1,12,1.1\n"
              "2020-06-25T12:00:31,-48.123456789,171.987654321,45.5,-3.25,1,12,1.1\n");
    writeFile(folder.path("nmea"), runTool({"nmea", folder.path("csv")}).out);
    const std::unique_ptr<FILE, int (*)(FILE*)> pipe(
        popen(("gpsdecode < " + folder.path("nmea") + " 2>/dev/null").c_str(), "r"), pclose);
    ASSERT_NE(pipe, nullptr);
    std::string out;
    for (int c = std::fgetc(pipe.get()); c != EOF; c = std::fgetc(pipe.get())) out += static_cast<char>(c);
    nlohmann::json position;
    std::istringstream lines(out);
    for (std::string line; std::getline(lines, line);) {
        const auto report = nlohmann::json::parse(line, nullptr, false);
        if (report.is_object() && report.value("class", "") == "TPV" && report.contains("lat")) position = report;
    }
    ASSERT_TRUE(position.is_object()) << out;
    EXPECT_NEAR(position.value("lat", 0.0), -48.123456789, 3e-9);
    EXPECT_NEAR(position.value("lon", 0.0), 171.987654321, 3e-9);
    EXPECT_NEAR(position.value("altMSL", 0.0), 48.75, 1e-9);
    EXPECT_NEAR(position.value("geoidSep", 0.0), -3.25, 1e-9);
}

TEST(UrlTool, ExpandVerifyParse) {
    const std::tuple<Arguments, int, const char*> rows[] = {
        {{"expand", "%Y/%j/%S%j%H.%2yo", "--time", "2020-06-25T12:00", "--site", "ESBC"}, 0, "2020/177/ESBC177m.20o\n"},
        {{"expand", "%Y%q", "--time", "2111:0"}, 1, "%Y%q: byte 2: '%q' is no placeholder"},
        {{"verify", "%x%Y%2Y", "--letters", "x"}, 0, "valid, letters xY\n"},
        {{"parse", "%Y/%j", "2020/177"}, 0, "2020-06-26T00:00:00\n"},
        {{"parse", "%4G", "2111", "--time", "2111:5", "--json"},
         0,
         "{\"time\":\"2020-06-21T00:00:05\",\"week\":2111,\"seconds\":5.0}\n"},
        {{"parse", "%S", "ESBC"}, 1, "ESBC: no time comes out of it by %S"},
    };
    for (const auto& [arguments, status, out] : rows) {
        const ToolRun run = runTool(Arguments{"url"} + arguments);
        EXPECT_EQ(run.status, status) << out << run.err;
        EXPECT_EQ(run.out, status == 0 ? out : "");
        EXPECT_NE(run.err.find(status == 0 ? "" : out), std::string::npos) << run.err;
    }
}

}  // namespace
}  // namespace halvex::test
