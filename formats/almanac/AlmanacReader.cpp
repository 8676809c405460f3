#include "formats/almanac/AlmanacReader.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "formats/almanac/SemReader.h"
#include "formats/almanac/YumaReader.h"
#include "formats/io/Columns.h"
#include "halvex/platform/os/Clock.h"

namespace halvex::almanac {
namespace {

constexpr int kWeeksOfRollOver = 1024;

/// The latest full week whose second `toa` lies no further ahead of the reference than almanacs are made for; never
/// below 0.
int fullWeek(int week, double toa, const SMjdTime& reference) {
    if (week >= kWeeksOfRollOver) return week;
    constexpr double kSecondsOfRollOver = kWeeksOfRollOver * 604800.0;
    constexpr double kFurthestAhead = 28.0 * 86400.0;
    const double behind = reference.GetDifferenceInSeconds(SMjdTime(week, toa)) + kFurthestAhead;
    return week + kWeeksOfRollOver * static_cast<int>(std::max(0.0, std::floor(behind / kSecondsOfRollOver)));
}

}  // namespace

SMjdTime now() {
    const SYSTEMTIME utc = os::GetSystemTime();
    return {utc.wYear, utc.wMonth, utc.wDay, utc.wHour, utc.wMinute, utc.wSecond + utc.wMilliseconds / 1000.0};
}

AlmanacReader::AlmanacReader(LineReader lines, const SMjdTime& reference)
    : m_lines(std::move(lines)), m_reference(reference) {}

AlmanacReader::~AlmanacReader() = default;

bool AlmanacReader::nextLine() {
    const auto line = m_lines.next();
    m_line = line.value_or(std::string_view());
    return line.has_value();
}

bool AlmanacReader::nextText() {
    while (nextLine()) {
        if (!isBlank(m_line)) return true;
    }
    return false;
}

AlmanacReader::Result AlmanacReader::fail(std::string message) {
    m_error = FormatError{m_lines.name(), m_lines.lineNumber(), std::move(message)};
    return Result::error;
}

AlmanacReader::Result AlmanacReader::end() {
    m_ended = true;
    if (!m_lines.error()) return Result::end;
    m_error = *m_lines.error();
    return Result::error;
}

AlmanacReader::Result AlmanacReader::finish(CALN::CALX_SAT_ALMANAC record, int id, int health, int week,
                                            CALN::CALX_SAT_ALMANAC& almanac) {
    const auto bad = [&](const std::string& what) {
        m_error = FormatError{m_lines.name(), m_recordLine, "satellite " + std::to_string(id) + ": " + what};
        return Result::error;
    };
    constexpr const SatelliteSystem& kGps = *systemOfCode(CALN::eCALSATSYSTEM_GPS);
    if (id < 1 || id > kGps.maxNumber) {
        return bad("GPS has satellites 1 to " + std::to_string(kGps.maxNumber));
    }
    constexpr double kWeek = 604800.0;
    if (!(record.toa >= 0.0 && record.toa < kWeek)) return bad("the time of applicability is not within a week");
    if (!(record.e >= 0.0 && record.e < 1.0)) return bad("the eccentricity is not 0 to 1");
    if (!(record.sqrtA > 0.0)) return bad("the root of the semi-major axis is not positive");
    if (health < 0 || health > 255) return bad("the health is not 0 to 255");
    const int full = week < 0 ? -1 : fullWeek(week, record.toa, m_reference);
    if (full < 0 || full > 65535) return bad("the week is not 0 to 65535");
    record.satId = static_cast<unsigned char>(id);
    record.source = CALN::eCALORBITSOURCE_FILE;
    record.week = static_cast<unsigned short>(full);
    record.health = static_cast<unsigned char>(health);
    almanac = record;
    return Result::record;
}

std::unique_ptr<AlmanacReader> openAlmanac(const std::string& name, FormatError& error, const SMjdTime& reference) {
    LineReader lines;
    if (lines.open(name)) return openAlmanac(std::move(lines), error, reference);
    error = lines.error().value_or(FormatError{name, 0, "cannot be opened"});
    return nullptr;
}

std::unique_ptr<AlmanacReader> openAlmanac(LineReader lines, FormatError& error, const SMjdTime& reference) {
    while (const auto line = lines.next()) {
        const std::string_view text = withoutBlanks(*line);
        if (text.empty()) continue;
        const bool sem = text.front() >= '0' && text.front() <= '9';
        const bool yuma = text.front() == '*' || text.starts_with("ID:");
        if (!sem && !yuma) break;
        lines.putBack();
        if (sem) return std::make_unique<SemReader>(std::move(lines), reference);
        return std::make_unique<YumaReader>(std::move(lines), reference);
    }
    error = lines.error().value_or(FormatError{lines.name(), lines.lineNumber(), "this is no YUMA or SEM almanac"});
    return nullptr;
}

}  // namespace halvex::almanac
