#include "tools/halvex/corrections/SsrReport.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>

#include "formats/rinex/SatelliteName.h"

namespace halvex::tool {
namespace {

using namespace CALN;

/// Update interval of a code of DF391 [s].
double intervalOf(std::uint8_t code) {
    static constexpr std::array<int, 16> kSeconds{1,   2,   5,   10,  15,   30,   60,   120,
                                                  240, 300, 600, 900, 1800, 3600, 7200, 10800};
    return kSeconds[code % kSeconds.size()];
}

std::string_view nameOf(eCALSSRCorrectionType type) {
    switch (type) {
        case eCALSSR_ORBIT_COMBINED:
            return "orbits, combined";
        case eCALSSR_CLOCK_COMBINED:
            return "clocks, combined";
        default:
            break;
    }
    switch (getFirstCodeOfKind(type)) {
        case eCALSSR_ORBIT:
            return "orbits";
        case eCALSSR_CLOCK:
            return "clocks";
        case eCALSSR_HIGH_RATE_CLOCK:
            return "high-rate clocks";
        case eCALSSR_CODE_BIAS:
            return "code biases";
        case eCALSSR_PHASE_BIAS:
            return "phase biases";
        case eCALSSR_URA:
            return "range accuracies";
        case eCALSSR_VERTICAL_IONOSPHERE:
            return "electron content";
        default:
            return "of the network";
    }
}

std::string_view nameOf(eCALSATSYSTEM system) {
    const SatelliteSystem* const known = systemOfCode(system);
    return known != nullptr ? known->name : "-";
}

std::string_view nameOfState(unsigned state) {
    static constexpr std::array<std::string_view, 4> kNames{"none", "orbits", "clocks", "both"};
    return kNames[state % kNames.size()];
}

std::string seconds(double value) {
    return std::to_string(std::llround(value));
}

}  // namespace

std::uint32_t productOf(const SSRCorrMsgBaseT& message) {
    constexpr std::uint32_t kSolutions = 16;
    return message.provider * kSolutions + message.solution % kSolutions;
}

void SsrReport::Group::add(const SSRCorrMsgBaseT& message, const std::vector<SCalSatID>& ids) {
    for (const SCalSatID& id : ids) satellites.set(id.number);
    if (epoch.IsSet() && message.epoch <= epoch) return;
    ++epochs;
    if (epoch.IsSet()) {
        constexpr double kMostIntervals = 1.5;
        const double step = message.epoch.GetDifferenceInSeconds(epoch);
        worstAge = std::max(worstAge, step);
        if (step > kMostIntervals * intervalOf(message.updateInterval) && ++gapCount <= kMostGaps) {
            gaps.push_back({epoch, step});
        }
    }
    epoch = message.epoch;
}

double SsrReport::Group::worstAgeAt(const SMjdTime& end) const {
    return std::max(worstAge, end.GetDifferenceInSeconds(epoch));
}

void SsrReport::add(const SSRCorrMsgBaseT& message) {
    m_first = m_messages == 0 ? message.epoch : std::min(m_first, message.epoch);
    m_last = m_messages == 0 ? message.epoch : std::max(m_last, message.epoch);
    ++m_messages;
    const std::uint32_t product = productOf(message);
    Source& source = m_sources.try_emplace(product, product).first->second;
    const eCALSSRCorrectionType type = message.GetSSRType();
    m_satellites.clear();
    message.getSatIDs(m_satellites);
    KindCounts& counts = source.kinds[{message.system, type}];
    ++counts.messages;
    counts.entries += m_satellites.size();
    if (systemOfCode(message.system) == nullptr) return;

    System& system = source.systems[message.system];
    if (system.issue && *system.issue != message.issueOfData) ++system.issueChanges;
    system.issue = message.issueOfData;
    const eCALSSRCorrectionType kind = getFirstCodeOfKind(type);
    if (kind != eCALSSR_ORBIT && kind != eCALSSR_CLOCK) return;
    (kind == eCALSSR_ORBIT ? system.orbits : system.clocks).add(message, m_satellites);
    source.container.AddCorrectionMsg(message);
    m_time = message.epoch;
}

Json SsrReport::groupJson(const Group& group, const SMjdTime& end, eCALSATSYSTEM system) {
    Json names = Json::array();
    for (std::size_t number = 1; number < group.satellites.size(); ++number) {
        if (group.satellites[number]) {
            names.push_back(rinex::satelliteName({system, static_cast<unsigned char>(number)}));
        }
    }
    Json json = {{"satellites", names}, {"epochs", group.epochs}};
    if (group.epochs == 0) return json;
    json["last"] = formatTime(group.epoch);
    json["age"] = end.GetDifferenceInSeconds(group.epoch);
    json["worstAge"] = group.worstAgeAt(end);
    json["gapCount"] = group.gapCount;
    json["gaps"] = Json::array();
    for (const Gap& gap : group.gaps) {
        json["gaps"].push_back({{"after", formatTime(gap.after)}, {"seconds", gap.seconds}});
    }
    return json;
}

Json SsrReport::sourceJson(std::uint32_t product, const Source& source) const {
    Json kinds = Json::array();
    for (const auto& [kind, counts] : source.kinds) {
        kinds.push_back({{"system", nameOf(kind.first)},
                         {"type", static_cast<std::uint32_t>(kind.second)},
                         {"corrections", nameOf(kind.second)},
                         {"messages", counts.messages},
                         {"entries", counts.entries}});
    }
    Json systems = Json::object();
    for (const auto& [code, system] : source.systems) {
        Json& entry = systems[std::string(1, systemOfCode(code)->letter)];
        entry = {{"name", nameOf(code)}, {"issueChanges", system.issueChanges}};
        if (!m_time.IsSet()) continue;
        entry["validState"] = source.container.GetValidState(code, m_time);
        entry["complete"] = source.container.IsComplete(code);
        entry["satellites"] = source.container.GetNumSat(code, m_time);
        entry["orbits"] = groupJson(system.orbits, m_time, code);
        entry["clocks"] = groupJson(system.clocks, m_time, code);
    }
    return {{"provider", product / 16}, {"solution", product % 16}, {"messages", kinds}, {"systems", systems}};
}

void SsrReport::addTo(Json& json) const {
    json["messages"] = m_messages;
    if (m_messages != 0) {
        json["from"] = formatTime(m_first);
        json["to"] = formatTime(m_last);
    }
    if (m_time.IsSet()) json["time"] = formatTime(m_time);
    json["sources"] = Json::array();
    for (const auto& [product, source] : m_sources) json["sources"].push_back(sourceJson(product, source));
}

std::string SsrReport::sourceText(std::uint32_t product, const Source& source) const {
    std::string text = fmt::format("  provider {}, solution {}\n", product / 16, product % 16);
    Table kinds({"system", "corrections", "messages", "entries"}, "<<>>");
    for (const auto& [kind, counts] : source.kinds) {
        kinds.add({std::string(nameOf(kind.first)), std::string(nameOf(kind.second)), std::to_string(counts.messages),
                   std::to_string(counts.entries)});
    }
    text += kinds.text("    ");
    Table covered({"system", "valid", "complete", "satellites", "", "covered", "epochs", "gaps", "age [s]", "worst",
                   "issue changes"},
                  "<<<><>>>>>>");
    std::string gaps;
    for (const auto& [code, system] : source.systems) {
        bool isFirst = true;
        for (const auto& [name, group] : {std::pair("orbits", &system.orbits), std::pair("clocks", &system.clocks)}) {
            if (group->epochs == 0) continue;
            std::vector<std::string> row(4);
            if (isFirst) {
                row = {std::string(nameOf(code)),
                       std::string(nameOfState(source.container.GetValidState(code, m_time))),
                       source.container.IsComplete(code) ? "yes" : "no",
                       std::to_string(source.container.GetNumSat(code, m_time))};
            }
            row.insert(
                row.end(),
                {name, std::to_string(group->satellites.count()), std::to_string(group->epochs),
                 std::to_string(group->gapCount), seconds(m_time.GetDifferenceInSeconds(group->epoch)),
                 seconds(group->worstAgeAt(m_time)), isFirst ? std::to_string(system.issueChanges) : std::string()});
            covered.add(row);
            isFirst = false;
            for (const Gap& gap : group->gaps) {
                gaps += fmt::format("    {} {}: gap of {} s after {}\n", nameOf(code), name, seconds(gap.seconds),
                                    formatTime(gap.after));
            }
        }
    }
    if (!covered.empty()) text += covered.text("    ");
    return text + gaps;
}

std::string SsrReport::text() const {
    if (m_messages == 0) return "  no corrections\n";
    std::string text =
        fmt::format("  {} to {} GPS time, {} messages", formatTime(m_first), formatTime(m_last), m_messages);
    if (m_time.IsSet()) text += ", state at " + formatTime(m_time);
    text += "\n";
    for (const auto& [product, source] : m_sources) text += sourceText(product, source);
    return text;
}

}  // namespace halvex::tool
