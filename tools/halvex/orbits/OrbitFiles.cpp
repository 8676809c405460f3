#include "tools/halvex/orbits/OrbitFiles.h"

#include <fmt/format.h>

#include <cmath>

#include "formats/almanac/AlmanacReader.h"
#include "formats/rinex/SatelliteName.h"
#include "formats/rtcm3/StreamReader.h"
#include "halvex/orbits/HalvexAlmanac.h"
#include "halvex/orbits/HalvexEphemeris.h"
#include "halvex/orbits/HalvexEphemerisBDS.h"
#include "halvex/orbits/HalvexEphemerisGAL.h"
#include "halvex/orbits/HalvexEphemerisGLO.h"
#include "halvex/orbits/HalvexEphemerisNAVIC.h"
#include "halvex/orbits/HalvexEphemerisQZSS.h"
#include "halvex/time/SatelliteTime.h"
#include "tools/halvex/orbits/BroadcastOrbit.h"
#include "tools/halvex/streams/Streams.h"
#include "tools/halvex/systems/EnabledSystems.h"

namespace halvex::tool {
namespace {

constexpr unsigned kOrbitsPerSatellite = 1024;  // a week of the most frequent ones
constexpr double kDaysAhead = 28.0;             // of `when` that the orbits of a stream may be
constexpr double kLargestDifference = 0.01;     // of one issue's positions [m]: rounding of printed numbers

/// Fills a library class from a record; false when it has no place for it.
bool fill(CHalvexEphemeris& ephemeris, const CALN::CALX_SAT_EPHEMERIS& record) {
    return convertGPSEphemeris(record, ephemeris);
}
bool fill(CHalvexEphemerisGLO& ephemeris, const CALN::CALX_SAT_EPHEMERIS_GLONASS& record) {
    return convertGLOEphemeris(record, ephemeris);
}
template <class Ephemeris, class Record>
bool fill(Ephemeris& ephemeris, const Record& record) {
    ephemeris = Ephemeris(record);
    return true;
}

/// Satellites that receivers know and the library's classes have no number for, such as R26 and I10.
bool hasPlace(const CALN::SCalSatID& id) {
    return satelliteIndex(id) >= 0 &&
           (id.system != CALN::eCALSATSYSTEM_NAVIC || id.number <= CHalvexEphemerisNAVIC::kLargestSatId);
}

/// A file of navigation records begins with a header line of RINEX; almanacs have none.
bool isRinex(LineReader& lines) {
    const auto line = lines.next();
    const bool rinex = line && line->find("RINEX VERSION / TYPE") != std::string_view::npos;
    lines.putBack();
    return rinex;
}

}  // namespace

OrbitFiles::OrbitFiles(bool keepGoing, const SMjdTime& when, Listener listener)
    : m_keepGoing(keepGoing),
      m_listener(std::move(listener)),
      m_calculator(kOrbitsPerSatellite, 0, 0, nullptr),
      m_almanacReference(when.IsSet() ? when : CSatelliteTime(true)),
      m_latestPlausible(CSatelliteTime(true)) {
    m_latestPlausible.AddDays(1.0);
}

void OrbitFiles::fault(const std::string& text) {
    if (!m_keepGoing) throw Failure(text);
    if (m_faults++ == 0) m_firstFault = text;
}

void OrbitFiles::read(const std::vector<std::string>& files) {
    for (const std::string& file : files) {
        try {
            ByteInput input;
            if (!input.open(file)) throw Failure(input.error().value_or(FormatError{file, 0, "cannot be opened"}));
            if (rtcm3::isStream(input)) {
                readStream(std::move(input));
                continue;
            }
            LineReader lines;
            lines.open(std::move(input));
            if (isRinex(lines)) {
                readNavigation(std::move(lines));
            } else {
                readAlmanac(std::move(lines));
            }
        } catch (const Failure& failure) {
            fault(failure.what());
        }
    }
    if (m_taken == 0) {
        throw Failure(m_faults != 0 ? m_firstFault : files.front() + ": there is no orbit that can be used");
    }
}

void OrbitFiles::readStream(ByteInput input) {
    const std::string file = input.name();
    SMjdTime latest = m_almanacReference;
    latest.AddDays(kDaysAhead);
    rtcm3::StreamReader reader(latest);
    reader.setEphemeridesOnly();
    reader.setPreview(lookAhead(file, latest));
    Progress progress("reading " + file);
    reader.open(std::move(input));
    rinex::ObservationEpoch epoch;
    while (reader.next(epoch) == rtcm3::StreamReader::Result::ephemeris) {
        progress.update(reader.frames().input().bytesRead(), reader.frames().input().fileSize());
        const rtcm3::Ephemeris& ephemeris = reader.ephemeris();
        take({fmt::format("{}: byte {}", file, reader.offset()), ephemeris.satellite, ephemeris.kind},
             ephemeris.record);
    }
    if (reader.error()) throw Failure(*reader.error());
    if (reader.losses().badMessages != 0) {
        fault(fmt::format("{}: {} messages are no orbits that can be", file, reader.losses().badMessages));
    }
}

void OrbitFiles::readNavigation(LineReader lines) {
    rinex::NavigationReader reader;
    const std::string file = lines.name();
    if (!reader.open(std::move(lines))) throw Failure(reader.error());
    Progress progress("reading " + file);
    rinex::NavigationRecord record;
    using Result = rinex::NavigationReader::Result;
    for (Result result = reader.next(record); result != Result::end; result = reader.next(record)) {
        progress.update(reader.lines().bytesRead(), reader.lines().fileSize());
        if (result == Result::error) {
            fault(reader.error().text());
        } else {
            take({fmt::format("{}:{}", file, reader.line()), reader.satellite(), reader.kind()}, record);
        }
    }
    for (const auto& [what, count] : reader.skipped()) m_passedOver[what] += count;
}

void OrbitFiles::readAlmanac(LineReader lines) {
    FormatError error;
    const std::string file = lines.name();
    const auto reader = almanac::openAlmanac(std::move(lines), error, m_almanacReference);
    if (!reader) {
        throw Failure(file + ": this is no RINEX navigation file, no RTCM 3 stream and no YUMA or SEM almanac");
    }
    CALN::CALX_SAT_ALMANAC record;
    using Result = almanac::AlmanacReader::Result;
    for (Result result = reader->next(record); result != Result::end; result = reader->next(record)) {
        if (result == Result::error) {
            fault(reader->error().text());
            continue;
        }
        if (isPassedOver(record.GetCalSatID().system)) continue;
        CHalvexAlmanac almanac;
        if (!convertGPSAlmanac(record, almanac) || !m_calculator.ProcessNewAlmanac(almanac)) {
            fault(fmt::format("{}:{}: the almanac of {} has a number that cannot be", file, reader->recordLine(),
                              rinex::satelliteName(record.GetCalSatID())));
            continue;
        }
        ++m_taken;
        ++m_satellites[almanac.GetSatID()];
        m_almanacs.add(almanac.GetRefTime());
    }
}

bool OrbitFiles::isPassedOver(CALN::eCALSATSYSTEM system) {
    if (!CSatelliteSystemDisablingHelper::IsSatSystemDisabled(system)) return false;
    passOver(std::string(systemOfCode(system)->name) + " (disabled)");
    return true;
}

template <class Ephemeris, class Record>
void OrbitFiles::takeEphemeris(const Origin& origin, const Record& record, unsigned issue) {
    const auto bad = [&](const std::string& what) {
        fault(fmt::format("{}: the ephemeris of {} {}", origin.place, rinex::satelliteName(origin.satellite), what));
    };
    if (isPassedOver(origin.satellite.system)) return;
    if (!hasPlace(origin.satellite)) {
        passOver(rinex::satelliteName(origin.satellite));
        return;
    }
    Ephemeris ephemeris;
    if (!fill(ephemeris, record)) return bad("has a number that cannot be");
    if (!ephemeris.IsDataValid()) return bad("is not plausible");
    const SMjdTime reference = ephemeris.GetRefTime();
    if (reference > m_latestPlausible) return bad("is of the future: " + formatTime(reference));
    ORBIT_COORD at;
    if (!broadcastPosition(record, reference.GetGpsSeconds(), at)) return bad("has elements of no orbit");
    const Issue key{ephemeris.GetSatID(), origin.kind, std::llround(reference.GetAsMjd() * 86400.0), issue};
    const auto [known, isNew] = m_issues.emplace(key, at);
    if (!isNew) {
        const double difference = std::hypot(at.x - known->second.x, at.y - known->second.y, at.z - known->second.z);
        if (difference > kLargestDifference) {
            return bad(fmt::format("contradicts an earlier one of {} with the same issue by {:.0f} m",
                                   formatTime(reference), difference));
        }
        ++m_duplicates;
    }
    m_calculator.ProcessNewEphemeris(ephemeris);
    ++m_taken;
    ++m_satellites[ephemeris.GetSatID()];
    m_ephemerides.add(reference);
}

void OrbitFiles::take(const Origin& origin, const rinex::NavigationRecord& record) {
    const struct Taker {
        OrbitFiles& self;
        const Origin& origin;
        void operator()(const CALN::CALX_SAT_EPHEMERIS& r) const {
            if (r.messageType != CALN::eCALGPSMESSAGE_LNAV) {
                self.passOver("EPH G CNAV");  // its rates have no place in a GPS ephemeris of the library
            } else {
                self.takeEphemeris<CHalvexEphemeris>(origin, r, r.iodc);
            }
        }
        void operator()(const CALN::CALX_SAT_EPHEMERIS_GLONASS& r) const {
            self.takeEphemeris<CHalvexEphemerisGLO>(origin, r, r.tb);
        }
        void operator()(const CALN::CALX_SAT_EPHEMERIS_GALILEO& r) const {
            self.takeEphemeris<CHalvexEphemerisGAL>(origin, r, r.iodNav * 4U + r.navType);
        }
        void operator()(const CALN::CALX_SAT_EPHEMERIS_BEIDOU& r) const {
            self.takeEphemeris<CHalvexEphemerisBDS>(origin, r, r.aode + r.iode);
        }
        void operator()(const CALN::CALX_SAT_EPHEMERIS_QZSS& r) const {
            self.takeEphemeris<CHalvexEphemerisQZSS>(origin, r, r.iodc);
        }
        void operator()(const CALN::CALX_SAT_EPHEMERIS_NAVIC& r) const {
            self.takeEphemeris<CHalvexEphemerisNAVIC>(origin, r, r.iodec);
        }
        void operator()(const rinex::SbasOrbit&) const { self.passOver("SBAS orbits"); }
        void operator()(const rinex::SystemTimeOffset&) const { self.passOver("time offsets (STO)"); }
        void operator()(const rinex::IonosphereModel&) const { self.passOver("ionosphere models (ION)"); }
        void operator()(const rinex::EarthOrientation&) const { self.passOver("Earth orientation (EOP)"); }
    } taker{*this, origin};
    const std::uint64_t takenBefore = m_taken;
    std::visit(taker, record);
    if (m_listener && m_taken != takenBefore) m_listener(record);
}

std::string OrbitFiles::text() const {
    std::string text = fmt::format("{} orbits of {} satellites", m_taken, m_satellites.size());
    if (first().IsSet()) text += fmt::format(", {} to {}", formatTime(first()), formatTime(last()));
    if (m_duplicates != 0) text += fmt::format(", {} repeated", m_duplicates);
    text += "\n";
    std::string separator = "read over: ";
    for (const auto& [what, count] : m_passedOver)
        text += fmt::format("{}{} {}", std::exchange(separator, ", "), count, what);
    if (!m_passedOver.empty()) text += "\n";
    if (m_faults != 0) text += fmt::format("{} faults passed over, the first: {}\n", m_faults, m_firstFault);
    return text;
}

Json OrbitFiles::json() const {
    Json json = {
        {"orbits", m_taken}, {"satellites", m_satellites.size()}, {"repeated", m_duplicates}, {"faults", m_faults}};
    if (first().IsSet()) {
        json["from"] = formatTime(first());
        json["to"] = formatTime(last());
    }
    json["readOver"] = m_passedOver;
    if (m_faults != 0) json["firstFault"] = m_firstFault;
    tellDisabledSystems(json);
    return json;
}

}  // namespace halvex::tool
