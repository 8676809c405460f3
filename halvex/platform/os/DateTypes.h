#pragma once

#include <cstdint>

/// Calendar date and time of day of the operating system, to the millisecond. Eight 16-bit words; which time scale or
/// zone it is on is the business of whoever hands it over.
struct SYSTEMTIME {
    std::uint16_t wYear = 0;
    std::uint16_t wMonth = 0;      ///< 1 to 12
    std::uint16_t wDayOfWeek = 0;  ///< Sunday 0 to Saturday 6
    std::uint16_t wDay = 0;        ///< 1 to 31
    std::uint16_t wHour = 0;
    std::uint16_t wMinute = 0;
    std::uint16_t wSecond = 0;
    std::uint16_t wMilliseconds = 0;
};
static_assert(sizeof(SYSTEMTIME) == 16);

/// Calendar date and time of day of a database column.
struct DBTIMESTAMP {
    std::int16_t year = 0;
    std::uint16_t month = 0;  ///< 1 to 12
    std::uint16_t day = 0;    ///< 1 to 31
    std::uint16_t hour = 0;
    std::uint16_t minute = 0;
    std::uint16_t second = 0;
    std::uint32_t fraction = 0;  ///< billionths of a second
};
static_assert(sizeof(DBTIMESTAMP) == 16);
