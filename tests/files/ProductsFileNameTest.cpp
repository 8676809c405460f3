#include "halvex/files/ProductsFileName.h"

#include <gtest/gtest.h>

#include <array>

#include "halvex/time/GPSTime.h"

using Names = CProductsFileName;

namespace {

// 1 January 2022, 00:00: Saturday of week 2190. The day has 86400 s.
constexpr int kWeek = 2190;
constexpr double kDay = 6 * 86400.0;

using Change = int (*)(const char*, Names::TargetFileType, bool, CString&, bool, bool);
Names::TargetFileType compression(int number) {
    return static_cast<Names::TargetFileType>(number);
}

}  // namespace

TEST(ProductsFileName, LongNames) {
    const std::tuple<const char*, RnxLongFileNameParam, double, const char*> rows[] = {
        {"tlse", {"fra", 12, 345, "15m", 'S'}, kDay + 59999.0, "TLSE12345FRA_S_20220011639_15M"},
        {"Toulouse", {"FRANCE", 1, 2, "01DAY", 'U'}, kDay, "TOUL12FRA_U_20220010000_01D"},
        {"", {}, kDay + 86399.999, "UNKN00_S_20220012359_"},
        {"A", {"DEU", 0, 0, "01H", 'R'}, kDay - 3600.0, "A00DEU_R_20213652300_01H"}};
    for (const auto& [site, parameters, seconds, want] : rows) {
        CString text;
        EXPECT_TRUE(Names::CreateRinexLongFileName(site, parameters, kWeek, seconds, text));
        EXPECT_EQ(text, want);
    }
}

TEST(ProductsFileName, ShortNames) {
    const std::tuple<const char*, const char*, int, int, double, const char*> rows[] = {
        {"hour 23", "Site", 2, 2, kDay + 86399.0, "SITE001x.22"},
        {"daily", "Site", 3, 3, kDay + 86399.0, "site0010.22"},
        {"minutes", "Site", 3, 1, kDay + 3600.0 + 15 * 60.0, "site001b15.22"},
        {"site cut", "LongSite", 0, 3, kDay, "Long0010.22"},
        {"as it is", "Site", 1, 3, kDay, "Site0010.22"},
        {"no site, upper", nullptr, 2, 3, kDay, "UNKN0010.22"}};
    for (const auto& [what, site, siteCode, span, seconds, want] : rows) {
        CString name("before");
        EXPECT_EQ(
            Names::CreateRinexFileName(site, kWeek, seconds, name, static_cast<Names::RinexSiteCodeType>(siteCode),
                                       static_cast<Names::RinexFileNameType>(span)),
            1);
        EXPECT_EQ(name, want) << what;
    }
}

TEST(ProductsFileName, BuffersAreClearedAndNeverOverrun) {
    const std::string whole = "SITE01DEU_R_20220010000_01D";
    const RnxLongFileNameParam parameters("DEU", 0, 1, "01D", 'R');
    for (std::size_t size = 0; size <= whole.size() + 3; ++size) {
        std::array<char, 40> buffer;
        buffer.fill('#');
        EXPECT_TRUE(Names::CreateRinexLongFileName("SITE", parameters, kWeek, kDay, buffer.data(), size));
        std::string want = whole.substr(0, size > 0 ? size - 1 : 0);
        want.resize(size, '\0');
        EXPECT_EQ(std::string(buffer.data(), size), want) << size;
        EXPECT_EQ(buffer[size], '#') << size;
    }
    EXPECT_EQ(Names::ChangeRinexFileName("a.b", Names::TARGET_ZIP, false, nullptr, 10), 1);
}

TEST(ProductsFileName, SpanOfAFile) {
    const std::tuple<const char*, double, double, int> rows[] = {
        {"29 minutes within a half-hour", 0.0, 1740.0, 1},
        {"29 minutes across one", 900.0, 2640.0, 2},
        {"30 minutes", 0.0, 1800.0, 2},
        {"one hour across noon", 41400.0, 45000.0, 3},
        {"just under 12 hours within a half-day", 0.0, 43199.999, 2},
        {"12 hours", 0.0, 43200.0, 3},
        {"a minute across the week's end", 604770.0, 604830.0, 3},
        {"backwards within a half-hour", 100.0, 0.0, 1}};
    for (const auto& [what, start, end, want] : rows) {
        EXPECT_EQ(Names::getFileNameType(SMjdTime(kWeek, start), SMjdTime(kWeek, end)), want) << what;
    }
}

TEST(ProductsFileName, ChangedRinexNames) {
    const std::tuple<const char*, int, bool, bool, bool, const char*> rows[] = {
        {"/data/site0010.22o", 0, false, false, false, "/data/site0010.22o"},
        {"/data/site0010.22o", 1, false, false, false, "/data/site0010.zip"},
        {"/data/site0010.22o", 2, false, false, true, "site0010o.gz"},
        {"C:\\data\\site0010.22o", 3, false, false, false, "C:\\data\\site0010o.Z"},
        {"a/b\\c.d/site", 2, false, false, true, "site.gz"},
        {"report.htm", 2, false, false, false, "reporth.gz"},
        {"X_01D_MO.rnx", 2, true, false, false, "X_01D_MO.rnx.gz"},
        {"X_01D_MO.obs", 1, true, true, false, "X_01D_MO.crx.zip"},
        {"dir/X_01D_MO.obs", 1, true, false, true, "X_01D_MO.rnx.zip"},
        {"a.b", 4, false, false, false, ""}};
    for (const auto& [before, type, longName, hatanaka, dropPath, want] : rows) {
        CString name("before");
        EXPECT_EQ(Names::ChangeRinexFileName(before, compression(type), longName, name, hatanaka, dropPath),
                  type < 4 ? 1 : 0);
        EXPECT_EQ(name, want) << before << ' ' << type;
    }
    const std::string longPath = std::string(300, 'd') + '/' + std::string(300, 'n') + ".22o";
    CString name;
    EXPECT_EQ(Names::ChangeRinexFileName(longPath.c_str(), Names::TARGET_NONE, false, name), 1);
    EXPECT_EQ(name.str(), std::string(256, 'd') + std::string(256, 'n') + ".22o") << "each part at most 256";
}

TEST(ProductsFileName, ChangedNamesOfOtherProducts) {
    const std::tuple<const char*, int, bool, bool, const char*> rows[] = {
        {"d/site.T02", 2, false, false, "d/site.gz"},  {"d/site.T02", 2, false, true, "d/site02.gz"},
        {"events.log", 2, false, false, "eventsl.gz"}, {"site.T02", 0, false, true, "site.T02"},
        {"events.log", 3, false, true, "eventsogl.Z"}, {"events.log", 1, false, false, "events.zip"},
        {"site.T2", 2, false, true, "site.gz"},        {"site.T02", 1, true, true, "site.rnx.zip"}};
    CString name;
    for (const auto change :
         {Change(Names::ChangeMdbFileName), Change(Names::ChangeQCFileName), Change(Names::ChangeEventLogFileName)}) {
        for (const auto& [before, type, longName, keepNumber, want] : rows) {
            EXPECT_EQ(change(before, compression(type), longName, name, keepNumber, false), 1);
            EXPECT_EQ(name, want) << before << ' ' << type;
        }
    }
    EXPECT_EQ(Names::CreateQCFileName("QC_", CGPSTime(2022, 3, 4, 5, 6, 7.9), name), 1);
    EXPECT_EQ(name, "QC_20220304_050607.log");
}
