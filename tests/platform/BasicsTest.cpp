#include "halvex/platform/kernix/Logging.h"

#include <gtest/gtest.h>

#include <ctime>
#include <tuple>
#include <vector>

#include "halvex/platform/kernix/PrnID.h"
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
    log.Log("A::b", 2, "file {}, at {:.1f}", std::string("x{}y"), 0.25);
    log.Log("A::b", 1, "too few {} {} {", 1);
    EXPECT_EQ(captured.take(), (Lines{{"A::b", 3, "buffer too small '7','8'"},
                                      {"A::b", 2, "file x{}y, at 0.2"},
                                      {"A::b", 1, "too few {} {} {"}}));
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
    const std::tuple<char, int, unsigned char> rows[] = {{'G', 1, 32}, {'R', 2, 24}, {'E', 3, 36}, {'S', 4, 39},
                                                         {'C', 5, 63}, {'J', 6, 10}, {'I', 7, 14}};
    for (const auto& [letter, code, last] : rows) {
        const halvex::SatelliteSystem* system = halvex::systemOfLetter(letter);
        ASSERT_EQ(system, halvex::systemOfTypeBit(static_cast<std::uint8_t>(1U << (code - 1)))) << letter;
        EXPECT_EQ(system->code, code);
        EXPECT_FALSE(MDB::CPrnIdZ9(system->code, 0).isValid());
        EXPECT_TRUE(MDB::CPrnIdZ9(system->code, last).isValid());
        EXPECT_FALSE(MDB::CPrnIdZ9(system->code, static_cast<unsigned char>(last + 1)).isValid());
    }
    EXPECT_EQ(halvex::systemOfLetter('X'), nullptr);
}

}  // namespace
