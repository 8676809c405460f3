#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <vector>

#include "formats/rinex/ObservationEpoch.h"
#include "formats/rinex/ObservationHeader.h"
#include "formats/rinex/SignalSlots.h"
#include "halvex/observations/ContLockCount.h"
#include "halvex/observations/HalvexStationObservation.h"

namespace halvex::rinex {

/// What a file holds and a station's record has no place for, counted.
struct LossCounts {
    /// Values by satellite system and code: of a band without a slot, or beside the signal that a slot took.
    std::map<std::pair<CALN::eCALSATSYSTEM, ObservationCode>, std::uint64_t> values;
    std::uint64_t roundedDoppler = 0;        ///< Doppler values whose last printed digit a float does not hold
    std::uint64_t roundedCno = 0;            ///< the same for C/N0
    std::uint64_t roundedEpochs = 0;         ///< epochs off the millisecond, rounded to it
    std::uint64_t signalStrengthDigits = 0;  ///< strength digits of phases without a C/N0, which a record holds alone
    std::uint64_t lossOfLockBits = 0;        ///< indicator bits that no flag of a record stands for
    std::uint64_t repeatedSatellites = 0;    ///< a satellite's second line in an epoch
    std::uint64_t cycleSlipEpochs = 0;       ///< epochs with flag 6
    std::uint64_t unstampedEpochs = 0;       ///< epochs outside GPS weeks 0 to 65535: left out
    std::uint64_t powerFailures = 0;         ///< epochs with flag 1: kept as loss of lock of every phase

    [[nodiscard]] std::uint64_t total() const;
};

/// Turns epochs of a RINEX file into station epochs: values to slots (SignalSlots.h), loss of lock from the indicator,
/// lock counts, GPS time. Each value comes from the first signal of its order that the satellite has in that epoch.
/// Holds the state of a station from epoch to epoch: from which signal a phase came last (a change is a loss of lock)
/// and since when it is tracked (a phase that misses an epoch counts its lock anew). One thread at a time.
class EpochBuilder {
public:
    explicit EpochBuilder(const ObservationHeader& header) { setHeader(header); }
    /// Takes the columns of a header that an event has changed; the state of the satellites stays.
    void setHeader(const ObservationHeader& header);

    /// Fills `station` (its filter stays) from an epoch with flag 0 or 1. False, with `station` as it was, for any
    /// other and for a time that a record cannot hold; both are counted.
    bool build(const ObservationEpoch& epoch, std::int32_t siteId, CHalvexStationObservation& station);

    /// Where the values of a satellite have come from so far.
    [[nodiscard]] const SatelliteSignals& signals(const CALN::SCalSatID& satellite) const;
    /// Satellites seen in the epoch built last, in its order.
    [[nodiscard]] const std::vector<CALN::SCalSatID>& satellites() const { return m_satellites; }
    [[nodiscard]] LossCounts losses() const;

private:
    static constexpr std::size_t kNumbers = 64;
    static constexpr int kNoColumn = -1;

    /// Columns of one signal: the code types that a slot's phase signal brings along.
    struct PhaseColumns {
        char attribute = 0;
        int phase = kNoColumn;
        int doppler = kNoColumn;
        int cno = kNoColumn;
    };
    struct CodeColumn {
        char attribute = 0;
        int column = kNoColumn;
    };
    struct SlotColumns {
        CALN::eCALFREQUENCY frequency = CALN::eCALFREQUENCY_L1;
        std::vector<CodeColumn> civil, precise;
        std::vector<PhaseColumns> phase;
    };
    struct SystemColumns {
        std::array<SlotColumns, kFrequencySlots> slots;
        std::vector<ObservationCode> codes;
        std::vector<std::uint64_t> lost;  // values without a place, by column
    };
    struct SatelliteState {
        SatelliteSignals signals;
        std::array<std::uint32_t, kFrequencySlots> phaseEpoch{};  // the epoch, counted from 1, that last had the phase
        std::uint32_t epoch = 0;                                  // the epoch that last had the satellite
    };

    void fillSlot(const SlotColumns& columns, unsigned slot, std::span<const ObservedValue> values,
                  const CALN::SCalSatID& id, SatelliteState& state, CHalvexObservation& observation);
    void takeLossOfLock(const ObservedValue& phase, const CALN::SCalSatID& id, unsigned slot,
                        CHalvexObservation& observation);
    void addLost(LossCounts& losses) const;

    TimeSystem m_timeSystem = TimeSystem::gps;
    std::optional<int> m_leapSeconds;
    bool m_oldIndicators = false;  // loss-of-lock indicators of RINEX 2
    std::map<unsigned char, std::array<int, 2>> m_wavelengthFactors;
    std::array<SystemColumns, CALN::kSystemSlots> m_systems;
    std::array<std::array<SatelliteState, kNumbers>, CALN::kSystemSlots> m_states;
    std::vector<CALN::SCalSatID> m_satellites;
    std::vector<char> m_used;  // columns that found their place
    CContLockCount m_lockCounts;
    SMjdTime m_time;
    bool m_powerFailure = false;
    std::uint32_t m_epochs = 0;
    LossCounts m_losses;
};

}  // namespace halvex::rinex
