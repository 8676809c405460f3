#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "halvex/platform/Export.h"

/// Bit coding, check sum and issue of data as RTCM 10403.3 defines them for its version 3 messages. Plain functions.
namespace PIO::RTCM3 {

/// CRC-24Q: polynomial 0x1864CFB, start 0, highest bit first (RTCM 10403.3, 4.2.2).
[[nodiscard]] HALVEX_EXPORT std::uint32_t ComputeCRC24(std::span<const unsigned char> bytes);

/// Sign and magnitude (data type intS): the highest of `bits` bits is the sign. False, leaving `coded` alone, when the
/// magnitude needs more than bits - 1. 2 <= bits <= 32.
[[nodiscard]] HALVEX_EXPORT bool ConvertIntToIntS(std::int64_t value, unsigned bits, std::uint32_t& coded);

/// Issue of data of a GLONASS ephemeris (DF392): the seven bits of tb.
[[nodiscard]] constexpr std::uint8_t generateGLONASSIOD(std::uint8_t tb) {
    return tb & 0x7FU;
}

/// Fills a caller's zeroed bytes with numbers of any width, highest bit first. One thread at a time.
class HALVEX_EXPORT CBitCollector {
public:
    explicit CBitCollector(std::span<unsigned char> bytes) : m_bytes(bytes) {}

    /// Appends the low `bits` (1 to 32) of `value`. False, writing nothing, when the value is wider or no room is left.
    [[nodiscard]] bool Add(std::uint32_t value, unsigned bits);
    [[nodiscard]] std::size_t GetBitCount() const { return m_bit; }

private:
    std::span<unsigned char> m_bytes;
    std::size_t m_bit = 0;
};

}  // namespace PIO::RTCM3
