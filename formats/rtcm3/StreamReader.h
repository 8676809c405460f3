#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "formats/rinex/ObservationEpoch.h"
#include "formats/rinex/ObservationHeader.h"
#include "formats/rtcm3/Ephemerides.h"
#include "formats/rtcm3/FrameReader.h"
#include "formats/rtcm3/Observations.h"
#include "formats/rtcm3/StationMessages.h"

namespace halvex::rtcm3 {

/// What a stream has and its epochs do not.
struct StreamLosses {
    std::uint64_t badMessages = 0;           ///< messages of observations or orbits that are cut off or cannot be
    std::uint64_t undatedMessages = 0;       ///< observations before anything told the date
    std::uint64_t otherStations = 0;         ///< messages of observations of stations that were not asked for
    std::uint64_t unknownSatellites = 0;     ///< satellites of no known number
    std::uint64_t unknownSignals = 0;        ///< values of reserved signals
    std::uint64_t withoutWavelength = 0;     ///< GLONASS phases before the satellite's channel was known
    std::uint64_t withoutRange = 0;          ///< messages 1001, 1003, 1009, 1011, MSM1 to 3: no whole ranges
    std::uint64_t repeatedMeasurements = 0;  ///< a signal's second value in an epoch
};

/// What a stream says that is needed before it says so: by the number of the station.
struct StreamPreview {
    TimeReference reference;
    std::map<unsigned, StationDescription> stations;
};

/// Reads an RTCM 3 stream into the epochs of an observation file and the records of a navigation file: the messages of
/// one epoch and station (MSM4 to 7, 1002, 1004, 1010, 1012) become one ObservationEpoch in GPS time under the columns
/// of header(), as ObservationReader gives them, and every ephemeris a NavigationRecord. One thread at a time.
///
/// An epoch ends with the message that says so, and before a message of another epoch or station.
///
/// Date: observations carry the time of the week or day alone. It is completed to the instant nearest to the reference
/// time: the one set by the caller, else the first that the stream gives (1013, 1029, an ephemeris that tells the
/// time), and from then on the epoch before, so that weeks may turn over inside of the stream. Messages before any
/// reference are counted and left out, and so is one of GLONASS without a day of week at the beginning when others of
/// its epoch follow: these know the day better.
///
/// Loss of lock: a phase's indicator has bit 0 when its lock time shows that it was not tracked all the way since its
/// last value, and bit 1 when it may be off by half a cycle.
class StreamReader {
public:
    enum class Result : std::uint8_t {
        epoch,      ///< `epoch` has been filled
        ephemeris,  ///< ephemeris() has been
        end,        ///< the input is used up; error() is set when that was not where it should be
    };

    /// Weeks of ten bits are completed to the latest that are not ahead of `latest` as long as nothing else is known.
    explicit StreamReader(const SMjdTime& latest) { m_reference.latest = latest; }

    /// An approximate GPS time of the stream's first messages: within half a week, and within half a day where the
    /// first are GLONASS messages without a day of week.
    void setTime(const SMjdTime& time) { m_reference.time = time; }
    /// What lookAhead found.
    void setPreview(const StreamPreview& preview) {
        m_reference = preview.reference;
        m_descriptions = preview.stations;
    }
    /// Keeps to the observations of one station, or of the first that is met.
    void setStation(unsigned station) { m_wanted = station; }
    void keepToFirstStation() { m_keepToFirst = true; }
    /// Gives no epochs.
    void setEphemeridesOnly() { m_ephemeridesOnly = true; }

    /// Opens a file, plain or gzip-compressed, or standard input ("-"). False with error().
    [[nodiscard]] bool open(const std::string& name) { return m_frames.open(name); }
    /// The same for an input that is open already.
    void open(ByteInput input) { m_frames.open(std::move(input)); }
    [[nodiscard]] Result next(rinex::ObservationEpoch& epoch);

