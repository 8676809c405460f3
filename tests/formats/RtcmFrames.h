#pragma once

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "formats/io/ByteInput.h"
#include "halvex/platform/pio/Rtcm3.h"

namespace halvex::test {

/// The frame around a message.
inline std::string frameOf(std::string_view message) {
    std::string frame{'\xD3', static_cast<char>(message.size() >> 8U), static_cast<char>(message.size())};
    frame += message;
    const std::vector<unsigned char> bytes(frame.begin(), frame.end());
    const std::uint32_t check = PIO::RTCM3::ComputeCRC24(bytes);
    for (const unsigned shift : {16U, 8U, 0U}) frame += static_cast<char>(check >> shift);
    return frame;
}

/// A message put together field by field.
class Bits {
public:
    Bits() = default;
    /// Fields as value and width, one after the other.
    Bits(std::initializer_list<std::pair<std::int64_t, unsigned>> fields) {
        for (const auto& [value, width] : fields) add(value, width);
    }
    Bits& add(std::int64_t value, unsigned width) {
        const auto bits = static_cast<std::uint64_t>(value);
        if (width > 32) {
            add(static_cast<std::int64_t>(bits >> 32U), width - 32);
            width = 32;
        }
        const auto low = static_cast<std::uint32_t>(bits & (~std::uint64_t{0} >> (64 - width)));
        EXPECT_TRUE(m_collector.Add(low, width));
        return *this;
    }
    /// Padded to whole bytes.
    [[nodiscard]] std::string message() const {
        return {m_bytes.begin(), m_bytes.begin() + static_cast<std::ptrdiff_t>((m_collector.GetBitCount() + 7) / 8)};
    }
    [[nodiscard]] std::string frame() const { return frameOf(message()); }

private:
    std::array<unsigned char, 1023> m_bytes{};
    PIO::RTCM3::CBitCollector m_collector{m_bytes};
};

/// An MSM with one satellite and one signal (or more of the first values in every field), every field told.
struct Msm {
    unsigned number = 1077;
    unsigned station = 7;
    std::int64_t time = 1000;
    bool more = false;
    std::uint64_t satellites = std::uint64_t{1} << 59;  // the mask; G05
    std::uint32_t signals = std::uint32_t{1} << 30;     // 1C
    unsigned extended = 2;
    std::int64_t wholeRange = 70, partOfRange = 512, roughRate = 100;
    std::int64_t code = 0, phase = 0, lock = 64, half = 0, cno = 45 * 16, rate = 0;

    [[nodiscard]] Bits bits() const {
        const bool high = number % 10 >= 6;
        const bool rates = number % 10 == 5 || number % 10 == 7;
        const auto count = static_cast<unsigned>(__builtin_popcountll(satellites));
        const unsigned cells = count * static_cast<unsigned>(__builtin_popcount(signals));
        Bits bits{{number, 12}, {station, 12}, {time, 30}, {more, 1}, {0, 18}};
        bits.add(static_cast<std::int64_t>(satellites), 64).add(signals, 32);
        for (unsigned i = 0; i < cells; ++i) bits.add(1, 1);
        const auto each = [&bits](unsigned times, std::int64_t value, unsigned width) {
            for (unsigned i = 0; i < times; ++i) bits.add(value, width);
        };
        each(count, wholeRange, 8);
        if (rates) each(count, extended, 4);
        each(count, partOfRange, 10);
        if (rates) each(count, roughRate, 14);
        each(cells, code, high ? 20 : 15);
        each(cells, phase, high ? 24 : 22);
        each(cells, lock, high ? 10 : 4);
        each(cells, half, 1);
        each(cells, cno, high ? 10 : 6);
        if (rates) each(cells, rate, 15);
        return bits;
    }
    [[nodiscard]] std::string frame() const { return bits().frame(); }
};

inline ByteInput inputOf(std::string bytes) {
    ByteInput input;
    input.openBytes("f", std::move(bytes));
    return input;
}

}  // namespace halvex::test
