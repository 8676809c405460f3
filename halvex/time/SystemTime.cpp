#include "halvex/time/SystemTime.h"

#include "halvex/platform/kernix/Time.h"
#include "halvex/platform/os/Clock.h"
#include "halvex/time/GPSLeapSeconds.h"

CSystemTime::CSystemTime(unsigned int weekMilliseconds) {
    SetWeekMilliseconds(weekMilliseconds);
}

CSystemTime::~CSystemTime() = default;

CSystemTime& CSystemTime::operator=(const CTimeBase& instant) {
    CTimeBase::operator=(instant);
    return *this;
}

CSystemTime& CSystemTime::operator=(const SMjdTime& instant) {
    CTimeBase::operator=(instant);
    return *this;
}

void CSystemTime::SetToCurrentUTCTime() {
    CTimeBase::operator=(CTimeBase(os::GetSystemTime()));
}

void CSystemTime::SetToCurrentLocalTime() {
    CTimeBase::operator=(CTimeBase(os::GetLocalTime()));
}

void CSystemTime::SetToCurrentHalvexGPSTime() {
    SetToCurrentUTCTime();
    SubtractSeconds(TIME::GetDeltaUTCTime());
    AddSeconds(GetGPSLeapSeconds(*this));
}

void CSystemTime::SetWeekMilliseconds(unsigned int milliseconds) {
    constexpr double kHoursOfWeek = 168.0;
    SetToCurrentUTCTime();
    CSystemTime candidate(GetGpsWeek(), milliseconds / 1000.0);
    SMjdTime latest = *this;
    latest.AddHours(kHoursOfWeek / 2);
    SMjdTime earliest = *this;
    earliest.SubtractHours(kHoursOfWeek / 2);
    if (candidate > latest) {
        candidate.SubtractHours(kHoursOfWeek);
    } else if (candidate < earliest) {
        candidate.AddHours(kHoursOfWeek);
    }
    CTimeBase::operator=(candidate);
}

void SetDeltaUTCTimeFromReference(const CSystemTime& reference) {
    CSystemTime now;
    now.SetToCurrentUTCTime();
    TIME::SetDeltaUTCTime(now.GetDifferenceInSeconds(reference));
}

double GetDeltaLocalTimeUTC() {
    CSystemTime local;
    CSystemTime utc;
    local.SetToCurrentLocalTime();
    utc.SetToCurrentUTCTime();
    local.RoundTo(1, SMjdTime::kUnitSecond);
    utc.RoundTo(1, SMjdTime::kUnitSecond);
    return local.GetDifferenceInSeconds(utc);
}
