#pragma once

#include <optional>
#include <string>

#include "formats/rtcm3/Ssr.h"
#include "tools/halvex/streams/Streams.h"

namespace halvex::tool {

/// Reads the corrections of an RTCM 3 stream. Their messages tell seconds of the week (GLONASS: of the day) alone; the
/// date begins with `time` where that is set, else with what a file tells somewhere (1013, 1029, an ephemeris,
/// observations), else with now, and goes on from message to message. A file's GLONASS messages ahead of all others
/// follow the first of these. Messages of disabled systems are left out.
class SsrStream {
public:
    SsrStream(ByteInput input, const SMjdTime& time);

    /// The next message with corrections; false at the end of the stream.
    [[nodiscard]] bool next(rtcm3::SsrMessages& messages);

    /// Nothing told the date: it is that of now.
    [[nodiscard]] bool isDateAssumed() const { return m_dateAssumed; }
    [[nodiscard]] const rtcm3::FrameReader& frames() const { return m_frames; }
    [[nodiscard]] StreamCounts counts() const;

private:
    rtcm3::FrameReader m_frames;
    SMjdTime m_reference;
    bool m_dateAssumed = false;
    std::uint64_t m_bad = 0;
    std::uint64_t m_other = 0;
    std::uint64_t m_longer = 0;
    std::uint64_t m_unknownSatellites = 0;
};

}  // namespace halvex::tool
