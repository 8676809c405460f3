#include "tools/halvex/network/NetworkSummary.h"

#include <fmt/format.h>

#include <cmath>
#include <numbers>

#include "tools/halvex/orbits/Sky.h"
#include "tools/halvex/streams/Streams.h"

namespace halvex::tool {
namespace {

double distanceBetween(const ORBIT_COORD& a, const ORBIT_COORD& b) {
    return std::hypot(a.x - b.x, a.y - b.y, a.z - b.z);
}

ORBIT_COORD coordinates(const std::array<double, 3>& position) {
    return {position[0], position[1], position[2]};
}

ORBIT_COORD coordinates(const rtcm3::PhysicalReference& physical) {
    constexpr double kStep = 0.0001;  // [m]
    const auto& [x, y, z] = physical.position;
    return {static_cast<double>(x) * kStep, static_cast<double>(y) * kStep, static_cast<double>(z) * kStep};
}

std::vector<std::string> geographicCells(const ORBIT_COORD& position) {
    const ORBIT_GEOGRAPHIC place = toGeographic(position);
    return {fmt::format("{:.7f}", degrees(place.latitude)), fmt::format("{:.7f}", degrees(place.longitude)),
            fmt::format("{:.3f}", place.height)};
}

void addPosition(Json& json, const ORBIT_COORD& position) {
    const ORBIT_GEOGRAPHIC place = toGeographic(position);
    json["position"] = {position.x, position.y, position.z};
    json["latitude"] = degrees(place.latitude);
    json["longitude"] = degrees(place.longitude);
    json["height"] = place.height;
}

std::string kilometres(const std::optional<double>& metres) {
    return metres ? fmt::format("{:.3f}", *metres / 1000.0) : "-";
}

std::string timeText(const SMjdTime& time, bool dated) {
    return dated ? formatTime(time) : fmt::format("{}", time.GetGpsSeconds());
}

std::string stationsText(const std::vector<unsigned>& stations) {
    return fmt::format("{}", fmt::join(stations, " - "));
}

}  // namespace

void NetworkSummary::add(unsigned number, const rtcm3::NetworkMessage& message, const ListedMessage& list,
                         const std::optional<SMjdTime>& time) {
    Series& series = m_series[{number, list.stations}];
    ++series.count;
    // Messages that share an epoch are one step.
    if (time && series.steps.last() != time) series.steps.add(*time);
    if (const auto* station = std::get_if<CALN::Msg1014T>(&message)) {
        m_auxiliaries[{station->networkId, station->subnetworkId, station->masterStation, station->auxiliaryStation}] =
            *station;
    } else if (const auto* physical = std::get_if<rtcm3::PhysicalReference>(&message)) {
        m_physical[physical->station] = *physical;
    }
}

void NetworkSummary::addStation(const rtcm3::Frame& frame) {
    if (!rtcm3::isStationMessage(frame.number)) return;
    const std::optional<unsigned> station = rtcm3::stationOf(frame);
    rtcm3::StationDescription description;
    if (station && m_stations.count(*station) != 0) description = m_stations[*station];
    if (!station || !readStationMessage(frame, description)) {
        ++m_badMessages;
        return;
    }
    m_stations[*station] = description;
}

std::optional<ORBIT_COORD> NetworkSummary::positionOf(unsigned station) const {
    const auto found = m_stations.find(station);
    if (found == m_stations.end() || !found->second.position) return std::nullopt;
    return coordinates(*found->second.position);
}

std::optional<double> NetworkSummary::distanceToMaster(const CALN::Msg1014T& auxiliary) const {
    constexpr double kAngle = 25e-6 * std::numbers::pi / 180.0;  // [rad]
    constexpr double kMillimetre = 0.001;
    const auto master = positionOf(auxiliary.masterStation);
    if (!master) return std::nullopt;
    ORBIT_GEOGRAPHIC place = toGeographic(*master);
    place.latitude += auxiliary.deltaLatitude * kAngle;
    place.longitude += auxiliary.deltaLongitude * kAngle;
    place.height += auxiliary.deltaHeight * kMillimetre;
    return distanceBetween(*master, toCartesian(place));
}

std::optional<double> NetworkSummary::distanceToPhysical(const rtcm3::PhysicalReference& physical) const {
    const auto station = positionOf(physical.station);
    if (!station) return std::nullopt;
    return distanceBetween(*station, coordinates(physical));
}

std::string NetworkSummary::text(bool dated) const {
    std::string text;
    Table places({"station", "", "latitude", "longitude", "height [m]", "distance [km]"}, "><>>>>");
    const auto addPlace = [&](unsigned station, const std::string& what, const ORBIT_COORD& position,
                              const std::string& distance) {
        const std::vector<std::string> cells = geographicCells(position);
        places.add({std::to_string(station), what, cells[0], cells[1], cells[2], distance});
    };
    for (const auto& [station, description] : m_stations) {
        if (description.position) addPlace(station, "", coordinates(*description.position), "");
    }
    for (const auto& [station, physical] : m_physical) {
        addPlace(physical.physicalStation, fmt::format("physical, behind {}", station), coordinates(physical),
                 kilometres(distanceToPhysical(physical)));
    }
    if (!places.empty()) text += places.text("  ");

    Table auxiliaries({"network", "master", "auxiliary", "latitude", "longitude", "height [m]", "distance [km]"},
                      "<>>>>>>");
    for (const auto& [key, each] : m_auxiliaries) {
        auxiliaries.add({fmt::format("{}.{}", each.networkId, each.subnetworkId), std::to_string(each.masterStation),
                         std::to_string(each.auxiliaryStation), fmt::format("{:+.6f}", each.deltaLatitude / 40000.0),
                         fmt::format("{:+.6f}", each.deltaLongitude / 40000.0),
                         fmt::format("{:+.3f}", each.deltaHeight / 1000.0), kilometres(distanceToMaster(each))});
    }
    if (!auxiliaries.empty()) text += auxiliaries.text("  ");

    Table table({"message", "", "stations", "count", "epochs", "interval [s]", "gaps", "longest gap"}, "><<>>>><");
    for (const auto& [key, series] : m_series) {
        const EpochSteps& steps = series.steps;
        std::string longest;
        double most = 0.0;
        for (const EpochSteps::Gap& gap : steps.gaps()) {
            if (gap.seconds <= most) continue;
            most = gap.seconds;
            longest = fmt::format("{} s after {}", gap.seconds, timeText(gap.after, dated));
        }
        const bool timed = steps.epochs() != 0;
        table.add({std::to_string(key.first), messageName({key.first, 0}), stationsText(key.second),
                   std::to_string(series.count), timed ? std::to_string(steps.epochs()) : "",
                   steps.interval() != 0.0 ? fmt::format("{}", steps.interval()) : "",
                   timed ? std::to_string(steps.gapCount()) : "", longest});
    }
    return text + (table.empty() ? "  no network messages\n" : table.text("  "));
}

Json NetworkSummary::json(bool dated) const {
    Json json;
    json["stations"] = Json::array();
    for (const auto& [station, description] : m_stations) {
        Json entry = {{"station", station}};
        if (description.position) addPosition(entry, coordinates(*description.position));
        if (!description.antennaType.empty()) entry["antenna"] = description.antennaType;
        if (!description.receiverType.empty()) entry["receiver"] = description.receiverType;
        json["stations"].push_back(entry);
    }
    json["physicalStations"] = Json::array();
    for (const auto& [station, physical] : m_physical) {
        Json entry = {{"station", physical.physicalStation}, {"behind", station}};
        addPosition(entry, coordinates(physical));
        if (const auto distance = distanceToPhysical(physical)) entry["distance"] = *distance;
        json["physicalStations"].push_back(entry);
    }
    json["auxiliaries"] = Json::array();
    for (const auto& [key, auxiliary] : m_auxiliaries) {
        Json entry = fieldsJson(listed(auxiliary).fields);
        if (const auto distance = distanceToMaster(auxiliary)) entry["distance"] = *distance;
        json["auxiliaries"].push_back(entry);
    }
    json["series"] = Json::array();
    for (const auto& [key, series] : m_series) {
        const EpochSteps& steps = series.steps;
        Json entry = {{"message", key.first}, {"stations", key.second}, {"count", series.count}};
        if (steps.epochs() != 0) {
            const auto time = [&](const SMjdTime& t) { return dated ? Json(formatTime(t)) : Json(t.GetGpsSeconds()); };
            entry["epochs"] = steps.epochs();
            entry["from"] = time(*steps.first());
            entry["to"] = time(*steps.last());
            entry["interval"] = steps.interval();
            entry["gapCount"] = steps.gapCount();
            entry["gaps"] = Json::array();
            for (const EpochSteps::Gap& gap : steps.gaps()) {
                entry["gaps"].push_back({{"after", time(gap.after)}, {"seconds", gap.seconds}});
            }
            entry["backwardSteps"] = steps.backwardSteps();
        }
        json["series"].push_back(entry);
    }
    return json;
}

}  // namespace halvex::tool
