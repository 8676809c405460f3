#include "formats/rinex/NavigationReader.h"

#include <algorithm>
#include <array>
#include <utility>

#include "formats/io/Columns.h"
#include "formats/io/FixedNumber.h"
#include "formats/rinex/EpochLine.h"
#include "formats/rinex/FieldReader.h"
#include "formats/rinex/GlonassFields.h"
#include "formats/rinex/NavigationFields.h"
#include "formats/rinex/NavigationHeaderParser.h"
#include "formats/rinex/SatelliteName.h"
#include "formats/rinex/TimeSystems.h"

namespace halvex::rinex {
namespace {

constexpr std::size_t kSatelliteWidth = 3;
constexpr std::size_t kMostSkippedKinds = 100;  // counted one by one; memory has its bounds

std::string quoted(std::string_view text) {
    return '"' + std::string(text) + '"';
}

/// What a line that continues a record begins with.
bool continues(std::string_view line) {
    return isBlank(columns(line, 0, kSatelliteWidth));
}

/// The fields of one line from number `from` of the record on, the first `skipped` of them left out.
std::optional<std::string> readFields(std::string_view line, std::size_t from, std::size_t skipped,
                                      PrintedFields& fields) {
    for (std::size_t i = skipped; i < PrintedFields::kPerLine; ++i) {
        const std::size_t column = fields.columnOf(i);
        if (column >= line.size()) return std::nullopt;
        double& value = fields.values[from + i];
        const Field field = column + PrintedFields::kWidth <= line.size() ? parseD19d12(line.data() + column, value)
                                                                          : parseDecimal(columns(line, column), value);
        if (field == Field::bad) {
            return fields.columnsOf(i) + ": " + quoted(columns(line, column, PrintedFields::kWidth)) + " is no number";
        }
        if (field == Field::number) fields.present |= std::uint64_t{1} << (from + i);
    }
    const std::size_t end = fields.firstColumn + PrintedFields::kPerLine * PrintedFields::kWidth;
    if (isBlank(columns(line, end))) return std::nullopt;
    return "column " + std::to_string(end + 1) + ": text behind the last field: " + quoted(columns(line, end, 20));
}

/// Date and time from `column` on: a year of four digits, or of two in version 2, where the second has a decimal.
std::optional<std::string> readEpoch(std::string_view line, std::size_t column, bool old, SMjdTime& epoch) {
    const std::size_t yearWidth = old ? 2 : 4;
    const std::size_t secondWidth = old ? 5 : 2;
    const std::size_t width = yearWidth + 13 + secondWidth - (old ? 1 : 0);
    std::array<int, 5> fields{};  // year, month, day, hour, minute
    double second = 0.0;
    bool good = parseInteger(columns(line, column, yearWidth), fields[0]) == Field::number && fields[0] >= 0;
    std::size_t at = column + yearWidth;
    for (std::size_t i = 1; i < fields.size(); ++i, at += 3) {
        good = good && columnAt(line, at) == ' ' && parseInteger(columns(line, at + 1, 2), fields[i]) == Field::number;
    }
    good = good && (old || columnAt(line, at) == ' ') &&
           parseDecimal(columns(line, old ? at : at + 1, secondWidth), second) == Field::number;
    if (good) {
        if (old) fields[0] += fields[0] < 80 ? 2000 : 1900;  // RINEX 2.11, 6.5
        if (const auto time = checkedTime(fields[0], fields[1], fields[2], fields[3], fields[4], second)) {
            epoch = *time;
            return std::nullopt;
        }
    }
    return "the epoch " + quoted(withoutTrailingBlanks(columns(line, column, width))) + " is no date and time";
}

unsigned char rawSatellite(const CALN::SCalSatID& id) {
    constexpr unsigned kGalileoBase = 56;
    constexpr unsigned kQzssBase = 192;
    const unsigned base = id.system == CALN::eCALSATSYSTEM_GALILEO ? kGalileoBase
                          : id.system == CALN::eCALSATSYSTEM_QZSS  ? kQzssBase
                                                                   : 0;
    return static_cast<unsigned char>(base + id.number);
}

template <class Record>
Record& begin(NavigationRecord& record, const CALN::SCalSatID& id) {
    Record& ephemeris = record.emplace<Record>();
    ephemeris.satId = rawSatellite(id);
    ephemeris.source = CALN::eCALORBITSOURCE_FILE;
    return ephemeris;
}

void readGps(FieldReader& in, MessageKind kind, bool qzss, CALN::CALX_SAT_EPHEMERIS& record) {
    if (kind == MessageKind::lnav) return lnavFields(in, record, qzss);
    record.messageType = kind == MessageKind::cnav ? CALN::eCALGPSMESSAGE_CNAV : CALN::eCALGPSMESSAGE_CNAV2;
    cnavFields(in, record);
}

void readBeidou(FieldReader& in, MessageKind kind, CALN::CALX_SAT_EPHEMERIS_BEIDOU& record) {
    using enum MessageKind;
    record.messageType = kind == beidouD1      ? CALN::eCALBDSMESSAGE_D1
                         : kind == beidouD2    ? CALN::eCALBDSMESSAGE_D2
                         : kind == beidouCnav1 ? CALN::eCALBDSMESSAGE_CNAV1
                         : kind == beidouCnav2 ? CALN::eCALBDSMESSAGE_CNAV2
                                               : CALN::eCALBDSMESSAGE_CNAV3;
    if (kind == beidouD1 || kind == beidouD2) return beidouFields(in, record);
    beidouCnavFields(in, record);
}

}  // namespace

bool NavigationReader::open(const std::string& name) {
    LineReader lines;
    if (lines.open(name)) return open(std::move(lines));
    *this = NavigationReader();
    m_lines = std::move(lines);
    m_error = m_lines.error().value_or(FormatError{name, 0, "cannot be opened"});
    return false;
}

bool NavigationReader::open(LineReader lines) {
    *this = NavigationReader();
    m_lines = std::move(lines);
    m_ended = !readHeader();
    return !m_ended;
}

bool NavigationReader::readHeader() {
    NavigationHeaderParser parser(m_header);
    while (!parser.ended()) {
        if (!nextLine()) {
            const bool empty = m_lines.lineNumber() == 0;
            m_error = m_lines.error().value_or(FormatError{m_lines.name(), m_lines.lineNumber(),
                                                           empty ? "the file is empty" : "END OF HEADER is missing"});
            return false;
        }
        auto fault = parser.take(m_line);
        if (m_lines.lineNumber() > kLongestHeader) fault = "END OF HEADER is missing before this line";
        if (fault) {
            fail(std::move(*fault));
            return false;
        }
    }
    return true;
}

bool NavigationReader::nextLine() {
    const auto line = m_lines.next();
    m_line = line.value_or(std::string_view());
    return line.has_value();
}

/// A line with a satellite's number and a year where a record has them, whatever they are: a bad one is told.
bool NavigationReader::mayBeginRecord() const {
    if (m_header.version >= 4.0) return m_line.starts_with('>');
    const bool old = m_header.version < 3.0;
    int number = 0;
    return parseInteger(columns(m_line, old ? 0 : 1, 2), number) == Field::number &&
           parseInteger(columns(m_line, old ? 3 : 4, old ? 2 : 4), number) == Field::number;
}

/// Goes to the next line that is not blank; behind a bad record to the next that a record may begin with.
bool NavigationReader::findRecord() {
    while (nextLine()) {
        if (m_lost ? mayBeginRecord() : !isBlank(m_line)) {
            m_lost = false;
            m_firstLine = m_lines.lineNumber();
            return true;
        }
    }
    return false;
}

NavigationReader::Result NavigationReader::fail(std::string message) {
    m_error = FormatError{m_lines.name(), m_lines.lineNumber(), std::move(message)};
    // The line that does not fit here may be the beginning of the next record.
    if (m_insideRecord && mayBeginRecord()) m_lines.putBack();
    m_lost = true;
    return Result::error;
}

NavigationReader::Result NavigationReader::failShort(std::size_t linesRead, bool atEnd) {
    const std::string lines = std::to_string(linesRead) + " of " + std::to_string(m_layout->lines) + " lines";
    if (!atEnd) return fail("the record of line " + std::to_string(m_firstLine) + " ends early: " + lines);
    m_ended = true;
    m_error = m_lines.error().value_or(
        FormatError{m_lines.name(), m_lines.lineNumber(), "the file ends inside a record: " + lines});
    return Result::error;
}

NavigationReader::Result NavigationReader::next(NavigationRecord& record) {
    while (!m_ended) {
        m_insideRecord = false;
        if (!findRecord()) {
            m_ended = true;
            if (!m_lines.error()) break;
            m_error = *m_lines.error();
            return Result::error;
        }
        if (m_header.version >= 4.0) {
            if (auto fault = readAnnouncement()) return fail(std::move(*fault));
            m_lost = m_layout == nullptr;
            if (m_lost) continue;
            m_insideRecord = true;
            if (!nextLine()) return failShort(0, true);
            if (mayBeginRecord()) return failShort(0, false);
        }
        return readRecord(record);
    }
    return Result::end;
}

/// "> EPH G01 LNAV": what follows.
std::optional<std::string> NavigationReader::readAnnouncement() {
    if (!m_line.starts_with("> ")) return "a record begins with \"> \"";
    const std::string_view type = withoutBlanks(columns(m_line, 2, 4));
    const std::string_view satellite = columns(m_line, 6, kSatelliteWidth);
    const std::string_view message = withoutBlanks(columns(m_line, 10, 4));
    if (type.empty() || isBlank(columns(satellite, 0, 1))) {
        return quoted(withoutTrailingBlanks(m_line)) + " announces no record";
    }
    m_message.assign(message);
    const SatelliteSystem* const system = systemOfLetter(satellite.front());
    m_layout = system != nullptr ? layoutOf(type, system->code, message) : nullptr;
    if (m_layout == nullptr) {
        std::string kind = std::string(type) + ' ' + satellite.front() + ' ' + m_message;
        if (m_skipped.size() >= kMostSkippedKinds && !m_skipped.contains(kind)) kind = "other";
        ++m_skipped[kind];
        return std::nullopt;
    }
    m_kind = m_layout->kind;
    m_satellite = {system->code, 0};
    if (type != "EPH" && isBlank(columns(satellite, 1))) return std::nullopt;
    return parseSatellite(satellite, ' ', m_satellite);
}

/// The satellite that a record's first line begins with, and what the record holds.
std::optional<std::string> NavigationReader::readSatellite() {
    const std::string_view text = columns(m_line, 0, kSatelliteWidth);
    if (m_header.version >= 4.0) {
        if (m_layout->type != "EPH") {
            return continues(m_line) ? std::nullopt : std::optional(quoted(text) + " stands where blanks belong");
        }
        CALN::SCalSatID id;
        if (auto fault = parseSatellite(text, ' ', id)) return fault;
        if (id != m_satellite) return "satellite " + satelliteName(id) + ", announced " + satelliteName(m_satellite);
        return std::nullopt;
    }
    const std::array<char, kSatelliteWidth> old{m_header.fileSystem, columnAt(m_line, 0), columnAt(m_line, 1)};
    auto fault = m_header.version < 3.0 ? parseSatellite({old.data(), old.size()}, ' ', m_satellite)
                                        : parseSatellite(text, m_header.fileSystem, m_satellite);
    if (fault) return fault;
    m_layout = &layoutOfSatellite(m_satellite);
    m_kind = m_layout->kind;
    return std::nullopt;
}

NavigationReader::Result NavigationReader::readRecord(NavigationRecord& record) {
    const bool old = m_header.version < 3.0;
    PrintedFields fields;
    fields.firstColumn = old ? 3 : 4;
    if (auto fault = readSatellite()) return fail(std::move(*fault));
    const auto failField = [this](const std::string& fault) { return fail(satelliteName(m_satellite) + ": " + fault); };
    if (auto fault = readEpoch(m_line, fields.firstColumn, old, fields.epoch)) return failField(*fault);

    const std::uint64_t epochLine = m_lines.lineNumber();
    if (m_kind == MessageKind::timeOffset) {
        for (std::size_t i = 0; i < fields.words.size(); ++i) {
            fields.words[i] = withoutBlanks(columns(m_line, fields.columnOf(i + 1), PrintedFields::kWidth));
        }
    } else if (auto fault = readFields(m_line, 0, 1, fields)) {
        return failField(*fault);
    }
    m_insideRecord = true;
    for (std::size_t i = 1; i < m_layout->lines; ++i) {
        if (!nextLine()) return failShort(i, true);
        if (!continues(m_line)) return failShort(i, false);
        if (auto fault = readFields(m_line, i * PrintedFields::kPerLine, 0, fields)) return failField(*fault);
    }
    constexpr double kStatusSince = 3.045;
    bool status = m_kind == MessageKind::glonass && m_header.version >= kStatusSince && nextLine();
    if (status && !continues(m_line)) {
        m_lines.putBack();
        status = false;
    }
    if (status) {
        if (auto fault = readFields(m_line, m_layout->lines * PrintedFields::kPerLine, 0, fields)) {
            return failField(*fault);
        }
    }
    m_insideRecord = false;

    FieldReader in(fields);
    fill(in, fields, status, record);
    if (!in.fault()) return Result::record;
    failField(in.fault()->message);
    m_error.line = epochLine + in.fault()->line;
    return Result::error;
}

void NavigationReader::fill(FieldReader& in, const PrintedFields& fields, bool status, NavigationRecord& record) const {
    const MessageSource source{m_satellite, m_header.version >= 4.0 ? m_message : std::string()};
    switch (m_kind) {
        case MessageKind::lnav:
        case MessageKind::cnav:
        case MessageKind::cnav2:
            if (m_satellite.system == CALN::eCALSATSYSTEM_QZSS) {
                readGps(in, m_kind, true, begin<CALN::CALX_SAT_EPHEMERIS_QZSS>(record, m_satellite));
            } else {
                readGps(in, m_kind, false, begin<CALN::CALX_SAT_EPHEMERIS>(record, m_satellite));
            }
            break;
        case MessageKind::glonass: {
            auto& glonass = begin<CALN::CALX_SAT_EPHEMERIS_GLONASS>(record, m_satellite);
            const int leapSeconds = m_header.leapSeconds ? m_header.leapSeconds->seconds : gpsMinusUtc(fields.epoch);
            if (!setGlonassTime(fields.epoch, leapSeconds, glonass)) in.fault("the epoch is in no GPS week");
            glonassFields(in, glonass, fields.epoch, status);
            break;
        }
        case MessageKind::galileo: {
            auto& galileo = begin<CALN::CALX_SAT_EPHEMERIS_GALILEO>(record, m_satellite);
            if (m_header.version >= 4.0) galileo.navType = m_layout->message == "FNAV" ? galileo.kFNav : galileo.kINav;
            galileoFields(in, galileo);
            break;
        }
        case MessageKind::beidouD1:
        case MessageKind::beidouD2:
        case MessageKind::beidouCnav1:
        case MessageKind::beidouCnav2:
        case MessageKind::beidouCnav3:
            readBeidou(in, m_kind, begin<CALN::CALX_SAT_EPHEMERIS_BEIDOU>(record, m_satellite));
            break;
        case MessageKind::navic:
            navicFields(in, begin<CALN::CALX_SAT_EPHEMERIS_NAVIC>(record, m_satellite));
            break;
        case MessageKind::sbas: {
            auto& orbit = record.emplace<SbasOrbit>();
            orbit.number = m_satellite.number;
            orbit.referenceTime = fields.epoch;
            sbasFields(in, orbit);
            break;
        }
        case MessageKind::timeOffset: {
            auto& offset = record.emplace<SystemTimeOffset>();
            offset.source = source;
            offset.referenceTime = fields.epoch;
            timeOffsetFields(in, offset);
            break;
        }
        case MessageKind::earthOrientation: {
            auto& orientation = record.emplace<EarthOrientation>();
            orientation.source = source;
            orientation.referenceTime = fields.epoch;
            earthOrientationFields(in, orientation);
            break;
        }
        case MessageKind::klobuchar:
        case MessageKind::nequick:
        case MessageKind::bdgim: {
            auto& ionosphere = record.emplace<IonosphereModel>();
            ionosphere.source = source;
            ionosphere.transmissionTime = fields.epoch;
            if (m_kind == MessageKind::nequick) ionosphere.model = NeQuickModel();
            if (m_kind == MessageKind::bdgim) ionosphere.model = BdgimModel();
            std::visit([&in](auto& model) { ionosphereFields(in, model); }, ionosphere.model);
            break;
        }
    }
}

}  // namespace halvex::rinex
