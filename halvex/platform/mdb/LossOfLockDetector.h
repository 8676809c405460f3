#pragma once

#include <array>
#include <cstdint>
#include <map>

#include "halvex/platform/Export.h"
#include "halvex/platform/caln/Frequency.h"
#include "halvex/platform/mdb/PrnIdZ9.h"

namespace MDB {

/// Remembers losses of lock between the epochs that are kept, so that a stream thinned from one epoch a second to one
/// in thirty still says that a phase was lost in between. Every received epoch is stored, every kept epoch is updated:
/// a signal reports the loss once and is clean again. One thread at a time.
class HALVEX_EXPORT CLossOfLockDetector {
public:
    /// Takes in one signal of an epoch. It was lost when `lossOfLock` says so or when its lock count went down.
    void store(const CPrnIdZ9& satellite, int slot, bool lossOfLock, std::uint16_t lockCount);
    /// Whether the signal was lost since this was last asked; forgets it.
    [[nodiscard]] bool takeLoss(const CPrnIdZ9& satellite, int slot);
    void Clear() { m_satellites.clear(); }

private:
    struct Signal {
        std::uint16_t lockCount = 0;
        bool lost = false;
    };
    std::map<CPrnIdZ9, std::array<Signal, halvex::kFrequencySlots>> m_satellites;
};

/// What a station's epoch offers to the detector.
class HALVEX_EXPORT IObsLossOfLock {
public:
    virtual ~IObsLossOfLock();
    /// Milliseconds of the GPS week.
    [[nodiscard]] virtual std::uint32_t getEpochTimeMsecs() const = 0;
    /// Sets loss of lock on every signal of this epoch that `detector` knows as lost.
    virtual void UpdateLossOfLock(CLossOfLockDetector& detector) = 0;
    /// Hands this epoch's signals to `detector`.
    virtual void StoreLossOfLock(CLossOfLockDetector& detector) const = 0;

protected:
    IObsLossOfLock() = default;
    IObsLossOfLock(const IObsLossOfLock&) = default;
    IObsLossOfLock& operator=(const IObsLossOfLock&) = default;
};

}  // namespace MDB
