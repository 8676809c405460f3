#include "halvex/time/GPSTime.h"

#include <cmath>

#include "halvex/time/GPSLeapSeconds.h"

CGPSTime::~CGPSTime() = default;

CGPSTime& CGPSTime::operator=(const SMjdTime& instant) {
    CTimeBase::operator=(instant);
    return *this;
}

bool CGPSTime::AdjustGPS2UTC(IGPSLeapSeconds& table) {
    if (!IsSet()) return false;
    SubtractSeconds(table.GetGPSLeapSeconds(*this));
    return true;
}

bool CGPSTime::AdjustUTC2GPS(IGPSLeapSeconds& table) {
    if (!IsSet()) return false;
    AddSeconds(table.GetGPSLeapSeconds(*this));
    return true;
}

double CGPSTime::GPSWeekSec2GLODaySec(double gpsSecondsOfWeek) const {
    constexpr double kMoscowOffset = 10800.0;  // [s], GLONASS time minus UTC
    return std::fmod(kMoscowOffset - GetGPSLeapSeconds(*this) + gpsSecondsOfWeek, 86400.0);
}
