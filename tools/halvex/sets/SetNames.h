#pragma once

#include <string>
#include <string_view>

#include "formats/rinex/ObservationHeader.h"
#include "halvex/platform/mjd/MjdTime.h"

namespace halvex::tool {

/// The span of time that one indexed set holds.
enum class Span { subhourly, hourly, daily };

/// Start of the span that holds `time`: the quarter of an hour, the hour, the day.
[[nodiscard]] SMjdTime spanStart(const SMjdTime& time, Span span);

/// The parts of a long RINEX name that a station brings: "ESBC00DNK" is ESBC, monument 0, receiver 0, Denmark.
struct StationName {
    std::string site;
    unsigned monument = 0;
    unsigned receiver = 0;
    std::string country = "XXX";
};

/// From what the user said, else the name of the file where that is a RINEX name, else the marker's name; without any
/// the site is empty, which a name has as "UNKN". Failure (2) when what the user said is no site code.
[[nodiscard]] StationName stationName(const std::string& given, const std::string& fileName, const std::string& marker);

/// Base name of a set, a long RINEX name without format: "ESBC00DNK_R_20201770000_01D_30S_MO".
[[nodiscard]] std::string setName(const StationName& station, const SMjdTime& start, Span span,
                                  const rinex::ObservationHeader& header);

/// Base name of the set that a user means by any of its files.
[[nodiscard]] std::string setBase(const std::string& fileName);

}  // namespace halvex::tool
