#pragma once

#include <string>

#include "halvex/orbits/ThinEphemeris.h"
#include "halvex/platform/caln/EphemerisGalileo.h"

/// Galileo broadcast ephemeris. It computes no position: azimuth and elevation are placeholders that spread the
/// satellites over the sky by their number. For positions see POS_SAT_CalcSatPosCartesianGal.
class HALVEX_EXPORT CHalvexEphemerisGAL
    : public HalvexThinEphemeris<CHalvexEphemerisGAL, CALN::CALX_SAT_EPHEMERIS_GALILEO> {
public:
    /// Which of the record's times is asked for. 1 and 2 give the clock's.
    enum eREFTIMETYPE : int { eREFTIMETYPE_ORBIT = 0, eREFTIMETYPE_CLOCK_FNAV = 1, eREFTIMETYPE_CLOCK_INAV = 2 };
    static constexpr unsigned kLargestSatId = 36;

    using HalvexThinEphemeris::HalvexThinEphemeris;
    CHalvexEphemerisGAL() = default;
    ~CHalvexEphemerisGAL() override;

    [[nodiscard]] CALN::SCalSatID GetSatID() const override {
        return {CALN::eCALSATSYSTEM_GALILEO, static_cast<unsigned char>(satId - 56U)};
    }
    [[nodiscard]] SMjdTime GetRefTime() const override { return GetRefTimeOrbit(); }
    /// A type that is none raises an assertion and gives the orbit's time.
    [[nodiscard]] SMjdTime GetRefTime(eREFTIMETYPE type) const;
    bool GetAzimuthElevation(const mjd::time& t, const ORBIT_COORD& site, double& azimuth,
                             double& elevation) const override;
    bool GetAzimuthElevation(const ORBIT_COORD& site, double& azimuth, double& elevation) const override;
    [[nodiscard]] double GetEphemerisValidatyTimeframeMinutes() const override {
        return CALN::getEphemerisTimeframeMinutes(CALN::eCALSATSYSTEM_GALILEO);
    }
    /// 1 F/NAV, 2 I/NAV.
    [[nodiscard]] unsigned int GetNavigationType() const override {
        return CALX_SAT_EPHEMERIS_GALILEO::GetNavigationType();
    }
    /// Message, time of page type 1 as MJD and clock reference time, as the user's locale writes it.
    void GetAdditionalInfo(std::string& info) const override;

    [[nodiscard]] bool isReceivedFNav() const { return navType == kFNav; }
    [[nodiscard]] bool isReceivedINav() const { return navType == kINav; }
    [[nodiscard]] bool isReceivedINavE1BOnly() const { return inavReception == kReceivedOnE1B; }
    [[nodiscard]] bool isReceivedINavE5bOnly() const { return inavReception == kReceivedOnE5b; }
};
