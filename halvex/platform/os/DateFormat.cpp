#include "halvex/platform/os/DateFormat.h"

#include <locale.h>
#include <time.h>

#include <array>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <string_view>

namespace os {
namespace {

using std::chrono::days;
using std::chrono::sys_days;
using std::chrono::year_month_day;

constexpr double kMillisecondsPerDay = 86400000.0;
constexpr sys_days kVariantDay0 = std::chrono::year(1899) / 12 / 30;
constexpr sys_days kFirstDay = std::chrono::year(100) / 1 / 1;
constexpr sys_days kLastDay = std::chrono::year(9999) / 12 / 31;

class Locale {
public:
    explicit Locale(const char* name) : m_locale(newlocale(LC_TIME_MASK | LC_CTYPE_MASK, name, nullptr)) {
        if (m_locale == nullptr) m_locale = newlocale(LC_ALL_MASK, "C", nullptr);
    }
    ~Locale() { freelocale(m_locale); }
    Locale(const Locale&) = delete;
    Locale& operator=(const Locale&) = delete;
    [[nodiscard]] locale_t get() const { return m_locale; }

private:
    locale_t m_locale;
};

year_month_day dateOf(const SYSTEMTIME& time) {
    return {std::chrono::year(time.wYear), std::chrono::month(time.wMonth), std::chrono::day(time.wDay)};
}

std::tm calendarOf(const SYSTEMTIME& time) {
    std::tm calendar{};
    calendar.tm_year = time.wYear - 1900;
    // strftime indexes its tables of names with these; an impossible value must not leave them.
    calendar.tm_mon = (time.wMonth + 11) % 12;
    calendar.tm_mday = time.wDay;
    calendar.tm_hour = time.wHour;
    calendar.tm_min = time.wMinute;
    calendar.tm_sec = time.wSecond;
    if (const year_month_day date = dateOf(time); date.ok()) {
        const sys_days day = date;
        calendar.tm_wday = static_cast<int>(std::chrono::weekday(day).c_encoding());
        calendar.tm_yday = static_cast<int>((day - sys_days(date.year() / 1 / 1)).count());
    }
    return calendar;
}

/// One conversion, such as "%Y". The buffer holds the longest result of any locale by far.
std::string expand(const char* conversion, const std::tm& calendar, locale_t locale) {
    std::array<char, 256> text{};
    return {text.data(), strftime_l(text.data(), text.size(), conversion, &calendar, locale)};
}

std::string formatRegional(const char* conversion, const SYSTEMTIME& time) {
    const Locale user("");
    return expand(conversion, calendarOf(time), user.get());
}

bool contains(std::string_view set, char letter) {
    return letter != '\0' && set.find(letter) != set.npos;
}

}  // namespace

std::string formatRegionalDate(const SYSTEMTIME& time) {
    return formatRegional("%x", time);
}
std::string formatRegionalTime(const SYSTEMTIME& time) {
    return formatRegional("%X", time);
}

std::string formatDate(const char* pattern, const SYSTEMTIME& time) {
    if (pattern == nullptr) return {};
    const Locale plain("C");
    const std::tm calendar = calendarOf(time);
    std::string text;
    // One conversion at a time: flags and widths that a C library may offer on top (a width of a billion) never reach
    // it.
    while (*pattern != '\0') {
        const std::string_view at(pattern);
        const bool modified = at[0] == '%' && at.size() > 2 && contains("EO", at[1]);
        const std::size_t length = modified ? 3 : 2;
        if (at[0] != '%' || at.size() < length || !contains("aAbBcCdDeFgGhHIjmMnprRStTuUVwWxXyYzZ%", at[length - 1])) {
            text += *pattern++;
            continue;
        }
        if (!contains("zZ", at[length - 1])) {
            const std::array<char, 3> conversion{'%', at[length - 1],
                                                 '\0'};  // in the C locale the modifiers change nothing
            text += expand(conversion.data(), calendar, plain.get());
        }
        pattern += length;
    }
    return text;
}

std::optional<double> toVariantDate(const SYSTEMTIME& time) {
    const year_month_day date = dateOf(time);
    if (!date.ok() || sys_days(date) < kFirstDay || sys_days(date) > kLastDay) return std::nullopt;
    if (time.wHour > 23 || time.wMinute > 59 || time.wSecond > 59 || time.wMilliseconds > 999) return std::nullopt;
    const int seconds = (time.wHour * 60 + time.wMinute) * 60 + time.wSecond;
    const double fraction = (seconds * 1000.0 + time.wMilliseconds) / kMillisecondsPerDay;
    const auto day = static_cast<double>((sys_days(date) - kVariantDay0).count());
    return day < 0.0 ? day - fraction : day + fraction;
}

std::optional<SYSTEMTIME> fromVariantDate(double date) {
    const double whole = std::trunc(date);
    const auto dayNumber = [](sys_days day) { return static_cast<double>((day - kVariantDay0).count()); };
    if (!(whole >= dayNumber(kFirstDay) && whole <= dayNumber(kLastDay))) return std::nullopt;
    auto milliseconds = static_cast<std::int64_t>(std::llround(std::abs(date - whole) * kMillisecondsPerDay));
    sys_days day = kVariantDay0 + days(static_cast<int>(whole));
    if (milliseconds >= 86400000) {
        milliseconds = 0;
        day += days(1);
        if (day > kLastDay) return std::nullopt;
    }
    const year_month_day calendar(day);
    const auto word = [](std::int64_t value) { return static_cast<std::uint16_t>(value); };
    return SYSTEMTIME{word(static_cast<int>(calendar.year())),
                      word(static_cast<unsigned>(calendar.month())),
                      word(std::chrono::weekday(day).c_encoding()),
                      word(static_cast<unsigned>(calendar.day())),
                      word(milliseconds / 3600000),
                      word(milliseconds / 60000 % 60),
                      word(milliseconds / 1000 % 60),
                      word(milliseconds % 1000)};
}

}  // namespace os
