#pragma once

#include <array>
#include <optional>
#include <string>

#include "formats/rinex/ObservationHeader.h"
#include "formats/rtcm3/FrameReader.h"

namespace halvex::rtcm3 {

/// What a stream says about one of its stations; each part stands when a message had it.
struct StationDescription {
    std::optional<std::array<double, 3>> position;  ///< antenna reference point, Earth-fixed [m]
    std::optional<double> antennaHeight;            ///< of the reference point above the marker [m]
    std::string antennaType, antennaNumber;
    std::string receiverType, receiverVersion, receiverNumber;

    friend bool operator==(const StationDescription&, const StationDescription&) = default;
};

/// 1005, 1006, 1007, 1008 and 1033.
[[nodiscard]] bool isStationMessage(unsigned number);

/// The station that such a message is about; empty when the message is cut off or is none of these. What it says goes
/// into `description`, and what it does not say stays.
[[nodiscard]] std::optional<unsigned> stationOf(const Frame& frame);
[[nodiscard]] bool readStationMessage(const Frame& frame, StationDescription& description);

/// Puts it where the header of an observation file has it. The header's position is the marker's, below the antenna
/// reference point by the antenna's height.
void describe(const StationDescription& description, rinex::ObservationHeader& header);

/// GPS time of 1013 and 1029, which carry date and time in UTC; empty for any other and for one cut off.
[[nodiscard]] std::optional<SMjdTime> timeOfMessage(const Frame& frame);

}  // namespace halvex::rtcm3
