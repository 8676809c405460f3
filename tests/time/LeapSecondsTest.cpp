// The table of leap seconds: looking them up, its life, setting them and who hears of it.

#include <gmock/gmock.h>

#include <functional>
#include <thread>

#include "halvex/platform/bss/GpsC.h"
#include "halvex/platform/kernix/Logging.h"
#include "halvex/platform/kernix/Monitor.h"
#include "halvex/platform/kernix/TraceUtil.h"
#include "halvex/time/GPSLeapSeconds.h"
#include "halvex/time/LeapSecondsPersist.h"
#include "tests/support/Environment.h"
#include "tests/support/TestClock.h"

namespace {

using namespace halvex::test;
using SGPSLeapSeconds = IGPSLeapSeconds::SGPSLeapSeconds;
using Events = std::vector<std::string>;
using Values = std::tuple<int, int, int>;  // LS, LSF, LSF_MJD

constexpr int kJanuary2017 = 57754;
constexpr int kJuly2017 = 57935;

Values valuesOf(const SGPSLeapSeconds& set) {
    return {set.leapSeconds, set.leapSecondsFuture, set.leapSecondsFutureMjd};
}

/// Handler, persistence and log in one, so that the order of what happens shows. Looks the leap seconds up whenever it
/// is called: with a lock held that would not return.
class Recorder : public ILeapSecondsMsgHnd, public CLeapSecondsPersistBase, public ILogging::Sink {
public:
    Recorder() : m_log(*this) { CLeapSecondsPersist::InitInstance(this); }
    ~Recorder() override { CLeapSecondsPersist::InitInstance(nullptr); }

    SGPSLeapSeconds automatic{17, 18, kJanuary2017, 57662};
    SGPSLeapSeconds manual;
    bool loads = true;
    std::function<void()> meanwhile;  ///< done once, when a manual set is read or stored, or a handler called

    Events take() { return std::exchange(m_events, {}); }

    void OnLeapSecondsAccepted(const int& ls, const int& lsf, const int& lsfMjd) override {
        interrupt();
        add("accepted", {ls, lsf, lsfMjd, 0});
    }
    void OnLeapSecondsRejected(const int& ls, const int& lsf, const int& lsfMjd) override {
        interrupt();
        add("rejected", {ls, lsf, lsfMjd, 0});
    }
    bool SaveManual(const SGPSLeapSeconds& set) override {
        interrupt();
        return add("save manual", manual = set);
    }
    bool SaveAuto(const SGPSLeapSeconds& set) override { return add("save auto", automatic = set); }
    bool LoadManual(SGPSLeapSeconds& set) override {
        set = manual;
        interrupt();
        return loads;
    }
    bool LoadAuto(SGPSLeapSeconds& set) override {
        set = automatic;
        return loads;
    }
    void write(std::string_view source, int level, std::string_view message) override {
        m_events.push_back(std::string(source) + " " + std::to_string(level) + " " + std::string(message));
    }

private:
    void interrupt() {
        if (const auto now = std::exchange(meanwhile, nullptr)) now();
    }
    /// False, as from a store that fails: nobody minds.
    bool add(const std::string& what, const SGPSLeapSeconds& set) {
        int ls = 0, lsf = 0, lsfMjd = 0;
        GetGPSLeapSeconds(SMjdTime(57000.0), ls, lsf, lsfMjd);
        m_events.push_back(what + " " + std::to_string(set.leapSeconds) + " " + std::to_string(set.leapSecondsFuture) +
                           " " + std::to_string(set.leapSecondsFutureMjd) + " " + std::to_string(set.confirmMjd));
        return false;
    }
    Events m_events;
    ScopedLogSink m_log;
};

/// No table yet, an empty central store, a monitoring tree and a clock of the test's own.
class LeapSecondTest : public testing::Test {
protected:
    LeapSecondTest() { CGPSLeapSeconds::ResetFWCentralLeapSeconds(); }
    ~LeapSecondTest() override {
        CGPSLeapSeconds::ShutDown(false);
        CGPSLeapSeconds::ResetFWCentralLeapSeconds();
    }

