#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <thread>
#include <tuple>

#include "halvex/files/IndexedWrite.h"
#include "tests/formats/Gzip.h"
#include "tests/support/CapturedLog.h"
#include "tests/support/FileSizeLimit.h"
#include "tests/tools/Station.h"

namespace halvex::test {
namespace {

class Archive : public testing::Test {
protected:
    ToolRun archive(const std::string& file, const Arguments& more = {}) {
        return runTool(Arguments{"archive", file, "--out", out} + more);
    }
    const TemporaryFolder folder;
    const std::string out = folder.path("a");
    const std::string set = folder.path("a/ABCD00XXX_R_20210010000_01D_30S_MO");
};

TEST_F(Archive, SpansNamesAndStamps) {
    using Sets = std::vector<std::pair<const char*, std::size_t>>;
    const std::pair<const char*, Sets> rows[] = {
        {"daily", {{"20203660000_01D", 6}, {"20210010000_01D", 6}}},
        {"hourly", {{"20203662300_01H", 6}, {"20210010000_01H", 6}}},
        {"subhourly",
         {{"20203662330_15M", 3}, {"20203662345_15M", 3}, {"20210010000_15M", 3}, {"20210010015_15M", 3}}}};
    for (const auto& [span, sets] : rows) {
        fs::remove_all(out);
        const std::string source = simulate(folder, "2020-12-31T23:30", "1", "300");
        ASSERT_EQ(archive(source, {"--span", span}).status, 0);
        for (const auto& [name, epochs] : sets) {
            const std::string base = folder.path("a/SIMU00XXX_R_" + std::string(name) + "_05M_MO");
            const std::vector<Record> records = recordsOf(base);
            EXPECT_EQ(records.size(), epochs) << base;
            for (const Record& each : records) EXPECT_EQ(each.stamp, each.time);
            EXPECT_EQ(fs::file_size(base + "i"), 4U + 14U * ((epochs + 1) / 2)) << "an entry every ten minutes";
        }
        EXPECT_EQ(filesIn(out).size(), 4 * sets.size()) << span;
    }
}

TEST_F(Archive, ThroughTheAsynchronousWriterTheSameBytes) {
    CapturedLog log;
    const std::string first = simulate(folder, "2021-01-01", "1", "30");
    const std::string second = simulate(folder, "2021-01-01T00:30", "2", "30");
    const auto contents = [&](const std::vector<std::string>& more) {
        fs::remove_all(out);
        for (const std::string& source : {first, second}) EXPECT_EQ(archive(source, more).status, 0);
        std::vector<std::pair<std::string, std::string>> files;
        for (const auto& file : fs::directory_iterator(out)) {
            files.emplace_back(file.path().filename(), readFile(file.path()));
        }
        std::sort(files.begin(), files.end());
        return files;
    };
    EXPECT_TRUE(contents({"--async", "--span", "hourly"}) == contents({"--span", "hourly"}));

    const std::string metrics = folder.path("metrics");
    fs::remove_all(out);
    const ToolRun watched = runTool({"metrics", "--out", metrics, "archive", first, "--async", "--out", out});
    EXPECT_EQ(watched.status, 0) << watched.err;
    EXPECT_NE(readFile(metrics).find("{container=\"Queue/DecoupledFileWrite/High\",element=\"Out\"} 3\n"),
              std::string::npos);
    EXPECT_EQ(runTool({"metrics", "archive", folder.path("none"), "--out", out}).status, 1);

    fs::remove_all(out);
    const FileSizeLimit limit(10000);
    expectFault(archive(first, {"--async"}), "writes failed, see the log; remove the set");
}

TEST_F(Archive, NamesOfSeveralStations) {
    const auto file = [&](const char* name, const char* marker, const char* interval) {
        writeFile(folder.path(name), version("3.05", "G") + record(marker, "MARKER NAME") +
                                         record(interval, "INTERVAL") + record("G    1 C1C", "SYS / # / OBS TYPES") +
                                         endOfHeader() + epoch("00 00  0", ""));
        return folder.path(name);
    };
    const ToolRun run = runTool({"archive", file("ESBC12DNK_R_20201770000_01D_30S_MO.rnx", "OTHER", "    30.000"),
                                 file("abcd0010.21o", "OTHER", "     1.000"), file("f", "WXYZ01NLD", "     0.100"),
                                 file("g", "Ten-Ten", "   300.000"), file("h", "", ""), "--out", out});
    ASSERT_EQ(run.status, 0) << run.err;
    ASSERT_EQ(archive(folder.path("f"), {"--site", "site07DEU"}).status, 0);
    for (const char* name : {"ABCD00XXX_R_20210010000_01D_01S_GO", "ESBC12DNK_R_20210010000_01D_30S_GO",
                             "TENT00XXX_R_20210010000_01D_05M_GO", "UNKN00XXX_R_20210010000_01D_00U_GO",
                             "WXYZ01NLD_R_20210010000_01D_10Z_GO", "SITE07DEU_R_20210010000_01D_10Z_GO"}) {
        EXPECT_EQ(recordsOf(out + '/' + name).size(), 1U) << name;
    }
}

TEST_F(Archive, ASecondFileContinues) {
    writeFile(folder.path("1"), header() + epoch("00 00  0") + epoch("00 00 30"));
    writeFile(folder.path("2"), header() + epoch("00 00 30") + epoch("00 01  0") + epoch("00 01 30"));
    ASSERT_EQ(archive(folder.path("1")).status, 0);
    const std::string once = readFile(set + "t");
    const json report = jsonOf({"archive", folder.path("2"), "--out", out});
    EXPECT_TRUE(report["notLater"] == 1 && report["bad"] == 0) << report;
    EXPECT_TRUE(report["sets"][0]["set"] == set && report["sets"][0]["epochs"] == 2) << report;
    EXPECT_TRUE(readFile(set + "t").starts_with(once));
    EXPECT_EQ(recordsOf(set).size(), 4U);
}

/// Each fault with its message; what stands before it is archived, and with --keep-going what stands behind it too.
TEST_F(Archive, BadInput) {
    const std::string good = header() + epoch("00 00  0") + epoch("00 00 30");
    std::string packed = gzip(good + epoch("00 01  0"));
    packed.resize(packed.size() - 10);
    const std::tuple<std::string, const char*, std::size_t, std::size_t> rows[] = {
        {good + epoch("00 01  0").substr(0, 36), ":10: the file ends inside an epoch: 0 of 1 satellites", 2, 2},
        {good + epoch("00 01  0", "  20000000.x23") + epoch("00 01 30"),
         ":11: G05: columns 4 to 17: \"  20000000.x23\" is no number", 2, 3},
        {packed, ":10: the compressed file is cut off", 2, 2},
        {"", ": the file is empty", 0, 0},
    };
    const std::string file = folder.path("f");
    writeFile(folder.path("g"), header() + epoch("02 00  0"));
    for (const auto& [content, message, epochs, keptGoing] : rows) {
        fs::remove_all(out);
        fs::remove_all(folder.path("b"));
        writeFile(file, content);
        const ToolRun run = archive(file);
        expectFault(run, "halvex: " + file + message);
        EXPECT_EQ(recordsOf(set).size(), epochs) << message;

        const ToolRun going =
            runTool({"archive", file, folder.path("g"), "--out", folder.path("b"), "--keep-going", "--json"});
        EXPECT_TRUE(going.status == 0 && going.err == run.err) << going.err;
        EXPECT_EQ(json::parse(going.out)["bad"], 1) << message;
        EXPECT_EQ(recordsOf(folder.path("b/ABCD00XXX_R_20210010000_01D_30S_MO")).size(), keptGoing + 1) << message;
    }
}

TEST_F(Archive, PlacesThatCannotBeReadOrWritten) {
    const std::string file = folder.path("f");
    writeFile(file, header() + epoch("00 00  0"));
    fs::create_directory(out);
    fs::create_directory(set + "t");
    const std::tuple<std::string, std::string, std::string> rows[] = {
        {folder.path("none"), "a", folder.path("none") + ": cannot be opened: No such file or directory"},
        {folder.path(""), "a", folder.path("") + ": is a folder"},
        {file, "f/below", file + "/below: the folder cannot be made: Not a directory"},
        {file, "a", set + "t: the set cannot be opened: Is a directory"}};
    for (const auto& [input, into, message] : rows) {
        expectFault(runTool({"archive", input, "--out", folder.path(into)}), "halvex: " + message + '\n');
    }
}

TEST_F(Archive, SetOfAnotherVersionIsLeftAlone) {
    writeFile(folder.path("f"), header() + epoch("00 00  0"));
    const std::string content("\3\0\0\0something", 13);
    fs::create_directories(out);
    for (const char* file : {"", "t", "i"}) writeFile(set + file, content);
    expectFault(archive(folder.path("f")),
                set + "t: byte 0: version 3, this tool reads 2; the file is left as it is\n");
    for (const char* file : {"", "t", "i"}) EXPECT_EQ(readFile(set + file), content) << file;
}

TEST_F(Archive, SetThatAnotherOneWritesIsRefused) {
    writeFile(folder.path("f"), header() + epoch("00 00  0"));
    fs::create_directory(out);
    CIndexedWriteFile other;
    ASSERT_TRUE(other.Open(set.c_str(), false));
    expectFault(archive(folder.path("f")), set + ": another program writes this set; archive again when it is done\n");
    EXPECT_TRUE(recordsOf(set).empty());
    other.Close();
    EXPECT_EQ(archive(folder.path("f")).status, 0);
    EXPECT_EQ(recordsOf(set).size(), 1U);
}

/// Two archives alike: the records, and what the header file adds to them.
void expectSame(const TemporaryFolder& folder, const std::string& base, const std::string& whole) {
    EXPECT_TRUE(readFile(base + "t") == readFile(whole + "t"));
    ASSERT_EQ(runTool({"replay", base, "--rinex", folder.path("left")}).status, 0);
    ASSERT_EQ(runTool({"replay", whole, "--rinex", folder.path("right")}).status, 0);
    EXPECT_TRUE(readFile(folder.path("left")) == readFile(folder.path("right")));
}

class ArchiveBroken : public Archive {
protected:
    ArchiveBroken() : source(simulate(folder, "2021-01-01", "0.5", "30")) {
        EXPECT_EQ(runTool({"archive", source, "--out", folder.path("whole")}).status, 0);
    }
    const std::string source;
    const std::string name = "/SIMU00XXX_R_20210010000_01D_30S_MO";
    const std::string whole = folder.path("whole") + name;
    const std::string base = out + name;
};

TEST_F(ArchiveBroken, FullDisk) {
    CapturedLog log;
    for (const rlim_t size : {1U, 2U, 500U, 3000U, 10000U, 50000U, 100001U}) {
        fs::remove_all(out);
        ToolRun run;
        {
            const FileSizeLimit limit(size);
            run = archive(source);
        }
        expectFault(run, "File too large");
        const std::size_t kept = recordsOf(base).size();
        EXPECT_GE(kept, size > 10000 ? size / 3500 - 2 : 0) << size;
        EXPECT_EQ(lines(runTool({"replay", base}).out), kept) << size;

        EXPECT_EQ(archive(source).status, 0) << size;
        expectSame(folder, base, whole);
    }
}

/// The archiver reads what the test feeds it through a pipe, and is killed when some of it has reached the disk.
TEST_F(ArchiveBroken, KilledArchiver) {
    const std::string text = readFile(source);
    const std::string pipe = folder.path("pipe");
    for (const double part : {0.3, 0.55, 0.9}) {
        fs::remove_all(out);
        fs::remove(pipe);
        ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
        const pid_t child = ::fork();
        ASSERT_GE(child, 0);
        if (child == 0) {
            runTool({"archive", pipe, "--out", out});
            ::_exit(0);
        }
        std::ofstream feed(pipe, std::ios::binary);
        const auto fed = static_cast<std::size_t>(part * static_cast<double>(text.size()));
        feed.write(text.data(), static_cast<std::streamsize>(fed)).flush();
        const auto enough = static_cast<std::size_t>(part * 0.5 * static_cast<double>(recordsOf(whole).size()));
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
        while (recordsOf(base).size() < enough && std::chrono::steady_clock::now() < deadline)
            std::this_thread::yield();
        EXPECT_GE(recordsOf(base).size(), enough);
        ::kill(child, SIGKILL);
        int status = 0;
        ASSERT_EQ(::waitpid(child, &status, 0), child);
        EXPECT_TRUE(WIFSIGNALED(status));
        EXPECT_LT(recordsOf(base).size(), recordsOf(whole).size());

        CapturedLog log;
        const ToolRun run = archive(source);
        EXPECT_EQ(run.status, 0) << run.err;
        expectSame(folder, base, whole);
    }
}

/// Standard input has no name and no size; --site or the marker names the station.
TEST_F(ArchiveBroken, StandardInput) {
    const int before = ::dup(STDIN_FILENO);
    const int input = ::open(source.c_str(), O_RDONLY | O_CLOEXEC);
    ASSERT_GE(::dup2(input, STDIN_FILENO), 0);
    const ToolRun run = archive("-", {"--site", "PIPE"});
    ::dup2(before, STDIN_FILENO);
    ::close(before);
    ::close(input);
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_TRUE(readFile(folder.path("a/PIPE00XXX_R_20210010000_01D_30S_MOt")) == readFile(whole + "t"));
}

}  // namespace
}  // namespace halvex::test
