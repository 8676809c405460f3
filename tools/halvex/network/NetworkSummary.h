#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <tuple>
#include <vector>

#include "formats/rtcm3/StationMessages.h"
#include "halvex/platform/caln/Coordinates.h"
#include "tools/halvex/network/MessageListing.h"
#include "tools/halvex/streams/EpochSteps.h"

namespace halvex::tool {

/// What a stream says about a network: its stations, and how its messages follow on one another.
class NetworkSummary {
public:
    /// A message, with the instant that it is of, if it has one.
    void add(unsigned number, const rtcm3::NetworkMessage& message, const ListedMessage& list,
             const std::optional<SMjdTime>& time);
    /// A message about a station's position or equipment; any other is passed over.
    void addStation(const rtcm3::Frame& frame);

    /// Without a date times are told as seconds of the GPS week.
    [[nodiscard]] std::string text(bool dated) const;
    /// Members for a report.
    [[nodiscard]] Json json(bool dated) const;
    [[nodiscard]] std::uint64_t badMessages() const { return m_badMessages; }

private:
    /// Messages of one kind about the same stations.
    struct Series {
        std::uint64_t count = 0;
        EpochSteps steps;
    };
    using NetworkKey = std::tuple<unsigned, unsigned, unsigned, unsigned>;  // network, subnetwork, master, auxiliary

    [[nodiscard]] std::optional<ORBIT_COORD> positionOf(unsigned station) const;
    [[nodiscard]] std::optional<double> distanceToMaster(const CALN::Msg1014T& auxiliary) const;
    [[nodiscard]] std::optional<double> distanceToPhysical(const rtcm3::PhysicalReference& physical) const;

    std::map<std::pair<unsigned, std::vector<unsigned>>, Series> m_series;
    std::map<unsigned, rtcm3::StationDescription> m_stations;
    std::map<NetworkKey, CALN::Msg1014T> m_auxiliaries;       // the last of each
    std::map<unsigned, rtcm3::PhysicalReference> m_physical;  // by the station of the corrections
    std::uint64_t m_badMessages = 0;
};

}  // namespace halvex::tool
