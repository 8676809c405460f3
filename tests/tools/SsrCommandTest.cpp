#include <gtest/gtest.h>

#include "formats/rtcm3/Ssr.h"
#include "halvex/status/SatelliteSystemDisablingHelper.h"
#include "tests/formats/RtcmFrames.h"
#include "tests/support/Bytes.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/TestClock.h"
#include "tests/tools/Station.h"

namespace halvex::test {
namespace {

/// Clocks (1058) or, as GLONASS, none of its time (1064); orbits with clocks (1060). Zeros but for what is told.
std::string correction(unsigned number, int time, int issue, int provider, std::initializer_list<int> satellites,
                       int more = 0) {
    const bool orbits = number == 1060;
    const bool glonass = number == 1064;
    Bits bits;
    bits.add(number, 12).add(time, glonass ? 17 : 20).add(2, 4).add(more, 1);
    if (orbits) bits.add(0, 1);
    bits.add(issue, 4).add(provider, 16).add(5, 4).add(static_cast<std::int64_t>(satellites.size()), 6);
    for (const int satellite : satellites) {
        bits.add(satellite, glonass ? 5 : 6);
        if (orbits) bits.add(0, 64).add(0, 8 + 121 - 64);
        bits.add(-1, 64).add(0, 6);
    }
    return bits.frame();
}

/// From the end of a week on: a source with a gap of 15 s, an epoch of two messages and a new issue, one that falls
/// silent, and what is none.
std::string stream() {
    return correction(1064, 10797, 1, 7, {2}) + correction(1060, 604795, 1, 7, {1, 2}) +
           correction(1058, 604795, 1, 8, {3}) + correction(1060, 10, 1, 7, {1, 2}) +
           correction(1060, 15, 2, 7, {1}, 1) + correction(1060, 15, 2, 7, {2, 33}) + "noise" +
           Bits{{1058, 12}, {604801, 20}, {0, 60}}.frame() + Msm().frame();
}

json ssr(const Arguments& arguments) {
    const json reports = jsonOf(Arguments{"ssr"} + arguments);
    return reports.is_array() ? reports.at(0) : json();
}

TEST(Ssr, CoverageOfAStreamAndOfItsSet) {
    const TemporaryFolder folder;
    const std::string file = folder.path("a.rtcm3"), set = folder.path("out/a");
    writeFile(file, stream());
    const json found = ssr({file, "--rtcm-time", "2010:400000", "--archive", folder.path("out")});
    EXPECT_EQ(std::tuple(found["messages"], found["from"], found["time"], found["dateAssumed"]),
              std::tuple(10, "2018-07-21T23:59:55", "2018-07-22T00:00:15", false));
    ASSERT_EQ(found["sources"].size(), 2U);
    const json source = found["sources"][0];
    EXPECT_EQ(std::tuple(source["provider"], source["solution"]), std::tuple(7, 5));
    EXPECT_EQ(source["messages"][0], json::parse(R"({"system": "GPS", "type": 2, "corrections": "orbits, combined",
                                                     "messages": 4, "entries": 6})"));
    const json orbits = json::parse(R"({"satellites": ["G01", "G02"], "epochs": 3, "last": "2018-07-22T00:00:15",
        "age": 0.0, "worstAge": 15.0, "gapCount": 1, "gaps": [{"after": "2018-07-21T23:59:55", "seconds": 15.0}]})");
    EXPECT_EQ(source["systems"]["G"], (json{{"name", "GPS"},
                                            {"issueChanges", 1},
                                            {"validState", 3},
                                            {"complete", true},
                                            {"satellites", 2},
                                            {"orbits", orbits},
                                            {"clocks", orbits}}));
    // Ahead of all others, and of the day after the first of them.
    const json glonass = source["systems"]["R"]["clocks"];
    EXPECT_EQ(std::tuple(glonass["satellites"], glonass["last"]), std::tuple(json{"R02"}, "2018-07-22T00:00:15"));
    const json silent = found["sources"][1]["systems"]["G"];
    EXPECT_EQ(std::tuple(silent["validState"], silent["complete"], silent["clocks"]["worstAge"]),
              std::tuple(0, true, 20.0));
    const json& other = found["other"];
    EXPECT_EQ(std::tuple(other["bytes in no frame"], other["messages that are cut off or cannot be"],
                         other["satellites of no known number"], other["messages of other things"]),
              std::tuple(5, 1, 1, 1));