    /// The ephemeris read last, and the frame that it came in.
    [[nodiscard]] const Ephemeris& ephemeris() const { return m_ephemeris; }
    [[nodiscard]] std::uint64_t offset() const { return m_offset; }
    /// Columns of the signals met so far, and what the stream said about the epoch's station, whose four-digit number
    /// is the marker's.
    [[nodiscard]] const rinex::ObservationHeader& header() const { return m_header; }
    /// Counts up whenever header() has changed.
    [[nodiscard]] std::uint32_t headerChanges() const { return m_headerChanges; }
    /// Station of the epoch given last.
    [[nodiscard]] std::optional<unsigned> station() const { return m_station; }
    /// All stations of the observations and station messages met so far.
    [[nodiscard]] const std::set<unsigned>& stations() const { return m_stations; }
    /// The reference time as it stands.
    [[nodiscard]] const TimeReference& reference() const { return m_reference; }
    /// What the stream said about its stations so far.
    [[nodiscard]] const std::map<unsigned, StationDescription>& descriptions() const { return m_descriptions; }
    [[nodiscard]] const FrameReader& frames() const { return m_frames; }
    [[nodiscard]] const StreamLosses& losses() const { return m_losses; }
    [[nodiscard]] const std::optional<FormatError>& error() const { return m_frames.error(); }

private:
    static constexpr std::size_t kNumbers = 64;

    /// One signal of one satellite from epoch to epoch.
    struct Track {
        SMjdTime time;            // of its last phase; unset: none
        double atLeast = 0.0;     // lock time then [ms]
        double stepped = 0.0;     // cycles taken off a phase that stays near the range by steps
        double minusRange = 0.0;  // phase less pseudorange then [cycle]
    };
    /// A value of the epoch in hand, until all its columns are known.
    struct Cell {
        std::size_t satellite = 0;  // in m_satellites
        std::size_t signal = 0;
        std::array<rinex::ObservedValue, 4> values;  // C, L, D, S
    };

    bool takeFrame(const Frame& frame, bool& gotEphemeris);
    void takeStation(const Frame& frame);
    bool takeObservations();
    void takeEphemeris(const Frame& frame, bool& gotEphemeris);
    void beginStation(unsigned station);
    void setChannel(const CALN::SCalSatID& id, int channel);
    void add(const Measurement& measurement);
    void fillPhase(const Measurement& measurement, double wavelength, Track& track, rinex::ObservedValue& phase);
    std::size_t signalIndex(CALN::eCALSATSYSTEM system, const Signal& signal);
    std::size_t satelliteIndexOf(const CALN::SCalSatID& id);
    void give(rinex::ObservationEpoch& epoch);

    FrameReader m_frames;
    TimeReference m_reference;
    std::optional<unsigned> m_wanted;
    bool m_keepToFirst = false;
    bool m_ephemeridesOnly = false;

    ObservationMessage m_message;
    bool m_waiting = false;  // m_message belongs to the next epoch
    Ephemeris m_ephemeris;
    std::uint64_t m_offset = 0;
    rinex::ObservationHeader m_header;
    std::uint32_t m_headerChanges = 0;
    std::optional<unsigned> m_station;
    std::set<unsigned> m_stations;
    std::map<unsigned, StationDescription> m_descriptions;
    std::array<std::optional<int>, kNumbers> m_channels;  // of GLONASS, R25 and later among them
    StreamLosses m_losses;

    bool m_open = false;  // an epoch is in hand
    SMjdTime m_time;
    std::vector<CALN::SCalSatID> m_satellites;
    std::vector<std::uint64_t> m_seen;  // their signals of this epoch, a bit each
    std::array<std::array<std::int16_t, kNumbers>, CALN::kSystemSlots> m_places{};  // in m_satellites, from 1 on
    std::vector<Cell> m_cells;
    std::array<std::vector<Signal>, CALN::kSystemSlots> m_signals;
    std::array<std::array<std::vector<Track>, kNumbers>, CALN::kSystemSlots> m_tracks;
};

/// Reads a file from its beginning until it has an epoch with a date and its station with position and antenna, or has
/// a date and gone on for a megabyte. `time`, when set, and `latest` are those of the reader that is to follow. The
/// reference is that of the first epoch; unset when nothing tells the date.
[[nodiscard]] StreamPreview lookAhead(const std::string& name, const SMjdTime& latest, const SMjdTime& time = {});

}  // namespace halvex::rtcm3
