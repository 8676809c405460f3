#include "tools/halvex/streams/Streams.h"

#include <fmt/format.h>

#include <array>
#include <filesystem>

#include "formats/rinex/SatelliteName.h"
#include "formats/rtcm3/Ssr.h"
#include "halvex/status/SatelliteSystemDisablingHelper.h"
#include "halvex/time/SatelliteTime.h"
#include "tools/halvex/systems/EnabledSystems.h"

namespace halvex::tool {
namespace {

std::string label(const rtcm3::MessageType& type) {
    return type.subType != 0 ? fmt::format("{}.{}", type.number, type.subType) : std::to_string(type.number);
}

/// "GPS orbits", by the order of SsrKind.
std::string nameOf(const rtcm3::SsrType& type) {
    static constexpr std::array<std::string_view, 8> kKinds{"orbits",           "clocks",          "orbits, clocks",
                                                            "high-rate clocks", "code biases",     "phase biases",
                                                            "range accuracies", "electron content"};
    const std::string kind(kKinds[static_cast<std::size_t>(type.kind)]);
    const SatelliteSystem* const system = systemOfCode(type.system);
    return system != nullptr ? std::string(system->name) + " " + kind : kind;
}

}  // namespace

SMjdTime latestPlausible() {
    SMjdTime latest = CSatelliteTime(true);
    latest.AddDays(1.0);
    return latest;
}

std::string messageName(const rtcm3::MessageType& type) {
    const unsigned number = type.number;
    if (const auto [system, kind] = rtcm3::msmKindOf(number); kind != 0) {
        return fmt::format("{} MSM{}", systemOfCode(system)->name, kind);
    }
    if (const auto ssr = rtcm3::ssrTypeOf(type)) return nameOf(*ssr);
    static const std::map<unsigned, std::string> kNames{
        {1001, "GPS L1"},
        {1002, "GPS L1, whole"},
        {1003, "GPS L1 L2"},
        {1004, "GPS L1 L2, whole"},
        {1005, "station position"},
        {1006, "station position, height"},
        {1007, "antenna"},
        {1008, "antenna, number"},
        {1009, "GLONASS L1"},
        {1010, "GLONASS L1, whole"},
        {1011, "GLONASS L1 L2"},
        {1012, "GLONASS L1 L2, whole"},
        {1013, "schedule"},
        {1014, "auxiliary station"},
        {1015, "GPS ionospheric differences"},
        {1016, "GPS geometric differences"},
        {1017, "GPS differences"},
        {1019, "GPS ephemeris"},
        {1020, "GLONASS ephemeris"},
        {1029, "text"},
        {1030, "GPS network residuals"},
        {1031, "GLONASS network residuals"},
        {1032, "physical reference"},
        {1033, "receiver, antenna"},
        {1034, "GPS gradients"},
        {1035, "GLONASS gradients"},
        {1037, "GLONASS ionospheric differences"},
        {1038, "GLONASS geometric differences"},
        {1039, "GLONASS differences"},
        {1041, "NavIC ephemeris"},
        {1042, "BeiDou ephemeris"},
        {1044, "QZSS ephemeris"},
        {1045, "Galileo F/NAV"},
        {1046, "Galileo I/NAV"},
        {1230, "GLONASS biases"},
    };
    const auto found = kNames.find(number);
    return found != kNames.end() ? found->second : "";
}

rtcm3::StreamPreview lookAhead(const std::string& name, const SMjdTime& latest, const SMjdTime& time) {
    std::error_code ignored;
    if (std::filesystem::is_regular_file(name, ignored)) return rtcm3::lookAhead(name, latest, time);
    rtcm3::StreamPreview nothing;
    nothing.reference.latest = latest;
    nothing.reference.time = time;
    return nothing;
}

rtcm3::StreamReader datedReader(const std::string& name, const SMjdTime& time) {
    rtcm3::StreamReader reader(latestPlausible());
    reader.setPreview(lookAhead(name, latestPlausible(), time));
    return reader;
}

StreamCounts countsOf(const rtcm3::StreamReader& reader) {
    const rtcm3::StreamLosses& losses = reader.losses();
    return {{"bytes in no frame", reader.frames().unframedBytes()},
            {"wrong check sums", reader.frames().badChecks()},
            {"messages that are cut off or cannot be", losses.badMessages},
            {"messages before the date was known", losses.undatedMessages},
            {"messages of other stations", losses.otherStations},
            {"messages without whole ranges", losses.withoutRange},
            {"satellites of no known number", losses.unknownSatellites},
            {"values of reserved signals", losses.unknownSignals},
            {"phases of GLONASS satellites without a channel", losses.withoutWavelength},
            {"signals twice in an epoch", losses.repeatedMeasurements}};
}

StreamSummary::StreamSummary(ByteInput input) : m_name(input.name()), m_reader(latestPlausible()) {
    const rtcm3::StreamPreview preview = lookAhead(m_name, latestPlausible());
    m_reader.setPreview(preview);
    m_dated = preview.reference.time.IsSet() || input.name() == "-";
    // Without a date any will do: what there is is counted, and no time is told.
    if (!m_dated) m_reader.setTime(latestPlausible());
    Progress progress("reading " + m_name);
    m_reader.open(std::move(input));
    rinex::ObservationEpoch epoch;
    using Result = rtcm3::StreamReader::Result;
    for (Result result = m_reader.next(epoch); result != Result::end; result = m_reader.next(epoch)) {
        progress.update(m_reader.frames().input().bytesRead(), m_reader.frames().input().fileSize());
        if (result == Result::ephemeris) {
            const CALN::SCalSatID& satellite = m_reader.ephemeris().satellite;
            if (CSatelliteSystemDisablingHelper::IsSatSystemDisabled(satellite.system)) continue;
            System& system = m_systems[satellite.system];
            system.satellites.insert(satellite);
            ++system.ephemerides;
            continue;
        }
        leaveOutDisabled(epoch);
        if (m_epochs++ == 0) m_first = epoch.time;
        m_last = epoch.time;
        for (const auto& satellite : epoch.satellites) m_systems[satellite.id.system].satellites.insert(satellite.id);
    }
}

std::string StreamSummary::fault() const {
    return m_reader.error() ? m_reader.error()->text() : std::string();
}

std::string StreamSummary::text() const {
    std::string text = fmt::format("{}\n  RTCM 3 stream, {} frames", m_name, m_reader.frames().frames());
    for (const unsigned station : m_reader.stations()) {
        text += fmt::format("{} {}", station == *m_reader.stations().begin() ? ", station" : ",", station);
    }
    text += "\n";
    if (m_epochs != 0 && m_dated) {
        text += fmt::format("  {} to {} GPS time, {} epochs\n", formatTime(m_first), formatTime(m_last), m_epochs);
    } else if (m_epochs != 0) {
        text += fmt::format("  {} epochs, of a date that nothing in the stream tells\n", m_epochs);
    }
    Table messages({"message", "", "count", "first byte", "last byte"}, "><>>>");
    for (const auto& [type, count] : m_reader.frames().counts()) {
        messages.add({label(type), messageName(type), std::to_string(count.count), std::to_string(count.first),
                      std::to_string(count.last)});
    }
    text += messages.text("  ");
    Table systems({"system", "satellites", "ephemerides"}, "<>>");
    for (const auto& [code, system] : m_systems) {
        systems.add({std::string(systemOfCode(code)->name), std::to_string(system.satellites.size()),
                     std::to_string(system.ephemerides)});
    }
    if (!systems.empty()) text += systems.text("  ");
    for (const auto& [what, count] : countsOf(m_reader)) {
        if (count != 0) text += fmt::format("  {} {}\n", count, what);
    }
    return text;
}

Json StreamSummary::json() const {
    Json json = {{"file", m_name}, {"kind", "RTCM 3 stream"}, {"frames", m_reader.frames().frames()}};
    json["stations"] = m_reader.stations();
    json["epochs"] = m_epochs;
    if (m_epochs != 0 && m_dated) {
        json["from"] = formatTime(m_first);
        json["to"] = formatTime(m_last);
    }
    json["messages"] = Json::array();
    for (const auto& [type, count] : m_reader.frames().counts()) {
        Json entry = {{"number", type.number}};
        if (type.subType != 0) entry["subType"] = type.subType;
        entry["count"] = count.count;
        entry["firstByte"] = count.first;
        entry["lastByte"] = count.last;
        json["messages"].push_back(entry);
    }
    Json systems = Json::object();
    for (const auto& [code, system] : m_systems) {
        Json names = Json::array();
        for (const CALN::SCalSatID& satellite : system.satellites) names.push_back(rinex::satelliteName(satellite));
        systems[std::string(1, systemOfCode(code)->letter)] = {
            {"name", systemOfCode(code)->name}, {"satellites", names}, {"ephemerides", system.ephemerides}};
    }
    json["systems"] = systems;
    for (const auto& [what, count] : countsOf(m_reader)) json["other"][what] = count;
    tellDisabledSystems(json);
    return json;
}

}  // namespace halvex::tool
