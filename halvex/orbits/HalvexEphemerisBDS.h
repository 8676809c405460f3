#pragma once

#include "halvex/orbits/ThinEphemeris.h"
#include "halvex/platform/caln/EphemerisBeidou.h"

/// BeiDou broadcast ephemeris.
class HALVEX_EXPORT CHalvexEphemerisBDS
    : public HalvexThinEphemeris<CHalvexEphemerisBDS, CALN::CALX_SAT_EPHEMERIS_BEIDOU> {
public:
    static constexpr unsigned kLargestSatId = 63;

    using HalvexThinEphemeris::HalvexThinEphemeris;
    CHalvexEphemerisBDS() = default;
    ~CHalvexEphemerisBDS() override;

    [[nodiscard]] CALN::SCalSatID GetSatID() const override {
        return {CALN::eCALSATSYSTEM_BEIDOU, static_cast<unsigned char>(GetSatId())};
    }
    [[nodiscard]] SMjdTime GetRefTime() const override { return GetReferenceTime(); }
    bool GetAzimuthElevation(const mjd::time& t, const ORBIT_COORD& site, double& azimuth,
                             double& elevation) const override;
    bool GetAzimuthElevation(const ORBIT_COORD& site, double& azimuth, double& elevation) const override;
    [[nodiscard]] double GetEphemerisValidatyTimeframeMinutes() const override {
        return CALN::getEphemerisTimeframeMinutes(CALN::eCALSATSYSTEM_BEIDOU);
    }
};
