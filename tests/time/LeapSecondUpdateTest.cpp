// Setting leap seconds: what is taken, in which order who hears of it.

#include <gmock/gmock.h>

#include <limits>

#include "halvex/platform/kernix/TraceUtil.h"
#include "tests/time/LeapSecondFixture.h"

namespace {

using namespace halvex::test;
using SGPSLeapSeconds = IGPSLeapSeconds::SGPSLeapSeconds;
using Events = std::vector<std::string>;

class LeapSecondUpdate : public LeapSecondTest {
protected:
    LeapSecondUpdate() {
        InitCentralLeapSeconds();
        m_record.take();
    }
};

TEST(LeapSecondPlausibility, Table) {
    constexpr int kMin = std::numeric_limits<std::int32_t>::min();
    constexpr int kMax = std::numeric_limits<std::int32_t>::max();
    const SGPSLeapSeconds usual(17, 18, kJanuary2017, 57760);
    const SGPSLeapSeconds before(16, 17, 57204, 57700);  // the change of July 2015
    struct Row {
        const char* what;
        SGPSLeapSeconds old;
        int ls, lsf, lsfMjd, today;
        bool bypass, want;
    };
    const Row rows[] = {
        {"repeated announcement, whatever the LS", usual, 5, 18, kJanuary2017, 57764, false, true},
        {"no day", usual, 18, 19, 0, 57764, true, false},
        {"two seconds at once", usual, 17, 19, kJuly2017, 57764, true, false},
        {"extremes that agree", {kMin, kMin, kMin, kMax}, kMax, kMax, kMax, 57764, false, false},
        {"not one away from the stored LSF", usual, 20, 20, kJuly2017, 57764, false, false},
        {"not one away, bypassed", usual, 30, 31, 60000, 57764, true, true},
        {"same day", usual, 18, 19, kJanuary2017, 57764, false, false},
        {"earlier event", usual, 18, 19, 57723, 57764, false, false},
        {"183 days ahead", before, 17, 18, kJuly2017, 57752, false, true},
        {"184 days ahead", before, 17, 18, kJuly2017, 57751, false, false},
        {"in the middle of a month", usual, 18, 19, kJuly2017 - 16, 57764, false, false},
        {"on the day of the event before", usual, 18, 19, kJuly2017, 57754, false, false},
        {"on the day after it", usual, 18, 19, kJuly2017, 57755, false, true},
        {"stored set 91 days old", usual, 30, 31, 60000, 57851, false, false},
        {"stored set 92 days old", usual, 30, 31, 60000, 57852, false, true},
    };
    for (const Row& row : rows) {
        const SMjdTime now = SMjdTime::FromDayAndMilliseconds(row.today, 43200000.0);
        EXPECT_EQ(CGPSLeapSeconds::ValidateGPSLeapSeconds(row.old, {row.ls, row.lsf, row.lsfMjd, 0}, now, row.bypass),
                  row.want)
            << row.what;
    }
}

TEST_F(LeapSecondUpdate, ARepeatedAnnouncementOnlyConfirms) {
    EXPECT_TRUE(SetAutomaticGPSLeapSeconds(&m_record, 5, 18, kJanuary2017, 0));
    EXPECT_EQ(m_record.take(), Events{"save auto 17 18 57754 57681"});
    EXPECT_EQ(central(), std::tuple(0, 0, 0, 0)) << "nothing changed, nothing is handed on";
    EXPECT_EQ(m_tree.value("LeapSeconds/Automatic", "ConfirmedMjd"), 57681.0);
}

TEST_F(LeapSecondUpdate, RejectedValuesChangeNothing) {
    const std::string text =
        "Automatic Leap Second (LS, LSF, LSF_MJD) change REJECTED from (17, 18, 57754) to (18, 19, 57800)";
    const std::uint32_t mask = CTraceUtil::SetEnabled(512);
    EXPECT_FALSE(SetAutomaticGPSLeapSeconds(&m_record, 18, 19, 57800, 0));
    CTraceUtil::SetEnabled(mask);
    const Events events = m_record.take();
    const std::string source = "CGPSLeapSeconds::SetAutomaticGPSLeapSeconds 2 ";
    EXPECT_THAT(events,
                testing::UnorderedElementsAre("Trace 1 [512] " + text, source + text, "rejected 17 18 57754 0"));
    EXPECT_EQ(events.back(), "rejected 17 18 57754 0");
    EXPECT_EQ(inForce(), Values(17, 18, kJanuary2017));
}

TEST_F(LeapSecondUpdate, AcceptedValuesGoEverywhereInOrder) {
    m_clock.utc = TestClock::stamp(2017, 1, 11);
    const std::string start =
        "CGPSLeapSeconds::SetAutomaticGPSLeapSeconds 2 Automatic Leap Second (LS, LSF, LSF_MJD) change ACCEPTED from ";
    EXPECT_TRUE(SetAutomaticGPSLeapSeconds(&m_record, 17, 18, kJanuary2017, 0));
    EXPECT_EQ(m_record.take(), (Events{start + "(17, 18, 57754) to (18, 18, 57754)", "accepted 18 18 57754 0",
                                       "save auto 18 18 57754 57764"}))
        << "the change that has passed is rolled";
    EXPECT_EQ(central(), std::tuple(18, 18, 1930, 1));

    EXPECT_TRUE(SetAutomaticGPSLeapSeconds(&m_record, 18, 19, kJuly2017, 0));
    EXPECT_EQ(m_record.take(), (Events{start + "(18, 18, 57754) to (18, 19, 57935)", "accepted 18 19 57935 0",
                                       "save auto 18 19 57935 57764"}));
    EXPECT_EQ(central(), std::tuple(18, 19, 1955, 7));
    EXPECT_EQ(m_tree.value("LeapSeconds/Automatic", "Future"), 19.0);

    m_clock.utc = TestClock::stamp(2017, 1, 12);
    EXPECT_TRUE(SetAutomaticGPSLeapSeconds(&m_record, 30, 31, 50000, 3));
    EXPECT_EQ(m_record.take(), (Events{start + "(18, 19, 57935) to (30, 31, 50000)", "accepted 30 31 50000 0"}))
        << "bypass: not rolled, not saved";
    EXPECT_EQ(m_tree.value("LeapSeconds/Automatic", "ConfirmedMjd"), 57764.0);
}

TEST_F(LeapSecondUpdate, AManualEntryOverridesUntilItIsCleared) {
    const std::string start =
        "CGPSLeapSeconds::SetManualGPSLeapSeconds 2 Manual Leap Second (LS, LSF, LSF_MJD) change ACCEPTED from ";
    EXPECT_TRUE(SetManualGPSLeapSeconds(&m_record, 20, 21, kJuly2017));
    EXPECT_EQ(m_record.take(), (Events{start + "(0, 0, 0) to (20, 21, 57935)", "save manual 20 21 57935 57681",
                                       "accepted 20 21 57935 0"}));
    EXPECT_EQ(inForce(), Values(20, 21, kJuly2017));
    EXPECT_EQ(central(), std::tuple(20, 21, 1955, 7));

    m_clock.utc = TestClock::stamp(2017, 1, 11);
    EXPECT_TRUE(SetAutomaticGPSLeapSeconds(nullptr, 17, 18, kJanuary2017, 0));
    EXPECT_EQ(inForce(), Values(20, 21, kJuly2017));
    EXPECT_EQ(central(), std::tuple(20, 21, 1955, 7));
    m_record.take();

    EXPECT_TRUE(CGPSLeapSeconds::getInstance().SetManualGPSLeapSeconds(&m_record, 0, 0, 0, 1));
    EXPECT_EQ(m_record.take(),
              (Events{start + "(20, 21, 57935) to Automatic (18, 18, 57754)", "accepted 18 18 57754 0"}))
        << "flags 1: not saved";
    EXPECT_EQ(inForce(), Values(18, 18, kJanuary2017));
    EXPECT_EQ(central(), std::tuple(18, 18, 1930, 1));
}

TEST_F(LeapSecondUpdate, SimulationFillsInAndClearsTheManualSet) {
    EXPECT_TRUE(SetManualGPSLeapSeconds(nullptr, 20, 21, kJuly2017));
    m_record.take();
    EXPECT_TRUE(SetSimulationGPSLeapSeconds(&m_record, 30, 0, 0));
    EXPECT_EQ(inForce(), Values(30, 30, kJanuary2017));
    const Events events = m_record.take();
    ASSERT_EQ(events.size(), 4U) << "two log lines, two answers, nothing saved";
    EXPECT_EQ(events[1], "accepted 30 30 57754 0");
    EXPECT_EQ(events[3], "accepted 30 30 57754 0");
}

TEST_F(LeapSecondUpdate, AHandlerMayUpdateInTurn) {
    struct Chain : ILeapSecondsMsgHnd {
        void OnLeapSecondsAccepted(const int& ls, const int&, const int&) override {
            if (ls == 20) SetManualGPSLeapSeconds(this, 0, 0, 0);
        }
        void OnLeapSecondsRejected(const int&, const int&, const int&) override {
            SetManualGPSLeapSeconds(nullptr, 20, 20, kJuly2017);
        }
    } chain;
    EXPECT_TRUE(SetManualGPSLeapSeconds(&chain, 20, 21, kJuly2017));
    EXPECT_EQ(inForce(), Values(17, 18, kJanuary2017));
    EXPECT_FALSE(SetAutomaticGPSLeapSeconds(&chain, 18, 0, 0, 0));
    EXPECT_EQ(inForce(), Values(20, 20, kJuly2017));
}

}  // namespace
