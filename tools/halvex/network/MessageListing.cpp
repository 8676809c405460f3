#include "tools/halvex/network/MessageListing.h"

#include <fmt/format.h>

#include <algorithm>

#include "formats/rinex/SatelliteName.h"
#include "formats/rtcm3/Observations.h"
#include "halvex/status/SatelliteSystemDisablingHelper.h"
#include "tools/halvex/orbits/Sky.h"

namespace halvex::tool {
namespace {

using Switch = CSatelliteSystemDisablingHelper;

constexpr std::string_view kSatellite = "satellite";  // goes without saying before its name
constexpr std::string_view kText = "text";            // may hold anything: it is printed in quotes

// Steps to one unit: dividing by them gives the double nearest to the decimal.
constexpr double kHalfMillimetres = 2000.0;
constexpr double kMillimetres = 1000.0;
constexpr double kTenthMillimetres = 10000.0;
constexpr double kHundredths = 100.0;
constexpr double kTenths = 10.0;
constexpr double kStepsOfAngle = 40000.0;  // 25 millionths of a degree

/// `value` steps; `none` stands for no value.
Json scaled(std::int64_t value, double stepsToOne, std::optional<std::int64_t> none = std::nullopt) {
    return value == none ? Json() : Json(static_cast<double>(value) / stepsToOne);
}
Json differenceOf(std::int32_t value) {
    return scaled(value, kHalfMillimetres, rtcm3::kNoDifference);
}

/// DF074: whether the whole cycles in the differences are right.
std::string_view ambiguityOf(unsigned status) {
    constexpr std::string_view kWords[] = {"reserved", "right", "wide lane right", "uncertain"};
    return kWords[status & 3U];
}

std::string valueText(const Field& field) {
    if (field.value.is_null()) return "-";
    if (field.value.is_number_float()) return fmt::format("{}", field.value.get<double>());
    if (field.value.is_string() && field.name != kText) return field.value.get<std::string>();
    return jsonText(field.value);
}

/// Makes a message's list.
class Lister {
public:
    explicit Lister(ListedMessage& list) : m_list(list) {}

    void operator()(const CALN::Msg1014T& message) {
        network(message.networkId, message.subnetworkId, message.masterStation, message.auxiliaryStation);
        add("auxiliaryStations", message.auxiliaryStations);
        add("deltaLatitude", scaled(message.deltaLatitude, kStepsOfAngle), "deg");
        add("deltaLongitude", scaled(message.deltaLongitude, kStepsOfAngle), "deg");
        add("deltaHeight", scaled(message.deltaHeight, kMillimetres), "m");
    }

    template <class Message>
    void operator()(const rtcm3::Differences<Message>& differences) {
        const Message& message = differences.message;
        network(message.networkId, message.subnetworkId, message.masterStation, message.auxiliaryStation);
        m_list.epoch = differences.epoch;
        m_list.more = message.multipleMessage != 0;
        for (std::size_t i = 0; i < message.satelliteCount; ++i) {
            const auto& entry = message.satellites[i];
            if (!begin(message.system, entry.satId)) continue;
            if constexpr (requires { entry.issueOfData; }) {
                value("geometric", differenceOf(entry.difference), "m");
                value("issueOfData", entry.issueOfData);
            } else {
                value("ionospheric", differenceOf(entry.difference), "m");
            }
            ambiguity(entry.ambiguityStatus, entry.nonSyncCount);
        }
    }

    void operator()(const CALN::IonoGeoMsgT& message) {
        const CALN::MsgHeaderT& header = message.header;
        network(header.networkId, header.subnetwork, header.masterStation, header.auxiliaryStation);
        m_list.epoch = rtcm3::epochOf(message);
        m_list.more = header.multipleMessage != 0;
        for (const CALN::IonoGeoEntryT& entry : message.entries) {
            if (!begin(entry.system, entry.satId)) continue;
            value("geometric", differenceOf(entry.geometric), "m");
            value("ionospheric", differenceOf(entry.ionospheric), "m");
            value("issueOfData", entry.issueOfData);
            ambiguity(entry.ambiguityStatus, entry.nonSyncCount);
        }
    }

