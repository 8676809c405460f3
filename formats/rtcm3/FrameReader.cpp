#include "formats/rtcm3/FrameReader.h"

#include <cstring>
#include <string_view>
#include <utility>

#include "formats/rtcm3/BitReader.h"
#include "halvex/platform/pio/Rtcm3.h"

namespace halvex::rtcm3 {
namespace {

constexpr std::size_t kBlock = std::size_t{64} << 10;
constexpr unsigned char kPreamble = 0xD3;
constexpr std::size_t kHeaderBytes = 3;
constexpr std::size_t kCheckBytes = 3;
constexpr unsigned kIgsNumber = 4076;

}  // namespace

bool FrameReader::open(const std::string& name) {
    ByteInput input;
    if (input.open(name)) {
        open(std::move(input));
        return true;
    }
    *this = FrameReader();
    m_error = input.error();
    return false;
}

void FrameReader::open(ByteInput input) {
    *this = FrameReader();
    m_input = std::move(input);
    m_bytes.resize(kBlock);
    m_exhausted = false;
}

/// Reads on until `count` bytes are there; false when the input has no more.
bool FrameReader::provide(std::size_t count) {
    while (available() < count) {
        if (m_exhausted) return false;
        if (m_begin + count > m_bytes.size()) {
            std::memmove(m_bytes.data(), m_bytes.data() + m_begin, available());
            m_end = available();
            m_begin = 0;
        }
        const std::size_t got = m_input.read(reinterpret_cast<char*>(m_bytes.data()) + m_end, m_bytes.size() - m_end);
        m_end += got;
        if (got != 0) continue;
        m_exhausted = true;
        if (!m_input.fault().empty()) m_error = FormatError{m_input.name(), 0, m_input.fault()};
    }
    return true;
}

void FrameReader::passOver(std::size_t count) {
    m_begin += count;
    m_offset += count;
    m_unframed += count;
}

void FrameReader::count(const Frame& frame) {
    ++m_frames;
    MessageCount& entry = m_counts[{frame.number, frame.subType}];
    if (entry.count++ == 0) entry.first = frame.offset;
    entry.last = frame.offset;
}

std::optional<Frame> FrameReader::next() {
    while (provide(1)) {
        const unsigned char* const first = m_bytes.data() + m_begin;
        const void* const preamble = std::memchr(first, kPreamble, available());
        if (preamble == nullptr) {
            passOver(available());
            continue;
        }
        if (preamble != first) {
            passOver(static_cast<std::size_t>(static_cast<const unsigned char*>(preamble) - first));
            continue;
        }
        if (!provide(kHeaderBytes) || (m_bytes[m_begin + 1] & 0xFCU) != 0) {
            passOver(1);
            continue;
        }
        const std::size_t length = (m_bytes[m_begin + 1] & 3U) << 8U | m_bytes[m_begin + 2];
        const std::size_t whole = length + kFrameBytes;
        if (!provide(whole)) {
            passOver(1);
            continue;
        }
        const std::span<const unsigned char> bytes = std::span(m_bytes).subspan(m_begin, whole);
        // The check sum of a frame together with the check sum that it ends with is 0.
        if (PIO::RTCM3::ComputeCRC24(bytes) != 0) {
            ++m_badChecks;
            passOver(1);
            continue;
        }
        Frame frame;
        frame.message = bytes.subspan(kHeaderBytes, whole - kHeaderBytes - kCheckBytes);
        frame.offset = m_offset;
        BitReader in(frame.message);
        frame.number = in.number(12);
        if (frame.number == kIgsNumber) {
            in.skip(3);  // version
            frame.subType = in.number(8);
        }
        m_begin += whole;
        m_offset += whole;
        count(frame);
        return frame;
    }
    return std::nullopt;
}

bool isStream(ByteInput& input) {
    // A stream that comes slowly is known by its first frames, one that begins inside of garbage later.
    constexpr std::size_t kFew = 2 * (FrameReader::kLongestMessage + FrameReader::kFrameBytes);
    constexpr std::size_t kMany = 16384;
    for (const std::size_t size : {kFew, kMany}) {
        const std::string_view bytes = input.peek(size);
        ByteInput piece;
        piece.openBytes(input.name(), std::string(bytes));
        FrameReader frames;
        frames.open(std::move(piece));
        if (frames.next()) return true;
        if (bytes.size() < size) return false;
    }
    return false;
}

}  // namespace halvex::rtcm3
