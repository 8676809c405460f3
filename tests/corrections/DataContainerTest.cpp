#include <gtest/gtest.h>

#include "halvex/corrections/DataContainerSSR.h"
#include "halvex/platform/kernix/Time.h"
#include "tests/support/TestClock.h"

namespace {

using namespace CALN;

const SMjdTime kT(2111, 388800.0);
constexpr eCALSATSYSTEM kGps = eCALSATSYSTEM_GPS;
constexpr unsigned kBoth = CDataContainerSSR::kOrbitsValid | CDataContainerSSR::kClocksValid;

SMjdTime after(double seconds) {
    SMjdTime time = kT;
    time.AddSeconds(seconds);
    return time;
}

template <class Message>
Message message(const SMjdTime& epoch, const std::vector<unsigned char>& numbers, std::int32_t more,
                eCALSATSYSTEM system) {
    Message m;
    m.system = system;
    m.epoch = epoch;
    m.multipleMessage = more;
    for (const unsigned char number : numbers) m.entries.emplace_back().satId = {system, number};
    return m;
}
constexpr auto orbits = message<SSROrbitCorrMsgT>;
constexpr auto clocks = message<SSRClockCorrMsgT>;

TEST(DataContainer, Ages) {
    CDataContainerSSR container(1);
    container.AddCorrectionMsg(orbits(kT, {1, 2, 3, 4, 5, 6, 7, 8, 9, 10}, 0, kGps));
    container.AddCorrectionMsg(clocks(kT, {1, 2, 3}, 0, kGps));
    const std::tuple<double, unsigned, unsigned> rows[] = {
        {-1e5, kBoth, 3}, {15.0, kBoth, 3}, {15.001, 1, 10}, {90.0, 1, 10}, {90.001, 0, 0}};
    for (const auto& [age, state, satellites] : rows) {
        EXPECT_EQ(container.GetValidState(kGps, after(age)), state) << age;
        EXPECT_EQ(container.GetNumSat(kGps, after(age)), satellites) << age;
    }
    EXPECT_TRUE(container.IsComplete(kGps)) << "however old";
}

TEST(DataContainer, WithoutATimeTheProcessClockCounts) {
    CDataContainerSSR container(1);
    container.AddCorrectionMsg(clocks(kT, {1}, 0, kGps));
    // The clock's reading as it is, without leap seconds, less its offset from the reference clock.
    halvex::test::TestClock clock(2020, 6, 25, 12, 0, 15);
    EXPECT_EQ(container.GetValidState(kGps, SMjdTime()), 2);
    EXPECT_EQ(container.GetValidState(kGps, SMjdTime::FromDayAndMilliseconds(0, 5.0)), 2);
    clock.utc.wMilliseconds = 1;
    EXPECT_EQ(container.GetValidState(kGps, SMjdTime()), 0);
    TIME::SetDeltaUTCTime(1.0);
    EXPECT_EQ(container.GetNumSat(kGps, SMjdTime()), 1);
    TIME::SetDeltaUTCTime(0.0);
}

TEST(DataContainer, Epochs) {
    CDataContainerSSR container(1);
    using Numbers = std::vector<unsigned char>;
    // Orbits or clocks of an epoch with satellites, and whether more follow; epoch, counts and completeness then.
    const std::tuple<const char*, bool, double, Numbers, int, double, unsigned, unsigned, bool> rows[] = {
        {"first of two", false, 0, {5, 9}, 1, 0, 0, 2, false},
        {"second of two", false, 0, {12, 7, 9}, 0, 0, 0, 4, true},
        {"orbits open", true, 0, {1, 2}, -1, 0, 2, 4, false},
        {"the same once more", true, 0, {2, 1, 1}, 0, 0, 2, 4, true},
        {"later clocks leave the orbits alone", false, 5, {3}, 0, 5, 2, 1, true},
        {"older clocks come on top", false, -30, {4, 3}, 1, 5, 2, 2, false},
        {"nothing in it", false, 5, {}, 0, 5, 2, 2, true},
        {"a later epoch without satellites", false, 10, {}, 1, 10, 2, 0, true},
        {"older satellites fill it", false, 5, {8}, 0, 10, 2, 1, true}};
    for (const auto& [what, isOrbit, at, numbers, more, epoch, orbitCount, clockCount, complete] : rows) {
        if (isOrbit) container.AddCorrectionMsg(orbits(after(at), numbers, more, kGps));
        if (!isOrbit) container.AddCorrectionMsg(clocks(after(at), numbers, more, kGps));
        EXPECT_TRUE(container.GetOrbitCount(kGps) == orbitCount && container.GetClockCount(kGps) == clockCount) << what;
        EXPECT_EQ(container.IsComplete(kGps), complete) << what;
        EXPECT_EQ(container.GetClockEpoch(kGps), after(epoch)) << what;
    }
    EXPECT_EQ(container.GetOrbitEpoch(kGps), kT);
}

TEST(DataContainer, TypeCodes) {
    for (unsigned code = 0; code < 20; ++code) {
        CDataContainerSSR container(1);
        auto ura = message<SSRURAMsgT>(kT, {1}, 0, kGps);
        ura.type = static_cast<eCALSSRCorrectionType>(code);
        container.AddCorrectionMsg(ura);
        EXPECT_EQ(container.GetValidState(kGps, kT), code == 0 || code > 4 ? 0 : (code + 1) / 2) << code;
    }
}

TEST(DataContainer, OnDisconnect) {
    CDataContainerSSR container(4711);
    for (const eCALSATSYSTEM system : {kGps, eCALSATSYSTEM_QZSS}) {
        container.AddCorrectionMsg(orbits(kT, {1}, 0, system));
        container.AddCorrectionMsg(clocks(kT, {1}, 0, system));
    }
    container.OnDisconnect();
    EXPECT_EQ(container.GetSiteID(), 0);
    for (const eCALSATSYSTEM system : {kGps, eCALSATSYSTEM_QZSS}) {
        EXPECT_TRUE(container.GetValidState(system, kT) == 0 && container.GetNumSat(system, kT) == 0);
        EXPECT_FALSE(container.IsComplete(system) || container.GetClockEpoch(system).IsSet());
    }
}

}  // namespace
