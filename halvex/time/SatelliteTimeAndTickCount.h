#pragma once

#include <cstddef>
#include <cstdint>

#include "halvex/platform/Export.h"
#include "halvex/platform/kernix/PersistData.h"
#include "halvex/time/SatelliteTime.h"

/// A satellite time and the monotonic tick count [ms] of the same moment (os::GetTickCount64), so that later moments
/// can be timed without the wall clock. Plain value without locks.
///
/// Saved form, 20 bytes: the time (12), uint64 ticks. The scale flag is not saved.
class HALVEX_EXPORT CSatelliteTimeAndTickCount : public IPersistData {
public:
    /// Now, UTC.
    CSatelliteTimeAndTickCount();
    /// Now, on the GPS scale when `gps`.
    explicit CSatelliteTimeAndTickCount(bool gps);
    /// The instant of `time`, flagged as UTC.
    CSatelliteTimeAndTickCount(const CSatelliteTime& time, std::uint64_t ticks);
    /// Copies instant, flag and ticks.
    CSatelliteTimeAndTickCount(const CSatelliteTimeAndTickCount& other);
    CSatelliteTimeAndTickCount& operator=(const CSatelliteTimeAndTickCount&) = default;
    ~CSatelliteTimeAndTickCount() override;

    bool loadData(const unsigned char* buffer, std::size_t size) override;
    void saveData(unsigned char* buffer, std::size_t size) const override;
    [[nodiscard]] std::size_t getSize() const override;

    /// Now, UTC.
    void setToUtcNow();
    /// Instant and flag of `time`.
    void set(const CSatelliteTime& time, std::uint64_t ticks);
    /// Moves both; the ticks by `seconds` to the nearest millisecond when positive, by
    /// the integer part of seconds * 1000 + 0.5 in any case.
    void addSeconds(double seconds);

    [[nodiscard]] std::uint64_t getAsAbsoluteTicks() const { return m_ticks; }
    /// MJD, day plus fraction.
    [[nodiscard]] double getAsMjd() const { return m_time.GetAsMjd(); }
    /// The time itself, with its flag.
    [[nodiscard]] const CSatelliteTime& GetSatTimeRef() const { return m_time; }

    /// Equal instants and equal ticks; the scale flag does not count.
    friend bool operator==(const CSatelliteTimeAndTickCount& left, const CSatelliteTimeAndTickCount& right) {
        return left.m_time == right.m_time && left.m_ticks == right.m_ticks;
    }

private:
    CSatelliteTime m_time;
    std::uint64_t m_ticks;
};
