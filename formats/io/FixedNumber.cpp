#include "formats/io/FixedNumber.h"

#include <algorithm>
#include <array>
#include <charconv>

#include "formats/io/Columns.h"

namespace halvex {
namespace {

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

/// Length of the run of digits at the start.
std::size_t digitsAtStart(std::string_view text) {
    return static_cast<std::size_t>(std::find_if_not(text.begin(), text.end(), isDigit) - text.begin());
}

/// A number whose form is already known to be right, its exponent letter included.
Field convertAny(std::string_view number, double& value) {
    std::array<char, 128> text{};
    if (number.size() > text.size()) return Field::bad;
    std::replace_copy_if(
        number.begin(), number.end(), text.begin(), [](char c) { return c == 'D' || c == 'd'; }, 'e');
    double result = 0.0;
    const auto [end, fault] = std::from_chars(text.data(), text.data() + number.size(), result);
    if (fault != std::errc() || end != text.data() + number.size()) return Field::bad;
    value = result;
    return Field::number;
}

}  // namespace

Field parseDecimal(std::string_view field, double& value) {
    std::string_view text = withoutBlanks(field);
    if (text.empty()) return Field::blank;
    const bool negative = text.front() == '-';
    if (negative || text.front() == '+') text.remove_prefix(1);

    const std::size_t whole = digitsAtStart(text);
    std::size_t decimals = 0;
    std::size_t end = whole;
    if (end < text.size() && text[end] == '.') {
        decimals = digitsAtStart(text.substr(end + 1));
        end += 1 + decimals;
    }
    if (whole + decimals == 0) return Field::bad;

    constexpr std::size_t kExactDigits = 15;  // every integer of so many digits is a double, and so is the power of ten
    double magnitude = 0.0;
    if (end == text.size() && whole + decimals <= kExactDigits) {
        static constexpr std::array<double, kExactDigits + 1> kPowersOfTen{
            1e0, 1e1, 1e2, 1e3, 1e4, 1e5, 1e6, 1e7, 1e8, 1e9, 1e10, 1e11, 1e12, 1e13, 1e14, 1e15};
        std::int64_t mantissa = 0;
        for (const char c : text) {
            if (c != '.') mantissa = mantissa * 10 + (c - '0');
        }
        magnitude = static_cast<double>(mantissa) / kPowersOfTen[decimals];
    } else {
        if (end != text.size()) {
            std::string_view exponent = text.substr(end);
            if (std::string_view("DdEe").find(exponent.front()) == std::string_view::npos) return Field::bad;
            exponent.remove_prefix(1);
            std::size_t skipped = 0;
            if (!exponent.empty() && (exponent.front() == '+' || exponent.front() == '-')) skipped = 1;
            exponent.remove_prefix(skipped);
            if (exponent.empty() || digitsAtStart(exponent) != exponent.size()) return Field::bad;
        }
        if (convertAny(text, magnitude) == Field::bad) return Field::bad;
    }
    value = negative ? -magnitude : magnitude;
    return Field::number;
}

Field parseInteger(std::string_view field, int& value) {
    std::string_view text = withoutBlanks(field);
    if (text.empty()) return Field::blank;
    const bool negative = text.front() == '-';
    if (negative || text.front() == '+') text.remove_prefix(1);
    constexpr std::size_t kMostDigits = 9;
    if (text.empty() || text.size() > kMostDigits || digitsAtStart(text) != text.size()) return Field::bad;
    int magnitude = 0;
    for (const char c : text) magnitude = magnitude * 10 + (c - '0');
    value = negative ? -magnitude : magnitude;
    return Field::number;
}

}  // namespace halvex
