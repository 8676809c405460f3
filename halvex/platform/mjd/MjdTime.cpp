#include "halvex/platform/mjd/MjdTime.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <limits>

#include "halvex/platform/kernix/ByteCodec.h"

namespace {

constexpr double kTicksPerSecond = 1e7;  // the seven decimals that RINEX prints

/// Milliseconds of a count of seconds; a decimal that the double stands for is met exactly.
double toMilliseconds(double seconds) {
    const double ticks = std::nearbyint(seconds * kTicksPerSecond);
    return ticks / kTicksPerSecond == seconds ? ticks / (kTicksPerSecond / 1000.0) : seconds * 1000.0;
}

/// MJD of a date of the proleptic Gregorian calendar, month 1 to 12, any day number. After H. Hinnant,
/// "chrono-Compatible Low-Level Date Algorithms": years of 400-year eras that begin in March, so that the leap day ends
/// a year.
std::int64_t mjdOfDate(std::int64_t year, int month, std::int64_t day) {
    year -= month <= 2 ? 1 : 0;
    const std::int64_t era = (year >= 0 ? year : year - 399) / 400;
    const std::int64_t yearOfEra = year - era * 400;
    const std::int64_t dayOfYear = (153 * (month > 2 ? month - 3 : month + 9) + 2) / 5;
    const std::int64_t dayOfEra = yearOfEra * 365 + yearOfEra / 4 - yearOfEra / 100 + dayOfYear;
    constexpr std::int64_t kMjdOfEra0 = -678881;  // 1 March of year 0
    return kMjdOfEra0 + era * 146097 + dayOfEra + day - 1;
}

struct Date {
    std::int64_t year;
    int month;
    int day;
};

Date dateOfMjd(std::int64_t mjd) {
    const std::int64_t shifted = mjd + 678881;
    const std::int64_t era = (shifted >= 0 ? shifted : shifted - 146096) / 146097;
    const std::int64_t dayOfEra = shifted - era * 146097;
    const std::int64_t yearOfEra = (dayOfEra - dayOfEra / 1460 + dayOfEra / 36524 - dayOfEra / 146096) / 365;
    const std::int64_t dayOfYear = dayOfEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
    const auto marchBased = static_cast<int>((5 * dayOfYear + 2) / 153);
    const int day = static_cast<int>(dayOfYear) - (153 * marchBased + 2) / 5 + 1;
    const int month = marchBased < 10 ? marchBased + 3 : marchBased - 9;
    return {yearOfEra + era * 400 + (month <= 2 ? 1 : 0), month, day};
}

/// Whole days of `value` units of `unitsPerDay` each, rounded down.
std::int64_t floorDiv(std::int64_t value, std::int64_t divisor) {
    const std::int64_t quotient = value / divisor;
    return value % divisor < 0 ? quotient - 1 : quotient;
}

}  // namespace

SMjdTime::SMjdTime(int week, double secondsOfWeek, eMjdAccuracyMode mode) : m_mode(mode) {
    set(kMjdOfGpsWeek0 + 7.0 * week, toMilliseconds(secondsOfWeek));
}

SMjdTime::SMjdTime(short year, short dayOfYear, double secondsOfDay, eMjdAccuracyMode mode) : m_mode(mode) {
    set(static_cast<double>(mjdOfDate(year, 1, dayOfYear)), toMilliseconds(secondsOfDay));
}

SMjdTime::SMjdTime(int year, int month, int day, int hour, int minute, double second, eMjdAccuracyMode mode)
    : m_mode(mode) {
    SetAsDate(year, month, day, hour, minute, second);
}

SMjdTime::SMjdTime(double mjd, eMjdAccuracyMode mode) : m_mode(mode) {
    const double day = std::floor(mjd);
    set(day, (mjd - day) * kMillisecondsPerDay);
}

SMjdTime SMjdTime::FromDayAndMilliseconds(std::int32_t day, double milliseconds) {
    SMjdTime instant;
    instant.set(day, milliseconds);
    return instant;
}

void SMjdTime::set(double day, double milliseconds) {
    constexpr double kFirst = std::numeric_limits<std::int32_t>::min();
    constexpr double kLast = std::numeric_limits<std::int32_t>::max();
    if (!std::isfinite(day) || !std::isfinite(milliseconds)) {
        m_day = 0;
        m_milliseconds = 0.0;
        return;
    }
    if (milliseconds < 0.0 || milliseconds >= kMillisecondsPerDay) {
        const double days = std::floor(milliseconds / kMillisecondsPerDay);
        milliseconds -= days * kMillisecondsPerDay;
        day += days;
        // The product above is rounded: a tiny negative rest stands for the end of the day before.
        if (milliseconds < 0.0) milliseconds = 0.0;
        if (milliseconds >= kMillisecondsPerDay) {
            milliseconds = 0.0;
            day += 1.0;
        }
    }
    if (day < kFirst) {
        m_day = std::numeric_limits<std::int32_t>::min();
        m_milliseconds = 0.0;
    } else if (day > kLast) {
        m_day = std::numeric_limits<std::int32_t>::max();
        m_milliseconds = std::nextafter(kMillisecondsPerDay, 0.0);
    } else {
        m_day = static_cast<std::int32_t>(day);
        m_milliseconds = milliseconds + 0.0;  // -0.0 becomes 0.0: one instant has one saved form
    }
}

