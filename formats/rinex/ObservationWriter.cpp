#include "formats/rinex/ObservationWriter.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <iterator>

#include "formats/rinex/ObservationHeaderWriter.h"
#include "formats/rinex/SatelliteName.h"
#include "formats/rinex/TimeSystems.h"

namespace halvex::rinex {
namespace {

/// Appends `value` as F14.3; false, appending nothing, when it does not fit or is no number.
bool appendF14(std::string& text, double value) {
    constexpr double kLargest = 9999999999.999;
    if (!(value <= kLargest && value >= -kLargest / 10)) return false;
    // Three decimals are an integer of thousandths: exact, whatever the locale's decimal mark.
    const bool negative = value < 0;
    auto thousandths = static_cast<std::uint64_t>(std::llround(std::fabs(value) * 1000.0));
    char field[14];
    std::memset(field, ' ', sizeof field);
    char* at = field + sizeof field;
    for (int digit = 0; digit < 3; ++digit, thousandths /= 10) *--at = static_cast<char>('0' + thousandths % 10);
    *--at = '.';
    do {
        *--at = static_cast<char>('0' + thousandths % 10);
        thousandths /= 10;
    } while (thousandths != 0 && at > field);
    if (thousandths != 0 || (negative && at == field)) return false;
    if (negative) *--at = '-';
    text.append(field, sizeof field);
    return true;
}

/// Signal strength digit of a C/N0. RINEX 4.01, 6.7.2.
char strengthDigit(float decibelHertz) {
    const double step = std::floor(static_cast<double>(decibelHertz) / 6.0);
    return static_cast<char>('0' + static_cast<int>(std::clamp(step, 1.0, 9.0)));
}

/// One value of a slot with the signal it stands for.
struct Field {
    char type = ' ';
    char attribute = 0;
    bool valid = false;
    double value = 0.0;
};
using SlotFields = std::array<Field, 5>;

SlotFields slotFields(const CHalvexObservation& observation, unsigned slot, const SlotSignals& from) {
    SlotFields fields{
        {{'C', from.pseudorangeC}, {'C', from.pseudorangeP}, {'L', from.phase}, {'D', from.doppler}, {'S', from.cno}}};
    float doppler = 0.0F;
    float cno = 0.0F;
    fields[0].valid = observation.getPseudorangeC(slot, fields[0].value);
    fields[1].valid = observation.getPseudorangeP(slot, fields[1].value);
    fields[2].valid = observation.getPhase(slot, fields[2].value, true);
    fields[3].valid = observation.getDoppler(slot, doppler);
    fields[3].value = doppler;
    fields[4].valid = observation.getCNO(slot, cno);
    fields[4].value = cno;
    return fields;
}

std::uint64_t countValid(const SlotFields& fields) {
    return static_cast<std::uint64_t>(
        std::count_if(fields.begin(), fields.end(), [](const Field& field) { return field.valid; }));
}

CALN::SCalSatID satelliteOf(const CHalvexObservation& observation) {
    return CHalvexStationObservation::getNewPrnTypeFromDeprecated(observation.getPrnID()).getCalSatID();
}

/// Whether a file has a name for the satellite: a record takes any system and number.
bool hasName(const CALN::SCalSatID& id) {
    const SatelliteSystem* system = systemOfCode(id.system);
    return system != nullptr && id.number >= 1 && id.number <= lastSatelliteInFiles(*system);
}

const Field* fieldOf(const SlotFields& fields, const ObservationCode& code) {
    const auto found = std::find_if(fields.begin(), fields.end(), [&](const Field& field) {
        return field.valid && field.type == code.type && field.attribute == code.attribute;
    });
    return found != fields.end() ? &*found : nullptr;
}

/// The slot that holds a band; kFrequencySlots when none does.
unsigned slotOfBand(CALN::eCALSATSYSTEM system, char band) {
    unsigned slot = 0;
    while (slot < CHalvexObservation::kSlots && slotBand(system, static_cast<int>(slot)).rinexBand != band) ++slot;
    return slot;
}

/// Loss-of-lock indicator and signal strength digit behind a value.
void appendDigits(std::string& text, const CHalvexObservation& observation, unsigned slot, char type) {
    bool lossOfLock = false;
    bool parityKnown = true;
    if (type == 'L') {
        observation.getLossOfLock(slot, lossOfLock);
        observation.getParityKnown(slot, parityKnown);
    }
    const unsigned indicator = (lossOfLock ? 1U : 0U) + (parityKnown ? 0U : 2U);
    text += indicator != 0 ? static_cast<char>('0' + indicator) : ' ';
    float cno = 0.0F;
    text += (type == 'L' || type == 'C') && observation.getCNO(slot, cno) ? strengthDigit(cno) : ' ';
}

}  // namespace

bool ObservationWriter::open(const std::string& name, const ObservationHeader& header) {
    m_header = inGpsTime(header);
    m_header.version = 3.05;
    if (!m_file.create(name)) return false;
    m_file.text() = headerText(m_header);
    return m_file.flush();
}

bool ObservationWriter::close() {
    return m_file.close();
}

bool ObservationWriter::write(const CHalvexStationObservation& station, const Signals& signals) {
    const SMjdTime time(station.getGPSWeek(), static_cast<double>(station.getGPSFraction()) / 1000.0);
    const SMjdCalendar date = time.GetCalendar();
    const auto milliseconds = static_cast<int>(std::llround(date.second * 1000.0));
    std::string& text = m_file.text();
    auto out = std::back_inserter(text);
    fmt::format_to(out, "> {:04} {:02} {:02} {:02} {:02} {:2}.{:03}0000  0{:3}", date.year, date.month, date.day,
                   date.hour, date.minute, milliseconds / 1000, milliseconds % 1000,
                   std::ranges::count_if(station.observations(), hasName, satelliteOf));
    double offset = 0.0;
    if (station.getClockOffsetCode(offset)) {
        if (std::fabs(offset) < 10.0) {
            // 12 decimals as an integer, so that no locale's decimal mark gets in
            const auto picoseconds = std::llround(std::fabs(offset) * 1e12);
            fmt::format_to(out, "      {}{}.{:012}", offset < 0 ? '-' : ' ', picoseconds / 1000000000000,
                           picoseconds % 1000000000000);
        } else {
            ++m_unwritten;
        }
    }
    text += '\n';
    for (const CHalvexObservation& observation : station.observations()) {
        const CALN::SCalSatID id = satelliteOf(observation);
        if (hasName(id)) {
            writeSatellite(observation, id, signals(id));
        } else {
            for (unsigned slot = 0; slot < CHalvexObservation::kSlots; ++slot) {
                m_unwritten += countValid(slotFields(observation, slot, {}));
            }
        }
    }
    return m_file.flush();
}

void ObservationWriter::writeSatellite(const CHalvexObservation& observation, const CALN::SCalSatID& id,
                                       const SatelliteSignals& signals) {
    std::string& text = m_file.text();
    text += satelliteName(id);
    std::array<SlotFields, kFrequencySlots> slots;
    std::uint64_t values = 0;
    for (unsigned slot = 0; slot < CHalvexObservation::kSlots; ++slot) {
        slots[slot] = slotFields(observation, slot, signals[slot]);
        values += countValid(slots[slot]);
    }
    std::uint64_t written = 0;
    const std::size_t start = text.size();
    for (const ObservationCode& code : m_header.codes[id.system]) {
        const unsigned slot = slotOfBand(id.system, code.band);
        const Field* field = slot < CHalvexObservation::kSlots ? fieldOf(slots[slot], code) : nullptr;
        if (field == nullptr || !appendF14(text, field->value)) {
            text.append(16, ' ');
            continue;
        }
        ++written;
        appendDigits(text, observation, slot, code.type);
    }
    while (text.size() > start && text.back() == ' ') text.pop_back();
    text += '\n';
    m_unwritten += values - written;
}

ObservationHeader inGpsTime(ObservationHeader header) {
    for (auto* time : {&header.firstObservation, &header.lastObservation}) {
        if (*time) *time = toGpsTime(**time, header.timeSystem, header.leapSeconds);
    }
    if (header.leapSeconds && header.timeSystem == TimeSystem::beidou) *header.leapSeconds += kGpsMinusBeiDou;
    header.timeSystem = TimeSystem::gps;
    return header;
}

void addColumns(ObservationHeader& header, const CALN::SCalSatID& satellite, const SatelliteSignals& signals) {
    if (systemOfCode(satellite.system) == nullptr) return;
    std::vector<ObservationCode>& codes = header.codes[satellite.system];
    const auto add = [&](char type, char band, char attribute) {
        const ObservationCode code{type, band, attribute};
        if (attribute != 0 && std::find(codes.begin(), codes.end(), code) == codes.end()) codes.push_back(code);
    };
    for (int slot = 0; slot < kFrequencySlots; ++slot) {
        const char band = slotBand(satellite.system, slot).rinexBand;
        const SlotSignals& from = signals[static_cast<std::size_t>(slot)];
        if (band == 0) continue;
        add('C', band, from.pseudorangeC);
        add('C', band, from.pseudorangeP);
        add('L', band, from.phase);
        add('D', band, from.doppler);
        add('S', band, from.cno);
    }
    header.scaleFactors[satellite.system].assign(codes.size(), 1.0);
}

}  // namespace halvex::rinex
