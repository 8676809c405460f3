#pragma once

#include <array>
#include <memory>
#include <optional>

#include "halvex/platform/Export.h"
#include "halvex/platform/caln/Frequency.h"
#include "halvex/platform/caln/Lock.h"

namespace CALN {

/// Knows which channel each GLONASS satellite sends on, and with it every carrier's wavelength. Fed by ephemerides (the
/// elevation-azimuth engine does) and by whoever reads the headers of observation files. Any thread.
class HALVEX_EXPORT CCalFrequencyMgr {
public:
    static constexpr int kLowestChannel = -7;  ///< GLONASS ICD 5.1, 3.3.1.1
    static constexpr int kHighestChannel = 13;
    [[nodiscard]] static constexpr bool isChannel(int channel) {
        return channel >= kLowestChannel && channel <= kHighestChannel;
    }

    /// Takes the lock that guards it over; null: one of its own.
    explicit CCalFrequencyMgr(CCalLock* lock);
    virtual ~CCalFrequencyMgr();
    CCalFrequencyMgr(const CCalFrequencyMgr&) = delete;
    CCalFrequencyMgr& operator=(const CCalFrequencyMgr&) = delete;

    /// The process's own.
    static CCalFrequencyMgr& getInstance();

    /// A channel that is none makes the satellite's unknown. What is no GLONASS satellite is left out.
    void setGlonassChannel(const SCalSatID& id, int channel);
    [[nodiscard]] std::optional<int> getGlonassChannel(const SCalSatID& id) const;
    /// Wavelength [m] of a carrier of a satellite; false, leaving it alone, for what is no carrier, and for G1 and G2
    /// of a satellite whose channel is not known.
    bool getWavelength(const SCalSatID& id, eCALFREQUENCY frequency, double& wavelength) const;
    /// Forgets all channels.
    void Clear();

private:
    static constexpr int kUnknown = 127;
    std::unique_ptr<CCalLock> m_lock;
    std::array<int, getMaxSatNumber(eCALSATSYSTEM_GLONASS)> m_channels;
};

/// Tells the process's own frequency manager.
HALVEX_EXPORT void setGlonassChannel(const SCalSatID& id, int channel);

}  // namespace CALN
