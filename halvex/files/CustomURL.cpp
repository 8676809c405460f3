#include "halvex/files/CustomURL.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>
#include <optional>
#include <string_view>
#include <system_error>

namespace {

/// What the placeholders print, worked out once for an instant.
struct Fields {
    explicit Fields(const CTimeBase& time) : gpsWeek(time.GetGpsWeek()) {
        const SMjdCalendar calendar = time.GetCalendar();
        constexpr int kFirstYear = 100;  // of CTimeBase::Format
        constexpr int kLastYear = 9999;
        if (calendar.year < kFirstYear || calendar.year > kLastYear) return;
        static constexpr std::array<std::string_view, 7> kDays{"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
        static constexpr std::array<std::string_view, 12> kMonths{"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                                                  "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
        constexpr int kWeekdayOfDay0 = 3;  // MJD 0 was a Wednesday
        year = calendar.year;
        shortYear = calendar.year % 100;
        month = calendar.month;
        day = calendar.day;
        hour = calendar.hour;
        minute = calendar.minute;
        dayOfYear = time.GetDayOfYear();
        dayOfWeek = ((time.GetMjdDay() + kWeekdayOfDay0) % 7 + 7) % 7;
        weekFromSunday = (dayOfYear + 6 - dayOfWeek) / 7;  // the first Sunday begins week 1
        weekFromMonday = (dayOfYear + 6 - (dayOfWeek + 6) % 7) / 7;
        dayName = kDays[static_cast<std::size_t>(dayOfWeek)];
        monthName = kMonths[static_cast<std::size_t>(month - 1)];
    }

    int gpsWeek;
    int year = 0, shortYear = 0, month = 0, day = 0, hour = 0, minute = 0;
    int dayOfYear = 0, dayOfWeek = 0, weekFromSunday = 0, weekFromMonday = 0;
    std::string_view dayName = "Invalid DateTime.";
    std::string_view monthName = "Invalid DateTime.";
};

/// How a letter prints its value.
struct Letter {
    enum class Print : std::uint8_t {
        number,     ///< zeros up to the width
        digits,     ///< at least `digits`, or with a width `wideDigits`, digits; blanks up to the width
        character,  ///< 'a' plus the value
        name,
        site,
    };
    char letter;
    Print print;
    int Fields::*value = nullptr;
    std::string_view Fields::*name = nullptr;
    int digits = 1;
    int wideDigits = 2;
};

using Print = Letter::Print;
constexpr std::array<Letter, 17> kLetters{{
    {'D', Print::number, &Fields::day},
    {'G', Print::number, &Fields::gpsWeek},
    {'H', Print::character, &Fields::hour},
    {'M', Print::number, &Fields::month},
    {'S', Print::site},
    {'U', Print::digits, &Fields::weekFromSunday, nullptr, 2, 2},
    {'W', Print::digits, &Fields::weekFromMonday, nullptr, 2, 2},
    {'Y', Print::number, &Fields::year},
    {'a', Print::name, nullptr, &Fields::dayName},
    {'b', Print::name, nullptr, &Fields::monthName},
    {'d', Print::digits, &Fields::day, nullptr, 2, 2},
    {'h', Print::number, &Fields::hour},
    {'j', Print::digits, &Fields::dayOfYear, nullptr, 3, 3},
    {'m', Print::digits, &Fields::month, nullptr, 2, 2},
    {'t', Print::number, &Fields::minute},
    {'w', Print::digits, &Fields::dayOfWeek, nullptr, 1, 2},
    {'y', Print::number, &Fields::shortYear},
}};

const Letter* find(char letter) {
    const auto* found = std::find_if(kLetters.begin(), kLetters.end(),
                                     [letter](const Letter& known) { return known.letter == letter; });
    return found != kLetters.end() ? found : nullptr;
}

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

bool contains(std::string_view letters, char letter) {
    return letters.find(letter) != letters.npos;
}

std::string_view orEmpty(const char* text) {
    return text != nullptr ? text : "";
}

struct Placeholder {
    char letter = '\0';
    int width = -1;  ///< -1: none
};

/// Takes the rest of a placeholder, whose '%' is taken already, off the front of `rest`. False when it is cut off.
bool takePlaceholder(std::string_view& rest, Placeholder& placeholder) {
    const std::size_t digits = !rest.empty() && isDigit(rest[0]) ? 1 : 0;
    if (rest.size() == digits) return false;
    placeholder.letter = rest[digits];
    placeholder.width = digits != 0 ? rest[0] - '0' : -1;
    rest.remove_prefix(digits + 1);
    return true;
}

/// Takes the literal text before the next placeholder, and that one's '%', off the front of `rest`.
std::string_view takeLiteral(std::string_view& rest, bool& placeholderFollows) {
    const std::size_t length = std::min(rest.find('%'), rest.size());
    const std::string_view literal = rest.substr(0, length);
    placeholderFollows = length < rest.size();
    rest.remove_prefix(length + (placeholderFollows ? 1 : 0));
    return literal;
}

bool isValid(std::string_view rest, std::string_view additionalLetters) {
    bool follows = true;
    Placeholder placeholder;
    while (static_cast<void>(takeLiteral(rest, follows)), follows) {
        if (!takePlaceholder(rest, placeholder)) return false;
        if (find(placeholder.letter) == nullptr && !contains(additionalLetters, placeholder.letter)) return false;
    }
    return true;
}

void appendFilled(std::string& out, std::string_view text, int width) {
    out.append(static_cast<std::size_t>(std::max(0, width - static_cast<int>(text.size()))), ' ');
    out += text;
}

/// At least that many digits, a sign not counted, then blanks in front up to the width.
void appendNumber(std::string& out, int value, int digits, int width) {
    std::array<char, 16> plain;
    const bool negative = value < 0;
    const auto magnitude = negative ? 0U - static_cast<unsigned>(value) : static_cast<unsigned>(value);
    const auto length =
        static_cast<int>(std::to_chars(plain.data(), plain.data() + plain.size(), magnitude).ptr - plain.data());
    const int zeros = std::max(0, digits - length);
    const int blanks = std::max(0, width - zeros - length - (negative ? 1 : 0));
    out.append(static_cast<std::size_t>(blanks), ' ');
    if (negative) out += '-';
    out.append(static_cast<std::size_t>(zeros), '0');
    out.append(plain.data(), static_cast<std::size_t>(length));
}

void append(std::string& out, const Letter& letter, int givenWidth, const Fields& fields,
            const std::optional<std::string_view>& site) {
    const int width = std::max(givenWidth, 0);
    switch (letter.print) {
        case Print::number: {
            const int value = fields.*letter.value;
            return appendNumber(out, value, width - (value < 0 ? 1 : 0), 0);
        }
        case Print::digits:
            return appendNumber(out, fields.*letter.value, givenWidth >= 0 ? letter.wideDigits : letter.digits, width);
        case Print::character: {
            const char character = static_cast<char>('a' + fields.*letter.value);
            return appendFilled(out, {&character, 1}, width);
        }
        case Print::name:
            return appendFilled(out, fields.*letter.name, width);
        case Print::site:
            out += site.value_or("%S");
    }
}

/// Empty when the template is not valid.
std::optional<std::string> expand(const CTimeBase& time, const std::optional<std::string_view>& site,
                                  std::string_view rest, std::string_view additionalLetters) {
    const Fields fields(time);
    std::string out;
    out.reserve(rest.size() + (site ? site->size() : 0) + 16);
    bool follows = true;
    Placeholder placeholder;
    while (out += takeLiteral(rest, follows), follows) {
        if (!takePlaceholder(rest, placeholder)) return std::nullopt;
        if (const Letter* letter = find(placeholder.letter)) {
            append(out, *letter, placeholder.width, fields, site);
        } else if (contains(additionalLetters, placeholder.letter)) {
            out += '%';
            out += placeholder.letter;
        } else {
            return std::nullopt;
        }
    }
    return out;
}

std::optional<std::string> expand(const CTimeBase& time, const char* site, const char* urlTemplate,
                                  const char* additionalLetters) {
    if (urlTemplate == nullptr) return std::nullopt;
    return expand(time, site != nullptr ? std::optional<std::string_view>(site) : std::nullopt, urlTemplate,
                  orEmpty(additionalLetters));
}

// The way back.

/// Takes a number of up to `mostDigits` digits, with blanks before it, off the front of `text`.
std::optional<int> takeNumber(std::string_view& text, std::size_t mostDigits, int least, int most) {
    text.remove_prefix(std::min(text.find_first_not_of(' '), text.size()));
    int value = 0;
    const char* begin = text.data();
    if (text.empty() || !isDigit(text.front())) return std::nullopt;  // from_chars takes a sign
    const auto [end, error] = std::from_chars(begin, begin + std::min(mostDigits, text.size()), value);
    if (error != std::errc() || value < least || value > most) return std::nullopt;
    text.remove_prefix(static_cast<std::size_t>(end - begin));
    return value;
}

/// The date replaced, the time of day as it is, to the last bit.
void setDate(CTimeBase& time, int year, int month, int day) {
    const SMjdTime midnight(year, month, day, 0, 0, 0.0);
    time = SMjdTime::FromDayAndMilliseconds(midnight.GetMjdDay(), time.GetMjdFractMilliseconds());
}

/// Reads what the placeholder stands for and changes the time by it.
bool takeField(char letter, std::string_view& text, CTimeBase& time) {
    const SMjdCalendar now = time.GetCalendar();
    std::optional<int> number;
    switch (letter) {
        case 'D':
        case 'd':
            if ((number = takeNumber(text, letter == 'D' ? text.npos : 2, 1, 32))) {
                setDate(time, now.year, now.month, 1 + *number);
            }
            return number.has_value();
        case 'j':
            if ((number = takeNumber(text, 3, 1, 366))) setDate(time, now.year, 1, 1 + *number);
            return number.has_value();
        case 'U':
        case 'W':
            if ((number = takeNumber(text, 2, 1, 52))) setDate(time, now.year, 1, 1 + 7 * *number);
            return number.has_value();
        case 'M':
        case 'm':
            if ((number = takeNumber(text, 2, 1, 13))) setDate(time, now.year, *number, now.day);
            return number.has_value();
        case 'Y':
            if ((number = takeNumber(text, 4, 1980, 2100))) setDate(time, *number, now.month, now.day);
            return number.has_value();
        case 'y':
            if ((number = takeNumber(text, 2, 0, 99))) setDate(time, 2000 + *number, now.month, now.day);
            return number.has_value();
        case 'G':
            if ((number = takeNumber(text, 4, 1, 5965))) {
                const int dayOfWeek = (time.GetMjdDay() % 7 - SMjdTime::kMjdOfGpsWeek0 % 7 + 14) % 7;  // Sunday 0
                time = SMjdTime::FromDayAndMilliseconds(SMjdTime::kMjdOfGpsWeek0 + 7 * *number + dayOfWeek,
                                                        time.GetMjdFractMilliseconds());
            }
            return number.has_value();
        case 'H': {
            if (text.empty() || text.front() < 'a' || text.front() > 'x') return false;
            constexpr double kHour = 3600000.0;  // [ms]
            const int change = text.front() - 'a' - now.hour;
            text.remove_prefix(1);
            time = SMjdTime::FromDayAndMilliseconds(time.GetMjdDay(), time.GetMjdFractMilliseconds() + change * kHour);
            return true;
        }
        default:
            return false;
    }
}

}  // namespace

int CCustomURL::VerifyCustomURL(const char* urlTemplate, const char* additionalLetters) {
    return urlTemplate != nullptr && isValid(urlTemplate, orEmpty(additionalLetters)) ? 1 : 0;
}

int CCustomURL::IsCustomFormatAvailable(const char* urlTemplate, char letter) {
    std::string_view rest = orEmpty(urlTemplate);
    bool follows = true;
    Placeholder placeholder;
    while (static_cast<void>(takeLiteral(rest, follows)), follows) {
        if (!takePlaceholder(rest, placeholder)) return 0;
        if (placeholder.letter == letter) return 1;
        if (find(placeholder.letter) == nullptr) return 0;
    }
    return 0;
}

CString CCustomURL::getCustomURL(const CTimeBase& time, const char* site, const char* urlTemplate,
                                 const char* additionalLetters) {
    return CString(expand(time, site, urlTemplate, additionalLetters).value_or(std::string()));
}

bool CCustomURL::getCustomURL(const CTimeBase& time, const char* site, const char* urlTemplate, char* buffer,
                              std::size_t size, const char* additionalLetters) {
    if (buffer == nullptr || size == 0) return false;
    const auto url = expand(time, site, urlTemplate, additionalLetters);
    const bool fits = url && url->size() < size;
    buffer[fits ? url->copy(buffer, url->size()) : 0] = '\0';
    return fits;
}

std::string CCustomURL::getCustomFileName(const CTimeBase& time, const std::string& urlTemplate,
                                          const std::string& site) {
    return expand(time, site, urlTemplate, "").value_or(std::string());
}

bool CCustomURL::ExtractTimeFromString(CTimeBase& time, const char* urlTemplate, const char* text) {
    if (text == nullptr || VerifyCustomURL(urlTemplate) == 0) return false;
    std::string_view rest = urlTemplate;
    std::string_view from = text;
    CTimeBase result = time;
    Placeholder placeholder;
    bool follows = true;
    while (true) {
        const std::size_t literal = takeLiteral(rest, follows).size();
        if (literal > from.size()) return false;
        from.remove_prefix(literal);
        if (!follows) break;
        if (!takePlaceholder(rest, placeholder) || !takeField(placeholder.letter, from, result)) return false;
    }
    time = result;
    return true;
}
