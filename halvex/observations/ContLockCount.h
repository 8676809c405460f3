#pragma once

#include <array>
#include <cstdint>
#include <unordered_map>

#include "halvex/platform/Export.h"
#include "halvex/platform/caln/Frequency.h"
#include "halvex/platform/mdb/PrnIdZ9.h"
#include "halvex/platform/mjd/MjdTime.h"

/// Counts how long signals have been tracked without a break, for the lock counts of a station's observations: for each
/// carrier a map from the satellite to the instant at which tracking started. One thread at a time.
class HALVEX_EXPORT CContLockCount {
public:
    /// Lock time of the signal at `now` in hundredths of a second with 50 ms steps, saturating at 65535. Loss of lock,
    /// and the first sight of a signal, start the count anew and give 0, as does a carrier that does not exist.
    std::uint16_t getCount(CALN::eCALFREQUENCY frequency, const MDB::CPrnIdZ9& satellite, bool lossOfLock,
                           const SMjdTime& now);
    void Clear();

    friend bool operator==(const CContLockCount&, const CContLockCount&) = default;

private:
    std::array<std::unordered_map<MDB::CPrnIdZ9, SMjdTime>, CALN::kFrequencyCount> m_starts;
};
