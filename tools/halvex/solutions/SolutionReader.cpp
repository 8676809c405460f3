#include "tools/halvex/solutions/SolutionReader.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

#include "formats/rinex/TimeSystems.h"
#include "tools/halvex/Tool.h"

namespace halvex::tool {
namespace {

constexpr const char* kNames =
    "time, latitude, longitude, height, geoidSeparation, quality, satellites, hdop, age, station, coordinateQuality, "
    "figure and results";
constexpr std::string_view kResults = "results";

/// A number of the right kind that takes up the whole text and lies in its range.
template <class Number>
bool take(std::string_view text, Number& value, double least, double most) {
    Number read{};
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), read);
    if (error != std::errc() || end != text.data() + text.size()) return false;
    if (!(static_cast<double>(read) >= least && static_cast<double>(read) <= most)) return false;
    value = read;
    return true;
}

/// A value of the solution but for its time: what it is called and where it goes.
struct Column {
    std::string_view name;
    bool (*set)(Solution&, std::string_view);
};

constexpr double kFar = 1e9;  // heights and figures beyond it are mistakes
constexpr std::array<Column, 11> kColumns{{
    {"latitude", [](Solution& s, std::string_view text) { return take(text, s.latitude, -90.0, 90.0); }},
    {"longitude", [](Solution& s, std::string_view text) { return take(text, s.longitude, -180.0, 180.0); }},
    {"height", [](Solution& s, std::string_view text) { return take(text, s.height, -kFar, kFar); }},
    {"geoidSeparation", [](Solution& s, std::string_view text) { return take(text, s.separation, -kFar, kFar); }},
    {"quality", [](Solution& s, std::string_view text) { return take(text, s.quality, 0, 9); }},
    {"satellites", [](Solution& s, std::string_view text) { return take(text, s.satellites, 0, 999); }},
    {"hdop", [](Solution& s, std::string_view text) { return take(text, s.hdop, 0.0, kFar); }},
    {"age", [](Solution& s, std::string_view text) { return take(text, s.age, 0.0, kFar); }},
    {"station", [](Solution& s, std::string_view text) { return take(text, s.station, 0, 2147483647); }},
    {"coordinateQuality",
     [](Solution& s, std::string_view text) { return take(text, s.coordinateQuality, 0.0, kFar); }},
    {"figure", [](Solution& s, std::string_view text) { return take(text, s.figure, 0.0, kFar); }},
}};

bool setValue(Solution& solution, std::string_view name, std::string_view text, bool& known) {
    known = true;
    if (name.starts_with(kResults)) {
        std::uint32_t index = 0;
        if (take(name.substr(kResults.size()), index, 0, 6)) {
            return take(text, solution.results.values[index], -kFar, kFar);
        }
    }
    const auto* column = std::find_if(kColumns.begin(), kColumns.end(),
                                      [name](const Column& candidate) { return candidate.name == name; });
    known = column != kColumns.end();
    return known && column->set(solution, text);
}

std::string_view trimmed(std::string_view text) {
    const std::size_t begin = std::min(text.find_first_not_of(" \t"), text.size());
    text.remove_prefix(begin);
    return text.substr(0, text.find_last_not_of(" \t") + 1);
}

std::vector<std::string> cells(std::string_view line) {
    std::vector<std::string> result;
    for (std::size_t at = 0; at <= line.size();) {
        const std::size_t end = std::min(line.find(',', at), line.size());
        result.emplace_back(trimmed(line.substr(at, end - at)));
        at = end + 1;
    }
    return result;
}

/// UTC of a GPS time. The offset is looked up by UTC, which the offset of a moment before gives well enough.
SMjdTime toUtc(const SMjdTime& gps) {
    SMjdTime before = gps;
    before.SubtractSeconds(rinex::gpsMinusUtc(gps));
    SMjdTime utc = gps;
    utc.SubtractSeconds(rinex::gpsMinusUtc(before));
    return utc;
}

}  // namespace

