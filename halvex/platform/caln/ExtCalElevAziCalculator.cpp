#include "halvex/platform/caln/ExtCalElevAziCalculator.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <variant>
#include <vector>

#include "halvex/platform/caln/FrequencyMgr.h"
#include "halvex/platform/caln/GeodeticSettings.h"
#include "halvex/platform/caln/GlonassAlmanac.h"
#include "halvex/platform/caln/OrbitBatch.h"
#include "halvex/platform/caln/OrbitKernels.h"
#include "halvex/platform/caln/SatPosition.h"
#include "halvex/platform/kernix/SyncGuard.h"

namespace CALN {

ExtCalOrbitConsumer::~ExtCalOrbitConsumer() = default;

namespace {

namespace glonass = halvex::glonass;
namespace kepler = halvex::kepler;

constexpr bool kRead = false;
constexpr bool kWrite = true;
constexpr unsigned int kMostKeptEpochs = 1024;
constexpr double kAlmanacTimeframe = 1209600.0;  // two weeks
constexpr auto kAllSatellites = static_cast<std::size_t>(halvex::kSatellites);

struct KeplerOrbit {
    kepler::Elements<double> elements;
    double reference = 0.0;      // toe [s of week], less the system's lag behind GPS time: counts in GPS seconds
    bool geostationary = false;  // BeiDou
};
struct GlonassOrbit {
    glonass::State<double> state;
    glonass::Acceleration<double> pull;
    double reference = 0.0;  // [s of the GPS week]
};

/// An instant as one number, for comparisons that need not see a microsecond [s since MJD 0].
double secondsOf(const SMjdTime& t) {
    return t.GetMjdDay() * 86400.0 + t.GetMjdFractMilliseconds() / 1000.0;
}

/// One orbit of one satellite.
struct Orbit {
    Orbit(const SMjdTime& referenceTime, bool isHealthy, auto orbitMotion)
        : reference(referenceTime), seconds(secondsOf(referenceTime)), healthy(isHealthy), motion(orbitMotion) {}

