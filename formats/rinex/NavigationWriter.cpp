#include "formats/rinex/NavigationWriter.h"

#include <fmt/format.h>

#include <iterator>
#include <variant>

#include "formats/rinex/FieldWriter.h"
#include "formats/rinex/GlonassFields.h"
#include "formats/rinex/NavigationFields.h"
#include "formats/rinex/SatelliteName.h"
#include "formats/rinex/TimeSystems.h"

namespace halvex::rinex {
namespace {

std::string headerText(const NavigationHeader& header, bool announced) {
    const SatelliteSystem* const system = systemOfLetter(header.fileSystem);
    HeaderText text;
    text.record(std::string(announced ? "     4.00           NAVIGATION DATA     "
                                      : "     3.05           N: GNSS NAV DATA    ") +
                    (system != nullptr ? header.fileSystem + (": " + std::string(system->name)) : "M: MIXED"),
                "RINEX VERSION / TYPE");
    text.record(left(header.program, 20) + left(header.runBy, 20) + left(header.date, 20), "PGM / RUN BY / DATE");
    for (const std::string& comment : header.comments) text.record(comment, "COMMENT");
    for (const IonosphereCorrection& correction : header.ionosphere) {
        if (announced) break;
        std::string line = left(correction.type, 5);
        for (const double parameter : correction.parameters) line += scientific(parameter, 12, 4);
        line += ' ';
        line += correction.timeMark;
        if (correction.satellite != 0) line += integer(correction.satellite, 3);
        text.record(line, "IONOSPHERIC CORR");
    }
    for (const TimeSystemCorrection& correction : header.timeSystems) {
        if (announced) break;
        text.record(left(correction.type, 5) + scientific(correction.a0, 17, 10) + scientific(correction.a1, 16, 9) +
                        integer(correction.secondsOfWeek, 7) + integer(correction.week, 5) + ' ' +
                        left(correction.source, 5) + (correction.utcId != 0 ? integer(correction.utcId, 3) : ""),
                    "TIME SYSTEM CORR");
    }
    if (header.leapSeconds) {
        std::string line = integer(header.leapSeconds->seconds, 6);
        for (const auto& value : {header.leapSeconds->future, header.leapSeconds->week, header.leapSeconds->day}) {
            line += value ? integer(*value, 6) : std::string(6, ' ');
        }
        text.record(line, "LEAP SECONDS");
    }
    text.record("", "END OF HEADER");
    return text.take();
}

/// Prints one record of any kind; false when the file has no place for it. The field lists take what they may change:
/// each record comes as a copy.
class RecordText {
public:
    RecordText(std::string& text, const NavigationHeader& header, bool announced)
        : m_text(text), m_header(header), m_announced(announced), m_fields(text) {}

    bool operator()(CALN::CALX_SAT_EPHEMERIS& r) { return gps(r, CALN::eCALSATSYSTEM_GPS, r.satId); }
    bool operator()(CALN::CALX_SAT_EPHEMERIS_QZSS& r) { return gps(r, CALN::eCALSATSYSTEM_QZSS, r.GetSatId1Based()); }
    bool operator()(CALN::CALX_SAT_EPHEMERIS_GLONASS& r) {
        const SMjdTime utc = utcOf(r.GetReferenceTime());
        if (!begin({CALN::eCALSATSYSTEM_GLONASS, r.satId}, "FDMA", utc)) return false;
        glonassFields(m_fields, r, utc, true);
        return end();
    }
    bool operator()(CALN::CALX_SAT_EPHEMERIS_GALILEO& r) {
        const char* const message = r.navType == r.kFNav ? "FNAV" : "INAV";
        if (!begin({CALN::eCALSATSYSTEM_GALILEO, number(r.GetSatId())}, message, r.GetRefTimeClock())) return false;
        galileoFields(m_fields, r);
        return end();
    }
    bool operator()(CALN::CALX_SAT_EPHEMERIS_BEIDOU& r) {
        static constexpr std::array<const char*, 5> kMessages{"D1", "D2", "CNV1", "CNV2", "CNV3"};
        const bool old = r.messageType <= CALN::eCALBDSMESSAGE_D2;
        if (r.messageType >= kMessages.size() || (!old && !m_announced)) return false;
        SMjdTime epoch = r.GetRefTimeClock();
        epoch.SubtractSeconds(kGpsMinusBeiDou);
        if (!begin({CALN::eCALSATSYSTEM_BEIDOU, r.satId}, kMessages[r.messageType], epoch)) return false;
        old ? beidouFields(m_fields, r) : beidouCnavFields(m_fields, r);
        return end();
    }
    bool operator()(CALN::CALX_SAT_EPHEMERIS_NAVIC& r) {
        if (!begin({CALN::eCALSATSYSTEM_NAVIC, r.satId}, "LNAV", r.GetRefTimeClock())) return false;
        navicFields(m_fields, r);
        return end();
    }
    bool operator()(SbasOrbit& r) {
        if (!begin({CALN::eCALSATSYSTEM_SBAS, r.number}, "SBAS", r.referenceTime)) return false;
        sbasFields(m_fields, r);
        return end();
    }
    bool operator()(SystemTimeOffset& r) {
        if (!begin("STO", r.source, r.referenceTime)) return false;
        timeOffsetFields(m_fields, r);
        return end();
    }
    bool operator()(EarthOrientation& r) {
        if (!begin("EOP", r.source, r.referenceTime)) return false;
        earthOrientationFields(m_fields, r);
        return end();
    }
    bool operator()(IonosphereModel& r) {
        if (!begin("ION", r.source, r.transmissionTime)) return false;
        std::visit([this](auto& model) { ionosphereFields(m_fields, model); }, r.model);
        return end();
    }

private:
    /// The inverse of what the reader does with an epoch of GLONASS.
    [[nodiscard]] SMjdTime utcOf(const SMjdTime& gps) const {
        SMjdTime utc = gps;
        utc.SubtractSeconds(gpsMinusUtc(gps));  // at most a second off, just before a step
        const int leapSeconds = m_header.leapSeconds ? m_header.leapSeconds->seconds : gpsMinusUtc(utc);
        utc = gps;
        utc.SubtractSeconds(leapSeconds);
        return utc;
    }
    static unsigned char number(unsigned satellite) { return static_cast<unsigned char>(satellite); }

