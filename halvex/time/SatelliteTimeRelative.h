#pragma once

#include <cstddef>
#include <cstdint>

#include "halvex/platform/Export.h"
#include "halvex/platform/kernix/PersistData.h"
#include "halvex/time/SatelliteTimeAndTickCount.h"

/// A moment as a bare tick count [ms] (os::GetTickCount64), made absolute against a reference that is not later. Not
/// set is 0xFFFFFFFFFFFFFFFF after construction, 0 after unset. Plain value without locks.
///
/// Saved form, 8 bytes: uint64 ticks.
class HALVEX_EXPORT CSatelliteTimeRelative : public IPersistData {
public:
    CSatelliteTimeRelative() = default;
    explicit CSatelliteTimeRelative(std::uint64_t ticks) : m_ticks(ticks) {}
    CSatelliteTimeRelative(const CSatelliteTimeRelative&) = default;
    CSatelliteTimeRelative& operator=(const CSatelliteTimeRelative&) = default;
    ~CSatelliteTimeRelative() override;

    bool loadData(const unsigned char* buffer, std::size_t size) override;
    void saveData(unsigned char* buffer, std::size_t size) const override;
    [[nodiscard]] std::size_t getSize() const override;

    void setToNow();
    void set(std::uint64_t ticks) { m_ticks = ticks; }
    void unset() { m_ticks = 0; }
    [[nodiscard]] bool isSet() const { return m_ticks != 0 && m_ticks != kNeverSet; }

    [[nodiscard]] std::uint64_t getAsAbsoluteTicks() const { return m_ticks; }
    /// Ticks since the reference, 0 when not set. A reference that is later wraps round to a huge number, here and
    /// below.
    [[nodiscard]] std::uint64_t getAsRelativeTicks(const CSatelliteTimeAndTickCount& reference) const;
    /// MJD, day plus fraction. Not set: -1 when it never was, 0 after unset.
    [[nodiscard]] double getAsMjd(const CSatelliteTimeAndTickCount& reference) const;

    friend bool operator==(const CSatelliteTimeRelative& left, const CSatelliteTimeRelative& right) {
        return left.m_ticks == right.m_ticks;
    }

private:
    static constexpr std::uint64_t kNeverSet = ~std::uint64_t{0};
    std::uint64_t m_ticks = kNeverSet;
};
