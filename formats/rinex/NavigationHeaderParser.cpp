#include "formats/rinex/NavigationHeaderParser.h"

#include <algorithm>
#include <array>

#include "formats/rinex/EpochLine.h"
#include "formats/rinex/TimeSystems.h"

namespace halvex::rinex {
namespace {

/// Four numbers of 12 columns each.
HeaderFault readCoefficients(std::string_view line, std::size_t first, std::array<double, 4>& numbers) {
    constexpr std::size_t kWidth = 12;
    for (std::size_t i = 0; i < numbers.size(); ++i) {
        if (auto fault = readNumber(line, first + i * kWidth, kWidth, numbers[i])) return fault;
    }
    return std::nullopt;
}

/// An integer that may be absent.
HeaderFault readOptional(std::string_view line, std::size_t first, std::size_t width, std::optional<int>& value) {
    int number = 0;
    const Field field = parseInteger(columns(line, first, width), number);
    if (field == Field::bad) return notANumber(line, first, width);
    if (field == Field::number) value = number;
    return std::nullopt;
}

/// The columns of the numbers that a time system correction consists of.
struct OffsetColumns {
    std::size_t a0, a0Width, a1, a1Width, seconds, secondsWidth, week, weekWidth;
};

HeaderFault readOffset(std::string_view line, const OffsetColumns& at, TimeSystemCorrection& offset) {
    if (auto fault = readNumber(line, at.a0, at.a0Width, offset.a0)) return fault;
    if (auto fault = readNumber(line, at.a1, at.a1Width, offset.a1)) return fault;
    if (auto fault = readNumber(line, at.seconds, at.secondsWidth, offset.secondsOfWeek)) return fault;
    return readNumber(line, at.week, at.weekWidth, offset.week);
}

}  // namespace

struct NavigationHeaderParser::Record {
    std::string_view label;
    HeaderFault (NavigationHeaderParser::*take)(std::string_view line);
};

HeaderFault NavigationHeaderParser::take(std::string_view line) {
    using Parser = NavigationHeaderParser;
    // RINEX 2.11 and 2.12, tables A3, A10 and A15; 3.05, table A5; 4.01, appendix A.
    static constexpr std::array<Record, 17> kRecords{{
        {"COMMENT", &Parser::takeComment},
        {"RINEX VERSION / TYPE", &Parser::takeVersion},
        {"PGM / RUN BY / DATE", &Parser::takeProgram},
        {"IONOSPHERIC CORR", &Parser::takeIonosphere},
        {"TIME SYSTEM CORR", &Parser::takeTimeSystem},
        {"LEAP SECONDS", &Parser::takeLeapSeconds},
        {"ION ALPHA", &Parser::takeAlpha},
        {"ION BETA", &Parser::takeBeta},
        {"DELTA-UTC: A0,A1,T,W", &Parser::takeDeltaUtc},
        {"CORR TO SYSTEM TIME", &Parser::takeSystemTime},
        {"D-UTC A0,A1,T,W,S,U", &Parser::takeSbasUtc},
        {"END OF HEADER", &Parser::takeEnd},
        {"REC # / TYPE / VERS", &Parser::passOver},
        {"MERGED FILE", &Parser::passOver},
        {"DOI", &Parser::passOver},
        {"LICENSE OF USE", &Parser::passOver},
        {"STATION INFORMATION", &Parser::passOver},
    }};
    if (!isBlank(columns(line, kHeaderColumns))) {
        return "a header line has " + std::to_string(kHeaderColumns) + " columns; this one goes on behind them";
    }
    const std::string_view label = withoutBlanks(columns(line, kLabelColumn));
    if (!m_hasVersion && label != "RINEX VERSION / TYPE") {
        return "the first line is no RINEX VERSION / TYPE record";
    }
    const auto* const record =
        std::find_if(kRecords.begin(), kRecords.end(), [label](const Record& r) { return r.label == label; });
    if (record == kRecords.end()) {
        ++m_header.unknownRecords;
        return std::nullopt;
    }
    HeaderFault fault = (this->*record->take)(columns(line, 0, kLabelColumn));
    if (fault) fault = std::string(label) + ": " + *fault;
    return fault;
}

HeaderFault NavigationHeaderParser::takeVersion(std::string_view line) {
    if (m_hasVersion) return "stands twice";
    if (auto fault = readVersion(line, m_header.version)) return fault;
    const char type = columnAt(line, 20);
    const bool old = m_header.version < 3.0;
    const char system = old ? (type == 'G' ? 'R' : type == 'H' ? 'S' : 'G') : columnAt(line, 40);
    if (type != 'N' && !(old && (type == 'G' || type == 'H'))) {
        return "this is no navigation file but \"" + textAt(line, 20, 20) + '"';
    }
    m_header.fileSystem = system == ' ' ? 'G' : system;
    if (m_header.fileSystem != 'M' && systemOfLetter(m_header.fileSystem) == nullptr) {
        return std::string("satellite system '") + m_header.fileSystem + "' is not known";
    }
    m_hasVersion = true;
    return std::nullopt;
}

HeaderFault NavigationHeaderParser::takeProgram(std::string_view line) {
    m_header.program = textAt(line, 0, 20);
    m_header.runBy = textAt(line, 20, 20);
    m_header.date = textAt(line, 40, 20);
    return std::nullopt;
}

HeaderFault NavigationHeaderParser::takeComment(std::string_view line) {
    m_header.comments.emplace_back(withoutTrailingBlanks(line));
    return std::nullopt;
}

HeaderFault NavigationHeaderParser::takeIonosphere(std::string_view line) {
    IonosphereCorrection correction;
    correction.type = textAt(line, 0, 4);
    if (auto fault = readCoefficients(line, 5, correction.parameters)) return fault;
    correction.timeMark = columnAt(line, 54);
    if (auto fault = readNumber(line, 56, 2, correction.satellite)) return fault;
    m_header.ionosphere.push_back(std::move(correction));
    return std::nullopt;
}

HeaderFault NavigationHeaderParser::takeIonosphere2(std::string_view line, const char* type) {
    IonosphereCorrection correction;
    correction.type = type;
    if (auto fault = readCoefficients(line, 2, correction.parameters)) return fault;
    m_header.ionosphere.push_back(std::move(correction));
    return std::nullopt;
}

HeaderFault NavigationHeaderParser::takeAlpha(std::string_view line) {
    return takeIonosphere2(line, "GPSA");
}

HeaderFault NavigationHeaderParser::takeBeta(std::string_view line) {
    return takeIonosphere2(line, "GPSB");
}

HeaderFault NavigationHeaderParser::takeTimeSystem(std::string_view line) {
    TimeSystemCorrection correction;
    correction.type = textAt(line, 0, 4);
    if (auto fault = readOffset(line, {5, 17, 22, 16, 38, 7, 45, 5}, correction)) return fault;
    correction.source = textAt(line, 51, 5);
    if (auto fault = readNumber(line, 57, 2, correction.utcId)) return fault;
    m_header.timeSystems.push_back(std::move(correction));
    return std::nullopt;
}

HeaderFault NavigationHeaderParser::takeDeltaUtc(std::string_view line) {
    TimeSystemCorrection correction;
    correction.type = "GPUT";
    if (auto fault = readOffset(line, {3, 19, 22, 19, 41, 9, 50, 9}, correction)) return fault;
    m_header.timeSystems.push_back(std::move(correction));
    return std::nullopt;
}

HeaderFault NavigationHeaderParser::takeSystemTime(std::string_view line) {
    TimeSystemCorrection correction;
    correction.type = "GLUT";
    std::array<int, 3> date{};
    for (std::size_t i = 0; i < date.size(); ++i) {
        if (auto fault = readNumber(line, 6 * i, 6, date[i])) return fault;
    }
    const auto day = checkedTime(date[0], date[1], date[2], 0, 0, 0.0);
    if (!day) return '"' + std::string(columns(line, 0, 18)) + "\" is no date";
    correction.week = day->GetGpsWeek();
    correction.secondsOfWeek = static_cast<int>(day->GetGpsSeconds());
    if (auto fault = readNumber(line, 21, 19, correction.a0)) return fault;
    m_header.timeSystems.push_back(std::move(correction));
    return std::nullopt;
}

HeaderFault NavigationHeaderParser::takeSbasUtc(std::string_view line) {
    TimeSystemCorrection correction;
    correction.type = "SBUT";
    if (auto fault = readOffset(line, {0, 19, 19, 19, 38, 7, 45, 5}, correction)) return fault;
    correction.source = textAt(line, 51, 5);
    if (auto fault = readNumber(line, 57, 2, correction.utcId)) return fault;
    m_header.timeSystems.push_back(std::move(correction));
    return std::nullopt;
}

HeaderFault NavigationHeaderParser::takeLeapSeconds(std::string_view line) {
    constexpr std::size_t kWidth = 6;
    LeapSecondRecord record;
    std::optional<int> seconds;
    if (auto fault = readOptional(line, 0, kWidth, seconds)) return fault;
    if (auto fault = readOptional(line, kWidth, kWidth, record.future)) return fault;
    if (auto fault = readOptional(line, 2 * kWidth, kWidth, record.week)) return fault;
    if (auto fault = readOptional(line, 3 * kWidth, kWidth, record.day)) return fault;
    if (!seconds) return std::nullopt;
    record.seconds = *seconds;
    if (textAt(line, 4 * kWidth, 3) == "BDS") {
        record.seconds += kGpsMinusBeiDou;
        if (record.future) *record.future += kGpsMinusBeiDou;
        if (record.week) *record.week += CALN::CALX_SAT_EPHEMERIS_BEIDOU::kGpsWeekOfWeek0;
    }
    m_header.leapSeconds = record;
    return std::nullopt;
}

HeaderFault NavigationHeaderParser::takeEnd(std::string_view /*line*/) {
    m_ended = true;
    return std::nullopt;
}

HeaderFault NavigationHeaderParser::passOver(std::string_view /*line*/) {
    return std::nullopt;
}

}  // namespace halvex::rinex
