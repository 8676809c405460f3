#include "halvex/status/SentenceText.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>

namespace halvex {
namespace {

/// Room for any number of the quick way: 16 digits and the point, or a width.
constexpr int kMostDigits = 20;

constexpr std::array<char, 200> kPairs = [] {
    std::array<char, 200> pairs{};
    for (std::size_t i = 0; i < 100; ++i) {
        pairs[2 * i] = static_cast<char>('0' + i / 10);
        pairs[2 * i + 1] = static_cast<char>('0' + i % 10);
    }
    return pairs;
}();

/// Decimal digits of a number; 0 has one.
int digitCount(std::uint64_t value) {
    int count = 1;
    for (; value >= 10000; value /= 10000) count += 4;
    return count + (value >= 10 ? 1 : 0) + (value >= 100 ? 1 : 0) + (value >= 1000 ? 1 : 0);
}

/// Writes the last `count` digits of `value`, zeros in front where it has fewer.
void putDigits(char* at, std::uint64_t value, int count) {
    for (; count >= 2; count -= 2, value /= 100) std::memcpy(at + count - 2, &kPairs[value % 100 * 2], 2);
    if (count == 1) *at = static_cast<char>('0' + value % 10);
}

constexpr std::int64_t powerOfTen(int exponent) {
    return exponent == 0 ? 1 : 10 * powerOfTen(exponent - 1);
}

}  // namespace

void SentenceText::put(std::string_view text) {
    if (!hasRoom(text.size())) return;
    std::memcpy(m_at, text.data(), text.size());
    m_at += text.size();
}

void SentenceText::number(std::uint32_t value, int digits) {
    const int count = std::max(digits, digitCount(value));
    if (!hasRoom(static_cast<std::size_t>(count))) return;
    putDigits(m_at, value, count);
    m_at += count;
}

void SentenceText::signedNumber(std::int32_t value, int digits) {
    const auto bits = static_cast<std::uint32_t>(value);
    if (value < 0) put('-');
    number(value < 0 ? 0U - bits : bits, value < 0 ? digits - 1 : digits);
}

template <int kDecimals>
void SentenceText::fixed(double value, int width) {
    constexpr std::int64_t kUnit = powerOfTen(kDecimals);
    constexpr auto kScale = static_cast<double>(kUnit);
    constexpr double kExactWithHalves = 0x1p51;
    if (std::signbit(value)) {
        put('-');
        --width;
    }
    const double magnitude = std::abs(value);
    const double product = magnitude * kScale;
    if (!(product < kExactWithHalves) || m_end - m_at < kMostDigits) return fixedSlowly(magnitude, kDecimals, width);

    auto units = static_cast<std::int64_t>(product);
    const double aboveHalf = product - static_cast<double>(units) - 0.5;
    if (aboveHalf > 0.0) {
        ++units;
    } else if (aboveHalf == 0.0) {
        // On a half after rounding the product, whose error is below half of its last place: the error decides.
        const double error = std::fma(magnitude, kScale, -product);
        if (error > 0.0 || (error == 0.0 && units % 2 != 0)) ++units;
    }
    const auto whole = static_cast<std::uint64_t>(units / kUnit);
    const int count = std::max(width - kDecimals - 1, digitCount(whole));
    putDigits(m_at, whole, count);
    m_at[count] = '.';
    putDigits(m_at + count + 1, static_cast<std::uint64_t>(units % kUnit), kDecimals);
    m_at += count + 1 + kDecimals;
}
template void SentenceText::fixed<1>(double, int);
template void SentenceText::fixed<2>(double, int);
template void SentenceText::fixed<3>(double, int);
template void SentenceText::fixed<4>(double, int);
template void SentenceText::fixed<6>(double, int);
template void SentenceText::fixed<7>(double, int);
template void SentenceText::fixed<10>(double, int);

void SentenceText::fixedSlowly(double magnitude, int decimals, int width) {
    if (!std::isfinite(magnitude)) return fail();
    std::array<char, std::numeric_limits<double>::max_exponent10 + kMostDigits> text;
    const auto [end, error] =
        std::to_chars(text.data(), text.data() + text.size(), magnitude, std::chars_format::fixed, decimals);
    if (error != std::errc()) return fail();
    const auto length = static_cast<int>(end - text.data());
    for (int i = length; i < width; ++i) put('0');
    put({text.data(), static_cast<std::size_t>(length)});
}

}  // namespace halvex