SolutionReader::SolutionReader(const std::string& name, bool gpsTime) : m_gpsTime(gpsTime) {
    if (!m_reader.open(name)) throw Failure(*m_reader.error());
    const auto line = nextLine();
    if (!line) throw Failure(name + ": there are no positions in it");
    m_json = line->front() == '{';
    if (m_json) {
        m_reader.putBack();
    } else {
        m_columns = cells(*line);
        if (std::find(m_columns.begin(), m_columns.end(), "time") == m_columns.end()) {
            refuse(std::string("neither JSON nor the names of CSV columns: ") + kNames);
        }
    }
}

std::string SolutionReader::place() const {
    return m_reader.name() + ":" + std::to_string(m_reader.lineNumber());
}

void SolutionReader::refuse(const std::string& why) const {
    throw Failure(place() + ": " + why);
}

/// The next line that is not blank, without the blanks around it.
std::optional<std::string_view> SolutionReader::nextLine() {
    while (const auto line = m_reader.next()) {
        if (const std::string_view text = trimmed(*line); !text.empty()) return text;
    }
    if (m_reader.error()) throw Failure(*m_reader.error());
    return std::nullopt;
}

std::optional<Solution> SolutionReader::next() {
    const auto line = nextLine();
    if (!line) return std::nullopt;
    return solutionOf(m_json ? jsonValues(*line) : csvValues(*line));
}

SolutionReader::Values SolutionReader::jsonValues(std::string_view line) const {
    const Json object = Json::parse(line, nullptr, false);
    if (!object.is_object()) refuse("no object of JSON");
    Values values;
    const auto add = [&](const std::string& name, const Json& value) {
        if (!value.is_string() && !value.is_number()) refuse(name + " has to be a number or a text");
        values.emplace_back(name, value.is_string() ? value.get<std::string>() : value.dump());
    };
    for (const auto& [name, value] : object.items()) {
        if (value.is_null()) continue;
        if (name != kResults) {
            add(name, value);
            continue;
        }
        if (!value.is_array()) refuse("results has to be an array");
        for (std::size_t i = 0; i < value.size(); ++i) add(name + std::to_string(i), value[i]);
    }
    return values;
}

SolutionReader::Values SolutionReader::csvValues(std::string_view line) const {
    const std::vector<std::string> texts = cells(line);
    if (texts.size() != m_columns.size()) {
        refuse(std::to_string(texts.size()) + " columns instead of " + std::to_string(m_columns.size()));
    }
    Values values;
    for (std::size_t i = 0; i < texts.size(); ++i) {
        if (!texts[i].empty()) values.emplace_back(m_columns[i], texts[i]);
    }
    return values;
}

Solution SolutionReader::solutionOf(const Values& values) const {
    Solution solution;
    const auto has = [&values](std::string_view name) {
        return std::any_of(values.begin(), values.end(), [name](const auto& value) { return value.first == name; });
    };
    for (const auto& [name, text] : values) {
        bool known = false;
        if (name == "time") {
            solution.time = timeOf(text);
        } else if (!setValue(solution, name, text, known)) {
            refuse(known ? fmt::format("{} cannot be '{}'", name, text)
                         : fmt::format("there is no '{}'; known are {}", name, kNames));
        }
    }
    if (!has("time")) refuse("time is missing");
    if (solution.quality != 0 && !(has("latitude") && has("longitude"))) refuse("latitude or longitude is missing");
    return solution;
}

SMjdTime SolutionReader::timeOf(std::string text) const {
    if (!m_gpsTime) {
        if (text.find('-') == text.npos) refuse("time '" + text + "' is not UTC; --gps takes GPS time");
        if (text.ends_with('Z')) text.pop_back();
    }
    try {
        const SMjdTime time = parseTime(text);
        return m_gpsTime ? toUtc(time) : time;
    } catch (const Failure& failure) {
        refuse(failure.what());
    }
}

}  // namespace halvex::tool
