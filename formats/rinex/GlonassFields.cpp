#include "formats/rinex/GlonassFields.h"

#include <cmath>

namespace halvex::rinex {
namespace {

constexpr double kDay = 86400.0;
constexpr double kMoscowAhead = 3.0 * 3600.0;

}  // namespace

bool setGlonassTime(const SMjdTime& utc, int leapSeconds, CALN::CALX_SAT_EPHEMERIS_GLONASS& record) {
    SMjdTime gps = utc;
    gps.AddSeconds(leapSeconds);
    SMjdTime moscow = utc;
    moscow.AddSeconds(kMoscowAhead);
    constexpr int kLastWeek = 65535;
    constexpr int kFirstYear = 1996;  // N_4 and N_T count from here (GLONASS ICD 5.1, 4.4)
    const SMjdCalendar date = moscow.GetCalendar();
    if (gps.GetGpsWeek() < 0 || gps.GetGpsWeek() > kLastWeek) return false;
    record.week = static_cast<unsigned short>(gps.GetGpsWeek());
    record.referenceSeconds = gps.GetGpsSeconds();
    record.referenceSecondsOfDay = moscowSecond(utc.GetMjdFractMilliseconds() / 1000.0);
    constexpr unsigned kStep = 900;
    record.tb = static_cast<unsigned char>(record.referenceSecondsOfDay / kStep);
    if (date.year >= kFirstYear) {
        const int years = date.year - kFirstYear;
        record.fourYearInterval = static_cast<unsigned>(years / 4 + 1);
        const SMjdTime begin(kFirstYear + years / 4 * 4, 1, 1, 0, 0, 0.0);
        record.dayNumber = static_cast<unsigned short>(moscow.GetMjdDay() - begin.GetMjdDay() + 1);
    }
    return true;
}

unsigned moscowSecond(double utcSecond) {
    const double second = std::fmod(utcSecond + kMoscowAhead, kDay);
    return static_cast<unsigned>(std::floor(second < 0.0 ? second + kDay : second)) % static_cast<unsigned>(kDay);
}

double utcSecondOfWeek(unsigned moscowSecond, const SMjdTime& near) {
    constexpr double kWeek = 7 * kDay;
    const double ofDay = near.GetMjdFractMilliseconds() / 1000.0;
    const double ahead = std::remainder(static_cast<double>(moscowSecond) - kMoscowAhead - ofDay, kDay);
    const double second = std::fmod(near.GetGpsSeconds() + ahead + kWeek, kWeek);
    return second;
}

}  // namespace halvex::rinex
