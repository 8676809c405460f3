#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "formats/io/FormatError.h"
#include "formats/io/LineReader.h"
#include "halvex/platform/caln/Coordinates.h"
#include "halvex/platform/caln/SatelliteSystem.h"
#include "halvex/platform/mjd/MjdTime.h"

namespace halvex::sp3 {

/// Time scale that a file prints its epochs in. SP3-d format of 21 February 2016. The reader hands out GPS time alone.
enum class TimeSystem : std::uint8_t { gps, utc, glonass, galileo, beidou, qzss, navic, tai };

/// Header of an SP3 file. Plain value.
struct Header {
    struct Satellite {
        CALN::SCalSatID id;
        double accuracy = 0.0;  ///< standard deviation of the orbit over the whole file [m]; 0: unknown
    };

    char version = ' ';            ///< a to d
    bool velocities = false;       ///< the file has velocity records too; they are read over
    SMjdTime start;                ///< first epoch, GPS scale
    std::uint32_t epochCount = 0;  ///< announced; files do have fewer
    double interval = 0.0;         ///< between epochs [s]
    std::string dataUsed;          ///< as "u+U"
    std::string coordinateSystem;  ///< as "IGS14"
    std::string orbitType;         ///< as "FIT"
    std::string agency;            ///< as "AIUB"
    char fileType = ' ';           ///< system letter, M for mixed; blank: not given (version a)
    TimeSystem timeSystem = TimeSystem::gps;
    std::vector<Satellite> satellites;         ///< those the house has numbers for
    std::vector<std::string> otherSatellites;  ///< as "L05"; their records are read over
    std::vector<std::string> comments;
};

/// One satellite at one epoch.
struct SatelliteState {
    CALN::SCalSatID id;
    std::optional<ORBIT_COORD> position;  ///< centre of mass, Earth-fixed [m]; none when the file has zeros
    std::optional<double> clock;          ///< satellite clock minus the time scale of the product [s]
    bool clockEvent = false;              ///< the clock jumped since the epoch before
    bool clockPredicted = false;
    bool manoeuvre = false;  ///< between the epoch before and this one
    bool orbitPredicted = false;
};

struct Epoch {
    SMjdTime time;           ///< GPS scale
    std::uint64_t line = 0;  ///< where it begins
    std::vector<SatelliteState> states;
};

/// Streaming reader of precise orbits, SP3-a to SP3-d, plain or gzip-compressed. Memory does not grow with the file.
/// Velocities (V) and correlations (EP, EV) are read over. One thread at a time.
class Sp3Reader {
public:
    enum class Result : std::uint8_t {
        epoch,
        end,    ///< the input is used up; endLineMissing() tells whether it was closed as it should
        error,  ///< error() says what; the next call goes on behind the bad epoch, or ends if that cannot be done
    };

    /// Opens the file and reads its header. False, with error(), when there is none to be had.
    [[nodiscard]] bool open(const std::string& name);
    /// The same for lines that are opened already.
    [[nodiscard]] bool open(LineReader lines);
    /// Reads the next epoch. Epochs increase strictly, and no satellite stands twice in one; an epoch that breaks this,
    /// or has a satellite that the header does not list, is given up as a whole and `epoch` then means nothing. An
    /// epoch may lack satellites, but not at the end of a file without its EOF line: that one is cut off, an error.
    [[nodiscard]] Result next(Epoch& epoch);

    [[nodiscard]] const Header& header() const { return m_header; }
    /// Good epochs so far, to be held against header().epochCount.
    [[nodiscard]] std::uint32_t epochsRead() const { return m_epochsRead; }
    /// At the end: there was no EOF line. The epochs are good, but more of them may have been meant to follow.
    [[nodiscard]] bool endLineMissing() const { return m_endLineMissing; }
    [[nodiscard]] const FormatError& error() const { return m_error; }

private:
    bool readHeader();
    bool nextLine();
    bool findEpoch();
    [[nodiscard]] std::optional<std::string> beginEpoch(Epoch& epoch);
    [[nodiscard]] std::optional<std::string> addState(Epoch& epoch);
    Result fail(std::string message);

    LineReader m_lines;
    Header m_header;
    FormatError m_error;
    std::string_view m_line;                            ///< the line that is being read
    std::map<CALN::SCalSatID, std::uint64_t> m_seenIn;  ///< the header's satellites; line of each one's last epoch
    SMjdTime m_lastTime;
    std::uint32_t m_epochsRead = 0;
    bool m_endLineMissing = false;
    bool m_lost = false;  ///< a bad epoch is behind, the next one is not found yet
    bool m_ended = true;
};

}  // namespace halvex::sp3