    SMjdTime reference;    // GPS scale
    double seconds = 0.0;  // the same, see secondsOf
    bool healthy = false;
    std::variant<KeplerOrbit, GlonassOrbit, glonass::AlmanacElements> motion;
};

bool isUsable(const KeplerOrbit& orbit) {
    const auto numbers = std::bit_cast<std::array<double, kepler::kElements>>(orbit.elements);
    return std::all_of(numbers.begin(), numbers.end(), [](double number) { return std::isfinite(number); }) &&
           orbit.elements.a >= kepler::kSmallestSemiMajorAxis && orbit.elements.e >= 0.0 && orbit.elements.e < 1.0;
}

/// How far from its reference time each satellite's ephemeris is used [s].
constexpr auto kTimeframes = [] {
    std::array<double, kAllSatellites> seconds{};
    for (std::size_t i = 0; i < seconds.size(); ++i) {
        seconds[i] = getEphemerisTimeframeMinutes(halvex::satelliteAt(static_cast<int>(i)).system) * 60.0;
    }
    return seconds;
}();

/// Orbits of one kind of one satellite, by reference time.
class History {
public:
    /// False when the orbit is older than all of a full history.
    bool insert(const Orbit& orbit, std::size_t capacity) {
        const auto at = std::lower_bound(m_orbits.begin(), m_orbits.end(), orbit.reference,
                                         [](const Orbit& o, const SMjdTime& time) { return o.reference < time; });
        if (at != m_orbits.end() && at->reference == orbit.reference) {
            *at = orbit;
            return true;
        }
        if (m_orbits.size() < capacity) {
            m_orbits.insert(at, orbit);
            return true;
        }
        if (at == m_orbits.begin()) return false;
        std::move(m_orbits.begin() + 1, at, m_orbits.begin());
        *(at - 1) = orbit;
        return true;
    }
    /// The one of the least effective age within `timeframe` seconds; of two equally old ones the later.
    [[nodiscard]] const Orbit* nearest(double t, double timeframe, eCALSATSYSTEM system) const {
        const auto after = std::partition_point(m_orbits.begin(), m_orbits.end(),
                                                [t](const Orbit& orbit) { return orbit.seconds <= t; });
        const Orbit* best = nullptr;
        if (after != m_orbits.end() && after->seconds - t <= timeframe) best = &*after;
        if (after != m_orbits.begin()) {
            const Orbit& before = *(after - 1);
            const double distance = t - before.seconds;
            if (distance <= timeframe && (best == nullptr || distance < getEffectiveAge(system, t - best->seconds)))
                best = &before;
        }
        return best;
    }
    [[nodiscard]] bool empty() const { return m_orbits.empty(); }
    [[nodiscard]] const SMjdTime& latest() const { return m_orbits.back().reference; }
    void clear() { m_orbits.clear(); }

private:
    std::vector<Orbit> m_orbits;
};

/// Positions of all satellites at one epoch.
struct Epoch {
    SMjdTime t;
    bool filled = false;
    std::uint64_t lastUse = 0;
    CGlobalGeodeticSettings::PZ90ToWGS84 frame{};
    std::size_t count = 0;
    halvex::PositionLanes positions{};
    std::array<std::uint8_t, halvex::kLanes> satellites{};  // index of each lane
    std::array<bool, halvex::kLanes> healthy{};
};

void setDirection(SCalSatEpochDataOrbit& out, double elevation, double azimuth) {
    constexpr double kFullCircle = 2.0 * std::numbers::pi;
    if (azimuth < 0.0) azimuth += kFullCircle;
    if (azimuth >= kFullCircle) azimuth = 0.0;
    out = {elevation, azimuth};
}

}  // namespace

struct ExtCalElevAziCalculator::State {
    halvex::OrbitBatch batch;  // guarded, as all up to the lock; shared for reading orbits and filled epochs
    std::array<History, kAllSatellites> ephemerides, almanacs;
    std::vector<Epoch> epochs;
    std::uint64_t uses = 0;
    int mode = kModeEphemerisBeforeAlmanac;
    mutable CReaderWriterSyncGuard lock;

    // Set once.
    std::size_t capacity = 0;
    double timeframe = 0.0;  // [s]; 0: the systems' own
    ExtCalOrbitConsumer* consumer = nullptr;

    [[nodiscard]] const Orbit* choose(std::size_t satellite, double t, eCALEPHEMERISTYPE& type) const {
        const eCALSATSYSTEM system = halvex::satelliteAt(static_cast<int>(satellite)).system;
        if (mode != kModeAlmanacs && !ephemerides[satellite].empty()) {
            type = eCALEPHEMERISTYPE_EPHEMERIS;
            const double limit = timeframe > 0.0 ? timeframe : kTimeframes[satellite];
            if (const Orbit* orbit = ephemerides[satellite].nearest(t, limit, system)) return orbit;
        }
        if (mode == kModeEphemerides) return nullptr;
        type = eCALEPHEMERISTYPE_ALMANAC;
        return almanacs[satellite].nearest(t, kAlmanacTimeframe, eCALSATSYSTEM_NONE);
    }

    /// Seconds from an orbit's reference: of an ephemeris within half a week, of an almanac as they are.
    static double secondsFrom(const KeplerOrbit& orbit, const SMjdTime& reference, const SMjdTime& t,
                              eCALEPHEMERISTYPE type) {
        return type == eCALEPHEMERISTYPE_ALMANAC ? t.GetDifferenceInSeconds(reference)
                                                 : kepler::withinHalfWeek(t.GetGpsSeconds() - orbit.reference);
    }

    bool take(const SCalSatID& id, eCALEPHEMERISTYPE type, const Orbit& orbit) {
        const int index = halvex::satelliteIndex(id);
        if (index < 0) return false;
        const SMjdTime reference = orbit.reference;
        {
            const CReadWriteLock guard(lock, kWrite);
            auto& histories = type == eCALEPHEMERISTYPE_EPHEMERIS ? ephemerides : almanacs;
            if (!histories[static_cast<std::size_t>(index)].insert(orbit, capacity)) return false;
            for (Epoch& epoch : epochs) epoch.filled = false;
        }
        if (consumer != nullptr) consumer->OnNewOrbit(id, type, reference);
        return true;
    }

