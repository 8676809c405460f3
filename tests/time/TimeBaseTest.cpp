// The time classes: conversions, saved form, formats, now.

#include "halvex/time/TimeBase.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <tuple>

#include "halvex/platform/kernix/ByteCodec.h"
#include "halvex/platform/kernix/Time.h"
#include "halvex/time/GPSTime.h"
#include "halvex/time/GPSTimeCompare.h"
#include "halvex/time/SystemTime.h"
#include "tests/support/Bytes.h"
#include "tests/support/Environment.h"
#include "tests/support/TestClock.h"

namespace {

using namespace halvex::test;

TEST(TimeClasses, ZerosOfASystemTime) {
    EXPECT_EQ(CTimeBase(SYSTEMTIME{}), SMjdTime(0, 0, 0, 0, 0, 0.0)) << "taken as a date";
    EXPECT_FALSE(convertToSMjdTime(SYSTEMTIME{}).IsSet()) << "but not here";
}

TEST(TimeClasses, SavedForm) {
    expectSavedForm(CGPSTime(2017, 1, 1, 0, 0, 17.5), CGPSTime(57000.0), hex("9A E1 00 00  00 00 00 00 00 17 D1 40"));
}

TEST(TimeClasses, LoadingNormalisesOrRefuses) {
    constexpr std::int32_t kFirst = std::numeric_limits<std::int32_t>::min();
    constexpr std::int32_t kLast = std::numeric_limits<std::int32_t>::max();
    const auto at = SMjdTime::FromDayAndMilliseconds;
    const SMjdTime before(1.25);
    const std::tuple<std::int32_t, double, bool, SMjdTime> rows[] = {
        {57754, -1.0, true, at(57753, 86399999.0)}, {57754, 86400000.0, true, at(57755, 0.0)},
        {57754, 864000001.5, true, at(57764, 1.5)}, {kLast, 86399999.0, true, at(kLast, 86399999.0)},
        {kLast, 86400000.0, false, before},         {kFirst, -1.0, false, before},
        {57754, std::nan(""), false, before},       {0, 1e300, false, before}};
    for (const auto& [day, milliseconds, want, wantTime] : rows) {
        Bytes bytes(12);
        halvex::storeLittleEndian(bytes.data(), day);
        halvex::storeLittleEndian(bytes.data() + 4, milliseconds);
        CTimeBase time(before);
        EXPECT_EQ(time.loadData(bytes.data(), bytes.size()), want) << day << " " << milliseconds;
        EXPECT_EQ(time, wantTime) << day << " " << milliseconds;
    }
}

TEST(TimeClasses, LastHalfMillisecondOfADay) {
    const CTimeBase late(2016, 12, 31, 23, 59, 59.9996);
    SYSTEMTIME system;
    late.ToSystemTime(system);
    EXPECT_EQ(system.wSecond, 59);
    EXPECT_EQ(system.wMilliseconds, 1000);
    DBTIMESTAMP database;
    late.ToDbTimeStamp(database);
    EXPECT_EQ(database.second, 59);
    EXPECT_EQ(database.fraction % 100, 0U);
    EXPECT_NEAR(database.fraction, 999600000.0, 200.0);
}

TEST(TimeClasses, Compare) {
    const CTimeBase time(2017, 5, 5, 10, 0, 30.0);
    const std::tuple<CTimeBase, bool, bool, int> rows[] = {
        {CTimeBase(2016, 6, 6, 11, 1, 45.0), false, false, 1}, {CTimeBase(2017, 4, 6, 11, 1, 45.0), false, false, 1},
        {CTimeBase(2017, 5, 6, 9, 0, 0.0), false, false, -1},  {CTimeBase(2017, 5, 6, 9, 0, 0.0), true, false, 1},
        {CTimeBase(2018, 5, 5, 10, 0, 45.0), true, true, 0},   {CTimeBase(2018, 5, 5, 10, 0, 45.0), true, false, -1},
        {CTimeBase(2018, 5, 5, 10, 1, 0.0), true, true, -1},   {CTimeBase(2017, 5, 5, 10, 0, 29.999), false, false, 1}};
    for (const auto& [other, timeOfDayOnly, toTheMinute, want] : rows) {
        EXPECT_EQ(time.Compare(other, timeOfDayOnly, toTheMinute), want) << other.GetAsMjd();
    }
    EXPECT_TRUE(GPSTimeCompare(5, 0) > GPSTimeCompare(4, 4294967295U)) << "the week counts first";
}

TEST(TimeClasses, FormatTakesFourDigitYears) {
    EXPECT_EQ(CTimeBase(2016, 12, 31, 23, 59, 59.9999).Format("%d.%m.%Y %H:%M:%S"), "31.12.2016 23:59:59");
    for (const int year : {99, 10000, 65536 + 2017, -5}) {
        EXPECT_EQ(CTimeBase(year, 1, 1, 0, 0, 0.0).Format("%Y"), "Invalid DateTime.") << year;
    }
}

TEST(TimeClasses, RegionalTextsStayInTheirBuffers) {
    const ScopedVariable language("LC_ALL", "C");
    const std::string untouched(20, 'x');
    const std::string texts[][2] = {{untouched, untouched}, {"", ""}, {" ", "0"}, {"0 ", "01"}, {"0 0", "01/"}};
    for (std::size_t size = 0; size < std::size(texts); ++size) {
        std::string both = untouched;
        std::string date = untouched;
        const CTimeBase time(2017, 1, 2, 3, 4, 5.0);
        EXPECT_EQ(time.FormatRegional(), "01/02/17 03:04:05");
        time.FormatRegional(both.data(), size);
        time.FormatRegional(date.data(), size, nullptr, 5);
        EXPECT_STREQ(both.c_str(), texts[size][0].c_str()) << size;
        EXPECT_STREQ(date.c_str(), texts[size][1].c_str()) << size;
        EXPECT_EQ(both.substr(size) + date.substr(size), std::string(40 - 2 * size, 'x')) << size;
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
    EXPECT_FALSE(CGPSTime().AdjustGPS2UTC(table));
    EXPECT_FALSE(CGPSTime().AdjustUTC2GPS(table));
}

TEST(GpsTime, GlonassSecondsOfDay) {
    const CGPSTime time(2020, 1, 1, 0, 0, 0.0);
    EXPECT_EQ(time.GPSWeekSec2GLODaySec(75618.0), 0.0);
    EXPECT_EQ(time.GPSWeekSec2GLODaySec(604800.0), 10782.0);
}

TEST(SystemTime, WeekMillisecondsWithinHalfAWeekOfNow) {
    constexpr unsigned int kHour = 3600000;
    const std::tuple<const char*, SYSTEMTIME, unsigned, CSystemTime> rows[] = {
        // week 1930 began on Sunday, 1 January 2017
        {"just before the week change", TestClock::stamp(2016, 12, 31, 23, 59), 5000, CSystemTime(1930, 5.0)},
        {"84 hours ahead stay", TestClock::stamp(2017, 1, 1), 84 * kHour, CSystemTime(1930, 302400.0)},
        {"a millisecond more does not", TestClock::stamp(2017, 1, 1), 84 * kHour + 1, CSystemTime(1929, 302400.001)},
        {"84 hours back stay", TestClock::stamp(2017, 1, 4, 12), 0, CSystemTime(1930, 0.0)},
        {"one week back at most", TestClock::stamp(2017, 1, 1), 400 * kHour, CSystemTime(1931, 835200.0 - 604800.0)},
    };
    for (const auto& [what, now, milliseconds, want] : rows) {
        TestClock clock;
        clock.utc = now;
        EXPECT_EQ(CSystemTime(milliseconds), want) << what;
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

}  // namespace
