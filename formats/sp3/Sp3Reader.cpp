#include "formats/sp3/Sp3Reader.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

#include "formats/io/Columns.h"
#include "formats/io/FixedNumber.h"
#include "formats/rinex/SatelliteName.h"
#include "formats/sp3/Sp3Header.h"

namespace halvex::sp3 {
namespace {

constexpr std::uint64_t kLongestHeader = 20000;  // lines; a file that goes on like this is none
constexpr std::size_t kNameColumn = 1;
constexpr std::size_t kNameWidth = 3;
constexpr std::size_t kFirstColumn = 4;
constexpr std::size_t kFieldWidth = 14;
constexpr std::size_t kFields = 4;    // x, y, z [km] and the clock [us]
constexpr double kBeyondField = 1e7;  // what F14.6 has no room for
constexpr double kBadClock = 999999.0;

struct Flag {
    std::size_t column;
    char letter;
    bool SatelliteState::*member;
};
constexpr std::array<Flag, 4> kFlags{{
    {74, 'E', &SatelliteState::clockEvent},
    {75, 'P', &SatelliteState::clockPredicted},
    {78, 'M', &SatelliteState::manoeuvre},
    {79, 'P', &SatelliteState::orbitPredicted},
}};

bool beginsEpoch(std::string_view line) {
    return line.starts_with('*');
}
bool isEnd(std::string_view line) {
    return line.starts_with("EOF");
}

}  // namespace

bool Sp3Reader::open(const std::string& name) {
    LineReader lines;
    if (lines.open(name)) return open(std::move(lines));
    *this = Sp3Reader();
    m_error = lines.error().value_or(FormatError{name, 0, "cannot be opened"});
    return false;
}

bool Sp3Reader::open(LineReader lines) {
    *this = Sp3Reader();
    m_lines = std::move(lines);
    m_ended = !readHeader();
    return !m_ended;
}

bool Sp3Reader::readHeader() {
    HeaderParser parser(m_header);
    while (nextLine() && !beginsEpoch(m_line) && !isEnd(m_line)) {
        auto fault = parser.take(m_line);
        if (!fault && m_lines.lineNumber() > kLongestHeader) fault = "the header goes on and on";
        if (fault) {
            fail(std::move(*fault));
            return false;
        }
    }
    if (m_lines.error()) {
        m_error = *m_lines.error();
        return false;
    }
    if (auto fault = parser.finish()) {
        fail(std::move(*fault));
        return false;
    }
    m_lines.putBack();
    for (const Header::Satellite& satellite : m_header.satellites) m_seenIn.emplace(satellite.id, 0);
    return true;
}

bool Sp3Reader::nextLine() {
    const auto line = m_lines.next();
    m_line = line.value_or(std::string_view());
    return line.has_value();
}

/// Goes on to the next line that an epoch begins with, or the end line.
bool Sp3Reader::findEpoch() {
    while (nextLine()) {
        if (beginsEpoch(m_line) || isEnd(m_line)) return true;
    }
    return false;
}

Sp3Reader::Result Sp3Reader::fail(std::string message) {
    m_error = FormatError{m_lines.name(), m_lines.lineNumber(), std::move(message)};
    m_lost = true;
    return Result::error;
}

Sp3Reader::Result Sp3Reader::next(Epoch& epoch) {
    if (m_ended) return Result::end;
    // Behind a header and behind an epoch the next line is one of those.
    const bool found = m_lost ? findEpoch() : nextLine();
    m_lost = false;
    if (!found) {
        m_ended = true;
        m_endLineMissing = true;
        if (!m_lines.error()) return Result::end;
        m_error = *m_lines.error();
        return Result::error;
    }
    if (isEnd(m_line)) {
        m_ended = true;
        return Result::end;
    }

    if (auto fault = beginEpoch(epoch)) return fail(std::move(*fault));
    while (nextLine()) {
        if (beginsEpoch(m_line) || isEnd(m_line)) {
            m_lines.putBack();
            ++m_epochsRead;
            return Result::epoch;
        }
        if (m_line.starts_with('V') || m_line.starts_with("EP") || m_line.starts_with("EV") || isBlank(m_line)) {
            continue;
        }
        if (auto fault = addState(epoch)) return fail(std::move(*fault));
    }
    // No end line: an epoch that has all its satellites is taken for whole.
    if (!m_lines.error() && epoch.states.size() == m_header.satellites.size()) {
        ++m_epochsRead;
        return Result::epoch;
    }
    m_ended = true;
    m_endLineMissing = true;
    fail("the file ends inside an epoch: " + std::to_string(epoch.states.size()) + " of " +
         std::to_string(m_header.satellites.size()) + " satellites");
    if (m_lines.error()) m_error = *m_lines.error();
    return Result::error;
}

std::optional<std::string> Sp3Reader::beginEpoch(Epoch& epoch) {
    const auto time = parseTime(m_line);
    if (!time || !isBlank(columns(m_line, 1, 2))) {
        return "the epoch \"" + std::string(withoutBlanks(columns(m_line, 1, 30))) + "\" is no date and time";
    }
    epoch.time = toGpsTime(*time, m_header.timeSystem);
    epoch.line = m_lines.lineNumber();
    epoch.states.clear();
    if (m_lastTime.IsSet() && epoch.time <= m_lastTime) return "the epoch is not later than the one before";
    m_lastTime = epoch.time;
    return std::nullopt;
}

/// A position record: satellite, position, clock, and flags from version c on.
std::optional<std::string> Sp3Reader::addState(Epoch& epoch) {
    if (!m_line.starts_with('P')) {
        return "a record does not begin like this: \"" + std::string(withoutBlanks(m_line.substr(0, 20))) + '"';
    }
    const std::string_view name = columns(m_line, kNameColumn, kNameWidth);
    SatelliteState state;
    if (auto fault = rinex::parseSatellite(name, 'G', state.id)) {
        const auto& others = m_header.otherSatellites;
        return std::ranges::find(others, name) != others.end() ? std::nullopt : fault;
    }
    const auto seen = m_seenIn.find(state.id);
    if (seen == m_seenIn.end()) {
        return "satellite " + rinex::satelliteName(state.id) + " is not in the header's list";
    }
    if (seen->second == epoch.line) {
        return "satellite " + rinex::satelliteName(state.id) + " stands twice in this epoch";
    }

    // The last field is told from a piece of it by its width alone.
    if (m_line.size() < kFirstColumn + kFields * kFieldWidth) {
        return rinex::satelliteName(state.id) + ": the line is cut off";
    }
    std::array<double, kFields> values{};
    for (std::size_t i = 0; i < kFields; ++i) {
        const std::size_t column = kFirstColumn + i * kFieldWidth;
        const std::string_view field = columns(m_line, column, kFieldWidth);
        if (parseDecimal(field, values[i]) != Field::number || std::abs(values[i]) >= kBeyondField) {
            return rinex::satelliteName(state.id) + ": columns " + std::to_string(column + 1) + " to " +
                   std::to_string(column + kFieldWidth) + ": \"" + std::string(withoutBlanks(field)) +
                   "\" is no number";
        }
    }
    const auto [x, y, z, clock] = values;
    constexpr double kMetresPerKilometre = 1e3;
    if (x != 0.0 || y != 0.0 || z != 0.0) {
        state.position = ORBIT_COORD{x * kMetresPerKilometre, y * kMetresPerKilometre, z * kMetresPerKilometre};
    }
    if (clock < kBadClock) state.clock = clock / 1e6;
    if (m_header.version >= 'c') {
        for (const Flag& flag : kFlags) {
            const char letter = columnAt(m_line, flag.column);
            if (letter != ' ' && letter != flag.letter) {
                return rinex::satelliteName(state.id) + ": column " + std::to_string(flag.column + 1) + ": '" + letter +
                       "' is no flag of this place";
            }
            state.*flag.member = letter == flag.letter;
        }
    }
    seen->second = epoch.line;
    epoch.states.push_back(state);
    return std::nullopt;
}

}  // namespace halvex::sp3
