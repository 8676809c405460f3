#include "tools/halvex/orbits/Tracking.h"

#include <fmt/format.h>

#include <algorithm>

#include "formats/rinex/SatelliteName.h"
#include "formats/rinex/TimeSystems.h"
#include "tools/halvex/streams/EpochSource.h"

namespace halvex::tool {

void Tracking::Counts::add(const Counts& other) {
    tracked += other.tracked;
    below += other.below;
    withoutOrbit += other.withoutOrbit;
    expected += other.expected;
    met += other.met;
}

std::vector<std::string> Tracking::Counts::row(std::string_view name) const {
    std::vector<std::string> row{std::string(name)};
    for (const std::uint64_t count : {tracked, below, withoutOrbit, expected, met})
        row.push_back(std::to_string(count));
    row.push_back(expected != 0 ? fmt::format("{:.2f} %", 100.0 * share()) : "-");
    return row;
}

Json Tracking::Counts::json() const {
    Json json = {{"tracked", tracked}, {"belowHorizon", below}, {"withoutOrbit", withoutOrbit}, {"expected", expected},
                 {"met", met},         {"share", nullptr}};
    if (expected != 0) json["share"] = share();
    return json;
}

Tracking::Tracking(OrbitFiles& orbits, const Site& site, const std::string& file, const SMjdTime& from,
                   const SMjdTime& to, bool keepGoing)
    : m_file(file) {
    EpochSource source(file);
    for (const auto& [id, count] : orbits.satellites()) m_systems[id.system];
    Progress progress("reading " + file);
    rinex::ObservationEpoch epoch;
    std::vector<CALN::SCalSatID> tracked;
    using Result = EpochSource::Result;
    for (Result result = source.next(epoch); result != Result::end; result = source.next(epoch)) {
        progress.update(source.bytesRead(), source.fileSize());
        if (result == Result::error) {
            if (!keepGoing) throw source.error();
            ++m_faults;
        }
        if (result != Result::epoch || epoch.flag == rinex::EpochFlag::cycleSlips) continue;
        const rinex::ObservationHeader& header = source.header();
        const SMjdTime t = rinex::toGpsTime(epoch.time, header.timeSystem, header.leapSeconds);
        if ((from.IsSet() && t < from) || (to.IsSet() && t > to)) continue;
        tracked.clear();
        for (const auto& satellite : epoch.satellites) {
            const auto values = epoch.valuesOf(satellite);
            const auto isPresent = [](const rinex::ObservedValue& value) { return value.present; };
            if (std::any_of(values.begin(), values.end(), isPresent)) tracked.push_back(satellite.id);
        }
        judge(orbits, site.position, t, tracked);
    }
    if (m_epochs == 0) throw Failure(file + ": there is no epoch to compare with");
}

void Tracking::judge(OrbitFiles& orbits, const CGeoCoord& site, const SMjdTime& t,
                     const std::vector<CALN::SCalSatID>& tracked) {
    if (m_epochs++ == 0) m_first = t;
    m_last = t;
    CALN::SCalElevationAzimuth all, healthy;  // both stay empty when no orbit serves the epoch
    orbits.calculator().GetElevAziData(site, t, all, true);
    orbits.calculator().GetElevAziData(site, t, healthy, false);
    double elevation = 0.0;
    double azimuth = 0.0;
    const auto surprise = [&t](Surprise& s, double at) {
        if (s.epochs++ == 0) s.first = t;
        s.last = t;
        s.lowest = std::min(s.lowest, at);
    };
    for (const CALN::SCalSatID& id : tracked) {
        const auto counts = m_systems.find(id.system);
        if (counts == m_systems.end()) {
            ++m_leftOut[id.system];
            continue;
        }
        ++counts->second.tracked;
        if (!all.getEleAzi(id, elevation, azimuth)) {
            ++counts->second.withoutOrbit;
            surprise(m_withoutOrbit[id], 0.0);
        } else if (elevation <= 0.0) {
            ++counts->second.below;
            surprise(m_below[id], elevation);
        }
    }
    for (const auto& [id, count] : orbits.satellites()) {
        if (!healthy.getEleAzi(id, elevation, azimuth) || degrees(elevation) <= kExpected) continue;
        Counts& counts = m_systems[id.system];
        ++counts.expected;
        if (std::find(tracked.begin(), tracked.end(), id) != tracked.end()) ++counts.met;
    }
}

Tracking::Counts Tracking::all() const {
    Counts sum;
    for (const auto& [system, counts] : m_systems) sum.add(counts);
    return sum;
}

bool Tracking::agrees() const {
    return std::all_of(m_below.begin(), m_below.end(),
                       [](const auto& entry) { return degrees(entry.second.lowest) >= kRefraction; });
}

std::string Tracking::text() const {
    std::string text =
        fmt::format("{}: {} epochs, {} to {}\n", m_file, m_epochs, formatTime(m_first), formatTime(m_last));
    if (m_faults != 0) text += fmt::format("{} bad epochs passed over\n", m_faults);
    Table table({"", "tracked", "below horizon", "without orbit", "expected", "of these tracked", ""}, "<>>>>>>");
    for (const auto& [system, counts] : m_systems) table.add(counts.row(systemOfCode(system)->name));
    table.add(all().row("all"));
    text += table.text();
    text += fmt::format("Satellites times epochs. Expected: healthy and predicted above {:.0f} degrees.\n", kExpected);
    for (const auto& [system, count] : m_leftOut) {
        text += fmt::format("left out: {}, without any orbit in the files, tracked {} times\n",
                            systemOfCode(system)->name, count);
    }
    for (const auto& [id, s] : m_below) {
        text +=
            fmt::format("{} was tracked below the horizon: {} epochs, {} to {}, down to {:.2f} degrees\n",
                        rinex::satelliteName(id), s.epochs, formatTime(s.first), formatTime(s.last), degrees(s.lowest));
    }
    for (const auto& [id, s] : m_withoutOrbit) {
        text += fmt::format("{} was tracked without an orbit: {} epochs, {} to {}\n", rinex::satelliteName(id),
                            s.epochs, formatTime(s.first), formatTime(s.last));
    }
    text += agrees()
                ? "Every tracked satellite with an orbit was predicted above the horizon, give or take refraction.\n"
                : "Some satellites were tracked far below their predicted horizon.\n";
    return text;
}

Json Tracking::json() const {
    Json json = {{"observations", m_file},        {"epochs", m_epochs},           {"from", formatTime(m_first)},
                 {"to", formatTime(m_last)},      {"badEpochs", m_faults},        {"agrees", agrees()},
                 {"all", all().json()},           {"systems", Json::object()},    {"leftOut", Json::object()},
                 {"belowHorizon", Json::array()}, {"withoutOrbit", Json::array()}};
    for (const auto& [system, counts] : m_systems) json["systems"][systemOfCode(system)->name] = counts.json();
    for (const auto& [system, count] : m_leftOut) json["leftOut"][systemOfCode(system)->name] = count;
    for (const auto& [id, s] : m_below) {
        json["belowHorizon"].push_back({{"satellite", rinex::satelliteName(id)},
                                        {"epochs", s.epochs},
                                        {"from", formatTime(s.first)},
                                        {"to", formatTime(s.last)},
                                        {"lowest", degrees(s.lowest)}});
    }
    for (const auto& [id, s] : m_withoutOrbit) {
        json["withoutOrbit"].push_back({{"satellite", rinex::satelliteName(id)},
                                        {"epochs", s.epochs},
                                        {"from", formatTime(s.first)},
                                        {"to", formatTime(s.last)}});
    }
    return json;
}

}  // namespace halvex::tool
