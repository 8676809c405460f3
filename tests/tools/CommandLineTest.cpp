#include <gtest/gtest.h>

#include "tests/support/Environment.h"
#include "tests/tools/Station.h"

namespace halvex::test {
namespace {

using Arguments = std::vector<std::string>;

TEST(CommandLine, WrongUsageGivesTwoAndOneReason) {
    const TemporaryFolder folder;
    const std::string file = folder.path("f");
    const std::string out = folder.path("a");
    writeFile(file, header() + epoch("00 00  0"));
    const Arguments rows[] = {
        {},
        {"archives"},
        {"archive", file},
        {"archive", file, "--out", out, "--span", "weekly"},
        {"archive", file, "--out", out, "--site-number", "0"},
        {"archive", file, "--out", out, "--site", "../X"},
        {"replay"},
        {"replay", file, "--json", "--rinex", "r"},
        {"replay", file, "--speed", "0"},
        {"replay", file, "--from", "yesterday"},
        {"replay", file, "--from", "2021-02-29"},
        {"replay", file, "--from", "2021-01-01T24:00"},
        {"replay", file, "--to", "2138:604800"},
        {"replay", file, "--to", "2138:nan"},
        {"raw", file},
        {"info"},
        {"name", "ABCD"},
        {"name", "ABCD", "2021-01-01", "--type", "weekly"},
        {"simulate"},
        {"simulate", "--out", file, "--hours", "-1"},
        {"simulate", "--out", file, "--interval", "nan"},
    };
    for (const Arguments& arguments : rows) {
        std::string what;
        for (const std::string& argument : arguments) what += argument + ' ';
        const ToolRun run = runTool(arguments);
        EXPECT_EQ(run.status, 2) << what;
        EXPECT_EQ(run.out, "") << what;
        EXPECT_NE(run.err, "") << what;
    }
    EXPECT_EQ(filesIn(folder.path("")), Arguments{"f"}) << "nothing is made";
}

TEST(CommandLine, EverySubcommandHelpsWithAnExample) {
    const std::string all = runTool({"--help"}).out;
    for (const std::string command : {"archive", "replay", "info", "raw", "name", "simulate", "demo"}) {
        EXPECT_NE(all.find("\n  " + command + " "), std::string::npos) << command;
        const ToolRun run = runTool({command, "--help"});
        EXPECT_EQ(run.status, 0);
        EXPECT_NE(run.out.find("Example:\n  halvex " + command), std::string::npos) << run.out;
    }
}

TEST(CommandLine, TimesInTheirForms) {
    const std::pair<const char*, const char*> rows[] = {
        {"2021-01-02T23:59:59.999", "ABCD00XXX_R_20210022359_01D\nabcd0020.21\n"},
        {"2021-01-02 23:59", "ABCD00XXX_R_20210022359_01D\nabcd0020.21\n"},
        {"2020-02-29", "ABCD00XXX_R_20200600000_01D\nabcd0600.20\n"},
        {"2138:604799.5", "ABCD00XXX_R_20210022359_01D\nabcd0020.21\n"},
        {"2139:0", "ABCD00XXX_R_20210030000_01D\nabcd0030.21\n"}};
    for (const auto& [time, name] : rows) EXPECT_EQ(runTool({"name", "abcd", time}).out, name) << time;
    EXPECT_EQ(runTool({"name", "ESBC00DNK", "2020-06-25T13:45", "--period", "01H", "--type", "hourly"}).out,
              "ESBC00DNK_R_20201771345_01H\nesbc177n.20\n");
}

TEST(CommandLine, SimulationIsTheSameEveryTime) {
    const TemporaryFolder folder;
    const auto simulated = [&](const char* seed) {
        EXPECT_EQ(runTool({"simulate", "--out", folder.path("f"), "--hours", "0.5", "--seed", seed}).status, 0);
        return readFile(folder.path("f"));
    };
    const std::string first = simulated("1");
    EXPECT_FALSE(simulated("2") == first);
    const CommaLocale comma;
    const ScopedVariable zone("TZ", "Pacific/Kiritimati");
    EXPECT_TRUE(simulated("1") == first);

    const ToolRun full = runTool({"simulate", "--out", "/dev/full"});
    EXPECT_EQ(full.status, 1);
    EXPECT_EQ(full.err, "halvex: /dev/full: cannot be written: No space left on device\n");
}

TEST(CommandLine, DemoDoesTheWholeJob) {
    const TemporaryFolder folder;
    const ScopedVariable temporary("TMPDIR", folder.path("").c_str());
    const ToolRun run = runTool({"demo"});
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_NE(run.out.find("every epoch, satellite and value alike"), std::string::npos) << run.out;
    EXPECT_EQ(filesIn(folder.path("")), Arguments()) << "nothing stays behind";
}

}  // namespace
}  // namespace halvex::test
