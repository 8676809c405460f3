#include "tools/halvex/corrections/StationStream.h"

#include "halvex/platform/caln/FrequencyMgr.h"
#include "tools/halvex/sets/StationSet.h"

namespace halvex::tool {
namespace {

/// Where the antenna reference point is: the header has the marker and what is between them.
std::optional<ORBIT_COORD> antennaOf(const rinex::ObservationHeader& header) {
    if (!header.position) return std::nullopt;
    const ORBIT_COORD marker{(*header.position)[0], (*header.position)[1], (*header.position)[2]};
    if (!header.antennaDelta) return marker;
    const auto [up, east, north] = *header.antennaDelta;
    const LocalFrame frame(marker);
    return ORBIT_COORD{marker.x + up * frame.up().x + east * frame.east().x + north * frame.north().x,
                       marker.y + up * frame.up().y + east * frame.east().y + north * frame.north().y,
                       marker.z + up * frame.up().z + north * frame.north().z};
}

}  // namespace

StationStream::StationStream(const std::string& file, std::int32_t siteNumber, bool keepGoing,
                             const std::optional<ORBIT_COORD>& position, const EpochSource::StreamChoice& choice)
    : m_source(file, choice), m_builder(m_source.header()), m_siteNumber(siteNumber), m_keepGoing(keepGoing) {
    takeHeader();
    advance();
    m_name = m_source.header().markerName.empty() ? file : m_source.header().markerName;
    if (const std::optional<ORBIT_COORD> antenna = position ? position : antennaOf(m_source.header())) {
        m_position = *antenna;
    } else {
        throw Failure(file +
                      ": nothing in it tells the station's position (APPROX POSITION XYZ of a header, 1005 or "
                      "1006 of a stream); give it with --position");
    }
}

void StationStream::takeHeader() {
    m_headerChanges = m_source.headerChanges();
    m_builder.setHeader(m_source.header());
    for (const auto& [satellite, channel] : m_source.header().glonassChannels) {
        CALN::setGlonassChannel(satellite, channel);
    }
}

void StationStream::advance() {
    using Result = EpochSource::Result;
    m_there = false;
    while (!m_there) {
        const Result result = m_source.next(m_epoch);
        if (result == Result::end) return;
        if (result == Result::error) {
            if (!m_keepGoing) throw m_source.error();
            continue;
        }
        if (m_source.headerChanges() != m_headerChanges) takeHeader();
        m_there = result == Result::epoch && m_builder.build(m_epoch, m_siteNumber, m_station);
    }
    m_time = epochTime(m_station);
}

}  // namespace halvex::tool
