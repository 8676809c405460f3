#include <gtest/gtest.h>

#include <cmath>
#include <map>

#include "halvex/platform/caln/Frequency.h"
#include "halvex/platform/caln/FrequencyMgr.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/tools/Station.h"
#include "tools/halvex/signals/Atmosphere.h"
#include "tools/halvex/signals/SignalPath.h"
#include "tools/halvex/simulation/OwnConstellation.h"
#include "tools/halvex/simulation/Simulation.h"

namespace halvex::test {
namespace {

class Corrections : public testing::Test {
protected:
    std::string station(const std::string& name, const std::string& position, const std::string& seed) {
        const std::string file = folder.path(name);
        const ToolRun run =
            runTool({"simulate", "--out", file, "--nav-out", nav, "--hours", "0.05", "--interval", "1", "--site",
                     name + "00XXX", "--position", position, "--seed", seed, "--noise", "off"});
        EXPECT_EQ(run.status, 0) << run.err;
        return file;
    }
    const TemporaryFolder folder;
    const std::string nav = folder.path("nav");
};

struct Delays {
    double geometric = 0.0;
    double ionospheric = 0.0;  // of a phase on the system's first carrier
};

Delays delaysAt(const ORBIT_GEOGRAPHIC& site, const rinex::NavigationRecord& ephemeris, const CALN::SCalSatID& id,
                double gpsSeconds) {
    const ORBIT_COORD position = toCartesian(site);
    const auto path = tool::signalPath(ephemeris, gpsSeconds, position);
    const auto [elevation, azimuth] = LocalFrame(position).directionTo(path->from);
    double wavelength = 0.0;
    EXPECT_TRUE(CALN::CCalFrequencyMgr::getInstance().getWavelength(id, slotBand(id.system, 0).frequency, wavelength));
    const double scale = std::pow(wavelength * CALN::getCarrierFrequency(CALN::eCALFREQUENCY_L1), 2.0) /
                         (tool::kSpeedOfLight * tool::kSpeedOfLight);
    return {tool::troposphereDelay(site, elevation),
            -scale * tool::klobucharDelay(tool::kSimulatedIonosphere, site, elevation, azimuth, gpsSeconds)};
}

TEST_F(Corrections, OfSimulatedStationsAreTheirAtmosphere) {
    constexpr double kDegree = 3.14159265358979323846 / 180.0;
    const std::string master = station("AAAA", "55.0,8.0,50", "1");
    const std::string other = station("BBBB", "55.05,8.03,250", "2");
    const std::string frames = folder.path("rtcm");
    const json report = jsonOf({"corrections", "--master", master, "--aux", other, "--nav", nav, "--rtcm", frames});
    EXPECT_EQ(report["commonEpochs"], 180);
    EXPECT_EQ(report["stations"][0]["slips"], 0) << "simulated slips are reported ones";
    EXPECT_NEAR(report["auxiliaries"][0]["distance"], 5891.0, 5.0);
    ASSERT_EQ(report["epochs"].size(), 179U) << "the first one only sets the start";

    tool::OwnConstellation orbits(SMjdTime(2021, 1, 1, 0, 0, 0.0));
    std::size_t compared = 0;
    for (const json& epoch : report["epochs"]) {
        // What all satellites of a system have in common counts as the receivers' clocks.
        std::map<CALN::eCALSATSYSTEM, std::vector<Delays>> errors;
        const double seconds = epoch["secondsOfWeek"];
        const SMjdTime t(2138, seconds);
        for (const auto& [name, difference] : epoch["satellites"].items()) {
            const CALN::SCalSatID id(systemOfLetter(name[0])->code,
                                     static_cast<unsigned char>((name[1] - '0') * 10 + name[2] - '0'));
            const rinex::NavigationRecord* ephemeris = orbits.serving(id, t);
            ASSERT_NE(ephemeris, nullptr);
            const double gpsSeconds = t.GetGpsSeconds();
            const Delays a = delaysAt({55.0 * kDegree, 8.0 * kDegree, 50.0}, *ephemeris, id, gpsSeconds);
            const Delays b = delaysAt({55.05 * kDegree, 8.03 * kDegree, 250.0}, *ephemeris, id, gpsSeconds);
            errors[id.system].push_back({difference["geometric"].get<double>() - (b.geometric - a.geometric),
                                         difference["ionospheric"].get<double>() - (b.ionospheric - a.ionospheric)});
        }
        ASSERT_EQ(errors.size(), 4U) << epoch;
        for (const auto& [system, list] : errors) {
            Delays mean;
            for (const Delays& each : list) {
                mean.geometric += each.geometric / static_cast<double>(list.size());
                mean.ionospheric += each.ionospheric / static_cast<double>(list.size());
            }
            for (const Delays& each : list) {
                // Files have thousandths of a cycle, messages half millimetres.
                ASSERT_NEAR(each.geometric, mean.geometric, 0.002) << static_cast<int>(system) << " at " << seconds;
                ASSERT_NEAR(each.ionospheric, mean.ionospheric, 0.002) << static_cast<int>(system) << " at " << seconds;
                ++compared;
            }
        }
    }
    EXPECT_GT(compared, 15U * 179U);

    const json sent = jsonOf({"network", frames, "--rtcm-time", "2021-01-01"});
    std::size_t messages = 0;
    for (const json& message : sent["messages"]) {
        if (!message.contains("time")) continue;
        const json& epoch = report["epochs"][messages++ / 2];  // GPS and GLONASS of each
        for (const json& satellite : message["satellites"]) {
            const json& want = epoch["satellites"][satellite["satellite"].get<std::string>()];
            ASSERT_NEAR(satellite["geometric"], want["geometric"].get<double>(), 1e-9);
            ASSERT_NEAR(satellite["ionospheric"], want["ionospheric"].get<double>(), 1e-9);
        }
    }
    EXPECT_EQ(messages, 2 * report["epochs"].size());
}

TEST_F(Corrections, PositionsThatCannotBeAreRefused) {
    const std::string master = station("AAAA", "55.0,8.0,50", "1");
    const std::string other = station("BBBB", "55.05,8.03,80", "2");
    const Arguments arguments{"corrections", "--master", master, "--aux", other, "--nav", nav, "--position"};
    expectFault(runTool(arguments + Arguments{"55.0,8.0,50", "--position", "55.06,8.03,80"}),
                "BBBB00XXX: the pseudoranges miss its position by some ");
    EXPECT_EQ(runTool(arguments + Arguments{"1,2,3"}).status, 2);
}

}  // namespace
}  // namespace halvex::test
