#include "halvex/time/TimeBase.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <string>
#include <string_view>

#include "halvex/platform/os/DateFormat.h"

namespace {

std::uint16_t word(int value) {
    return static_cast<std::uint16_t>(std::clamp<int>(value, 0, std::numeric_limits<std::uint16_t>::max()));
}

double secondsOf(const SYSTEMTIME& stamp) {
    return stamp.wSecond + stamp.wMilliseconds / 1000.0;
}

/// Date and time of day to the second, cut.
SYSTEMTIME wholeSeconds(const SMjdCalendar& calendar) {
    SYSTEMTIME stamp;
    stamp.wYear = word(calendar.year);
    stamp.wMonth = word(calendar.month);
    stamp.wDay = word(calendar.day);
    stamp.wHour = word(calendar.hour);
    stamp.wMinute = word(calendar.minute);
    stamp.wSecond = word(static_cast<int>(calendar.second));
    return stamp;
}

bool sameToTheSecond(const SYSTEMTIME& left, const SYSTEMTIME& right) {
    return left.wYear == right.wYear && left.wMonth == right.wMonth && left.wDay == right.wDay &&
           left.wHour == right.wHour && left.wMinute == right.wMinute && left.wSecond == right.wSecond;
}

/// At most `limit` bytes, and no half character of UTF-8 at the end.
std::string_view cut(std::string_view text, std::size_t limit) {
    if (text.size() <= limit) return text;
    while (limit > 0 && (static_cast<unsigned char>(text[limit]) & 0xC0) == 0x80) --limit;
    return text.substr(0, limit);
}

void copyCut(std::string_view text, char* buffer, std::size_t size) {
    if (buffer == nullptr || size == 0) return;
    const std::string_view part = cut(text, size - 1);
    buffer[part.copy(buffer, part.size())] = '\0';
}

template <class Number>
int order(Number left, Number right) {
    return left == right ? 0 : left > right ? 1 : -1;
}

}  // namespace

CTimeBase::CTimeBase(int week, double seconds) : mjd::time(week, seconds, eMjdAccuracyFull) {}

CTimeBase::CTimeBase(int year, int dayOfYear, double secondsOfDay)
    : mjd::time(static_cast<short>(year), static_cast<short>(dayOfYear), secondsOfDay, eMjdAccuracyFull) {}

CTimeBase::CTimeBase(int year, int month, int day, int hour, int minute, double second)
    : mjd::time(year, month, day, hour, minute, second, eMjdAccuracyFull) {}

CTimeBase::CTimeBase(double mjd) : mjd::time(mjd, eMjdAccuracyFull) {}

CTimeBase::CTimeBase(const DBTIMESTAMP& stamp)
    : CTimeBase(stamp.year, stamp.month, stamp.day, stamp.hour, stamp.minute, stamp.second + stamp.fraction / 1e9) {}

CTimeBase::CTimeBase(const SYSTEMTIME& stamp) {
    SetAsDate(stamp.wYear, stamp.wMonth, stamp.wDay, stamp.wHour, stamp.wMinute, secondsOf(stamp));
}

CTimeBase::CTimeBase(const SMjdTime& instant) : mjd::time(instant) {}

CTimeBase::~CTimeBase() = default;

CTimeBase& CTimeBase::operator=(const SMjdTime& instant) {
    mjd::time::operator=(instant);
    return *this;
}

bool CTimeBase::loadData(const unsigned char* buffer, std::size_t size) {
    std::uint64_t used = 0;
    return SMjdTime::loadData(buffer, size, used);
}

void CTimeBase::saveData(unsigned char* buffer, std::size_t size) const {
    std::uint64_t used = 0;
    SMjdTime::saveData(buffer, size, used);
}

std::size_t CTimeBase::getSize() const {
    return kSavedSize;
}

unsigned int CTimeBase::GetFractionOfMinutes() const {
    return static_cast<unsigned int>(std::fmod(GetGpsSeconds(), 60.0) * 1000.0);
}

