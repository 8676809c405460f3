#pragma once

#include <cstddef>
#include <cstdint>

#include "halvex/platform/Export.h"
#include "halvex/platform/kernix/PersistData.h"
#include "halvex/time/SatelliteTime.h"

/// A satellite time with the leap-second values that were in force when it was taken; without any, the built-in
/// defaults. Copies keep the scale flag of the time. Plain value without locks.
///
/// Saved form, 25 bytes: the time (12), int32 LS, int32 LSF, int32 LSF_MJD, uint8 manual. The scale flag is not saved.
class HALVEX_EXPORT CSatelliteTimeAndLeapSeconds : public IPersistData {
public:
    CSatelliteTimeAndLeapSeconds();
    explicit CSatelliteTimeAndLeapSeconds(bool gps);
    CSatelliteTimeAndLeapSeconds(const int& ls, const int& lsf, const int& lsfMjd);
    CSatelliteTimeAndLeapSeconds(const CSatelliteTimeAndLeapSeconds& other);
    CSatelliteTimeAndLeapSeconds& operator=(const CSatelliteTimeAndLeapSeconds&) = default;
    ~CSatelliteTimeAndLeapSeconds() override;

    bool loadData(const unsigned char* buffer, std::size_t size) override;
    void saveData(unsigned char* buffer, std::size_t size) const override;
    [[nodiscard]] std::size_t getSize() const override;

    /// A copy, and as such flagged as UTC.
    [[nodiscard]] CSatelliteTime GetSatTime() const { return m_time; }
    /// The time itself, with its flag.
    [[nodiscard]] const CSatelliteTime& GetSatTimeRef() const { return m_time; }
    void SetSatTime(const CSatelliteTime& time) { m_time = time; }

    [[nodiscard]] int GetLeapSeconds() const { return m_ls; }
    [[nodiscard]] int GetLeapSecondsFuture() const { return m_lsf; }
    [[nodiscard]] int GetLeapSecondsFutureMjd() const { return m_lsfMjd; }
    void SetLeapSecondsData(const int& ls, const int& lsf, const int& lsfMjd);
    /// The values come from an operator's entry.
    void SetLeapSecondsManualSet(bool manual) { m_manual = manual; }
    [[nodiscard]] bool GetLeapSecondsManualSet() const { return m_manual; }

    /// LSF from the start of day LSF_MJD on, before it LS. The process's table changes LS seconds later, and strictly
    /// after that: the two rules differ on purpose.
    [[nodiscard]] int GetLeapSeconds(const SMjdTime& instant) const;

    /// Equal instants and equal values; the scale flag does not count.
    friend bool operator==(const CSatelliteTimeAndLeapSeconds& left, const CSatelliteTimeAndLeapSeconds& right) {
        return left.m_time == right.m_time && left.m_ls == right.m_ls && left.m_lsf == right.m_lsf &&
               left.m_lsfMjd == right.m_lsfMjd && left.m_manual == right.m_manual;
    }

private:
    CSatelliteTime m_time;
    std::int32_t m_ls;
    std::int32_t m_lsf;
    std::int32_t m_lsfMjd;
    bool m_manual = false;
};
