#include <cmath>

#include "tests/support/Environment.h"
#include "tests/tools/Station.h"
#include "tools/halvex/orbits/BroadcastOrbit.h"
#include "tools/halvex/signals/Atmosphere.h"
#include "tools/halvex/simulation/OwnConstellation.h"
#include "tools/halvex/simulation/Simulation.h"

namespace halvex::test {
namespace {

constexpr double kLight = 299792458.0;

double product(const ORBIT_COORD& a, const ORBIT_COORD& b) {
    return a.x * b.x + a.y * b.y + a.z * b.z;
}
ORBIT_COORD minus(const ORBIT_COORD& a, const ORBIT_COORD& b) {
    return {a.x - b.x, a.y - b.y, a.z - b.z};
}
SMjdTime later(SMjdTime t, double seconds) {
    t.AddSeconds(seconds);
    return t;
}

/// What a user makes of a navigation file, with the library's positions and other formulas than the tool's: the
/// clock's relativity is -2 r v / c^2, the Earth's turn a correction of the distance.
struct Sky {
    std::map<CALN::SCalSatID, std::map<SMjdTime, std::array<double, 2>>> clocks;  // by reference time
    std::map<CALN::SCalSatID, int> channels;
    tool::OrbitFiles files;

    explicit Sky(const std::string& file) : files(false, SMjdTime(), [this](const auto& record) { take(record); }) {
        files.read({file});
    }
    void take(const rinex::NavigationRecord& record) {
        const CALN::SCalSatID id = tool::satelliteOf(record);
        auto& clock = clocks[id][tool::referenceTimeOf(record)];
        const auto read = [&](const auto& r) {
            if constexpr (requires { r.af0; }) clock = {r.af0, r.af1};
            if constexpr (requires { r.tauN; }) clock = {-r.tauN, r.gammaN};
            if constexpr (requires { r.tauN; }) channels[id] = r.frequencyNumber;
        };
        std::visit(read, record);
    }
    [[nodiscard]] auto serving(const CALN::SCalSatID& id, const SMjdTime& t) {
        return files.calculator().GetEngine().GetSatPosition(id, t).value();
    }
    [[nodiscard]] ORBIT_COORD place(const CALN::SCalSatID& id, const SMjdTime& t) { return serving(id, t).position; }
    /// Pseudorange without noise and atmosphere.
    [[nodiscard]] double range(const CALN::SCalSatID& id, const SMjdTime& t) {
        const ORBIT_COORD site = tool::Simulation::Settings().position;
        double range = 2.3e7;
        for (int i = 0; i < 4; ++i) {
            const ORBIT_COORD p = place(id, later(t, -range / kLight));
            range = std::sqrt(product(minus(p, site), minus(p, site))) +
                    7.2921151467e-5 / kLight * (p.x * site.y - p.y * site.x);
        }
        const SMjdTime sent = later(t, -range / kLight);
        const SMjdTime reference = serving(id, sent).referenceTime;
        const auto& [bias, drift] = clocks.at(id).at(reference);
        const ORBIT_COORD way = minus(place(id, later(sent, 0.5)), place(id, later(sent, -0.5)));
        const double relativity = id.system == CALN::eCALSATSYSTEM_GLONASS ? 0.0 : product(place(id, sent), way);
        const double clock = bias + drift * sent.GetDifferenceInSeconds(reference);
        return range - kLight * clock + 2.0 * relativity / kLight;
    }
};

/// How simulated observations differ from what a navigation file says: the worst code [m], phase (from a
/// whole number of cycles) and Doppler [Hz].
struct Fit {
    double code = 0.0, phase = 0.0, doppler = 0.0;