    static Values inForce() {
        int ls = -1, lsf = -1, lsfMjd = -1;
        return GetGPSLeapSecondsData(ls, lsf, lsfMjd) ? Values(ls, lsf, lsfMjd) : Values(-2, -2, -2);
    }
    /// Counts, week and day number of the central store; zeros when it is empty.
    static std::tuple<int, int, int, int> central() {
        BSS::TIM::UtcLeapSecond stored;
        if (BSS::TIM::GpsC::getUtcLeapSecond(stored) != 0) return {};
        return {stored.leapSeconds, stored.futureLeapSeconds, stored.week, stored.dayNumber};
    }

    CMonitorTree m_tree;
    ScopedMonitorTree m_monitor{m_tree};
    TestClock m_clock{2016, 10, 20, 12};  // MJD 57681
    Recorder m_record;
};

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

TEST_F(LeapSeconds, LoadingRollsAChangeThatHasPassedAndSavesItBack) {
    m_clock.utc = TestClock::stamp(2017, 1, 1, 23);  // by day: not yet
    InitCentralLeapSeconds();
    EXPECT_EQ(m_record.take(), (Events{"save auto 17 18 57754 57662", "save manual 0 0 0 0"}));
    EXPECT_EQ(inForce(), Values(17, 18, kJanuary2017));
    m_clock.utc = TestClock::stamp(2017, 1, 2);
    m_record.manual = {18, 19, kJuly2017, 57700};
    UpdateCentralLeapSecondsFromDB();
    EXPECT_EQ(m_record.take(), (Events{"save auto 18 18 57754 57662", "save manual 18 19 57935 57700"}));
    EXPECT_EQ(inForce(), Values(18, 19, kJuly2017));
    EXPECT_EQ(central(), std::tuple(18, 19, 1955, 7));
    EXPECT_EQ(m_tree.value("LeapSeconds/Automatic", "Current"), 18.0);
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
    CGPSLeapSeconds::ShutDown(false);
    InitCentralLeapSeconds();
    CGPSLeapSeconds::ShutDown(true);
    EXPECT_TRUE(m_record.take().empty()) << "nor at the end";
}

TEST_F(LeapSeconds, ShuttingDownSavesWhenToldAndThenNothingIsTaken) {
    for (const bool persist : {true, false}) {
        InitCentralLeapSeconds();
        m_record.take();
        CGPSLeapSeconds::ShutDown(persist);
        EXPECT_EQ(m_record.take().size(), persist ? 2U : 0U);
        EXPECT_TRUE(m_tree.snapshot().empty());
        EXPECT_FALSE(SetAutomaticGPSLeapSeconds(&m_record, 18, 19, kJuly2017, 0) ||
                     SetManualGPSLeapSeconds(&m_record, 18, 19, kJuly2017));
        UpdateCentralLeapSecondsFromDB();
        EXPECT_TRUE(m_record.take().empty());
    }
}

TEST_F(LeapSeconds, TheCentralStoreFillsInForASetWithoutLs) {
    m_record.automatic = {-1, 18, kJanuary2017, 57662};
    InitCentralLeapSeconds();
    EXPECT_FALSE(CGPSLeapSeconds::getInstance().Validate());
    EXPECT_EQ(GetGPSLeapSeconds(SMjdTime(58000.0)), 0);
    BSS::TIM::GpsC::setGpsLeapSecondsData(18, 19, 1955, 7, 1);
    BSS::TIM::GpsC::setGpsLeapSecondsData(1, 2, 1930, 1, 3);  // automatic against manual
    BSS::TIM::GpsC::setGpsLeapSecondsData(1, 2, 1930, 1, 2);  // of no kind
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
    const auto set = [&table = CGPSLeapSeconds::getInstance()](int ls) {
        return table.SetManualGPSLeapSeconds(nullptr, ls, ls + 1, 57000 + 50 * ls, 1);
    };
    ASSERT_TRUE(set(20));
    const std::jthread writer([&](const std::stop_token& stop) {
        for (int i = 0; !stop.stop_requested(); ++i) set(20 + i % 2 * 20);
    });
    for (int others = 0; others < 2000;) {  // so that the two overlap
        const auto [ls, lsf, lsfMjd] = inForce();
        const int at = GetGPSLeapSeconds(SMjdTime(58500.0));  // after one change, before the other
        ASSERT_TRUE(lsf == ls + 1 && lsfMjd == 57000 + 50 * ls && (at == 21 || at == 40)) << ls << ' ' << at;
        if (ls == 40) ++others;
    }
}

TEST(LeapSecondPlausibility, Table) {
    constexpr int kMin = std::numeric_limits<std::int32_t>::min(), kMax = std::numeric_limits<std::int32_t>::max();
    const SGPSLeapSeconds usual(17, 18, kJanuary2017, 57760);
    const SGPSLeapSeconds before(16, 17, 57204, 57700);  // the change of July 2015
    const std::tuple<const char*, SGPSLeapSeconds, int, int, int, int, bool, bool> rows[] = {
        {"repeated announcement, whatever the LS", usual, 5, 18, kJanuary2017, 57764, false, true},
        {"no day", usual, 18, 19, 0, 57764, true, false},
        {"two seconds at once", usual, 17, 19, kJuly2017, 57764, true, false},
        {"extremes that agree", {kMin, kMin, kMin, kMax}, kMax, kMax, kMax, 57764, false, false},
        {"not one away from the stored LSF", usual, 20, 20, kJuly2017, 57764, false, false},
        {"not one away, bypassed", usual, 30, 31, 60000, 57764, true, true},
        {"earlier event", usual, 18, 19, 57723, 57764, false, false},
        {"183 days ahead", before, 17, 18, kJuly2017, 57752, false, true},
        {"184 days ahead", before, 17, 18, kJuly2017, 57751, false, false},
        {"in the middle of a month", usual, 18, 19, kJuly2017 - 16, 57764, false, false},
        {"on the day of the event before", usual, 18, 19, kJuly2017, 57754, false, false},
        {"on the day after it", usual, 18, 19, kJuly2017, 57755, false, true},
        {"stored set 91 days old", usual, 30, 31, 60000, 57851, false, false},
        {"stored set 92 days old", usual, 30, 31, 60000, 57852, false, true}};
    for (const auto& [what, old, ls, lsf, lsfMjd, today, bypass, want] : rows) {
        const SMjdTime now = SMjdTime::FromDayAndMilliseconds(today, 43200000.0);
        EXPECT_EQ(CGPSLeapSeconds::ValidateGPSLeapSeconds(old, {ls, lsf, lsfMjd, 0}, now, bypass), want) << what;
    }
}

class LeapSecondUpdate : public LeapSecondTest {
protected:
    LeapSecondUpdate() {
        InitCentralLeapSeconds();
        m_record.take();
    }
};

TEST_F(LeapSecondUpdate, ARepeatedAnnouncementOnlyConfirmsAndRejectedValuesChangeNothing) {
    EXPECT_TRUE(SetAutomaticGPSLeapSeconds(&m_record, 5, 18, kJanuary2017, 0));
    EXPECT_EQ(m_record.take(), Events{"save auto 17 18 57754 57681"});
    EXPECT_EQ(central(), std::tuple(0, 0, 0, 0)) << "nothing changed, nothing is handed on";
    EXPECT_EQ(m_tree.value("LeapSeconds/Automatic", "ConfirmedMjd"), 57681.0);

    const std::string text =
        "Automatic Leap Second (LS, LSF, LSF_MJD) change REJECTED from (17, 18, 57754) to (18, 19, 57800)";
    const std::uint32_t mask = CTraceUtil::SetEnabled(512);
    EXPECT_FALSE(SetAutomaticGPSLeapSeconds(&m_record, 18, 19, 57800, 0));
    CTraceUtil::SetEnabled(mask);
    EXPECT_THAT(m_record.take(),
                testing::UnorderedElementsAre("Trace 1 [512] " + text, "rejected 17 18 57754 0",
                                              "CGPSLeapSeconds::SetAutomaticGPSLeapSeconds 2 " + text));
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

    m_clock.utc = TestClock::stamp(2017, 1, 12);
    EXPECT_TRUE(SetAutomaticGPSLeapSeconds(&m_record, 30, 31, 50000, 3));
    EXPECT_EQ(m_record.take(), (Events{start + "(18, 18, 57754) to (30, 31, 50000)", "accepted 30 31 50000 0"}))
        << "bypass: not rolled, not saved";
    EXPECT_EQ(m_tree.value("LeapSeconds/Automatic", "ConfirmedMjd"), 57764.0);
}

TEST_F(LeapSecondUpdate, AManualEntryOverridesUntilItIsCleared) {
    const std::string start =
        "CGPSLeapSeconds::SetManualGPSLeapSeconds 2 Manual Leap Second (LS, LSF, LSF_MJD) change ACCEPTED from ";
    EXPECT_TRUE(SetManualGPSLeapSeconds(&m_record, 20, 21, kJuly2017));
    EXPECT_EQ(m_record.take(), (Events{start + "(0, 0, 0) to (20, 21, 57935)", "save manual 20 21 57935 57681",
                                       "accepted 20 21 57935 0"}));
    m_clock.utc = TestClock::stamp(2017, 1, 11);
    EXPECT_TRUE(SetAutomaticGPSLeapSeconds(nullptr, 17, 18, kJanuary2017, 0));
    EXPECT_EQ(inForce(), Values(20, 21, kJuly2017));
    m_record.take();

    EXPECT_TRUE(CGPSLeapSeconds::getInstance().SetManualGPSLeapSeconds(&m_record, 0, 0, 0, 1));
    EXPECT_EQ(m_record.take(),
              (Events{start + "(20, 21, 57935) to Automatic (18, 18, 57754)", "accepted 18 18 57754 0"}))
        << "flags 1: not saved";
    EXPECT_EQ(central(), std::tuple(18, 18, 1930, 1));
}

TEST_F(LeapSecondUpdate, WhatComesWhileSetsAreReadOrStoredOrFromAHandlerIsTheLast) {
    m_record.meanwhile = [] { SetManualGPSLeapSeconds(nullptr, 20, 21, kJuly2017); };
    UpdateCentralLeapSecondsFromDB();
    EXPECT_EQ(inForce(), Values(20, 21, kJuly2017));
    EXPECT_EQ(valuesOf(m_record.manual), Values(20, 21, kJuly2017));
    m_record.meanwhile = [] { SetManualGPSLeapSeconds(nullptr, 30, 31, kJuly2017); };
    SetManualGPSLeapSeconds(nullptr, 25, 25, kJuly2017);
    EXPECT_EQ(inForce(), Values(30, 31, kJuly2017));
    EXPECT_EQ(valuesOf(m_record.manual), Values(30, 31, kJuly2017)) << "not the one before, which was stored later";
    for (const bool plausible : {true, false}) {
        m_record.meanwhile = [=] { SetManualGPSLeapSeconds(nullptr, 40, plausible ? 40 : 41, kJuly2017); };
        EXPECT_EQ(SetAutomaticGPSLeapSeconds(&m_record, 50, plausible ? 51 : 0, 50000, 3), plausible);
        EXPECT_EQ(inForce(), Values(40, plausible ? 40 : 41, kJuly2017));
    }
}

TEST_F(LeapSecondUpdate, SimulationFillsInAndClearsTheManualSet) {
    EXPECT_TRUE(SetManualGPSLeapSeconds(nullptr, 20, 21, kJuly2017));
    m_record.take();
    EXPECT_TRUE(SetSimulationGPSLeapSeconds(&m_record, 30, 0, 0));
    EXPECT_EQ(inForce(), Values(30, 30, kJanuary2017));
    EXPECT_THAT(m_record.take(),
                testing::ElementsAre(testing::_, "accepted 30 30 57754 0", testing::_, "accepted 30 30 57754 0"))
        << "nothing saved";
}

}  // namespace
