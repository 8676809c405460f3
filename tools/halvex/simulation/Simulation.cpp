#include "tools/halvex/simulation/Simulation.h"

#include <cmath>
#include <numbers>

#include "formats/rinex/ObservationWriter.h"
#include "tools/halvex/orbits/BroadcastOrbit.h"
#include "tools/halvex/signals/Atmosphere.h"
#include "tools/halvex/signals/SignalPath.h"
#include "tools/halvex/simulation/MixedBits.h"

namespace halvex::tool {
namespace {

constexpr double kMask = 10.0 * std::numbers::pi / 180.0;
constexpr double kSlipsPerSignal = 1.0 / 2000.0;  // per epoch

double toMillis(double value) {
    return std::nearbyint(value * 1000.0) / 1000.0;
}

}  // namespace

Simulation::Simulation(const Settings& settings, OrbitSource& orbits)
    : m_settings(settings),
      m_orbits(orbits),
      m_geographic(toGeographic(settings.position)),
      m_frame(settings.position, m_geographic),
      m_epochs(static_cast<std::uint64_t>(std::floor(settings.duration / settings.interval + 1e-9))) {
    for (const auto& [id, channel] : orbits.satellites()) {
        Satellite satellite;
        satellite.id = id;
        satellite.channel = channel;
        for (unsigned slot = 0; slot < CHalvexObservation::kSlots; ++slot) {
            satellite.ambiguity[slot] = std::floor(1e6 * noise(id, slot, 0));
        }
        m_satellites.push_back(satellite);
    }
}

double Simulation::noise(const CALN::SCalSatID& id, unsigned slot, unsigned kind) const {
    return uniform(mixed(m_settings.seed) ^
                   (m_epoch << 24 | std::uint64_t{id.system} << 16 | std::uint64_t{id.number} << 8 | slot << 4 | kind));
}

Simulation::Sight Simulation::sight(const rinex::NavigationRecord& ephemeris, double gpsSeconds) const {
    const std::optional<SignalPath> path = signalPath(ephemeris, gpsSeconds, m_settings.position);
    if (!path) return {};  // no satellite, below every mask
    const auto [elevation, azimuth] = m_frame.directionTo(path->from);
    Sight sight{path->range, 0.0, elevation};
    if (m_settings.atmosphere) {
        sight.range += troposphereDelay(m_geographic, elevation);
        sight.ionosphere = klobucharDelay(kSimulatedIonosphere, m_geographic, elevation, azimuth, gpsSeconds);
    }
    return sight;
}

rinex::ObservationHeader Simulation::header() const {
    rinex::ObservationHeader header;
    header.program = "halvex";
    header.runBy = "simulate";
    header.comments = {"SIMULATED, NOT RECORDED"};
    header.markerName = m_settings.site;
    header.markerType = "GEODETIC";
    header.receiverType = "SIMULATION";
    header.antennaType = "NONE";
    header.position = {m_settings.position.x, m_settings.position.y, m_settings.position.z};
    header.antennaDelta = std::array<double, 3>{};
    header.interval = m_settings.interval;
    header.firstObservation = m_settings.start;
    header.signalStrengthUnit = "DBHZ";
    for (const Satellite& satellite : m_satellites) {
        rinex::addColumns(header, satellite.id, rinex::preferredSignals(satellite.id.system));
        if (satellite.id.system == CALN::eCALSATSYSTEM_GLONASS)
            header.glonassChannels[satellite.id] = satellite.channel;
    }
    return header;
}

rinex::NavigationHeader Simulation::navigationHeader() const {
    rinex::NavigationHeader header;
    header.program = "halvex";
    header.runBy = "simulate";
    header.comments = {"EPHEMERIDES OF SIMULATED OBSERVATIONS"};
    if (m_settings.atmosphere) {
        rinex::IonosphereCorrection alpha, beta;
        alpha.type = "GPSA";
        alpha.parameters = kSimulatedIonosphere.alpha;
        beta.type = "GPSB";
        beta.parameters = kSimulatedIonosphere.beta;
        header.ionosphere = {alpha, beta};
    }
    return header;
}

bool Simulation::next(CHalvexStationObservation& station) {
    m_newEphemerides.clear();
    if (m_epoch >= m_epochs) return false;
    m_now = m_settings.start;
    m_now.AddSeconds(static_cast<double>(m_epoch) * m_settings.interval);
    m_now.RoundTo(1.0);
    station.Clear();
    station.setTimeSynchronized(true);
    station.setGPSWeek(static_cast<std::uint16_t>(m_now.GetGpsWeek()));
    station.setGPSFraction(static_cast<std::uint32_t>(m_now.GetGpsWeekMilliseconds()));
    for (Satellite& satellite : m_satellites) {
        const rinex::NavigationRecord* const ephemeris = m_orbits.serving(satellite.id, m_now);
        if (ephemeris == nullptr) continue;
        const SMjdTime reference = referenceTimeOf(*ephemeris);
        if (!(reference == satellite.ephemeris)) {
            satellite.ephemeris = reference;
            m_newEphemerides.push_back(*ephemeris);
        }
        fill(satellite, *ephemeris, station);
    }
    ++m_epoch;
    return true;
}

void Simulation::fill(Satellite& satellite, const rinex::NavigationRecord& ephemeris,
                      CHalvexStationObservation& station) {
    const double seconds = m_now.GetGpsSeconds();
    const Sight now = sight(ephemeris, seconds);
    if (now.elevation < kMask) return;
    const Sight before = sight(ephemeris, seconds - 0.5);
    const Sight after = sight(ephemeris, seconds + 0.5);
    const double noiseSize = m_settings.noise ? 1.0 : 0.0;
    const double l1 = CALN::getCarrierFrequency(CALN::eCALFREQUENCY_L1);
    CHalvexObservation observation(
        CPrnID(satellite.id.number, static_cast<CPrnID::PrnType>(systemOfCode(satellite.id.system)->typeBit())));
    for (unsigned slot = 0; slot < CHalvexObservation::kSlots; ++slot) {
        const SlotBand band = slotBand(satellite.id.system, static_cast<int>(slot));
        const rinex::SlotSignalOrder order = rinex::slotSignalOrder(satellite.id.system, static_cast<int>(slot));
        if (band.rinexBand == 0) continue;
        const double frequency = CALN::getCarrierFrequency(band.frequency, satellite.channel);
        const double wavelength = kSpeedOfLight / frequency;
        const double scale = l1 / frequency * (l1 / frequency);
        const auto codeRange = [scale](const Sight& s) { return s.range + scale * s.ionosphere; };
        const auto cycles = [=](const Sight& s) { return (s.range - scale * s.ionosphere) / wavelength; };
        const bool slip = noise(satellite.id, slot, 1) < kSlipsPerSignal;
        if (slip) {
            ++m_slips;
            satellite.ambiguity[slot] += 1.0 + std::floor(100.0 * noise(satellite.id, slot, 2));
        }
        const auto spread = [&](unsigned kind, double size) {
            return noiseSize * size * (noise(satellite.id, slot, kind) - 0.5);
        };
        observation.setPseudorangeC(slot, toMillis(codeRange(now) + spread(3, 0.6)));
        if (!order.precise.empty()) observation.setPseudorangeP(slot, toMillis(codeRange(now) + spread(4, 0.3)));
        observation.setPhase(slot, toMillis(cycles(now) + satellite.ambiguity[slot] + spread(5, 0.02)), true);
        observation.setDoppler(slot, static_cast<float>(toMillis(cycles(before) - cycles(after) + spread(6, 0.1))));
        observation.setCNO(slot, static_cast<float>(toMillis(32.0 + 20.0 * std::sin(now.elevation) + spread(7, 1.0))));
        observation.setLossOfLock(slot, slip);
        observation.setParityKnown(slot, true);
        observation.setContLockCount(slot,
                                     m_lockCounts.getCount(band.frequency, MDB::CPrnIdZ9(satellite.id), slip, m_now));
    }
    station.AddObservation(observation, false);
}

}  // namespace halvex::tool
