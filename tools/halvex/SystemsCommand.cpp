#include <fmt/format.h>

#include <algorithm>
#include <iostream>
#include <memory>

#include "tools/halvex/Tool.h"
#include "tools/halvex/systems/EnabledSystems.h"

namespace halvex::tool {
namespace {

using Switch = CSatelliteSystemDisablingHelper;

struct Options {
    std::string action;
    std::vector<std::string> systems;
    bool persist = false;
    bool json = false;
};

std::string lowerCase(std::string_view text) {
    std::string lower(text);
    std::transform(lower.begin(), lower.end(), lower.begin(),
                   [](unsigned char c) { return static_cast<char>(c >= 'A' && c <= 'Z' ? c - 'A' + 'a' : c); });
    return lower;
}

/// A system by its name or letter, upper or lower case.
CALN::eCALSATSYSTEM parseSystem(const std::string& text) {
    const std::string wanted = lowerCase(text);
    std::string names;
    for (const SatelliteSystem& system : kSatelliteSystems) {
        if (wanted == lowerCase(system.name) || wanted == lowerCase({&system.letter, 1})) return system.code;
        names += fmt::format("{}{} ({})", names.empty() ? "" : ", ", system.name, system.letter);
    }
    throw Failure("'" + text + "' is no satellite system: write one of " + names, Failure::kWrongUsage);
}

void change(const Options& options) {
    std::vector<CALN::eCALSATSYSTEM> systems;
    for (const std::string& text : options.systems) systems.push_back(parseSystem(text));
    for (const CALN::eCALSATSYSTEM system : systems) {
        Switch::SetSatSystemDisabled(system, options.action == "disable", false);
    }
    if (options.persist && !Switch::SetSatSystemDisableMask(Switch::GetSatSystemDisableMask(), true)) {
        throw Failure(
            "the change cannot be kept: the registry file (HALVEX_REGISTRY, else halvex/registry.info in the "
            "configuration folder) cannot be written");
    }
}

void show(const Options& options) {
    Table table({"system", "letter", "code", "state"}, "<<><");
    Json list = Json::array();
    for (const SatelliteSystem& system : kSatelliteSystems) {
        const bool enabled = !Switch::IsSatSystemDisabled(system.code);
        const std::string letter(1, system.letter);
        table.add({std::string(system.name), letter, std::to_string(system.code), enabled ? "enabled" : "disabled"});
        list.push_back({{"system", system.name}, {"letter", letter}, {"code", int{system.code}}, {"enabled", enabled}});
    }
    const bool changed = !options.action.empty();
    if (options.json) {
        Json json = {{"systems", list}, {"mask", Switch::GetSatSystemDisableMask()}};
        if (changed) json["persisted"] = options.persist;
        std::cout << json.dump() << "\n";
        return;
    }
    std::cout << table.text();
    if (changed && options.persist) std::cout << "Kept for every process that starts from now on.\n";
    if (changed && !options.persist) {
        std::cout << "For this process alone, which ends here; --persist keeps it for those to come.\n";
    }
}

}  // namespace

void addSystemsCommand(CLI::App& app) {
    auto options = std::make_shared<Options>();
    CLI::App* command = addCommand(app, "systems", "which satellite systems are in use, and switching them off and on",
                                   "halvex systems disable GLONASS QZSS --persist");
    command->add_option("ACTION", options->action, "disable or enable; without, the systems are listed")
        ->check(CLI::IsMember({"disable", "enable"}));
    command->add_option("SYSTEM", options->systems, "names or letters of systems");
    command->add_flag("--persist", options->persist,
                      "keep the change for all processes to come; without, it ends with this one");
    command->add_flag("--json", options->json, "as JSON");
    command->callback([options] {
        if (options->action.empty() && options->persist) {
            throw Failure("--persist keeps a change: say disable or enable, and what", Failure::kWrongUsage);
        }
        if (!options->action.empty() && options->systems.empty()) {
            throw Failure(options->action + " what? Name one system or more", Failure::kWrongUsage);
        }
        if (!options->action.empty()) change(*options);
        show(*options);
    });
}

}  // namespace halvex::tool
