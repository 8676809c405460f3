#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "halvex/platform/caln/SatelliteSystem.h"
#include "halvex/platform/mjd/MjdTime.h"

namespace halvex::rinex {

/// Epoch flag. RINEX 4.01, table A3 (2.11: table A2).
enum class EpochFlag : std::uint8_t {
    ok = 0,
    powerFailure = 1,  ///< power failure since the previous epoch
    moving = 2,
    newSite = 3,
    headerRecords = 4,
    externalEvent = 5,
    cycleSlips = 6,
};

/// One field of a satellite's line.
struct ObservedValue {
    double value = 0.0;               ///< in the unit of its code, scale factor taken off
    std::uint8_t lossOfLock = 0;      ///< loss-of-lock indicator, bits 0 to 2; blank is 0
    std::uint8_t signalStrength = 0;  ///< 1 to 9; blank or 0: not given
    bool present = false;             ///< blank and 0.000 both mean missing
};

/// One epoch as it stands in the file, column by column. Memory is used again from epoch to epoch.
struct ObservationEpoch {
    struct Satellite {
        CALN::SCalSatID id;
        std::uint32_t first = 0;  ///< where its columns begin in values
        std::uint32_t count = 0;  ///< as many as the header has codes for its system
    };

    SMjdTime time;  ///< in the file's time system; unset for an event without a time
    EpochFlag flag = EpochFlag::ok;
    std::optional<double> clockOffset;  ///< receiver clock offset [s]
    std::vector<Satellite> satellites;
    std::vector<ObservedValue> values;
    std::uint64_t line = 0;  ///< of its epoch line

    [[nodiscard]] std::span<const ObservedValue> valuesOf(const Satellite& satellite) const {
        return std::span(values).subspan(satellite.first, satellite.count);
    }
};

}  // namespace halvex::rinex
