#include "halvex/time/SatelliteTime.h"

#include <gtest/gtest.h>

#include <limits>

#include "halvex/platform/kernix/Time.h"
#include "halvex/time/SatelliteTimeAndLeapSeconds.h"
#include "halvex/time/SatelliteTimeAndTickCount.h"
#include "halvex/time/SatelliteTimeRelative.h"
#include "tests/support/Bytes.h"
#include "tests/support/TestClock.h"

namespace {

using namespace halvex::test;

/// The clock is 2.5 s ahead of the network's reference; 18 leap seconds.
class SatelliteTime : public testing::Test {
protected:
    SatelliteTime() { TIME::SetDeltaUTCTime(2.5); }
    ~SatelliteTime() override { TIME::SetDeltaUTCTime(0.0); }

    static constexpr std::uint64_t kTicks = 0x0102030405060708;
    TestClock m_clock{2020, 6, 1, 12};
    const SMjdTime m_utc{2020, 6, 1, 11, 59, 57.5};
    const SMjdTime m_gps{2020, 6, 1, 12, 0, 15.5};
};

TEST_F(SatelliteTime, NowOnEitherScale) {
    EXPECT_EQ(CSatelliteTime(), m_utc);
    EXPECT_EQ(CSatelliteTime(true), m_gps);
    CSatelliteTime time(true);
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
    CTimeBase(2020, 6, 1, 12, 0, 0.0).ToDbTimeStamp(stamp);
    EXPECT_EQ(CSatelliteTime(2020, 6, 1, 12, 0, 0.0), m_utc);
    EXPECT_EQ(CSatelliteTime(2020, 153, 43200.0), m_utc);
    EXPECT_EQ(CSatelliteTime(2108, 129600.0), m_utc);
    EXPECT_EQ(CSatelliteTime(59001.5), m_utc);
    EXPECT_EQ(CSatelliteTime(stamp), m_utc);
    EXPECT_EQ(CSatelliteTime(stamp, false), SMjdTime(59001.5));
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
    EXPECT_TRUE(assigned.IsGPS());
    EXPECT_TRUE(CSatelliteTimeAndLeapSeconds(leap).GetSatTimeRef().IsGPS());
    EXPECT_TRUE(CSatelliteTimeAndTickCount(ticks).GetSatTimeRef().IsGPS());
    EXPECT_FALSE(CSatelliteTime(gps).IsGPS());
    EXPECT_FALSE(leap.GetSatTime().IsGPS());
    EXPECT_FALSE(CSatelliteTimeAndTickCount(gps, 7).GetSatTimeRef().IsGPS());
    EXPECT_EQ(ticks, CSatelliteTimeAndTickCount(gps, 7)) << "the flag does not count";
}

TEST_F(SatelliteTime, ChangingTheScaleHappensOnce) {
    CSatelliteTime time;
    time.AdjustFromUTCToGPSTime();
    time.AdjustFromUTCToGPSTime();
    EXPECT_EQ(time, m_gps);
    time.AdjustFromGPSToUTCTime();
    time.AdjustFromGPSToUTCTime();
    EXPECT_EQ(time, m_utc);
}

TEST_F(SatelliteTime, Outputs) {
    const CSatelliteTime time(2019, 1, 1, 1, 2, 5.5);
    CString text;
    double mjd = 0.0;
    DBTIMESTAMP stamp;
    time.getSatelliteTime(text);
    time.getSatelliteTime(mjd);
    EXPECT_EQ(text, "01:02:03");
    EXPECT_EQ(mjd, SMjdTime(2019, 1, 1, 1, 2, 3.0).GetAsMjd());
    m_clock.local = TestClock::stamp(2020, 6, 1, 20, 0, 1);
    time.getLocalSatelliteTime(text);
    time.getLocalSatelliteTime(stamp);
    EXPECT_EQ(text, "19:59:58") << "local time now, less the offset";
    EXPECT_EQ(stamp.fraction, 500000000U);
}

TEST_F(SatelliteTime, LeapSecondsOfARecordChangeAtTheStartOfTheDay) {
    CSatelliteTimeAndLeapSeconds record;
    EXPECT_EQ(record.GetLeapSeconds(SMjdTime(2016, 12, 31, 23, 59, 59.999)), 17);
    EXPECT_EQ(record.GetLeapSeconds(SMjdTime(2017, 1, 1, 0, 0, 0.0)), 18);
    record.SetLeapSecondsData(30, 31, 60000);
    EXPECT_EQ(record.GetLeapSeconds(SMjdTime(59999.9)), 30);
}

TEST_F(SatelliteTime, SavedForms) {
    TIME::SetDeltaUTCTime(0.0);
    const CSatelliteTime time(2017, 1, 1, 0, 0, 17.5);
    const std::string instant = "9A E1 00 00  00 00 00 00 00 17 D1 40";

    CSatelliteTimeAndLeapSeconds leap(17, -2, 57754);
    leap.SetSatTime(time);
    leap.SetLeapSecondsManualSet(true);
    expectSavedForm(leap, CSatelliteTimeAndLeapSeconds(), hex(instant + "11 00 00 00  FE FF FF FF  9A E1 00 00  01"));

    const CSatelliteTimeAndTickCount ticks(time, kTicks);
    expectSavedForm(ticks, CSatelliteTimeAndTickCount(), hex(instant + "08 07 06 05 04 03 02 01"));

    expectSavedForm(CSatelliteTimeRelative(kTicks), CSatelliteTimeRelative(), hex("08 07 06 05 04 03 02 01"));

    const Bytes infinite = hex("9A E1 00 00  00 00 00 00 00 00 F0 7F 08 07 06 05 04 03 02 01");
    CSatelliteTimeAndTickCount kept(time, 5);
    EXPECT_FALSE(kept.loadData(infinite.data(), infinite.size()));
    EXPECT_EQ(kept, CSatelliteTimeAndTickCount(time, 5));
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
    EXPECT_FALSE(time.isSet());
    EXPECT_EQ(time.getAsMjd(reference), -1.0);
    EXPECT_EQ(time.getAsRelativeTicks(reference), 0U);
    time.unset();
    EXPECT_FALSE(time.isSet());
    EXPECT_EQ(time.getAsMjd(reference), 0.0);
    time.set(6000);
    EXPECT_EQ(time.getAsMjd(reference), reference.getAsMjd() + 1000 / 86400000.0);
    time.set(4999);
    EXPECT_EQ(time.getAsRelativeTicks(reference), std::numeric_limits<std::uint64_t>::max()) << "wraps";
}

}  // namespace
