#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "formats/rinex/ObservationEpoch.h"

namespace halvex::rinex {

/// The line that begins an epoch or an event, without the satellite list that RINEX 2 has on it.
struct EpochLine {
    SMjdTime time;  ///< unset for an event without a time
    EpochFlag flag = EpochFlag::ok;
    unsigned count = 0;  ///< of satellites, or of the lines that follow an event
    std::optional<double> clockOffset;

    [[nodiscard]] bool isEvent() const { return flag >= EpochFlag::moving && flag <= EpochFlag::externalEvent; }
};

/// The two families of files, told apart by how far the fields of their epoch lines are shifted.
enum class Family : std::size_t { rinex2 = 0, rinex3 = 3 };

/// Reads the line; the result is empty when it is good, else says what is wrong.
[[nodiscard]] std::optional<std::string> parseEpochLine(std::string_view line, Family family, EpochLine& epoch);

/// Date and time of an epoch or of a header record, checked: a calendar day, hour below 24, minute below 60, second
/// below 61. Empty when it is none.
[[nodiscard]] std::optional<SMjdTime> checkedTime(int year, int month, int day, int hour, int minute, double second);

/// True when an epoch may begin with this line: where to go on behind a bad one.
[[nodiscard]] bool mayBeginEpoch(std::string_view line, Family family);

}  // namespace halvex::rinex
