#include "halvex/platform/bss/GpsC.h"

#include <gtest/gtest.h>

#include <tuple>

using BSS::TIM::GpsC;
using BSS::TIM::UtcLeapSecond;

namespace {

TEST(CentralLeapSeconds, KindDecidesWhoIsHeard) {
    using Announcement = std::tuple<std::int16_t, std::int16_t, int, int, int>;  // LS, LSF, week, day, kind
    const std::tuple<const char*, Announcement, int, bool> steps[] = {
        {"nothing but zeros", {0, 0, 0, 1, 1}, -7, false},
        {"unknown kind", {17, 18, 1930, 1, 2}, -7, false},
        {"automatic", {17, 18, 1930, 1, 3}, 17, true},
        {"manual over automatic, no announcement", {19, 19, 0, 0, 1}, 19, false},
        {"automatic against manual", {17, 18, 1930, 1, 3}, 19, false},
        {"manual again, day out of range", {20, 20, 1930, 8, 1}, 20, false},
        {"reset", {0, 0, 0, 1, 1}, -7, false},
        {"automatic after the reset", {17, 18, 1930, 7, 3}, 17, true},
        {"automatic zeros empty it", {0, 0, 0, 1, 3}, -7, false}};
    for (const auto& [what, announcement, wantLs, wantFuture] : steps) {
        std::apply(GpsC::setGpsLeapSecondsData, announcement);
        UtcLeapSecond result{.leapSeconds = -7};
        EXPECT_EQ(GpsC::getUtcLeapSecond(result), wantLs == -7 ? -1 : 0) << what;
        EXPECT_EQ(result.leapSeconds, wantLs) << what;
        EXPECT_EQ(result.futureValid, wantFuture) << what;
    }
}

}  // namespace
