#pragma once

#include <compare>
#include <cstddef>
#include <cstdint>

#include "halvex/platform/Export.h"

/// How an instant keeps its time. There is one mode: the milliseconds of the day as they are, nothing rounded.
enum eMjdAccuracyMode { eMjdAccuracyFull = 1 };

/// Date of the proleptic Gregorian calendar and time of day. Plain value.
struct SMjdCalendar {
    int year = 0;
    int month = 0;
    int day = 0;
    int hour = 0;
    int minute = 0;
    double second = 0.0;  ///< below 60
};

/// An instant as Modified Julian Date: day number and milliseconds of that day in [0, 86 400 000). It knows no time
/// scale: the same numbers are read as GPS, UTC or local time by whoever holds them, and every day has 86 400 s.
///
/// Day 0 (17 November 1858) with 0 ms is the unset instant. Arguments are normalised, never rejected: hour 25 is 1 a.m.
/// of the next day, month 13 next January, 31 February 2 or 3 March, negative values count back. Instants outside the
/// 32-bit day range stop at its ends; a NaN or infinite argument gives the unset instant.
///
/// Seconds that are the double nearest to a decimal with up to seven places (the precision of observation files) are
/// taken as that decimal, so that 8.03 s are exactly 8030 ms. Plain value, no locks.
class HALVEX_EXPORT SMjdTime {
public:
    static constexpr double kMillisecondsPerDay = 86400000.0;
    static constexpr std::int32_t kMjdOfGpsWeek0 = 44244;  ///< 6 January 1980, IS-GPS-200, 3.3.4

    /// Units of RoundTo.
    static constexpr int kUnitMillisecond = 2;
    static constexpr int kUnitSecond = 3;

    SMjdTime() = default;
    /// GPS week and seconds of week.
    SMjdTime(int week, double secondsOfWeek, eMjdAccuracyMode mode = eMjdAccuracyFull);
    /// Year, day of year (1 January is 1) and seconds of day.
    SMjdTime(short year, short dayOfYear, double secondsOfDay, eMjdAccuracyMode mode = eMjdAccuracyFull);
    /// Calendar date (proleptic Gregorian) and time of day.
    SMjdTime(int year, int month, int day, int hour, int minute, double second,
             eMjdAccuracyMode mode = eMjdAccuracyFull);
    /// MJD as a real number; a double resolves about a microsecond there.
    explicit SMjdTime(double mjd, eMjdAccuracyMode mode = eMjdAccuracyFull);

    /// Day number and milliseconds of day, normalised.
    [[nodiscard]] static SMjdTime FromDayAndMilliseconds(std::int32_t day, double milliseconds);

    void Clear() { *this = SMjdTime(); }
    [[nodiscard]] bool IsSet() const { return m_day != 0 || m_milliseconds != 0.0; }

    [[nodiscard]] std::int32_t GetMjdDay() const { return m_day; }
    [[nodiscard]] double GetMjdFractMilliseconds() const { return m_milliseconds; }
    [[nodiscard]] eMjdAccuracyMode GetAccuracyMode() const { return m_mode; }
    /// MJD as a real number, day plus fraction.
    [[nodiscard]] double GetAsMjd() const { return m_day + m_milliseconds / kMillisecondsPerDay; }
    /// The same as text with nine decimals (0.1 ms), cut to `size` with its NUL.
    void GetAsMJDString(char* text, std::size_t size) const;

    /// Weeks since GPS week 0 (negative before it), no roll-over.
    [[nodiscard]] int GetGpsWeek() const;
    /// Seconds of that week in [0, 604 800).
    [[nodiscard]] double GetGpsSeconds() const { return GetGpsWeekMilliseconds() / 1000.0; }
    /// Milliseconds of that week in [0, 604 800 000), exact for an instant on a millisecond.
    [[nodiscard]] double GetGpsWeekMilliseconds() const;
    /// GPS week and day of week, Sunday = 1 to Saturday = 7 (IS-GPS-200, 20.3.3.5.2.4).
    void GetAsGpsWeekAndDayNumber(int& week, int& dayNumber) const;
    void SetAsGpsWeekAndDayNumber(int week, int dayNumber);

    [[nodiscard]] SMjdCalendar GetCalendar() const;
    /// The same through references.
    void GetAsDate(int& year, int& month, int& day, int& hour, int& minute, double& second) const;
    void SetAsDate(int year, int month, int day, int hour, int minute, double second);
    /// 1 for 1 January.
    [[nodiscard]] int GetDayOfYear() const;

    void AddMilliseconds(double milliseconds);
    void AddSeconds(double seconds);
    void AddHours(double hours) { AddSeconds(hours * 3600.0); }
    void AddDays(double days) { AddMilliseconds(days * kMillisecondsPerDay); }
    void SubtractSeconds(double seconds) { AddSeconds(-seconds); }
    void SubtractHours(double hours) { AddHours(-hours); }
    void SubtractDays(double days) { AddDays(-days); }
    /// This instant minus `other` [s].
    [[nodiscard]] double GetDifferenceInSeconds(const SMjdTime& other) const {
        return (static_cast<double>(m_day) - other.m_day) * 86400.0 + (m_milliseconds - other.m_milliseconds) / 1000.0;
    }

    /// Rounds to the nearest multiple of `step` units, counted from the start of the day: RoundTo(10.0) to 10 ms,
    /// RoundTo(1, kUnitSecond) to a whole second. A step that is not positive, or an unknown unit, changes nothing.
    void RoundTo(double step, int unit = kUnitMillisecond);

    /// Saved form, 12 bytes: int32 day, float64 milliseconds of the day. Loading normalises; it is refused, with the
    /// instant as it was, when the buffer is null or short, or the milliseconds are not finite or lead out of the days
    /// that there are. `used` becomes the bytes read or written, 0 when it fails.
    static constexpr std::uint64_t kSavedSize = 12;
    bool loadData(const unsigned char* buffer, std::uint64_t length, std::uint64_t& used);
    void saveData(unsigned char* buffer, std::uint64_t length, std::uint64_t& used) const;
    [[nodiscard]] std::uint64_t getSize() const { return kSavedSize; }

    friend bool operator==(const SMjdTime& left, const SMjdTime& right) {
        return left.m_day == right.m_day && left.m_milliseconds == right.m_milliseconds;
    }
    friend std::weak_ordering operator<=>(const SMjdTime& left, const SMjdTime& right) {
        if (left.m_day != right.m_day) return left.m_day <=> right.m_day;
        if (left.m_milliseconds == right.m_milliseconds) return std::weak_ordering::equivalent;
        return left.m_milliseconds < right.m_milliseconds ? std::weak_ordering::less : std::weak_ordering::greater;
    }

private:
    void set(double day, double milliseconds);

    std::int32_t m_day = 0;
    double m_milliseconds = 0.0;
    eMjdAccuracyMode m_mode = eMjdAccuracyFull;
};

namespace mjd {

/// The instant under the name by which the time classes derive from it.
class time : public SMjdTime {
public:
    using SMjdTime::SMjdTime;
    time() = default;
    time(const SMjdTime& instant) : SMjdTime(instant) {}
};

}  // namespace mjd
