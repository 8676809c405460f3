#pragma once

#include "halvex/platform/Export.h"
#include "halvex/time/SystemTime.h"

/// Reception time of data: the process's clock, less its offset from the network's reference clock
/// (TIME::GetDeltaUTCTime), on the UTC scale or, when flagged, on the GPS scale. Instants that are given to a
/// constructor count as raw readings of the clock and are moved by that offset. Leap seconds are those of the process's
/// table. Plain value without locks; saved as its base, without the flag.
class HALVEX_EXPORT CSatelliteTime : public CSystemTime {
public:
    /// Now, UTC.
    CSatelliteTime();
    /// Now, on the GPS scale when `gps`.
    explicit CSatelliteTime(bool gps);
    CSatelliteTime(int week, double seconds);
    CSatelliteTime(int year, int dayOfYear, double secondsOfDay);
    CSatelliteTime(int year, int month, int day, int hour, int minute, double second);
    explicit CSatelliteTime(double mjd);
    explicit CSatelliteTime(const DBTIMESTAMP& stamp);
    /// Without `adjust` the offset is not taken off.
    CSatelliteTime(const DBTIMESTAMP& stamp, bool adjust);
    /// Copies the instant alone: the copy is flagged as UTC.
    CSatelliteTime(const CSatelliteTime& other);
    /// Copies instant and flag.
    CSatelliteTime& operator=(const CSatelliteTime& other) = default;
    /// Takes the instant, as it is; the flag stays.
    CSatelliteTime& operator=(const SMjdTime& instant);
    ~CSatelliteTime() override;

    void getSatelliteTime(DBTIMESTAMP& stamp) const;
    /// "HH:MM:SS".
    void getSatelliteTime(CString& text) const;
    /// MJD, day plus fraction.
    void getSatelliteTime(double& mjd) const;
    /// Local time now, less the offset; this instant does not matter.
    void getLocalSatelliteTime(DBTIMESTAMP& stamp) const;
    void getLocalSatelliteTime(CString& text) const;

    /// Sets the flag, shifts nothing.
    void MarkAsGPSTime(bool gps) { m_isGps = gps; }
    [[nodiscard]] bool IsGPS() const { return m_isGps; }
    /// To the other scale, unless the flag says that the instant is there already.
    void AdjustFromGPSToUTCTime();
    void AdjustFromUTCToGPSTime();

    /// The clock's reading as it is, flagged as UTC.
    void SetToCurrentUTCTime() override;
    /// The clock's reading less the offset, flagged as UTC all the same. For GPS time use CSatelliteTime(true).
    void SetToCurrentGPSTime();
    /// The unset instant, flagged as UTC.
    void Clear();

private:
    void SetToCurrentLocalTime() override;
    void AdjustTime();

    bool m_isGps = false;
};
