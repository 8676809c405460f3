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

/// Characters with those of '0' taken off: digits become 0 to 9, nothing else does.
inline constexpr std::uint64_t kZeros = 0x30 * kEveryByte;

/// True when all bytes are 0 to 9: the high half is 0, and still is when 6 is added.
[[nodiscard]] constexpr bool areDigits(std::uint64_t bytes) {
    return ((bytes | (bytes + 0x06 * kEveryByte)) & (0xF0 * kEveryByte)) == 0;
}

/// Value of eight digits 0 to 9, the first in the lowest byte: neighbours are joined to pairs, fours, eight.
[[nodiscard]] constexpr std::uint64_t valueOfDigits(std::uint64_t digits) {
    digits = digits * 10 + (digits >> 8U);
    constexpr std::uint64_t kPair = 0x000000FF000000FFU;
    return ((digits & kPair) * (100 + (std::uint64_t{1000000} << 32U)) +
            ((digits >> 16U) & kPair) * (1 + (std::uint64_t{10000} << 32U))) >>
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
/// F14.3 writes them are read eight characters at a time; everything else goes the general way. Inlined by order: in a
/// loop over fields its many constants then stay in registers.
[[nodiscard, gnu::always_inline]] inline Field parseF14d3(const char* text, double& value) {
    if constexpr (std::endian::native == std::endian::little) {
        // Columns 0 and 1, 2 to 9 (the last eight digits before the point), 10 to 13 (the point and three decimals).
        const auto front = detail::load<std::uint16_t>(text);
        const auto middle = detail::load<std::uint64_t>(text + 2);
        std::uint64_t digits = middle ^ detail::kZeros;
        const std::uint32_t decimals = detail::load<std::uint32_t>(text + 10) ^ 0x3030302EU;  // the point becomes 0

        std::uint64_t high = 0;
        bool negative = false;
        bool usual = true;
        if (front == 0x2020) {
            // Bit 4 is set in digits, not in blanks and signs: the lowest one set is where the number begins.
            const std::uint64_t digitMarks = middle & (0x10 * detail::kEveryByte);
            const auto lead = static_cast<unsigned>(std::countr_zero(digitMarks | std::uint64_t{1} << 63U)) & 0x38U;
            const std::uint64_t leadMask = (std::uint64_t{1} << lead) - 1;
            const std::uint64_t unlikeBlank = (middle ^ (0x20 * detail::kEveryByte)) & leadMask;
            constexpr std::uint64_t kMinus = '-' ^ ' ';
            negative = unlikeBlank != 0;
            usual = !negative || unlikeBlank == (kMinus << (lead - 8));
            digits &= ~leadMask;
        } else {
            const unsigned first = front & 0xFFU;
            const unsigned second = static_cast<unsigned>(front) >> 8U;
            const bool twoDigits = first - '0' <= 9;
            negative = first == '-' || second == '-';
            usual = second - '0' <= 9 ? twoDigits || first == ' ' || first == '-' : second == '-' && first == ' ';
            high = second == '-' ? 0 : second - '0' + (twoDigits ? (first - '0') * 10 : 0);
        }
        const bool decimalsGood = ((decimals | (decimals + 0x06060600U)) & 0xF0F0F0FFU) == 0;
        if (usual && detail::areDigits(digits) && decimalsGood) {
            const std::uint32_t three = decimals >> 8U;  // first decimal in the lowest byte
            const std::uint32_t thousandths = ((three * 10 + (three >> 8U)) & 0xFFU) * 10 + (three >> 16U);
            // At most 13 digits: mantissa and divisor are exact, so the quotient is rounded once.
            const std::uint64_t mantissa = (high * 100000000 + detail::valueOfDigits(digits)) * 1000 + thousandths;
            const double magnitude = static_cast<double>(static_cast<std::int64_t>(mantissa)) / 1000.0;
            // The sign is set as a bit: as a branch it would be guessed wrong half of the time.
            value = std::bit_cast<double>(std::bit_cast<std::uint64_t>(magnitude) | std::uint64_t{negative} << 63U);
            return Field::number;
        }
    }
    return parseDecimal(std::string_view(text, 14), value);
}

/// The navigation field D19.12 in the 19 characters at `text`: result as parseDecimal gives it. Numbers with twelve
/// decimals and an exponent of two digits, as that format writes them ("-1.234567890123E-05", " -.123456789012D-04"),
/// are read eight characters at a time, and are one exact product or quotient when the power of ten is exact;
/// everything else goes the general way.
[[nodiscard]] inline Field parseD19d12(const char* text, double& value) {
    if constexpr (std::endian::native == std::endian::little) {
        const auto isDigit = [](unsigned c) { return c - '0' <= 9U; };
        const auto at = [text](int column) { return static_cast<unsigned>(static_cast<unsigned char>(text[column])); };
        const unsigned sign = at(0);
        const unsigned first = at(1);  // the digit before the point; a sign or a blank where it is left out
        const bool leading = isDigit(first);
        const bool negative = sign == '-' || (!leading && first == '-');
        const bool frontGood = leading ? sign == ' ' || sign == '-' : sign == ' ' && (first == ' ' || first == '-');
        const std::uint64_t digits = detail::load<std::uint64_t>(text + 3) ^ detail::kZeros;
        const std::uint64_t rest = (detail::load<std::uint64_t>(text + 7) ^ detail::kZeros) >> 32U;
        const unsigned letter = at(15) | 0x20U;
        const unsigned direction = at(16);
        const unsigned tens = at(17) - '0';
        const unsigned ones = at(18) - '0';
        if (frontGood && at(2) == '.' && detail::areDigits(digits) && detail::areDigits(rest) &&
            (letter == 'e' || letter == 'd') && (direction == '+' || direction == '-') && tens <= 9 && ones <= 9) {
            constexpr int kDecimals = 12;
            constexpr int kExactPower = 22;  // the highest power of ten that is a double
            static constexpr double kPowersOfTen[kExactPower + 1] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                                                     1e8,  1e9,  1e10, 1e11, 1e12, 1e13, 1e14, 1e15,
                                                                     1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};
            // The four digits behind the first eight lie in the upper half: as those of a number of eight.
            const std::uint64_t mantissa = (leading ? first - '0' : 0U) * std::uint64_t{1000000000000} +
                                           detail::valueOfDigits(digits) * 10000 + detail::valueOfDigits(rest << 32U);
            const int exponent = static_cast<int>(tens * 10 + ones);
            const int power = (direction == '-' ? -exponent : exponent) - kDecimals;
            if (mantissa == 0 || (power <= kExactPower && power >= -kExactPower)) {
                double magnitude = static_cast<double>(static_cast<std::int64_t>(mantissa));
                if (mantissa != 0) {
                    magnitude = power < 0 ? magnitude / kPowersOfTen[-power] : magnitude * kPowersOfTen[power];
                }
                value = negative ? -magnitude : magnitude;
                return Field::number;
            }
        }
    }
    return parseDecimal(std::string_view(text, 19), value);
}

}  // namespace halvex
