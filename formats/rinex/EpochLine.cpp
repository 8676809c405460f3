#include "formats/rinex/EpochLine.h"

#include <algorithm>
#include <array>

#include "formats/io/Columns.h"
#include "formats/io/FixedNumber.h"

namespace halvex::rinex {
namespace {

/// Two-digit years: 80 to 99 are of the last century (RINEX 2.11, 6.5).
int fullYear(int year) {
    return year < 80 ? 2000 + year : 1900 + year;
}

std::optional<std::string> parseTime(std::string_view line, Family family, SMjdTime& time) {
    const std::size_t shift = static_cast<std::size_t>(family);
    // The blanks between the fields: digits there mean that the fields stand elsewhere.
    for (const std::size_t column : {std::size_t{3}, std::size_t{6}, std::size_t{9}, std::size_t{12}}) {
        if (columnAt(line, column + shift) != ' ') return "the fields of the epoch's time are not where they belong";
    }
    int year = 0;
    int month = 0;
    int day = 0;
    int hour = 0;
    int minute = 0;
    double second = 0.0;
    const std::string_view yearText = family == Family::rinex2 ? columns(line, 1, 2) : columns(line, 2, 4);
    const std::array<Field, 6> fields{
        parseInteger(yearText, year),
        parseInteger(columns(line, 4 + shift, 2), month),
        parseInteger(columns(line, 7 + shift, 2), day),
        parseInteger(columns(line, 10 + shift, 2), hour),
        parseInteger(columns(line, 13 + shift, 2), minute),
        parseDecimal(columns(line, 15 + shift, 11), second),
    };
    const bool numbers = std::all_of(fields.begin(), fields.end(), [](Field f) { return f == Field::number; });
    if (numbers && year >= 0) {
        if (family == Family::rinex2) year = fullYear(year);
        if (const auto checked = checkedTime(year, month, day, hour, minute, second)) {
            time = *checked;
            return std::nullopt;
        }
    }
    return "the epoch's time \"" + std::string(withoutBlanks(columns(line, 1, 25 + shift))) + "\" is none";
}

}  // namespace

std::optional<SMjdTime> checkedTime(int year, int month, int day, int hour, int minute, double second) {
    static constexpr std::array<int, 12> kDays{31, 29, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    if (month < 1 || month > 12) return std::nullopt;
    const bool leapYear = (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
    const int days = month == 2 && !leapYear ? 28 : kDays[static_cast<std::size_t>(month - 1)];
    if (day < 1 || day > days || hour < 0 || hour > 23 || minute < 0 || minute > 59) return std::nullopt;
    if (!(second >= 0.0 && second < 61.0)) return std::nullopt;
    return SMjdTime(year, month, day, hour, minute, second);
}

std::optional<std::string> parseEpochLine(std::string_view line, Family family, EpochLine& epoch) {
    const std::size_t shift = static_cast<std::size_t>(family);
    epoch = EpochLine();
    if (family == Family::rinex2 ? columnAt(line, 0) != ' ' : columnAt(line, 0) != '>') {
        return family == Family::rinex2 ? "an epoch line begins with a blank" : "an epoch line begins with \">\"";
    }
    // The time first: fields that stand elsewhere would pass for a bad flag.
    const bool hasTime = !isBlank(columns(line, 1, 25 + shift));
    if (hasTime) {
        if (auto fault = parseTime(line, family, epoch.time)) return fault;
    }
    const char flag = columnAt(line, 28 + shift);
    if (flag < '0' || flag > '6' || !isBlank(columns(line, 26 + shift, 2))) {
        return std::string("the epoch flag is '") + flag + "', not 0 to 6";
    }
    epoch.flag = static_cast<EpochFlag>(flag - '0');

    if (!hasTime && !epoch.isEvent()) return "the epoch has no time";

    int count = 0;
    const Field counted = parseInteger(columns(line, 29 + shift, 3), count);
    if (counted == Field::bad || count < 0 || (counted == Field::blank && !epoch.isEvent())) {
        return "the count \"" + std::string(columns(line, 29 + shift, 3)) + "\" behind the epoch flag is none";
    }
    epoch.count = static_cast<unsigned>(count);

    const std::string_view clock = family == Family::rinex2 ? columns(line, 68, 12) : columns(line, 41, 15);
    double offset = 0.0;
    switch (parseDecimal(clock, offset)) {
        case Field::number:
            epoch.clockOffset = offset;
            break;
        case Field::blank:
            break;
        case Field::bad:
            return "the receiver clock offset \"" + std::string(clock) + "\" is no number";
    }
    const std::string_view rest = family == Family::rinex2 ? columns(line, 80) : columns(line, 56);
    if (!isBlank(rest)) return "text behind the last field of the epoch line";
    return std::nullopt;
}

bool mayBeginEpoch(std::string_view line, Family family) {
    if (family == Family::rinex3) return columnAt(line, 0) == '>';
    EpochLine epoch;
    return !parseEpochLine(line, family, epoch) && epoch.time.IsSet();
}

}  // namespace halvex::rinex
