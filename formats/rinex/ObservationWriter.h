#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "formats/io/TextFile.h"
#include "formats/rinex/ObservationHeader.h"
#include "formats/rinex/SignalSlots.h"
#include "halvex/observations/HalvexStationObservation.h"

namespace halvex::rinex {

/// Writes station epochs as a RINEX 3.05 observation file in GPS time. Values come out with the digits that they were
/// read with: three decimals. One thread at a time.
class ObservationWriter {
public:
    /// Where the values of a satellite come from, asked for each satellite of each epoch.
    using Signals = std::function<SatelliteSignals(const CALN::SCalSatID&)>;

    /// Creates the file ("-": standard output) and writes the header; its codes are the columns. False with error().
    [[nodiscard]] bool open(const std::string& name, const ObservationHeader& header);
    /// Writes one epoch. False with error() when the file takes no more.
    [[nodiscard]] bool write(const CHalvexStationObservation& station, const Signals& signals);
    /// Writes what is buffered and closes. False with error() when that fails or a write has failed before.
    [[nodiscard]] bool close();

    [[nodiscard]] const FormatError& error() const { return m_file.error(); }
    /// Values that no column or no 14 characters could take, or whose satellite has no name in a file.
    [[nodiscard]] std::uint64_t unwritten() const { return m_unwritten; }

private:
    void writeSatellite(const CHalvexObservation& observation, const CALN::SCalSatID& id,
                        const SatelliteSignals& signals);

    TextFile m_file;
    ObservationHeader m_header;
    std::uint64_t m_unwritten = 0;
};

/// The header with its times and leap seconds brought to GPS time.
[[nodiscard]] ObservationHeader inGpsTime(ObservationHeader header);

/// The columns that the signals of all `satellites` need, by system, C L D S of a signal side by side.
void addColumns(ObservationHeader& header, const CALN::SCalSatID& satellite, const SatelliteSignals& signals);

}  // namespace halvex::rinex