void CTimeBase::ToDbTimeStamp(DBTIMESTAMP& stamp) const {
    const SMjdCalendar calendar = GetCalendar();
    const auto atMost = [](int value, int limit) { return word(std::min(value, limit)); };
    stamp.year = static_cast<std::int16_t>(std::clamp<int>(calendar.year, std::numeric_limits<std::int16_t>::min(),
                                                           std::numeric_limits<std::int16_t>::max()));
    stamp.month = atMost(calendar.month, 12);
    stamp.day = atMost(calendar.day, 31);
    stamp.hour = atMost(calendar.hour, 23);
    stamp.minute = atMost(calendar.minute, 59);
    stamp.second = atMost(static_cast<int>(calendar.second), 59);
    const auto billionths = static_cast<std::uint32_t>((calendar.second - std::trunc(calendar.second)) * 1e9);
    stamp.fraction = billionths / 100 * 100;
}

void CTimeBase::ToSystemTime(SYSTEMTIME& stamp) const {
    const SMjdCalendar calendar = GetCalendar();
    const std::uint16_t dayOfWeek = stamp.wDayOfWeek;
    stamp = wholeSeconds(calendar);
    stamp.wDayOfWeek = dayOfWeek;
    stamp.wMilliseconds = word(static_cast<int>((calendar.second - std::trunc(calendar.second)) * 1000.0 + 0.5));
}

CString CTimeBase::Format(const char* pattern) const {
    const SYSTEMTIME stamp = wholeSeconds(GetCalendar());
    const auto date = os::toVariantDate(stamp);
    const auto back = date ? os::fromVariantDate(*date) : std::nullopt;
    if (!back || !sameToTheSecond(stamp, *back)) return "Invalid DateTime.";
    return CString(os::formatDate(pattern, stamp));
}

void CTimeBase::FormatRegional(char* date, std::size_t dateSize, char* timeOfDay, std::size_t timeOfDaySize) const {
    CString dateText;
    CString timeOfDayText;
    FormatRegional(dateText, timeOfDayText);
    copyCut(dateText.str(), date, dateSize);
    copyCut(timeOfDayText.str(), timeOfDay, timeOfDaySize);
}

CString CTimeBase::FormatRegional() const {
    CString date;
    CString timeOfDay;
    FormatRegional(date, timeOfDay);
    return date + " " + timeOfDay;
}

void CTimeBase::FormatRegional(char* buffer, std::size_t size) const {
    if (buffer == nullptr || size == 0) return;
    CString date;
    CString timeOfDay;
    FormatRegional(date, timeOfDay);
    const std::size_t half = (size - 1) / 2;
    std::string text(cut(date.str(), half));
    text += ' ';
    text += cut(timeOfDay.str(), half);
    copyCut(text, buffer, size);
}

void CTimeBase::FormatRegional(CString& date, CString& timeOfDay) const {
    SYSTEMTIME rounded;
    ToSystemTime(rounded);
    date = CString(os::formatRegionalDate(rounded));
    timeOfDay = CString(os::formatRegionalTime(rounded));
}

int CTimeBase::Compare(const CTimeBase& other, bool timeOfDayOnly, bool toTheMinute) const {
    const SMjdCalendar mine = GetCalendar();
    const SMjdCalendar theirs = other.GetCalendar();
    if (!timeOfDayOnly) {
        if (const int result = order(mine.year, theirs.year)) return result;
        if (const int result = order(mine.month, theirs.month)) return result;
        if (const int result = order(mine.day, theirs.day)) return result;
    }
    if (const int result = order(mine.hour, theirs.hour)) return result;
    if (const int result = order(mine.minute, theirs.minute)) return result;
    return toTheMinute ? 0 : order(mine.second, theirs.second);
}

SMjdTime convertToSMjdTime(const SYSTEMTIME& stamp) {
    if (stamp.wYear == 0 && stamp.wMonth == 0 && stamp.wDay == 0) return {};
    return {stamp.wYear, stamp.wMonth, stamp.wDay, stamp.wHour, stamp.wMinute, secondsOf(stamp)};
}
