#include "formats/sp3/Sp3Header.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <set>
#include <utility>

#include "formats/io/Columns.h"
#include "formats/io/FixedNumber.h"
#include "formats/rinex/EpochLine.h"
#include "formats/rinex/SatelliteName.h"
#include "formats/rinex/TimeSystems.h"

namespace halvex::sp3 {
namespace {

constexpr std::size_t kListColumn = 9;
constexpr std::size_t kListWidth = 3;
constexpr std::size_t kPerLine = 17;

std::string quoted(std::string_view text) {
    return '"' + std::string(withoutBlanks(text)) + '"';
}

/// A satellite of a system or with a number that the house does not know: a letter, then a number that is not 0.
bool isForeignSatellite(std::string_view name) {
    const auto isDigit = [](char c) { return c >= '0' && c <= '9'; };
    return name.size() == kListWidth && name[0] >= 'A' && name[0] <= 'Z' && (isDigit(name[1]) || name[1] == ' ') &&
           isDigit(name[2]) && name.substr(1) != "00" && name.substr(1) != " 0";
}

std::optional<TimeSystem> timeSystemOf(std::string_view name) {
    static constexpr std::array<std::pair<std::string_view, TimeSystem>, 9> kNames{{
        {"GPS", TimeSystem::gps},
        {"UTC", TimeSystem::utc},
        {"GLO", TimeSystem::glonass},
        {"GAL", TimeSystem::galileo},
        {"BDT", TimeSystem::beidou},
        {"QZS", TimeSystem::qzss},
        {"IRN", TimeSystem::navic},
        {"TAI", TimeSystem::tai},
        {"ccc", TimeSystem::gps},  // version a: not given
    }};
    const auto* const found = std::ranges::find(kNames, name, [](const auto& entry) { return entry.first; });
    if (found == kNames.end()) return std::nullopt;
    return found->second;
}

}  // namespace

std::optional<SMjdTime> parseTime(std::string_view line) {
    int year = 0;
    int month = 0;
    int day = 0;
    int hour = 0;
    int minute = 0;
    double second = 0.0;
    const std::array<Field, 6> fields{
        parseInteger(columns(line, 3, 4), year),    parseInteger(columns(line, 8, 2), month),
        parseInteger(columns(line, 11, 2), day),    parseInteger(columns(line, 14, 2), hour),
        parseInteger(columns(line, 17, 2), minute), parseDecimal(columns(line, 20, 11), second),
    };
    // The blanks between the fields: digits there mean that the fields stand elsewhere.
    const bool apart = std::ranges::all_of(std::array<std::size_t, 5>{7, 10, 13, 16, 19},
                                           [&](std::size_t column) { return columnAt(line, column) == ' '; });
    const bool numbers = std::ranges::all_of(fields, [](Field field) { return field == Field::number; });
    if (!apart || !numbers || year < 1) return std::nullopt;
    return rinex::checkedTime(year, month, day, hour, minute, second);
}

SMjdTime toGpsTime(const SMjdTime& printed, TimeSystem system) {
    constexpr int kTaiMinusGps = 19;  // [s], from the origin of GPS time on
    SMjdTime gps = printed;
    switch (system) {
        case TimeSystem::utc:
        case TimeSystem::glonass:
            gps.AddSeconds(rinex::gpsMinusUtc(printed));
            break;
        case TimeSystem::beidou:
            gps.AddSeconds(rinex::kGpsMinusBeiDou);
            break;
        case TimeSystem::tai:
            gps.SubtractSeconds(kTaiMinusGps);
            break;
        default:
            break;
    }
    return gps;
}

std::optional<std::string> HeaderParser::take(std::string_view line) {
    ++m_lines;
    if (m_lines == 1) return takeFirst(line);
    if (m_lines == 2) return takeSecond(line);
    if (line.starts_with("++")) return takeAccuracies(line);
    if (line.starts_with('+')) return takeSatellites(line);
    if (line.starts_with("/*")) {
        m_header.comments.emplace_back(withoutTrailingBlanks(columns(line, 3)));
        return std::nullopt;
    }
    if (line.starts_with("%c") && !std::exchange(m_described, true)) return takeDescription(line);
    if (line.starts_with('%')) return std::nullopt;
    return "a header line does not begin like this: " + quoted(line.substr(0, 20));
}

std::optional<std::string> HeaderParser::takeFirst(std::string_view line) {
    m_header.version = columnAt(line, 1);
    const char content = columnAt(line, 2);
    if (columnAt(line, 0) != '#' || (content != 'P' && content != 'V')) return "this is no SP3 file";
    if (m_header.version < 'a' || m_header.version > 'd') {
        return std::string("SP3 version '") + m_header.version + "' is not a, b, c or d";
    }
    m_header.velocities = content == 'V';
    const auto start = parseTime(line);
    if (!start) return "the start " + quoted(columns(line, 3, 28)) + " is no date and time";
    m_header.start = *start;
    int epochs = 0;
    if (parseInteger(columns(line, 32, 7), epochs) != Field::number || epochs < 0) {
        return "the number of epochs " + quoted(columns(line, 32, 7)) + " is none";
    }
    m_header.epochCount = static_cast<std::uint32_t>(epochs);
    m_header.dataUsed = withoutBlanks(columns(line, 40, 5));
    m_header.coordinateSystem = withoutBlanks(columns(line, 46, 5));
    m_header.orbitType = withoutBlanks(columns(line, 52, 3));
    m_header.agency = withoutBlanks(columns(line, 56, 4));
    return std::nullopt;
}

std::optional<std::string> HeaderParser::takeSecond(std::string_view line) {
    constexpr double kLongest = 100000.0;
    if (!line.starts_with("##")) return "the second line does not begin with \"##\"";
    const std::string_view interval = columns(line, 24, 14);
    if (parseDecimal(interval, m_header.interval) != Field::number || m_header.interval <= 0.0 ||
        m_header.interval >= kLongest) {
        return "the interval " + quoted(interval) + " is none";
    }
    return std::nullopt;
}

std::optional<std::string> HeaderParser::takeSatellites(std::string_view line) {
    if (m_announced == 0) {
        const std::string_view count = columns(line, 3, 3);
        if (parseInteger(count, m_announced) != Field::number || m_announced < 1) {
            return "the number of satellites " + quoted(count) + " is none";
        }
    }
    for (std::size_t i = 0; i < kPerLine; ++i) {
        const std::string_view name = columns(line, kListColumn + kListWidth * i, kListWidth);
        int number = 0;
        const Field padding = parseInteger(name, number);
        if (padding == Field::blank || (padding == Field::number && number == 0)) continue;
        CALN::SCalSatID id;
        if (auto fault = rinex::parseSatellite(name, 'G', id); fault && !isForeignSatellite(name)) return fault;
        m_names.emplace_back(name);
    }
    return std::nullopt;
}

std::optional<std::string> HeaderParser::takeAccuracies(std::string_view line) {
    for (std::size_t i = 0; i < kPerLine; ++i) {
        const std::string_view field = columns(line, kListColumn + kListWidth * i, kListWidth);
        int exponent = 0;
        if (parseInteger(field, exponent) == Field::bad || exponent < 0) {
            return "the accuracy " + quoted(field) + " is no exponent";
        }
        m_exponents.push_back(exponent);
    }
    return std::nullopt;
}

std::optional<std::string> HeaderParser::takeDescription(std::string_view line) {
    const char type = columnAt(line, 3);
    if (type != 'c') m_header.fileType = type;
    const auto system = timeSystemOf(columns(line, 9, 3));
    if (!system) return "the time system " + quoted(columns(line, 9, 3)) + " is unknown";
    m_header.timeSystem = *system;
    return std::nullopt;
}

std::optional<std::string> HeaderParser::finish() {
    if (m_lines < 2) return "the file has no SP3 header";
    if (m_announced == 0) return "the header has no list of satellites";
    if (m_names.size() != static_cast<std::size_t>(m_announced)) {
        return "the header announces " + std::to_string(m_announced) + " satellites and lists " +
               std::to_string(m_names.size());
    }
    m_exponents.resize(std::max(m_exponents.size(), m_names.size()));
    std::set<std::string> listed;
    for (std::size_t i = 0; i < m_names.size(); ++i) {
        Header::Satellite satellite;
        const bool foreign = rinex::parseSatellite(m_names[i], 'G', satellite.id).has_value();
        const std::string name = foreign ? m_names[i] : rinex::satelliteName(satellite.id);
        if (!listed.insert(name).second) return "the header lists satellite " + name + " twice";
        if (foreign) {
            m_header.otherSatellites.push_back(name);
            continue;
        }
        // The exponent is of 2, the unit a millimetre.
        if (m_exponents[i] != 0) satellite.accuracy = std::ldexp(1e-3, m_exponents[i]);
        m_header.satellites.push_back(satellite);
    }
    m_header.start = toGpsTime(m_header.start, m_header.timeSystem);
    return std::nullopt;
}

}  // namespace halvex::sp3
