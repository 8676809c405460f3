// The time classes: conversions, saved form, formats, now.

#include "halvex/time/TimeBase.h"

#include <gtest/gtest.h>

#include <clocale>
#include <cmath>
#include <cstring>
#include <limits>

#include "halvex/platform/kernix/ByteCodec.h"
#include "halvex/platform/kernix/Time.h"
#include "halvex/time/GPSLeapSeconds.h"
#include "halvex/time/GPSTime.h"
#include "halvex/time/GPSTimeCompare.h"
#include "halvex/time/SystemTime.h"
#include "tests/support/Bytes.h"
#include "tests/support/Environment.h"
#include "tests/support/TestClock.h"

namespace {

using namespace halvex::test;

TEST(TimeClasses, EveryWayToTheSameInstant) {
    DBTIMESTAMP database;
    database.year = 2021;
    database.month = database.day = 1;
    const CGPSTime gps(2021, 1, 1, 0, 0, 0.0);
    const SMjdTime plain(59215.0);
    const CTimeBase base(TestClock::stamp(2021, 1, 1));
    const CSystemTime system(database);
    EXPECT_EQ(gps, plain);
    EXPECT_EQ(base, gps);
    EXPECT_EQ(system, base);
    EXPECT_EQ(CGPSTime(2138, 432000), gps);
    EXPECT_EQ(CGPSTime(2138, 432000.0), gps);
    EXPECT_EQ(CGPSTime(2021, 1, 0.0), gps) << "year, day of year, seconds of day";
    EXPECT_EQ(CSystemTime(59215.0), gps);
    EXPECT_LT(gps, CSystemTime(2021, 2, 0.0));

    CGPSTime assigned;
    CSystemTime other;
    assigned = system;
    other = assigned;
    EXPECT_EQ(other, gps);
    assigned = SMjdTime(59216.0);
    other = assigned;
    EXPECT_EQ(CSystemTime(other), SMjdTime(59216.0));
    EXPECT_EQ(CGPSTime(other), assigned);
    CTimeBase& same = assigned;
    same = assigned;
    EXPECT_EQ(assigned, SMjdTime(59216.0));
}

TEST(TimeClasses, SavedForm) {
    const CGPSTime time(2017, 1, 1, 0, 0, 17.5);
    const Bytes good = hex("9A E1 00 00  00 00 00 00 00 17 D1 40");
    EXPECT_EQ(saved(time), good);
    CSystemTime loaded(57000.0);
    for (std::size_t size = 0; size < good.size(); ++size) {
        const Bytes part(good.begin(), good.begin() + static_cast<std::ptrdiff_t>(size));
        EXPECT_FALSE(loaded.loadData(part.data(), part.size())) << size;
        Bytes untouched(size, 0xEE);
        time.saveData(untouched.data(), untouched.size());
        EXPECT_EQ(untouched, Bytes(size, 0xEE));
    }
    EXPECT_FALSE(loaded.loadData(nullptr, 12));
    time.saveData(nullptr, 12);
    EXPECT_EQ(loaded, SMjdTime(57000.0));
    EXPECT_TRUE(loaded.loadData(good.data(), good.size()));
    EXPECT_EQ(loaded, time);
}

TEST(TimeClasses, LoadingNormalisesOrRefuses) {
    constexpr std::int32_t kFirst = std::numeric_limits<std::int32_t>::min();
    constexpr std::int32_t kLast = std::numeric_limits<std::int32_t>::max();
    constexpr double kInfinity = std::numeric_limits<double>::infinity();
    struct Row {
        std::int32_t day;
        double milliseconds;
        bool want;
        std::int32_t wantDay;
        double wantMilliseconds;
    };
    const Row rows[] = {{57754, -1.0, true, 57753, 86399999.0},
                        {57754, 86400000.0, true, 57755, 0.0},
                        {57754, 864000001.5, true, 57764, 1.5},
                        {kLast, 86399999.0, true, kLast, 86399999.0},
                        {kLast, 86400000.0, false, 0, 0},
                        {kFirst, -1.0, false, 0, 0},
                        {57754, std::nan(""), false, 0, 0},
                        {57754, kInfinity, false, 0, 0},
                        {0, 1e300, false, 0, 0},
                        {kFirst, 0.0, true, kFirst, 0.0}};
    for (const Row& row : rows) {
        Bytes bytes(12);
        halvex::storeLittleEndian(bytes.data(), row.day);
        halvex::storeLittleEndian(bytes.data() + 4, row.milliseconds);
        CTimeBase time(1.25);
        EXPECT_EQ(time.loadData(bytes.data(), bytes.size()), row.want) << row.day << " " << row.milliseconds;
        EXPECT_EQ(time.GetMjdDay(), row.want ? row.wantDay : 1);
        EXPECT_EQ(time.GetMjdFractMilliseconds(), row.want ? row.wantMilliseconds : 21600000.0);
    }
}

TEST(TimeClasses, LastHalfMillisecondOfADay) {
    const CTimeBase late(2016, 12, 31, 23, 59, 59.9996);
    SYSTEMTIME system;
    system.wDayOfWeek = 5;
    late.ToSystemTime(system);
    EXPECT_EQ(system.wSecond, 59);
    EXPECT_EQ(system.wMilliseconds, 1000);
    EXPECT_EQ(system.wDayOfWeek, 5) << "left as it was";
    DBTIMESTAMP database;
    late.ToDbTimeStamp(database);
    EXPECT_EQ(database.second, 59);
    EXPECT_EQ(database.fraction % 100, 0U);
    EXPECT_NEAR(database.fraction, 999600000.0, 200.0);
    EXPECT_NEAR(late.GetFractionOfMinutes(), 59999, 1);
}

TEST(TimeClasses, ZerosOfTheOperatingSystem) {
    EXPECT_FALSE(convertToSMjdTime(SYSTEMTIME{}).IsSet());
    EXPECT_EQ(convertToSMjdTime(TestClock::stamp(2017, 1, 1, 1, 2, 3, 4)), SMjdTime(2017, 1, 1, 1, 2, 3.004));
    EXPECT_EQ(CTimeBase(SYSTEMTIME{}), SMjdTime(0, 0, 0, 0, 0, 0.0)) << "taken as a date";
    EXPECT_TRUE(CTimeBase(SYSTEMTIME{}).IsSet());
}

TEST(TimeClasses, Compare) {
    const CTimeBase time(2017, 5, 5, 10, 0, 30.0);
    struct Row {
        CTimeBase other;
        bool timeOfDayOnly, toTheMinute;
        int want;
    };
    const Row rows[] = {
        {CTimeBase(2017, 5, 5, 10, 0, 30.0), false, false, 0},  {CTimeBase(2016, 6, 6, 11, 1, 45.0), false, false, 1},
        {CTimeBase(2017, 4, 6, 11, 1, 45.0), false, false, 1},  {CTimeBase(2017, 5, 6, 9, 0, 0.0), false, false, -1},
        {CTimeBase(2017, 5, 6, 9, 0, 0.0), true, false, 1},     {CTimeBase(2018, 5, 5, 10, 0, 45.0), true, true, 0},
        {CTimeBase(2018, 5, 5, 10, 0, 45.0), true, false, -1},  {CTimeBase(2018, 5, 5, 10, 1, 0.0), true, true, -1},
        {CTimeBase(2017, 5, 5, 10, 0, 29.999), false, false, 1}};
    for (const Row& row : rows) {
        EXPECT_EQ(time.Compare(row.other, row.timeOfDayOnly, row.toTheMinute), row.want) << row.other.GetAsMjd();
    }
}

TEST(TimeClasses, FormatIsTheSameEverywhere) {
    const ScopedVariable zone("TZ", "America/St_Johns");
    const ScopedVariable language("LC_ALL", "fr_FR.UTF-8");
    const CommaLocale comma;
    std::setlocale(LC_ALL, "");
    EXPECT_EQ(CTimeBase(2016, 12, 31, 23, 59, 59.9999).Format("%d.%m.%Y %H:%M:%S %B"), "31.12.2016 23:59:59 December");
    EXPECT_EQ(GetLeapSecondsMjd(57754), "01.01.2017");
    std::setlocale(LC_ALL, "C");
    for (const int year : {99, 10000, 65536 + 2017, -5}) {
        EXPECT_EQ(CTimeBase(year, 1, 1, 0, 0, 0.0).Format("%Y"), "Invalid DateTime.") << year;
    }
}

TEST(TimeClasses, RegionalTextsStayInTheirBuffers) {
    const ScopedVariable language("LC_ALL", "C");
    const CTimeBase time(2017, 1, 2, 3, 4, 5.0);
    EXPECT_EQ(time.FormatRegional(), "01/02/17 03:04:05");
    struct Row {
        std::size_t size;
        const char* one;
        const char* date;
    };
    const Row rows[] = {{0, nullptr, nullptr},
                        {1, "", ""},
                        {2, " ", "0"},
                        {3, "0 ", "01"},
                        {4, "0 0", "01/"},
                        {9, "01/0 03:", "01/02/17"},
                        {18, "01/02/17 03:04:05", "01/02/17"}};
    for (const Row& row : rows) {
        char one[20];
        char date[20];
        std::memset(one, 'x', sizeof one);
        std::memset(date, 'x', sizeof date);
        time.FormatRegional(one, row.size);
        time.FormatRegional(date, row.size, nullptr, 5);
        EXPECT_EQ(one[row.size], 'x') << row.size;
        EXPECT_EQ(date[row.size], 'x') << row.size;
        if (row.size == 0) continue;
        EXPECT_STREQ(one, row.one) << row.size;
        EXPECT_STREQ(date, row.date) << row.size;
    }
}

TEST(GpsTime, LeapSecondsOfATable) {
    struct Fixed : IGPSLeapSeconds {
        int GetGPSLeapSeconds(const SMjdTime& instant) override { return instant.GetMjdDay() >= 57754 ? 18 : 17; }
    } table;
    CGPSTime time(2017, 1, 1, 0, 0, 5.0);
    EXPECT_TRUE(time.AdjustGPS2UTC(table));
    EXPECT_EQ(time, SMjdTime(2016, 12, 31, 23, 59, 47.0));
    EXPECT_TRUE(time.AdjustUTC2GPS(table)) << "looked up before the shift";
    EXPECT_EQ(time, SMjdTime(2017, 1, 1, 0, 0, 4.0));
    CGPSTime unset;
    EXPECT_FALSE(unset.AdjustGPS2UTC(table));
    EXPECT_FALSE(unset.AdjustUTC2GPS(table));
    EXPECT_FALSE(unset.IsSet());
}

TEST(GpsTime, GlonassSecondsOfDay) {
    const CGPSTime time(2020, 1, 1, 0, 0, 0.0);
    EXPECT_EQ(time.GPSWeekSec2GLODaySec(0.0), 10782.0);
    EXPECT_EQ(time.GPSWeekSec2GLODaySec(75618.0), 0.0);
    EXPECT_EQ(time.GPSWeekSec2GLODaySec(604800.0), 10782.0);
}

TEST(SystemTime, WeekMillisecondsWithinHalfAWeekOfNow) {
    constexpr unsigned int kHour = 3600000;
    struct Row {
        const char* what;
        SYSTEMTIME now;
        unsigned int milliseconds;
        CSystemTime want;
    };
    const Row rows[] = {
        // week 1930 began on Sunday, 1 January 2017
        {"just after the week change", TestClock::stamp(2017, 1, 1, 0, 0, 10), 167 * kHour,
         CSystemTime(1929, 601200.0)},
        {"just before it", TestClock::stamp(2016, 12, 31, 23, 59), 5000, CSystemTime(1930, 5.0)},
        {"84 hours ahead stay", TestClock::stamp(2017, 1, 1), 84 * kHour, CSystemTime(1930, 302400.0)},
        {"a millisecond more does not", TestClock::stamp(2017, 1, 1), 84 * kHour + 1, CSystemTime(1929, 302400.001)},
        {"84 hours back stay", TestClock::stamp(2017, 1, 4, 12), 0, CSystemTime(1930, 0.0)},
        {"beyond the week: one week back at most", TestClock::stamp(2017, 1, 1), 400 * kHour,
         CSystemTime(1931, 835200.0 - 604800.0)},
    };
    for (const Row& row : rows) {
        TestClock clock;
        clock.utc = row.now;
        EXPECT_EQ(CSystemTime(row.milliseconds), row.want) << row.what;
    }
}

TEST(SystemTime, NowAndTheReferenceClock) {
    TestClock clock(2020, 6, 1, 12, 0, 0, 250);
    clock.local = TestClock::stamp(2020, 6, 2, 2, 0, 0, 900);
    EXPECT_EQ(GetDeltaLocalTimeUTC(), 14 * 3600.0 + 1.0) << "each rounded to whole seconds";
    SetDeltaUTCTimeFromReference(CSystemTime(2020, 5, 31, 12, 0, 0.0));
    EXPECT_EQ(TIME::GetDeltaUTCTime(), 86400.25);
    CSystemTime now;
    now.SetToCurrentHalvexGPSTime();
    EXPECT_EQ(now, SMjdTime(2020, 5, 31, 12, 0, 18.0));
    TIME::SetDeltaUTCTime(std::nan(""));
    EXPECT_EQ(TIME::GetDeltaUTCTime(), 86400.25);
    TIME::SetDeltaUTCTime(0.0);
    now.SetToCurrentLocalTime();
    EXPECT_EQ(now, SMjdTime(2020, 6, 2, 2, 0, 0.9));
}

TEST(TimeKeys, TheWeekCountsFirst) {
    EXPECT_TRUE(GPSTimeCompare(5, 0) > GPSTimeCompare(4, 4294967295U));
    EXPECT_TRUE(GPSTimeCompare(4, 7) >= GPSTimeCompare(4, 7));
    EXPECT_FALSE(GPSTimeCompare() > GPSTimeCompare(0, 0));
}

}  // namespace
