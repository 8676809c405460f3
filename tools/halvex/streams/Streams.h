#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "formats/rtcm3/StreamReader.h"
#include "tools/halvex/Tool.h"

/// RTCM 3 streams as the subcommands read them.
namespace halvex::tool {

/// What was lost, in words.
using StreamCounts = std::vector<std::pair<std::string, std::uint64_t>>;

/// "GPS MSM7"; what the commonest messages are, empty for others.
[[nodiscard]] std::string messageName(const rtcm3::MessageType& type);

/// A recording can be no later than this.
[[nodiscard]] SMjdTime latestPlausible();

/// What a file that can be read twice tells before it is read; of any other nothing.
[[nodiscard]] rtcm3::StreamPreview lookAhead(const std::string& name, const SMjdTime& latest,
                                             const SMjdTime& time = {});

/// A reader of a stream that begins about `time` or, when that is unset, when it tells itself: a file is looked at
/// beforehand, from standard input the reader dates itself as it goes. The caller opens it.
[[nodiscard]] rtcm3::StreamReader datedReader(const std::string& name, const SMjdTime& time);

[[nodiscard]] StreamCounts countsOf(const rtcm3::StreamReader& reader);

/// What is in a stream, for people and for --json.
class StreamSummary {
public:
    /// Reads the stream to its end.
    explicit StreamSummary(ByteInput input);

    [[nodiscard]] std::string text() const;
    [[nodiscard]] Json json() const;
    /// Why the stream ended early; empty when it did not.
    [[nodiscard]] std::string fault() const;

private:
    struct System {
        std::set<CALN::SCalSatID> satellites;
        std::uint64_t ephemerides = 0;
    };

    std::string m_name;
    rtcm3::StreamReader m_reader;
    bool m_dated = false;
    std::uint64_t m_epochs = 0;
    SMjdTime m_first, m_last;
    std::map<CALN::eCALSATSYSTEM, System> m_systems;
};

}  // namespace halvex::tool
