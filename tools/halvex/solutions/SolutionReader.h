#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "formats/io/LineReader.h"
#include "halvex/platform/mjd/MjdTime.h"
#include "halvex/status/NMEAFormat.h"

namespace halvex::tool {

/// One position solution as it stands in a file.
struct Solution {
    SMjdTime time;             ///< UTC
    double latitude = 0.0;     ///< [deg], north
    double longitude = 0.0;    ///< [deg], east
    double height = 0.0;       ///< above the ellipsoid [m]
    double separation = 0.0;   ///< of the geoid from the ellipsoid [m]
    std::int32_t quality = 1;  ///< 0: no solution
    std::uint16_t satellites = 0;
    double hdop = 0.0;
    double age = -1.0;          ///< of the corrections [s]; negative: none
    std::uint32_t station = 0;  ///< whose corrections
    float coordinateQuality = 0.0F;
    float figure = -1.0F;  ///< this one and the next: of the sentence LMM; negative: none
    ADD_POST_RESULTS results;
};

/// Position solutions from a file: an object of JSON in each line, or CSV under a line with the names of its columns.
/// Which of the two, the first line tells. Streaming; what is wrong ends the reading as a Failure with file and line.
/// Names: time, latitude and longitude are needed (the angles only where quality is not 0), height, geoidSeparation,
/// quality, satellites, hdop, age, station, coordinateQuality, figure and results (in JSON an array of seven, in CSV
/// results0 to results6) may be left out. One thread.
class SolutionReader {
public:
    /// With `gpsTime` the times are GPS time, else UTC, where a Z may stand behind them.
    SolutionReader(const std::string& name, bool gpsTime);

    /// The next solution; empty at the end.
    [[nodiscard]] std::optional<Solution> next();
    /// "FILE:LINE" of the solution that next() returned last.
    [[nodiscard]] std::string place() const;

private:
    using Values = std::vector<std::pair<std::string, std::string>>;

    std::optional<std::string_view> nextLine();
    [[nodiscard]] Values jsonValues(std::string_view line) const;
    [[nodiscard]] Values csvValues(std::string_view line) const;
    [[nodiscard]] Solution solutionOf(const Values& values) const;
    [[nodiscard]] SMjdTime timeOf(std::string text) const;
    [[noreturn]] void refuse(const std::string& why) const;

    LineReader m_reader;
    bool m_gpsTime;
    bool m_json = false;
    std::vector<std::string> m_columns;
};

}  // namespace halvex::tool
