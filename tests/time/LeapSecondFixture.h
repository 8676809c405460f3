#pragma once

#include <gtest/gtest.h>

#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "halvex/platform/bss/GpsC.h"
#include "halvex/platform/kernix/Monitor.h"
#include "halvex/time/GPSLeapSeconds.h"
#include "halvex/time/LeapSecondsPersist.h"
#include "tests/support/CapturedLog.h"
#include "tests/support/TestClock.h"

namespace halvex::test {

using Values = std::tuple<int, int, int>;  // LS, LSF, LSF_MJD

constexpr int kJanuary2017 = 57754;
constexpr int kJuly2017 = 57935;

inline Values valuesOf(const IGPSLeapSeconds::SGPSLeapSeconds& set) {
    return {set.leapSeconds, set.leapSecondsFuture, set.leapSecondsFutureMjd};
}

/// Handler, persistence and log in one, so that the order of what happens shows. Looks the leap seconds up whenever it
/// is called: with a lock held that would not return.
class Recorder : public ILeapSecondsMsgHnd, public CLeapSecondsPersistBase, public ILogging::Sink {
public:
    Recorder() : m_log(*this) { CLeapSecondsPersist::InitInstance(this); }
    ~Recorder() override { CLeapSecondsPersist::InitInstance(nullptr); }

    IGPSLeapSeconds::SGPSLeapSeconds automatic{17, 18, kJanuary2017, 57662};
    IGPSLeapSeconds::SGPSLeapSeconds manual;
    bool loads = true;

    std::vector<std::string> take() { return std::exchange(m_events, {}); }

    void OnLeapSecondsAccepted(const int& ls, const int& lsf, const int& lsfMjd) override {
        add("accepted", {ls, lsf, lsfMjd, 0});
    }
    void OnLeapSecondsRejected(const int& ls, const int& lsf, const int& lsfMjd) override {
        add("rejected", {ls, lsf, lsfMjd, 0});
    }
    bool SaveManual(const IGPSLeapSeconds::SGPSLeapSeconds& set) override {
        add("save manual", set);
        manual = set;
        return false;  // nobody minds
    }
    bool SaveAuto(const IGPSLeapSeconds::SGPSLeapSeconds& set) override {
        add("save auto", set);
        automatic = set;
        return false;
    }
    bool LoadManual(IGPSLeapSeconds::SGPSLeapSeconds& set) override {
        set = manual;
        return loads;
    }
    bool LoadAuto(IGPSLeapSeconds::SGPSLeapSeconds& set) override {
        set = automatic;
        return loads;
    }
    void write(std::string_view source, int level, std::string_view message) override {
        m_events.push_back(std::string(source) + " " + std::to_string(level) + " " + std::string(message));
    }

private:
    void add(const std::string& what, const IGPSLeapSeconds::SGPSLeapSeconds& set) {
        int ls = 0;
        int lsf = 0;
        int lsfMjd = 0;
        GetGPSLeapSeconds(SMjdTime(57000.0), ls, lsf, lsfMjd);
        m_events.push_back(what + " " + std::to_string(set.leapSeconds) + " " + std::to_string(set.leapSecondsFuture) +
                           " " + std::to_string(set.leapSecondsFutureMjd) + " " + std::to_string(set.confirmMjd));
    }
    std::vector<std::string> m_events;
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
        int ls = -1;
        int lsf = -1;
        int lsfMjd = -1;
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

}  // namespace halvex::test
