#include "tools/halvex/corrections/SsrStream.h"

#include <filesystem>
#include <utility>

#include "halvex/status/SatelliteSystemDisablingHelper.h"
#include "halvex/time/SatelliteTime.h"

namespace halvex::tool {
namespace {

/// The epoch of a file's first message that tells the day, as near as can be to `reference`, which it is without one.
SMjdTime firstEpoch(const std::string& name, const SMjdTime& reference) {
    constexpr std::uint64_t kEnough = std::uint64_t{1} << 20;
    std::error_code ignored;
    rtcm3::FrameReader frames;
    if (!std::filesystem::is_regular_file(name, ignored) || !frames.open(name)) return reference;
    rtcm3::SsrMessages messages;
    while (const auto frame = frames.next()) {
        if (frame->offset > kEnough) break;
        const auto type = rtcm3::ssrTypeOf({frame->number, frame->subType});
        const bool tellsDay = type && (type->system != CALN::eCALSATSYSTEM_GLONASS || frame->subType != 0);
        if (tellsDay && rtcm3::readSsr(*frame, reference, messages)) return messages.messages.front()->epoch;
    }
    return reference;
}

}  // namespace

SsrStream::SsrStream(ByteInput input, const SMjdTime& time) : m_reference(time) {
    const std::string name = input.name();
    if (!m_reference.IsSet()) m_reference = lookAhead(name, latestPlausible()).reference.time;
    if (!m_reference.IsSet()) {
        m_reference = CSatelliteTime(true);
        m_dateAssumed = true;
    }
    m_reference = firstEpoch(name, m_reference);
    m_frames.open(std::move(input));
}

bool SsrStream::next(rtcm3::SsrMessages& messages) {
    while (const auto frame = m_frames.next()) {
        const auto type = rtcm3::ssrTypeOf({frame->number, frame->subType});
        if (!type) {
            ++m_other;
            continue;
        }
        if (type->system != CALN::eCALSATSYSTEM_NONE &&
            CSatelliteSystemDisablingHelper::IsSatSystemDisabled(type->system)) {
            continue;
        }
        if (!rtcm3::readSsr(*frame, m_reference, messages)) {
            ++m_bad;
            continue;
        }
        m_longer += messages.bitsLeft >= 8 ? 1U : 0U;
        m_unknownSatellites += messages.unknownSatellites;
        m_reference = messages.messages.front()->epoch;
        return true;
    }
    return false;
}

StreamCounts SsrStream::counts() const {
    return {{"bytes in no frame", m_frames.unframedBytes()}, {"wrong check sums", m_frames.badChecks()},
            {"messages of other things", m_other},           {"messages that are cut off or cannot be", m_bad},
            {"messages longer than their fields", m_longer}, {"satellites of no known number", m_unknownSatellites}};
}

}  // namespace halvex::tool
