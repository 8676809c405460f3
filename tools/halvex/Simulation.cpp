#include "tools/halvex/Simulation.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "formats/rinex/ObservationWriter.h"

namespace halvex::tool {
namespace {

constexpr double kMu = 3.986005e14;                 // [m^3/s^2], IS-GPS-200, table 20-IV
constexpr double kEarthRotation = 7.2921151467e-5;  // [rad/s], the same
constexpr double kSpeedOfLight = 299792458.0;       // [m/s]
constexpr double kMask = 10.0 * std::numbers::pi / 180.0;
constexpr double kSlipsPerSignal = 1.0 / 2000.0;  // per epoch

struct Constellation {
    CALN::eCALSATSYSTEM system;
    int planes;
    int perPlane;
    double radius;       // [m]
    double inclination;  // [deg]
};
constexpr Constellation kConstellations[] = {
    {CALN::eCALSATSYSTEM_GPS, 6, 5, 26560e3, 55.0},
    {CALN::eCALSATSYSTEM_GLONASS, 3, 8, 25508e3, 64.8},
    {CALN::eCALSATSYSTEM_GALILEO, 3, 8, 29600e3, 56.0},
    {CALN::eCALSATSYSTEM_BEIDOU, 3, 8, 27906e3, 55.0},
};

/// SplitMix64 (Steele, Lea, Flood 2014): the same bits everywhere, unlike the standard distributions.
std::uint64_t mixed(std::uint64_t x) {
    x += 0x9E3779B97F4A7C15U;
    x = (x ^ (x >> 30)) * 0xBF58476D1CE4E5B9U;
    x = (x ^ (x >> 27)) * 0x94D049BB133111EBU;
    return x ^ (x >> 31);
}

double toMillis(double value) {
    return std::nearbyint(value * 1000.0) / 1000.0;
}

}  // namespace

Simulation::Simulation(const Settings& settings)
    : m_settings(settings),
      m_epochs(static_cast<std::uint64_t>(std::floor(settings.duration / settings.interval + 1e-9))) {
    for (const Constellation& constellation : kConstellations) {
        const int count =
            std::min<int>(constellation.planes * constellation.perPlane, systemOfCode(constellation.system)->maxNumber);
        for (int i = 0; i < count; ++i) {
            const int plane = i % constellation.planes;
            const int place = i / constellation.planes;
            Satellite satellite;
            satellite.id = {constellation.system, static_cast<unsigned char>(i + 1)};
            satellite.radius = constellation.radius;
            satellite.inclination = constellation.inclination * std::numbers::pi / 180.0;
            satellite.node =
                2.0 * std::numbers::pi * plane / constellation.planes + 0.3 * static_cast<int>(constellation.system);
            satellite.anomaly = 2.0 * std::numbers::pi * (place + 0.37 * plane) / constellation.perPlane;
            satellite.channel = i % 14 - 7;
            for (unsigned slot = 0; slot < CHalvexObservation::kSlots; ++slot) {
                satellite.ambiguity[slot] = std::floor(1e6 * noise(satellite.id, slot, 0));
            }
            m_satellites.push_back(satellite);
        }
    }
}

double Simulation::noise(const CALN::SCalSatID& id, unsigned slot, unsigned kind) const {
    const std::uint64_t key = mixed(m_settings.seed) ^ (m_epoch << 24 | std::uint64_t{id.system} << 16 |
                                                        std::uint64_t{id.number} << 8 | slot << 4 | kind);
    return static_cast<double>(mixed(key) >> 11) * 0x1p-53;
}

Simulation::Sight Simulation::sight(const Satellite& satellite, double seconds) const {
    const double rate = std::sqrt(kMu / (satellite.radius * satellite.radius * satellite.radius));
    const double u = satellite.anomaly + rate * seconds;
    const double node = satellite.node - kEarthRotation * seconds;
    const double inPlaneX = satellite.radius * std::cos(u);
    const double inPlaneY = satellite.radius * std::sin(u);
    const double cosI = std::cos(satellite.inclination);
    const std::array<double, 3> orbit = {inPlaneX * std::cos(node) - inPlaneY * cosI * std::sin(node),
                                         inPlaneX * std::sin(node) + inPlaneY * cosI * std::cos(node),
                                         inPlaneY * std::sin(satellite.inclination)};
    double range = 0.0, up = 0.0, site = 0.0;
    for (std::size_t i = 0; i < 3; ++i) {
        const double d = orbit[i] - m_settings.position[i];
        range += d * d;
        up += d * m_settings.position[i];
        site += m_settings.position[i] * m_settings.position[i];
    }
    range = std::sqrt(range);
    return {range, std::asin(up / (range * std::sqrt(site)))};
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
    header.position = m_settings.position;
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

bool Simulation::next(CHalvexStationObservation& station) {
    if (m_epoch >= m_epochs) return false;
    const double seconds = static_cast<double>(m_epoch) * m_settings.interval;
    m_now = m_settings.start;
    m_now.AddSeconds(seconds);
    m_now.RoundTo(1.0);
    station.Clear();
    station.setTimeSynchronized(true);
    station.setGPSWeek(static_cast<std::uint16_t>(m_now.GetGpsWeek()));
    station.setGPSFraction(static_cast<std::uint32_t>(m_now.GetGpsWeekMilliseconds()));
    for (Satellite& satellite : m_satellites) fill(satellite, seconds, station);
    ++m_epoch;
    return true;
}

void Simulation::fill(Satellite& satellite, double seconds, CHalvexStationObservation& station) {
    const Sight now = sight(satellite, seconds);
    if (now.elevation < kMask) return;
    const double rangeRate = (sight(satellite, seconds + 0.5).range - sight(satellite, seconds - 0.5).range);
    CHalvexObservation observation(
        CPrnID(satellite.id.number, static_cast<CPrnID::PrnType>(systemOfCode(satellite.id.system)->typeBit())));
    for (unsigned slot = 0; slot < CHalvexObservation::kSlots; ++slot) {
        const SlotBand band = slotBand(satellite.id.system, static_cast<int>(slot));
        const rinex::SlotSignalOrder order = rinex::slotSignalOrder(satellite.id.system, static_cast<int>(slot));
        if (band.rinexBand == 0) continue;
        const double wavelength = kSpeedOfLight / CALN::getCarrierFrequency(band.frequency, satellite.channel);
        const bool slip = noise(satellite.id, slot, 1) < kSlipsPerSignal;
        if (slip) {
            ++m_slips;
            satellite.ambiguity[slot] += 1.0 + std::floor(100.0 * noise(satellite.id, slot, 2));
        }
        const auto spread = [&](unsigned kind, double size) { return size * (noise(satellite.id, slot, kind) - 0.5); };
        observation.setPseudorangeC(slot, toMillis(now.range + spread(3, 0.6)));
        if (!order.precise.empty()) observation.setPseudorangeP(slot, toMillis(now.range + spread(4, 0.3)));
        observation.setPhase(slot, toMillis(now.range / wavelength + satellite.ambiguity[slot] + spread(5, 0.02)),
                             true);
        observation.setDoppler(slot, static_cast<float>(toMillis(-rangeRate / wavelength + spread(6, 0.1))));
        observation.setCNO(slot, static_cast<float>(toMillis(32.0 + 20.0 * std::sin(now.elevation) + spread(7, 1.0))));
        observation.setLossOfLock(slot, slip);
        observation.setParityKnown(slot, true);
        observation.setContLockCount(slot,
                                     m_lockCounts.getCount(band.frequency, MDB::CPrnIdZ9(satellite.id), slip, m_now));
    }
    station.AddObservation(observation, false);
}

}  // namespace halvex::tool
