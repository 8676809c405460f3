#include "formats/almanac/YumaReader.h"

#include <array>
#include <cstddef>
#include <optional>

#include "formats/io/Columns.h"
#include "formats/io/FixedNumber.h"

namespace halvex::almanac {
namespace {

/// The keys without their blanks, which differ from source to source.
enum Key : std::size_t {
    eId,
    eHealth,
    eE,
    eToa,
    eI,
    eOmegaDot,
    eSqrtA,
    eOmega0,
    eOmega,
    eM0,
    eAf0,
    eAf1,
    eWeek,
    eKeys
};
constexpr std::array<std::string_view, eKeys> kKeys{
    "ID",
    "Health",
    "Eccentricity",
    "TimeofApplicability(s)",
    "OrbitalInclination(rad)",
    "RateofRightAscen(r/s)",
    "SQRT(A)(m1/2)",
    "RightAscenatWeek(rad)",
    "ArgumentofPerigee(rad)",
    "MeanAnom(rad)",
    "Af0(s)",
    "Af1(s/s)",
    "week",
};

std::optional<std::size_t> keyOf(std::string_view text) {
    std::string key;
    for (const char c : text) {
        if (c != ' ') key += c;
    }
    for (std::size_t i = 0; i < eKeys; ++i) {
        if (kKeys[i] == key) return i;
    }
    return std::nullopt;
}

bool endsBlock(std::string_view line) {
    return isBlank(line) || line.starts_with('*');
}

bool isInteger(std::size_t key) {
    return key == eId || key == eHealth || key == eWeek;
}

}  // namespace

AlmanacReader::Result YumaReader::next(CALN::CALX_SAT_ALMANAC& almanac) {
    if (m_ended) return Result::end;
    bool found = nextLine();
    while (found && m_lost && !endsBlock(m_line)) found = nextLine();
    while (found && endsBlock(m_line)) found = nextLine();
    if (!found) return end();

    m_lost = true;
    m_recordLine = m_lines.lineNumber();
    std::array<std::optional<double>, eKeys> values;
    std::size_t count = 0;
    std::array<int, eKeys> integers{};
    for (; found && !endsBlock(m_line); found = count < eKeys && nextLine()) {
        const std::size_t colon = m_line.find(':');
        if (colon == std::string_view::npos) return fail("a line without a key: a colon is missing");
        const std::string_view name = withoutBlanks(m_line.substr(0, colon));
        const auto key = keyOf(name);
        if (!key) return fail("key \"" + std::string(name) + "\" is unknown");
        if (values[*key]) return fail("key \"" + std::string(name) + "\" stands twice in this record");
        const std::string_view text = m_line.substr(colon + 1);
        double value = 0.0;
        const Field field = isInteger(*key) ? parseInteger(text, integers[*key]) : parseDecimal(text, value);
        if (field != Field::number) {
            return fail(std::string(name) + ": \"" + std::string(withoutBlanks(text)) + "\" is no number");
        }
        values[*key] = value;
        ++count;
    }
    m_lost = false;
    if (m_lines.error()) return end();
    if (count < eKeys) {
        // The line that ended the block is no part of it.
        if (found) m_lines.putBack();
        for (std::size_t i = 0; i < eKeys; ++i) {
            if (!values[i]) return fail("the record ends here without \"" + std::string(kKeys[i]) + '"');
        }
    }

    CALN::CALX_SAT_ALMANAC record;
    record.e = *values[eE];
    record.toa = *values[eToa];
    record.i = *values[eI];
    record.omegaDot = *values[eOmegaDot];
    record.sqrtA = *values[eSqrtA];
    record.omega0 = *values[eOmega0];
    record.omega = *values[eOmega];
    record.m0 = *values[eM0];
    record.af0 = *values[eAf0];
    record.af1 = *values[eAf1];
    return finish(record, integers[eId], integers[eHealth], integers[eWeek], almanac);
}

}  // namespace halvex::almanac
