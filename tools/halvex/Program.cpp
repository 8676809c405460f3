#include "tools/halvex/Program.h"

#include <exception>
#include <iostream>

#include "halvex/Version.h"
#include "tools/halvex/Tool.h"

namespace halvex::tool {

int runProgram(const std::vector<std::string>& arguments) {
    try {
        CLI::App app("halvex: a GNSS reference-station network's daily jobs on real data", "halvex");
        app.set_version_flag("--version", std::string("halvex ") + kVersion);
        app.require_subcommand(1);
        app.footer("Times are GPS time. Exit status: 0 done, 1 bad input, 2 wrong usage.");
        addArchiveCommand(app);
        addReplayCommand(app);
        addInfoCommand(app);
        addRawCommand(app);
        addNameCommand(app);
        addOrbitsCommand(app);
        addSkyCommand(app);
        addVisibilityCommand(app);
        addSimulateCommand(app);
        addMetricsCommand(app);
        addCorrectionsCommand(app);
        addSsrCommand(app);
        addNetworkCommand(app);
        addStatusCommand(app);
        addSystemsCommand(app);
        addNmeaCommand(app);
        addUrlCommand(app);
        addDemoCommand(app);
        try {
            app.parse(std::vector<std::string>(arguments.rbegin(), arguments.rend()));
        } catch (const CLI::ParseError& error) {
            const bool unknown =
                !arguments.empty() && !arguments.front().starts_with('-') && app.get_subcommands().empty();
            if (unknown)
                throw Failure("there is no subcommand '" + arguments.front() + "'; halvex --help lists them",
                              Failure::kWrongUsage);
            return app.exit(error, std::cout, std::cerr) == 0 ? 0 : Failure::kWrongUsage;
        }
        if (!std::cout.flush()) throw Failure("standard output: cannot be written");
        return 0;
    } catch (const Failure& failure) {
        std::cout.flush();
        std::cerr << "halvex: " << failure.what() << std::endl;
        return failure.status();
    } catch (const Ended& ended) {
        return ended.status;
    } catch (const std::exception& error) {
        std::cout.flush();
        std::cerr << "halvex: " << error.what() << std::endl;
        return Failure::kBadInput;
    }
}

}  // namespace halvex::tool
