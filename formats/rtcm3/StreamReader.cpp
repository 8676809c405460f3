#include "formats/rtcm3/StreamReader.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace halvex::rtcm3 {
namespace {

constexpr std::uint8_t kLockLost = 1;
constexpr std::uint8_t kHalfCycle = 2;
constexpr std::array<char, 4> kTypes{'C', 'L', 'D', 'S'};

/// Messages of observations that name no whole ranges.
bool lacksRanges(unsigned number) {
    const unsigned kind = msmKindOf(number).kind;
    return number == 1001 || number == 1003 || number == 1009 || number == 1011 || (kind >= 1 && kind <= 3);
}

bool hasObservations(unsigned number) {
    return number == 1002 || number == 1004 || number == 1010 || number == 1012 || msmKindOf(number).kind >= 4;
}

}  // namespace

StreamReader::Result StreamReader::next(rinex::ObservationEpoch& epoch) {
    if (std::exchange(m_waiting, false) && takeObservations()) {
        give(epoch);
        return Result::epoch;
    }
    while (const auto frame = m_frames.next()) {
        m_offset = frame->offset;
        bool gotEphemeris = false;
        if (takeFrame(*frame, gotEphemeris)) {
            give(epoch);
            return Result::epoch;
        }
        if (gotEphemeris) return Result::ephemeris;
    }
    if (m_open) {
        give(epoch);
        return Result::epoch;
    }
    return Result::end;
}

/// True when an epoch is whole.
bool StreamReader::takeFrame(const Frame& frame, bool& gotEphemeris) {
    if (isEphemeris(frame.number)) {
        takeEphemeris(frame, gotEphemeris);
    } else if (hasObservations(frame.number)) {
        if (readMsm(frame, m_message) || readLegacyObservations(frame, m_message)) return takeObservations();
        ++m_losses.badMessages;
    } else if (isStationMessage(frame.number)) {
        takeStation(frame);
    } else if (lacksRanges(frame.number)) {
        ++m_losses.withoutRange;
    } else if (!m_reference.time.IsSet()) {
        if (const auto time = timeOfMessage(frame)) m_reference.time = *time;
    }
    return false;
}

void StreamReader::takeStation(const Frame& frame) {
    const auto station = stationOf(frame);
    if (!station) return;
    m_stations.insert(*station);
    StationDescription& description = m_descriptions[*station];
    const StationDescription before = description;
    if (!readStationMessage(frame, description) || description == before || m_station != station) return;
    describe(description, m_header);
    ++m_headerChanges;
}

void StreamReader::takeEphemeris(const Frame& frame, bool& gotEphemeris) {
    gotEphemeris = readEphemeris(frame, m_reference, m_ephemeris);
    if (!gotEphemeris) {
        ++m_losses.badMessages;
        return;
    }
    if (const auto* glonass = std::get_if<CALN::CALX_SAT_EPHEMERIS_GLONASS>(&m_ephemeris.record)) {
        setChannel(m_ephemeris.satellite, glonass->frequencyNumber);
    }
    if (!m_reference.time.IsSet() && m_ephemeris.tellsTime) m_reference.time = m_ephemeris.referenceTime;
}

void StreamReader::setChannel(const CALN::SCalSatID& id, int channel) {
    if (std::exchange(m_channels[id.number], channel) == channel) return;
    m_header.glonassChannels[id] = channel;
    ++m_headerChanges;
}

/// Takes m_message into the epoch in hand. True when an epoch is whole; the message then waits if it is of another.
bool StreamReader::takeObservations() {
    m_stations.insert(m_message.station);
    if (m_wanted && *m_wanted != m_message.station) {
        ++m_losses.otherStations;
        return false;
    }
    const bool dayInDoubt = m_message.scale == EpochScale::glonassDay && m_message.more && !m_reference.isEpoch;
    if (!m_reference.time.IsSet() || dayInDoubt) {
        ++m_losses.undatedMessages;
        return false;
    }
    const SMjdTime time = instantNear(m_reference.time, m_message.scale, m_message.milliseconds, m_message.dayOfWeek);
    if (m_keepToFirst) m_wanted = m_message.station;
    if (m_ephemeridesOnly) {
        m_reference.time = time;
        m_reference.isEpoch = true;
        return false;
    }
    if (m_open && (time != m_time || m_station != m_message.station)) {
        m_waiting = true;
        return true;
    }
    if (m_station != m_message.station) beginStation(m_message.station);
    m_open = true;
    m_time = time;
    m_reference.time = time;
    m_reference.isEpoch = true;
    m_losses.unknownSatellites += m_message.unknownSatellites;
    m_losses.unknownSignals += m_message.unknownSignals;
    for (const Measurement& measurement : m_message.measurements) add(measurement);
    return !m_message.more;
}

void StreamReader::beginStation(unsigned station) {
    m_station = station;
    for (auto& system : m_tracks) {
        for (auto& tracks : system) tracks.clear();
    }
    m_header.markerNumber = std::to_string(station);
    m_header.markerNumber.insert(0, 4 - m_header.markerNumber.size(), '0');
    describe(m_descriptions[station], m_header);
    ++m_headerChanges;
}

std::size_t StreamReader::signalIndex(CALN::eCALSATSYSTEM system, const Signal& signal) {
    std::vector<Signal>& signals = m_signals[system];
    const auto found = std::find(signals.begin(), signals.end(), signal);
    if (found != signals.end()) return static_cast<std::size_t>(found - signals.begin());
    signals.push_back(signal);
    for (const char type : kTypes) {
        m_header.codes[system].push_back({type, signal.band, signal.attribute});
        m_header.scaleFactors[system].push_back(1.0);
    }
    ++m_headerChanges;
    return signals.size() - 1;
}