    /// No later ephemeris of the satellite is there.
    bool isLatest(const SCalSatID& id, const SMjdTime& reference) {
        const CReadWriteLock guard(lock, kRead);
        const History& history = ephemerides[static_cast<std::size_t>(halvex::satelliteIndex(id))];
        return history.empty() || history.latest() <= reference;
    }

    template <class Record>
    bool takeKepler(const SCalSatID& id, eCALEPHEMERISTYPE type, const Record& record, double reference,
                    const kepler::Constants& constants, double lag = 0.0, bool geostationary = false) {
        KeplerOrbit orbit{kepler::elementsOf(record, constants), reference + lag, geostationary};
        if (!isUsable(orbit) || !std::isfinite(reference)) return false;
        return take(id, type, {record.GetReferenceTime(), record.isHealthy(), orbit});
    }

    [[nodiscard]] const Epoch* find(const SMjdTime& t, const CGlobalGeodeticSettings::PZ90ToWGS84& frame) const {
        const auto at = std::find_if(epochs.begin(), epochs.end(), [&](const Epoch& epoch) {
            return epoch.filled && epoch.t == t && epoch.frame == frame;
        });
        return at != epochs.end() ? &*at : nullptr;
    }

    /// Works the epoch out in the place of the one that was filled longest ago. Under the exclusive lock.
    const Epoch& fill(const SMjdTime& t, const CGlobalGeodeticSettings::PZ90ToWGS84& frame);
};

const Epoch& ExtCalElevAziCalculator::State::fill(const SMjdTime& t,
                                                  const CGlobalGeodeticSettings::PZ90ToWGS84& frame) {
    Epoch& epoch = *std::min_element(epochs.begin(), epochs.end(), [](const Epoch& left, const Epoch& right) {
        return left.filled != right.filled ? right.filled : left.lastUse < right.lastUse;
    });
    epoch.t = t;
    epoch.frame = frame;
    epoch.lastUse = ++uses;
    epoch.count = 0;
    batch.clear();

    std::array<bool, kAllSatellites> healthy{};
    const double instant = secondsOf(t);
    const double seconds = t.GetGpsSeconds();
    const auto add = [&epoch, &healthy](std::size_t satellite, const ORBIT_COORD& position) {
        epoch.satellites[epoch.count] = static_cast<std::uint8_t>(satellite);
        epoch.healthy[epoch.count] = healthy[satellite];
        epoch.positions.x[epoch.count] = position.x;
        epoch.positions.y[epoch.count] = position.y;
        epoch.positions.z[epoch.count] = position.z;
        ++epoch.count;
    };
    for (std::size_t satellite = 0; satellite < kAllSatellites; ++satellite) {
        eCALEPHEMERISTYPE type{};
        const Orbit* orbit = choose(satellite, instant, type);
        if (orbit == nullptr) continue;
        healthy[satellite] = orbit->healthy;
        if (const auto* motion = std::get_if<KeplerOrbit>(&orbit->motion)) {
            batch.addKepler(satellite, motion->elements, secondsFrom(*motion, orbit->reference, t, type),
                            motion->geostationary);
        } else if (const auto* vector = std::get_if<GlonassOrbit>(&orbit->motion)) {
            batch.addGlonass(satellite, vector->state, vector->pull,
                             kepler::withinHalfWeek(seconds - vector->reference));
        } else {
            add(satellite, glonass::almanacPosition(std::get<glonass::AlmanacElements>(orbit->motion),
                                                    t.GetDifferenceInSeconds(orbit->reference)));
        }
    }
    batch.compute(halvex::orbitKernels(), add);
    epoch.filled = CGlobalGeodeticSettings::GetPZ90ToWGS84() == frame;  // else somebody has changed it meanwhile
    return epoch;
}

ExtCalElevAziCalculator::ExtCalElevAziCalculator(unsigned int orbitsPerSatellite, unsigned int keptEpochs,
                                                 unsigned int timeframeMinutes, ExtCalOrbitConsumer* consumer)
    : m_state(std::make_unique<State>()) {
    m_state->capacity = orbitsPerSatellite != 0 ? orbitsPerSatellite : 64;
    m_state->epochs.resize(keptEpochs != 0 ? std::min(keptEpochs, kMostKeptEpochs) : 4);
    m_state->timeframe = timeframeMinutes * 60.0;
    m_state->consumer = consumer;
}

ExtCalElevAziCalculator::~ExtCalElevAziCalculator() = default;

void ExtCalElevAziCalculator::SetMode(int mode) {
    if (mode < kModeEphemerisBeforeAlmanac || mode > kModeAlmanacs) return;
    const CReadWriteLock guard(m_state->lock, kWrite);
    m_state->mode = mode;
    for (Epoch& epoch : m_state->epochs) epoch.filled = false;
}

void ExtCalElevAziCalculator::Reset() {
    const CReadWriteLock guard(m_state->lock, kWrite);
    for (History& history : m_state->ephemerides) history.clear();
    for (History& history : m_state->almanacs) history.clear();
    for (Epoch& epoch : m_state->epochs) epoch.filled = false;
}

namespace {

/// Somebody has filled the record; GPS and GLONASS count an unknown source as a source.
template <class Message>
bool isFilled(const Message& message) {
    return message && message->source != 0;
}

SCalSatID idOf(eCALSATSYSTEM system, unsigned number) {
    return {system, static_cast<unsigned char>(number)};
}

}  // namespace

bool ExtCalElevAziCalculator::ProcessGPSEphemeris(const Message<CALX_SAT_EPHEMERIS>& message) {
    return message && m_state->takeKepler(idOf(eCALSATSYSTEM_GPS, message->satId), eCALEPHEMERISTYPE_EPHEMERIS,
                                          *message, message->toe, kepler::kGps);
}

bool ExtCalElevAziCalculator::ProcessGALEphemeris(const Message<CALX_SAT_EPHEMERIS_GALILEO>& message) {
    return isFilled(message) &&
           m_state->takeKepler(idOf(eCALSATSYSTEM_GALILEO, message->GetSatId()), eCALEPHEMERISTYPE_EPHEMERIS, *message,
                               message->toe, kepler::kGalileo);
}

bool ExtCalElevAziCalculator::ProcessBDSEphemeris(const Message<CALX_SAT_EPHEMERIS_BEIDOU>& message) {
    if (!isFilled(message)) return false;
    const SCalSatID id = idOf(eCALSATSYSTEM_BEIDOU, message->satId);
    if (!message->isGeostationary()) {
        return m_state->takeKepler(id, eCALEPHEMERISTYPE_EPHEMERIS, *message, message->toe, kepler::kBeidou,
                                   CALX_SAT_EPHEMERIS_BEIDOU::kGpsMinusBdt);
    }
    KeplerOrbit orbit{kepler::elementsOf(*message, kepler::kBeidou, true),
                      message->toe + CALX_SAT_EPHEMERIS_BEIDOU::kGpsMinusBdt, true};
    if (!isUsable(orbit) || !std::isfinite(message->toe)) return false;
    return m_state->take(id, eCALEPHEMERISTYPE_EPHEMERIS, {message->GetReferenceTime(), message->isHealthy(), orbit});
}

bool ExtCalElevAziCalculator::ProcessQZSSEphemeris(const Message<CALX_SAT_EPHEMERIS_QZSS>& message) {
    return isFilled(message) && m_state->takeKepler(idOf(eCALSATSYSTEM_QZSS, message->GetSatId1Based()),
                                                    eCALEPHEMERISTYPE_EPHEMERIS, *message, message->toe, kepler::kGps);
}

bool ExtCalElevAziCalculator::ProcessNAVICEphemeris(const Message<CALX_SAT_EPHEMERIS_NAVIC>& message) {
    return isFilled(message) && m_state->takeKepler(idOf(eCALSATSYSTEM_NAVIC, message->satId),
                                                    eCALEPHEMERISTYPE_EPHEMERIS, *message, message->toe, kepler::kGps);
}

bool ExtCalElevAziCalculator::ProcessGLOEphemeris(const Message<CALX_SAT_EPHEMERIS_GLONASS>& message) {
    if (!message) return false;
    const auto& p = message->position;
    const auto& v = message->velocity;
    const auto& a = message->acceleration;
    const double distance = std::sqrt(p[0] * p[0] + p[1] * p[1] + p[2] * p[2]);
    const double sum = v[0] + v[1] + v[2] + a[0] + a[1] + a[2] + message->referenceSeconds;
    if (!std::isfinite(distance) || !std::isfinite(sum) || distance < kepler::kSmallestSemiMajorAxis) return false;
    // Integration takes a step for every 500 s: a second that is none of a week must not keep it busy for ever.
    if (!(message->referenceSeconds >= 0.0 && message->referenceSeconds <= kepler::kWeek)) return false;
    const SCalSatID id = idOf(eCALSATSYSTEM_GLONASS, message->satId);
    const SMjdTime reference = message->GetReferenceTime();
    if (!m_state->take(
            id, eCALEPHEMERISTYPE_EPHEMERIS,
            {reference, message->isHealthy(),
             GlonassOrbit{{p[0], p[1], p[2], v[0], v[1], v[2]}, {a[0], a[1], a[2]}, message->referenceSeconds}})) {
        return false;
    }
    if (CCalFrequencyMgr::isChannel(message->frequencyNumber) && m_state->isLatest(id, reference)) {
        setGlonassChannel(id, message->frequencyNumber);
    }
    return true;
}

bool ExtCalElevAziCalculator::ProcessGPSAlmanach(const Message<CALX_SAT_ALMANAC>& message) {
    return message &&
           m_state->takeKepler(message->GetCalSatID(), eCALEPHEMERISTYPE_ALMANAC, *message, message->toa, kepler::kGps);
}

bool ExtCalElevAziCalculator::ProcessGALAlmanach(const Message<CALX_SAT_ALMANAC_GALILEO>& message) {
    return message && m_state->takeKepler(message->GetCalSatID(), eCALEPHEMERISTYPE_ALMANAC, *message, message->toa,
                                          kepler::kGalileo);
}

bool ExtCalElevAziCalculator::ProcessBDSAlmanach(const Message<CALX_SAT_ALMANAC_BEIDOU>& message) {
    return message && m_state->takeKepler(message->GetCalSatID(), eCALEPHEMERISTYPE_ALMANAC, *message, message->toa,
                                          kepler::kBeidou);
}

bool ExtCalElevAziCalculator::ProcessQZSSAlmanach(const Message<CALX_SAT_ALMANAC_QZSS>& message) {
    return message &&
           m_state->takeKepler(message->GetCalSatID(), eCALEPHEMERISTYPE_ALMANAC, *message, message->toa, kepler::kGps);
}

bool ExtCalElevAziCalculator::ProcessNAVICAlmanach(const Message<CALX_SAT_ALMANAC_NAVIC>& message) {
    return message &&
           m_state->takeKepler(message->GetCalSatID(), eCALEPHEMERISTYPE_ALMANAC, *message, message->toa, kepler::kGps);
}

bool ExtCalElevAziCalculator::ProcessGLOAlmanach(const Message<CALX_SAT_ALMANAC_GLONASS>& message) {
    if (!message) return false;
    const glonass::AlmanacElements elements{message->lambda, message->deltaI, message->e, message->omega,
                                            message->deltaT};
    const double sum = elements.lambda + elements.deltaI + elements.omega + elements.deltaT;
    constexpr double kLargestPeriodCorrection = 3600.0;  // the field of the message holds this [s]
    if (!std::isfinite(sum) || !(elements.e >= 0.0 && elements.e < 1.0) ||
        std::abs(elements.deltaT) > kLargestPeriodCorrection) {
        return false;
    }
    return m_state->take(message->GetCalSatID(), eCALEPHEMERISTYPE_ALMANAC,
                         {message->GetReferenceTime(), message->isHealthy(), elements});
}

int ExtCalElevAziCalculator::GetElevAziData(const SCalCoordinateSet& site, const SMjdTime& t, SCalElevationAzimuth& out,
                                            bool withUnhealthy) const {
    out.clear();
    out.epoch = t;
    const ORBIT_COORD& p = site.cartesian;
    if (!t.IsSet() || !std::isfinite(p.x + p.y + p.z)) return kBadInput;

    const auto frame = CGlobalGeodeticSettings::GetPZ90ToWGS84();
    const halvex::LocalFrame local(site.cartesian, site.geographic);
    const auto look = [&](const Epoch& epoch) {
        halvex::Lanes elevation, azimuth;
        halvex::orbitKernels().directions(local, epoch.positions, epoch.count, elevation, azimuth);
        bool any = false;
        for (std::size_t lane = 0; lane < epoch.count; ++lane) {
            if (!epoch.healthy[lane] && !withUnhealthy) continue;
            any = true;
            SCalSatEpochDataOrbit direction;
            setDirection(direction, elevation[lane], azimuth[lane]);
            out.setEleAzi(halvex::satelliteAt(epoch.satellites[lane]), direction.elevation, direction.azimuth);
        }
        return any ? kDone : kNoOrbit;
    };
    {
        const CReadWriteLock guard(m_state->lock, kRead);
        if (const Epoch* epoch = m_state->find(t, frame)) return look(*epoch);
    }
    const CReadWriteLock guard(m_state->lock, kWrite);
    const Epoch* epoch = m_state->find(t, frame);
    return look(epoch != nullptr ? *epoch : m_state->fill(t, frame));
}

std::optional<ExtCalElevAziCalculator::SatellitePosition> ExtCalElevAziCalculator::GetSatPosition(
    const SCalSatID& id, const SMjdTime& t) const {
    const int index = halvex::satelliteIndex(id);
    if (index < 0 || !t.IsSet()) return std::nullopt;

    const CReadWriteLock guard(m_state->lock, kRead);
    SatellitePosition result;
    const Orbit* orbit = m_state->choose(static_cast<std::size_t>(index), secondsOf(t), result.type);
    if (orbit == nullptr) return std::nullopt;
    result.referenceTime = orbit->reference;
    result.healthy = orbit->healthy;
    if (const auto* motion = std::get_if<KeplerOrbit>(&orbit->motion)) {
        const double tk = State::secondsFrom(*motion, orbit->reference, t, result.type);
        auto position = kepler::position(motion->elements, tk);
        if (motion->geostationary) position = kepler::turnGeostationary(position, tk);
        result.position = {position.x, position.y, position.z};
    } else if (const auto* vector = std::get_if<GlonassOrbit>(&orbit->motion)) {
        const auto state =
            glonass::propagate(vector->state, kepler::withinHalfWeek(t.GetGpsSeconds() - vector->reference),
                               [vector](const auto& at) { return glonass::derivative(at, vector->pull); });
        result.position = {state.x, state.y, state.z};
        halvex::transformPZ90ToWGS84(result.position);
    } else {
        result.position = glonass::almanacPosition(std::get<glonass::AlmanacElements>(orbit->motion),
                                                   t.GetDifferenceInSeconds(orbit->reference));
    }
    return result;
}

int ExtCalElevAziCalculator::GetSatElevAziData(const SCalSatID& id, const SCalCoordinateSet& site, const SMjdTime& t,
                                               SCalSatEpochDataOrbit& out) const {
    const ORBIT_COORD& p = site.cartesian;
    if (!t.IsSet() || !std::isfinite(p.x + p.y + p.z)) return kBadInput;
    const auto satellite = GetSatPosition(id, t);
    if (!satellite || !satellite->healthy) return kNoOrbit;
    const auto direction = halvex::LocalFrame(site.cartesian, site.geographic).directionTo(satellite->position);
    out = {direction.elevation, direction.azimuth};
    return kDone;
}

}  // namespace CALN
