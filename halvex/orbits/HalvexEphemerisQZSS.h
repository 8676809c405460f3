#pragma once

#include "halvex/orbits/ThinEphemeris.h"
#include "halvex/platform/caln/EphemerisGps.h"

/// QZSS broadcast ephemeris.
class HALVEX_EXPORT CHalvexEphemerisQZSS
    : public HalvexThinEphemeris<CHalvexEphemerisQZSS, CALN::CALX_SAT_EPHEMERIS_QZSS> {
public:
    static constexpr unsigned kLargestSatId = 202;  // of the raw numbers, which begin at 193

    using HalvexThinEphemeris::HalvexThinEphemeris;
    CHalvexEphemerisQZSS() = default;
    ~CHalvexEphemerisQZSS() override;

    [[nodiscard]] CALN::SCalSatID GetSatID() const override {
        return {CALN::eCALSATSYSTEM_QZSS, static_cast<unsigned char>(GetSatId1Based())};
    }
    [[nodiscard]] SMjdTime GetRefTime() const override { return GetReferenceTime(); }
    bool GetAzimuthElevation(const mjd::time& t, const ORBIT_COORD& site, double& azimuth,
                             double& elevation) const override;
    bool GetAzimuthElevation(const ORBIT_COORD& site, double& azimuth, double& elevation) const override;
    [[nodiscard]] double GetEphemerisValidatyTimeframeMinutes() const override {
        return CALN::getEphemerisTimeframeMinutes(CALN::eCALSATSYSTEM_QZSS);
    }
};
