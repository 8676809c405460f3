#pragma once

#include <cstdint>

#include "halvex/platform/Export.h"
#include "halvex/platform/caln/SatelliteSystem.h"
#include "halvex/platform/mdb/PrnIdZ9.h"

/// The installation-wide switch that takes whole satellite systems out of use. Decoders and processing ask it before
/// they use a satellite.
///
/// The mask has bit (system code - 1) set for a disabled system, the bit counted modulo 32: code 0 stands for bit 31.
/// It is kept in the registry, value "DisabledSatSystems" under "SOFTWARE\Tavro Ostwerk\GPS Halvex", and read from
/// there once in a process, when it is first asked for; a missing value is 0. Later changes by other processes are not
/// seen.
///
/// Any thread, without locks. Two threads that set systems one by one at the same time may lose one of the changes.
class HALVEX_EXPORT CSatelliteSystemDisablingHelper {
public:
    [[nodiscard]] static std::int32_t GetSatSystemDisableMask();
    /// Puts the mask in force in this process and, with `persist`, stores it for the others. False when that failed:
    /// the mask is in force all the same.
    static bool SetSatSystemDisableMask(std::int32_t mask, bool persist);

    [[nodiscard]] static bool IsSatSystemDisabled(int system);
    [[nodiscard]] static bool IsSatSystemDisabled(const CALN::SCalSatID& satellite);
    [[nodiscard]] static bool IsSatSystemDisabled(const MDB::CPrnIdZ9& satellite);
    /// Sets or clears the system's bit of the mask in force. Result as of SetSatSystemDisableMask.
    static bool SetSatSystemDisabled(int system, bool disabled, bool persist);
    /// The smallest code from 1 to 8 that is not disabled; 0 when all of them are.
    [[nodiscard]] static int GetFirstEnabledSatSystem();

protected:
    [[nodiscard]] static bool IsSatSystemDisabled(int system, std::int32_t mask);
};
