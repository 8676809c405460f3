#include "halvex/platform/mjd/MjdTime.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>

namespace {

struct Calendar {
    int year = 0, month = 0, day = 0, hour = 0, minute = 0;
    double second = 0.0;
    friend bool operator==(const Calendar&, const Calendar&) = default;
};

Calendar calendarOf(const SMjdTime& time) {
    Calendar c;
    time.GetAsDate(c.year, c.month, c.day, c.hour, c.minute, c.second);
    return c;
}

TEST(MjdTime, KnownInstants) {
    const struct {
        const char* what;
        SMjdTime time;
        std::int32_t day;
        double milliseconds;
    } rows[] = {
        {"unset", SMjdTime(), 0, 0.0},
        {"MJD epoch", SMjdTime(1858, 11, 17, 0, 0, 0.0), 0, 0.0},
        {"GPS epoch", SMjdTime(0, 0.0), 44244, 0.0},
        {"GPS epoch as date", SMjdTime(1980, 1, 6, 0, 0, 0.0), 44244, 0.0},
        {"J2000 date", SMjdTime(2000, 1, 1, 12, 0, 0.0), 51544, 43200000.0},
        {"29 February 2000 as day of year", SMjdTime(2000, 60, 0.5), 51603, 500.0},
        {"week 2190, Thursday", SMjdTime(2190, 4 * 86400.0 + 1.25), 59578, 1250.0},
        {"real MJD", SMjdTime(57754.5), 57754, 43200000.0},
        {"month 13", SMjdTime(2020, 13, 1, 0, 0, 0.0), 59215, 0.0},
        {"month 0", SMjdTime(2021, 0, 1, 0, 0, 0.0), 59184, 0.0},
        {"31 February of a leap year", SMjdTime(2020, 2, 31, 0, 0, 0.0), 58910, 0.0},
        {"negative hour", SMjdTime(2021, 1, 1, -1, 0, 0.0), 59214, 82800000.0},
        {"second 86400", SMjdTime(2021, 1, 1, 0, 0, 86400.0), 59216, 0.0},
        {"negative seconds of week", SMjdTime(1, -0.25), 44250, 86399750.0},
        {"before 1858", SMjdTime(1858, 11, 16, 23, 59, 59.0), -1, 86399000.0},
        {"a decimal is met exactly", SMjdTime(2021, 1, 1, 0, 0, 8.03), 59215, 8030.0},
        {"RINEX seventh decimal", SMjdTime(2021, 1, 1, 0, 0, 1.2345678), 59215, 1234.5678},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(row.time.GetMjdDay(), row.day) << row.what;
        EXPECT_EQ(row.time.GetMjdFractMilliseconds(), row.milliseconds) << row.what;
    }
    EXPECT_EQ(SMjdTime(), SMjdTime(0.0));
    EXPECT_FALSE(SMjdTime(0.0).IsSet());
}

TEST(MjdTime, EveryDayFrom1858To2150RoundTrips) {
    std::mt19937 rng(1858);
    std::uniform_real_distribution<double> ofDay(0.0, 86400000.0);
    for (std::int32_t day = -300; day <= 106700; ++day) {
        const SMjdTime time = SMjdTime::FromDayAndMilliseconds(day, std::floor(ofDay(rng)));
        const Calendar c = calendarOf(time);
        ASSERT_EQ(SMjdTime(c.year, c.month, c.day, c.hour, c.minute, c.second), time) << day;
        ASSERT_EQ(SMjdTime(time.GetGpsWeek(), time.GetGpsSeconds()), time) << day;
        int week = 0;
        int dayNumber = 0;
        time.GetAsGpsWeekAndDayNumber(week, dayNumber);
        ASSERT_TRUE(dayNumber >= 1 && dayNumber <= 7) << day;
        SMjdTime start;
        start.SetAsGpsWeekAndDayNumber(week, dayNumber);
        ASSERT_EQ(start, SMjdTime::FromDayAndMilliseconds(day, 0.0));
        ASSERT_EQ(SMjdTime(static_cast<short>(c.year), static_cast<short>(time.GetDayOfYear()), 0.0), start) << day;
    }
}

TEST(MjdTime, AddingTenTimesATenthStaysWithinAPicosecond) {
    for (const double start : {0.0, 43200.0, 86399.5}) {
        SMjdTime time(2021, 1, 1, 0, 0, start);
        const SMjdTime first = time;
        for (int i = 0; i < 10; ++i) time.AddSeconds(0.1);
        EXPECT_NEAR(time.GetDifferenceInSeconds(first), 1.0, 1e-12) << start;
        for (int i = 0; i < 10; ++i) time.SubtractSeconds(0.1);
        EXPECT_EQ(time, first) << start;
    }
    SMjdTime weekEnd(2190, 604799.9);
    weekEnd.AddSeconds(0.2);
    EXPECT_EQ(weekEnd.GetGpsWeek(), 2191);
    EXPECT_NEAR(weekEnd.GetGpsSeconds(), 0.1, 1e-10);
    SMjdTime far(2021, 1, 1, 0, 0, 0.125);
    far.AddDays(36525.0);
    far.AddHours(-24.0 * 36525.0);
    EXPECT_EQ(far, SMjdTime(2021, 1, 1, 0, 0, 0.125));
}

TEST(MjdTime, ComparisonIsConsistentWithEquality) {
    const SMjdTime a(2021, 1, 1, 0, 0, 0.0);
    SMjdTime b = a;
    b.AddMilliseconds(1e-6);
    EXPECT_TRUE(a < b && !(b < a) && a != b && b > a && a <= b);
    EXPECT_TRUE(SMjdTime(2021, 1, 1, 23, 59, 59.0) < SMjdTime(2021, 1, 2, 0, 0, 0.0));
    SMjdTime negativeZero = SMjdTime::FromDayAndMilliseconds(5, -0.0);
    EXPECT_EQ(negativeZero, SMjdTime(5.0));
    EXPECT_FALSE(std::signbit(negativeZero.GetMjdFractMilliseconds()));
}

TEST(MjdTime, AbsurdArgumentsStayWithinTheRange) {
    constexpr double kInfinity = std::numeric_limits<double>::infinity();
    for (const double value : {kInfinity, -kInfinity, std::numeric_limits<double>::quiet_NaN()}) {
        EXPECT_FALSE(SMjdTime(value).IsSet());
        SMjdTime time(2021, 1, 1, 0, 0, 0.0);
        time.AddSeconds(value);
        EXPECT_FALSE(time.IsSet());
    }
    EXPECT_EQ(SMjdTime(1e300).GetMjdDay(), std::numeric_limits<std::int32_t>::max());
    EXPECT_EQ(SMjdTime(-1e300).GetMjdDay(), std::numeric_limits<std::int32_t>::min());
    EXPECT_LT(SMjdTime(1e300).GetMjdFractMilliseconds(), SMjdTime::kMillisecondsPerDay);
    const SMjdTime last(std::numeric_limits<int>::max(), 12, 31, 23, 59, 59.0);
    EXPECT_EQ(last.GetMjdDay(), std::numeric_limits<std::int32_t>::max());
    EXPECT_EQ(SMjdTime::FromDayAndMilliseconds(10, -1e-9).GetMjdFractMilliseconds(),
              0.0);  // rounds up to the day's end
}

TEST(MjdTime, SecondOfADateIsBelowSixty) {
    const Calendar c = calendarOf(SMjdTime::FromDayAndMilliseconds(59215, 59999.99999999999));
    EXPECT_EQ(c.minute, 0);
    EXPECT_LT(c.second, 60.0);
}

TEST(MjdTime, LastMomentOfAWeekIsInTheWeek) {
    const SMjdTime instant = SMjdTime::FromDayAndMilliseconds(SMjdTime::kMjdOfGpsWeek0 + 6, 86399999.99999999);
    EXPECT_EQ(instant.GetGpsWeek(), 0);
    EXPECT_LT(instant.GetGpsWeekMilliseconds(), 604800000.0);
    EXPECT_LT(instant.GetGpsSeconds(), 604800.0);
}

TEST(MjdTime, RoundTo) {
    const auto rounded = [](double milliseconds, double step, int unit) {
        SMjdTime time = SMjdTime::FromDayAndMilliseconds(59215, milliseconds);
        time.RoundTo(step, unit);
        return time;
    };
    const auto at = [](double milliseconds) { return SMjdTime::FromDayAndMilliseconds(59215, milliseconds); };
    EXPECT_EQ(rounded(1234.5, 10.0, 2), at(1230.0));
    EXPECT_EQ(rounded(1234.5, 1.0, 2), at(1235.0));
    EXPECT_EQ(rounded(1499.9, 1, 3), at(1000.0));
    EXPECT_EQ(rounded(86399600.0, 1, 3), SMjdTime::FromDayAndMilliseconds(59216, 0.0));
    EXPECT_EQ(rounded(1234.5, 0.0, 3), at(1234.5));
    EXPECT_EQ(rounded(1234.5, 1.0, 9), at(1234.5));
}

TEST(MjdTime, MjdString) {
    const auto text = [](const SMjdTime& time, std::size_t size = 256) {
        char buffer[256] = "unchanged";
        time.GetAsMJDString(buffer, size);
        return std::string(buffer);
    };
    EXPECT_EQ(text(SMjdTime(57754.25)), "57754.250000000");
    EXPECT_EQ(text(SMjdTime(-0.75)), "-0.750000000");
    EXPECT_EQ(text(SMjdTime::FromDayAndMilliseconds(9, 86399999.99999)), "10.000000000");
    EXPECT_EQ(text(SMjdTime(57754.25), 6), "57754");
}

}  // namespace
