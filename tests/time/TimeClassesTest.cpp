// The time classes: conversions, saved form, formats, now.

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>

#include "halvex/platform/kernix/ByteCodec.h"
#include "halvex/platform/kernix/Time.h"
#include "halvex/time/GPSTime.h"
#include "halvex/time/GPSTimeCompare.h"
#include "halvex/time/SatelliteTime.h"
#include "halvex/time/SatelliteTimeAndLeapSeconds.h"
#include "halvex/time/SatelliteTimeAndTickCount.h"
#include "halvex/time/SatelliteTimeRelative.h"
#include "halvex/time/SystemTime.h"
#include "tests/support/Bytes.h"
#include "tests/support/Environment.h"
#include "tests/support/TestClock.h"

namespace {

using namespace halvex::test;

TEST(TimeClasses, LoadingNormalisesOrRefuses) {
    constexpr std::int32_t kFirst = INT32_MIN, kLast = INT32_MAX;
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

TEST(TimeClasses, ZerosAndTheLastHalfMillisecondOfADay) {
    EXPECT_EQ(CTimeBase(SYSTEMTIME{}), SMjdTime(0, 0, 0, 0, 0, 0.0)) << "taken as a date";
    EXPECT_FALSE(convertToSMjdTime(SYSTEMTIME{}).IsSet()) << "but not here";
    const CTimeBase late(2016, 12, 31, 23, 59, 59.9996);
    SYSTEMTIME system;
    late.ToSystemTime(system);
    EXPECT_TRUE(system.wSecond == 59 && system.wMilliseconds == 1000);
    DBTIMESTAMP database;
    late.ToDbTimeStamp(database);
    EXPECT_TRUE(database.second == 59 && database.fraction % 100 == 0);
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
        std::string both = untouched, date = untouched;
        const CTimeBase time(2017, 1, 2, 3, 4, 5.0);
        EXPECT_EQ(time.FormatRegional(), "01/02/17 03:04:05");
        time.FormatRegional(both.data(), size);
        time.FormatRegional(date.data(), size, nullptr, 5);
        EXPECT_STREQ(both.c_str(), texts[size][0].c_str()) << size;
        EXPECT_STREQ(date.c_str(), texts[size][1].c_str()) << size;
        EXPECT_EQ(both.substr(size) + date.substr(size), std::string(40 - 2 * size, 'x')) << size;
    }
}

TEST(GpsTime, LeapSecondsOfATableAndGlonassSecondsOfDay) {
    struct Fixed : IGPSLeapSeconds {
        int GetGPSLeapSeconds(const SMjdTime& instant) override { return instant.GetMjdDay() >= 57754 ? 18 : 17; }
    } table;
    CGPSTime time(2017, 1, 1, 0, 0, 5.0);
    EXPECT_TRUE(time.AdjustGPS2UTC(table));
    EXPECT_EQ(time, SMjdTime(2016, 12, 31, 23, 59, 47.0));
    EXPECT_TRUE(time.AdjustUTC2GPS(table)) << "looked up before the shift";
    EXPECT_EQ(time, SMjdTime(2017, 1, 1, 0, 0, 4.0));
    EXPECT_FALSE(CGPSTime().AdjustGPS2UTC(table) || CGPSTime().AdjustUTC2GPS(table));
    time = SMjdTime(2020, 1, 1, 0, 0, 0.0);
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
        {"one week back at most", TestClock::stamp(2017, 1, 1), 400 * kHour, CSystemTime(1931, 835200.0 - 604800.0)}};
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

/// The clock is 2.5 s ahead of the network's reference; 18 leap seconds.
class SatelliteTime : public testing::Test {
protected:
    SatelliteTime() { TIME::SetDeltaUTCTime(2.5); }
    ~SatelliteTime() override { TIME::SetDeltaUTCTime(0.0); }

