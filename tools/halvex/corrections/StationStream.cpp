#include "tools/halvex/corrections/StationStream.h"

#include "halvex/platform/caln/FrequencyMgr.h"
#include "tools/halvex/Tool.h"
#include "tools/halvex/sets/StationSet.h"
#include "tools/halvex/systems/EnabledSystems.h"

namespace halvex::tool {

StationStream::StationStream(const std::string& file, std::int32_t siteNumber, bool keepGoing,
                             const std::optional<ORBIT_COORD>& position)
    : m_siteNumber(siteNumber), m_keepGoing(keepGoing) {
    if (!m_reader.open(file)) throw Failure(m_reader.error());
    const rinex::ObservationHeader& header = m_reader.header();
    if (position) {
        m_position = *position;
    } else if (header.position) {
        m_position = {(*header.position)[0], (*header.position)[1], (*header.position)[2]};
    } else {
        throw Failure(file + ": the header has no position (APPROX POSITION XYZ); give it with --position");
    }
    m_name = header.markerName.empty() ? file : header.markerName;
    for (const auto& [satellite, channel] : header.glonassChannels) CALN::setGlonassChannel(satellite, channel);
    m_builder.emplace(header);
    advance();
}

void StationStream::advance() {
    using Result = rinex::ObservationReader::Result;
    m_there = false;
    while (!m_there) {
        const Result result = nextEnabled(m_reader, m_epoch);
        if (result == Result::end) return;
        if (result == Result::error) {
            if (!m_keepGoing) throw Failure(m_reader.error());
            continue;
        }
        if (m_reader.headerChanges() != m_headerChanges) {
            m_headerChanges = m_reader.headerChanges();
            m_builder->setHeader(m_reader.header());
        }
        m_there = result == Result::epoch && m_builder->build(m_epoch, m_siteNumber, m_station);
    }
    m_time = epochTime(m_station);
}

}  // namespace halvex::tool
