#pragma once

#include "halvex/orbits/HalvexOrbitBase.h"

/// Broadcast ephemeris of one satellite.
class HALVEX_EXPORT IHalvexEphemerisBase : public IHalvexOrbitBase {
public:
    ~IHalvexEphemerisBase() override;

    /// Version of the saved form of CHalvexEphemeris.
    static int GetVersionID() { return 14; }

    [[nodiscard]] CALN::eCALEPHEMERISTYPE GetOrbitType() const override { return CALN::eCALEPHEMERISTYPE_EPHEMERIS; }
    /// Length of the time around its reference in which this ephemeris is the one to use [min], for buffers that
    /// choose. IsValid does not ask it.
    [[nodiscard]] virtual double GetEphemerisValidatyTimeframeMinutes() const = 0;
    /// Which of a system's navigation messages it came by; 0 where there is no choice.
    [[nodiscard]] virtual unsigned int GetNavigationType() const;

protected:
    IHalvexEphemerisBase() = default;
    IHalvexEphemerisBase(const IHalvexEphemerisBase&) = default;
    IHalvexEphemerisBase& operator=(const IHalvexEphemerisBase&) = default;
};
