#pragma once

#include <atomic>
#include <cstdint>

#include "halvex/platform/Export.h"
#include "halvex/platform/mjd/MjdTime.h"

/// Where time conversions ask for leap seconds: the table of the process, or one that a caller brings along.
class HALVEX_EXPORT IGPSLeapSeconds {
public:
    /// One set of leap-second values. Each field is atomic by itself; whoever needs fields that belong together guards
    /// the set. A copy is taken field by field.
    struct SGPSLeapSeconds {
        std::atomic<std::int32_t> leapSeconds{0};           ///< GPS minus UTC before the announced change [s]
        std::atomic<std::int32_t> leapSecondsFuture{0};     ///< GPS minus UTC after it [s]
        std::atomic<std::int32_t> leapSecondsFutureMjd{0};  ///< MJD at whose start (UTC) it takes effect; 0: none
        std::atomic<std::int32_t> confirmMjd{0};  ///< MJD of the last confirmation by a message, or of a manual entry

        SGPSLeapSeconds() = default;
        SGPSLeapSeconds(std::int32_t ls, std::int32_t lsf, std::int32_t lsfMjd, std::int32_t confirm)
            : leapSeconds(ls), leapSecondsFuture(lsf), leapSecondsFutureMjd(lsfMjd), confirmMjd(confirm) {}
        SGPSLeapSeconds(const SGPSLeapSeconds& other)
            : SGPSLeapSeconds(other.leapSeconds, other.leapSecondsFuture, other.leapSecondsFutureMjd,
                              other.confirmMjd) {}
        SGPSLeapSeconds& operator=(const SGPSLeapSeconds& other) {
            leapSeconds = other.leapSeconds.load();
            leapSecondsFuture = other.leapSecondsFuture.load();
            leapSecondsFutureMjd = other.leapSecondsFutureMjd.load();
            confirmMjd = other.confirmMjd.load();
            return *this;
        }
    };

    virtual ~IGPSLeapSeconds();
    /// GPS minus UTC [s] at `instant`.
    virtual int GetGPSLeapSeconds(const SMjdTime& instant) = 0;

protected:
    IGPSLeapSeconds() = default;
    IGPSLeapSeconds(const IGPSLeapSeconds&) = default;
    IGPSLeapSeconds& operator=(const IGPSLeapSeconds&) = default;
};
