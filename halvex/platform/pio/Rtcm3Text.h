#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace PIO::RTCM3 {

/// A text to whom it may concern: RTCM 10403.3, message 1029. Plain record: trivially copyable, without hidden padding,
/// members reserved for it are 0. Saved as its memory image, whose size never changes.
struct UTF8MessageC {
    std::uint16_t messageNumber = 1029;
    std::uint16_t stationId = 0;     ///< 0 to 4095
    std::int32_t day = 0;            ///< MJD, UTC
    std::uint32_t secondsOfDay = 0;  ///< UTC
    std::uint8_t characters = 0;     ///< of the text
    std::uint8_t codeUnits = 0;      ///< bytes of the text, at most 255
    std::array<std::uint8_t, 10> reserved{};
    std::array<char, 256> text{};  ///< UTF-8; NUL behind its end

    friend bool operator==(const UTF8MessageC&, const UTF8MessageC&) = default;
};
static_assert(sizeof(UTF8MessageC) == 280 && offsetof(UTF8MessageC, text) == 24);

}  // namespace PIO::RTCM3
