#include <fmt/format.h>

#include <cstdlib>
#include <filesystem>
#include <iostream>

#include "formats/rinex/EpochBuilder.h"
#include "formats/rinex/ObservationReader.h"
#include "halvex/status/SatelliteSystemDisablingHelper.h"
#include "tools/halvex/Program.h"
#include "tools/halvex/Tool.h"
#include "tools/halvex/sets/StationSet.h"

namespace halvex::tool {
namespace {

namespace fs = std::filesystem;

class DemoFolder {
public:
    DemoFolder() {
        std::string name = (fs::temp_directory_path() / "halvex-demo-XXXXXX").string();
        if (mkdtemp(name.data()) == nullptr) throw Failure(name + ": the folder cannot be made");
        m_path = name;
    }
    ~DemoFolder() {
        std::error_code ignored;
        fs::remove_all(m_path, ignored);
    }
    DemoFolder(const DemoFolder&) = delete;
    DemoFolder& operator=(const DemoFolder&) = delete;
    [[nodiscard]] const fs::path& path() const { return m_path; }

private:
    fs::path m_path;
};

/// Runs a subcommand as a user would, after showing it.
void run(const std::vector<std::string>& arguments) {
    std::string line = "$ halvex";
    for (const std::string& argument : arguments) line += " " + argument;
    std::cout << line << std::endl;
    if (runProgram(arguments) != 0) throw Failure("the demo ends here");
    std::cout << std::endl;
}

/// Reads two files side by side; how many values they have in common. Failure at the first difference.
std::uint64_t compareValues(const std::string& left, const std::string& right) {
    rinex::ObservationReader readers[2];
    if (!readers[0].open(left)) throw Failure(readers[0].error());
    if (!readers[1].open(right)) throw Failure(readers[1].error());
    rinex::EpochBuilder builders[2] = {rinex::EpochBuilder(readers[0].header()),
                                       rinex::EpochBuilder(readers[1].header())};
    CHalvexStationObservation stations[2];
    std::uint64_t values = 0;
    for (;;) {
        bool more[2] = {};
        for (std::size_t i = 0; i < 2; ++i) {
            rinex::ObservationEpoch epoch;
            const auto result = readers[i].next(epoch);
            if (result == rinex::ObservationReader::Result::error) throw Failure(readers[i].error());
            more[i] = result == rinex::ObservationReader::Result::epoch && builders[i].build(epoch, -1, stations[i]);
            if (i == 0) {
                for (const auto& value : epoch.values) values += more[0] && value.present ? 1U : 0U;
            }
        }
        if (more[0] != more[1] || (more[0] && !(stations[0] == stations[1]))) {
            throw Failure(fmt::format("{} and {} differ at {}", left, right, formatTime(epochTime(stations[0]))));
        }
        if (!more[0]) return values;
    }
}

void demo() {
    // The same on every machine: with all systems, whatever an operator has switched off.
    CSatelliteSystemDisablingHelper::SetSatSystemDisableMask(0, false);
    const DemoFolder folder;
    const fs::path before = fs::current_path();
    fs::current_path(folder.path());
    run({"simulate", "--out", "SIMU.rnx", "--hours", "24", "--interval", "30"});
    run({"archive", "SIMU.rnx", "--out", "archive", "--span", "daily"});
    const std::string set = "archive/SIMU00XXX_R_20210010000_01D_30S_MO";
    run({"info", set});
    run({"replay", set, "--from", "2021-01-01T23:58"});
    run({"replay", set, "--rinex", "again.rnx"});
    const std::uint64_t values = compareValues("SIMU.rnx", "again.rnx");
    fs::current_path(before);
    std::cout << "SIMU.rnx and again.rnx: every epoch, satellite and value alike, " << values << " values" << std::endl;
}

}  // namespace

void addDemoCommand(CLI::App& app) {
    CLI::App* command = addCommand(
        app, "demo", "the main job in a temporary folder: simulate, archive, look, replay, compare", "halvex demo");
    command->callback([] { demo(); });
}

}  // namespace halvex::tool
