#pragma once

#include "halvex/orbits/ThinEphemeris.h"
#include "halvex/platform/caln/EphemerisNavic.h"

/// NavIC broadcast ephemeris. It computes no position: azimuth and elevation are those of the Earth's centre and must
/// not be relied on. For positions see POS_SAT_CalcSatPosCartesianNavic.
class HALVEX_EXPORT CHalvexEphemerisNAVIC
    : public HalvexThinEphemeris<CHalvexEphemerisNAVIC, CALN::CALX_SAT_EPHEMERIS_NAVIC> {
public:
    static constexpr unsigned kLargestSatId = 7;

    using HalvexThinEphemeris::HalvexThinEphemeris;
    CHalvexEphemerisNAVIC() = default;
    ~CHalvexEphemerisNAVIC() override;

    [[nodiscard]] CALN::SCalSatID GetSatID() const override {
        return {CALN::eCALSATSYSTEM_NAVIC, static_cast<unsigned char>(GetSatId1Based())};
    }
    [[nodiscard]] SMjdTime GetRefTime() const override { return GetReferenceTime(); }
    bool GetAzimuthElevation(const mjd::time& t, const ORBIT_COORD& site, double& azimuth,
                             double& elevation) const override;
    bool GetAzimuthElevation(const ORBIT_COORD& site, double& azimuth, double& elevation) const override;
    [[nodiscard]] double GetEphemerisValidatyTimeframeMinutes() const override {
        return CALN::getEphemerisTimeframeMinutes(CALN::eCALSATSYSTEM_NAVIC);
    }
};
