#pragma once

#include <optional>
#include <string>

#include "halvex/platform/Export.h"
#include "halvex/platform/os/DateTypes.h"

/// Dates and times of day as text, and as the real number of OLE automation. Free functions without state; any thread.
namespace os {

/// Short date and time of day as the user's locale writes them: the locale of the environment (LC_ALL, LC_TIME, LANG),
/// asked for at each call, not the one that the process has set; the C locale when the environment names an unknown
/// one.
HALVEX_EXPORT std::string formatRegionalDate(const SYSTEMTIME& time);
HALVEX_EXPORT std::string formatRegionalTime(const SYSTEMTIME& time);

/// `pattern` with its conversions of strftime (ISO C 99, with or without the modifiers E and O) replaced, in the C
/// locale whatever the locale of the host is. A SYSTEMTIME has no zone: %z and %Z give nothing. Anything else after a
/// percent sign stays as it stands. The day of the week is worked out from the date. A null pattern gives an empty
/// text.
HALVEX_EXPORT std::string formatDate(const char* pattern, const SYSTEMTIME& time);

/// OLE automation date: days since 30 December 1899, the time of day as the fraction; before that day the whole part is
/// negative and the fraction still counts forward, so that -1.25 is 6 a.m. of the 29th. Empty for an impossible date or
/// time of day and for years outside 100 to 9999.
HALVEX_EXPORT std::optional<double> toVariantDate(const SYSTEMTIME& time);

/// The way back, to the nearest millisecond. Empty for a number outside the years 100 to 9999, infinite or not a
/// number.
HALVEX_EXPORT std::optional<SYSTEMTIME> fromVariantDate(double date);

}  // namespace os
