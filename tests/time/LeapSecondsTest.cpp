// Looking leap seconds up, and the life of the table.

#include <gtest/gtest.h>

#include <atomic>
#include <limits>
#include <thread>
#include <tuple>

#include "tests/support/Environment.h"
#include "tests/time/LeapSecondFixture.h"

namespace {

using namespace halvex::test;
using SGPSLeapSeconds = IGPSLeapSeconds::SGPSLeapSeconds;

using LeapSeconds = LeapSecondTest;

TEST_F(LeapSeconds, ChangeStrictlyAfterTheStartOfTheDayPlusLs) {
    const std::pair<SMjdTime, int> rows[] = {{SMjdTime(2016, 12, 31, 23, 59, 59.0), 17},
                                             {SMjdTime(2017, 1, 1, 0, 0, 17.0), 17},
                                             {SMjdTime(2017, 1, 1, 0, 0, 17.001), 18},
                                             {SMjdTime(), 17}};
    for (const bool table : {false, true}) {
        if (table) InitCentralLeapSeconds();
        for (const auto& [instant, want] : rows) EXPECT_EQ(GetGPSLeapSeconds(instant), want) << instant.GetAsMjd();
        EXPECT_EQ(inForce(), Values(17, 18, kJanuary2017));
    }
}

TEST_F(LeapSeconds, AnUnsetInstantMeansNowForAGivenTable) {
    InitCentralLeapSeconds();
    m_clock.utc = TestClock::stamp(2020, 1, 1);
    EXPECT_EQ(GetGPSLeapSeconds(CGPSLeapSeconds::getInstance(), SMjdTime()), 18);
    EXPECT_EQ(GetGPSLeapSeconds(SMjdTime()), 17);
    int ls = 0, lsf = 0, lsfMjd = 0;
    EXPECT_TRUE(GetGPSLeapSeconds(SMjdTime(58000.0), ls, lsf, lsfMjd));
    EXPECT_EQ(Values(ls, lsf, lsfMjd), Values(18, 18, kJanuary2017)) << "the first is that of the instant";
}

TEST_F(LeapSeconds, WithoutATableNothingIsTakenOrHarmed) {
    UpdateCentralLeapSecondsFromDB();
    CGPSLeapSeconds::ShutDown(true);
    EXPECT_FALSE(SetAutomaticGPSLeapSeconds(&m_record, 18, 19, kJuly2017, 0));
    EXPECT_FALSE(SetManualGPSLeapSeconds(&m_record, 18, 19, kJuly2017));
    EXPECT_FALSE(SetSimulationGPSLeapSeconds(&m_record, 18, 19, kJuly2017));
    EXPECT_TRUE(m_record.take().empty());
}

TEST_F(LeapSeconds, LoadingRollsAChangeThatHasPassedAndSavesItBack) {
    m_clock.utc = TestClock::stamp(2017, 1, 1, 23);  // by day: not yet
    InitCentralLeapSeconds();
    EXPECT_EQ(m_record.take(), (std::vector<std::string>{"save auto 17 18 57754 57662", "save manual 0 0 0 0"}));
    EXPECT_EQ(inForce(), Values(17, 18, kJanuary2017));
    m_clock.utc = TestClock::stamp(2017, 1, 2);
    m_record.manual = {18, 19, kJuly2017, 57700};
    UpdateCentralLeapSecondsFromDB();
    EXPECT_EQ(m_record.take(),
              (std::vector<std::string>{"save auto 18 18 57754 57662", "save manual 18 19 57935 57700"}));
    EXPECT_EQ(inForce(), Values(18, 19, kJuly2017));
    EXPECT_EQ(central(), std::tuple(18, 19, 1955, 7));
    EXPECT_EQ(m_tree.value("LeapSeconds/Automatic", "Current"), 18.0);
    EXPECT_EQ(m_tree.value("LeapSeconds/Automatic", "ConfirmedMjd"), 57662.0);
    EXPECT_EQ(m_tree.value("LeapSeconds/Manual", "FutureMjd"), 57935.0);
}

TEST_F(LeapSeconds, AClearedManualSetOrAFailedLoadIsNoEntry) {
    m_record.manual = {0, 0, 0, 57700};  // only the day of the entry is left
    InitCentralLeapSeconds();
    UpdateCentralLeapSecondsFromDB();
    EXPECT_EQ(central(), std::tuple(17, 18, 1930, 1));
    m_record.take();
    m_record.loads = false;
    m_record.automatic = {1, 2, 3, 4};
    UpdateCentralLeapSecondsFromDB();
    EXPECT_EQ(inForce(), Values(17, 18, kJanuary2017));
    EXPECT_TRUE(m_record.take().empty()) << "what could not be loaded is not saved over";
}

TEST_F(LeapSeconds, ShuttingDownSavesWhenTold) {
    for (const bool persist : {true, false}) {
        InitCentralLeapSeconds();
        m_record.take();
        CGPSLeapSeconds::ShutDown(persist);
        EXPECT_EQ(m_record.take().size(), persist ? 2U : 0U);
        EXPECT_FALSE(CGPSLeapSeconds::hasInstance());
        EXPECT_TRUE(m_tree.snapshot().empty());
    }
}

TEST_F(LeapSeconds, TheCentralStoreFillsInForASetWithoutLs) {
    m_record.automatic = {-1, 18, kJanuary2017, 57662};
    InitCentralLeapSeconds();
    EXPECT_FALSE(CGPSLeapSeconds::getInstance().Validate());
    EXPECT_EQ(GetGPSLeapSeconds(SMjdTime(58000.0)), 0);
    BSS::TIM::GpsC::setGpsLeapSecondsData(18, 19, 1955, 7, 1);
    EXPECT_EQ(inForce(), Values(18, 19, kJuly2017));
    BSS::TIM::GpsC::setGpsLeapSecondsData(18, 19, 0, 0, 1);
    EXPECT_EQ(inForce(), Values(18, 19, -1)) << "the day stays as the caller had it";
    EXPECT_EQ(GetGPSLeapSeconds(SMjdTime(58000.0)), 19);
}

TEST_F(LeapSeconds, RollingByTheInstantGoesByTheLookup) {
    constexpr int kEndOfNumbers = std::numeric_limits<std::int32_t>::max();
    const std::tuple<int, double, bool> rows[] = {
        {kJanuary2017, 17.0, false}, {kJanuary2017, 17.001, true}, {0, 18.0, false}, {kEndOfNumbers, 18.0, false}};
    for (const auto& [day, second, want] : rows) {
        SGPSLeapSeconds set(17, 18, day, 0);
        EXPECT_EQ(UpdateLeapSecondsCheckFutureMjd(set, SMjdTime(2017, 1, 1, 0, 0, second), false), want) << day;
        EXPECT_EQ(valuesOf(set), Values(want ? 18 : 17, 18, day)) << day;
    }
}

TEST_F(LeapSeconds, DateOfADayNumber) {
    const CommaLocale comma;
    EXPECT_EQ(GetLeapSecondsMjd(0), "-");
    EXPECT_EQ(GetLeapSecondsMjd(57754), "01.01.2017");
    EXPECT_EQ(GetLeapSecondsMjd(-678941 + 365 * 5), "30.12.4") << "the year has no zeros in front";
}

TEST_F(LeapSeconds, ReadersSeeOneSetOrTheOther) {
    InitCentralLeapSeconds();
    CGPSLeapSeconds& table = CGPSLeapSeconds::getInstance();
    const Values sets[] = {{20, 21, 58000}, {40, 41, 59000}};
    const auto set = [&](int number) {
        const auto& [ls, lsf, lsfMjd] = sets[number];
        return table.SetManualGPSLeapSeconds(nullptr, ls, lsf, lsfMjd, 1);
    };
    ASSERT_TRUE(set(0));
    std::atomic<bool> stop{false};
    std::atomic<int> wrong{0};
    std::atomic<int> lookups{0};
    const auto read = [&] {
        while (!stop) {
            const Values seen = inForce();
            const int at = GetGPSLeapSeconds(SMjdTime(58500.0));  // after one change, before the other
            if ((seen != sets[0] && seen != sets[1]) || (at != 21 && at != 40)) ++wrong;
            ++lookups;
        }
    };
    std::thread first(read);
    std::thread second(read);
    for (int i = 1; i < 2000 || lookups < 2000; ++i) set(i % 2);
    stop = true;
    first.join();
    second.join();
    EXPECT_EQ(wrong, 0);
}

}  // namespace
