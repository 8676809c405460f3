#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "formats/rtcm3/NetworkMessages.h"
#include "tools/halvex/Tool.h"

namespace halvex::tool {

/// A value under the name that reports have it by, in its unit; null when the message says that it has none.
struct Field {
    std::string_view name;
    Json value;
    std::string_view unit;
};

/// What a network or text message says: lengths in metres, gradients in ppm, angles in degrees.
struct ListedMessage {
    std::optional<rtcm3::NetworkEpoch> epoch;    ///< of a message of satellites
    std::vector<unsigned> stations;              ///< the message is about these: master and auxiliary, or one
    bool more = false;                           ///< another message of the same epoch follows
    std::vector<Field> fields;                   ///< without the time
    std::vector<std::vector<Field>> satellites;  ///< without those of disabled systems
    std::uint64_t unknownSatellites = 0;         ///< left out: no such satellite
};

[[nodiscard]] ListedMessage listed(const rtcm3::NetworkMessage& message);

/// "name value unit" of each, one after another; a satellite by its name alone.
[[nodiscard]] std::string fieldsText(const std::vector<Field>& fields);
/// By their names.
[[nodiscard]] Json fieldsJson(const std::vector<Field>& fields);

}  // namespace halvex::tool