    bool gps(CALN::CALX_SAT_EPHEMERIS& r, CALN::eCALSATSYSTEM system, unsigned satellite) {
        static constexpr std::array<const char*, 3> kMessages{"LNAV", "CNAV", "CNV2"};
        const bool old = r.messageType == CALN::eCALGPSMESSAGE_LNAV;
        if (r.messageType >= kMessages.size() || (!old && !m_announced)) return false;
        if (!begin({system, number(satellite)}, kMessages[r.messageType], r.GetRefTimeClock())) return false;
        old ? lnavFields(m_fields, r, system == CALN::eCALSATSYSTEM_QZSS) : cnavFields(m_fields, r);
        return end();
    }

    /// An ephemeris up to its epoch.
    bool begin(const CALN::SCalSatID& id, const char* message, const SMjdTime& epoch) {
        const SatelliteSystem* const system = systemOfCode(id.system);
        if (id.number == 0 || id.number > lastSatelliteInFiles(*system)) return false;
        if (m_announced) m_text += "> EPH " + satelliteName(id) + ' ' + message + '\n';
        m_text += satelliteName(id);
        return addEpoch(epoch);
    }
    /// A record of version 4 that is no ephemeris.
    bool begin(const char* type, const MessageSource& source, const SMjdTime& epoch) {
        const SatelliteSystem* const system = systemOfCode(source.satellite.system);
        if (!m_announced || system == nullptr || source.satellite.number > lastSatelliteInFiles(*system)) return false;
        const bool whole = source.satellite.number == 0;
        m_text += fmt::format("> {} {} {}\n   ", type,
                              whole ? std::string{system->letter, ' ', ' '} : satelliteName(source.satellite),
                              left(source.message, 4));
        return addEpoch(epoch);
    }
    bool addEpoch(SMjdTime epoch) {
        epoch.RoundTo(1, SMjdTime::kUnitSecond);
        const SMjdCalendar date = epoch.GetCalendar();
        if (date.year < 0 || date.year > 9999) return false;
        fmt::format_to(std::back_inserter(m_text), " {:04} {:02} {:02} {:02} {:02} {:02}", date.year, date.month,
                       date.day, date.hour, date.minute, static_cast<int>(date.second));
        return true;
    }
    bool end() {
        m_fields.endLine();
        return m_fields.good();
    }

    std::string& m_text;
    const NavigationHeader& m_header;
    bool m_announced;
    FieldWriter m_fields;
};

}  // namespace

bool NavigationWriter::open(const std::string& name, const NavigationHeader& header) {
    m_header = header;
    m_unwritten = 0;
    if (!m_file.create(name)) return false;
    m_file.text() = headerText(m_header, m_header.version >= 4.0);
    return m_file.flush();
}

bool NavigationWriter::write(const NavigationRecord& record) {
    std::string& text = m_file.text();
    const std::size_t start = text.size();
    RecordText printer(text, m_header, m_header.version >= 4.0);
    NavigationRecord copy = record;
    if (!std::visit(printer, copy)) {
        text.resize(start);
        ++m_unwritten;
    }
    return m_file.flush();
}

}  // namespace halvex::rinex
