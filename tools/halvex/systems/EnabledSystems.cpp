#include "tools/halvex/systems/EnabledSystems.h"

#include <iostream>

namespace halvex::tool {

using Switch = CSatelliteSystemDisablingHelper;

CLI::App* addSatelliteCommand(CLI::App& app, const std::string& name, const std::string& what,
                              const std::string& example) {
    CLI::App* command = addCommand(app, name, what, example);
    command->parse_complete_callback([] {
        std::string names;
        for (const std::string& system : disabledSystems()) names += (names.empty() ? "" : ", ") + system;
        if (!names.empty()) std::cerr << "halvex: disabled and left out: " << names << std::endl;
    });
    return command;
}

std::vector<std::string> disabledSystems() {
    std::vector<std::string> names;
    for (const SatelliteSystem& system : kSatelliteSystems) {
        if (Switch::IsSatSystemDisabled(system.code)) names.emplace_back(system.name);
    }
    return names;
}

void tellDisabledSystems(Json& json) {
    if (const auto names = disabledSystems(); !names.empty()) json["disabledSystems"] = names;
}

void leaveOutDisabled(rinex::ObservationEpoch& epoch) {
    std::erase_if(epoch.satellites, [](const auto& satellite) { return Switch::IsSatSystemDisabled(satellite.id); });
}

bool loadEnabled(CHalvexStationObservation& station, std::span<const unsigned char> block) {
    if (!station.loadData(block.data(), block.size())) return false;
    const std::int32_t mask = Switch::GetSatSystemDisableMask();
    if (mask != 0) station.RemovePrnTypes(static_cast<CPrnID::PrnTypeFlag>(mask));  // the same bits
    return true;
}

}  // namespace halvex::tool
