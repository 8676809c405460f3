#pragma once

#include <span>
#include <string>
#include <vector>

#include "formats/rinex/ObservationEpoch.h"
#include "halvex/observations/HalvexStationObservation.h"
#include "halvex/status/SatelliteSystemDisablingHelper.h"
#include "tools/halvex/Tool.h"

/// Satellites of systems that an operator has switched off are left out where they come in, so that no subcommand has
/// to think of it: of observation files and archived epochs here, of orbits in OrbitFiles and OwnConstellation.
namespace halvex::tool {

/// A subcommand that reads satellites: before it runs, a line on standard error names the disabled systems, if any.
CLI::App* addSatelliteCommand(CLI::App& app, const std::string& name, const std::string& what,
                              const std::string& example);

/// Names of the disabled systems.
[[nodiscard]] std::vector<std::string> disabledSystems();
/// Adds these to a report as "disabledSystems", if there are any.
void tellDisabledSystems(Json& json);

/// Takes the satellites of disabled systems out of an epoch.
void leaveOutDisabled(rinex::ObservationEpoch& epoch);
/// Loads an archived epoch without them; false when the block is none.
[[nodiscard]] bool loadEnabled(CHalvexStationObservation& station, std::span<const unsigned char> block);

}  // namespace halvex::tool
