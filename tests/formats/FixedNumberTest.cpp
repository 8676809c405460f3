#include "formats/io/FixedNumber.h"

#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <cstdio>
#include <cstdlib>
#include <random>
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
    for (const char* text : {"0",
                             "-0.000",
                             "1.",
                             ".5",
                             "-.353",
                             "+7",
                             "  12.5  ",
                             "4375274.",
                             "12345678901.123",
                             "123456789012345",
                             "0.000000000000001",
                             "-.123456789012",
                             "1.5D+02",
                             "-2.5d-3",
                             "1e5",
                             "9007199254740993",
                             "179769313486231570000",
                             "0.1234567890123456789",
                             "1.7976931348623157D308",
                             "12345678901234567890.12345678901234567890",
                             "5E-324"}) {
        double value = 99.0;
        ASSERT_EQ(parseDecimal(text, value), Field::number) << text;
        EXPECT_EQ(std::bit_cast<std::uint64_t>(value), std::bit_cast<std::uint64_t>(viaStrtod(text))) << text;
    }
}

TEST(FixedNumber, WhatIsNoNumberIsTold) {
    struct Row {
        const char* text;
        Field decimal;
        Field integer;
    };
    const Row rows[] = {
        {"", Field::blank, Field::blank},
        {"      ", Field::blank, Field::blank},
        {"1 2", Field::bad, Field::bad},
        {"- 1", Field::bad, Field::bad},
        {".", Field::bad, Field::bad},
        {"-", Field::bad, Field::bad},
        {"--1", Field::bad, Field::bad},
        {"1.2.3", Field::bad, Field::bad},
        {"1,5", Field::bad, Field::bad},
        {"\t1", Field::bad, Field::bad},
        {"1e", Field::bad, Field::bad},
        {"1e+", Field::bad, Field::bad},
        {"e5", Field::bad, Field::bad},
        {"inf", Field::bad, Field::bad},
        {"nan", Field::bad, Field::bad},
        {"0x10", Field::bad, Field::bad},
        {"1e999", Field::bad, Field::bad},
        {"1F5", Field::bad, Field::bad},
        {"1234567890", Field::number, Field::bad},
        {"-123456789", Field::number, Field::number},
    };
    for (const Row& row : rows) {
        double decimal = 7.0;
        int integer = 7;
        EXPECT_EQ(parseDecimal(row.text, decimal), row.decimal) << row.text;
        EXPECT_EQ(parseInteger(row.text, integer), row.integer) << row.text;
        EXPECT_TRUE(row.decimal == Field::number || decimal == 7.0) << row.text;
        EXPECT_TRUE(row.integer == Field::number || integer == 7) << row.text;
    }
}

/// The fast way for F14.3 against strtod: numbers of every length and sign, and against the general way: every
/// character that may disturb, in every column.
TEST(FixedNumber, ObservationFieldsGoTheFastWayExactly) {
    std::mt19937_64 random(1980);
    std::array<char, 32> text{};
    for (int digits = 1; digits <= 13; ++digits) {
        for (int i = 0; i < 20000; ++i) {
            std::int64_t limit = 1;
            for (int k = 0; k < digits; ++k) limit *= 10;
            std::int64_t mantissa = static_cast<std::int64_t>(random() % static_cast<std::uint64_t>(limit));
            if (digits < 13 && i % 2 == 0) mantissa = -mantissa;
            std::snprintf(text.data(), text.size(), "%14.3f", static_cast<double>(mantissa) / 1000.0);
            if (text[8] == ' ' && text[9] == '0') text[9] = ' ';  // FORTRAN may leave out the zero before the point
            double value = 0.0;
            ASSERT_EQ(parseF14d3(text.data(), value), Field::number) << text.data();
            ASSERT_EQ(std::bit_cast<std::uint64_t>(value), std::bit_cast<std::uint64_t>(viaStrtod(text.data())))
                << text.data();
        }
    }
}

TEST(FixedNumber, FastAndGeneralWayRefuseAlike) {
    for (const char* base :
         {"  23629347.915", "-123456789.012", "9999999999.999", "         1.000", "              "}) {
        for (std::size_t column = 0; column < 14; ++column) {
            for (int c = 1; c < 256; ++c) {
                std::string text = base;
                text[column] = static_cast<char>(c);
                double fast = 7.0;
                double general = 7.0;
                ASSERT_EQ(parseF14d3(text.data(), fast), parseDecimal(text, general)) << '"' << text << '"';
                ASSERT_EQ(std::bit_cast<std::uint64_t>(fast), std::bit_cast<std::uint64_t>(general))
                    << '"' << text << '"';
            }
        }
    }
}

}  // namespace
}  // namespace halvex
