#include "formats/rinex/HeaderParser.h"

#include <algorithm>

#include "formats/rinex/EpochLine.h"
#include "formats/rinex/HeaderFields.h"
#include "formats/rinex/ObservationCodes.h"
#include "formats/rinex/SatelliteName.h"

namespace halvex::rinex {
namespace {

constexpr int kMostTypes = 200;       // of one system; more is no header
constexpr int kMostSatellites = 999;  // of one record

/// Three numbers of 14 columns each; unset when all are blank.
HeaderParser::Fault readTriple(std::string_view line, std::optional<std::array<double, 3>>& triple) {
    constexpr std::size_t kWidth = 14;
    triple.reset();
    if (isBlank(columns(line, 0, 3 * kWidth))) return std::nullopt;
    std::array<double, 3> numbers{};
    for (std::size_t i = 0; i < numbers.size(); ++i) {
        if (auto fault = readNumber(line, i * kWidth, kWidth, numbers[i])) return fault;
    }
    triple = numbers;
    return std::nullopt;
}

std::optional<TimeSystem> timeSystemOf(std::string_view text) {
    struct Name {
        std::string_view text;
        TimeSystem system;
    };
    // UTC stands for GLO in some files: GLONASS time is given as UTC there (RINEX 4.01, 4.1.3).
    static constexpr std::array<Name, 8> kNames{{{"GPS", TimeSystem::gps},
                                                 {"GLO", TimeSystem::glonass},
                                                 {"UTC", TimeSystem::glonass},
                                                 {"GAL", TimeSystem::galileo},
                                                 {"BDT", TimeSystem::beidou},
                                                 {"BDS", TimeSystem::beidou},
                                                 {"QZS", TimeSystem::qzss},
                                                 {"IRN", TimeSystem::navic}}};
    const auto* const found =
        std::find_if(kNames.begin(), kNames.end(), [text](const Name& n) { return n.text == text; });
    return found != kNames.end() ? std::optional(found->system) : std::nullopt;
}

TimeSystem defaultTimeSystem(char fileSystem) {
    switch (fileSystem) {
        case 'R':
            return TimeSystem::glonass;
        case 'E':
            return TimeSystem::galileo;
        case 'C':
            return TimeSystem::beidou;
        case 'J':
            return TimeSystem::qzss;
        case 'I':
            return TimeSystem::navic;
        default:
            return TimeSystem::gps;
    }
}

}  // namespace

struct HeaderParser::Record {
    std::string_view label;
    Fault (HeaderParser::*take)(std::string_view line);
};

/// The records of RINEX 2.11, appendix A, and 3.05 and 4.02, tables A2.
const std::array<HeaderParser::Record, 42> HeaderParser::kRecords{{
    {"COMMENT", &HeaderParser::takeComment},
    {"RINEX VERSION / TYPE", &HeaderParser::takeVersion},
    {"PGM / RUN BY / DATE", &HeaderParser::takeProgram},
    {"MARKER NAME", &HeaderParser::takeMarkerName},
    {"MARKER NUMBER", &HeaderParser::takeMarkerNumber},
    {"MARKER TYPE", &HeaderParser::takeMarkerType},
    {"OBSERVER / AGENCY", &HeaderParser::takeObserver},
    {"REC # / TYPE / VERS", &HeaderParser::takeReceiver},
    {"ANT # / TYPE", &HeaderParser::takeAntenna},
    {"APPROX POSITION XYZ", &HeaderParser::takePosition},
    {"ANTENNA: DELTA H/E/N", &HeaderParser::takeAntennaDelta},
    {"INTERVAL", &HeaderParser::takeInterval},
    {"TIME OF FIRST OBS", &HeaderParser::takeFirstTime},
    {"TIME OF LAST OBS", &HeaderParser::takeLastTime},
    {"RCV CLOCK OFFS APPL", &HeaderParser::takeClockOffset},
    {"SIGNAL STRENGTH UNIT", &HeaderParser::takeStrengthUnit},
    {"# / TYPES OF OBSERV", &HeaderParser::takeTypes},
    {"SYS / # / OBS TYPES", &HeaderParser::takeSystemTypes},
    {"SYS / SCALE FACTOR", &HeaderParser::takeScaleFactor},
    {"SYS / PHASE SHIFT", &HeaderParser::takePhaseShift},
    {"SYS / PHASE SHIFTS", &HeaderParser::takePhaseShift},
    {"GLONASS SLOT / FRQ #", &HeaderParser::takeGlonassChannels},
    {"GLONASS COD/PHS/BIS", &HeaderParser::takeGlonassBiases},
    {"LEAP SECONDS", &HeaderParser::takeLeapSeconds},
    {"WAVELENGTH FACT L1/2", &HeaderParser::takeWavelengthFactors},
    {"END OF HEADER", &HeaderParser::takeEnd},
    {"# OF SATELLITES", &HeaderParser::passOver},
    {"PRN / # OF OBS", &HeaderParser::passOver},
    {"ANTENNA: DELTA X/Y/Z", &HeaderParser::passOver},
    {"ANTENNA:PHASECENTER", &HeaderParser::passOver},
    {"ANTENNA: PHASECENTER", &HeaderParser::passOver},
    {"ANTENNA: B.SIGHT XYZ", &HeaderParser::passOver},
    {"ANTENNA: ZERODIR AZI", &HeaderParser::passOver},
    {"ANTENNA: ZERODIR XYZ", &HeaderParser::passOver},
    {"CENTER OF MASS: XYZ", &HeaderParser::passOver},
    {"SENSOR MOD/TYPE/ACC", &HeaderParser::passOver},
    {"SENSOR POS XYZ/H", &HeaderParser::passOver},
    {"SYS / DCBS APPLIED", &HeaderParser::passOver},
    {"SYS / PCVS APPLIED", &HeaderParser::passOver},
    {"DOI", &HeaderParser::passOver},
    {"LICENSE OF USE", &HeaderParser::passOver},
    {"STATION INFORMATION", &HeaderParser::passOver},
}};

HeaderParser::Fault HeaderParser::take(std::string_view line) {
    const std::string_view label = withoutBlanks(columns(line, kLabelColumn));
    if (m_place == Place::fileHeader && !m_hasVersion) {
        if (label.starts_with("CRINEX")) return "the file is Hatanaka-compressed; unpack it to RINEX first";
        if (label != "RINEX VERSION / TYPE") return "the first line is no RINEX VERSION / TYPE record";
    }
    const auto* const record =
        std::find_if(kRecords.begin(), kRecords.end(), [label](const Record& r) { return r.label == label; });
    if (record == kRecords.end()) {
        ++m_header.unknownRecords;
        return std::nullopt;
    }
    if (m_owed > 0 && label != m_continued && record->take != &HeaderParser::takeComment) {
        return std::string(m_continued) + ": " + std::to_string(m_owed) + " announced entries are missing";
    }
    const bool passedOver = record->take == &HeaderParser::takeComment || record->take == &HeaderParser::passOver;
    m_changed = m_changed || !passedOver;
    if (!passedOver) m_continued = record->label;
    Fault fault = (this->*record->take)(columns(line, 0, kLabelColumn));
    if (fault) fault = std::string(label) + ": " + *fault;
    return fault;
}

HeaderParser::Fault HeaderParser::finish() {
    if (m_owed > 0) return std::string(m_continued) + ": " + std::to_string(m_owed) + " announced entries are missing";
    if (m_place == Place::fileHeader && !m_hasTypes) {
        return std::string(m_header.version < 3.0 ? "# / TYPES OF OBSERV" : "SYS / # / OBS TYPES") + " is missing";
    }
    for (std::size_t system = 0; system < m_header.codes.size(); ++system) {
        m_header.scaleFactors[system].resize(m_header.codes[system].size(), 1.0);
    }
    return applyScaleFactors();
}

HeaderParser::Fault HeaderParser::passOver(std::string_view /*line*/) {
    return std::nullopt;
}

HeaderParser::Fault HeaderParser::takeVersion(std::string_view line) {
    double version = 0.0;
    if (auto fault = readVersion(line, version)) return fault;
    const char type = columnAt(line, 20);
    if (type != 'O' && type != 'o') return "this is no observation file but \"" + textAt(line, 20, 20) + '"';
    const char system = columnAt(line, 40) == ' ' ? 'G' : columnAt(line, 40);
    if (system != 'M' && systemOfLetter(system) == nullptr)
        return std::string("satellite system '") + system + "' is not known";
    if (m_place == Place::event) {
        // A spliced file: its lines are already being read in one family's columns.
        if ((version < 3.0) != (m_header.version < 3.0)) return "the version changes within the file";
        return std::nullopt;
    }
    m_header.version = version;
    m_header.fileSystem = system;
    m_header.timeSystem = defaultTimeSystem(system);
    m_hasVersion = true;
    return std::nullopt;
}

HeaderParser::Fault HeaderParser::takeProgram(std::string_view line) {
    m_header.program = textAt(line, 0, 20);
    m_header.runBy = textAt(line, 20, 20);
    m_header.date = textAt(line, 40, 20);
    return std::nullopt;
}

HeaderParser::Fault HeaderParser::takeComment(std::string_view line) {
    // Those of events are not kept: a file may have any number of them.
    if (m_place == Place::fileHeader) m_header.comments.emplace_back(withoutTrailingBlanks(line));
    return std::nullopt;
}

HeaderParser::Fault HeaderParser::takeMarkerName(std::string_view line) {
    m_header.markerName = textAt(line, 0, 60);
    return std::nullopt;
}

HeaderParser::Fault HeaderParser::takeMarkerNumber(std::string_view line) {
    m_header.markerNumber = textAt(line, 0, 20);
    return std::nullopt;
}

HeaderParser::Fault HeaderParser::takeMarkerType(std::string_view line) {
    m_header.markerType = textAt(line, 0, 20);
    return std::nullopt;
}

HeaderParser::Fault HeaderParser::takeObserver(std::string_view line) {
    m_header.observer = textAt(line, 0, 20);
    m_header.agency = textAt(line, 20, 40);
    return std::nullopt;
}

HeaderParser::Fault HeaderParser::takeReceiver(std::string_view line) {
    m_header.receiverNumber = textAt(line, 0, 20);
    m_header.receiverType = textAt(line, 20, 20);
    m_header.receiverVersion = textAt(line, 40, 20);
    return std::nullopt;
}

HeaderParser::Fault HeaderParser::takeAntenna(std::string_view line) {
    m_header.antennaNumber = textAt(line, 0, 20);
    m_header.antennaType = textAt(line, 20, 20);
    return std::nullopt;
}

HeaderParser::Fault HeaderParser::takePosition(std::string_view line) {
    return readTriple(line, m_header.position);
}

HeaderParser::Fault HeaderParser::takeAntennaDelta(std::string_view line) {
    return readTriple(line, m_header.antennaDelta);
}

HeaderParser::Fault HeaderParser::takeInterval(std::string_view line) {
    double interval = 0.0;
    if (auto fault = readNumber(line, 0, 10, interval)) return fault;
    if (interval < 0.0) return "an interval is not negative";
    m_header.interval = interval;
    return std::nullopt;
}

HeaderParser::Fault HeaderParser::takeTime(std::string_view line, std::optional<SMjdTime>& time) {
    std::array<int, 5> fields{};  // year, month, day, hour, minute
    double second = 0.0;
    time.reset();
    if (isBlank(line)) return std::nullopt;
    for (std::size_t i = 0; i < fields.size(); ++i) {
        if (auto fault = readNumber(line, 6 * i, 6, fields[i])) return fault;
    }
    // Second and time system are taken as words: many files have them a column off.
    constexpr std::size_t kSecondColumn = 30;
    const std::string_view words = withoutBlanks(columns(line, kSecondColumn));
    const std::string_view secondText = words.substr(0, words.find(' '));
    const std::string system(withoutBlanks(words.substr(secondText.size())));
    if (parseDecimal(secondText, second) == Field::bad) return '"' + std::string(secondText) + "\" is no second";
    time = checkedTime(fields[0], fields[1], fields[2], fields[3], fields[4], second);
    if (!time || fields[0] < 1980 || fields[0] > 9999) {
        return '"' + std::string(withoutTrailingBlanks(line)) + "\" is no time";
    }
    if (system.empty()) return std::nullopt;
    const auto known = timeSystemOf(system);
    if (!known) return "time system \"" + system + "\" is not known";
    m_header.timeSystem = *known;
    return std::nullopt;
}

HeaderParser::Fault HeaderParser::takeFirstTime(std::string_view line) {
    return takeTime(line, m_header.firstObservation);
}

HeaderParser::Fault HeaderParser::takeLastTime(std::string_view line) {
    return takeTime(line, m_header.lastObservation);
}

HeaderParser::Fault HeaderParser::takeClockOffset(std::string_view line) {
    int applied = 0;
    if (auto fault = readNumber(line, 0, 6, applied)) return fault;
    m_header.clockOffsetApplied = applied != 0;
    return std::nullopt;
}

HeaderParser::Fault HeaderParser::takeStrengthUnit(std::string_view line) {
    m_header.signalStrengthUnit = textAt(line, 0, 20);
    return std::nullopt;
}

/// Reads how many entries follow; they may go on in further lines.
HeaderParser::Fault HeaderParser::announce(std::string_view line, std::size_t first, std::size_t width, int most) {
    int count = 0;
    if (auto fault = readNumber(line, first, width, count)) return fault;
    if (count < 0 || count > most) return "a count of " + std::to_string(count) + " is out of range";
    m_owed = count;
    return std::nullopt;
}

HeaderParser::Fault HeaderParser::takeTypes(std::string_view line) {
    if (m_header.version >= 3.0) return "belongs to RINEX 2; this file gives its types system by system";
    if (m_owed == 0) {
        m_types.clear();
        if (isBlank(columns(line, 0, 6))) return "more types than announced";
        if (auto fault = announce(line, 0, 6, kMostTypes)) return fault;
        m_hasTypes = true;
    }
    for (std::size_t i = 0; i < 9; ++i) {
        const std::string_view type = withoutBlanks(columns(line, 6 + 6 * i, 6));
        if (type.empty()) continue;
        if (m_owed == 0) return "more types than announced";
        if (type.size() != 2) return "\"" + std::string(type) + "\" is no observation type";
        m_types.emplace_back(type);
        --m_owed;
    }
    if (m_owed == 0) {
        for (const SatelliteSystem& system : kSatelliteSystems) {
            m_header.codes[system.code] = codesOfTypes(m_types, system.code);
            m_header.scaleFactors[system.code].clear();
        }
    }
    return std::nullopt;
}

HeaderParser::Fault HeaderParser::takeSystemTypes(std::string_view line) {
    if (m_header.version < 3.0) return "belongs to RINEX 3; this file has one list of types for all systems";
    if (m_owed == 0) {
        const char letter = columnAt(line, 0);
        const SatelliteSystem* const system = systemOfLetter(letter);
        if (letter == ' ') return "more types than announced";
        if (system == nullptr) return std::string("satellite system '") + letter + "' is not known";
        m_system = system->code;
        if (auto fault = announce(line, 3, 3, kMostTypes)) return fault;
        m_header.codes[m_system].clear();
        m_header.scaleFactors[m_system].clear();
        m_hasTypes = true;
    } else if (columnAt(line, 0) != ' ') {
        return std::to_string(m_owed) + " announced types are missing before this line";
    }
    for (std::size_t i = 0; i < 13; ++i) {
        const std::string_view text = withoutTrailingBlanks(columns(line, 7 + 4 * i, 3));
        if (text.empty()) continue;
        if (m_owed == 0) return "more types than announced";
        const auto code = parseObservationCode(text, m_system, m_header.version);
        if (!code) return "\"" + std::string(text) + "\" is no observation code";
        m_header.codes[m_system].push_back(*code);
        --m_owed;
    }
    return std::nullopt;
}

HeaderParser::Fault HeaderParser::takeScaleFactor(std::string_view line) {
    if (m_owed == 0) {
        const SatelliteSystem* const system = systemOfLetter(columnAt(line, 0));
        if (system == nullptr) return std::string("satellite system '") + columnAt(line, 0) + "' is not known";
        int factor = 0;
        if (auto fault = readNumber(line, 2, 4, factor)) return fault;
        if (factor != 1 && factor != 10 && factor != 100 && factor != 1000) {
            return "a factor of " + std::to_string(factor) + "; 1, 10, 100 and 1000 are allowed";
        }
        if (auto fault = announce(line, 8, 2, kMostTypes)) return fault;
        m_system = system->code;
        m_scaleFactors.push_back({m_system, static_cast<double>(factor), {}});
    }
    for (std::size_t i = 0; i < 12; ++i) {
        const std::string_view text = withoutTrailingBlanks(columns(line, 11 + 4 * i, 3));
        if (text.empty()) continue;
        if (m_owed == 0) return "more codes than announced";
        const auto code = parseObservationCode(text, m_system, m_header.version);
        if (!code) return "\"" + std::string(text) + "\" is no observation code";
        m_scaleFactors.back().codes.push_back(*code);
        --m_owed;
    }
    return std::nullopt;
}

/// The record may stand before the types that it speaks of.
HeaderParser::Fault HeaderParser::applyScaleFactors() {
    for (const ScaleFactor& scale : m_scaleFactors) {
        const std::vector<ObservationCode>& codes = m_header.codes[scale.system];
        std::vector<double>& factors = m_header.scaleFactors[scale.system];
        if (scale.codes.empty()) std::fill(factors.begin(), factors.end(), scale.factor);
        for (const ObservationCode& code : scale.codes) {
            const auto found = std::find(codes.begin(), codes.end(), code);
            if (found == codes.end()) return "SYS / SCALE FACTOR: the file has no " + code.text();
            factors[static_cast<std::size_t>(found - codes.begin())] = scale.factor;
        }
    }
    return std::nullopt;
}

HeaderParser::Fault HeaderParser::takePhaseShift(std::string_view line) {
    if (m_owed == 0) {
        if (isBlank(line)) return std::nullopt;
        const SatelliteSystem* const system = systemOfLetter(columnAt(line, 0));
        if (system == nullptr) return std::string("satellite system '") + columnAt(line, 0) + "' is not known";
        PhaseShift shift;
        shift.system = system->code;
        const std::string_view text = withoutTrailingBlanks(columns(line, 2, 3));
        if (!text.empty()) {
            shift.code = parseObservationCode(text, shift.system, m_header.version);
            if (!shift.code) return "\"" + std::string(text) + "\" is no observation code";
        }
        double cycles = 0.0;
        const Field field = parseDecimal(columns(line, 6, 8), cycles);
        if (field == Field::bad) return notANumber(line, 6, 8);
        if (field == Field::number) shift.cycles = cycles;
        if (auto fault = announce(line, 16, 2, kMostSatellites)) return fault;
        // Several records of one signal differ in their satellites; one that speaks of all replaces the earlier ones,
        // so that events cannot pile them up.
        std::vector<PhaseShift>& shifts = m_header.phaseShifts;
        if (m_owed == 0 || m_place == Place::event) {
            std::erase_if(shifts,
                          [&shift](const PhaseShift& s) { return s.system == shift.system && s.code == shift.code; });
        }
        m_phaseShift = shifts.size();
        shifts.push_back(std::move(shift));
    }
    for (std::size_t i = 0; i < 10; ++i) {
        const std::string_view text = columns(line, 19 + 4 * i, 3);
        if (isBlank(text)) continue;
        if (m_owed == 0) return "more satellites than announced";
        CALN::SCalSatID id;
        if (auto fault = parseSatellite(text, 'G', id)) return fault;
        m_header.phaseShifts[m_phaseShift].satellites.push_back(id);
        --m_owed;
    }
    return std::nullopt;
}

HeaderParser::Fault HeaderParser::takeGlonassChannels(std::string_view line) {
    if (m_owed == 0) {
        if (auto fault = announce(line, 0, 3, kMostSatellites)) return fault;
    }
    for (std::size_t i = 0; i < 8; ++i) {
        const std::size_t first = 4 + 7 * i;
        if (isBlank(columns(line, first, 6))) continue;
        if (m_owed == 0) return "more satellites than announced";
        CALN::SCalSatID id;
        if (auto fault = parseSatellite(columns(line, first, 3), 'R', id)) return fault;
        int channel = 0;
        if (parseInteger(columns(line, first + 4, 2), channel) != Field::number) return notANumber(line, first + 4, 2);
        constexpr int kLowest = -7;  // GLONASS ICD, 3.3.1.1; 7 to 13 were in use until 2005
        constexpr int kHighest = 13;
        if (channel < kLowest || channel > kHighest)
            return satelliteName(id) + ": there is no channel " + std::to_string(channel);
        m_header.glonassChannels[id] = channel;
        --m_owed;
    }
    return std::nullopt;
}

HeaderParser::Fault HeaderParser::takeGlonassBiases(std::string_view line) {
    for (std::size_t i = 0; i < 4; ++i) {
        const std::size_t first = 13 * i;
        const std::string_view text = withoutTrailingBlanks(columns(line, first + 1, 3));
        double bias = 0.0;
        const Field field = parseDecimal(columns(line, first + 5, 8), bias);
        if (field == Field::bad) return notANumber(line, first + 5, 8);
        if (field == Field::blank) continue;
        const auto code = parseObservationCode(text, CALN::eCALSATSYSTEM_GLONASS, m_header.version);
        if (!code) return "\"" + std::string(text) + "\" is no observation code";
        m_header.glonassBiases[*code] = bias;
    }
    return std::nullopt;
}

HeaderParser::Fault HeaderParser::takeLeapSeconds(std::string_view line) {
    int seconds = 0;
    const Field field = parseInteger(columns(line, 0, 6), seconds);
    if (field == Field::bad) return notANumber(line, 0, 6);
    m_header.leapSeconds.reset();
    if (field == Field::number) m_header.leapSeconds = seconds;
    return std::nullopt;
}

HeaderParser::Fault HeaderParser::takeWavelengthFactors(std::string_view line) {
    std::array<int, 2> factors{};
    int count = 0;
    for (std::size_t i = 0; i < factors.size(); ++i) {
        if (auto fault = readNumber(line, 6 * i, 6, factors[i])) return fault;
        if (factors[i] < 0 || factors[i] > 2)
            return "a factor of " + std::to_string(factors[i]) + "; 1 and 2 are allowed";
    }
    if (auto fault = readNumber(line, 12, 6, count)) return fault;
    if (count < 0 || count > 7) return "a count of " + std::to_string(count) + " is out of range";
    if (count == 0) m_header.wavelengthFactors[0] = factors;
    for (std::size_t i = 0; i < static_cast<std::size_t>(count); ++i) {
        CALN::SCalSatID id;
        if (auto fault = parseSatellite(columns(line, 21 + 6 * i, 3), 'G', id)) return fault;
        if (id.system == CALN::eCALSATSYSTEM_GPS) m_header.wavelengthFactors[id.number] = factors;
    }
    return std::nullopt;
}

HeaderParser::Fault HeaderParser::takeEnd(std::string_view /*line*/) {
    m_ended = true;
    return std::nullopt;
}

}  // namespace halvex::rinex
