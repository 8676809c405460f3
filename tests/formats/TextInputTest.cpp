#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <random>
#include <sstream>
#include <string>
#include <vector>

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
    double fast = 7.0;
    double general = 7.0;
    ASSERT_EQ(parse(text.data(), fast), parseDecimal(text, general)) << '"' << text << '"';
    ASSERT_EQ(std::bit_cast<std::uint64_t>(fast), std::bit_cast<std::uint64_t>(general)) << '"' << text << '"';
}

TEST(FixedNumber, FastAndGeneralWayAreAlike) {
    // Every character that may disturb, in every column.
    const auto disturb = [](Field (*parse)(const char*, double&), const std::string& base) {
        for (std::size_t place = 0; place < base.size() * 256; ++place) {
            std::string text = base;
            text[place / 256] = static_cast<char>(place % 256);
            expectAlike(parse, text);
        }
    };
    for (const char* base : {"  23629347.915", "-123456789.012", "9999999999.999", "         1.000"}) {
        disturb(parseF14d3, base);
    }
    for (const char* base : {"-1.234567890123E-05", "  .123456789012d+09", "                   "}) {
        disturb(parseD19d12, base);
    }
    std::mt19937_64 random(1980);
    for (int i = 0; i < 100000; ++i) {
        std::string text = std::to_string(1000000000000U + random() % 9000000000000U);
        const std::string exponent = std::to_string(100 + random() % 100).substr(1);
        text = (i % 2 == 0 ? " " : "-") + text.substr(0, 1) + "." + text.substr(1) + "D" + (i % 3 == 0 ? "+" : "-") +
               exponent;
        expectAlike(parseD19d12, text);
    }
}

struct Lines {
    std::vector<std::string> lines;
    std::string error;
};

Lines linesOf(const std::string& bytes) {
    LineReader reader;
    reader.openBytes("f", bytes);
    Lines result;
    while (const auto line = reader.next()) result.lines.emplace_back(*line);
    if (reader.error()) result.error = reader.error()->text();
    return result;
}

TEST(LineReader, EndsOfLines) {
    using Want = std::vector<std::string>;
    EXPECT_EQ(linesOf("").lines, Want());
    EXPECT_EQ(linesOf("a\r\n\r\nb\r").lines, Want({"a", "", "b"}));
    EXPECT_EQ(linesOf("\n\nc\n").lines, Want({"", "", "c"}));
    EXPECT_EQ(linesOf("\x1f").lines, Want({"\x1f"}));
}

TEST(LineReader, WhatIsNoTextIsRefusedWithItsLine) {
    const std::string longest(LineReader::kLongestLine, 'x');
    EXPECT_EQ(linesOf(longest + '\n').lines.size(), 1U);
    EXPECT_EQ(linesOf(longest).lines.size(), 1U);
    for (const std::string& tooLong : {longest + "x\nb\n", longest + longest + longest}) {
        EXPECT_EQ(linesOf("a\n" + tooLong).error, "f:2: a line of more than 65536 bytes; this is no text file");
    }
    const Lines nul = linesOf(std::string("a\nb\0c\nd\n", 8));
    EXPECT_EQ(nul.lines, std::vector<std::string>({"a"}));
    EXPECT_EQ(nul.error, "f:2: a NUL byte; this is no text file");
    EXPECT_EQ(linesOf("\x1f\x9d...").error, "f:1: is packed by compress (.Z); unpack it first");
}

TEST(LineReader, DamagedCompressionGivesItsGoodLinesThenTheFault) {
    std::string text;
    for (int i = 0; i < 3000; ++i) text += "line " + std::to_string(i * 7919) + '\n';
    const std::string packed = test::gzip(text);
    const std::vector<std::string> all = linesOf(text).lines;
    const std::size_t size = packed.size();
    for (std::size_t length = 2; length < size; length += length < 40 || length + 40 > size ? 1 : 211) {
        const Lines cut = linesOf(packed.substr(0, length));
        EXPECT_EQ(cut.error, "f:" + std::to_string(cut.lines.size() + 1) + ": the compressed file is cut off")
            << length;
        ASSERT_LE(cut.lines.size(), all.size());
        EXPECT_TRUE(std::equal(cut.lines.begin(), cut.lines.end(), all.begin())) << length;
    }
    for (std::size_t at = 10; at < size; at += 97) {  // before it, time stamp and system are free
        std::string damaged = packed;
        damaged[at] = static_cast<char>(damaged[at] ^ 0x55);
        EXPECT_NE(linesOf(damaged).error, "") << at;
    }
    EXPECT_NE(linesOf(packed + "garbage").error.find("the compressed file is damaged"), std::string::npos);
    EXPECT_EQ(linesOf(packed + "garbage").lines, all);
}

}  // namespace
}  // namespace halvex
