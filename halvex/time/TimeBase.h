#pragma once

#include <cstddef>

#include "halvex/platform/Export.h"
#include "halvex/platform/kernix/PersistData.h"
#include "halvex/platform/mjd/MjdTime.h"
#include "halvex/platform/os/CString.h"
#include "halvex/platform/os/DateTypes.h"

/// One instant, to the fraction of a millisecond, that can be persisted, printed and exchanged with the operating
/// system and databases. Which time scale it is on, the derived class says. Plain value without locks.
///
/// Saved form, 12 bytes: int32 MJD day, float64 milliseconds of that day. Loading normalises the milliseconds into the
/// day; it refuses what is not finite and what leaves the range of day numbers.
class HALVEX_EXPORT CTimeBase : public mjd::time, public IPersistData {
public:
    /// The unset instant.
    CTimeBase() = default;
    /// GPS week and seconds of week.
    CTimeBase(int week, double seconds);
    /// Year, day of year (1 January is 1) and seconds of day; the two integers are narrowed to 16 bits.
    CTimeBase(int year, int dayOfYear, double secondsOfDay);
    /// Calendar date and time of day.
    CTimeBase(int year, int month, int day, int hour, int minute, double second);
    /// MJD, day plus fraction.
    explicit CTimeBase(double mjd);
    explicit CTimeBase(const DBTIMESTAMP& stamp);
    /// The day of the week is not looked at.
    explicit CTimeBase(const SYSTEMTIME& stamp);
    explicit CTimeBase(const SMjdTime& instant);
    CTimeBase(const CTimeBase&) = default;
    CTimeBase& operator=(const CTimeBase&) = default;
    CTimeBase& operator=(const SMjdTime& instant);
    ~CTimeBase() override;

    bool loadData(const unsigned char* buffer, std::size_t size) override;
    void saveData(unsigned char* buffer, std::size_t size) const override;
    [[nodiscard]] std::size_t getSize() const override;

    /// Milliseconds since the last full minute, cut to an integer.
    [[nodiscard]] unsigned int GetFractionOfMinutes() const;

    /// To 100 ns, cut. A year that the field cannot hold goes to its nearest end, here and below.
    void ToDbTimeStamp(DBTIMESTAMP& stamp) const;
    /// To the nearest millisecond. The last half millisecond of a second gives 1000 milliseconds, not the next second.
    /// The day of the week stays as it is in `stamp`.
    void ToSystemTime(SYSTEMTIME& stamp) const;

    /// The instant through a pattern of strftime (see os::formatDate), to the second, cut; the same in every locale.
    /// "Invalid DateTime." for years outside 100 to 9999.
    [[nodiscard]] CString Format(const char* pattern) const;

    /// Short date and time of day as the user's locale writes them (see os::formatRegionalDate). Buffers are always
    /// terminated; what does not fit is cut, never inside a character of UTF-8. Null or empty buffers stay as they are.
    void FormatRegional(char* date, std::size_t dateSize, char* timeOfDay, std::size_t timeOfDaySize) const;
    /// "DATE TIME".
    [[nodiscard]] CString FormatRegional() const;
    /// "DATE TIME", each part cut to (size - 1) / 2 bytes.
    void FormatRegional(char* buffer, std::size_t size) const;
    void FormatRegional(CString& date, CString& timeOfDay) const;

    /// 1 when this instant is later than `other`, -1 when earlier, 0 when equal, field by field: of the date (unless
    /// only the time of day counts), of the hour and minute, and of the second unless `toTheMinute`.
    [[nodiscard]] int Compare(const CTimeBase& other, bool timeOfDayOnly = false, bool toTheMinute = false) const;
};

/// The instant of a calendar date and time of day; a date of zeros gives the unset instant.
HALVEX_EXPORT SMjdTime convertToSMjdTime(const SYSTEMTIME& stamp);