    Fit(const tool::Simulation::Settings& settings, tool::OrbitSource& orbits, const std::string& file) {
        tool::Simulation simulation(settings, orbits);
        Sky sky(file);
        const ORBIT_GEOGRAPHIC site = toGeographic(settings.position);
        std::map<int, int> counts;
        const auto worst = [](double& most, double difference) { most = std::max(most, std::abs(difference)); };
        for (CHalvexStationObservation station; simulation.next(station);) {
            const SMjdTime t(station.getGPSWeek(), station.getGPSFraction() / 1000.0);
            for (const auto& [id, clocks] : sky.clocks) {
                const CHalvexObservation* observed = nullptr;
                const auto type = static_cast<CPrnID::PrnType>(systemOfCode(id.system)->typeBit());
                if (!station.GetObservation(CPrnID(id.number, type), observed)) continue;
                EXPECT_TRUE(sky.serving(id, t).healthy);
                const double range = sky.range(id, t);
                const double rate = sky.range(id, later(t, 0.5)) - sky.range(id, later(t, -0.5));
                double neutral = 0.0, charged = 0.0;
                if (settings.atmosphere) {
                    const ORBIT_COORD place = sky.place(id, later(t, -0.08));
                    const auto [elevation, azimuth] = LocalFrame(settings.position, site).directionTo(place);
                    neutral = tool::troposphereDelay(site, elevation);
                    const double seconds = t.GetGpsSeconds();
                    charged = tool::klobucharDelay(tool::kSimulatedIonosphere, site, elevation, azimuth, seconds);
                }
                for (unsigned slot = 0; slot < 3; ++slot) {
                    double metres = 0.0, cycles = 0.0;
                    float hertz = 0.0F;
                    if (!observed->getPseudorangeC(slot, metres)) continue;
                    EXPECT_TRUE(observed->getPhase(slot, cycles, true) && observed->getDoppler(slot, hertz));
                    const double frequency = CALN::getCarrierFrequency(
                        slotBand(id.system, static_cast<int>(slot)).frequency, sky.channels[id]);
                    const double bent = charged * std::pow(1575.42e6 / frequency, 2);
                    ++counts[id.system];
                    worst(code, metres - range - neutral - bent);
                    worst(phase, std::remainder(cycles - (range + neutral - bent) * frequency / kLight, 1.0));
                    worst(doppler, hertz + rate * frequency / kLight);
                }
            }
        }
        for (const int system : {1, 2, 3, 5}) EXPECT_GT(counts[system], 4000) << system;
    }
};

struct Simulate : testing::Test {
    const TemporaryFolder folder;

