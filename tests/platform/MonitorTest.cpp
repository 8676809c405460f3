#include "halvex/platform/kernix/Monitor.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <optional>
#include <thread>

#include "tests/support/Environment.h"

namespace {

using namespace halvex::test;

TEST(Monitor, ElementsAreInTheTreeForTheirLife) {
    CMonitorTree tree;
    const ScopedMonitorTree installed(tree);
    {
        CMonitorElementContainer container("LeapSeconds/Automatic");
        CMonitorElement current(container, "Current");
        current.Set(17);
        current.Increment(0.5);
        EXPECT_EQ(tree.value("LeapSeconds/Automatic", "Current"), 17.5);
        EXPECT_EQ(tree.value("LeapSeconds", "Current"), std::nullopt);
    }
    EXPECT_TRUE(tree.snapshot().empty());
    EXPECT_EQ(tree.openMetrics(), "# EOF\n");
}

TEST(Monitor, ATakenPathGetsANumber) {
    CMonitorTree tree;
    const ScopedMonitorTree installed(tree);
    const CMonitorElementContainer first("Queue/Raw");
    std::optional<CMonitorElementContainer> second(std::in_place, "Queue/Raw");
    const CMonitorElementContainer third("Queue/Raw");
    EXPECT_EQ(third.path(), "Queue/Raw#3");
    second.reset();
    EXPECT_EQ(CMonitorElementContainer("Queue/Raw").path(), "Queue/Raw#2");
}

TEST(Monitor, ContainersMayOutliveTheirTree) {
    auto tree = std::make_unique<CMonitorTree>();
    auto installed = std::make_unique<ScopedMonitorTree>(*tree);
    CMonitorElementContainer container("Orphan");
    installed.reset();
    tree.reset();
    CMonitorElement element(container, "Late");
    EXPECT_EQ(CMonitorTree::getInstance().value("Orphan", "Late"), std::nullopt);
}

TEST(Monitor, OpenMetricsText) {
    CMonitorTree tree;
    const ScopedMonitorTree installed(tree);
    const CommaLocale comma;
    CMonitorElementContainer container("a\"b\\c\nd");
    CMonitorElement number(container, "Number");
    CMonitorElement infinite(container, "Infinite");
    CMonitorElement none(container, "None");
    CMonitorTimer timer(container, "Timer");
    number.Set(1234567.25);
    infinite.Set(-std::numeric_limits<double>::infinity());
    none.Set(std::nan(""));
    EXPECT_EQ(tree.openMetrics(),
              "# TYPE halvex_value gauge\n"
              "# HELP halvex_value Value of a monitoring element.\n"
              "halvex_value{container=\"a\\\"b\\\\c\\nd\",element=\"Number\"} 1234567.25\n"
              "halvex_value{container=\"a\\\"b\\\\c\\nd\",element=\"Infinite\"} -Inf\n"
              "halvex_value{container=\"a\\\"b\\\\c\\nd\",element=\"None\"} NaN\n"
              "# TYPE halvex_run_seconds summary\n"
              "# UNIT halvex_run_seconds seconds\n"
              "# HELP halvex_run_seconds How often a timed step ran and how long it took in all.\n"
              "halvex_run_seconds_count{container=\"a\\\"b\\\\c\\nd\",element=\"Timer\"} 0\n"
              "halvex_run_seconds_sum{container=\"a\\\"b\\\\c\\nd\",element=\"Timer\"} 0\n"
              "# EOF\n");
}

TEST(Monitor, SnapshotsWhileOthersComeAndGo) {
    CMonitorTree tree;
    const ScopedMonitorTree installed(tree);
    CMonitorElementContainer shared("Shared");
    CMonitorElement sum(shared, "Sum");
    const auto work = [&sum] {
        for (int i = 0; i < 500; ++i) {
            CMonitorElementContainer container("Queue/Raw");
            CMonitorElement in(container, "In");
            in.Increment();
            sum.Increment();
        }
    };
    std::thread first(work);
    std::thread second(work);
    for (int i = 0; i < 200; ++i) {
        for (const CMonitorTree::Entry& entry : tree.snapshot()) EXPECT_GE(entry.value, 0.0);
    }
    first.join();
    second.join();
    EXPECT_EQ(sum.value(), 1000.0);
    EXPECT_EQ(tree.snapshot().size(), 1U);
}

}  // namespace
