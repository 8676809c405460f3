#include "halvex/platform/os/DateFormat.h"

#include <gtest/gtest.h>

#include <clocale>
#include <cmath>

#include "tests/support/Environment.h"
#include "tests/support/TestClock.h"

namespace {

using namespace halvex::test;

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

TEST(DateFormat, ImpossibleFieldsAreHarmless) {
    const SYSTEMTIME worst{65535, 65535, 65535, 65535, 65535, 65535, 65535, 65535};
    for (const SYSTEMTIME& stamp : {worst, SYSTEMTIME{}}) {
        EXPECT_FALSE(os::formatDate("%A %B %j %U %V %G %c %D %F %p", stamp).empty());
        EXPECT_FALSE(os::formatRegionalDate(stamp).empty());
        EXPECT_FALSE(os::formatRegionalTime(stamp).empty());
    }
}

TEST(VariantDate, KnownDaysInBothDirections) {
    const std::pair<SYSTEMTIME, double> rows[] = {{TestClock::stamp(1899, 12, 29, 6), -1.25},
                                                  {TestClock::stamp(100, 1, 1), -657434.0},
                                                  {TestClock::stamp(9999, 12, 31, 12), 2958465.5}};
    for (const auto& [stamp, want] : rows) {
        EXPECT_EQ(os::toVariantDate(stamp), want);
        EXPECT_EQ(os::toVariantDate(os::fromVariantDate(want).value()), want);
    }
    EXPECT_EQ(os::fromVariantDate(29226.0)->wDayOfWeek, 0);
    EXPECT_EQ(os::fromVariantDate(0.99999999999)->wDay, 31) << "rounds into the next day";
}

TEST(VariantDate, ImpossibleOnesAreRefused) {
    const SYSTEMTIME stamps[] = {TestClock::stamp(99, 12, 31),     TestClock::stamp(10000, 1, 1),
                                 TestClock::stamp(2017, 2, 29),    TestClock::stamp(2017, 0, 1),
                                 TestClock::stamp(2017, 1, 1, 24), TestClock::stamp(2017, 1, 1, 0, 0, 60)};
    for (const SYSTEMTIME& stamp : stamps) EXPECT_EQ(os::toVariantDate(stamp), std::nullopt);
    for (const double date : {std::nan(""), 1e300, -657435.0, 2958466.0, 2958465.9999999999}) {
        EXPECT_EQ(os::fromVariantDate(date), std::nullopt) << date;
    }
}

}  // namespace
