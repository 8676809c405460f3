#include "tools/halvex/sets/StationHeader.h"

#include <fmt/format.h>

#include <array>
#include <cerrno>
#include <charconv>
#include <cstring>
#include <filesystem>

#include "formats/io/LineReader.h"
#include "formats/rinex/HeaderParser.h"
#include "formats/rinex/ObservationHeaderWriter.h"
#include "formats/rinex/ObservationWriter.h"
#include "formats/rinex/SatelliteName.h"
#include "tools/halvex/Tool.h"

namespace halvex::tool {
namespace {

std::string fileName(const std::string& base) {
    return base + "h";
}

std::string slotText(const rinex::SlotSignals& slot) {
    std::string text = {slot.pseudorangeC, slot.pseudorangeP, slot.phase, slot.doppler, slot.cno};
    for (char& c : text) c = c == 0 ? '-' : c;
    return text;
}

std::vector<std::string_view> words(std::string_view line) {
    std::vector<std::string_view> list;
    for (std::size_t at = line.find_first_not_of(' '); at != std::string_view::npos;) {
        const std::size_t end = std::min(line.find(' ', at), line.size());
        list.push_back(line.substr(at, end - at));
        at = line.find_first_not_of(' ', end);
    }
    return list;
}

template <class Number>
bool parse(std::string_view text, Number& value) {
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    return error == std::errc() && end == text.data() + text.size();
}

/// "@ WEEK MS SAT SLOT SLOT SLOT"; false when the line is none.
bool parseChange(std::string_view line, CALN::SCalSatID& satellite, StationHeader::Change& change) {
    const std::vector<std::string_view> parts = words(line);
    int week = 0;
    std::uint32_t milliseconds = 0;
    constexpr std::size_t kFirstSlot = 4;
    if (parts.size() != kFirstSlot + kFrequencySlots || parts[0] != "@" || !parse(parts[1], week) ||
        !parse(parts[2], milliseconds)) {
        return false;
    }
    constexpr std::size_t kNameLength = 3;
    if (parts[3].size() != kNameLength || rinex::parseSatellite(parts[3], ' ', satellite)) return false;
    change.from = SMjdTime(week, milliseconds / 1000.0);
    for (std::size_t slot = 0; slot < kFrequencySlots; ++slot) {
        const std::string_view text = parts[kFirstSlot + slot];
        if (text.size() != 5) return false;
        const auto attribute = [text](std::size_t i) { return text[i] == '-' ? char{0} : text[i]; };
        change.signals[slot] = {attribute(0), attribute(1), attribute(2), attribute(3), attribute(4)};
    }
    return true;
}

[[noreturn]] void fail(const std::string& name, const char* what) {
    throw Failure(fmt::format("{}: {}: {}", name, what, std::strerror(errno)));
}

}  // namespace

rinex::SatelliteSignals StationHeader::signalsAt(const CALN::SCalSatID& satellite, const SMjdTime& time) const {
    const auto found = signals.find(satellite);
    if (found == signals.end() || found->second.empty()) return rinex::preferredSignals(satellite.system);
    const Change* holds = &found->second.front();
    for (const Change& change : found->second) {
        if (change.from <= time) holds = &change;
    }
    return holds->signals;
}

rinex::ObservationHeader StationHeader::usedColumns() const {
    rinex::ObservationHeader header = rinex;
    for (auto& codes : header.codes) codes.clear();
    for (auto& factors : header.scaleFactors) factors.clear();
    for (const auto& [satellite, changes] : signals) {
        for (const Change& change : changes) rinex::addColumns(header, satellite, change.signals);
    }
    if (signals.empty()) {
        for (const SatelliteSystem& system : kSatelliteSystems) {
            rinex::addColumns(header, {system.code, 1}, rinex::preferredSignals(system.code));
        }
    }
    return header;
}

StationHeader readStationHeader(const std::string& base) {
    StationHeader station;
    std::error_code ignored;
    if (!std::filesystem::exists(fileName(base), ignored)) return station;
    LineReader lines;
    if (!lines.open(fileName(base))) throw Failure(*lines.error());
    rinex::HeaderParser parser(station.rinex, rinex::HeaderParser::Place::fileHeader);
    const auto check = [&](const rinex::HeaderParser::Fault& fault) {
        if (fault) throw Failure(FormatError{lines.name(), lines.lineNumber(), *fault});
    };
    while (!parser.ended()) {
        const auto line = lines.next();
        if (!line) break;
        check(parser.take(*line));
    }
    check(parser.finish());
    while (const auto line = lines.next()) {
        CALN::SCalSatID satellite;
        StationHeader::Change change;
        // A last line that a killed writer left unfinished says nothing yet.
        if (parseChange(*line, satellite, change)) station.signals[satellite].push_back(change);
    }
    if (lines.error()) throw Failure(*lines.error());
    return station;
}

StationHeaderWriter::StationHeaderWriter(const std::string& base, const rinex::ObservationHeader& header)
    : m_name(fileName(base)) {
    const StationHeader before = readStationHeader(base);
    for (const auto& [satellite, changes] : before.signals) m_last[satellite] = changes.back().signals;
    std::error_code ignored;
    if (!std::filesystem::exists(m_name, ignored)) begin(rinex::headerText(header));
    m_file.reset(std::fopen(m_name.c_str(), "abe"));
    // Begins a new line in case that a killed writer left the last one unfinished.
    if (m_file == nullptr || std::fputc('\n', m_file.get()) == EOF) fail(m_name, "cannot be written");
    m_pending = true;
    flush();
}

/// The header stands there whole or not at all: half of one would keep the set from being opened ever after.
void StationHeaderWriter::begin(const std::string& text) {
    const std::string unfinished = m_name + ".new";
    m_file.reset(std::fopen(unfinished.c_str(), "wbe"));
    if (m_file == nullptr || std::fwrite(text.data(), 1, text.size(), m_file.get()) != text.size() ||
        std::fflush(m_file.get()) != 0 || std::rename(unfinished.c_str(), m_name.c_str()) != 0) {
        const int error = errno;
        std::remove(unfinished.c_str());
        errno = error;
        fail(m_name, "cannot be written");
    }
}

void StationHeaderWriter::note(const SMjdTime& time, const CALN::SCalSatID& satellite,
                               const rinex::SatelliteSignals& signals) {
    const auto [found, isNew] = m_last.try_emplace(satellite, signals);
    if (!isNew && found->second == signals) return;
    found->second = signals;
    const std::string line = fmt::format(
        "@ {} {} {} {} {} {}\n", time.GetGpsWeek(), static_cast<std::uint32_t>(time.GetGpsWeekMilliseconds()),
        rinex::satelliteName(satellite), slotText(signals[0]), slotText(signals[1]), slotText(signals[2]));
    if (std::fwrite(line.data(), 1, line.size(), m_file.get()) != line.size()) fail(m_name, "cannot be written");
    m_pending = true;
}

void StationHeaderWriter::flush() {
    if (m_pending && std::fflush(m_file.get()) != 0) fail(m_name, "cannot be written");
    m_pending = false;
}

}  // namespace halvex::tool
