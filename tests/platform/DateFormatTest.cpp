#include "halvex/platform/os/DateFormat.h"

#include <gtest/gtest.h>

#include <clocale>
#include <cmath>
#include <optional>

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

TEST(VariantDate, KnownDaysInBothDirectionsAndImpossibleOnes) {
    const std::pair<SYSTEMTIME, std::optional<double>> rows[] = {
        {TestClock::stamp(1899, 12, 29, 6), -1.25},       {TestClock::stamp(100, 1, 1), -657434.0},
        {TestClock::stamp(9999, 12, 31, 12), 2958465.5},  {TestClock::stamp(99, 12, 31), std::nullopt},
        {TestClock::stamp(10000, 1, 1), std::nullopt},    {TestClock::stamp(2017, 2, 29), std::nullopt},
        {TestClock::stamp(2017, 1, 1, 24), std::nullopt}, {TestClock::stamp(2017, 1, 1, 0, 0, 60), std::nullopt}};
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

}  // namespace
