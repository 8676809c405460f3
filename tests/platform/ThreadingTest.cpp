#include <gmock/gmock.h>

#include <array>
#include <thread>

#include "halvex/platform/kernix/ActiveObject.h"
#include "halvex/platform/kernix/DualPriorityQueue.h"
#include "halvex/platform/kernix/MonitorExport.h"
#include "halvex/platform/kernix/Watchdog.h"
#include "halvex/platform/os/Event.h"
#include "halvex/platform/os/Thread.h"
#include "tests/support/CapturedLog.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/TestClock.h"

using namespace halvex::test;
using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

TEST(Event, WhoIsToldAndInWhichOrder) {
    os::Event stays(os::Event::Reset::manual), goes(os::Event::Reset::automatic);
    const std::array<os::Event*, 2> both{&stays, &goes};
    EXPECT_EQ(os::waitAny(both, 0ms), std::nullopt);
    for (int i = 0; i < 2; ++i) goes.Set();
    EXPECT_EQ(os::waitAny(both), 1U);
    EXPECT_EQ(os::waitAny(both, 1ms), std::nullopt) << "announced twice is announced once";
    goes.Set();
    stays.Set();
    for (int i = 0; i < 2; ++i) EXPECT_EQ(os::waitAny(both), 0U) << "the first in their order";
    stays.Clear();
    EXPECT_EQ(os::waitAny(both), 1U);
}

TEST(Event, AnAutomaticOneLetsOneWaiterGoOnAndNoneIsMissed) {
    os::Event gate(os::Event::Reset::automatic), progress(os::Event::Reset::automatic);
    os::Event stop(os::Event::Reset::manual);
    int passed = 0;  // handed to and fro by the events alone
    std::vector<std::jthread> waiters;
    for (int i = 0; i < 3; ++i) {
        waiters.emplace_back([&] {
            const std::array<os::Event*, 2> events{&stop, &gate};
            while (os::waitAny(events) == 1) {
                ++passed;
                progress.Set();
            }
        });
    }
    const std::array<os::Event*, 1> events{&progress};
    for (int i = 1; i <= 20000; ++i) {
        gate.Set();
        ASSERT_EQ(os::waitAny(events), 0U);
        ASSERT_EQ(passed, i);
    }
    stop.Set();
}

TEST(ActiveObject, StartsOnceStopsAndStartsAgain) {
    struct Work {
        std::atomic<int> runs{0};
        CActiveObject thread{"Work", &Work::run, this, 1000};
        static std::uint32_t run(void* self) {
            auto& work = *static_cast<Work*>(self);
            CActiveObject::SetThreadName(os::currentThreadId(), "a name that is too long");
            const CWatchdogClient watchdog("Work", 50);
            const std::array<os::Event*, 1> events{&work.thread.GetStopHandle()};
            ++work.runs;
            static_cast<void>(os::waitAny(events));
            return 0;
        }
    } work;
    EXPECT_TRUE(work.thread.StopThread()) << "nothing to stop";
    for (int i = 1; i <= 2; ++i) {
        for (int start = 0; start < 2; ++start) EXPECT_TRUE(work.thread.StartThread("file.cpp", 1, "runs already"));
        EXPECT_TRUE(work.thread.StopThread());
        EXPECT_EQ(work.runs, i);
    }
    EXPECT_THAT(CWatchdogClient::GetThreads(), IsEmpty());
}

TEST(Watchdog, TellsWhoHasGoneSilent) {
    TestClock clock;
    CWatchdogClient supervised("Decoder", 1000);
    CWatchdogClient sleeper("Writer", 0);
    const auto overdue = [] {
        std::string names;
        for (const auto& thread : CWatchdogClient::GetThreads()) names += thread.overdue() ? thread.info : "";
        return names;
    };
    clock.ticks += 1000;
    EXPECT_EQ(overdue(), "");
    clock.ticks += 1;
    EXPECT_EQ(overdue(), "Decoder");
    supervised.NotifyWatchdog();
    EXPECT_EQ(overdue(), "");
    EXPECT_EQ(CWatchdogClient::GetThreads().at(1).silence, 1001U);
    sleeper.NotifyWatchdogThisThreadClosing();
    EXPECT_EQ(CWatchdogClient::GetThreads().size(), 1U);
}

TEST(DualPriorityQueue, HighBeforeLowEachInItsOrderUpToTheBound) {
    using Queue = CDualPriorityQueue<std::string>;
    Queue queue("Test", 2);
    for (const char* text : {"low 1", "low 2", "low 3"}) EXPECT_TRUE(queue.Push(text, Queue::Level::low));
    EXPECT_FALSE(queue.Push("one too many", Queue::Level::low)) << "more than the bound wait already";
    std::string text;
    std::vector<std::string> order;
    for (const char* high : {"high 1", "high 2"}) EXPECT_TRUE(queue.Push(high, Queue::Level::high)) << "its own level";
    while (queue.Pop(text)) order.push_back(text);
    EXPECT_THAT(order, ElementsAre("high 1", "high 2", "low 1", "low 2", "low 3"));
    EXPECT_TRUE(queue.Push("low 4", Queue::Level::low)) << "room again";
}

TEST(MonitorExport, AFailureIsLoggedOnce) {
    const TemporaryFolder folder;
    CapturedLog log;
    { const CMonitorExport exporter(folder.path("none/metrics"), 1ms); }
    EXPECT_THAT(log.take(), ElementsAre(HasSubstr("none/metrics' cannot be written: ")));
}
