#include "halvex/platform/bss/GpsC.h"

#include <gtest/gtest.h>

using BSS::TIM::GpsC;
using BSS::TIM::UtcLeapSecond;

namespace {

TEST(CentralLeapSeconds, KindDecidesWhoIsHeard) {
    struct Step {
        const char* what;
        std::int16_t ls, lsf;
        int week, day, kind;
        int wantResult, wantLs;
        bool wantFuture;
    };
    const Step steps[] = {
        {"nothing but zeros", 0, 0, 0, 1, 1, -1, 0, false},
        {"unknown kind", 17, 18, 1930, 1, 2, -1, 0, false},
        {"automatic", 17, 18, 1930, 1, 3, 0, 17, true},
        {"manual over automatic, no announcement", 19, 19, 0, 0, 1, 0, 19, false},
        {"automatic against manual", 17, 18, 1930, 1, 3, 0, 19, false},
        {"manual again, day out of range", 20, 20, 1930, 8, 1, 0, 20, false},
        {"reset", 0, 0, 0, 1, 1, -1, 0, false},
        {"automatic after the reset", 17, 18, 1930, 7, 3, 0, 17, true},
        {"automatic zeros empty it", 0, 0, 0, 1, 3, -1, 0, false},
    };
    for (const Step& step : steps) {
        GpsC::setGpsLeapSecondsData(step.ls, step.lsf, step.week, step.day, step.kind);
        UtcLeapSecond result{.leapSeconds = -7};
        ASSERT_EQ(GpsC::getUtcLeapSecond(result), step.wantResult) << step.what;
        EXPECT_EQ(result.leapSeconds, step.wantResult == 0 ? step.wantLs : -7) << step.what;
        EXPECT_EQ(result.futureValid, step.wantFuture) << step.what;
    }
}

}  // namespace
