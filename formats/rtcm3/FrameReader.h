#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "formats/io/ByteInput.h"
#include "formats/io/FormatError.h"

namespace halvex::rtcm3 {

/// One message of a stream.
struct Frame {
    std::span<const unsigned char> message;  ///< without preamble, length and check sum; valid until the next frame
    unsigned number = 0;                     ///< message number (DF002); 0 when the message is too short to have one
    unsigned subType = 0;                    ///< of 4076 alone (IDF002)
    std::uint64_t offset = 0;                ///< of the preamble in the unpacked stream [bytes]
};

/// Kind of message: number and sub-type.
struct MessageType {
    unsigned number = 0;
    unsigned subType = 0;

    friend auto operator<=>(const MessageType&, const MessageType&) = default;
};

/// How often a kind of message was there, and where.
struct MessageCount {
    std::uint64_t count = 0;
    std::uint64_t first = 0;  ///< byte offset of the first frame
    std::uint64_t last = 0;   ///< and of the last
};

/// Finds the frames of an RTCM 3 stream (RTCM 10403.3, 4): 0xD3, six bits 0, ten bits of length, the message, CRC-24Q.
/// Where a check sum is wrong or the input ends too early, the search goes on one byte behind the preamble, so that a
/// good frame inside a bad one is found. Memory does not grow with the stream. One thread at a time.
class FrameReader {
public:
    static constexpr std::size_t kLongestMessage = 1023;
    static constexpr std::size_t kFrameBytes = 6;  ///< around each message

    /// Opens a file, plain or gzip-compressed, or standard input ("-"). False with error().
    [[nodiscard]] bool open(const std::string& name);
    /// The same for an input that is open already.
    void open(ByteInput input);
    /// The next good frame. Empty at the end of the input; error() is set when that was not where it should be.
    [[nodiscard]] std::optional<Frame> next();

    [[nodiscard]] const ByteInput& input() const { return m_input; }
    [[nodiscard]] const std::optional<FormatError>& error() const { return m_error; }
    /// Frames so far by kind.
    [[nodiscard]] const std::map<MessageType, MessageCount>& counts() const { return m_counts; }
    [[nodiscard]] std::uint64_t frames() const { return m_frames; }
    /// Bytes passed over so far because they belong to no good frame.
    [[nodiscard]] std::uint64_t unframedBytes() const { return m_unframed; }
    /// What looked like a frame and had a wrong check sum.
    [[nodiscard]] std::uint64_t badChecks() const { return m_badChecks; }

private:
    [[nodiscard]] std::size_t available() const { return m_end - m_begin; }
    bool provide(std::size_t count);
    void passOver(std::size_t count);
    void count(const Frame& frame);

    ByteInput m_input;
    std::optional<FormatError> m_error;
    std::vector<unsigned char> m_bytes;  // those not yet looked at in [m_begin, m_end)
    std::size_t m_begin = 0;
    std::size_t m_end = 0;
    bool m_exhausted = true;
    std::uint64_t m_offset = 0;  // of m_begin in the stream
    std::map<MessageType, MessageCount> m_counts;
    std::uint64_t m_frames = 0;
    std::uint64_t m_unframed = 0;
    std::uint64_t m_badChecks = 0;
};

/// True when a good frame is among the first bytes of an input, which stay there.
[[nodiscard]] bool isStream(ByteInput& input);

}  // namespace halvex::rtcm3
