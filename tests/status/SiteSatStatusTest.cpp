#include "halvex/status/SiteSatStatus.h"

#include <gtest/gtest.h>

#include <array>
#include <bit>

#include "halvex/status/SmallSiteSatStatus.h"
#include "tests/support/Bytes.h"
#include "tests/support/CapturedLog.h"

namespace {

using namespace halvex::test;

constexpr auto kGps = CPrnID::PRN_GPS;
constexpr auto kGlonass = CPrnID::PRN_GLONASS;

CHalvexSatStatus satellite(unsigned char number, unsigned status, unsigned char elevation = 0,
                           CPrnID::PrnType type = kGps) {
    return {CPrnID(number, type), static_cast<unsigned char>(status), elevation};
}

/// A site with GPS satellites, numbered from 1, with these status bytes.
CHalvexSiteSatStatus site(const std::vector<unsigned>& status) {
    CHalvexSiteSatStatus site;
    unsigned char number = 0;
    for (const unsigned each : status) site.SetStatus(satellite(++number, each));
    return site;
}

CHalvexSiteSatStatus sampleSite() {
    CHalvexSiteSatStatus site;
    site.setUniqueSiteID(0x01020304, 5);
    site.SetClusterID(-2);
    site.SetEpochTime(1.0);
    site.SetStatus(satellite(7, 0x30, 45));
    site.SetStatus(satellite(24, 0x05, 90, kGlonass));
    return site;
}

TEST(SiteSatStatus, SavedForms) {
    const std::string first = "07 01 30 2D", keyHex = "04 03 02 01 05 00 00 00  FE FF FF FF";
    const std::string listHex = "02 00 00 00" + first + "18 02 05 5A";
    const Bytes all = hex(keyHex + "00 00 00 00 00 00 F0 3F" + listHex), keyAndList = hex(keyHex + listHex);

    expectSavedForm(satellite(7, 0x30, 45), satellite(1, 1, 1), hex(first));
    const CHalvexSiteSatStatusKey sampleKey(sampleSite());
    expectSavedForm(sampleKey, CHalvexSiteSatStatusKey(CHalvexUniqueSiteID(1), 2), hex(keyHex));
    EXPECT_EQ(saved(sampleSite()), all);
    CHalvexSiteSatStatus loaded = site({1, 1, 1});
    CHalvexSatStatus* each = nullptr;
    ASSERT_TRUE(loaded.GetNextEnumByRef(each) && loaded.loadData(all.data(), all.size()) && loaded == sampleSite());
    EXPECT_TRUE(loaded.GetNextEnumByRef(each) && *each == satellite(7, 0x30)) << "the enumeration starts anew";

    vecSatStatusT satellites, other;
    satellites.getList() = {satellite(7, 0x30, 45), satellite(24, 0x05, 90, kGlonass)};
    EXPECT_EQ(saved(satellites), hex(listHex));
    vecSiteSatStatusSaveHelper save(sampleKey, satellites);
    EXPECT_EQ(saved(save), keyAndList);
    EXPECT_FALSE(save.loadData(keyAndList.data(), keyAndList.size()));
    CHalvexSiteSatStatusKey otherKey;
    vecSiteSatStatusLoadHelper load(otherKey, other);
    EXPECT_TRUE(load.loadData(keyAndList.data(), keyAndList.size()) && otherKey == sampleKey && other == satellites);
    EXPECT_EQ(saved(load), keyAndList);
}

TEST(SiteSatStatus, WhatIsCutOffKeepsTheWholeSatellites) {
    CapturedLog log;
    const Bytes bytes = saved(sampleSite());
    for (std::size_t size = 0; size < bytes.size(); ++size) {
        CHalvexSiteSatStatus loaded = site({1, 1, 1});
        loaded.SetClusterID(9);
        const Bytes part(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(size));
        EXPECT_FALSE(loaded.loadData(part.data(), size)) << size;
        EXPECT_EQ(loaded.GetSatCount(), size < 28 ? 0U : 1U) << size;
        EXPECT_EQ(loaded.GetClusterID(), size < 20 ? 9 : -2) << size;

        Bytes untouched(size, 0xEE);
        sampleSite().saveData(untouched.data(), size);
        EXPECT_EQ(untouched, Bytes(size, 0xEE));
    }
    vecSatStatusT list;
    const Bytes tooMany = hex("FF FF FF FF 07 01 30 2D 18");
    EXPECT_FALSE(list.loadData(tooMany.data(), tooMany.size())) << "four thousand million satellites";
    EXPECT_TRUE(list.getList().size() == 1 && list.getList().capacity() < 4);
    EXPECT_TRUE(log.take().empty());
}

TEST(SiteSatStatus, MergingEveryPairOfStatusBytes) {
    for (unsigned before = 0; before < 64; ++before) {
        for (unsigned set = 0; set < 64; ++set) {
            unsigned expected = set == 0 ? 0 : before | set;
            if (std::has_single_bit(set)) {  // alone on its frequency, the other one stays
                const unsigned frequency = (set & 0x15U) != 0 ? 0x15 : 0x2A;
                expected = (before & ~frequency) | set;
            }
            CHalvexSiteSatStatus merged = site({before});
            merged.SetStatus(satellite(1, set, 33));
            ASSERT_EQ(merged.GetStatus(CPrnID(1)), expected) << before << " and " << set;
            ASSERT_EQ(merged.GetElevation(CPrnID(1)), 33);
        }
    }
}

TEST(SiteSatStatus, TheListAndItsFilters) {
    CHalvexSiteSatStatus site;
    site.SetStatus(satellite(0, 1));
    site.SetStatus(satellite(1, 1, 0, static_cast<CPrnID::PrnType>(3)));
    EXPECT_EQ(site.GetSatCount(), 0U) << "no satellites";
    for (unsigned char number = 9; number < 12; ++number) site.SetStatus(satellite(number, 0x01, number));
    site.SetStatus(satellite(9, 0, 5, kGlonass));
    unsigned char status = 7, elevation = 8;
    EXPECT_FALSE(site.GetStatus(CPrnID(12), status, elevation) || status != 7 || elevation != 8);
    EXPECT_TRUE(site.GetStatus(CPrnID(11), status, elevation) && status == 1 && elevation == 11);
    EXPECT_TRUE(site.GetNotEmptySats(kGps) == 0b111'0000'0000U && site.GetNotEmptySats(kGlonass) == 0);

    CHalvexSatStatus* each = nullptr;
    site.FilterSatsBelowElevMask(std::numeric_limits<double>::quiet_NaN());
    EXPECT_EQ(site.GetSatCount(), 4U);
    EXPECT_TRUE(site.GetNextEnumByRef(each) && site.GetNextEnumByRef(each));
    site.FilterSatsBelowElevMask(9.5);
    EXPECT_TRUE(site.GetSatCount() == 2 && site.GetNextEnumByRef(each) && *each == satellite(10, 1));
    EXPECT_TRUE(site.GetNextEnumByRef(each) && !site.GetNextEnumByRef(each) && each == nullptr);
    site.SetStatus(satellite(2, 1, 80, kGlonass));
    site.FilterPrnType(CPrnID::PRN_GPS | CPrnID::PRN_NAVIC);
    EXPECT_TRUE(site.GetSatCount() == 1 && site.GetStatus(CPrnID(2, kGlonass)) == 1);

    const Bytes numberOf200 = hex("00000000 00000000 00000000 00000000 00000000 01000000 C8 01 01 00");
    EXPECT_TRUE(site.loadData(numberOf200.data(), numberOf200.size()));
    EXPECT_EQ(site.GetNotEmptySats(kGps), 0U) << "no bit for it";
}

TEST(SiteSatStatus, CountsByLevelAndFrequency) {
    CHalvexSiteSatStatus counted = site({0x01, 0x03, 0x06, 0x18, 0x30, 0x20, 0x00});
    counted.SetStatus(satellite(1, 0x35, 0, kGlonass));
    using Levels = std::array<unsigned, 3>;  // low, mid, high
    const std::tuple<CPrnID::PrnType, bool, bool, Levels> rows[] = {
        {kGps, true, true, {2, 1, 3}},     {kGps, true, false, {2, 1, 2}},
        {kGps, false, true, {2, 1, 2}},    {CPrnID::PRN_NONE, true, false, {2, 1, 3}},
        {kGlonass, true, true, {0, 0, 1}}, {kGps, false, false, {0, 0, 0}}};
    for (const auto& [type, first, second, want] : rows) {
        Levels levels{9, 9, 9};
        counted.GetSatsStatus(type, first, second, levels[0], levels[1], levels[2]);
        EXPECT_EQ(levels, want) << type << first << second;
    }
    unsigned nonEmpty = 0, fixed = 0;
    counted.GetSatsAvailable(nonEmpty, fixed);
    EXPECT_EQ(std::pair(nonEmpty, fixed), std::pair(7U, 2U));
    std::vector<unsigned> perSystem(20, 9);
    EXPECT_EQ(counted.GetSatsAvailable(perSystem), 7U);
    EXPECT_EQ(perSystem, (std::vector<unsigned>{0, 1, 1, 0, 0, 0, 0, 0, 0}));

    const CHalvexSmallSiteSatStatus small(counted);
    CHalvexSmallSiteSatStatus other = small;
    unsigned low = 9, mid = 9, high = 9;
    EXPECT_TRUE(small.GetSatsStatus(kGps, true, low, mid, high) && low == 2 && mid == 1 && high == 3);
    EXPECT_TRUE(small.GetSatsStatus(CPrnID::PRN_NONE, true, low, mid, high) && high == 4);
    EXPECT_FALSE(small.GetSatsStatus(CPrnID::PRN_NAVIC, true, low, mid, high) || low != 0 || mid != 0 || high != 0);
    EXPECT_FALSE(other.SetSatsStatus(CPrnID::PRN_SBAS, true, 1, 1, 1));
    EXPECT_TRUE(other == small && other.SetSatsStatus(CPrnID::PRN_QZSS, true, 1, 256, 255) && !other.Compare(small));
    EXPECT_TRUE(other.GetSatsStatus(CPrnID::PRN_QZSS, true, low, mid, high) && low == 1 && mid == 255 && high == 255);
}

TEST(SiteSatStatus, FixedNeedsTheThresholdAndOneForEachSystem) {
    const std::vector<unsigned> six(6, 0x30), five(5, 0x30);
    CHalvexSiteSatStatus mixed = site(six);
    EXPECT_TRUE(mixed.IsFixed(kGps) && mixed.IsFixed(0xFF) && !mixed.IsFixed(kGlonass) && !mixed.IsFixed(0));
    EXPECT_FALSE(site(five).IsFixed(kGps));
    mixed = site(five);
    mixed.SetStatus(satellite(1, 0x30, 0, kGlonass));
    EXPECT_FALSE(mixed.IsFixed(0xFF)) << "six of two systems";
    mixed.SetStatus(satellite(2, 0x30, 0, kGlonass));
    EXPECT_TRUE(mixed.IsFixed(0xFF) && !mixed.IsFixed(kGps));
    EXPECT_TRUE(!mixed.SetFixedThreshold(0) && mixed.SetFixedThreshold(4) && mixed.IsFixed(kGps));
    mixed.Clear();
    EXPECT_EQ(mixed.GetFixedThreshold(), 5U);
    EXPECT_TRUE(mixed.SetFixedThreshold(std::numeric_limits<unsigned>::max()) && !mixed.IsFixed(0xFF)) << "no overflow";
}

TEST(SiteSatStatus, StateChanges) {
    const auto sites = [](unsigned first, unsigned second) {
        std::vector<unsigned> status;
        for (unsigned i = 0; i < 5; ++i) status.push_back((i < first ? 0x10U : 0U) | (i < second ? 0x20U : 0U));
        return site(status);
    };
    const std::array<unsigned, 5> rows[] = {{5, 5, 4, 4, 1}, {5, 5, 0, 5, 0}, {5, 4, 4, 4, 0},
                                            {4, 5, 4, 4, 0}, {5, 5, 5, 5, 0}, {4, 5, 5, 0, 2},
                                            {5, 4, 5, 4, 2}, {4, 4, 5, 5, 2}, {4, 4, 4, 4, 0}};
    for (const auto& [nowFirst, nowSecond, beforeFirst, beforeSecond, change] : rows) {
        CHalvexSiteSatStatus now = sites(nowFirst, nowSecond);
        const auto want = static_cast<int>(change);
        EXPECT_EQ(now.DetectStateChanges(sites(beforeFirst, beforeSecond)), want) << nowFirst << nowSecond;
        EXPECT_EQ(now.GetStateChanges(), want);
    }
}

TEST(SiteSatStatus, Comparison) {
    const CHalvexSiteSatStatus sample = sampleSite();
    CHalvexSiteSatStatus other = sample;
    other.SetStatus(satellite(7, 0x30, 46));
    EXPECT_TRUE(other == sample) << "elevations do not count";
    other.SetEpochTime(2.0);
    EXPECT_TRUE(other.Compare(sample) && !(other == sample));
    other.SetEpochTime(std::numeric_limits<double>::quiet_NaN());
    EXPECT_TRUE(other == other && !(other == CHalvexSiteSatStatus(other)));
    other.Clear();
    EXPECT_TRUE(other.GetClusterID() == -1 && other.getUniqueSiteID() == sample.getUniqueSiteID());

    const CHalvexUniqueSiteID low(1), high(2);
    CHalvexSiteSatStatusKey key;
    sample.GetUniqueNetworkSiteID(key);
    EXPECT_TRUE(key == CHalvexSiteSatStatusKey(sample, -2));
    EXPECT_TRUE(CHalvexSiteSatStatusKey(high, -1) < CHalvexSiteSatStatusKey(low, 0)) << "by cluster, with its sign";
    EXPECT_TRUE(CHalvexSiteSatStatusKey(low, 3) < CHalvexSiteSatStatusKey(high, 3));
}

}  // namespace
