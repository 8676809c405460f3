#include "halvex/platform/pio/Rtcm3.h"

#include <array>

namespace PIO::RTCM3 {
namespace {

/// The polynomial and every remainder in the upper 24 bits of a word, so that no step has to mask.
constexpr std::uint32_t kPolynomial = 0x864CFB00;
constexpr std::size_t kSlices = 8;

/// What a byte leaves when 0 to 7 bytes follow it: eight bytes are taken in one step.
constexpr auto kTables = [] {
    std::array<std::array<std::uint32_t, 256>, kSlices> tables{};
    for (std::uint32_t byte = 0; byte < 256; ++byte) {
        std::uint32_t crc = byte << 24U;
        for (int bit = 0; bit < 8; ++bit) crc = crc << 1U ^ ((crc >> 31U) != 0 ? kPolynomial : 0U);
        tables[0][byte] = crc;
    }
    for (std::size_t slice = 1; slice < kSlices; ++slice) {
        for (std::size_t byte = 0; byte < 256; ++byte) {
            const std::uint32_t before = tables[slice - 1][byte];
            tables[slice][byte] = before << 8U ^ tables[0][before >> 24U];
        }
    }
    return tables;
}();

}  // namespace

std::uint32_t ComputeCRC24(std::span<const unsigned char> bytes) {
    std::uint32_t crc = 0;
    while (bytes.size() >= kSlices) {
        crc = kTables[7][bytes[0] ^ crc >> 24U] ^ kTables[6][bytes[1] ^ (crc >> 16U & 0xFFU)] ^
              kTables[5][bytes[2] ^ (crc >> 8U & 0xFFU)] ^ kTables[4][bytes[3]] ^ kTables[3][bytes[4]] ^
              kTables[2][bytes[5]] ^ kTables[1][bytes[6]] ^ kTables[0][bytes[7]];
        bytes = bytes.subspan(kSlices);
    }
    for (const unsigned char byte : bytes) crc = crc << 8U ^ kTables[0][crc >> 24U ^ byte];
    return crc >> 8U;
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
