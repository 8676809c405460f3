#include <gtest/gtest.h>

#include <sstream>
#include <tuple>

#include "halvex/observations/HalvexUniqueID.h"
#include "halvex/observations/TripleID.h"
#include "tests/support/Bytes.h"
#include "tests/support/CapturedLog.h"

namespace {

using namespace halvex::test;

TEST(UniqueID, WordsNumberTextAndOrder) {
    const CHalvexUniqueSiteID site(5, 3);
    EXPECT_EQ(site.getUniqueSiteID(), 12884901893);
    EXPECT_EQ(site.GetOutputFormat(';'), "3;5");
    std::ostringstream text;
    text << CHalvexUniqueSiteID(12, 4294967295U);
    EXPECT_EQ(text.str(), "4294967295,12");
    EXPECT_TRUE(CHalvexUniqueSiteID(0, 0x80000000) < site) << "the order is that of the signed number";
}

TEST(UniqueID, SavedFormAndWhatIsLogged) {
    CapturedLog log;
    expectSavedForm(CHalvexUniqueSiteID(0x01020304, 0x05060708), CHalvexUniqueSiteID(), hex("04030201 08070605"));
    const auto lines = log.take();
    ASSERT_EQ(lines.size(), 18U);
    const std::vector<CapturedLog::Line> expected = {{"CHalvexUniqueID::loadData", 3, "buffer too small '7','8'"},
                                                     {"CHalvexUniqueID::saveData", 3, "buffer too small '7','8'"},
                                                     {"CHalvexUniqueID::loadData", 3, "buffer is null"},
                                                     {"CHalvexUniqueID::saveData", 3, "buffer is null"}};
    EXPECT_EQ(std::vector(lines.end() - 4, lines.end()), expected);
}

TEST(UniqueID, ProductsAreMarkedByTheHighWord) {
    CHalvexUniqueSiteID site(7, 9);
    std::uint32_t product = 99;
    EXPECT_FALSE(site.isSSRBasedRTProductID());
    site.getUniqueSSRBasedRTProductID(product);
    EXPECT_EQ(product, 0U);
    site.setUniqueSSRBasedRTProductID(42);
    EXPECT_TRUE(site.isSSRBasedRTProductID());
    EXPECT_EQ(saved(site), hex("2a000000 fecadada"));
}

TEST(TripleID, TextOrderAndValidity) {
    const std::tuple<CTripleID, const char*, bool> rows[] = {{CTripleID(), "-1", false},
                                                             {CTripleID(1, 2, -1), "2_1", true},
                                                             {CTripleID(-1, 5, 6), "6_5_-1", false},
                                                             {CTripleID(4, -7, 0), "0_-7_4", true},
                                                             {CTripleID(0x00000002'FFFFFFFFU, 3), "3_2_-1", false}};
    for (const auto& [id, text, valid] : rows) {
        EXPECT_EQ(id.getString(), text);
        EXPECT_EQ(id.IsValid(), valid) << text;
    }
    EXPECT_LT(CTripleID(5, 0, 1), CTripleID(0, 0, 2));
    EXPECT_LT(CTripleID(5, 0, 1), CTripleID(0, 1, 1));
    EXPECT_LT(CTripleID(-5, 1, 1), CTripleID(0, 1, 1));
    EXPECT_EQ(CTripleIDHasher()(CTripleID(1, -1, 256)), 0xc72de5a1ac2a3877U);  // computed apart from this library
}

}  // namespace
