#include <gtest/gtest.h>

#include "halvex/status/SatelliteSystemDisablingHelper.h"
#include "tests/support/CapturedLog.h"
#include "tests/support/Environment.h"
#include "tests/tools/Station.h"

namespace halvex::test {
namespace {

/// Systems switched in a registry of its own, all enabled before and after.
class Systems : public testing::Test {
protected:
    Systems() { CSatelliteSystemDisablingHelper::SetSatSystemDisableMask(0, false); }
    ~Systems() override { CSatelliteSystemDisablingHelper::SetSatSystemDisableMask(0, false); }
    TemporaryFolder m_folder;
    std::string m_registry = m_folder.path("registry");
    ScopedVariable m_place{"HALVEX_REGISTRY", m_registry.c_str()};
};

TEST_F(Systems, ListingAndSwitching) {
    const std::string all =
        "system   letter  code  state\nGPS      G          1  enabled\nGLONASS  R          2  enabled\n"
        "Galileo  E          3  enabled\nSBAS     S          4  enabled\nBeiDou   C          5  enabled\n"
        "QZSS     J          6  enabled\nNavIC    I          7  enabled\n";
    EXPECT_EQ(runTool({"systems"}).out, all);
    EXPECT_EQ(jsonOf({"systems", "disable", "glonass", "C"})["mask"], 0x12);
    EXPECT_NE(runTool({"systems", "enable", "R"}).out.find("For this process alone"), std::string::npos);
    EXPECT_EQ(readFile(m_registry), "(missing)");
    const json kept = jsonOf({"systems", "disable", "QZSS", "--persist"});
    EXPECT_TRUE(kept["mask"] == 0x30 && kept["persisted"] == true && kept["systems"][4]["enabled"] == false) << kept;
    EXPECT_NE(readFile(m_registry).find("long 48"), std::string::npos);

    const CapturedLog log;
    writeFile(m_registry, "key {");
    const ToolRun refused = runTool({"systems", "enable", "C", "--persist"});
    EXPECT_TRUE(refused.status == 1 && refused.out.empty() && lines(refused.err) == 1) << refused.err;
    EXPECT_EQ(readFile(m_registry), "key {");
}

TEST_F(Systems, EverySubcommandLeavesDisabledOnesOut) {
    const std::string obs = m_folder.path("obs"), nav = m_folder.path("nav"),
                      set = "/SIMU00XXX_R_20210010000_01D_30S_MO";
    ASSERT_EQ(runTool({"simulate", "--out", obs, "--nav-out", nav, "--hours", "0.1"}).status, 0);
    ASSERT_EQ(runTool({"archive", obs, "--out", m_folder.path("all")}).err, "");
    runTool({"systems", "disable", "GPS", "Galileo"});
    const std::string note = "halvex: disabled and left out: GPS, Galileo\n";
    const json names = {"GPS", "Galileo"};

    const ToolRun archive = runTool({"archive", obs, "--out", m_folder.path("some"), "--json"});
    EXPECT_TRUE(archive.err == note && json::parse(archive.out)["disabledSystems"] == names) << archive.err;
    const json info = jsonOf({"info", obs, m_folder.path("all" + set)});
    for (const json& file : info) {
        EXPECT_TRUE(file["disabledSystems"] == names && file["systems"].size() == 2 && !file["systems"].contains("G"));
    }
    EXPECT_EQ(runTool({"replay", m_folder.path("all" + set)}).out,
              runTool({"replay", m_folder.path("some" + set)}).out);
    const auto navigation = [&](const Arguments& arguments) {
        const ToolRun run = runTool(arguments + Arguments{"--site", "55.5,8.5,60", nav, "--json"});
        EXPECT_TRUE(run.status == 0 && run.err == note) << run.err;
        EXPECT_EQ(json::parse(run.out)["navigation"]["disabledSystems"], names) << run.out;
        return json::parse(run.out);
    };
    const json sky = navigation({"sky"});
    for (const json& satellite : sky["epochs"][0]["satellites"]) {
        EXPECT_TRUE(satellite["satellite"] >= "R" || satellite["satellite"] < "D") << satellite;
    }
    EXPECT_EQ(navigation({"visibility"})["epochs"][0]["counts"]["GPS"], 0);
    EXPECT_EQ(navigation({"sky", "--tracked", obs})["systems"].size(), 2U);
    EXPECT_NE(runTool({"orbits", nav}).out.find(" GPS (disabled)"), std::string::npos);
    for (const Arguments& source : {Arguments{}, Arguments{"--nav", nav, "--start", "2021-01-01"}}) {
        EXPECT_EQ(runTool(Arguments{"simulate", "--out", obs + "2", "--hours", "0.1"} + source).status, 0);
        const std::string text = bodyOf(obs + "2");
        EXPECT_TRUE(text.find("\nG0") == text.npos && text.find("\nR0") != text.npos);
    }
    const json status = jsonOf({"status", obs});
    EXPECT_TRUE(status["disabledSystems"] == names && status["systems"].size() == 2) << status;

    runTool({"systems", "enable", "GPS", "Galileo"});
    EXPECT_EQ(jsonOf({"info", m_folder.path("some" + set)})[0]["systems"].size(), 2U) << "never written";
}

/// Six GPS satellites, every 30 s, on two frequencies; a loss of lock of one of them at 2 min.
std::string sixSatellites() {
    std::string text = version("3.05") + record("ABCD", "MARKER NAME") +
                       record("G    4 C1C L1C C2W L2W", "SYS / # / OBS TYPES") + endOfHeader();
    const std::string values = "  20000000.123   105000000.456";
    for (int i = 0; i < 6; ++i) {
        text += "> 2021 01 01 00 0" + std::to_string(i / 2) + (i % 2 == 0 ? "  0" : " 30") + ".0000000  0  6\n";
        for (char satellite = '1'; satellite <= '6'; ++satellite) {
            text += std::string("G0") + satellite + values + "  " + values;
            text += i == 4 && satellite == '6' ? "1 \n" : "  \n";
        }
    }
    return text;
}

TEST(Status, OfAFile) {
    const TemporaryFolder folder;
    writeFile(folder.path("f"), sixSatellites());
    const json status = jsonOf({"status", folder.path("f")});
    EXPECT_EQ(status["changes"], json::parse(R"([
        {"time": "2021-01-01T00:01:00", "fixed": true, "stateChange": 1, "satellites": 6, "fixedSatellites": 6},
        {"time": "2021-01-01T00:02:00", "fixed": false, "stateChange": 0, "satellites": 6, "fixedSatellites": 5}])"));
    EXPECT_EQ(status["systems"]["GPS"], json::parse(R"({"satellites": 6, "fixed": 22,
        "first": {"code": 0, "phase": 12, "locked": 24}, "second": {"code": 0, "phase": 14, "locked": 22}})"));
    EXPECT_TRUE(status["epochs"] == 6 && status["fixedEpochs"] == 2 && status["changeCount"] == 2);
    EXPECT_EQ(jsonOf({"status", folder.path("f"), "--locked", "0"})["fixedEpochs"], 6);

    writeFile(folder.path("cut"), sixSatellites().substr(0, sixSatellites().size() - 68));
    const ToolRun cut = runTool({"status", folder.path("cut"), "--json"});
    EXPECT_TRUE(cut.status == 1 && json::parse(cut.out)["epochs"] == 5) << "what was good is told before the fault";
}

}  // namespace
}  // namespace halvex::test
