#include <fmt/format.h>

#include <csignal>
#include <exception>

#include "halvex/Version.h"
#include "tools/halvex/Tool.h"

int main(int argc, char** argv) {
    using halvex::tool::Failure;
    std::signal(SIGPIPE, SIG_IGN);  // a reader that goes away is a failed write, told like any other
    std::signal(SIGXFSZ, SIG_IGN);  // and so is a file that has reached its limit
    try {
        CLI::App app("halvex: a GNSS reference-station network's daily jobs on real data");
        app.set_version_flag("--version", std::string("halvex ") + halvex::kVersion);
        app.require_subcommand(1);
        app.footer("Times are GPS time. Exit status: 0 done, 1 bad input, 2 wrong usage.");
        halvex::tool::addArchiveCommand(app);
        halvex::tool::addReplayCommand(app);
        halvex::tool::addInfoCommand(app);
        halvex::tool::addRawCommand(app);
        halvex::tool::addNameCommand(app);
        halvex::tool::addSimulateCommand(app);
        halvex::tool::addDemoCommand(app);
        try {
            app.parse(argc, argv);
        } catch (const CLI::ParseError& error) {
            return app.exit(error) == 0 ? 0 : Failure::kWrongUsage;
        }
        return 0;
    } catch (const Failure& failure) {
        fmt::print(stderr, "halvex: {}\n", failure.what());
        return failure.status();
    } catch (const std::exception& error) {
        fmt::print(stderr, "halvex: {}\n", error.what());
        return Failure::kBadInput;
    }
}
