#include "halvex/platform/pio/Rtcm3.h"

#include <array>

namespace PIO::RTCM3 {
namespace {

constexpr std::uint32_t kPolynomial = 0x1864CFB;

constexpr auto kTable = [] {
    std::array<std::uint32_t, 256> table{};
    for (std::uint32_t byte = 0; byte < table.size(); ++byte) {
        std::uint32_t crc = byte << 16U;
        for (int bit = 0; bit < 8; ++bit) {
            crc <<= 1U;
            if ((crc & 0x1000000U) != 0) crc ^= kPolynomial;
        }
        table[byte] = crc;
    }
    return table;
}();

}  // namespace

std::uint32_t ComputeCRC24(std::span<const unsigned char> bytes) {
    std::uint32_t crc = 0;
    for (const unsigned char byte : bytes) crc = (crc << 8U & 0xFFFFFFU) ^ kTable[(crc >> 16U) ^ byte];
    return crc;
}

bool ConvertIntToIntS(std::int64_t value, unsigned bits, std::uint32_t& coded) {
    const std::int64_t largest = (std::int64_t{1} << (bits - 1)) - 1;
    if (value > largest || value < -largest) return false;
    const auto magnitude = static_cast<std::uint32_t>(value < 0 ? -value : value);
    coded = magnitude | (value < 0 ? std::uint32_t{1} << (bits - 1) : 0U);
    return true;
}

bool CBitCollector::Add(std::uint32_t value, unsigned bits) {
    if (bits < 32 && value >> bits != 0) return false;
    if (m_bytes.size() * 8 - m_bit < bits) return false;
    for (unsigned left = bits; left > 0; --left, ++m_bit) {
        const unsigned bit = value >> (left - 1) & 1U;
        m_bytes[m_bit / 8] = static_cast<unsigned char>(m_bytes[m_bit / 8] | bit << (7 - m_bit % 8));
    }
    return true;
}

}  // namespace PIO::RTCM3
