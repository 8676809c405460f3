#include "formats/io/LineReader.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "tests/formats/Gzip.h"

namespace halvex {
namespace {

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

/// Lines of every length up to a few hundred, more than two blocks of them.
TEST(LineReader, LinesCrossBlocksPlainAndCompressed) {
    std::string text;
    for (std::size_t i = 0; text.size() < 400000; ++i) text += std::string(i % 301, 'x') + std::to_string(i) + '\n';
    const std::size_t half = text.size() / 2;
    for (const std::string& bytes :
         {text, test::gzip(text), test::gzip(text.substr(0, half)) + test::gzip(text.substr(half))}) {
        const Lines result = linesOf(bytes);
        std::string joined;
        for (const std::string& line : result.lines) joined += line + '\n';
        EXPECT_EQ(joined, text);
        EXPECT_EQ(result.error, "");
    }
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
