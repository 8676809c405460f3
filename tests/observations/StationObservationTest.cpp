#include "halvex/observations/HalvexStationObservation.h"

#include <gtest/gtest.h>

#include <sstream>

#include "halvex/observations/HalvexUniqueID.h"
#include "halvex/observations/TripleID.h"
#include "tests/support/Bytes.h"
#include "tests/support/CapturedLog.h"

namespace {

using namespace halvex::test;

CHalvexObservation observationOf(unsigned char prn, CPrnID::PrnType type, double range = 2.1e7) {
    CHalvexObservation observation(CPrnID(prn, type));
    observation.setPseudorangeC(0, range);
    return observation;
}

CHalvexStationObservation sampleEpoch() {
    CHalvexStationObservation epoch(0x01020304, 0x0506);
    epoch.setSiteID(0x0708090A);
    epoch.setSmoothingInterval(0x1112);
    epoch.setDopplerRate(0x1314);
    epoch.setClockOffsetCode(1.0);
    epoch.setClockOffsetPhase(2.0);
    epoch.AddObservation(observationOf(3, CPrnID::PRN_GPS, 0x1p24), false);
    epoch.AddObservation(observationOf(8, CPrnID::PRN_GLONASS, 0x1p24), false);
    return epoch;
}

TEST(StationObservation, SavedForm) {
    CHalvexStationObservation other = sampleEpoch();
    other.setSiteID(5);
    expectSavedForm(sampleEpoch(), other,
                    hex("02000000 04030201 0605 0a090807 00d8 1211 1413 000000000000f03f 0000000000000040"
                        "03 01 00 00800000 0000000000007041 0000 00000000 0000 00000000 0000"
                        "08 02 00 00800000 0000000000007041 0000 00000000 0000 00000000 0000"));
    const CHalvexStationObservation fresh;
    std::int32_t site = 0;
    EXPECT_FALSE(fresh.getSiteID(site));
    Bytes bytes = saved(fresh);
    ASSERT_EQ(bytes.size(), 32U);  // both clock offsets are counted, present or not
    bytes.resize(16);
    EXPECT_EQ(bytes, hex("00000000 00000000 0000 ffffffff 4000"));
    bytes = hex("ffffffff 00000000 0000 ffffffff 4000 0000 0000 0000 0000 0000 0000 0000 0000");
    EXPECT_FALSE(other.loadData(bytes.data(), bytes.size())) << "an absurd count, before anything is allocated";
}

TEST(StationObservation, StatusWordAndSubcluster) {
    CHalvexStationObservation epoch(0, 0);
    EXPECT_TRUE(epoch.setReceiverType(18) && !epoch.setReceiverType(22) && epoch.getReceiverType() == 2U);
    for (unsigned type = 0; type < 16; ++type) {
        EXPECT_TRUE(epoch.setReceiverType(type));
        EXPECT_EQ(epoch.IsSimulatedReceiverType(), type >= 5 && type <= 7) << type;
    }
    EXPECT_TRUE(epoch.setCoverageMode(3) && !epoch.setCoverageMode(4));
    EXPECT_TRUE(epoch.getCoverageMode() == 3U && epoch.getReceiverType() == 15U);
    epoch.SetNALEventRecord();
    EXPECT_TRUE(epoch.IsNALEventRecord());
    epoch.setNetProc(true);
    EXPECT_FALSE(epoch.IsNALEventRecord());

    epoch.SetSubclusterAmbiguityLevel(9);
    epoch.SetSubclusterID(-12);
    EXPECT_TRUE(epoch.GetSubclusterAmbiguityLevel() == 9 && epoch.GetSubclusterID() == -12);
    epoch.setClockOffsetCode(-1e30);
    EXPECT_EQ(epoch.GetSubclusterID(), std::numeric_limits<std::int32_t>::min()) << "stands in the clock offset";
}

TEST(StationObservation, CursorFollowsTheFilter) {
    CHalvexStationObservation epoch;
    for (unsigned char prn = 1; prn <= 3; ++prn) {
        epoch.AddObservation(observationOf(prn, CPrnID::PRN_GPS), false);
        epoch.AddObservation(observationOf(prn, CPrnID::PRN_GLONASS), false);
    }
    const std::pair<CPrnID::PrnTypeFlag, const char*> rows[] = {
        {CPrnID::PRN_GPS, "G1G2G3"}, {2, "R1R2R3"}, {3, "G1R1G2R2G3R3"}, {4, ""}};
    for (const auto& [filter, want] : rows) {
        std::string visited;
        CHalvexObservation* at = nullptr;
        epoch.SetPrnTypeFilter(filter);
        for (bool more = epoch.First(); more && epoch.GetRef(at); more = epoch.Next()) {
            visited += (at->getPrnType() == CPrnID::PRN_GPS ? "G" : "R") + std::to_string(at->getPrnID().getPrn());
        }
        EXPECT_EQ(visited, want);
        EXPECT_FALSE(epoch.GetRef(at) || epoch.Next());
    }
    const Bytes bytes = saved(epoch);
    ASSERT_TRUE(epoch.loadData(bytes.data(), bytes.size()));
    EXPECT_EQ(epoch.GetPrnTypeFilter(), 4U);
    CHalvexObservation first;
    EXPECT_TRUE(epoch.Get(first)) << "the cursor stands at the start";
}

TEST(StationObservation, ListAndCaches) {
    CHalvexStationObservation epoch;
    EXPECT_FALSE(epoch.AddObservation(observationOf(1, CPrnID::PRN_GPS, 1.4e7), true));
    EXPECT_TRUE(epoch.AddObservation(observationOf(1, CPrnID::PRN_GPS), true));
    EXPECT_TRUE(epoch.AddObservation(observationOf(2, CPrnID::PRN_GPS, 1.0), false));
    EXPECT_TRUE(epoch.AddObservation(observationOf(2, CPrnID::PRN_GLONASS), false));
    EXPECT_EQ(epoch.GetCountTrackedOnL1Glo(), 1);
    epoch.SetCountTrackedOnL1(9);
    EXPECT_EQ(epoch.GetCountTrackedOnL1(), 9);
    EXPECT_EQ(epoch.GetCountObservationSatSystem(CPrnID::PRN_GPS | CPrnID::PRN_GLONASS), 3);

    CHalvexObservation *made = nullptr, *again = nullptr;
    ASSERT_TRUE(epoch.CreateObservation(CPrnID(9, CPrnID::PRN_GPS), made));
    EXPECT_EQ(epoch.GetCountTrackedOnL1(), 2) << "the overwritten cache is gone with the change";
    made->setPhase(0, 1.0, true);
    made->setPhase(1, 1.0, true);
    EXPECT_TRUE(epoch.GetCountObsL1L2() == 1 && epoch.GetCountTrackedOnL2() == 1);
    EXPECT_TRUE(epoch.CreateObservation(CPrnID(9, CPrnID::PRN_GPS), again) && again == made);

    EXPECT_TRUE(epoch.ValidateObservations());
    ASSERT_EQ(epoch.GetCountObservation(), 2);
    EXPECT_EQ(epoch.observations()[1].getPrnType(), CPrnID::PRN_GLONASS);
    epoch.SetCountTrackedOnL1(9);
    EXPECT_TRUE(epoch.CreateObservation(CPrnID(1, CPrnID::PRN_GPS), made) && epoch.ValidateObservations());
    EXPECT_EQ(epoch.GetCountTrackedOnL1(), 9) << "nothing was removed";
    while (epoch.Next()) continue;
    const CHalvexStationObservation moved = std::move(epoch);
    CHalvexObservation first;
    EXPECT_TRUE(moved.Get(first) && moved.GetCountTrackedOnL1() == 9) << "from the start";
    EXPECT_TRUE(epoch.GetCountObservation() == 0 && epoch.GetCountTrackedOnL1() == 0);
}

TEST(StationObservation, LossesAndCountsThatGoDownAreReportedOnce) {
    MDB::CLossOfLockDetector detector;
    const auto epochWith = [&](bool lost, unsigned short lockCount) {
        CHalvexStationObservation epoch;
        CHalvexObservation observation(CPrnID(4, CPrnID::PRN_GALILEO));
        observation.setPhase(2, 1.0, true);
        observation.setLossOfLock(2, lost);
        observation.setContLockCount(2, lockCount);
        epoch.AddObservation(observation, false);
        epoch.StoreLossOfLock(detector);
        return epoch;
    };
    const auto updatedLoss = [&](CHalvexStationObservation epoch) {
        bool on = false;
        epoch.UpdateLossOfLock(detector);
        return epoch.observations()[0].getLossOfLock(2, on) && on;
    };
    epochWith(true, 0);
    EXPECT_TRUE(updatedLoss(epochWith(false, 100)));
    EXPECT_TRUE(!updatedLoss(epochWith(false, 200)) && updatedLoss(epochWith(false, 150)));
}

TEST(UniqueID, NumberTextOrderAndProductsByTheHighWord) {
    CHalvexUniqueSiteID site(5, 4294967295U);
    long long number = 0;
    CHalvexUniqueSiteID(5, 3).getUniqueSiteID(number);
    EXPECT_EQ(number, 12884901893);
    EXPECT_EQ(site.GetOutputFormat(';'), "4294967295;5");
    EXPECT_EQ((std::ostringstream() << site).str(), "4294967295,5");
    EXPECT_TRUE(CHalvexUniqueSiteID(0, 0x80000000) < site) << "the order is that of the signed number";
    std::uint32_t product = 99;
    EXPECT_FALSE(site.isSSRBasedRTProductID());
    site.getUniqueSSRBasedRTProductID(product);
    EXPECT_EQ(product, 0U);
    site.setUniqueSSRBasedRTProductID(42);
    EXPECT_TRUE(site.isSSRBasedRTProductID());
    EXPECT_EQ(saved(site), hex("2a000000 fecadada"));
}

TEST(UniqueID, SavedFormAndWhatIsLogged) {
    CapturedLog log;
    expectSavedForm(CHalvexUniqueSiteID(0x01020304, 0x05060708), CHalvexUniqueSiteID(), hex("04030201 08070605"));
    const auto lines = log.take();
    ASSERT_EQ(lines.size(), 18U);
    EXPECT_EQ(lines[14], "3 CHalvexUniqueID::loadData: buffer too small '7','8'");
    EXPECT_EQ(lines[17], "3 CHalvexUniqueID::saveData: buffer is null");
}

TEST(TripleID, TextOrderAndValidity) {
    const std::tuple<CTripleID, const char*, bool> rows[] = {{CTripleID(), "-1", false},
                                                             {CTripleID(4, -7, 0), "0_-7_4", true},
                                                             {CTripleID(0x00000002'FFFFFFFFU, 3), "3_2_-1", false}};
    for (const auto& [id, text, valid] : rows) {
        EXPECT_EQ(id.getString(), text);
        EXPECT_EQ(id.IsValid(), valid) << text;
    }
    EXPECT_TRUE(CTripleID(5, 0, 1) < CTripleID(0, 1, 1) && CTripleID(0, 1, 1) < CTripleID(-5, 0, 2) &&
                CTripleID(-5, 1, 1) < CTripleID(0, 1, 1));
    EXPECT_EQ(CTripleIDHasher()(CTripleID(1, -1, 256)), 0xc72de5a1ac2a3877U);  // computed apart from this library
}

}  // namespace
