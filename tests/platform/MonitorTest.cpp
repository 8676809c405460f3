#include "halvex/platform/kernix/Monitor.h"

#include <gtest/gtest.h>

#include <limits>
#include <optional>
#include <thread>

#include "tests/support/Environment.h"

namespace {

using namespace halvex::test;

TEST(Monitor, ElementsAreInTheTreeForTheirLifeAndATakenPathGetsANumber) {
    CMonitorTree tree;
    const ScopedMonitorTree installed(tree);
    {
        CMonitorElementContainer first("Queue/Raw");
        std::optional<CMonitorElementContainer> second(std::in_place, "Queue/Raw");
        EXPECT_EQ(CMonitorElementContainer("Queue/Raw").path(), "Queue/Raw#3");
        second.reset();
        EXPECT_EQ(CMonitorElementContainer("Queue/Raw").path(), "Queue/Raw#2");
        CMonitorElement(first, "Gone").Set(1.0);
        CMonitorElement size(first, "Size");
        size.Increment(0.5);
        EXPECT_EQ(tree.value("Queue/Raw", "Size"), 0.5);
        EXPECT_EQ(tree.snapshot().size(), 1U);
    }
    EXPECT_EQ(tree.openMetrics(), "# EOF\n");
}

TEST(Monitor, OpenMetricsText) {
    CMonitorTree tree;
    const ScopedMonitorTree installed(tree);
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

TEST(Monitor, SnapshotsWhileOthersComeAndGo) {
    CMonitorTree tree;
    const ScopedMonitorTree installed(tree);
    CMonitorElementContainer shared("Shared");
    CMonitorElement sum(shared, "Sum");
    const auto work = [&sum] {
        for (int i = 0; i < 500; ++i) {
            CMonitorElementContainer container("Queue/Raw");
            CMonitorElement(container, "In").Increment();
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
