#pragma once

#include "halvex/platform/Export.h"
#include "halvex/time/TimeBase.h"

/// An instant read as wall-clock time, UTC unless said otherwise. "Now" is the process's clock (os::setClock). Plain
/// value without locks; saved as its base.
class HALVEX_EXPORT CSystemTime : public CTimeBase {
public:
    using CTimeBase::CTimeBase;
    CSystemTime() = default;
    explicit CSystemTime(const SMjdTime& instant) : CTimeBase(instant) {}
    /// See SetWeekMilliseconds.
    explicit CSystemTime(unsigned int weekMilliseconds);
    explicit CSystemTime(const SYSTEMTIME&) = delete;  // CTimeBase takes it
    CSystemTime(const CSystemTime&) = default;
    CSystemTime& operator=(const CSystemTime&) = default;
    CSystemTime& operator=(const CTimeBase& instant);
    CSystemTime& operator=(const SMjdTime& instant);
    ~CSystemTime() override;

    virtual void SetToCurrentUTCTime();
    virtual void SetToCurrentLocalTime();
    /// GPS time now: the clock, less its offset from the network's reference clock (TIME::GetDeltaUTCTime), plus the
    /// leap seconds of the process at the resulting UTC.
    virtual void SetToCurrentHalvexGPSTime();

    /// The instant with these milliseconds of week that is at most half a week (84 h) away from now. The week is that
    /// of UTC now: no leap seconds are applied to it.
    void SetWeekMilliseconds(unsigned int milliseconds);
};

/// Makes `reference` the network's time of now: the clock's offset from it goes to TIME::SetDeltaUTCTime.
HALVEX_EXPORT void SetDeltaUTCTimeFromReference(const CSystemTime& reference);

/// Local time minus UTC now [s], from readings rounded to whole seconds.
HALVEX_EXPORT double GetDeltaLocalTimeUTC();
