#include <gtest/gtest.h>

#include "halvex/observations/ContLockCount.h"
#include "halvex/observations/HalvexObservation.h"
#include "tests/support/Bytes.h"

namespace {

using halvex::test::Bytes;
using halvex::test::hex;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

Bytes savedForm(const CHalvexObservation& observation) {
    Bytes bytes(observation.getSize());
    std::size_t offset = 0;
    EXPECT_TRUE(observation.SaveData(bytes.data(), bytes.size(), offset));
    EXPECT_EQ(offset, bytes.size());
    return bytes;
}

/// Every value set on every slot, but for Costas, which only bytes can bring.
CHalvexObservation fullObservation() {
    CHalvexObservation full(CPrnID(7, CPrnID::PRN_GLONASS));
    full.setIssueOfData(0x5A);
    full.setElevationMask(1.0);
    full.setAzimuth(2.0);
    for (unsigned slot = 0; slot < 3; ++slot) {
        full.setPhase(slot, 1.0, true);
        full.setPseudorangeC(slot, 2.0);
        full.setPseudorangeP(slot, -2.0);
        full.setDoppler(slot, 1.0F);
        full.setPhaseError(slot, 0x0102);
        full.setPseudorangeError(slot, 0x0304);
        full.setMultipathError(slot, 0x05);
        full.setCNO(slot, 2.0F);
        full.setContLockCount(slot, 0x0607);
    }
    return full;
}

TEST(Observation, SavedFormIsPinned) {
    const std::string slot =
        "00c06701 000000000000f03f 0000000000000040 00000000000000c0 0000803f 0201 0403 05 00000040 0706";
    EXPECT_EQ(savedForm(fullObservation()), hex("07 02 07 5a 000000000000f03f 0000000000000040" + slot + slot + slot));
    CHalvexObservation one(3);
    one.setPseudorangeC(0, 2.0);
    one.setLossOfLock(0, true);
    one.setContLockCount(2, 0xFFFF);
    EXPECT_EQ(savedForm(one), hex("03 01 00  01800000 0000000000000040 0000  00000000 0000  00000000 ffff"));
    EXPECT_EQ(savedForm(CHalvexObservation()).size(), CHalvexObservation::kSmallestSize);
}

TEST(Observation, LoadingBringsCostasAndReplacesWhatTheRecordLacks) {
    const Bytes bytes = hex("03 01 00  00008000 2a 0000  00000000 0000  00000000 0000");
    CHalvexObservation loaded = fullObservation();
    std::size_t offset = 0;
    ASSERT_TRUE(loaded.LoadData(bytes.data(), bytes.size(), offset));
    unsigned char costa = 0;
    EXPECT_TRUE(loaded.getCosta(0, costa) && costa == 0x2A);
    EXPECT_EQ(savedForm(loaded), bytes);
    CHalvexObservation fresh;
    offset = 0;
    ASSERT_TRUE(fresh.LoadData(bytes.data(), bytes.size(), offset));
    EXPECT_EQ(loaded, fresh) << "nothing is left of what was absent";
}

/// The record stands behind five other bytes.
TEST(Observation, EveryShortBufferIsRefusedAndLeavesAllAsItWas) {
    const CHalvexObservation full = fullObservation(), before(9);
    CHalvexObservation loaded = before;
    Bytes good = savedForm(full);
    good.insert(good.begin(), 5, 0xEE);
    std::size_t offset = 5;
    for (std::size_t size = 0; size < good.size(); ++size) {
        Bytes part = good;
        part.resize(size);
        ASSERT_FALSE(loaded.LoadData(part.data(), size, offset)) << size;
        part.assign(size, 0x11);
        ASSERT_FALSE(full.SaveData(part.data(), size, offset)) << size;
        ASSERT_TRUE(offset == 5 && loaded == before && part == Bytes(size, 0x11)) << size;
    }
    EXPECT_FALSE(loaded.LoadData(nullptr, good.size(), offset) || full.SaveData(nullptr, good.size(), offset));
    EXPECT_TRUE(loaded.LoadData(good.data(), good.size(), offset));
    EXPECT_EQ(loaded, full);
    EXPECT_EQ(offset, good.size());
    offset = std::numeric_limits<std::size_t>::max();
    EXPECT_FALSE(loaded.LoadData(good.data(), good.size(), offset));
}

TEST(Observation, InvalidSlotChangesNothingAndResetKeepsValues) {
    CHalvexObservation observation = fullObservation();
    observation.setPhase(3, 1.0, true);
    observation.setLossOfLock(3, true);
    observation.SetCycleSlip(3, 1);
    double value = 7.0;
    EXPECT_FALSE(observation.SetAmbiguityValue(3, 1.0) || observation.getPhase(3, value, true));
    EXPECT_TRUE(observation == fullObservation() && value == 7.0);
    observation.Reset();
    EXPECT_FALSE(observation.getPrnID().IsSet() || observation.IsPhaseValid(0) || observation.IsIssueOfDataValid());
    unsigned short count = 0;
    EXPECT_TRUE(observation.getContLockCount(0, count) && count == 0x0607);
}

TEST(Observation, ProcessingFieldsOrIntoSharedBytes) {
    CHalvexObservation observation(1);
    observation.setContLockCount(0, 0x8000);
    observation.SetObservationRejection(0, 3);
    observation.SetObservationRejection(0, 64 + 4);
    observation.SetAmbiguityChanges(0, 65);
    observation.SetAmbiguityFixState(0, CHalvexObservation::eAmbiguityFixed);
    unsigned short count = 0;
    observation.getContLockCount(0, count);
    EXPECT_EQ(count, 0x8000 | 0x3000 | 0x0040 | 0x0007);
    EXPECT_EQ(observation.GetObservationRejection(0), 7);
    EXPECT_EQ(observation.GetAmbiguityChanges(0), 1);
    EXPECT_EQ(observation.GetAmbiguityFixState(0), 0xBU);
}

TEST(Observation, AmbiguityInCno) {
    CHalvexObservation observation(1);
    const auto cno = [&observation] {
        float value = kNaN;
        observation.getCNO(0, value);
        return value;
    };
    EXPECT_FALSE(observation.SetAmbiguitySearchAndSubLevel(0, 1, 10) || observation.IsCNOValid(0));
    EXPECT_TRUE(observation.SetAmbiguitySearchAndSubLevel(0, 25, 3));
    EXPECT_NEAR(cno(), 0.325, 1e-5);
    EXPECT_TRUE(observation.SetAmbiguityValue(0, -17.9));
    EXPECT_NEAR(cno(), -17.325, 1e-5);
    observation.setCNO(0, 1e30F);
    EXPECT_TRUE(observation.SetAmbiguitySearchAndSubLevel(0, 0, 0));
    EXPECT_EQ(cno(), 0x1p31F);
    EXPECT_TRUE(observation.SetAmbiguityValue(0, kNaN));
    EXPECT_EQ(cno(), 0.0F);
}

TEST(Observation, Plausibility) {
    using Change = void (*)(CHalvexObservation&);
    const std::tuple<const char*, Change, bool> rows[] = {
        {"lower bound of a range", [](CHalvexObservation& o) { o.setPseudorangeC(0, 15000000.0); }, true},
        {"below it", [](CHalvexObservation& o) { o.setPseudorangeC(0, 14999999.0); }, false},
        {"above it", [](CHalvexObservation& o) { o.setPseudorangeP(1, 30000000.1); }, false},
        {"Doppler beyond", [](CHalvexObservation& o) { o.setDoppler(1, 35001.0F); }, false},
        {"C/N0 bound", [](CHalvexObservation& o) { o.setCNO(0, 500.0F); }, true},
        {"range is no number", [](CHalvexObservation& o) { o.setPseudorangeC(1, kNaN); }, false},
        {"Doppler bound", [](CHalvexObservation& o) { o.setDoppler(0, -35000.0F); }, true},
        {"C/N0 negative", [](CHalvexObservation& o) { o.setCNO(0, -0.1F); }, false},
        {"phase zero", [](CHalvexObservation& o) { o.setPhase(0, 0.0, true); }, false},
        {"phase huge", [](CHalvexObservation& o) { o.setPhase(1, -1e10, true); }, false},
        {"third slot is not tested", [](CHalvexObservation& o) { o.setPseudorangeC(2, 1.0); }, true},
        {"Galileo", [](CHalvexObservation& o) { o.setPrnType(CPrnID::PRN_GALILEO); }, false},
        {"no satellite", [](CHalvexObservation& o) { o.setPrnID(CPrnID()); }, false}};
    for (const auto& [what, change, plausible] : rows) {
        CHalvexObservation observation(5);
        observation.setPseudorangeP(0, 2.1e7);
        change(observation);
        EXPECT_EQ(observation.IsDataValid(), plausible) << what;
    }
    CHalvexObservation onlyL2(5);
    onlyL2.setPseudorangeC(1, 2.1e7);
    EXPECT_FALSE(onlyL2.IsDataValid());
}

TEST(Observation, PhaseInMetresAndClockJumpOfTwoSlots) {
    CHalvexObservation observation(5);
    const double wavelengths[] = {0.19029367279836487, 0.24421021342456825, 0.24421021342456825};
    for (unsigned slot = 0; slot < 3; ++slot) {
        observation.setPhase(slot, 1e8 * wavelengths[slot], false);
        observation.setPseudorangeC(slot, 2e7);
    }
    observation.AdjustForClockJumps(-2);
    const double frequencies[] = {1.57542e9, 1.2276e9, 0.0};
    for (unsigned slot = 0; slot < 3; ++slot) {
        double phase = 0.0, metres = 0.0, range = 0.0;
        EXPECT_TRUE(observation.getPhase(slot, phase, true) && observation.getPhase(slot, metres, false));
        EXPECT_TRUE(observation.getPseudorangeC(slot, range) && metres == phase * wavelengths[slot]);
        EXPECT_DOUBLE_EQ(phase, 1e8 - 0.002 * frequencies[slot]) << slot;
        EXPECT_DOUBLE_EQ(range, 2e7 - (slot < 2 ? 0.002 * 299792458.0 : 0.0)) << slot;
        EXPECT_FALSE(observation.IsPseudorangePValid(slot));
    }
}

TEST(ContLockCount, CountsHundredthsInStepsOfFifty) {
    const MDB::CPrnIdZ9 satellite(CALN::eCALSATSYSTEM_GPS, 1);
    CContLockCount counts;
    const auto count = [&](double seconds, bool lost = false, CALN::eCALFREQUENCY carrier = CALN::eCALFREQUENCY_L1) {
        SMjdTime time(2190, 100.0);
        time.AddSeconds(seconds);
        return counts.getCount(carrier, satellite, lost, time);
    };
    EXPECT_EQ(count(0.0), 0);
    const std::pair<double, int> rows[] = {{0.024, 0}, {0.03, 5}, {655.3, 65530}, {700.0, 65535}, {-5.0, 0}};
    for (const auto& [seconds, want] : rows) EXPECT_EQ(count(seconds), want) << seconds;
    EXPECT_EQ(count(9.0, false, CALN::eCALFREQUENCY_L2), 0) << "a carrier of its own";
    EXPECT_EQ(count(10.0, true), 0);
    EXPECT_EQ(count(11.0), 100);
    EXPECT_EQ(count(11.0, false, static_cast<CALN::eCALFREQUENCY>(11)), 0);
    counts.Clear();
    EXPECT_EQ(count(12.0), 0);
}

}  // namespace
