#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <clocale>
#include <cmath>
#include <ctime>
#include <future>
#include <optional>
#include <thread>

#include "halvex/platform/kernix/Logging.h"
#include "halvex/platform/kernix/Monitor.h"
#include "halvex/platform/kernix/PrnID.h"
#include "halvex/platform/kernix/SyncGuard.h"
#include "halvex/platform/mjd/MjdTime.h"
#include "halvex/platform/os/DateFormat.h"
#include "halvex/platform/os/Published.h"
#include "tests/support/Bytes.h"
#include "tests/support/CapturedLog.h"
#include "tests/support/Environment.h"
#include "tests/support/TestClock.h"

namespace {

using namespace halvex::test;

TEST(Logging, MessagesReachTheSinkOfTheScopeInOnePiece) {
    CapturedLog captured;
    ILogging& log = ILogging::getInstance();
    log.Log("A::b", 3, "buffer too small '{0}','{1}'", std::size_t{7}, 8);
    log.Log("A::b", 2, "file {}, at {:.1f}", std::string("x{}y"), 0.25);
    log.Log("A::b", 1, "too few {} {} {", 1);
    EXPECT_EQ(captured.take(), (std::vector<std::string>{"3 A::b: buffer too small '7','8'",
                                                         "2 A::b: file x{}y, at 0.2", "1 A::b: too few {} {} {"}));
}

TEST(Clock, ShowsTheTimeOfTheSystem) {
    const SYSTEMTIME utc = os::GetSystemTime();
    const SMjdTime shown(utc.wYear, utc.wMonth, utc.wDay, utc.wHour, utc.wMinute, utc.wSecond);
    const SMjdTime want(40587.0 + static_cast<double>(std::time(nullptr)) / 86400.0);
    EXPECT_NEAR(shown.GetDifferenceInSeconds(want), 0.0, 5.0);
}

TEST(PrnID, TakesOnlyKnownSatellitesButLoadsAny) {
    CPrnID id(1, CPrnID::PRN_GPS);
    EXPECT_FALSE(id.setPrn(0));
    EXPECT_FALSE(id.setPrnType(static_cast<CPrnID::PrnType>(3)));
    EXPECT_FALSE(id.setPrnType(static_cast<CPrnID::PrnType>(0x80)));
    EXPECT_TRUE(id.setPrn(9) && id.setPrnType(CPrnID::PRN_BEIDOU));
    expectSavedForm(id, CPrnID(), hex("09 10"));
    const unsigned char strange[] = {200, 0x83};
    ASSERT_TRUE(id.loadData(strange, 2));
    EXPECT_FALSE(id.IsValid());
    EXPECT_EQ(saved(id), hex("c8 83"));
}

TEST(DateFormat, PatternsInTheCLocale) {
    const ScopedVariable zone("TZ", "Pacific/Kiritimati");
    const ScopedVariable language("LC_ALL", "de_DE.UTF-8");
    std::setlocale(LC_ALL, "");
    const SYSTEMTIME stamp = TestClock::stamp(2016, 12, 31, 23, 5, 9, 999);
    const std::pair<const char*, const char*> rows[] = {
        {"%Y-%m-%d %H:%M:%S", "2016-12-31 23:05:09"},
        {"%A %a %B %b %j %p %I", "Saturday Sat December Dec 366 PM 11"},
        {"%x %X %c", "12/31/16 23:05:09 Sat Dec 31 23:05:09 2016"},
        {"%Ey%Od [%Z%z] %%Y 100%", "1631 [] %Y 100%"},
        {"%s %q %_d %999999999d %#d %n %E", "%s %q %_d %999999999d %#d \n %E"},
        {nullptr, ""}};
    for (const auto& [pattern, want] : rows) EXPECT_EQ(os::formatDate(pattern, stamp), want) << want;
    std::setlocale(LC_ALL, "C");
}

TEST(VariantDate, KnownDaysInBothDirectionsAndImpossibleOnes) {
    const std::pair<SYSTEMTIME, std::optional<double>> rows[] = {
        {TestClock::stamp(1899, 12, 29, 6), -1.25},      {TestClock::stamp(100, 1, 1), -657434.0},
        {TestClock::stamp(9999, 12, 31, 12), 2958465.5}, {TestClock::stamp(99, 12, 31), std::nullopt},
        {TestClock::stamp(10000, 1, 1), std::nullopt},   {TestClock::stamp(2017, 2, 29), std::nullopt}};
    for (const auto& [stamp, date] : rows) {
        EXPECT_EQ(os::toVariantDate(stamp), date);
        if (!date) continue;
        EXPECT_EQ(os::toVariantDate(os::fromVariantDate(*date).value()), date);
    }
    EXPECT_EQ(os::fromVariantDate(29226.0)->wDayOfWeek, 0);
    EXPECT_EQ(os::fromVariantDate(0.99999999999)->wDay, 31) << "rounds into the next day";
    for (const double date : {std::nan(""), 1e300, -657435.0, 2958466.0, 2958465.9999999999}) {
        EXPECT_EQ(os::fromVariantDate(date), std::nullopt) << date;
    }
}

class Monitor : public testing::Test {
protected:
    CMonitorTree tree;
    ScopedMonitorTree installed{tree};
};

TEST_F(Monitor, ElementsAreInTheTreeForTheirLifeAndATakenPathGetsANumber) {
    {
        CMonitorElementContainer first("Queue/Raw");
        std::optional<CMonitorElementContainer> second(std::in_place, "Queue/Raw");
        EXPECT_EQ(CMonitorElementContainer("Queue/Raw").path(), "Queue/Raw#3");
        second.reset();
        EXPECT_EQ(CMonitorElementContainer("Queue/Raw").path(), "Queue/Raw#2");
        CMonitorElement(first, "Gone").Set(1.0);
        EXPECT_TRUE(tree.snapshot().empty());
    }
    EXPECT_EQ(tree.openMetrics(), "# EOF\n");
}

TEST_F(Monitor, OpenMetricsText) {
    const CommaLocale comma;
    CMonitorElementContainer container("a\"b\\c\nd");
    CMonitorElement number(container, "Number");
    CMonitorElement infinite(container, "Infinite");
    CMonitorTimer timer(container, "Timer");
    number.Set(1234567.25);
    infinite.Set(-std::numeric_limits<double>::infinity());
    const std::string labels = "{container=\"a\\\"b\\\\c\\nd\",element=";
    EXPECT_EQ(tree.openMetrics(),
              "# TYPE halvex_value gauge\n# HELP halvex_value Value of a monitoring element.\nhalvex_value" + labels +
                  "\"Number\"} 1234567.25\nhalvex_value" + labels +
                  "\"Infinite\"} -Inf\n# TYPE halvex_run_seconds summary\n# UNIT halvex_run_seconds seconds\n"
                  "# HELP halvex_run_seconds How often a timed step ran and how long it took in all.\n"
                  "halvex_run_seconds_count" +
                  labels + "\"Timer\"} 0\nhalvex_run_seconds_sum" + labels + "\"Timer\"} 0\n# EOF\n");
}

/// Whether another thread could lock now, in the given mode; it unlocks again.
bool othersMay(ISyncGuard& guard, bool write) {
    return std::async(std::launch::async,
                      [&] {
                          const bool locked = write ? guard.TryLockWrite() : guard.TryLockRead();
                          if (locked) write ? guard.UnlockWrite() : guard.UnlockRead();
                          return locked;
                      })
        .get();
}

TEST(SyncGuard, RecursionAndAWaitingWriter) {
    CCriticalSectionSyncGuard section;
    const CReadWriteLock outer(section, false);
    ASSERT_TRUE(section.TryLockWrite()) << "recursive in either mode";
    section.UnlockWrite();
    EXPECT_FALSE(othersMay(section, false)) << "still inside";

    CReaderWriterSyncGuard guard;
    guard.LockRead();
    EXPECT_TRUE(othersMay(guard, false) && !othersMay(guard, true));
    std::atomic<bool> inside{false};
    std::thread writer([&] {
        const CReadWriteLock lock(guard, true);
        inside = true;
    });
    while (othersMay(guard, false) && !inside) std::this_thread::yield();  // until the writer waits
    EXPECT_FALSE(inside) << "a reader keeps it out";
    guard.UnlockRead();
    writer.join();
    EXPECT_TRUE(othersMay(guard, true)) << "no new reader has overtaken it";
}

TEST(Published, NoReaderSeesPartsOfTwoPublications) {
    constexpr std::int32_t kLast = 2000000;
    os::Published<8> published;
    const std::jthread writer([&] {
        for (std::int32_t i = 1; i <= kLast; ++i) published.publish({i, i, i, i, i, i, i, i});
    });
    int torn = 0;
    std::int32_t newest = 0;
    while (newest != kLast) {  // so that the two overlap, whoever starts first
        const auto values = published.read();
        newest = values[0];
        if (std::ranges::count(values, newest) != 8) ++torn;
    }
    EXPECT_EQ(torn, 0);
}

}  // namespace
