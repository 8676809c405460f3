#include "formats/io/FixedNumber.h"

#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <sstream>
#include <string>

namespace halvex {
namespace {

double viaStrtod(std::string text) {
    for (char& c : text) {
        if (c == 'D' || c == 'd') c = 'e';
    }
    return std::strtod(text.c_str(), nullptr);
}

TEST(FixedNumber, NumbersAreWhatStrtodMakesOfThem) {
    std::istringstream texts(
        "0 -0.000 1. .5 -.353 +7 123456789012345 0.000000000000001 1.5D+02 -2.5d-3 1e5 9007199254740993 5E-324 "
        "179769313486231570000 0.1234567890123456789 1.7976931348623157D308 12345678901234567890.12345678901234567890");
    for (std::string text; texts >> text;) {
        double value = 99.0;
        ASSERT_EQ(parseDecimal(text, value), Field::number) << text;
        EXPECT_EQ(std::bit_cast<std::uint64_t>(value), std::bit_cast<std::uint64_t>(viaStrtod(text))) << text;
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

/// The fast way for F14.3 against strtod: numbers of every length and sign, and against the general way: every
/// character that may disturb, in every column.
TEST(FixedNumber, ObservationFieldsGoTheFastWayExactly) {
    std::mt19937_64 random(1980);
    std::array<char, 32> text{};
    std::int64_t limit = 1;
    for (int digits = 1; digits <= 13; ++digits) {
        limit *= 10;
        for (int i = 0; i < 20000; ++i) {
            std::int64_t mantissa = static_cast<std::int64_t>(random() % static_cast<std::uint64_t>(limit));
            if (digits < 13 && i % 2 == 0) mantissa = -mantissa;
            std::snprintf(text.data(), text.size(), "%14.3f", static_cast<double>(mantissa) / 1000.0);
            if (text[8] == ' ' && text[9] == '0') text[9] = ' ';  // FORTRAN may leave out the zero before the point
            double value = 0.0;
            ASSERT_EQ(parseF14d3(text.data(), value), Field::number) << text.data();
            ASSERT_EQ(value, viaStrtod(text.data())) << text.data();
        }
    }
}

/// The same for D19.12: exponents on both sides of what is exact, both forms of small numbers.
TEST(FixedNumber, NavigationFieldsGoTheFastWayExactly) {
    std::mt19937_64 random(1980);
    std::array<char, 32> text{};
    for (int i = 0; i < 200000; ++i) {
        const auto mantissa = static_cast<long long>(random() % 10000000000000U) * (i % 2 == 0 ? 1 : -1);
        const int exponent = static_cast<int>(random() % 199) - 99;
        if (i % 3 == 0) {
            std::snprintf(text.data(), text.size(), "%s.%012lldD%+03d", mantissa < 0 ? " -" : "  ",
                          std::abs(mantissa % 1000000000000), exponent);
        } else {
            std::snprintf(text.data(), text.size(), "%c%lld.%012llde%+03d", mantissa < 0 ? '-' : ' ',
                          std::abs(mantissa / 1000000000000), std::abs(mantissa % 1000000000000), exponent);
        }
        double value = 0.0;
        ASSERT_EQ(parseD19d12(text.data(), value), Field::number) << text.data();
        ASSERT_EQ(std::bit_cast<std::uint64_t>(value), std::bit_cast<std::uint64_t>(viaStrtod(text.data())))
            << text.data();
    }
}

TEST(FixedNumber, FastAndGeneralWayRefuseAlike) {
    for (const std::string base : {"  23629347.915", "-123456789.012", "9999999999.999", "         1.000"}) {
        for (std::size_t place = 0; place < 14 * 256; ++place) {
            std::string text = base;
            text[place / 256] = static_cast<char>(place % 256);
            double fast = 7.0;
            double general = 7.0;
            ASSERT_EQ(parseF14d3(text.data(), fast), parseDecimal(text, general)) << '"' << text << '"';
            ASSERT_EQ(std::bit_cast<std::uint64_t>(fast), std::bit_cast<std::uint64_t>(general)) << '"' << text << '"';
        }
    }
    for (const std::string base : {"-1.234567890123E-05", "  .123456789012d+09", "                   "}) {
        for (std::size_t place = 0; place < 19 * 256; ++place) {
            std::string text = base;
            text[place / 256] = static_cast<char>(place % 256);
            double fast = 7.0;
            double general = 7.0;
            ASSERT_EQ(parseD19d12(text.data(), fast), parseDecimal(text, general)) << '"' << text << '"';
            ASSERT_EQ(std::bit_cast<std::uint64_t>(fast), std::bit_cast<std::uint64_t>(general)) << '"' << text << '"';
        }
    }
}

}  // namespace
}  // namespace halvex
