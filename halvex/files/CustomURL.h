#pragma once

#include <cstddef>
#include <string>

#include "halvex/platform/Export.h"
#include "halvex/platform/os/CString.h"
#include "halvex/time/TimeBase.h"

/// URLs and file names from templates, and times back out of them. Static functions without state, callable from any
/// thread; no locale and no time zone enters: times are read as they stand.
///
/// A placeholder is '%', an optional digit (the width w) and a letter:
///
///   D day of month, M month, Y year, y year without its century, h hour, t minute, G GPS week
///     as a number ("5" for the year 2005 under y), filled with zeros to w
///   d day of month, m month, U and W week of the year (Sunday, Monday begins it): two digits; j day of year: three
///     filled with blanks to w: "%3d" gives " 07"
///   w day of week, Sunday 0: one digit; with w two digits, filled with blanks
///   H hour as a letter, "a" to "x"; a "Mon", b "Jan": filled with blanks to w
///   S name of the site; w is not looked at
///
/// Numbers and names are those of CTimeBase::Format; outside its years, 100 to 9999, numbers are 0 (H: "a") and names
/// "Invalid DateTime.". The GPS week is that of any instant.
class HALVEX_EXPORT CCustomURL {
public:
    /// 1 when every placeholder of the template is complete and has a letter from above or one of `additionalLetters`,
    /// else 0. A null template is not valid, an empty one is.
    static int VerifyCustomURL(const char* urlTemplate, const char* additionalLetters = nullptr);

    /// 1 when a placeholder has that letter and none with an unknown letter stands before it, else 0.
    static int IsCustomFormatAvailable(const char* urlTemplate, char letter);

    /// The template with its placeholders replaced; empty when it is not valid. With a null `site` "%S" stays as it is;
    /// an empty one is a name. Placeholders with an additional letter stay for the caller, without their width.
    static CString getCustomURL(const CTimeBase& time, const char* site, const char* urlTemplate,
                                const char* additionalLetters = nullptr);
    /// The same into a buffer. False, and the empty text in it, when the template is not valid or the result and its
    /// NUL do not fit: half a URL names something else. A null or empty buffer stays as it is.
    static bool getCustomURL(const CTimeBase& time, const char* site, const char* urlTemplate, char* buffer,
                             std::size_t size, const char* additionalLetters = nullptr);
    /// The same without additional letters.
    static std::string getCustomFileName(const CTimeBase& time, const std::string& urlTemplate,
                                         const std::string& site);

    /// Reads the time out of a text that was made from the template. `time` supplies what the text does not have.
    /// False, and `time` as it was, when the template is not valid, the text ends before it, or a placeholder finds no
    /// number in its range; text behind the template's end is not looked at. A literal character passes over one
    /// character of the text, whatever that is. Placeholders change the time one after another, from left to right:
    ///
    ///   D, d    1 to 32     the first of the month plus that many days: one day AFTER the day that was read
    ///   j       1 to 366    1 January plus that many days: one day after, too
    ///   U, W    1 to 52     1 January plus that many weeks
    ///   M, m    1 to 13     month; 13 is next January
    ///   Y       1980 to 2100, y 0 to 99: year, from 2000
    ///   G       1 to 5965   GPS week; the seconds of the week stay
    ///   H       a to x      hour
    ///
    /// A day that the new month or year does not have runs over into the next month. D reads all digits that follow, j
    /// up to three, Y and G up to four, the others up to two, whatever the width; blanks before a number are passed
    /// over. S, a, b, h, t and w cannot be read.
    static bool ExtractTimeFromString(CTimeBase& time, const char* urlTemplate, const char* text);
};
