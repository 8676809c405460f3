#include "formats/rinex/ObservationReader.h"

#include <algorithm>
#include <span>
#include <utility>

#include "formats/io/Columns.h"
#include "formats/io/FixedNumber.h"
#include "formats/rinex/HeaderParser.h"
#include "formats/rinex/SatelliteName.h"

namespace halvex::rinex {
namespace {

// A field: F14.3, loss-of-lock indicator, signal strength.
constexpr std::size_t kFieldWidth = 16;
constexpr std::size_t kValueWidth = 14;
constexpr std::size_t kFieldsPerLine2 = 5;
constexpr std::size_t kSatellitesPerLine2 = 12;
constexpr std::size_t kSatelliteColumn2 = 32;
constexpr std::size_t kSatelliteWidth = 3;

/// A digit up to `highest`, or a blank, which is 0. Without branches: which of the two comes is hard to guess.
bool readIndicator(char c, char highest, std::uint8_t& value) {
    const bool blank = c == ' ';
    value = static_cast<std::uint8_t>(blank ? 0 : c - '0');
    return blank || static_cast<unsigned char>(c - '0') <= static_cast<unsigned char>(highest - '0');
}

[[gnu::always_inline]] inline bool readField(const char* text, double scale, ObservedValue& observed) {
    if (areBlank16(text)) return true;
    double value = 0.0;
    if (parseF14d3(text, value) == Field::bad) return false;
    observed.value = scale == 1.0 ? value : value / scale;
    observed.present = value != 0.0;
    const bool lockGood = readIndicator(text[kValueWidth], '7', observed.lossOfLock);
    return readIndicator(text[kValueWidth + 1], '9', observed.signalStrength) && lockGood;
}

/// Reads as many fields as there are values. True when all are good and nothing but blanks follows; else `bad` is the
/// field that is not, or the one behind the last.
bool readFields(std::string_view text, std::span<ObservedValue> values, const double* scales, std::size_t& bad) {
    const std::size_t whole = std::min(values.size(), text.size() / kFieldWidth);
    for (bad = 0; bad < whole; ++bad) {
        if (!readField(text.data() + bad * kFieldWidth, scales[bad], values[bad])) return false;
    }
    if (whole == values.size()) return isBlank(columns(text, whole * kFieldWidth));
    std::array<char, kFieldWidth> cut{};
    cut.fill(' ');
    const std::string_view rest = text.substr(whole * kFieldWidth);
    std::copy(rest.begin(), rest.end(), cut.begin());
    return readField(cut.data(), scales[whole], values[whole]);
}

/// What is wrong with the field that begins in `column` (0-based).
std::string fieldFault(std::string_view line, std::size_t column, bool behindLast) {
    const auto quoted = [&line](std::size_t first, std::size_t width) {
        return '"' + std::string(withoutTrailingBlanks(columns(line, first, width))) + '"';
    };
    const auto isIndicator = [](char c, char highest) { return c == ' ' || (c >= '0' && c <= highest); };
    if (behindLast)
        return "column " + std::to_string(column + 1) + ": text behind the last field: " + quoted(column, 20);
    double value = 0.0;
    if (parseDecimal(columns(line, column, kValueWidth), value) == Field::bad) {
        return "columns " + std::to_string(column + 1) + " to " + std::to_string(column + kValueWidth) + ": " +
               quoted(column, kValueWidth) + " is no number";
    }
    const std::size_t indicator = column + kValueWidth;
    if (!isIndicator(columnAt(line, indicator), '7')) {
        return "column " + std::to_string(indicator + 1) + ": loss-of-lock indicator " + quoted(indicator, 1) +
               " is not 0 to 7";
    }
    return "column " + std::to_string(indicator + 2) + ": signal strength " + quoted(indicator + 1, 1) +
           " is not 0 to 9";
}

std::string ofAnnounced(std::size_t count, unsigned announced, std::string_view what) {
    return std::to_string(count) + " of " + std::to_string(announced) + ' ' + std::string(what);
}

}  // namespace

bool ObservationReader::open(const std::string& name) {
    LineReader lines;
    if (lines.open(name)) return open(std::move(lines));
    *this = ObservationReader();
    m_lines = std::move(lines);
    m_error = m_lines.error().value_or(FormatError{name, 0, "cannot be opened"});
    return false;
}

bool ObservationReader::open(LineReader lines) {
    *this = ObservationReader();
    m_lines = std::move(lines);
    m_ended = !readHeader();
    return !m_ended;
}

bool ObservationReader::readHeader() {
    HeaderParser parser(m_header, HeaderParser::Place::fileHeader);
    while (!parser.ended()) {
        if (!nextLine()) {
            const bool empty = m_lines.lineNumber() == 0;
            m_error = m_lines.error().value_or(FormatError{m_lines.name(), m_lines.lineNumber(),
                                                           empty ? "the file is empty" : "END OF HEADER is missing"});
            return false;
        }
        const bool observations = m_lines.lineNumber() > 1 && m_line.starts_with('>');
        if (observations || m_lines.lineNumber() > kLongestHeader) {
            fail("END OF HEADER is missing before this line");
            return false;
        }
        if (auto fault = parser.take(m_line)) {
            fail(std::move(*fault));
            return false;
        }
    }
    if (auto fault = parser.finish()) {
        fail(std::move(*fault));
        return false;
    }
    m_family = m_header.version < 3.0 ? Family::rinex2 : Family::rinex3;
    return true;
}

bool ObservationReader::nextLine() {
    const auto line = m_lines.next();
    m_line = line.value_or(std::string_view());
    return line.has_value();
}

/// Goes on to the next line that an epoch may begin with.
bool ObservationReader::findEpoch() {
    while (nextLine()) {
        if (mayBeginEpoch(m_line, m_family)) {
            m_lines.putBack();
            m_lost = false;
            return true;
        }
    }
    return false;
}

ObservationReader::Result ObservationReader::fail(std::string message) {
    m_error = FormatError{m_lines.name(), m_lines.lineNumber(), std::move(message)};
    // The line that does not fit here may be the beginning of the next epoch.
    if (m_insideEpoch && mayBeginEpoch(m_line, m_family)) m_lines.putBack();
    m_insideEpoch = false;
    m_lost = true;
    return Result::error;
}

ObservationReader::Result ObservationReader::failAtEnd(std::size_t count, unsigned announced, std::string_view what) {
    m_ended = true;
    m_error = m_lines.error().value_or(FormatError{
        m_lines.name(), m_lines.lineNumber(), "the file ends inside an epoch: " + ofAnnounced(count, announced, what)});
    return Result::error;
}

ObservationReader::Result ObservationReader::next(ObservationEpoch& epoch) {
    if (m_ended) return Result::end;
    m_insideEpoch = false;

    std::uint64_t blankLine = 0;
    bool found = !m_lost || findEpoch();
    while (found && (found = nextLine()) && isBlank(m_line)) {
        if (blankLine == 0) blankLine = m_lines.lineNumber();
    }
    if (!found) {
        m_ended = true;
        if (!m_lines.error()) return Result::end;
        m_error = *m_lines.error();
        return Result::error;
    }
    if (blankLine != 0) {
        m_lines.putBack();
        fail("a blank line where an epoch should begin");
        m_error.line = blankLine;
        return Result::error;
    }

    EpochLine start;
    if (auto fault = parseEpochLine(m_line, m_family, start)) return fail(std::move(*fault));
    epoch.time = start.time;
    epoch.flag = start.flag;
    epoch.clockOffset = start.clockOffset;
    epoch.line = m_lines.lineNumber();
    epoch.satellites.clear();
    epoch.values.clear();
    if (start.isEvent()) return readEvent(start);
    m_seen.fill(0);
    return m_family == Family::rinex2 ? readSatellites2(start, epoch) : readSatellites3(start, epoch);
}

ObservationReader::Result ObservationReader::readEvent(const EpochLine& start) {
    ObservationHeader changed = m_header;  // a bad record leaves all as it was
    HeaderParser parser(changed, HeaderParser::Place::event);
    m_insideEpoch = true;
    for (unsigned i = 0; i < start.count; ++i) {
        if (!nextLine()) return failAtEnd(i, start.count, "header records");
        if (auto fault = parser.take(m_line)) return fail(std::move(*fault));
    }
    if (auto fault = parser.finish()) return fail(std::move(*fault));
    m_header = std::move(changed);
    if (parser.changed()) ++m_headerChanges;
    return Result::event;
}

std::optional<std::string> ObservationReader::addSatellite(const CALN::SCalSatID& id, ObservationEpoch& epoch) {
    const std::uint64_t bit = std::uint64_t{1} << (id.number & 63U);
    if ((m_seen[id.system] & bit) != 0) return "satellite " + satelliteName(id) + " stands twice in this epoch";
    m_seen[id.system] |= bit;
    ObservationEpoch::Satellite satellite;
    satellite.id = id;
    satellite.first = static_cast<std::uint32_t>(epoch.values.size());
    satellite.count = static_cast<std::uint32_t>(m_header.codes[id.system].size());
    epoch.satellites.push_back(satellite);
    epoch.values.resize(epoch.values.size() + satellite.count);
    return std::nullopt;
}

/// RINEX 2: the satellites on the epoch line, twelve to a line, then each one's values, five to a line.
ObservationReader::Result ObservationReader::readSatellites2(const EpochLine& start, ObservationEpoch& epoch) {
    const char blankSystem = m_header.fileSystem == 'M' ? 'G' : m_header.fileSystem;
    for (std::size_t i = 0; i < start.count; ++i) {
        const std::size_t place = i % kSatellitesPerLine2;
        if (i > 0 && place == 0) {
            if (!nextLine()) return failAtEnd(0, start.count, "satellites");
            m_insideEpoch = true;
            if (!isBlank(columns(m_line, 0, kSatelliteColumn2))) return fail("the satellite list does not go on here");
        }
        const std::size_t column = kSatelliteColumn2 + kSatelliteWidth * place;
        CALN::SCalSatID id;
        if (auto fault = parseSatellite(columns(m_line, column, kSatelliteWidth), blankSystem, id))
            return fail(std::move(*fault));
        if (auto fault = addSatellite(id, epoch)) return fail(std::move(*fault));
    }
    const std::size_t onLastLine = start.count == 0 ? 0 : (start.count - 1) % kSatellitesPerLine2 + 1;
    const std::size_t restWidth = kSatelliteWidth * (kSatellitesPerLine2 - onLastLine);
    if (!isBlank(columns(m_line, kSatelliteColumn2 + kSatelliteWidth * onLastLine, restWidth))) {
        return fail("more satellites than the " + std::to_string(start.count) + " counted");
    }

    m_insideEpoch = true;
    for (std::size_t i = 0; i < epoch.satellites.size(); ++i) {
        const ObservationEpoch::Satellite& satellite = epoch.satellites[i];
        const double* const scales = m_header.scaleFactors[satellite.id.system].data();
        for (std::size_t first = 0; first < satellite.count; first += kFieldsPerLine2) {
            if (!nextLine()) return failAtEnd(i, start.count, "satellites");
            const std::size_t count = std::min<std::size_t>(kFieldsPerLine2, satellite.count - first);
            std::size_t bad = 0;
            if (!readFields(m_line, std::span(epoch.values).subspan(satellite.first + first, count), scales + first,
                            bad)) {
                return fail(satelliteName(satellite.id) + ": " + fieldFault(m_line, bad * kFieldWidth, bad == count));
            }
        }
    }
    return Result::epoch;
}

/// RINEX 3 and 4: a line for each satellite.
ObservationReader::Result ObservationReader::readSatellites3(const EpochLine& start, ObservationEpoch& epoch) {
    m_insideEpoch = true;
    for (std::size_t i = 0; i < start.count; ++i) {
        if (!nextLine()) return failAtEnd(i, start.count, "satellites");
        CALN::SCalSatID id;
        if (auto fault = parseSatellite(columns(m_line, 0, kSatelliteWidth), ' ', id)) {
            if (!m_line.starts_with('>')) return fail(std::move(*fault));
            return fail("the epoch of line " + std::to_string(epoch.line) +
                        " ends early: " + ofAnnounced(i, start.count, "satellites"));
        }
        if (auto fault = addSatellite(id, epoch)) return fail(std::move(*fault));
        const ObservationEpoch::Satellite& satellite = epoch.satellites.back();
        std::size_t bad = 0;
        if (!readFields(columns(m_line, kSatelliteWidth),
                        std::span(epoch.values).subspan(satellite.first, satellite.count),
                        m_header.scaleFactors[id.system].data(), bad)) {
            const bool behindLast = bad == satellite.count;
            if (behindLast && bad == 0)
                return fail("satellite " + satelliteName(id) + ": the header has no observation types of its system");
            return fail(satelliteName(id) + ": " + fieldFault(m_line, kSatelliteWidth + bad * kFieldWidth, behindLast));
        }
    }
    return Result::epoch;
}

}  // namespace halvex::rinex
