#include "tools/halvex/corrections/Baseline.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>
#include <vector>

#include "halvex/platform/caln/FrequencyMgr.h"
#include "tools/halvex/orbits/BroadcastOrbit.h"
#include "tools/halvex/signals/Atmosphere.h"
#include "tools/halvex/signals/SignalPath.h"

namespace halvex::tool {
namespace {

constexpr double kFixedWithin = 0.25;   // [cycle]
constexpr double kSlippedBeyond = 0.5;  // from one epoch to the next [cycle]
constexpr double kKept = 0.99;          // of a deviation, from one epoch to the next, when all are adjusted
constexpr double kOutlier = 0.1;        // from what the others say is common [m]

double median(std::vector<double> values) {
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

/// Mean of those that are near the median: with the same satellites as before it goes on without a step.
double agreed(const std::vector<double>& values) {
    const double middle = median(values);
    double sum = 0.0;
    double count = 0.0;
    for (const double each : values) {
        if (std::abs(each - middle) > kOutlier) continue;
        sum += each;
        count += 1.0;
    }
    return count > 0.0 ? sum / count : middle;
}

std::optional<double> codeOf(const CHalvexObservation& observation, unsigned slot) {
    double metres = 0.0;
    if (observation.getPseudorangeC(slot, metres) || observation.getPseudorangeP(slot, metres)) return metres;
    return std::nullopt;
}

CALN::SCalObservationFreq& entryOf(CHalvexZ9StationCorrection& result, const CALN::SCalSatID& id,
                                   std::uint8_t issueOfData, unsigned slot) {
    auto found = std::find_if(result.satellites.begin(), result.satellites.end(),
                              [&](const auto& each) { return each.satId == id; });
    if (found == result.satellites.end()) {
        result.satellites.push_back({id, issueOfData, {}});
        found = std::prev(result.satellites.end());
    }
    CALN::SCalObservationFreq& entry = found->frequencies.emplace_back();
    entry.frequency = slotBand(id.system, static_cast<int>(slot)).frequency;
    return entry;
}

void fill(CALN::SCalObservationFreq& entry, const StationResiduals::Signal& signal, double phaseMetres, bool fixed) {
    using State = CNALHalvexObservationZ9Helper;
    entry.phase = phaseMetres / signal.wavelength;
    entry.phaseValid = true;
    entry.pseudorange = signal.codeMetres;
    entry.pseudorangeValid = signal.code;
    entry.ambiguityFixState = fixed ? State::kFixed : State::kFloat;
}

}  // namespace

StationResiduals residualsOf(const CHalvexStationObservation& station, const SMjdTime& t, const ORBIT_COORD& position,
                             OrbitSource& orbits, double mask) {
    struct Seen {
        const CHalvexObservation* observation;
        CALN::SCalSatID id;
        const rinex::NavigationRecord* ephemeris;
        double elevation;
    };
    const ORBIT_GEOGRAPHIC geographic = toGeographic(position);
    const LocalFrame frame(position, geographic);
    const double seconds = t.GetGpsSeconds();
    std::vector<Seen> seen;
    std::vector<double> clocks;
    for (const CHalvexObservation& observation : station.observations()) {
        const auto id = CHalvexStationObservation::getNewPrnTypeFromDeprecated(observation.getPrnID()).getCalSatID();
        const rinex::NavigationRecord* ephemeris = orbits.serving(id, t);
        const auto path = ephemeris != nullptr ? signalPath(*ephemeris, seconds, position) : std::nullopt;
        if (!path) continue;
        const double elevation = frame.directionTo(path->from).elevation;
        if (!(elevation >= mask)) continue;
        seen.push_back({&observation, id, ephemeris, elevation});
        if (const auto code = codeOf(observation, 0)) clocks.push_back(*code - path->range);
    }
    StationResiduals residuals;
    if (clocks.empty()) return residuals;
    const double clock = median(clocks);
    for (double& each : clocks) each = std::abs(each - clock);
    residuals.codeSpread = median(clocks);

    for (const Seen& each : seen) {
        const auto path = signalPath(*each.ephemeris, seconds - clock / kSpeedOfLight, position);
        if (!path) continue;
        StationResiduals::Satellite satellite;
        satellite.elevation = each.elevation;
        satellite.troposphere = troposphereDelay(geographic, each.elevation);
        satellite.issueOfData = issueOfDataOf(*each.ephemeris);
        for (unsigned slot = 0; slot < kFrequencySlots; ++slot) {
            StationResiduals::Signal& signal = satellite.signals[slot];
            const SlotBand band = slotBand(each.id.system, static_cast<int>(slot));
            if (band.rinexBand == 0 ||
                !CALN::CCalFrequencyMgr::getInstance().getWavelength(each.id, band.frequency, signal.wavelength)) {
                continue;
            }
            if (const auto code = codeOf(*each.observation, slot)) {
                signal.code = true;
                signal.codeMetres = *code - path->range - clock;
            }
            double cycles = 0.0;
            if (!each.observation->getPhase(slot, cycles, true)) continue;
            signal.phase = true;
            signal.phaseMetres = cycles * signal.wavelength - path->range - clock;
            each.observation->getLossOfLock(slot, signal.lossOfLock);
        }
        residuals.satellites.emplace(each.id, satellite);
    }
    return residuals;
}

void Levelling::forgetAbsent(const StationResiduals& residuals) {
    for (auto& [id, levels] : m_levels) {
        const auto found = residuals.satellites.find(id);
        for (std::size_t slot = 0; slot < levels.size(); ++slot) {
            const bool there = found != residuals.satellites.end() && found->second.signals[slot].phase;
            if (!there || found->second.signals[slot].lossOfLock) levels[slot].set = false;
        }
    }
}

CHalvexZ9StationCorrection Levelling::master(const StationResiduals& residuals) {
    forgetAbsent(residuals);
    CHalvexZ9StationCorrection result;
    for (const auto& [id, satellite] : residuals.satellites) {
        for (unsigned slot = 0; slot < kFrequencySlots; ++slot) {
            const StationResiduals::Signal& signal = satellite.signals[slot];
            if (!signal.phase) continue;
            Level& level = m_levels[id][slot];
            if (!level.set) {
                level.set = true;
                level.cycles = std::nearbyint(signal.phaseMetres / signal.wavelength);
                ++level.begun;
            }
            fill(entryOf(result, id, satellite.issueOfData, slot), signal,
                 signal.phaseMetres - level.cycles * signal.wavelength, true);
        }
    }
    return result;
}

CHalvexZ9StationCorrection Levelling::auxiliary(const StationResiduals& residuals,
                                                const StationResiduals& masterResiduals,
                                                const Levelling& masterLevels) {
    forgetAbsent(residuals);
    CHalvexZ9StationCorrection result;
    for (const SatelliteSystem& system : kSatelliteSystems) {
        for (unsigned slot = 0; slot < kFrequencySlots; ++slot) {
            levelCarrier(system.code, slot, residuals, masterResiduals, masterLevels, result);
        }
    }
    return result;
}

void Levelling::levelCarrier(CALN::eCALSATSYSTEM system, unsigned slot, const StationResiduals& residuals,
                             const StationResiduals& masterResiduals, const Levelling& masterLevels,
                             CHalvexZ9StationCorrection& result) {
    struct Difference {
        CALN::SCalSatID id;
        const StationResiduals::Satellite* satellite;
        const StationResiduals::Signal* signal;
        Level* level;
        const Level* master;
        double metres;  // single difference with the auxiliary station's ambiguity, without the troposphere
        [[nodiscard]] double levelled() const { return metres - level->cycles * signal->wavelength; }
    };
    std::vector<Difference> differences;
    for (const auto& [id, satellite] : residuals.satellites) {
        const StationResiduals::Signal& signal = satellite.signals[slot];
        const auto found = masterResiduals.satellites.find(id);
        if (id.system != system || !signal.phase || found == masterResiduals.satellites.end()) continue;
        const StationResiduals::Signal& other = found->second.signals[slot];
        if (!other.phase) continue;
        const Level& masterLevel = masterLevels.m_levels.at(id)[slot];
        Level& level = m_levels[id][slot];
        if (level.masterBegun != masterLevel.begun) level.set = false;
        const double troposphere = satellite.troposphere - found->second.troposphere;
        const double metres =
            signal.phaseMetres - (other.phaseMetres - masterLevel.cycles * other.wavelength) - troposphere;
        differences.push_back({id, &satellite, &signal, &level, &masterLevel, metres});
    }
    if (differences.empty()) return;

    // What all have in common: such that those that go on go on smoothly; without any, what brings most of them next to
    // whole cycles.
    std::vector<double> known;
    for (const Difference& each : differences) {
        if (each.level->set) known.push_back(each.levelled() - kKept * each.level->deviation);
    }
    if (known.empty()) {
        double least = std::numeric_limits<double>::infinity();
        std::vector<double> fractions(differences.size());
        for (const Difference& candidate : differences) {
            const double start = std::remainder(candidate.metres, candidate.signal->wavelength);
            double sum = 0.0;
            for (std::size_t i = 0; i < differences.size(); ++i) {
                fractions[i] = std::remainder(differences[i].metres - start, differences[i].signal->wavelength);
                sum += std::abs(fractions[i]);
                fractions[i] += start;
            }
            if (sum < least) {
                least = sum;
                known = fractions;
            }
        }
    }
    const double common = agreed(known);
    for (const Difference& each : differences) {
        const double wavelength = each.signal->wavelength;
        const bool slipped =
            each.level->set && std::abs(each.levelled() - common - each.level->deviation) > kSlippedBeyond * wavelength;
        if (slipped) ++m_slips;
        if (!each.level->set || slipped) {
            each.level->set = true;
            each.level->cycles = std::nearbyint((each.metres - common) / wavelength);
            ++each.level->begun;
            each.level->masterBegun = each.master->begun;
        }
        each.level->deviation = each.levelled() - common;
        const bool fixed = std::abs(each.level->deviation) <= kFixedWithin * wavelength;
        fill(entryOf(result, each.id, each.satellite->issueOfData, slot), *each.signal,
             each.signal->phaseMetres - each.level->cycles * wavelength - common, fixed);
    }
}

}  // namespace halvex::tool