std::size_t StreamReader::satelliteIndexOf(const CALN::SCalSatID& id) {
    std::int16_t& place = m_places[id.system][id.number];
    if (place == 0) {
        m_satellites.push_back(id);
        m_seen.push_back(0);
        place = static_cast<std::int16_t>(m_satellites.size());
    }
    return static_cast<std::size_t>(place - 1);
}

void StreamReader::add(const Measurement& measurement) {
    const CALN::SCalSatID& id = measurement.satellite;
    if (id.number >= kNumbers) return;  // the decoders give none
    if (measurement.glonassChannel) setChannel(id, *measurement.glonassChannel);
    Cell cell;
    cell.satellite = satelliteIndexOf(id);
    cell.signal = signalIndex(id.system, measurement.signal);
    // No mask and no legacy message has more than a few dozen signals.
    const std::uint64_t bit = std::uint64_t{1} << (cell.signal % 64);
    if ((std::exchange(m_seen[cell.satellite], m_seen[cell.satellite] | bit) & bit) != 0) {
        ++m_losses.repeatedMeasurements;
        return;
    }
    const auto set = [](rinex::ObservedValue& value, double number) {
        value.value = number;
        value.present = number != 0.0;
    };
    if (measurement.pseudorange) set(cell.values[0], *measurement.pseudorange);
    const bool byChannel = id.system == CALN::eCALSATSYSTEM_GLONASS;
    const double wavelength = wavelengthOf(measurement.signal, byChannel ? m_channels[id.number] : std::nullopt);
    std::vector<Track>& tracks = m_tracks[id.system][id.number];
    if (tracks.size() <= cell.signal) tracks.resize(cell.signal + 1);
    if (wavelength > 0.0) {
        if (measurement.phaseRange) fillPhase(measurement, wavelength, tracks[cell.signal], cell.values[1]);
        if (measurement.rangeRate) set(cell.values[2], -*measurement.rangeRate / wavelength);
    } else if (measurement.phaseRange) {
        ++m_losses.withoutWavelength;
    }
    if (measurement.cno) set(cell.values[3], *measurement.cno);
    m_cells.push_back(cell);
}

void StreamReader::fillPhase(const Measurement& measurement, double wavelength, Track& track,
                             rinex::ObservedValue& phase) {
    phase.present = true;
    phase.value = *measurement.phaseRange / wavelength;
    if (track.time.IsSet()) {
        const double elapsed = m_time.GetDifferenceInSeconds(track.time) * 1000.0;
        const LockTime& lock = measurement.lock;
        // Tracked all the way, the lock is at least as long as it was then and the time since.
        const bool lost = lock.atLeast < track.atLeast || (lock.below != 0.0 && lock.below <= elapsed);
        if (lost) {
            phase.lossOfLock |= kLockLost;
            track.stepped = 0.0;
        }
        if (measurement.phaseStep != 0 && measurement.pseudorange && !lost) {
            const double minusRange = (*measurement.phaseRange - *measurement.pseudorange) / wavelength;
            const double step = measurement.phaseStep;
            track.stepped -= std::round((minusRange - track.minusRange) / step) * step;
        }
    }
    if (measurement.pseudorange) {
        track.minusRange = (*measurement.phaseRange - *measurement.pseudorange) / wavelength;
    }
    phase.value += track.stepped;
    if (measurement.halfCycle) phase.lossOfLock |= kHalfCycle;
    track.time = m_time;
    track.atLeast = measurement.lock.atLeast;
}

/// Lays the epoch in hand out under the header's columns.
void StreamReader::give(rinex::ObservationEpoch& epoch) {
    m_open = false;
    epoch.time = m_time;
    epoch.flag = rinex::EpochFlag::ok;
    epoch.clockOffset.reset();
    epoch.line = 0;
    epoch.satellites.clear();
    std::uint32_t first = 0;
    for (const CALN::SCalSatID& id : m_satellites) {
        const auto count = static_cast<std::uint32_t>(m_header.codes[id.system].size());
        epoch.satellites.push_back({id, first, count});
        first += count;
        m_places[id.system][id.number] = 0;
    }
    epoch.values.assign(first, {});
    for (const Cell& cell : m_cells) {
        const std::size_t at = epoch.satellites[cell.satellite].first + cell.signal * kTypes.size();
        std::copy(cell.values.begin(), cell.values.end(), epoch.values.begin() + static_cast<std::ptrdiff_t>(at));
    }
    m_satellites.clear();
    m_seen.clear();
    m_cells.clear();
}

StreamPreview lookAhead(const std::string& name, const SMjdTime& latest, const SMjdTime& time) {
    constexpr std::uint64_t kEnough = std::uint64_t{1} << 20;
    StreamReader reader(latest);
    reader.setTime(time);
    StreamPreview preview;
    preview.reference = reader.reference();
    if (!reader.open(name)) return preview;
    rinex::ObservationEpoch epoch;
    const auto isDescribed = [&] {
        const auto found = reader.descriptions().find(reader.station().value_or(0));
        return found != reader.descriptions().end() && found->second.position && !found->second.antennaType.empty();
    };
    const auto isEnough = [&] {
        if (!preview.reference.time.IsSet()) return false;
        return reader.offset() >= kEnough || (preview.reference.isEpoch && isDescribed());
    };
    while (!isEnough() && reader.next(epoch) != StreamReader::Result::end) {
        if (!preview.reference.isEpoch) preview.reference = reader.reference();
    }
    if (!preview.reference.isEpoch) preview.reference = reader.reference();
    preview.stations = reader.descriptions();
    return preview;
}

}  // namespace halvex::rtcm3
