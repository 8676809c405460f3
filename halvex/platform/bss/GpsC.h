#pragma once

#include <cstdint>

#include "halvex/platform/Export.h"

namespace BSS::TIM {

/// What the central store knows about GPS minus UTC.
struct UtcLeapSecond {
    std::int16_t leapSeconds = 0;        ///< [s]
    std::int16_t futureLeapSeconds = 0;  ///< [s], after the announced change
    int week = 0;                        ///< GPS week of the announced change
    int dayNumber = 0;                   ///< day of that week at whose start the change takes effect, Sunday = 1
    bool futureValid = false;            ///< week and day number name a day: the week is above 0, the day 1 to 7
};

/// The computation library's central leap-second store, one for the process. Any thread; readers take no lock and see a
/// store as a whole.
class HALVEX_EXPORT GpsC {
public:
    static constexpr int kKindManual = 1;     ///< always stored; while not all zero it shuts kind 3 out
    static constexpr int kKindAutomatic = 3;  ///< stored unless a manual entry is in force

    /// Stores leap seconds `ls` until the start of day `dayNumber` of GPS week `week` and `lsf` after it (week 0: no
    /// change announced). An entry whose two counts are 0 empties the store, a manual one so that kind 3 is heard
    /// again. Other kinds are ignored.
    static void setGpsLeapSecondsData(std::int16_t ls, std::int16_t lsf, int week, int dayNumber, int kind);

    /// 0 and the stored values in `result`; -1, leaving it alone, while the store is empty.
    [[nodiscard]] static int getUtcLeapSecond(UtcLeapSecond& result);
};

}  // namespace BSS::TIM
