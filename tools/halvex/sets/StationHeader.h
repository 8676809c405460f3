#pragma once

#include <cstdio>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "formats/rinex/ObservationHeader.h"
#include "formats/rinex/SignalSlots.h"
#include "halvex/platform/mjd/MjdTime.h"

namespace halvex::tool {

/// What a set's records cannot say about their station, kept beside the set under its base name followed by "h": the
/// RINEX 3.05 header of the first source, then a line whenever the signals of a satellite's values change:
///   @ 2111 345600000 G05 CWCCC LWWWW Q-QQQ
/// GPS week and milliseconds of week from which it holds, satellite, and for each slot the tracking attributes of
/// pseudorange C, pseudorange P, phase, Doppler and C/N0, "-" for none. Text; lines are only ever appended.
struct StationHeader {
    struct Change {
        SMjdTime from;
        rinex::SatelliteSignals signals;
    };
    rinex::ObservationHeader rinex;
    std::map<CALN::SCalSatID, std::vector<Change>> signals;  ///< in the order of their times

    /// The signals of a satellite at an instant; the preferred ones of its system when nothing is known.
    [[nodiscard]] rinex::SatelliteSignals signalsAt(const CALN::SCalSatID& satellite, const SMjdTime& time) const;
    /// The header with columns for exactly the signals that were used.
    [[nodiscard]] rinex::ObservationHeader usedColumns() const;
};

/// Reads the header file of a set. Failure when it is there but damaged; without one, a header with no station and the
/// preferred signals.
[[nodiscard]] StationHeader readStationHeader(const std::string& base);

/// Keeps the header file of a set that is written.
class StationHeaderWriter {
public:
    /// Goes on with the file that is there, or begins it with `header`. Failure when it cannot be written.
    StationHeaderWriter(const std::string& base, const rinex::ObservationHeader& header);
    /// Notes the signals of a satellite as of `time`; writes only changes. What has been noted has reached the system
    /// when flush() returns. Failure when it cannot be written.
    void note(const SMjdTime& time, const CALN::SCalSatID& satellite, const rinex::SatelliteSignals& signals);
    void flush();

private:
    void begin(const std::string& text);
    struct CloseFile {
        void operator()(std::FILE* file) const { std::fclose(file); }
    };
    std::string m_name;
    std::unique_ptr<std::FILE, CloseFile> m_file;
    std::map<CALN::SCalSatID, rinex::SatelliteSignals> m_last;
    bool m_pending = false;
};

}  // namespace halvex::tool
