#include <fmt/format.h>

#include <chrono>
#include <iostream>
#include <memory>
#include <optional>

#include "halvex/files/DecoupledFileWrite.h"
#include "halvex/platform/kernix/Monitor.h"
#include "halvex/platform/kernix/MonitorExport.h"
#include "tools/halvex/Program.h"
#include "tools/halvex/Tool.h"

namespace halvex::tool {
namespace {

struct Options {
    std::string out = "-";
    double every = 1.0;
};

void run(const Options& options, const std::vector<std::string>& arguments) {
    if (arguments.empty() || arguments.front().starts_with('-')) {
        throw Failure("metrics: which subcommand? halvex metrics --help has an example", Failure::kWrongUsage);
    }
    // Held to the end, so that the last export still shows what the writer has done.
    CDecoupledFileWriteHandle handle;
    static_cast<void>(handle.GetRealPointer());
    int status = 0;
    if (options.out == "-") {
        status = runProgram(arguments);
        std::cout << CMonitorTree::getInstance().openMetrics();
    } else {
        if (const std::error_code error = CMonitorExport::Write(options.out)) {
            throw Failure(fmt::format("{}: cannot be written: {}", options.out, error.message()));
        }
        constexpr double kMilliseconds = 1000.0;
        const auto interval = std::chrono::milliseconds(static_cast<std::int64_t>(options.every * kMilliseconds));
        const CMonitorExport exporter(options.out, interval);
        status = runProgram(arguments);
    }
    if (status != 0) throw Ended{status};
}

}  // namespace

void addMetricsCommand(CLI::App& app) {
    auto options = std::make_shared<Options>();
    CLI::App* command = addCommand(
        app, "metrics",
        "run another subcommand, given behind the options, and export its monitoring tree (OpenMetrics text)",
        "halvex metrics --out halvex.prom --every 5 archive day.rnx --out archive --async");
    command->add_option("--out", options->out,
                        "file that is replaced at every interval and at the end, - for standard output at the end [-]");
    command->add_option("--every", options->every, "seconds between two exports [1]")->check(CLI::Range(0.01, 86400.0));
    command->prefix_command();
    command->callback([options, command] { run(*options, command->remaining()); });
}

}  // namespace halvex::tool
