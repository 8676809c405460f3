#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <utility>
#include <vector>

#include "halvex/files/CustomURL.h"
#include "tests/support/RandomFields.h"

namespace halvex::test {
namespace {

template <class... Values>
std::string print(const char* format, Values... values) {
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), format, values...);
    return text.data();
}

/// A placeholder through CTimeBase::Format and printf.
std::string byFormat(const CTimeBase& time, char letter, int width) {
    const auto text = [&](const char* pattern) { return time.Format(pattern).str(); };
    const auto plain = [&](int value) { return width < 0 ? print("%d", value) : print("%0*d", width, value); };
    const auto number = [&](const char* pattern) { return std::atoi(text(pattern).c_str()); };
    const auto digits = [&](const char* pattern, int narrow, int wide) {
        const int value = number(pattern);
        return width < 0 ? print("%.*d", narrow, value) : print("%*.*d", width, wide, value);
    };
    const auto name = [&](const char* pattern) { return print("%*s", std::max(width, 0), text(pattern).c_str()); };
    switch (letter) {
        case 'D':
            return plain(number("%d"));
        case 'G':
            return plain(time.GetGpsWeek());
        case 'H':
            return print("%*c", std::max(width, 0), 'a' + number("%H"));
        case 'M':
            return plain(number("%m"));
        case 'S':
            return "SITE";
        case 'U':
        case 'W':
            return digits("%U", 2, 2);
        case 'Y':
            return plain(number("%Y"));
        case 'a':
            return name("%a");
        case 'b':
            return name("%b");
        case 'd':
            return digits("%d", 2, 2);
        case 'h':
            return plain(number("%H"));
        case 'j':
            return digits("%j", 3, 3);
        case 'm':
            return digits("%m", 2, 2);
        case 't':
            return plain(number("%M"));
        case 'w':
            return digits("%w", 1, 2);
        case 'y':
            return plain(number("%y"));
        default:
            return "?";
    }
}

TEST(CustomUrl, EveryLetterIsThatOfFormat) {
    RandomFields random;
    std::vector<CTimeBase> times{CTimeBase(), CTimeBase(2147483647.0), CTimeBase(-2147483000.0)};
    for (const int year : {99, 100, 1899, 1900, 1979, 1980, 2000, 2005, 2020, 2021, 2100, 9999, 10000}) {
        for (const int month : {1, 2, 12}) times.emplace_back(year, month, 1, 0, 0, 0.0);
        times.emplace_back(year, 12, 31, 23, 59, 59.999999);
    }
    for (int i = 0; i < 2000; ++i) times.emplace_back(random.number(-700000.0, 3000000.0));
    for (const CTimeBase& time : times) {
        for (const char letter : std::string("DGHMSUWYabdhjmtwy")) {
            for (const int width : {-1, 0, 1, 2, 3, 5, 9}) {
                std::string placeholder(1, '%');
                if (width >= 0) placeholder += static_cast<char>('0' + width);
                placeholder += letter;
                ASSERT_EQ(CCustomURL::getCustomURL(time, "SITE", placeholder.c_str()).str(),
                          byFormat(time, letter, width))
                    << placeholder << " at MJD " << time.GetAsMjd();
            }
        }
    }
}

TEST(CustomUrl, TemplatesAsTheyAreUsed) {
    const CTimeBase time(2005, 3, 7, 0, 30, 5.0);  // a Monday, day 66, GPS week 1313
    const std::pair<const char*, const char*> rows[] = {
        {"", ""},
        {"ftp://x/%Y/%j/%S%j%H.%2yo", "ftp://x/2005/066/ABCD066a.05o"},
        {"%y %2y %D %2D %d %3d", "5 05 7 07 07  07"},
        {"%4G%w.sp3 %5G %w %3w", "13131.sp3 01313 1  01"},
        {"%U %W %4U %a-%b %5a", "10 10   10 Mon-Mar   Mon"},
        {"%h:%2t %3H %5S", "0:30   a ABCD"},
        {"%x%3x", "%x%x"},
        {"%", ""},
        {"abc%2", ""},
        {"%Y%q", ""},
        {"%%", ""},
        {"%22d", ""},
    };
    for (const auto& [pattern, url] : rows) {
        EXPECT_EQ(CCustomURL::getCustomURL(time, "ABCD", pattern, "x").str(), url) << pattern;
        const bool valid = *url != '\0' || *pattern == '\0';
        EXPECT_EQ(CCustomURL::VerifyCustomURL(pattern, "x"), valid ? 1 : 0) << pattern;
    }
    EXPECT_EQ(CCustomURL::getCustomURL(CTimeBase(123, 0.0), "", "%4G %G %S|").str(), "0123 123 |");
    EXPECT_EQ(CCustomURL::getCustomURL(CTimeBase(-1, 0.0), nullptr, "%4G %2S").str(), "-001 %S");
    EXPECT_EQ(CCustomURL::getCustomURL(CTimeBase(2005, 3, 7, 23, 59, 59.0), "", "%H").str(), "x");
    EXPECT_EQ(CCustomURL::getCustomFileName(time, "%S_%Y", "L%d"), "L%d_2005") << "what is put in is not expanded";
    EXPECT_EQ(CCustomURL::getCustomFileName(time, "%x", "A"), "");
    EXPECT_EQ(CCustomURL::getCustomURL(time, "A", nullptr).str(), "");
    EXPECT_EQ(CCustomURL::VerifyCustomURL(nullptr), 0);
}

