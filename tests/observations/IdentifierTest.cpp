#include <gtest/gtest.h>

#include <sstream>

#include "halvex/observations/HalvexUniqueID.h"
#include "halvex/observations/TripleID.h"
#include "tests/support/Bytes.h"
#include "tests/support/CapturedLog.h"

namespace {

using halvex::test::Bytes;
using halvex::test::hex;
using halvex::test::saved;

TEST(UniqueID, WordsNumberTextAndBytes) {
    const CHalvexUniqueSiteID site(5, 3);
    EXPECT_EQ(site.getUniqueSiteID(), 12884901893);
    EXPECT_EQ(site.GetOutputFormat(';'), "3;5");
    std::ostringstream text;
    text << CHalvexUniqueSiteID(12, 4294967295U);
    EXPECT_EQ(text.str(), "4294967295,12");
    EXPECT_EQ(saved(CHalvexUniqueSiteID(0x01020304, 0x05060708)), hex("04030201 08070605"));
    std::uint32_t low = 0;
    std::uint32_t high = 0;
    CHalvexUniqueAntennaID(-1).getUniqueAntennaID(low, high);
    EXPECT_TRUE(low == 0xFFFFFFFF && high == 0xFFFFFFFF);
}

TEST(UniqueID, OrderIsThatOfTheSignedNumber) {
    const CHalvexUniqueSiteID negative(0, 0x80000000);
    const CHalvexUniqueSiteID positive(1, 0);
    EXPECT_TRUE(negative < positive && positive > negative && negative != positive);
    EXPECT_TRUE(positive == CHalvexUniqueSiteID(1) && !(positive < positive));
}

TEST(UniqueID, ProductsAreMarkedByTheHighWord) {
    CHalvexUniqueSiteID site(7, 9);
    std::uint32_t product = 99;
    EXPECT_FALSE(site.isSSRBasedRTProductID());
    site.getUniqueSSRBasedRTProductID(product);
    EXPECT_EQ(product, 0U);
    site.setUniqueSSRBasedRTProductID(42);
    EXPECT_TRUE(site.isSSRBasedRTProductID());
    site.getUniqueSSRBasedRTProductID(product);
    EXPECT_EQ(product, 42U);
    EXPECT_EQ(saved(site), hex("2a000000 fecadada"));
}

TEST(UniqueID, RefusedBuffersAreLogged) {
    halvex::test::CapturedLog log;
    CHalvexUniqueSiteID site(5, 3);
    Bytes bytes(8, 0x11);
    EXPECT_FALSE(site.loadData(nullptr, 8));
    EXPECT_FALSE(site.loadData(bytes.data(), 7));
    site.saveData(nullptr, 8);
    site.saveData(bytes.data(), 7);
    EXPECT_EQ(site, CHalvexUniqueSiteID(5, 3));
    EXPECT_EQ(bytes, Bytes(8, 0x11));
    const std::vector<halvex::test::CapturedLog::Line> expected = {
        {"CHalvexUniqueID::loadData", 3, "buffer is null"},
        {"CHalvexUniqueID::loadData", 3, "buffer too small '7','8'"},
        {"CHalvexUniqueID::saveData", 3, "buffer is null"},
        {"CHalvexUniqueID::saveData", 3, "buffer too small '7','8'"}};
    EXPECT_EQ(log.take(), expected);
    EXPECT_TRUE(site.loadData(bytes.data(), 8));
}

TEST(TripleID, TextOrderAndValidity) {
    const struct {
        CTripleID id;
        const char* text;
        bool valid;
    } rows[] = {{CTripleID(), "-1", false},
                {CTripleID(1, 2, -1), "2_1", true},
                {CTripleID(1, 2, 3), "3_2_1", true},
                {CTripleID(-1, 5, 6), "6_5_-1", false},
                {CTripleID(4, -7, 0), "0_-7_4", true},
                {CTripleID(0x00000002'FFFFFFFFU, 3), "3_2_-1", false}};
    for (const auto& row : rows) {
        EXPECT_EQ(row.id.getString(), row.text);
        EXPECT_EQ(row.id.IsValid(), row.valid) << row.text;
    }
    EXPECT_LT(CTripleID(5, 0, 1), CTripleID(0, 0, 2));
    EXPECT_LT(CTripleID(5, 0, 1), CTripleID(0, 1, 1));
    EXPECT_LT(CTripleID(-5, 1, 1), CTripleID(0, 1, 1));
}

TEST(TripleID, HashIsPinned) {
    EXPECT_EQ(CTripleIDHasher()(CTripleID(1, -1, 256)), 0xc72de5a1ac2a3877U);  // computed apart from this library
    EXPECT_NE(CTripleIDHasher()(CTripleID(1, -1, 256)), CTripleIDHasher()(CTripleID(-1, 1, 256)));
}

}  // namespace
