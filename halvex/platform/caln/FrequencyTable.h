#pragma once

#include "halvex/platform/Export.h"
#include "halvex/platform/caln/Frequency.h"
#include "halvex/platform/caln/FrequencyMgr.h"

namespace CALN {

/// Wavelengths, and what combinations of two carriers are made with. Reads the frequency manager that it is built over,
/// which outlives it; any thread.
class HALVEX_EXPORT CCalFrequencyTable {
public:
    explicit CCalFrequencyTable(const CCalFrequencyMgr& manager) : m_manager(&manager) {}

    /// Coefficients of two bands A and B of a system whose carriers have the frequencies fA and fB, as in the network
    /// messages of RTCM 10403.3 (1015 to 1017): geometric (without the ionosphere) fA^2/(fA^2 - fB^2) and
    /// -fB^2/(fA^2 - fB^2), ionospheric (without the geometry) fB^2/(fB^2 - fA^2). BeiDou's carrier near L1 is B1I.
    /// False, leaving them alone, when a band is not one that the system sends on, both are the same, or their ratio
    /// depends on the satellite (GLONASS G3 with G1 or G2).
    [[nodiscard]] bool getIFGFCoeffs(eCALSATSYSTEM system, eCALFREQUENCY_GROUP a, eCALFREQUENCY_GROUP b,
                                     double* ionoCoeff, double* geoCoeffA, double* geoCoeffB) const;
    /// Wavelength [m]; false, leaving it alone, for what is no carrier, and for G1 and G2 of a satellite whose channel
    /// is not known.
    [[nodiscard]] bool getWavelengthValue(const SCalSatID& id, eCALFREQUENCY frequency, double& wavelength) const {
        return m_manager->getWavelength(id, frequency, wavelength);
    }

private:
    const CCalFrequencyMgr* m_manager;
};

/// The table over the process's own frequency manager.
[[nodiscard]] HALVEX_EXPORT const CCalFrequencyTable& getFrequencyTable();

}  // namespace CALN
