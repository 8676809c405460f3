#include <gtest/gtest.h>

#include "tests/support/CapturedLog.h"
#include "tests/support/Environment.h"
#include "tests/tools/Station.h"

namespace halvex::test {
namespace {

/// An hour around a week's end, an epoch a minute: Saturday 23:30 to Sunday 00:29, in two daily sets.
class Replay : public testing::Test {
protected:
    Replay() : source(simulate(folder, "2021-01-02T23:30", "1", "60")) {
        const ToolRun run = runTool({"archive", source, "--out", folder.path("a")});
        EXPECT_EQ(run.status, 0) << run.err;
    }
    const TemporaryFolder folder;
    const std::string source;
    const std::string saturday = folder.path("a/SIMU00XXX_R_20210020000_01D_01M_MO");
    const std::string sunday = folder.path("a/SIMU00XXX_R_20210030000_01D_01M_MO");
};

TEST_F(Replay, FromAndTo) {
    // What it is; how many epochs, day and time of the first and the last.
    const std::tuple<const char*, const char*, const char*, const char*> rows[] = {
        {"before the first, after the last", "2021-01-01", "2021-02-01", "60 02T23:30 03T00:29"},
        {"between epochs", "2021-01-02T23:35:00.001", "2021-01-02T23:36:59.999", "1 02T23:36 02T23:36"},
        {"across an index entry", "2021-01-02 23:39", "2021-01-02 23:51", "13 02T23:39 02T23:51"},
        {"across the week's end", "2138:604740", "2139:60", "3 02T23:59 03T00:01"},
        {"a week before: its time of week is in the index", "2020-12-26T23:55", "2140:0", "60 02T23:30 03T00:29"},
        {"behind the last", "2021-01-03T00:29:00.001", "2140:0", "0"},
        {"the wrong way round", "2021-01-03", "2021-01-02", "0"},
    };
    for (const auto& [what, from, to, want] : rows) {
        const ToolRun run = runTool({"replay", saturday, sunday, "--json", "--from", from, "--to", to});
        EXPECT_EQ(run.status, 0) << what << run.err;
        std::string told = std::to_string(lines(run.out));
        for (const std::size_t at : {std::size_t{0}, run.out.rfind('\n', run.out.size() - 2) + 1}) {
            const std::string line = run.out.substr(at, run.out.find('\n', at) - at);
            if (!line.empty()) told += ' ' + json::parse(line)["time"].get<std::string>().substr(8, 8);
        }
        EXPECT_EQ(told, want) << what;
    }
}

TEST_F(Replay, RinexOfSeveralSetsIsTheSource) {
    const std::string again = folder.path("again.rnx");
    ASSERT_EQ(runTool({"replay", saturday + "t", sunday + "i", "--rinex", again}).status, 0);
    EXPECT_TRUE(bodyOf(again) == bodyOf(source));

    fs::remove(saturday + "h");
    fs::remove(sunday + "h");
    ASSERT_EQ(runTool({"replay", saturday, sunday, "--rinex", again}).status, 0);
    EXPECT_TRUE(bodyOf(again) == bodyOf(source)) << "without header files the preferred signals stand for all";

    fs::remove(again);
    EXPECT_EQ(runTool({"replay", saturday, "--from", "2021-01-03", "--rinex", again}).status, 1);
    EXPECT_FALSE(fs::exists(again));
}

TEST_F(Replay, RawIsTheBlocksOneAfterAnother) {
    std::string blocks;
    for (const Record& each : recordsOf(saturday)) blocks += each.block;
    ASSERT_EQ(runTool({"raw", saturday, folder.path("raw")}).status, 0);
    EXPECT_TRUE(readFile(folder.path("raw")) == blocks);

    for (const char* own : {"t", "i", "h"}) {
        const std::string before = readFile(saturday + own);
        EXPECT_EQ(runTool({"raw", saturday, saturday + own}).status, 2) << own;
        EXPECT_TRUE(readFile(saturday + own) == before) << own;
    }
}

TEST_F(Replay, TornLastRecordIsToldAndTheRestIsGiven) {
    const std::string whole = readFile(saturday + "t");
    const std::size_t last = whole.size() - recordsOf(saturday).back().block.size() - 10;
    for (const std::size_t left : {std::size_t{1}, std::size_t{10}, whole.size() - last - 1}) {
        writeFile(saturday + "t", whole.substr(0, last + left));
        const ToolRun run = runTool({"replay", saturday});
        EXPECT_TRUE(run.status == 1 && lines(run.out) == 29);
        EXPECT_EQ(run.err, "halvex: " + saturday + "t: byte " + std::to_string(last) +
                               ": the last record is cut off after " + std::to_string(left) +
                               " bytes; everything before it was replayed; the next append cuts it off\n");
        EXPECT_EQ(runTool({"info", saturday}).status, 1);
        EXPECT_EQ(runTool({"raw", saturday, folder.path("raw")}).status, 1);
    }
}

TEST_F(Replay, DamagedIndexCostsNothingButTime) {
    CapturedLog log;
    for (const std::string& index :
         {std::string(), std::string("\7\0\0\0", 4), std::string("\2\0\0\0garbage garbage garb", 25)}) {
        writeFile(saturday + "i", index);
        EXPECT_EQ(lines(runTool({"replay", saturday, "--from", "2021-01-02T23:50"}).out), 10U);
        EXPECT_EQ(readFile(saturday + "i"), index) << "looking at a set changes nothing";
    }
}

TEST_F(Replay, WhatIsNoSetIsToldInOneLine) {
    const std::string damaged = folder.path("damaged");
    const std::pair<std::string, const char*> rows[] = {
        {std::string("\3\0\0\0x", 5), "t: byte 0: version 3, this tool reads 2; the file is left as it is"},
        {std::string("\2\0\0", 3), "t: byte 0: ends inside the version word"},
        {std::string("\2\0\0\0\1\0\0\0\0\0\2\0\0\0xy", 16), "t: a block after epoch 0 is no station epoch"}};
    for (const auto& [timeInfo, message] : rows) {
        writeFile(damaged + "t", timeInfo);
        expectFault(runTool({"replay", damaged}), "halvex: " + damaged + message + "\n");
        EXPECT_EQ(readFile(damaged + "t"), timeInfo) << message;
    }
    fs::remove(damaged + "t");
    EXPECT_EQ(runTool({"replay", damaged}).err,
              "halvex: " + damaged + ": no such set: there is no file " + damaged + "t\n");
    writeFile(saturday + "h", "no header\n");
    EXPECT_TRUE(runTool({"replay", saturday}).err.starts_with("halvex: " + saturday + "h:1: "));
}

/// Takes nothing, as a pipe whose reader has gone.
class ClosedPipe final : public std::streambuf {};

TEST_F(Replay, ReaderThatGoesAwayIsWorthOneLine) {
    fs::create_directory(folder.path("tmp"));
    const ScopedVariable temporary("TMPDIR", folder.path("tmp").c_str());
    ClosedPipe pipe;
    const ToolRun run = runTool({"replay", saturday}, &pipe);
    expectFault(run, "halvex: standard output: cannot be written\n");
    EXPECT_EQ(filesIn(folder.path("tmp")), std::vector<std::string>()) << "nothing stays behind";
}

TEST(ReplayJson, AnEpochALine) {
    const TemporaryFolder folder;
    writeFile(folder.path("f"),
              version("3.05") + record("G    6 C1C C1W L1C D1C S1C L5X", "SYS / # / OBS TYPES") +
                  record("S    1 C1C", "SYS / # / OBS TYPES") + endOfHeader() +
                  "> 2021 01 01 00 00  0.5000000  0  2      -0.000123456789\n"
                  "G05  20000000.123    20000001.456   105000000.4561      -1234.567          45.250           5.5002\n"
                  "S44  38000000.001\n");
    ASSERT_EQ(runTool({"archive", folder.path("f"), "--out", folder.path("a"), "--site", "ABCD", "--site-number", "42"})
                  .status,
              0);
    const ToolRun run = runTool({"replay", folder.path("a/ABCD00XXX_R_20210010000_01D_00U_MO"), "--json"});
    ASSERT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(json::parse(run.out), json::parse(R"({
        "time": "2021-01-01T00:00:00.500", "week": 2138, "milliseconds": 432000500, "site": 42,
        "clockOffset": -0.000123456789,
        "satellites": {
            "G05": [{"C": 20000000.123, "P": 20000001.456, "phase": 105000000.456, "doppler": -1234.567, "cno": 45.25,
                     "lock": 0, "lossOfLock": true}, {}, {"phase": 5.5, "lock": 0}],
            "S44": [{"C": 38000000.001}, {}, {}]}})"));
}

}  // namespace
}  // namespace halvex::test
