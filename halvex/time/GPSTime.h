#pragma once

#include "halvex/platform/Export.h"
#include "halvex/time/IGPSLeapSeconds.h"
#include "halvex/time/TimeBase.h"

/// An instant read as GPS time (and, after AdjustGPS2UTC, as UTC). Plain value without locks; saved as its base.
class HALVEX_EXPORT CGPSTime : public CTimeBase {
public:
    using CTimeBase::CTimeBase;
    CGPSTime() = default;
    explicit CGPSTime(const SMjdTime& instant) : CTimeBase(instant) {}
    explicit CGPSTime(const SYSTEMTIME&) = delete;  // a wall-clock time is not on the GPS scale
    CGPSTime(const CGPSTime&) = default;
    CGPSTime& operator=(const CGPSTime&) = default;
    CGPSTime& operator=(const SMjdTime& instant);
    ~CGPSTime() override;

    /// Takes the leap seconds off that `table` gives for the instant as it stands. False, doing nothing, when unset.
    bool AdjustGPS2UTC(IGPSLeapSeconds& table);
    /// Adds the leap seconds that `table` gives for the instant as it stands. False, doing nothing, when unset.
    bool AdjustUTC2GPS(IGPSLeapSeconds& table);

    /// GLONASS seconds of day (UTC plus three hours) of a count of GPS seconds of week, with the leap seconds of the
    /// process at this instant. It has the sign of the sum, as fmod has.
    [[nodiscard]] double GPSWeekSec2GLODaySec(double gpsSecondsOfWeek) const;
};
