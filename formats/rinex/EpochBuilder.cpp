#include "formats/rinex/EpochBuilder.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "formats/rinex/TimeSystems.h"

namespace halvex::rinex {
namespace {

// Loss-of-lock indicator. RINEX 2.11, table A1; RINEX 4.01, 6.7.1.
constexpr unsigned kLockLost = 1;
constexpr unsigned kOppositeWavelengthFactor = 2;  // RINEX 2; since RINEX 3: half-cycle ambiguity
constexpr unsigned kAntiSpoofing = 4;              // RINEX 2; since RINEX 3: BOC tracking of an MBOC signal

/// Whether a value printed with three decimals is told apart after a float has held it.
bool losesDigits(double value) {
    return std::nearbyint(value * 1000.0) != std::nearbyint(static_cast<double>(static_cast<float>(value)) * 1000.0);
}

int columnOf(const std::vector<ObservationCode>& codes, const ObservationCode& code) {
    const auto found = std::find(codes.begin(), codes.end(), code);
    return found != codes.end() ? static_cast<int>(found - codes.begin()) : -1;
}

}  // namespace

std::uint64_t LossCounts::total() const {
    std::uint64_t sum = roundedDoppler + roundedCno + roundedEpochs + lossOfLockBits + repeatedSatellites +
                        cycleSlipEpochs + unstampedEpochs;
    for (const auto& [code, count] : values) sum += count;
    return sum;
}

void EpochBuilder::setHeader(const ObservationHeader& header) {
    addLost(m_losses);
    m_timeSystem = header.timeSystem;
    m_leapSeconds = header.leapSeconds;
    m_oldIndicators = header.version < 3.0;
    m_wavelengthFactors = header.wavelengthFactors;
    for (const SatelliteSystem& system : kSatelliteSystems) {
        SystemColumns& columns = m_systems[system.code];
        columns.codes = header.codes[system.code];
        columns.lost.assign(columns.codes.size(), 0);
        for (int slot = 0; slot < kFrequencySlots; ++slot) {
            const SlotBand band = slotBand(system.code, slot);
            const SlotSignalOrder order = slotSignalOrder(system.code, slot);
            const auto column = [&](char type, char attribute) {
                return columnOf(columns.codes, {type, band.rinexBand, attribute});
            };
            const auto codeColumns = [&](std::string_view attributes) {
                std::vector<CodeColumn> list;
                for (const char attribute : attributes) {
                    if (const int at = column('C', attribute); at >= 0) list.push_back({attribute, at});
                }
                return list;
            };
            SlotColumns& target = columns.slots[static_cast<std::size_t>(slot)];
            target = {band.frequency, codeColumns(order.civil), codeColumns(order.precise), {}};
            for (const char attribute : order.phase) {
                const PhaseColumns signal{attribute, column('L', attribute), column('D', attribute),
                                          column('S', attribute)};
                if (std::max({signal.phase, signal.doppler, signal.cno}) >= 0) target.phase.push_back(signal);
            }
        }
    }
}

void EpochBuilder::addLost(LossCounts& losses) const {
    for (const SatelliteSystem& system : kSatelliteSystems) {
        const SystemColumns& columns = m_systems[system.code];
        for (std::size_t i = 0; i < columns.lost.size(); ++i) {
            if (columns.lost[i] != 0) losses.values[{system.code, columns.codes[i]}] += columns.lost[i];
        }
    }
}

LossCounts EpochBuilder::losses() const {
    LossCounts losses = m_losses;
    addLost(losses);
    return losses;
}

const SatelliteSignals& EpochBuilder::signals(const CALN::SCalSatID& satellite) const {
    static const SatelliteSignals kNone;
    if (systemOfCode(satellite.system) == nullptr || satellite.number >= kNumbers) return kNone;
    return m_states[satellite.system][satellite.number].signals;
}

bool EpochBuilder::build(const ObservationEpoch& epoch, std::int32_t siteId, CHalvexStationObservation& station) {
    if (epoch.flag == EpochFlag::cycleSlips) ++m_losses.cycleSlipEpochs;
    if (epoch.flag != EpochFlag::ok && epoch.flag != EpochFlag::powerFailure) return false;

    const SMjdTime exact = toGpsTime(epoch.time, m_timeSystem, m_leapSeconds);
    m_time = exact;
    m_time.RoundTo(1.0, SMjdTime::kUnitMillisecond);
    if (m_time.GetGpsWeek() < 0 || m_time.GetGpsWeek() > std::numeric_limits<std::uint16_t>::max()) {
        ++m_losses.unstampedEpochs;
        return false;
    }
    m_powerFailure = epoch.flag == EpochFlag::powerFailure;
    m_losses.powerFailures += m_powerFailure ? 1U : 0U;
    ++m_epochs;
    m_losses.roundedEpochs += m_time != exact ? 1U : 0U;

    station.Clear();
    station.setTimeSynchronized(true);
    station.setSiteID(siteId);
    station.setGPSWeek(static_cast<std::uint16_t>(m_time.GetGpsWeek()));
    station.setGPSFraction(static_cast<std::uint32_t>(m_time.GetGpsWeekMilliseconds()));
    if (epoch.clockOffset) {
        station.setClockOffsetCode(*epoch.clockOffset);
        station.setClockOffsetPhase(*epoch.clockOffset);
    }

    m_satellites.clear();
    for (const ObservationEpoch::Satellite& satellite : epoch.satellites) {
        const SatelliteSystem* system = systemOfCode(satellite.id.system);
        if (system == nullptr || satellite.id.number >= kNumbers) continue;  // the reader hands out none of these
        SatelliteState& state = m_states[system->code][satellite.id.number];
        if (state.epoch == m_epochs) {
            ++m_losses.repeatedSatellites;
            continue;
        }
        state.epoch = m_epochs;
        m_satellites.push_back(satellite.id);

        SystemColumns& columns = m_systems[system->code];
        const std::span<const ObservedValue> values = epoch.valuesOf(satellite);
        m_used.assign(values.size(), 0);
        CHalvexObservation observation(CPrnID(satellite.id.number, static_cast<CPrnID::PrnType>(system->typeBit())));
        for (unsigned slot = 0; slot < CHalvexObservation::kSlots; ++slot) {
            fillSlot(columns.slots[slot], slot, values, satellite.id, state, observation);
        }
        for (std::size_t i = 0; i < values.size() && i < columns.lost.size(); ++i) {
            if (values[i].present && m_used[i] == 0) ++columns.lost[i];
        }
        station.AddObservation(observation, false);
    }
    return true;
}

void EpochBuilder::fillSlot(const SlotColumns& columns, unsigned slot, std::span<const ObservedValue> values,
                            const CALN::SCalSatID& id, SatelliteState& state, CHalvexObservation& observation) {
    SlotSignals& signals = state.signals[slot];
    const auto at = [values](int column) -> const ObservedValue* {
        if (column < 0 || static_cast<std::size_t>(column) >= values.size()) return nullptr;
        const ObservedValue& value = values[static_cast<std::size_t>(column)];
        return value.present ? &value : nullptr;
    };
    const auto use = [this](int column) { m_used[static_cast<std::size_t>(column)] = 1; };

    const auto pseudorange = [&](const std::vector<CodeColumn>& candidates, char& attribute, auto&& set) {
        for (const CodeColumn& candidate : candidates) {
            const ObservedValue* value = at(candidate.column);
            if (value == nullptr) continue;
            set(value->value);
            use(candidate.column);
            attribute = candidate.attribute;
            return;
        }
    };
    pseudorange(columns.civil, signals.pseudorangeC, [&](double metres) { observation.setPseudorangeC(slot, metres); });
    pseudorange(columns.precise, signals.pseudorangeP,
                [&](double metres) { observation.setPseudorangeP(slot, metres); });

    const auto found = std::find_if(columns.phase.begin(), columns.phase.end(),
                                    [&](const PhaseColumns& signal) { return at(signal.phase) != nullptr; });
    const PhaseColumns* chosen = found != columns.phase.end() ? &*found : nullptr;
    bool lockLost = false;
    if (chosen != nullptr) {
        const ObservedValue& phase = *at(chosen->phase);
        observation.setPhase(slot, phase.value, true);
        use(chosen->phase);
        lockLost = m_powerFailure || (phase.lossOfLock & kLockLost) != 0 ||
                   (signals.phase != 0 && signals.phase != chosen->attribute);
        observation.setLossOfLock(slot, lockLost);
        takeLossOfLock(phase, id, slot, observation);
        signals.phase = chosen->attribute;

        std::uint32_t& phaseEpoch = state.phaseEpoch[slot];
        const bool missedAnEpoch = phaseEpoch + 1 != m_epochs;
        phaseEpoch = m_epochs;
        observation.setContLockCount(
            slot, m_lockCounts.getCount(columns.frequency, MDB::CPrnIdZ9(id), lockLost || missedAnEpoch, m_time));
    }

    // Doppler and C/N0 of the same signal, else of the first that has one.
    const auto companion = [&](int PhaseColumns::*kind, char& attribute, std::uint64_t& rounded, auto&& set) {
        const PhaseColumns* from = chosen != nullptr && at(chosen->*kind) != nullptr ? chosen : nullptr;
        for (auto candidate = columns.phase.begin(); from == nullptr && candidate != columns.phase.end(); ++candidate) {
            if (at((*candidate).*kind) != nullptr) from = &*candidate;
        }
        if (from == nullptr) return;
        const double value = at(from->*kind)->value;
        set(static_cast<float>(value));
        rounded += losesDigits(value) ? 1U : 0U;
        use(from->*kind);
        attribute = from->attribute;
    };
    companion(&PhaseColumns::doppler, signals.doppler, m_losses.roundedDoppler,
              [&](float hertz) { observation.setDoppler(slot, hertz); });
    companion(&PhaseColumns::cno, signals.cno, m_losses.roundedCno,
              [&](float decibelHertz) { observation.setCNO(slot, decibelHertz); });
    if (chosen != nullptr && at(chosen->phase)->signalStrength != 0 && !observation.IsCNOValid(slot)) {
        ++m_losses.signalStrengthDigits;
    }
}

void EpochBuilder::takeLossOfLock(const ObservedValue& phase, const CALN::SCalSatID& id, unsigned slot,
                                  CHalvexObservation& observation) {
    const unsigned bits = phase.lossOfLock;
    if (!m_oldIndicators) {
        observation.setParityKnown(slot, (bits & kOppositeWavelengthFactor) == 0);
        m_losses.lossOfLockBits += (bits & kAntiSpoofing) != 0 ? 1U : 0U;
        return;
    }
    observation.setASInEffect(slot, (bits & kAntiSpoofing) != 0);
    int factor = 1;
    if (id.system == CALN::eCALSATSYSTEM_GPS && slot < 2) {
        auto found = m_wavelengthFactors.find(id.number);
        if (found == m_wavelengthFactors.end()) found = m_wavelengthFactors.find(0);
        if (found != m_wavelengthFactors.end()) factor = found->second[slot];
    }
    const bool opposite = (bits & kOppositeWavelengthFactor) != 0;
    observation.setWaveLength(slot, (factor == 2) != opposite);
    observation.setParityKnown(slot, (factor == 2) == opposite);
}

}  // namespace halvex::rinex
