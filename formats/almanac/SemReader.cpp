#include "formats/almanac/SemReader.h"

#include <array>
#include <cstddef>
#include <numbers>
#include <span>

#include "formats/io/Columns.h"
#include "formats/io/FixedNumber.h"

namespace halvex::almanac {
namespace {

/// The next word of a line, which goes on behind it; empty at its end.
std::string_view takeWord(std::string_view& line) {
    line = withoutBlanks(line);
    const std::string_view word = line.substr(0, line.find(' '));
    line.remove_prefix(word.size());
    return word;
}

/// True when the line holds just so many numbers.
bool parseNumbers(std::string_view line, std::span<double> values) {
    for (double& value : values) {
        if (parseDecimal(takeWord(line), value) != Field::number) return false;
    }
    return isBlank(line);
}

}  // namespace

AlmanacReader::Result SemReader::readHeader() {
    m_ended = true;
    if (!nextText()) return m_lines.error() ? end() : fail("the file is empty");
    std::string_view line = m_line;
    int announced = 0;
    if (parseInteger(takeWord(line), announced) != Field::number || announced < 0) {
        return fail("the first line does not begin with the number of records");
    }
    if (!nextLine()) return m_lines.error() ? end() : fail("the file ends in its header");
    line = m_line;
    if (parseInteger(takeWord(line), m_week) != Field::number || !parseNumbers(line, {&m_toa, 1})) {
        return fail("the second line is not week and time of applicability");
    }
    m_ended = false;
    m_announced = announced;
    return Result::record;
}

AlmanacReader::Result SemReader::next(CALN::CALX_SAT_ALMANAC& almanac) {
    if (m_ended) return Result::end;
    if (m_announced < 0) {
        if (const Result header = readHeader(); header != Result::record) return header;
    }
    while (m_lost && nextLine() && !isBlank(m_line)) {
    }
    m_lost = false;
    const bool found = nextText();
    if (!found && end() == Result::error) return Result::error;
    if (found == (m_taken == m_announced)) {
        m_ended = true;
        return fail(std::to_string(m_announced) + " records are announced, " +
                    (found ? "more follow" : std::to_string(m_taken) + " are here"));
    }
    if (!found) return Result::end;
    ++m_taken;

    // Eight lines; the number of the space vehicle, the class of accuracy and the configuration are not kept.
    m_recordLine = m_lines.lineNumber();
    enum Line : std::size_t { eId, eVehicle, eAccuracy, eShape, ePlane, eClock, eHealth, eConfiguration, eLines };
    std::array<int, eLines> integers{};
    std::array<std::array<double, 3>, eLines> numbers{};
    for (std::size_t i = 0; i < eLines; ++i) {
        if (i > 0 && !nextLine()) {
            return end() == Result::error ? Result::error : fail("the file ends inside a record");
        }
        m_lost = !isBlank(m_line);
        if (i == eShape || i == ePlane || i == eClock) {
            if (!parseNumbers(m_line, numbers[i])) return fail("this line of a record holds three numbers");
        } else {
            const Field field = parseInteger(m_line, integers[i]);
            if (field == Field::bad || (field == Field::blank && i != eVehicle)) {
                return fail("this line of a record holds one whole number");
            }
        }
    }
    m_lost = false;

    constexpr double kSemicircle = std::numbers::pi;
    constexpr double kInclinationZero = 0.3;  // [semicircles], IS-GPS-200, 20.3.3.5.2.1
    CALN::CALX_SAT_ALMANAC record;
    record.toa = m_toa;
    record.e = numbers[eShape][0];
    record.i = (kInclinationZero + numbers[eShape][1]) * kSemicircle;
    record.omegaDot = numbers[eShape][2] * kSemicircle;
    record.sqrtA = numbers[ePlane][0];
    record.omega0 = numbers[ePlane][1] * kSemicircle;
    record.omega = numbers[ePlane][2] * kSemicircle;
    record.m0 = numbers[eClock][0] * kSemicircle;
    record.af0 = numbers[eClock][1];
    record.af1 = numbers[eClock][2];
    return finish(record, integers[eId], integers[eHealth], m_week, almanac);
}

}  // namespace halvex::almanac
