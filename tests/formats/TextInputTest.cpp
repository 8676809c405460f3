#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <random>
#include <sstream>
#include <string>

#include "formats/io/FixedNumber.h"
#include "formats/io/LineReader.h"
#include "tests/formats/Gzip.h"

namespace halvex {
namespace {

TEST(FixedNumber, NumbersAreWhatTheCompilerMakesOfThem) {
    const std::pair<const char*, double> rows[] = {
        {"-0.000", -0.0},
        {"-.353", -0.353},
        {"+7", 7.0},
        {"1.5D+02", 150.0},
        {"-2.5d-3", -0.0025},
        {"9007199254740993", 9007199254740993.0},
        {"1.7976931348623157D308", 1.7976931348623157e308},
        {"12345678901234567890.12345678901234567890", 12345678901234567890.12345678901234567890}};
    for (const auto& [text, want] : rows) {
        double value = 99.0;
        ASSERT_EQ(parseDecimal(text, value), Field::number) << text;
        EXPECT_EQ(std::bit_cast<std::uint64_t>(value), std::bit_cast<std::uint64_t>(want)) << text;
    }
}

TEST(FixedNumber, WhatIsNoNumberIsTold) {
    double decimal = 7.0;
    int integer = 7;
    std::istringstream texts("1 2|- 1|.|-|--1|1.2.3|1,5|\t1|1e|1e+|e5|inf|nan|0x10|1e999|1F5");
    for (std::string text; std::getline(texts, text, '|');) {
        EXPECT_EQ(parseDecimal(text, decimal), Field::bad) << text;
        EXPECT_EQ(parseInteger(text, integer), Field::bad) << text;
    }
    EXPECT_EQ(parseInteger("1234567890", integer), Field::bad);
    EXPECT_EQ(parseDecimal("", decimal), Field::blank);
    EXPECT_EQ(parseInteger("   ", integer), Field::blank);
    EXPECT_TRUE(decimal == 7.0 && integer == 7);
    EXPECT_EQ(parseInteger("-123456789", integer), Field::number);
    EXPECT_EQ(integer, -123456789);
}

/// A fast way of numbers against the general one.
void expectAlike(Field (*parse)(const char*, double&), const std::string& text) {
    double fast = 7.0, general = 7.0;
    ASSERT_EQ(parse(text.data(), fast), parseDecimal(text, general)) << '"' << text << '"';
    ASSERT_EQ(std::bit_cast<std::uint64_t>(fast), std::bit_cast<std::uint64_t>(general)) << '"' << text << '"';
}

TEST(FixedNumber, FastAndGeneralWayAreAlike) {
    // Every character that may disturb, in every column.
    for (const std::string base : {"  23629347.915", "-123456789.012", "9999999999.999", "         1.000",
                                   "-1.234567890123E-05", "  .123456789012d+09", "                   "}) {
        for (std::size_t place = 0; place < base.size() * 256; ++place) {
            std::string text = base;
            text[place / 256] = static_cast<char>(place % 256);
            expectAlike(base.size() == 14 ? parseF14d3 : parseD19d12, text);
        }
    }
    std::mt19937_64 random(1980);
    for (int i = 0; i < 100000; ++i) {
        std::string text = std::to_string(1000000000000U + random() % 9000000000000U);
        text = (i % 2 == 0 ? " " : "-") + text.insert(1, ".") + (i % 3 == 0 ? "D+" : "D-") +
               std::to_string(100 + random() % 100).substr(1);
        expectAlike(parseD19d12, text);
    }
}

/// The lines, a bar behind each, and what is wrong behind them.
std::string story(const std::string& bytes) {
    LineReader reader;
    reader.openBytes("f", bytes);
    std::string told;
    while (const auto line = reader.next()) told.append(*line) += '|';
    return reader.error() ? told + reader.error()->text() : told;
}

TEST(LineReader, EndsOfLinesAndWhatIsNoText) {
    const std::string longest(LineReader::kLongestLine, 'x');
    const std::string tooLong = "a|f:2: a line of more than 65536 bytes; this is no text file";
    const std::pair<std::string, std::string> rows[] = {
        {"", ""},
        {"a\r\n\r\nb\r", "a||b|"},
        {"\n\nc\n", "||c|"},
        {"\x1f", "\x1f|"},
        {longest + '\n', longest + '|'},
        {longest, longest + '|'},
        {"a\n" + longest + "x\nb\n", tooLong},
        {"a\n" + longest + longest + longest, tooLong},
        {std::string("a\nb\0c\nd\n", 8), "a|f:2: a NUL byte; this is no text file"},
        {"\x1f\x9d...", "f:1: is packed by compress (.Z); unpack it first"},
    };
    for (const auto& [bytes, want] : rows) EXPECT_EQ(story(bytes), want);
}

TEST(LineReader, DamagedCompressionGivesItsGoodLinesThenTheFault) {
    std::string text;
    for (int i = 0; i < 3000; ++i) text += "line " + std::to_string(i * 7919) + '\n';
    const std::string packed = test::gzip(text), all = story(text);
    const std::size_t size = packed.size();
    for (std::size_t length = 2; length < size; length += length < 40 || length + 40 > size ? 1 : 211) {
        const std::string cut = story(packed.substr(0, length));
        const std::size_t end = cut.rfind('|') + 1;
        EXPECT_TRUE(all.starts_with(cut.substr(0, end))) << length;
        EXPECT_EQ(cut.substr(end),
                  "f:" + std::to_string(std::ranges::count(cut, '|') + 1) + ": the compressed file is cut off");
    }
    for (std::size_t at = 10; at < size; at += 97) {  // before it, time stamp and system are free
        std::string damaged = packed;
        damaged[at] = static_cast<char>(damaged[at] ^ 0x55);
        EXPECT_NE(story(damaged).find("f:"), std::string::npos) << at;
    }
    EXPECT_TRUE(story(packed + "garbage").starts_with(all + "f:3001: the compressed file is damaged"));
    EXPECT_EQ(story(packed + packed), all + all) << "a second member";
}

}  // namespace
}  // namespace halvex
