#include "halvex/status/SentenceText.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>

namespace halvex {
namespace {

constexpr int kMostDigits = 20;  // of 64 bits

constexpr std::array<char, 200> kPairs = [] {
    std::array<char, 200> pairs{};
    for (std::size_t i = 0; i < 100; ++i) {
        pairs[2 * i] = static_cast<char>('0' + i / 10);
        pairs[2 * i + 1] = static_cast<char>('0' + i % 10);
    }
    return pairs;
}();

/// Writes the digits of `value`, at least `digits`, so that they end before `end`. Where they begin.
char* digitsBefore(char* end, std::uint64_t value, int digits) {
    char* const latest = end - digits;
    char* at = end;
    for (; value >= 100; value /= 100) std::memcpy(at -= 2, &kPairs[value % 100 * 2], 2);
    if (value >= 10) {
        std::memcpy(at -= 2, &kPairs[value * 2], 2);
    } else if (value > 0) {
        *--at = static_cast<char>('0' + value);
    }
    while (at > latest) *--at = '0';
    return at;
}

}  // namespace

void SentenceText::put(std::string_view text) {
    if (!hasRoom(text.size())) return;
    std::memcpy(m_at, text.data(), text.size());
    m_at += text.size();
}

void SentenceText::number(std::uint32_t value, int digits) {
    std::array<char, kMostDigits> text;
    char* const end = text.data() + text.size();
    const char* begin = digitsBefore(end, value, std::max(digits, 1));
    put({begin, static_cast<std::size_t>(end - begin)});
}

void SentenceText::signedNumber(std::int32_t value, int digits) {
    const auto bits = static_cast<std::uint32_t>(value);
    if (value < 0) put('-');
    number(value < 0 ? 0U - bits : bits, value < 0 ? digits - 1 : digits);
}

void SentenceText::fixed(double value, int decimals, int width) {
    static constexpr std::array<double, 11> kScales{1e0, 1e1, 1e2, 1e3, 1e4, 1e5, 1e6, 1e7, 1e8, 1e9, 1e10};
    static constexpr std::array<std::uint64_t, 11> kUnits{1,       10,       100,       1000,       10000,      100000,
                                                          1000000, 10000000, 100000000, 1000000000, 10000000000};
    if (!std::isfinite(value)) return fail();
    if (std::signbit(value)) {
        put('-');
        --width;
    }
    const double magnitude = std::abs(value);
    const double scale = kScales[static_cast<std::size_t>(decimals)];
    const double product = magnitude * scale;
    constexpr double kExactWithHalves = 0x1p51;
    if (!(product < kExactWithHalves)) return fixedSlowly(magnitude, decimals, width);

    // product + error is what the decimal is to be rounded from, without any rounding before. The error is below half
    // of the product's last place: it decides where the product lies on a half, and only there.
    const double error = std::fma(magnitude, scale, -product);
    auto units = static_cast<std::uint64_t>(product);
    const double aboveHalf = product - static_cast<double>(units) - 0.5;
    if (aboveHalf > 0.0 || (aboveHalf == 0.0 && (error > 0.0 || (error == 0.0 && units % 2 != 0)))) ++units;

    std::array<char, 2 * kMostDigits> text;
    char* const end = text.data() + text.size();
    char* at = end;
    const std::uint64_t unit = kUnits[static_cast<std::size_t>(decimals)];
    if (decimals > 0) {
        at = digitsBefore(end, units % unit, decimals);
        *--at = '.';
    }
    at = digitsBefore(at, units / unit, std::clamp(width - static_cast<int>(end - at), 1, kMostDigits));
    put({at, static_cast<std::size_t>(end - at)});
}

void SentenceText::fixedSlowly(double magnitude, int decimals, int width) {
    std::array<char, std::numeric_limits<double>::max_exponent10 + kMostDigits> text;
    const auto [end, error] =
        std::to_chars(text.data(), text.data() + text.size(), magnitude, std::chars_format::fixed, decimals);
    if (error != std::errc()) return fail();
    const auto length = static_cast<int>(end - text.data());
    for (int i = length; i < width; ++i) put('0');
    put({text.data(), static_cast<std::size_t>(length)});
}

}  // namespace halvex