    TestClock m_clock{2020, 6, 1, 12};
    const SMjdTime m_utc{2020, 6, 1, 11, 59, 57.5};
    const SMjdTime m_gps{2020, 6, 1, 12, 0, 15.5};
};

TEST_F(SatelliteTime, NowOnEitherScaleWhichChangesOnce) {
    CSatelliteTime time;
    EXPECT_EQ(time, m_utc);
    for (int i = 0; i < 2; ++i) time.AdjustFromUTCToGPSTime();
    EXPECT_EQ(time, m_gps);
    for (int i = 0; i < 2; ++i) time.AdjustFromGPSToUTCTime();
    EXPECT_EQ(time, m_utc);
    time = CSatelliteTime(true);
    EXPECT_EQ(time, m_gps);
    time.SetToCurrentGPSTime();
    EXPECT_EQ(time, m_utc) << "corrected UTC in spite of the name";
    EXPECT_FALSE(time.IsGPS());
    time.MarkAsGPSTime(true);
    time.SetToCurrentUTCTime();
    EXPECT_EQ(time, SMjdTime(2020, 6, 1, 12, 0, 0.0)) << "as the clock shows it";
    EXPECT_FALSE(time.IsGPS());
}

TEST_F(SatelliteTime, GivenInstantsAreRawReadings) {
    DBTIMESTAMP stamp;
    CTimeBase(2020, 6, 1, 12, 0, 0.25).ToDbTimeStamp(stamp);
    EXPECT_EQ(CSatelliteTime(2020, 6, 1, 12, 0, 0.0), m_utc);
    EXPECT_EQ(CSatelliteTime(2020, 153, 43200.0), m_utc);
    EXPECT_EQ(CSatelliteTime(2108, 129600.0), m_utc);
    EXPECT_EQ(CSatelliteTime(59001.5), m_utc);
    EXPECT_EQ(CSatelliteTime(stamp), SMjdTime(2020, 6, 1, 11, 59, 57.75));
    EXPECT_EQ(CSatelliteTime(stamp, false), SMjdTime(2020, 6, 1, 12, 0, 0.25));
}

TEST_F(SatelliteTime, AssigningAndSettingKeepTheFlagCopyingDoesNot) {
    const CSatelliteTime gps(true);
    CSatelliteTime assigned;
    assigned = gps;
    assigned = SMjdTime(59000.0);
    CSatelliteTimeAndLeapSeconds leap;
    leap.SetSatTime(gps);
    CSatelliteTimeAndTickCount ticks;
    ticks.set(gps, 7);
    EXPECT_TRUE(assigned.IsGPS() && CSatelliteTimeAndLeapSeconds(leap).GetSatTimeRef().IsGPS() &&
                CSatelliteTimeAndTickCount(ticks).GetSatTimeRef().IsGPS());
    EXPECT_FALSE(CSatelliteTime(gps).IsGPS() || leap.GetSatTime().IsGPS() ||
                 CSatelliteTimeAndTickCount(gps, 7).GetSatTimeRef().IsGPS());
    EXPECT_EQ(ticks, CSatelliteTimeAndTickCount(gps, 7)) << "the flag does not count";
}

TEST_F(SatelliteTime, Outputs) {
    const CSatelliteTime time(2019, 1, 1, 1, 2, 5.5);
    CString text;
    time.getSatelliteTime(text);
    EXPECT_EQ(text, "01:02:03");
    m_clock.local = TestClock::stamp(2020, 6, 1, 20, 0, 1);
    time.getLocalSatelliteTime(text);
    EXPECT_EQ(text, "19:59:58") << "local time now, less the offset";
}

TEST_F(SatelliteTime, SavedForms) {
    TIME::SetDeltaUTCTime(0.0);
    const CSatelliteTime time(2017, 1, 1, 0, 0, 17.5);
    const std::string instant = "9A E1 00 00  00 00 00 00 00 17 D1 40", ticks = "08 07 06 05 04 03 02 01";
    constexpr std::uint64_t kTicks = 0x0102030405060708;
    expectSavedForm(CGPSTime(time), CGPSTime(57000.0), hex(instant));
    expectSavedForm(CSatelliteTimeAndTickCount(time, kTicks), CSatelliteTimeAndTickCount(), hex(instant + ticks));
    expectSavedForm(CSatelliteTimeRelative(kTicks), CSatelliteTimeRelative(), hex(ticks));

    CSatelliteTimeAndLeapSeconds leap;
    EXPECT_EQ(leap.GetLeapSeconds(SMjdTime(2016, 12, 31, 23, 59, 59.999)), 17);
    EXPECT_EQ(leap.GetLeapSeconds(SMjdTime(2017, 1, 1, 0, 0, 0.0)), 18) << "at the start of the day";
    leap.SetLeapSecondsData(17, -2, 57754);
    leap.SetSatTime(time);
    leap.SetLeapSecondsManualSet(true);
    expectSavedForm(leap, CSatelliteTimeAndLeapSeconds(), hex(instant + "11 00 00 00  FE FF FF FF  9A E1 00 00  01"));
}

TEST_F(SatelliteTime, TicksMoveWithTheInstant) {
    m_clock.ticks = 5000;
    const std::pair<double, std::uint64_t> rows[] = {{0.0014, 5001}, {0.0015, 5002}, {-1.0, 4001}, {1e300, 5000}};
    for (const auto& [seconds, want] : rows) {
        CSatelliteTimeAndTickCount time;
        time.addSeconds(seconds);
        EXPECT_EQ(time.getAsAbsoluteTicks(), want) << seconds;
    }
    CSatelliteTimeAndTickCount time(CSatelliteTime(true), 1);
    time.addSeconds(2.0);
    EXPECT_NEAR(time.getAsMjd(), m_gps.GetAsMjd() + 2.0 / 86400.0, 1e-10);
}

TEST_F(SatelliteTime, RelativeTimes) {
    const CSatelliteTimeAndTickCount reference(CSatelliteTime(), 5000);
    CSatelliteTimeRelative time;
    EXPECT_TRUE(!time.isSet() && time.getAsMjd(reference) == -1.0 && time.getAsRelativeTicks(reference) == 0);
    time.unset();
    EXPECT_EQ(time.getAsMjd(reference), 0.0);
    time.set(6000);
    EXPECT_EQ(time.getAsMjd(reference), reference.getAsMjd() + 1000 / 86400000.0);
    time.set(4999);
    EXPECT_EQ(time.getAsRelativeTicks(reference), ~std::uint64_t{0}) << "wraps";
}

}  // namespace
