#include "formats/rinex/ObservationHeaderWriter.h"

#include <algorithm>
#include <array>
#include <cstddef>

#include "formats/rinex/HeaderText.h"
#include "formats/rinex/SatelliteName.h"

namespace halvex::rinex {
namespace {

std::string_view timeSystemName(TimeSystem system) {
    switch (system) {
        case TimeSystem::gps:
            return "GPS";
        case TimeSystem::glonass:
            return "GLO";
        case TimeSystem::galileo:
            return "GAL";
        case TimeSystem::beidou:
            return "BDT";
        case TimeSystem::qzss:
            return "QZS";
        case TimeSystem::navic:
            return "IRN";
    }
    return "GPS";
}

char letterOf(int code) {
    const SatelliteSystem* const system = systemOfCode(code);
    return system != nullptr ? system->letter : ' ';
}

std::string timeText(SMjdTime time, TimeSystem system) {
    constexpr double kLastPlace = 1e-4;  // [ms]; rounded before the second is taken out, so that it never prints as 60
    time.RoundTo(kLastPlace);
    const SMjdCalendar date = time.GetCalendar();
    std::string text;
    for (const int field : {date.year, date.month, date.day, date.hour, date.minute}) text += integer(field, 6);
    text += decimal(date.second, 13, 7) + "     ";
    return text.append(timeSystemName(system));
}

std::string triple(const std::array<double, 3>& numbers) {
    std::string text;
    for (const double number : numbers) text += decimal(number, 14, 4);
    return text;
}

std::vector<std::string> codeList(const std::vector<ObservationCode>& codes) {
    std::vector<std::string> entries;
    entries.reserve(codes.size());
    for (const ObservationCode& code : codes) entries.push_back(' ' + code.text());
    return entries;
}

void writeStation(const ObservationHeader& header, HeaderText& text) {
    const auto optional = [&text](const std::string& content, std::string_view label) {
        if (!content.empty()) text.record(content, label);
    };
    text.record(left(header.program, 20) + left(header.runBy, 20) + left(header.date, 20), "PGM / RUN BY / DATE");
    for (const std::string& comment : header.comments) text.record(comment, "COMMENT");
    text.record(header.markerName, "MARKER NAME");
    optional(left(header.markerNumber, header.markerNumber.empty() ? 0 : 20), "MARKER NUMBER");
    optional(left(header.markerType, header.markerType.empty() ? 0 : 20), "MARKER TYPE");
    text.record(left(header.observer, 20) + left(header.agency, 40), "OBSERVER / AGENCY");
    text.record(left(header.receiverNumber, 20) + left(header.receiverType, 20) + left(header.receiverVersion, 20),
                "REC # / TYPE / VERS");
    text.record(left(header.antennaNumber, 20) + left(header.antennaType, 20), "ANT # / TYPE");
    if (header.position) text.record(triple(*header.position), "APPROX POSITION XYZ");
    if (header.antennaDelta) text.record(triple(*header.antennaDelta), "ANTENNA: DELTA H/E/N");
}

void writeTypes(const ObservationHeader& header, HeaderText& text) {
    for (const SatelliteSystem& system : kSatelliteSystems) {
        std::vector<ObservationCode> codes = header.codes[system.code];
        std::erase_if(codes, [](const ObservationCode& code) { return code.attribute == ' '; });  // RINEX 2 types
        if (codes.empty()) continue;
        text.list(system.letter + std::string("  ") + integer(static_cast<long long>(codes.size()), 3), codeList(codes),
                  13, "SYS / # / OBS TYPES");
    }
}

void writeScaleFactors(const ObservationHeader& header, HeaderText& text) {
    for (const SatelliteSystem& system : kSatelliteSystems) {
        const std::vector<ObservationCode>& codes = header.codes[system.code];
        const std::vector<double>& factors = header.scaleFactors[system.code];
        for (const int factor : {10, 100, 1000}) {
            std::vector<ObservationCode> scaled;
            for (std::size_t i = 0; i < std::min(codes.size(), factors.size()); ++i) {
                if (factors[i] == factor) scaled.push_back(codes[i]);
            }
            if (scaled.empty()) continue;
            text.list(system.letter + integer(factor, 5) + "  " + integer(static_cast<long long>(scaled.size()), 2),
                      codeList(scaled), 12, "SYS / SCALE FACTOR");
        }
    }
}

void writePhaseShifts(const ObservationHeader& header, HeaderText& text) {
    for (const PhaseShift& shift : header.phaseShifts) {
        std::string head(1, letterOf(shift.system));
        head += ' ' + (shift.code ? shift.code->text() : std::string(3, ' ')) + ' ';
        head += shift.cycles ? decimal(*shift.cycles, 8, 5) : std::string(8, ' ');
        std::vector<std::string> satellites;
        for (const CALN::SCalSatID& id : shift.satellites) satellites.push_back(' ' + satelliteName(id));
        if (!satellites.empty()) {
            std::string count = integer(static_cast<long long>(satellites.size()), 2);
            std::replace(count.begin(), count.end(), ' ', '0');
            head += "  " + count;
        }
        text.list(head, satellites, 10, "SYS / PHASE SHIFT");
    }
}

void writeGlonass(const ObservationHeader& header, HeaderText& text) {
    if (!header.glonassChannels.empty()) {
        std::vector<std::string> entries;
        for (const auto& [id, channel] : header.glonassChannels) {
            entries.push_back(satelliteName(id) + ' ' + integer(channel, 2) + ' ');
        }
        text.list(integer(static_cast<long long>(entries.size()), 3) + ' ', entries, 8, "GLONASS SLOT / FRQ #");
    }
    if (!header.glonassBiases.empty()) {
        std::vector<std::string> entries;
        for (const auto& [code, bias] : header.glonassBiases)
            entries.push_back(' ' + code.text() + ' ' + decimal(bias, 8, 3));
        text.list("", entries, 4, "GLONASS COD/PHS/BIS");
    }
}

}  // namespace

std::string headerText(const ObservationHeader& header) {
    const SatelliteSystem* const system = systemOfLetter(header.fileSystem);
    HeaderText text;
    text.record(
        "     3.05           OBSERVATION DATA    " +
            (system != nullptr ? header.fileSystem + (": " + std::string(system->name)) : std::string("M: MIXED")),
        "RINEX VERSION / TYPE");
    writeStation(header, text);
    writeTypes(header, text);
    if (!header.signalStrengthUnit.empty()) text.record(left(header.signalStrengthUnit, 20), "SIGNAL STRENGTH UNIT");
    if (header.interval > 0.0) text.record(decimal(header.interval, 10, 3), "INTERVAL");
    if (header.firstObservation)
        text.record(timeText(*header.firstObservation, header.timeSystem), "TIME OF FIRST OBS");
    if (header.lastObservation) text.record(timeText(*header.lastObservation, header.timeSystem), "TIME OF LAST OBS");
    if (header.clockOffsetApplied) text.record(integer(1, 6), "RCV CLOCK OFFS APPL");
    writeScaleFactors(header, text);
    writePhaseShifts(header, text);
    writeGlonass(header, text);
    if (header.leapSeconds) text.record(integer(*header.leapSeconds, 6), "LEAP SECONDS");
    text.record("", "END OF HEADER");
    return text.take();
}

}  // namespace halvex::rinex
