#pragma once

#include <optional>
#include <string>

#include "formats/rinex/EpochBuilder.h"
#include "halvex/platform/caln/Coordinates.h"
#include "tools/halvex/streams/EpochSource.h"

namespace halvex::tool {

/// A station's epochs out of an observation file or stream, one after another. Failure when it cannot be read, or has
/// no position and none is given. The channels of its GLONASS satellites go to the frequency manager.
class StationStream {
public:
    /// `position`: of the antenna reference point.
    StationStream(const std::string& file, std::int32_t siteNumber, bool keepGoing,
                  const std::optional<ORBIT_COORD>& position, const EpochSource::StreamChoice& choice = {});

    /// The epoch that is next, null behind the last one.
    [[nodiscard]] const CHalvexStationObservation* epoch() const { return m_there ? &m_station : nullptr; }
    [[nodiscard]] const SMjdTime& time() const { return m_time; }  ///< of it, GPS time
    void advance();

    [[nodiscard]] const std::string& name() const { return m_name; }
    /// Of the antenna reference point.
    [[nodiscard]] const ORBIT_COORD& position() const { return m_position; }

private:
    void takeHeader();

    EpochSource m_source;
    rinex::EpochBuilder m_builder;
    rinex::ObservationEpoch m_epoch;
    CHalvexStationObservation m_station;
    SMjdTime m_time;
    std::string m_name;
    ORBIT_COORD m_position;
    std::int32_t m_siteNumber;
    std::uint32_t m_headerChanges = 0;
    bool m_keepGoing;
    bool m_there = false;
};

}  // namespace halvex::tool
