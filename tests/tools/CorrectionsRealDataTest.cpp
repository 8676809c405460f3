#include <gtest/gtest.h>

#include <cmath>
#include <map>

#include "formats/rinex/SatelliteName.h"
#include "tests/formats/RealData.h"
#include "tests/tools/Station.h"
#include "tools/halvex/corrections/Baseline.h"
#include "tools/halvex/corrections/StationStream.h"

namespace halvex::test {
namespace {

/// Phases with their ambiguities by time of week and satellite: on the first carrier, auxiliary minus master [m].
using Phases = std::map<std::int64_t, std::map<std::string, std::pair<double, double>>>;  // with the wavelength

Phases phasesOf(const std::vector<std::string>& files, const std::vector<std::string>& navigation) {
    tool::FileOrbits orbits(navigation, false);
    Phases phases;
    for (int side = 0; side < 2; ++side) {
        tool::StationStream stream(files[static_cast<std::size_t>(side)], 1, false, std::nullopt);
        for (; stream.epoch() != nullptr; stream.advance()) {
            auto& epoch = phases[std::llround(stream.time().GetGpsSeconds())];
            const auto residuals = tool::residualsOf(*stream.epoch(), stream.time(), stream.position(), orbits, 0.0);
            for (const auto& [id, satellite] : residuals.satellites) {
                const auto& signal = satellite.signals[0];
                auto& [metres, wavelength] = epoch[rinex::satelliteName(id)];
                metres += side == 0 ? -signal.phaseMetres : signal.phaseMetres;
                wavelength = signal.wavelength;
            }
        }
    }
    return phases;
}

using CorrectionsRealData = RealData;

/// Largest differences that atmosphere and positions can make [m].
struct Bounds {
    double geometric, ionospheric;
    double step;  // of either from one epoch to the next
};

/// Master and auxiliary with the ephemerides for both, their distance [km], epochs.
void compare(const Arguments& files, const Arguments& navigation, double distance, std::size_t epochs,
             const Bounds& bounds) {
    const json report = jsonOf(Arguments{"corrections", "--master", files[0], "--aux", files[1], "--nav"} + navigation);
    EXPECT_NEAR(report["auxiliaries"][0]["distance"].get<double>() / 1000.0, distance, 0.005);
    EXPECT_EQ(report["stations"][0]["slips"], 0);
    ASSERT_EQ(report["epochs"].size(), epochs);

    Phases phases = phasesOf(files, navigation);
    struct Last {
        std::int64_t second;
        double geometric, ionospheric;
    };
    std::map<std::string, Last> lasts;
    std::size_t steps = 0;
    for (const json& epoch : report["epochs"]) {
        const auto second = static_cast<std::int64_t>(std::llround(epoch["secondsOfWeek"].get<double>()));
        std::map<char, std::pair<double, double>> firsts;  // of each system: sum, and difference of the input phases
        for (const auto& [name, difference] : epoch["satellites"].items()) {
            const double geometric = difference["geometric"];
            const double ionospheric = difference["ionospheric"];
            ASSERT_LT(std::abs(geometric), bounds.geometric) << name << " at " << second;
            ASSERT_LT(std::abs(ionospheric), bounds.ionospheric) << name << " at " << second;

            // Together the two are the difference of the first carrier's phases, less whole cycles and what all have.
            const auto [metres, wavelength] = phases[second][name];
            const auto [first, isFirst] = firsts.try_emplace(name[0], geometric + ionospheric, metres);
            if (!isFirst && name[0] != 'R') {
                const double sums = geometric + ionospheric - first->second.first;
                ASSERT_NEAR(std::remainder(sums - (metres - first->second.second), wavelength), 0.0, 0.0011)
                    << name << " at " << second;
            }

            const auto last = lasts.find(name);
            if (last != lasts.end() && second - last->second.second <= 30) {
                ASSERT_LT(std::abs(geometric - last->second.geometric), bounds.step) << name << " at " << second;
                ASSERT_LT(std::abs(ionospheric - last->second.ionospheric), bounds.step) << name << " at " << second;
                ++steps;
            }
            lasts[name] = {second, geometric, ionospheric};
        }
    }
    EXPECT_GT(steps, 5U * epochs);
}

TEST_F(CorrectionsRealData, BehaveAsPhysicsSays) {
    const Arguments streams{path("rtcm/week-rollover-STR17.rtcm3"), path("rtcm/week-rollover-STR24.rtcm3")};
    compare(streams, streams, 0.070, 1124, {0.12, 0.07, 0.06});
    const std::string first = path("obs/rinex2_2005092/07590920.05"), other = path("obs/rinex2_2005092/30400920.05");
    compare({first + "o", other + "o"}, {first + "n"}, 3.335, 119, {0.2, 0.12, 0.06});
}

}  // namespace
}  // namespace halvex::test