void SMjdTime::GetAsMJDString(char* text, std::size_t size) const {
    if (text == nullptr || size == 0) return;
    // Printed from integers: neither the rounding of a double nor the decimal mark of a locale gets in.
    auto tenths = static_cast<std::int64_t>(std::nearbyint(m_milliseconds / kMillisecondsPerDay * 1e9));
    std::int64_t day = m_day;
    if (tenths >= 1000000000) {
        tenths -= 1000000000;
        ++day;
    }
    const bool negative = day < 0;
    if (negative) {  // day -1 with fraction 0.25 is the number -0.75
        day = -day;
        if (tenths > 0) {
            --day;
            tenths = 1000000000 - tenths;
        }
    }
    std::snprintf(text, size, "%s%lld.%09lld", negative ? "-" : "", static_cast<long long>(day),
                  static_cast<long long>(tenths));
}

int SMjdTime::GetGpsWeek() const {
    return static_cast<int>(floorDiv(static_cast<std::int64_t>(m_day) - kMjdOfGpsWeek0, 7));
}

double SMjdTime::GetGpsWeekMilliseconds() const {
    const std::int64_t days = static_cast<std::int64_t>(m_day) - kMjdOfGpsWeek0;
    // The sum of a Saturday's last moments is rounded, but not into the next week.
    return std::min(static_cast<double>(days - floorDiv(days, 7) * 7) * kMillisecondsPerDay + m_milliseconds,
                    std::nextafter(7.0 * kMillisecondsPerDay, 0.0));
}

void SMjdTime::GetAsGpsWeekAndDayNumber(int& week, int& dayNumber) const {
    const std::int64_t days = static_cast<std::int64_t>(m_day) - kMjdOfGpsWeek0;
    week = static_cast<int>(floorDiv(days, 7));
    dayNumber = static_cast<int>(days - floorDiv(days, 7) * 7) + 1;
}

void SMjdTime::SetAsGpsWeekAndDayNumber(int week, int dayNumber) {
    set(kMjdOfGpsWeek0 + 7.0 * week + (static_cast<double>(dayNumber) - 1.0), 0.0);
}

SMjdCalendar SMjdTime::GetCalendar() const {
    const Date date = dateOfMjd(m_day);
    // The whole part by integers, so that the second is below 60 and exact where the milliseconds are.
    const double whole = std::floor(m_milliseconds);
    const auto milliseconds = static_cast<std::int32_t>(whole);
    const double second =
        std::min((milliseconds % 60000 + (m_milliseconds - whole)) / 1000.0, std::nextafter(60.0, 0.0));
    return {static_cast<int>(date.year), date.month, date.day, milliseconds / 3600000,
            milliseconds / 60000 % 60,   second};
}

void SMjdTime::GetAsDate(int& year, int& month, int& day, int& hour, int& minute, double& second) const {
    const SMjdCalendar calendar = GetCalendar();
    year = calendar.year;
    month = calendar.month;
    day = calendar.day;
    hour = calendar.hour;
    minute = calendar.minute;
    second = calendar.second;
}

void SMjdTime::SetAsDate(int year, int month, int day, int hour, int minute, double second) {
    const std::int64_t monthsFromJanuary = static_cast<std::int64_t>(month) - 1;
    const std::int64_t years = floorDiv(monthsFromJanuary, 12);
    const auto monthOfYear = static_cast<int>(monthsFromJanuary - years * 12) + 1;
    const auto minutes = static_cast<std::int64_t>(hour) * 60 + minute;
    const std::int64_t days = floorDiv(minutes, 1440);
    set(static_cast<double>(mjdOfDate(year + years, monthOfYear, day) + days),
        static_cast<double>((minutes - days * 1440) * 60000) + toMilliseconds(second));
}

int SMjdTime::GetDayOfYear() const {
    return static_cast<int>(m_day - mjdOfDate(dateOfMjd(m_day).year, 1, 1)) + 1;
}

void SMjdTime::AddMilliseconds(double milliseconds) {
    // Whole days apart from the rest, so that a long step costs no resolution.
    const double days = std::floor(milliseconds / kMillisecondsPerDay);
    set(m_day + days, m_milliseconds + (milliseconds - days * kMillisecondsPerDay));
}

void SMjdTime::AddSeconds(double seconds) {
    AddMilliseconds(toMilliseconds(seconds));
}

bool SMjdTime::loadData(const unsigned char* buffer, std::uint64_t length, std::uint64_t& used) {
    used = 0;
    if (length < kSavedSize) return false;
    halvex::ByteReader in(buffer, kSavedSize);
    std::int32_t day = 0;
    double milliseconds = 0.0;
    in(day);
    in(milliseconds);
    if (!in.ok() || !std::isfinite(milliseconds)) return false;
    const double normalised = day + std::floor(milliseconds / kMillisecondsPerDay);
    if (normalised < std::numeric_limits<std::int32_t>::min() ||
        normalised > std::numeric_limits<std::int32_t>::max()) {
        return false;
    }
    *this = FromDayAndMilliseconds(day, milliseconds);
    used = kSavedSize;
    return true;
}

void SMjdTime::saveData(unsigned char* buffer, std::uint64_t length, std::uint64_t& used) const {
    used = 0;
    if (buffer == nullptr || length < kSavedSize) return;
    halvex::ByteWriter out(buffer, kSavedSize);
    out(m_day);
    out(m_milliseconds);
    used = kSavedSize;
}

void SMjdTime::RoundTo(double step, int unit) {
    const double unitMilliseconds = unit == kUnitMillisecond ? 1.0 : unit == kUnitSecond ? 1000.0 : 0.0;
    const double stepMilliseconds = step * unitMilliseconds;
    if (!(stepMilliseconds > 0.0) || !std::isfinite(stepMilliseconds)) return;
    set(m_day, std::floor(m_milliseconds / stepMilliseconds + 0.5) * stepMilliseconds);
}
