#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <cstdlib>

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

/// What a letter takes from CTimeBase::Format and how printf prints it, without and with a width.
struct Letter {
    char letter;
    const char *pattern, *narrow, *wide;
};
constexpr Letter kLetters[] = {
    {'D', "%d", "%d", "%0*d"},    {'M', "%m", "%d", "%0*d"},    {'Y', "%Y", "%d", "%0*d"},
    {'h', "%H", "%d", "%0*d"},    {'t', "%M", "%d", "%0*d"},    {'y', "%y", "%d", "%0*d"},
    {'U', "%U", "%.2d", "%*.2d"}, {'W', "%W", "%.2d", "%*.2d"}, {'d', "%d", "%.2d", "%*.2d"},
    {'m', "%m", "%.2d", "%*.2d"}, {'j', "%j", "%.3d", "%*.3d"}, {'w', "%w", "%.1d", "%*.2d"},
    {'a', "%a", "%s", "%*s"},     {'b', "%b", "%s", "%*s"},     {'H', "%H", "%c", "%*c"},
    {'G', "", "%d", "%0*d"},
};

std::string byFormat(const CTimeBase& time, const Letter& letter, int width) {
    const std::string text = time.Format(letter.pattern).str();
    const auto printed = [&](auto value) {
        return width < 0 ? print(letter.narrow, value) : print(letter.wide, width, value);
    };
    if (letter.narrow[1] == 's') return printed(text.c_str());
    if (letter.letter == 'G') return printed(time.GetGpsWeek());
    return printed(std::atoi(text.c_str()) + (letter.letter == 'H' ? 'a' : 0));
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
        for (const Letter& letter : kLetters) {
            for (const int width : {-1, 0, 1, 2, 3, 5, 9}) {
                std::string placeholder(1, '%');
                if (width >= 0) placeholder += static_cast<char>('0' + width);
                placeholder += letter.letter;
                ASSERT_EQ(CCustomURL::getCustomURL(time, "SITE", placeholder.c_str()).str(),
                          byFormat(time, letter, width))
                    << placeholder << " at MJD " << time.GetAsMjd();
            }
        }
    }
}

TEST(CustomUrl, TemplatesAsTheyAreUsed) {
    const CTimeBase time(2005, 3, 7, 0, 30, 5.0);  // a Monday, day 66, GPS week 1313
    const std::pair<const char*, const char*> rows[] = {{"", ""},
                                                        {"ftp://x/%Y/%j/%S%j%H.%2yo", "ftp://x/2005/066/ABCD066a.05o"},
                                                        {"%4G%w.sp3 %5G %w %3w", "13131.sp3 01313 1  01"},
                                                        {"%a-%b %h:%2t %3H %5S", "Mon-Mar 0:30   a ABCD"},
                                                        {"%x%3x", "%x%x"}};
    for (const auto& [pattern, url] : rows) {
        EXPECT_EQ(CCustomURL::getCustomURL(time, "ABCD", pattern, "x").str(), url) << pattern;
        EXPECT_EQ(CCustomURL::VerifyCustomURL(pattern, "x"), 1) << pattern;
    }
    for (const char* bad : {"%", "abc%2", "%Y%q", "%%", "%22d"}) {
        EXPECT_EQ(CCustomURL::getCustomURL(time, "ABCD", bad, "x").str(), "") << bad;
        EXPECT_EQ(CCustomURL::VerifyCustomURL(bad, "x"), 0) << bad;
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
    for (std::size_t size = 0; size < 10; ++size) {
        std::string buffer(16, '~');
        const bool fits = size > 7;
        EXPECT_EQ(CCustomURL::getCustomURL(CTimeBase(2111, 0.0), "ABC", "%G%S", buffer.data(), size), fits) << size;
        const std::string want = size == 0 ? "" : fits ? std::string("2111ABC", 8) : std::string(1, '\0');
        EXPECT_EQ(buffer, want + std::string(16 - want.size(), '~')) << size;
    }
    EXPECT_FALSE(CCustomURL::getCustomURL(CTimeBase(), "", "%Y", nullptr, 10));
}

TEST(CustomUrl, WhichLettersOccur) {
    const std::pair<const char*, int> rows[] = {{"%Y%2j", 1}, {"%j%q", 1}, {"%q%j", 0}, {"%Y%", 0},
                                                {"%Y%2", 0},  {"j", 0},    {nullptr, 0}};
    for (const auto& [pattern, want] : rows) EXPECT_EQ(CCustomURL::IsCustomFormatAvailable(pattern, 'j'), want);
}

const CTimeBase kStart(2019, 1, 31, 13, 45, 6.789);

TEST(CustomUrl, TimesOutOfTexts) {
    const std::array<const char*, 3> rows[] = {
        {"abc", "xyzw", "190131 13"}, {"%D.", "7.", "190108 13"},   {"%D", "32", "190202 13"},
        {"%3d", " 07", "190108 13"},  {"%d%H", "15c", "190116 02"}, {"%j", "366", "200102 13"},
        {"%U", "52", "191231 13"},    {"%W", "01", "190108 13"},    {"%m", "13", "200131 13"},
        {"%M-", "2-", "190303 13"},   {"%Y", "2099", "990131 13"},  {"%y", "5", "050131 13"},
        {"%4G", "2100", "200409 13"}, {"%H", "x", "190131 23"},     {"%Y/%d%m", "2020/0812", "201209 13"}};
    for (const auto& [pattern, text, want] : rows) {
        CTimeBase time = kStart;
        EXPECT_TRUE(CCustomURL::ExtractTimeFromString(time, pattern, text)) << pattern;
        EXPECT_EQ(time.Format("%y%m%d %H").str(), want) << pattern;
        EXPECT_EQ(time.GetCalendar().second, 6.789) << pattern;
    }
}

TEST(CustomUrl, RefusedTextsLeaveTheTime) {
    const std::pair<const char*, const char*> rows[] = {
        {"%d", "0"},      {"%d", "33"},  {"%D", "033"}, {"%D", "99999999999"}, {"%j", "000"},  {"%j", "367"},
        {"%U", "53"},     {"%W", "00"},  {"%m", "14"},  {"%M", "0"},           {"%Y", "1979"}, {"%Y", "2101"},
        {"%y", "x"},      {"%y", "-1"},  {"%G", "0"},   {"%G", "5966"},        {"%H", "A"},    {"%H", "y"},
        {"%H", ""},       {"%d", ""},    {"%d", " "},   {"%d", "+5"},          {"%S", "ABCD"}, {"%a", "Mon"},
        {"%b", "Jan"},    {"%h", "1"},   {"%t", "1"},   {"%w", "1"},           {"%x", "1"},    {"%", "1"},
        {"%Y%S", "2020"}, {"abc", "ab"}, {"%d.", "15"}, {"%2D%m", "1512"}};
    for (const auto& [pattern, text] : rows) {
        CTimeBase time = kStart;
        EXPECT_FALSE(CCustomURL::ExtractTimeFromString(time, pattern, text)) << pattern << " " << text;
        EXPECT_EQ(time, kStart) << pattern << " " << text;
    }
    CTimeBase time = kStart;
    EXPECT_FALSE(CCustomURL::ExtractTimeFromString(time, nullptr, "1"));
    EXPECT_FALSE(CCustomURL::ExtractTimeFromString(time, "%d", nullptr));
}

}  // namespace
}  // namespace halvex::test