    /// Files NAME.obs and NAME.nav.
    void run(const std::string& name, const Arguments& more) const {
        const std::string base = folder.path(name);
        EXPECT_EQ(runTool(Arguments{"simulate", "--out", base + ".obs", "--nav-out", base + ".nav"} + more).status, 0);
    }
    [[nodiscard]] std::string file(const std::string& name) const { return readFile(folder.path(name)); }
};

TEST_F(Simulate, ObservationsAndNavigationFitTogether) {
    // Over a week's end. What the second run reads it writes again: all is used.
    run("a", {"--start", "2021-01-02T21:50", "--hours", "12"});
    run("b", {"--start", "2021-01-02T21:50", "--hours", "12", "--nav", folder.path("a.nav"), "--atmosphere", "off"});
    EXPECT_TRUE(bodyOf(folder.path("a.nav")) == bodyOf(folder.path("b.nav")));
    EXPECT_EQ(lines(file("a.nav")), lines(file("b.nav")) + 2) << "one header has an ionosphere";

    tool::Simulation::Settings settings{
        .start = SMjdTime(2021, 1, 2, 21, 50, 0.0), .interval = 150.0, .duration = 43200.0};
    tool::OwnConstellation own(settings.start);
    tool::FileOrbits read({folder.path("a.nav")}, false);
    for (tool::OrbitSource* orbits : std::initializer_list<tool::OrbitSource*>{&own, &read}) {
        settings.atmosphere = orbits == &own;
        const Fit fit(settings, *orbits, folder.path("a.nav"));
        EXPECT_TRUE(fit.code > 0.29 && fit.code < 0.303) << fit.code;
        EXPECT_TRUE(fit.phase < 0.017 && fit.doppler < 0.1) << fit.phase << " " << fit.doppler;
    }
}

TEST_F(Simulate, EphemeridesHandOverWithoutAStep) {
    run("a", {"--start", "2016-12-31T20:00", "--hours", "12"});  // GLONASS lives through a leap second
    Sky sky(folder.path("a.nav"));
    EXPECT_TRUE(sky.clocks.size() == 102 && sky.files.json()["repeated"] == 0);
    for (const auto& [id, clocks] : sky.clocks) {
        const std::string name = std::to_string(id.system) + "/" + std::to_string(id.number);
        EXPECT_GE(clocks.size(), 7U) << name;
        for (auto b = std::next(clocks.begin()), a = clocks.begin(); b != clocks.end(); a = b++) {
            const double seconds = b->first.GetDifferenceInSeconds(a->first);
            EXPECT_NEAR(a->second[0] + a->second[1] * seconds, b->second[0], 1e-15) << name;
            ORBIT_COORD p[3];
            for (int i = 0; i < 3; ++i) p[i] = sky.place(id, later(a->first, seconds / 2.0 + 0.001 * (i - 2)));
            const ORBIT_COORD step = minus(minus(p[2], p[1]), minus(p[1], p[0]));
            EXPECT_LT(product(step, step), 1e-6) << name;
        }
    }
}

TEST_F(Simulate, AtmosphereAtTheZenith) {
    // By hand: of latitude and longitude 0 at two in the afternoon and at midnight; of 45 degrees and sea level.
    constexpr double kZenith = 1.5707963267948966;
    EXPECT_NEAR(tool::klobucharDelay(tool::kSimulatedIonosphere, {}, kZenith, 0.0, 50400.0), 4.9463, 1e-3);
    EXPECT_NEAR(tool::klobucharDelay(tool::kSimulatedIonosphere, {}, kZenith, 0.0, 0.0), 1.4996, 1e-3);
    EXPECT_NEAR(tool::troposphereDelay({kZenith / 2.0, 0.0, 0.0}, kZenith), 2.4070, 1e-3);
}

TEST_F(Simulate, TheSameSeedGivesTheSameBytes) {
    run("a", {});
    run("b", {"--seed", "2", "--hours", "2"});
    EXPECT_FALSE(file("b.obs").starts_with(file("a.obs")));
    EXPECT_TRUE(file("b.nav").starts_with(file("a.nav"))) << "orbits are no matter of seed or length";
    const CommaLocale comma;
    const ScopedVariable zone("TZ", "Pacific/Kiritimati");
    run("b", {"--seed", "1"});
    EXPECT_TRUE(file("a.obs") == file("b.obs") && file("a.nav") == file("b.nav"));
}

TEST_F(Simulate, WhatCannotBeIsRefused) {
    run("a", {});
    const std::string nav = folder.path("a.nav"), b = folder.path("b");
    const std::tuple<Arguments, int, const char*> rows[] = {
        {{"--nav-out", b}, 2, "name the same file"},
        {{"--nav", nav, "--nav-out", nav}, 2, "the file is read"},
        {{"--position", "91,0,0"}, 2, "no place on Earth"},
        {{"--nav", folder.path("a.obs")}, 1, "a.obs:1: "},
        {{"--nav", nav, "--start", "2021-01-04"}, 1, "do not serve 2021-01-04T00:00:00"},
        {{"--nav-out", "/dev/full", "--hours", "8"}, 1, "/dev/full: cannot be written: No space left on device\n"}};
    for (const auto& [more, status, why] : rows) {
        EXPECT_EQ(filesIn(folder.path("")).size(), 2U) << "nothing is made before " << why;
        expectFault(runTool(Arguments{"simulate", "--out", b} + more), why, status);
    }
}

}  // namespace
}  // namespace halvex::test
