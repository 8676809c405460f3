#include <cmath>
#include <iostream>
#include <memory>

#include "formats/rinex/ObservationWriter.h"
#include "tools/halvex/Simulation.h"
#include "tools/halvex/Tool.h"

namespace halvex::tool {

namespace {

void simulateToFile(const Simulation::Settings& settings, const std::string& name) {
    Simulation simulation(settings);
    rinex::ObservationWriter writer;
    if (!writer.open(name, simulation.header())) throw Failure(writer.error());
    const auto signals = [](const CALN::SCalSatID& satellite) { return rinex::preferredSignals(satellite.system); };
    Progress progress("simulating");
    CHalvexStationObservation station;
    for (std::uint64_t epoch = 0; simulation.next(station); ++epoch) {
        if (!writer.write(station, signals)) throw Failure(writer.error());
        progress.update(epoch, simulation.epochs());
    }
    if (!writer.close()) throw Failure(writer.error());
    std::cerr << simulation.epochs() << " epochs, " << simulation.slips() << " cycle slips" << std::endl;
}

}  // namespace

void addSimulateCommand(CLI::App& app) {
    struct Options {
        Simulation::Settings settings;
        std::string out;
        std::string start = "2021-01-01";
        double hours = 1.0;
    };
    auto options = std::make_shared<Options>();
    CLI::App* command =
        addCommand(app, "simulate", "make a station's RINEX observation file, the same on every machine",
                   "halvex simulate --out SIMU.rnx --start 2021-01-01 --hours 24 --interval 30");
    command->add_option("--out", options->out, "file to write, - for standard output")->required();
    command->add_option("--start", options->start, "first epoch")->capture_default_str();
    command->add_option("--hours", options->hours, "length")->check(CLI::Range(0.0, 8784.0))->capture_default_str();
    command->add_option("--interval", options->settings.interval, "seconds between epochs")
        ->check(CLI::Range(0.001, 86400.0))
        ->capture_default_str();
    command->add_option("--site", options->settings.site, "marker name")->capture_default_str();
    command->add_option("--seed", options->settings.seed, "noise, ambiguities and slips follow from it")
        ->capture_default_str();
    command->callback([options] {
        if (std::isnan(options->hours) || std::isnan(options->settings.interval)) {
            throw Failure("--hours and --interval are numbers",
                          Failure::kWrongUsage);  // a range check lets others pass
        }
        options->settings.start = parseTime(options->start);
        options->settings.duration = options->hours * 3600.0;
        simulateToFile(options->settings, options->out);
    });
}

}  // namespace halvex::tool