TEST(CustomUrl, ABufferHoldsAllOrNothing) {
    const CTimeBase time(2005, 3, 7, 0, 30, 5.0);
    const std::string url = "2005/AB";
    for (std::size_t size = 0; size < url.size() + 3; ++size) {
        std::string buffer(16, '~');
        const bool fits = size > url.size();
        EXPECT_EQ(CCustomURL::getCustomURL(time, "AB", "%Y/%S", buffer.data(), size), fits) << size;
        EXPECT_EQ(buffer.substr(size), std::string(16 - size, '~')) << size;
        if (size == 0) continue;
        EXPECT_STREQ(buffer.c_str(), fits ? url.c_str() : "") << size;
    }
    EXPECT_FALSE(CCustomURL::getCustomURL(time, "AB", "%Y", nullptr, 10));
}

TEST(CustomUrl, WhichLettersOccur) {
    struct Row {
        const char* pattern;
        char letter;
        int want;
    };
    const Row rows[] = {{"%Y%2j", 'j', 1}, {"%Y%2j", 'Y', 1}, {"%Y%2j", 'd', 0}, {"%q%j", 'j', 0},
                        {"%j%q", 'j', 1},  {"%j%", 'j', 1},   {"%Y%", 'j', 0},   {"%Y%2", 'j', 0},
                        {"", 'j', 0},      {nullptr, 'j', 0}, {"j", 'j', 0}};
    for (const auto& [pattern, letter, want] : rows) {
        EXPECT_EQ(CCustomURL::IsCustomFormatAvailable(pattern, letter), want) << (pattern != nullptr ? pattern : "");
    }
}

TEST(CustomUrl, TimesOutOfTexts) {
    const CTimeBase start(2019, 1, 31, 13, 45, 6.789);
    struct Row {
        const char* pattern;
        const char* text;
        CTimeBase want;
    };
    const auto at = [](int year, int month, int day, int hour = 13) {
        return CTimeBase(year, month, day, hour, 45, 6.789);
    };
    const Row rows[] = {
        {"", "anything", start},
        {"abc", "xyz and more", start},
        {"%d", "15", at(2019, 1, 16)},
        {"%D.", "7.", at(2019, 1, 8)},
        {"%D", "32", at(2019, 2, 2)},
        {"%3d", " 07", at(2019, 1, 8)},
        {"%d%H", "15c", at(2019, 1, 16, 2)},
        {"%j", "366", at(2020, 1, 2)},
        {"%U", "52", at(2019, 12, 31)},
        {"%W", "01", at(2019, 1, 8)},
        {"%m", "13", at(2020, 1, 31)},
        {"%M-", "2-", at(2019, 3, 3)},
        {"%Y", "2100", at(2100, 1, 31)},
        {"%y", "5", at(2005, 1, 31)},
        {"%4G", "2100", at(2020, 4, 9)},
        {"%H", "x", at(2019, 1, 31, 23)},
        {"%Y/%d%m", "2020/0812", at(2020, 12, 9)},
    };
    for (const auto& [pattern, text, want] : rows) {
        CTimeBase time = start;
        EXPECT_TRUE(CCustomURL::ExtractTimeFromString(time, pattern, text)) << pattern;
        EXPECT_EQ(time, want) << pattern << ": " << time.Format("%Y-%m-%d %H:%M:%S").str();
    }
}

TEST(CustomUrl, RefusedTextsLeaveTheTime) {
    const std::pair<const char*, const char*> rows[] = {
        {"%d", "0"},      {"%d", "33"},  {"%D", "033"}, {"%D", "99999999999"}, {"%j", "000"},  {"%j", "367"},
        {"%U", "53"},     {"%W", "00"},  {"%m", "14"},  {"%M", "0"},           {"%Y", "1979"}, {"%Y", "2101"},
        {"%y", "x"},      {"%y", "-1"},  {"%G", "0"},   {"%G", "5966"},        {"%H", "A"},    {"%H", "y"},
        {"%H", ""},       {"%d", ""},    {"%d", " "},   {"%d", "+5"},          {"%S", "ABCD"}, {"%a", "Mon"},
        {"%b", "Jan"},    {"%h", "1"},   {"%t", "1"},   {"%w", "1"},           {"%x", "1"},    {"%", "1"},
        {"%Y%S", "2020"}, {"abc", "ab"}, {"%d.", "15"}, {"%2D%m", "1512"},
    };
    const CTimeBase start(2019, 1, 31, 13, 45, 6.789);
    for (const auto& [pattern, text] : rows) {
        CTimeBase time = start;
        EXPECT_FALSE(CCustomURL::ExtractTimeFromString(time, pattern, text)) << pattern << " " << text;
        EXPECT_EQ(time, start) << pattern << " " << text;
    }
    CTimeBase time = start;
    EXPECT_FALSE(CCustomURL::ExtractTimeFromString(time, nullptr, "1"));
    EXPECT_FALSE(CCustomURL::ExtractTimeFromString(time, "%d", nullptr));
}

}  // namespace
}  // namespace halvex::test
