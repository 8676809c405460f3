#include <algorithm>
#include <cmath>
#include <iostream>
#include <memory>

#include "formats/rinex/NavigationWriter.h"
#include "formats/rinex/ObservationWriter.h"
#include "tools/halvex/Tool.h"
#include "tools/halvex/orbits/Site.h"
#include "tools/halvex/simulation/OwnConstellation.h"
#include "tools/halvex/simulation/Simulation.h"
#include "tools/halvex/systems/EnabledSystems.h"

namespace halvex::tool {

namespace {

struct Options {
    Simulation::Settings settings;
    std::vector<std::string> navigation;
    std::string out, navigationOut;
    std::string start, position;
    std::string atmosphere = "on";
    std::string noise = "on";
    double hours = 1.0;
    bool keepGoing = false;
};

/// The command line is checked as far as it can be before a file is made.
void checkUsage(const Options& options) {
    if (std::isnan(options.hours) || std::isnan(options.settings.interval)) {  // a range check lets these pass
        throw Failure("--hours and --interval are numbers", Failure::kWrongUsage);
    }
    if (options.out == options.navigationOut) {
        throw Failure("--out and --nav-out name the same file", Failure::kWrongUsage);
    }
    for (const std::string& file : options.navigation) {
        if (file == options.out || file == options.navigationOut) {
            throw Failure(file + ": the file is read, another name is needed to write", Failure::kWrongUsage);
        }
    }
}

std::unique_ptr<OrbitSource> orbitsFor(Options& options) {
    Simulation::Settings& settings = options.settings;
    if (!options.start.empty()) settings.start = parseTime(options.start);
    if (options.navigation.empty()) return std::make_unique<OwnConstellation>(settings.start);
    auto orbits = std::make_unique<FileOrbits>(options.navigation, options.keepGoing);
    if (options.keepGoing) std::cerr << orbits->files().text();
    const SMjdTime first = orbits->files().first();
    const SMjdTime last = orbits->files().last();
    if (options.start.empty()) settings.start = first;
    constexpr double kLongestUse = 4.0 * 3600.0;  // of an ephemeris, away from its reference time [s]
    const double late = settings.start.GetDifferenceInSeconds(last);
    const double early = first.GetDifferenceInSeconds(settings.start) - settings.duration;
    if (std::max(late, early) > kLongestUse) {
        throw Failure(options.navigation.front() + ": its ephemerides, " + formatTime(first) + " to " +
                      formatTime(last) + ", do not serve " + formatTime(settings.start));
    }
    return orbits;
}

void simulateToFiles(Simulation& simulation, const Options& options) {
    const bool withNavigation = !options.navigationOut.empty();
    rinex::ObservationWriter observations;
    rinex::NavigationWriter navigation;
    if (!observations.open(options.out, simulation.header())) throw Failure(observations.error());
    if (withNavigation && !navigation.open(options.navigationOut, simulation.navigationHeader())) {
        throw Failure(navigation.error());
    }
    const auto signals = [](const CALN::SCalSatID& satellite) { return rinex::preferredSignals(satellite.system); };
    Progress progress("simulating");
    CHalvexStationObservation station;
    for (std::uint64_t epoch = 0; simulation.next(station); ++epoch) {
        if (!observations.write(station, signals)) throw Failure(observations.error());
        if (withNavigation) {
            for (const rinex::NavigationRecord& ephemeris : simulation.newEphemerides()) {
                if (!navigation.write(ephemeris)) throw Failure(navigation.error());
            }
        }
        progress.update(epoch, simulation.epochs());
    }
    if (!observations.close()) throw Failure(observations.error());
    if (withNavigation && !navigation.close()) throw Failure(navigation.error());
    std::cerr << simulation.epochs() << " epochs, " << simulation.slips() << " cycle slips" << std::endl;
}

}  // namespace

void addSimulateCommand(CLI::App& app) {
    auto options = std::make_shared<Options>();
    CLI::App* command = addSatelliteCommand(
        app, "simulate", "make a station's RINEX files, the same on every machine",
        "halvex simulate --out SIMU.rnx --nav-out SIMU.nav --start 2021-01-01 --hours 24 --interval 30");
    command->add_option("--out", options->out, "observation file to write, - for standard output")->required();
    command->add_option("--nav-out", options->navigationOut,
                        "navigation file to write: the ephemerides that were used");
    command->add_option("--nav", options->navigation,
                        "navigation files whose satellites to take; without, a constellation of its own");
    command->add_flag("--keep-going", options->keepGoing, "pass over what is wrong in these, and say how much");
    command->add_option("--start", options->start,
                        "first epoch; without, 2021-01-01, or the first reference time of the navigation files");
    command->add_option("--hours", options->hours, "length")->check(CLI::Range(0.0, 8784.0))->capture_default_str();
    command->add_option("--interval", options->settings.interval, "seconds between epochs")
        ->check(CLI::Range(0.001, 86400.0))
        ->capture_default_str();
    command->add_option("--site", options->settings.site, "marker name")->capture_default_str();
    command->add_option("--position", options->position,
                        "of the site: LAT,LON,H (degrees, metres), X,Y,Z or an observation file that has it");
    command->add_option("--atmosphere", options->atmosphere, "delays by troposphere and ionosphere")
        ->check(CLI::IsMember({"on", "off"}))
        ->capture_default_str();
    command->add_option("--noise", options->noise, "of every kind of observation")
        ->check(CLI::IsMember({"on", "off"}))
        ->capture_default_str();
    command->add_option("--seed", options->settings.seed, "noise, ambiguities and slips follow from it")
        ->capture_default_str();
    command->callback([options] {
        checkUsage(*options);
        Simulation::Settings& settings = options->settings;
        settings.duration = options->hours * 3600.0;
        settings.atmosphere = options->atmosphere == "on";
        settings.noise = options->noise == "on";
        if (!options->position.empty()) {
            const CGeoCoord site = parseSite(options->position).position;
            settings.position = toCartesian({site.GetLatitude(), site.GetLongitude(), site.GetHeight()});
        }
        const std::unique_ptr<OrbitSource> orbits = orbitsFor(*options);
        Simulation simulation(settings, *orbits);
        simulateToFiles(simulation, *options);
    });
}

}  // namespace halvex::tool
