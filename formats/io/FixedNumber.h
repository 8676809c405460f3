#pragma once

#include <bit>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace halvex {

/// What a fixed-width field holds.
enum class Field : std::uint8_t {
    number,
    blank,  ///< nothing but blanks, or nothing at all
    bad,    ///< anything else; the value is left alone
};

/// Decimal field as FORTRAN's Fw.d, Ew.d or Dw.d writes it: blanks around the number, a sign, digits with or without a
/// point, an exponent after D or E. The double nearest to the decimal, as strtod gives it, whatever the locale. Blanks
/// inside the number, other characters and numbers beyond the range of a double are bad.
[[nodiscard]] Field parseDecimal(std::string_view field, double& value);

/// Integer field (Iw) of up to nine digits, blanks around it and a sign allowed.
[[nodiscard]] Field parseInteger(std::string_view field, int& value);

namespace detail {

inline constexpr std::uint64_t kEveryByte = 0x0101010101010101U;

/// True when all bytes are the digits '0' to '9': high half 3, and still 3 when 6 is added.
[[nodiscard]] constexpr bool areDigits(std::uint64_t text) {
    constexpr std::uint64_t kHighHalves = 0xF0 * kEveryByte;
    return (((text & kHighHalves) ^ (0x30 * kEveryByte)) |
            (((text + 0x06 * kEveryByte) & kHighHalves) ^ (0x30 * kEveryByte))) == 0;
}

/// Value of eight digits, the first in the lowest byte: neighbours are joined to pairs, fours, eight.
[[nodiscard]] constexpr std::uint64_t valueOfDigits(std::uint64_t text) {
    text -= 0x30 * kEveryByte;
    text = text * 10 + (text >> 8U);
    constexpr std::uint64_t kPair = 0x000000FF000000FFU;
    return ((text & kPair) * (100 + (std::uint64_t{1000000} << 32U)) +
            ((text >> 16U) & kPair) * (1 + (std::uint64_t{10000} << 32U))) >>
           32U;
}

template <class T>
[[nodiscard]] inline T load(const char* text) {
    T word;
    std::memcpy(&word, text, sizeof word);
    return word;
}

}  // namespace detail

/// True when 16 characters are all blanks.
[[nodiscard]] inline bool areBlank16(const char* text) {
    constexpr std::uint64_t kBlanks = 0x20 * detail::kEveryByte;
    return ((detail::load<std::uint64_t>(text) ^ kBlanks) | (detail::load<std::uint64_t>(text + 8) ^ kBlanks)) == 0;
}

/// The observation field F14.3 in the 14 characters at `text`: result as parseDecimal gives it. Numbers that stand as
/// F14.3 writes them are read eight characters at a time; everything else goes the general way.
[[nodiscard]] inline Field parseF14d3(const char* text, double& value) {
    if constexpr (std::endian::native == std::endian::little) {
        // Columns 0 and 1, 2 to 9 (the last eight digits before the point), 10 to 13 (the point and three decimals).
        const auto front = detail::load<std::uint16_t>(text);
        auto middle = detail::load<std::uint64_t>(text + 2);
        const auto back = detail::load<std::uint32_t>(text + 10);
        constexpr std::uint64_t kBlanks = 0x20 * detail::kEveryByte;
        constexpr std::uint64_t kMinus = '-' ^ ' ';

        std::uint64_t high = 0;
        bool negative = false;
        bool usual = (back & 0xFFU) == '.';
        if (front == 0x2020) {
            // Bit 4 is set in digits, not in blanks and signs: the lowest one set is where the number begins.
            const std::uint64_t digitMarks = middle & (0x10 * detail::kEveryByte);
            const auto lead = static_cast<unsigned>(std::countr_zero(digitMarks)) & ~7U;
            if (lead < 64) {
                const std::uint64_t leadMask = (std::uint64_t{1} << lead) - 1;
                const std::uint64_t unlikeBlank = (middle ^ kBlanks) & leadMask;
                negative = unlikeBlank != 0;
                usual = usual && (!negative || unlikeBlank == (kMinus << (lead - 8)));
                middle = (middle & ~leadMask) | ((0x30 * detail::kEveryByte) & leadMask);
            } else {
                usual = false;
            }
        } else {
            const unsigned first = front & 0xFFU;
            const unsigned second = static_cast<unsigned>(front) >> 8U;
            const bool digits = second - '0' <= 9;
            negative = digits ? first == '-' : second == '-';
            usual =
                usual && (digits ? first == ' ' || first == '-' || first - '0' <= 9 : second == '-' && first == ' ');
            high = digits ? second - '0' + (first - '0' <= 9 ? (first - '0') * 10 : 0) : 0;
        }
        const std::uint64_t decimals = (std::uint64_t{back >> 8U} << 40U) | 0x3030303030U;
        if (usual && detail::areDigits(middle) && detail::areDigits(decimals)) {
            // At most 13 digits: mantissa and divisor are exact, so the quotient is rounded once.
            const std::uint64_t mantissa =
                (high * 100000000 + detail::valueOfDigits(middle)) * 1000 + detail::valueOfDigits(decimals);
            const double magnitude = static_cast<double>(static_cast<std::int64_t>(mantissa)) / 1000.0;
            value = negative ? -magnitude : magnitude;
            return Field::number;
        }
    }
    return parseDecimal(std::string_view(text, 14), value);
}

}  // namespace halvex
