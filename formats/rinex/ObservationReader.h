#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "formats/io/FormatError.h"
#include "formats/io/LineReader.h"
#include "formats/rinex/EpochLine.h"
#include "formats/rinex/ObservationEpoch.h"
#include "formats/rinex/ObservationHeader.h"

namespace halvex::rinex {

/// Streaming reader of RINEX observation files, versions 2.00 to 2.12, 3.00 to 3.05 and 4.0x, plain or gzip-compressed.
/// Memory does not grow with the file. One thread at a time.
class ObservationReader {
public:
    enum class Result : std::uint8_t {
        epoch,  ///< an epoch of observations (flags 0 and 1), or of cycle slips (flag 6)
        event,  ///< flags 2 to 5; its header records have been taken into header()
        end,    ///< the input is used up
        error,  ///< error() says what; the next call goes on behind the bad epoch, or ends if that cannot be done
    };

    /// Opens the file and reads its header. False, with error(), when there is none to be had.
    [[nodiscard]] bool open(const std::string& name);
    /// The same for lines that are opened already.
    [[nodiscard]] bool open(LineReader lines);
    /// Reads the next epoch or event into `epoch`. A bad epoch is given up as a whole and `epoch` then means nothing;
    /// a last epoch that is cut off is an error.
    [[nodiscard]] Result next(ObservationEpoch& epoch);

    /// The header with what events have changed so far.
    [[nodiscard]] const ObservationHeader& header() const { return m_header; }
    /// Counts up whenever an event changed header().
    [[nodiscard]] std::uint32_t headerChanges() const { return m_headerChanges; }
    [[nodiscard]] const FormatError& error() const { return m_error; }
    [[nodiscard]] const LineReader& lines() const { return m_lines; }

private:
    bool readHeader();
    bool nextLine();
    bool findEpoch();
    Result readEvent(const EpochLine& start);
    Result readSatellites2(const EpochLine& start, ObservationEpoch& epoch);
    Result readSatellites3(const EpochLine& start, ObservationEpoch& epoch);
    [[nodiscard]] std::optional<std::string> addSatellite(const CALN::SCalSatID& id, ObservationEpoch& epoch);
    Result fail(std::string message);
    Result failAtEnd(std::size_t count, unsigned announced, std::string_view what);

    LineReader m_lines;
    ObservationHeader m_header;
    std::uint32_t m_headerChanges = 0;
    FormatError m_error;
    std::string_view m_line;  ///< the line that is being read
    Family m_family = Family::rinex3;
    bool m_insideEpoch = false;  ///< m_line is not the line that the epoch began with
    bool m_lost = false;         ///< a bad epoch is behind, the next one is not found yet
    bool m_ended = true;
    std::array<std::uint64_t, CALN::kSystemSlots> m_seen{};  ///< satellites of this epoch, a bit for each number
};

}  // namespace halvex::rinex
