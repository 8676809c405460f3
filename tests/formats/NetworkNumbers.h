#pragma once

#include <cstdint>
#include <vector>

#include "formats/rtcm3/NetworkMessages.h"

namespace halvex::test {

/// A message's fields in the order that they are sent in, behind its number, without the count of satellites. Times
/// are counted as they are sent, and negative when they are of a Moscow day.
class NetworkNumbers {
public:
    using Numbers = std::vector<std::int64_t>;

    Numbers operator()(const CALN::Msg1014T& m) const {
        return {m.messageNumber,    m.networkId,     m.subnetworkId,   m.auxiliaryStations, m.masterStation,
                m.auxiliaryStation, m.deltaLatitude, m.deltaLongitude, m.deltaHeight};
    }
    template <class Message>
    Numbers operator()(const rtcm3::Differences<Message>& d) const {
        const Message& m = d.message;
        Numbers n{m.messageNumber,   m.networkId,     m.subnetworkId,    epochOf(d.epoch, 100),
                  m.multipleMessage, m.masterStation, m.auxiliaryStation};
        for (std::size_t i = 0; i < m.satelliteCount; ++i) {
            const auto& e = m.satellites[i];
            add(n, {e.satId, e.ambiguityStatus, e.nonSyncCount, e.difference});
            if constexpr (requires { e.issueOfData; }) n.push_back(e.issueOfData);
        }
        return n;
    }
    Numbers operator()(const CALN::IonoGeoMsgT& m) const {
        const CALN::MsgHeaderT& h = m.header;
        Numbers n{h.messageNumber,   h.networkId,     h.subnetwork,      epochOf(rtcm3::epochOf(m), 100),
                  h.multipleMessage, h.masterStation, h.auxiliaryStation};
        for (const auto& e : m.entries) {
            add(n, {e.satId, e.ambiguityStatus, e.nonSyncCount, e.geometric, e.issueOfData, e.ionospheric});
        }
        return n;
    }
    Numbers operator()(const rtcm3::NetworkResiduals& m) const {
        Numbers n{m.messageNumber, epochOf(m.epoch, 1000), m.station, m.referenceStations};
        for (const auto& e : m.satellites) {
            add(n, {e.satId, e.constant, e.byDistance, e.byHeight, e.ionoConstant, e.ionoByDistance});
        }
        return n;
    }
    Numbers operator()(const rtcm3::PhysicalReference& m) const {
        return {1032, m.station, m.physicalStation, m.itrfYear, m.position[0], m.position[1], m.position[2]};
    }
    Numbers operator()(const rtcm3::AreaGradients& m) const {
        Numbers n{m.messageNumber, m.station, epochOf(m.epoch, 1000)};
        for (const auto& e : m.satellites) {
            add(n, {e.satId, e.issueOfData, e.geometryNorth, e.geometryEast, e.ionosphereNorth, e.ionosphereEast});
        }
        return n;
    }
    Numbers operator()(const PIO::RTCM3::UTF8MessageC& m) const {
        Numbers n{m.messageNumber, m.stationId, m.day, m.secondsOfDay, m.characters};
        for (std::size_t i = 0; i < m.codeUnits; ++i) n.push_back(static_cast<unsigned char>(m.text[i]));
        return n;
    }

private:
    static void add(Numbers& numbers, const Numbers& more) { numbers.insert(numbers.end(), more.begin(), more.end()); }
    static std::int64_t epochOf(const rtcm3::NetworkEpoch& epoch, std::int64_t unit) {
        const std::int64_t count = epoch.milliseconds / unit;
        return epoch.scale == rtcm3::EpochScale::glonassDay ? -count : count;
    }
};

}  // namespace halvex::test
