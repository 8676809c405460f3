#include "halvex/platform/mjd/MjdTime.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

namespace {

TEST(MjdTime, KnownInstants) {
    const std::tuple<const char*, SMjdTime, std::int32_t, double> rows[] = {
        {"GPS epoch", SMjdTime(0, 0.0), 44244, 0.0},
        {"31 February of a leap year", SMjdTime(2020, 2, 31, 0, 0, 0.0), 58910, 0.0},
        {"negative hour", SMjdTime(2021, 1, 1, -1, 0, 0.0), 59214, 82800000.0},
        {"second 86400", SMjdTime(2021, 1, 1, 0, 0, 86400.0), 59216, 0.0},
        {"negative seconds of week", SMjdTime(1, -0.25), 44250, 86399750.0},
        {"before 1858", SMjdTime(1858, 11, 16, 23, 59, 59.0), -1, 86399000.0},
        {"RINEX seventh decimal", SMjdTime(2021, 1, 1, 0, 0, 1.2345678), 59215, 1234.5678}};
    for (const auto& [what, time, day, milliseconds] : rows) {
        EXPECT_EQ(time.GetMjdDay(), day) << what;
        EXPECT_EQ(time.GetMjdFractMilliseconds(), milliseconds) << what;
    }
    EXPECT_FALSE(SMjdTime(0.0).IsSet()) << "the same as no time";
}

TEST(MjdTime, EveryDayFrom1858To2150RoundTrips) {
    std::mt19937 rng(1858);
    std::uniform_real_distribution<double> ofDay(0.0, 86400000.0);
    for (std::int32_t day = -300; day <= 106700; ++day) {
        const SMjdTime time = SMjdTime::FromDayAndMilliseconds(day, std::floor(ofDay(rng)));
        const SMjdTime start = SMjdTime::FromDayAndMilliseconds(day, 0.0);
        int year = 0, month = 0, dayOfMonth = 0, hour = 0, minute = 0, week = 0, dayNumber = 0;
        double second = 0.0;
        time.GetAsDate(year, month, dayOfMonth, hour, minute, second);
        ASSERT_EQ(SMjdTime(year, month, dayOfMonth, hour, minute, second), time) << day;
        ASSERT_EQ(SMjdTime(static_cast<short>(year), static_cast<short>(time.GetDayOfYear()), 0.0), start) << day;
        ASSERT_EQ(SMjdTime(time.GetGpsWeek(), time.GetGpsSeconds()), time) << day;
        time.GetAsGpsWeekAndDayNumber(week, dayNumber);
        ASSERT_TRUE(dayNumber >= 1 && dayNumber <= 7) << day;
        SMjdTime again;
        again.SetAsGpsWeekAndDayNumber(week, dayNumber);
        ASSERT_EQ(again, start);
    }
}

TEST(MjdTime, AddingTenTimesATenthStaysWithinAPicosecond) {
    SMjdTime time(2021, 1, 1, 0, 0, 86399.5);
    const SMjdTime first = time;
    for (int i = 0; i < 10; ++i) time.AddSeconds(0.1);
    EXPECT_NEAR(time.GetDifferenceInSeconds(first), 1.0, 1e-12);
    for (int i = 0; i < 10; ++i) time.SubtractSeconds(0.1);
    EXPECT_EQ(time, first);
    time.AddMilliseconds(1e-6);
    EXPECT_TRUE(first < time && !(time < first) && first != time) << "comparison has no tolerance";
    EXPECT_FALSE(std::signbit(SMjdTime::FromDayAndMilliseconds(5, -0.0).GetMjdFractMilliseconds()));
}

TEST(MjdTime, AbsurdArgumentsStayWithinTheRange) {
    for (const double value : {-std::numeric_limits<double>::infinity(), std::nan("")}) {
        EXPECT_FALSE(SMjdTime(value).IsSet());
        SMjdTime time(2021, 1, 1, 0, 0, 0.0);
        time.AddSeconds(value);
        EXPECT_FALSE(time.IsSet());
    }
    constexpr std::int32_t kLast = std::numeric_limits<std::int32_t>::max();
    EXPECT_EQ(SMjdTime(1e300).GetMjdDay(), kLast);
    EXPECT_LT(SMjdTime(1e300).GetMjdFractMilliseconds(), SMjdTime::kMillisecondsPerDay);
    EXPECT_EQ(SMjdTime(-1e300).GetMjdDay(), std::numeric_limits<std::int32_t>::min());
    EXPECT_EQ(SMjdTime(kLast, 12, 31, 23, 59, 59.0).GetMjdDay(), kLast);
    EXPECT_EQ(SMjdTime::FromDayAndMilliseconds(10, -1e-9).GetMjdFractMilliseconds(), 0.0) << "up to the day's end";
}

TEST(MjdTime, TheLastMomentBelongsToWhatItEnds) {
    int whole[5];
    double second = 0.0;
    const SMjdTime instant = SMjdTime::FromDayAndMilliseconds(SMjdTime::kMjdOfGpsWeek0 + 6, 86399999.99999999);
    instant.GetAsDate(whole[0], whole[1], whole[2], whole[3], whole[4], second);
    EXPECT_LT(second, 60.0);
    EXPECT_EQ(instant.GetGpsWeek(), 0);
    EXPECT_LT(instant.GetGpsWeekMilliseconds(), 604800000.0);
    EXPECT_LT(instant.GetGpsSeconds(), 604800.0);
}

TEST(MjdTime, MjdString) {
    char buffer[20];
    SMjdTime::FromDayAndMilliseconds(-2, 86399999.99999).GetAsMJDString(buffer, sizeof buffer);
    EXPECT_STREQ(buffer, "-1.000000000");
    SMjdTime(-0.75).GetAsMJDString(buffer, sizeof buffer);
    EXPECT_STREQ(buffer, "-0.750000000");
    SMjdTime(57754.25).GetAsMJDString(buffer, 6);
    EXPECT_STREQ(buffer, "57754");
}

}  // namespace
