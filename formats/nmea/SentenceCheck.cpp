#include "formats/nmea/SentenceCheck.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>
#include <vector>

namespace halvex::nmea {
namespace {

constexpr std::size_t kIdAt = 3;      // behind '$' and the talker
constexpr std::size_t kFieldsAt = 7;  // behind the comma after the id
constexpr std::size_t kTail = 3;      // '*' and two digits

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}
bool isCapitalOrDigit(char c) {
    return (c >= 'A' && c <= 'Z') || isDigit(c);
}
bool areDigits(std::string_view text) {
    return !text.empty() && std::all_of(text.begin(), text.end(), isDigit);
}

/// Value of digits, at most nine.
int valueOf(std::string_view digits) {
    int value = 0;
    std::from_chars(digits.data(), digits.data() + digits.size(), value);
    return value;
}

/// "-123.4567": a sign or none, digits, a point with digits or none.
bool isNumber(std::string_view text) {
    if (text.starts_with('-')) text.remove_prefix(1);
    const std::size_t point = text.find('.');
    return areDigits(text.substr(0, point)) && (point == text.npos || areDigits(text.substr(point + 1)));
}
bool isNotNegative(std::string_view text) {
    return isNumber(text) && text.front() != '-';
}

/// hhmmss.ss; second 60 is a leap second.
bool isTime(std::string_view text) {
    constexpr std::size_t kWhole = 6;
    if (text.size() < kWhole || !areDigits(text.substr(0, kWhole))) return false;
    if (text.size() != kWhole &&
        (text[kWhole] != '.' || text.size() > kWhole + 3 || !areDigits(text.substr(kWhole + 1))))
        return false;
    return valueOf(text.substr(0, 2)) < 24 && valueOf(text.substr(2, 2)) < 60 && valueOf(text.substr(4, 2)) <= 60;
}

/// MMDDYY, of any century: 29 February stands in years that four divides.
bool isDate(std::string_view text) {
    using namespace std::chrono;
    if (text.size() != 6 || !areDigits(text)) return false;
    return year_month_day(year(2000 + valueOf(text.substr(4))),
                          month(static_cast<unsigned>(valueOf(text.substr(0, 2)))),
                          day(static_cast<unsigned>(valueOf(text.substr(2, 2)))))
        .ok();
}

/// Degrees of `digits` digits and minutes; 60.0000000 minutes, the rounded end of a degree, count.
bool isAngle(std::string_view text, std::size_t digits, int most) {
    if (text.size() < digits + 2 || !isNotNegative(text) || !areDigits(text.substr(0, digits + 2))) return false;
    const int degrees = valueOf(text.substr(0, digits));
    const int minutes = valueOf(text.substr(digits, 2));
    const std::string_view rest = text.substr(digits + 2);
    if (!rest.empty() && rest.front() != '.') return false;
    const bool whole = rest.find_first_not_of(".0") == rest.npos;
    const bool fullDegree = minutes == 0 && whole;
    return (minutes < 60 || (minutes == 60 && whole)) && (degrees < most || (degrees == most && fullDegree));
}

/// A field: what it is called and when it is good. What is empty is no concern of `good`.
struct Field {
    enum class Empty { never, withoutSolution, allowed };
    const char* name;
    bool (*good)(std::string_view);
    Empty empty = Empty::withoutSolution;
};

bool isUnit(std::string_view text) {
    return text == "M";
}
bool isCount(std::string_view text) {
    return areDigits(text) && text.size() <= 5;
}
constexpr auto kNever = Field::Empty::never;
constexpr auto kAllowed = Field::Empty::allowed;

constexpr Field kTime{"time", isTime, kNever};
constexpr Field kDate{"date", isDate, kNever};
constexpr Field kLatitude{"latitude", [](std::string_view text) { return isAngle(text, 2, 90); }};
constexpr Field kNorthSouth{"hemisphere", [](std::string_view text) { return text == "N" || text == "S"; }};
constexpr Field kLongitude{"longitude", [](std::string_view text) { return isAngle(text, 3, 180); }};
constexpr Field kEastWest{"hemisphere", [](std::string_view text) { return text == "E" || text == "W"; }};
constexpr Field kUnit{"unit", isUnit};
constexpr Field kQuality{"quality", [](std::string_view text) { return text.size() == 1 && isDigit(text[0]); }, kNever};
constexpr Field kSatellites{"number of satellites", isCount};
constexpr Field kAccuracy{"quality of the coordinates", isNotNegative};
constexpr Field kHeight{"height", isNumber};
constexpr Field kFigure{"figure", isNumber, kAllowed};

constexpr std::array<Field, 14> kGga{{kTime, kLatitude, kNorthSouth, kLongitude, kEastWest, kQuality, kSatellites,
                                      Field{"HDOP", isNotNegative}, kHeight, kUnit, Field{"geoid separation", isNumber},
                                      kUnit, Field{"age of corrections", isNotNegative, kAllowed},
                                      Field{"reference station", isNumber, kAllowed}}};
constexpr std::array<Field, 19> kLmm{{kTime, kDate, kLatitude, kNorthSouth, kLongitude, kEastWest, kQuality,
                                      kSatellites, kAccuracy, kHeight, kUnit, kFigure, kFigure, kFigure, kFigure,
                                      kFigure, kFigure, kFigure, kFigure}};
constexpr std::array<Field, 11> kLlq{{kTime, kDate, Field{"easting", isNumber}, kUnit, Field{"northing", isNumber},
                                      kUnit, kQuality, kSatellites, kAccuracy, kHeight, kUnit}};

/// The fields of a sentence behind its id; GGQ is the start of LMM.
struct Layout {
    std::string_view id;
    const Field* fields;
    std::size_t count;
    std::size_t quality;
};
constexpr std::array<Layout, 4> kLayouts{{{"GGA", kGga.data(), kGga.size(), 5},
                                          {"GGQ", kLmm.data(), 11, 6},
                                          {"LLQ", kLlq.data(), kLlq.size(), 6},
                                          {"LMM", kLmm.data(), kLmm.size(), 6}}};

std::optional<std::string> frameFault(std::string_view line) {
    if (line.empty() || line.front() != '$') return "a sentence begins with '$'";
    if (line.size() < kFieldsAt + kTail || line[kFieldsAt - 1] != ',' ||
        !std::all_of(line.begin() + 1, line.begin() + kFieldsAt - 1, isCapitalOrDigit)) {
        return "a sentence begins with '$', five capitals for talker and kind, and a comma";
    }
    const std::size_t star = line.size() - kTail;
    if (line[star] != '*') return "a sentence ends in '*' and the two digits of its checksum";
    unsigned char sum = 0;
    for (std::size_t i = 1; i < star; ++i) {
        const char c = line[i];
        if (c < ' ' || c > '~' || c == '$' || c == '*') {
            return fmt::format("column {}: the byte {:02X} does not belong in a sentence", i + 1,
                               static_cast<unsigned>(static_cast<unsigned char>(c)));
        }
        sum = static_cast<unsigned char>(sum ^ static_cast<unsigned char>(c));
    }
    const std::string expected = fmt::format("{:02X}", sum);
    if (line.substr(star + 1) != expected) {
        return fmt::format("its checksum is {}, not {}", expected, line.substr(star + 1));
    }
    return std::nullopt;
}

std::optional<std::string> fieldFault(const Layout& layout, std::string_view body) {
    std::vector<std::string_view> texts;
    for (std::size_t at = 0; at <= body.size();) {
        const std::size_t end = std::min(body.find(',', at), body.size());
        texts.push_back(body.substr(at, end - at));
        at = end + 1;
    }
    if (texts.size() != layout.count) {
        constexpr std::size_t kHdop = 7;
        const bool extra = layout.id == "GGA" && texts.size() == layout.count + 1 && texts[kHdop].empty();
        return fmt::format("{} has {} fields, here are {}{}", layout.id, layout.count, texts.size(),
                           extra ? " (a negative HDOP is written as two empty ones)" : "");
    }
    const bool noSolution = texts[layout.quality] == "0";
    for (std::size_t i = 0; i < texts.size(); ++i) {
        const Field& field = layout.fields[i];
        if (texts[i].empty()) {
            if (field.empty == kAllowed || (field.empty != kNever && noSolution)) continue;
            return fmt::format("field {}, {}, is empty", i + 1, field.name);
        }
        if (noSolution && field.empty == Field::Empty::withoutSolution) {
            return fmt::format("field {}, {}, is '{}' although quality is 0", i + 1, field.name, texts[i]);
        }
        if (!field.good(texts[i])) return fmt::format("field {}, {}, cannot be '{}'", i + 1, field.name, texts[i]);
    }
    return std::nullopt;
}

}  // namespace

std::string_view sentenceId(std::string_view line) {
    return line.size() < kFieldsAt ? std::string_view() : line.substr(kIdAt, 3);
}

std::optional<std::string> faultOf(std::string_view line) {
    if (auto fault = frameFault(line)) return fault;
    const auto* layout = std::find_if(kLayouts.begin(), kLayouts.end(),
                                      [line](const Layout& known) { return known.id == sentenceId(line); });
    if (layout == kLayouts.end()) return std::nullopt;
    return fieldFault(*layout, line.substr(kFieldsAt, line.size() - kTail - kFieldsAt));
}

}  // namespace halvex::nmea
