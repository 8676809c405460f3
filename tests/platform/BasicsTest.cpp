#include "halvex/platform/kernix/Logging.h"

#include <gtest/gtest.h>

#include <ctime>
#include <vector>

#include "halvex/platform/kernix/PrnID.h"
#include "halvex/platform/kernix/TraceUtil.h"
#include "halvex/platform/mdb/LossOfLockDetector.h"
#include "halvex/platform/mdb/PrnIdZ9.h"
#include "halvex/platform/mjd/MjdTime.h"
#include "halvex/platform/os/Clock.h"
#include "tests/support/Bytes.h"
#include "tests/support/CapturedLog.h"

namespace {

using namespace halvex::test;
using Lines = std::vector<CapturedLog::Line>;

TEST(Logging, MessagesReachTheSinkOfTheScopeInOnePiece) {
    CapturedLog captured;
    ILogging& log = ILogging::getInstance();
    log.Log("A::b", 3, "buffer too small '{0}','{1}'", std::size_t{7}, 8);
    log.Log("A::b", 2, "file {}, version {}", std::string("x{}y"), -1);
    log.Log("A::b", 1, "{} of {} at {:.1f}", "text", 2U, 0.25);
    log.Log("A::b", 1, "braces without arguments {}");
    log.Log("A::b", 1, "too few {} {} {", 1);
    EXPECT_EQ(captured.take(), (Lines{{"A::b", 3, "buffer too small '7','8'"},
                                      {"A::b", 2, "file x{}y, version -1"},
                                      {"A::b", 1, "text of 2 at 0.2"},
                                      {"A::b", 1, "braces without arguments {}"},
                                      {"A::b", 1, "too few {} {} {"}}));
}

TEST(Trace, OnlySwitchedOnCategoriesAreWritten) {
    CapturedLog captured;
    CTraceUtil::Trace(512, "off");
    const std::uint32_t before = CTraceUtil::SetEnabled(512);
    CTraceUtil::Trace(512, "on");
    CTraceUtil::Trace(256, "other");
    CTraceUtil::SetEnabled(before);
    EXPECT_EQ(captured.take(), (Lines{{"Trace", 1, "[512] on"}}));
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

TEST(SatelliteTable, MaximumNumbersAndLetters) {
    const struct {
        char letter;
        int code;
        unsigned char last;
    } rows[] = {{'G', 1, 32}, {'R', 2, 24}, {'E', 3, 36}, {'S', 4, 39}, {'C', 5, 63}, {'J', 6, 10}, {'I', 7, 14}};
    for (const auto& row : rows) {
        const halvex::SatelliteSystem* system = halvex::systemOfLetter(row.letter);
        ASSERT_NE(system, nullptr) << row.letter;
        EXPECT_EQ(system->code, row.code);
        EXPECT_EQ(system, halvex::systemOfTypeBit(static_cast<std::uint8_t>(1U << (row.code - 1))));
        EXPECT_FALSE(MDB::CPrnIdZ9(system->code, 0).isValid());
        EXPECT_TRUE(MDB::CPrnIdZ9(system->code, row.last).isValid());
        EXPECT_FALSE(MDB::CPrnIdZ9(system->code, static_cast<unsigned char>(row.last + 1)).isValid());
    }
    EXPECT_EQ(halvex::systemOfLetter('X'), nullptr);
}

TEST(LossOfLockDetector, ReportsALossOnceAndSeesCountsThatGoDown) {
    const MDB::CPrnIdZ9 satellite(CALN::eCALSATSYSTEM_GPS, 5);
    MDB::CLossOfLockDetector detector;
    detector.store(satellite, 0, false, 100);
    EXPECT_FALSE(detector.takeLoss(satellite, 0));
    detector.store(satellite, 0, true, 0);
    detector.store(satellite, 0, false, 5);
    EXPECT_TRUE(detector.takeLoss(satellite, 0));
    EXPECT_FALSE(detector.takeLoss(satellite, 0));
    detector.store(satellite, 0, false, 3);
    EXPECT_TRUE(detector.takeLoss(satellite, 0));
    EXPECT_FALSE(detector.takeLoss(satellite, 3));
}

}  // namespace