    void operator()(const rtcm3::NetworkResiduals& message) {
        station(message.station);
        add("referenceStations", message.referenceStations);
        m_list.epoch = message.epoch;
        for (const rtcm3::ResidualsEntry& entry : message.satellites) {
            if (!begin(rtcm3::systemOfNetworkMessage(message.messageNumber), entry.satId)) continue;
            value("constant", scaled(entry.constant, kHalfMillimetres), "m");
            value("byDistance", scaled(entry.byDistance, kHundredths), "ppm");
            value("byHeight", scaled(entry.byHeight, kTenths), "ppm");
            value("ionosphericConstant", scaled(entry.ionoConstant, kHalfMillimetres), "m");
            value("ionosphericByDistance", scaled(entry.ionoByDistance, kHundredths), "ppm");
        }
    }

    void operator()(const rtcm3::PhysicalReference& message) {
        station(message.station);
        add("physicalStation", message.physicalStation);
        add("itrfYear", message.itrfYear);
        Json position = Json::array();
        for (const std::int64_t axis : message.position) position.push_back(scaled(axis, kTenthMillimetres));
        add("position", position, "m");
    }

    void operator()(const rtcm3::AreaGradients& message) {
        const auto gradient = [](std::int16_t value, std::int16_t none) { return scaled(value, kHundredths, none); };
        station(message.station);
        m_list.epoch = message.epoch;
        for (const POS_REF_GRADIENTS& entry : message.satellites) {
            if (!begin(rtcm3::systemOfNetworkMessage(message.messageNumber), entry.satId)) continue;
            value("geometricNorth", gradient(entry.geometryNorth, rtcm3::kNoGeometricGradient), "ppm");
            value("geometricEast", gradient(entry.geometryEast, rtcm3::kNoGeometricGradient), "ppm");
            value("ionosphericNorth", gradient(entry.ionosphereNorth, rtcm3::kNoIonosphericGradient), "ppm");
            value("ionosphericEast", gradient(entry.ionosphereEast, rtcm3::kNoIonosphericGradient), "ppm");
            value("issueOfData", entry.issueOfData);
        }
    }

    void operator()(const PIO::RTCM3::UTF8MessageC& message) {
        station(message.stationId);
        const auto utc = SMjdTime::FromDayAndMilliseconds(message.day, message.secondsOfDay * 1000.0);
        add("utc", formatTime(utc));
        add("characters", message.characters);
        add(kText, std::string(message.text.data(), message.codeUnits));
    }

private:
    void add(std::string_view name, Json value, std::string_view unit = "") {
        m_list.fields.push_back({name, std::move(value), unit});
    }
    void value(std::string_view name, Json value, std::string_view unit = "") {
        m_list.satellites.back().push_back({name, std::move(value), unit});
    }
    void station(unsigned number) {
        m_list.stations = {number};
        add("station", number);
    }
    void network(unsigned id, unsigned subnetwork, unsigned master, unsigned auxiliary) {
        m_list.stations = {master, auxiliary};
        add("network", id);
        add("subnetwork", subnetwork);
        add("master", master);
        add("auxiliary", auxiliary);
    }
    /// Begins a satellite's values; false when it is to be left out.
    bool begin(CALN::eCALSATSYSTEM system, unsigned number) {
        const CALN::SCalSatID id = rtcm3::satelliteOf(system, number);
        if (id.number == 0) {
            ++m_list.unknownSatellites;
            return false;
        }
        if (Switch::IsSatSystemDisabled(id.system)) return false;
        m_list.satellites.push_back({{kSatellite, rinex::satelliteName(id), ""}});
        return true;
    }
    void ambiguity(unsigned status, unsigned nonSync) {
        value("cycles", ambiguityOf(status));
        value("slips", nonSync);
    }

    ListedMessage& m_list;
};

}  // namespace

ListedMessage listed(const rtcm3::NetworkMessage& message) {
    ListedMessage list;
    std::visit(Lister(list), message);
    return list;
}

std::string fieldsText(const std::vector<Field>& fields) {
    std::string text;
    for (const Field& field : fields) {
        if (!text.empty()) text += ' ';
        if (field.name != kSatellite) text += fmt::format("{} ", field.name);
        text += valueText(field);
        if (!field.unit.empty()) text += fmt::format(" {}", field.unit);
    }
    return text;
}

Json fieldsJson(const std::vector<Field>& fields) {
    Json json = Json::object();
    for (const Field& field : fields) json[std::string(field.name)] = field.value;
    return json;
}

}  // namespace halvex::tool