    json again = ssr({set + "i"});
    for (const char* own : {"messages", "from", "to", "time", "sources"}) EXPECT_EQ(again[own], found[own]) << own;
    EXPECT_NE(runTool({"ssr", set}).out.find("    GPS clocks: gap of 15 s after 2018-07-21T23:59:55\n"),
              std::string::npos);

    CSatelliteSystemDisablingHelper::SetSatSystemDisableMask(CALN::eCALSATSYSTEM_GPS, false);
    const json some = ssr({set}), same = ssr({file, "--rtcm-time", "2010:604000"});
    CSatelliteSystemDisablingHelper::SetSatSystemDisableMask(0, false);
    EXPECT_EQ(std::tuple(some["messages"], some["disabledSystems"]), std::tuple(1, json{"GPS"}));
    EXPECT_EQ(some["sources"], same["sources"]);
}

TEST(Ssr, ArchivedRecordsAreTheMessages) {
    const TemporaryFolder folder;
    writeFile(folder.path("a"), stream());
    ssr({folder.path("a"), "--rtcm-time", "2011:0", "--archive", folder.path("out")});
    rtcm3::FrameReader frames;
    ASSERT_TRUE(frames.open(folder.path("a")));
    rtcm3::SsrMessages read;
    std::string blocks;
    while (const auto frame = frames.next()) {
        if (!rtcm3::readSsr(*frame, SMjdTime(2011, 0.0), read)) continue;
        for (const CHalvexSSRCorr::Message& message : read.messages) {
            CHalvexUniqueSiteID site;
            site.setUniqueSSRBasedRTProductID(message->provider * 16U + 5U);
            const CHalvexSSRCorr record(site, message);
            for (const unsigned char byte : saved(record)) blocks += static_cast<char>(byte);
        }
    }
    EXPECT_EQ(readFile(folder.path("out/a")), blocks);  // of the three files the one of blocks alone
}

TEST(Ssr, WhatIsWrongIsOneLine) {
    const TemporaryFolder folder;
    const TestClock clock(2026, 11, 21);
    const std::string out = folder.path("out");
    writeFile(folder.path("a"), stream());
    writeFile(folder.path("msm"), Msm().frame());
    writeFile(folder.path("noise"), "no stream");
    ssr({folder.path("a"), "--rtcm-time", "2011:0", "--archive", out});
    writeFile(folder.path("cut") + "t", readFile(out + "/at") + "x");
    writeFile(folder.path("othert"), std::string("\2\0\0\0\1\0\0\0\0\0\2\0\0\0xy", 16));
    const std::tuple<const char*, std::vector<std::string>, std::string> rows[] = {
        {"no date", {folder.path("a"), "--archive", out}, "nothing in the stream tells its date"},
        {"the set exists", {folder.path("a"), "--rtcm-time", "2011:0", "--archive", out}, "out/at: is there already"},
        {"no corrections", {folder.path("msm"), "--archive", out}, "there are no corrections in the stream"},
        {"no stream", {folder.path("noise")}, "noise: byte 0: neither an RTCM 3 stream nor"},
        {"a set to archive", {out + "/a", "--archive", out}, "is a set already"},
        {"cut off", {folder.path("cut")}, "the last record is cut off after 1 bytes"},
        {"other records", {folder.path("other")}, " blocks are no correction messages"},
    };
    for (const auto& [what, arguments, reason] : rows) {
        SCOPED_TRACE(what);
        expectFault(runTool(Arguments{"ssr"} + arguments), reason);
    }
    // Without a date the days around now; nothing is hidden.
    const json assumed = ssr({folder.path("a")});
    EXPECT_EQ(std::tuple(assumed["dateAssumed"], assumed["time"]), std::tuple(true, "2026-11-22T00:00:15"));
}

}  // namespace
}  // namespace halvex::test
