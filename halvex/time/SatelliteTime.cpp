#include "halvex/time/SatelliteTime.h"

#include "halvex/platform/kernix/Time.h"
#include "halvex/time/GPSLeapSeconds.h"

namespace {

constexpr const char* kTimeOfDay = "%H:%M:%S";

CSystemTime localNow() {
    CSystemTime now;
    now.SetToCurrentLocalTime();
    now.SubtractSeconds(TIME::GetDeltaUTCTime());
    return now;
}

}  // namespace

CSatelliteTime::CSatelliteTime() : CSatelliteTime(false) {}

CSatelliteTime::CSatelliteTime(bool gps) : m_isGps(gps) {
    CSystemTime::SetToCurrentUTCTime();
    AdjustTime();
}

CSatelliteTime::CSatelliteTime(int week, double seconds) : CSystemTime(week, seconds) {
    AdjustTime();
}

CSatelliteTime::CSatelliteTime(int year, int dayOfYear, double secondsOfDay)
    : CSystemTime(year, dayOfYear, secondsOfDay) {
    AdjustTime();
}

CSatelliteTime::CSatelliteTime(int year, int month, int day, int hour, int minute, double second)
    : CSystemTime(year, month, day, hour, minute, second) {
    AdjustTime();
}

CSatelliteTime::CSatelliteTime(double mjd) : CSystemTime(mjd) {
    AdjustTime();
}

CSatelliteTime::CSatelliteTime(const DBTIMESTAMP& stamp) : CSatelliteTime(stamp, true) {}

CSatelliteTime::CSatelliteTime(const DBTIMESTAMP& stamp, bool adjust) : CSystemTime(stamp) {
    if (adjust) AdjustTime();
}

CSatelliteTime::CSatelliteTime(const CSatelliteTime& other) : CSystemTime(other), m_isGps(false) {}

CSatelliteTime& CSatelliteTime::operator=(const SMjdTime& instant) {
    CSystemTime::operator=(instant);
    return *this;
}

CSatelliteTime::~CSatelliteTime() = default;

void CSatelliteTime::getSatelliteTime(DBTIMESTAMP& stamp) const {
    ToDbTimeStamp(stamp);
}
void CSatelliteTime::getSatelliteTime(CString& text) const {
    text = Format(kTimeOfDay);
}
void CSatelliteTime::getSatelliteTime(double& mjd) const {
    mjd = GetAsMjd();
}

void CSatelliteTime::getLocalSatelliteTime(DBTIMESTAMP& stamp) const {
    localNow().ToDbTimeStamp(stamp);
}
void CSatelliteTime::getLocalSatelliteTime(CString& text) const {
    text = localNow().Format(kTimeOfDay);
}

void CSatelliteTime::AdjustFromGPSToUTCTime() {
    if (m_isGps) SubtractSeconds(GetGPSLeapSeconds(*this));
    m_isGps = false;
}

void CSatelliteTime::AdjustFromUTCToGPSTime() {
    if (!m_isGps) AddSeconds(GetGPSLeapSeconds(*this));
    m_isGps = true;
}

void CSatelliteTime::SetToCurrentUTCTime() {
    CSystemTime::SetToCurrentUTCTime();
    m_isGps = false;
}

void CSatelliteTime::SetToCurrentGPSTime() {
    SetToCurrentUTCTime();
    AdjustTime();
}

void CSatelliteTime::SetToCurrentLocalTime() {
    CSystemTime::SetToCurrentLocalTime();
}

void CSatelliteTime::Clear() {
    mjd::time::Clear();
    m_isGps = false;
}

void CSatelliteTime::AdjustTime() {
    SubtractSeconds(TIME::GetDeltaUTCTime());
    if (m_isGps) AddSeconds(GetGPSLeapSeconds(*this));
}
