#pragma once

#include <optional>
#include <string>

#include "formats/rinex/ObservationReader.h"
#include "tools/halvex/streams/Streams.h"

namespace halvex::tool {

/// A station's epochs out of a RINEX observation file or an RTCM 3 stream, whichever a file is, without the satellites
/// of disabled systems. Failure when the file cannot be opened or has no header to be had.
class EpochSource {
public:
    /// What a stream does not always tell.
    struct StreamChoice {
        SMjdTime time;                    ///< about when it begins; unset: what it says itself
        std::optional<unsigned> station;  ///< whose epochs to give; empty: of the first that is met
    };
    using Result = rinex::ObservationReader::Result;

    explicit EpochSource(const std::string& name) : EpochSource(name, StreamChoice()) {}
    EpochSource(const std::string& name, const StreamChoice& choice);

    /// As rinex::ObservationReader::next. A stream has epochs alone; that it ended too early or has observations that
    /// nothing dates is an error before its end.
    [[nodiscard]] Result next(rinex::ObservationEpoch& epoch);
    /// The header; a stream's has what was said of the station until now.
    [[nodiscard]] const rinex::ObservationHeader& header() const;
    [[nodiscard]] std::uint32_t headerChanges() const;
    [[nodiscard]] Failure error() const { return Failure(m_error); }
    /// The station's name in a file, its number in a stream; can be empty.
    [[nodiscard]] const std::string& marker() const;
    /// What a stream lost so far; empty for a file.
    [[nodiscard]] std::optional<StreamCounts> streamCounts() const;
    [[nodiscard]] std::uint64_t bytesRead() const;
    [[nodiscard]] std::uint64_t fileSize() const;

private:
    [[nodiscard]] Result nextOfStream(rinex::ObservationEpoch& epoch);

    rinex::ObservationReader m_file;
    std::optional<rtcm3::StreamReader> m_stream;  // in its place when it has a value
    std::string m_name;
    std::string m_error;
    bool m_any = false;  // an epoch has come out of the stream
    bool m_ended = false;
};

}  // namespace halvex::tool
