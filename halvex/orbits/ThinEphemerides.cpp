#include <array>
#include <numbers>

#include "halvex/orbits/HalvexAlmanac.h"
#include "halvex/orbits/HalvexEphemerisBDS.h"
#include "halvex/orbits/HalvexEphemerisGAL.h"
#include "halvex/orbits/HalvexEphemerisNAVIC.h"
#include "halvex/orbits/HalvexEphemerisQZSS.h"
#include "halvex/platform/caln/SatPosition.h"
#include "halvex/platform/kernix/Assert.h"
#include "halvex/time/GPSTime.h"
#include "halvex/time/SatelliteTime.h"

CHalvexEphemerisGAL::~CHalvexEphemerisGAL() = default;
CHalvexEphemerisBDS::~CHalvexEphemerisBDS() = default;
CHalvexEphemerisQZSS::~CHalvexEphemerisQZSS() = default;
CHalvexEphemerisNAVIC::~CHalvexEphemerisNAVIC() = default;

namespace {

/// Azimuth and elevation from a position routine; false when it has no position.
template <class Record>
bool look(int (*calculate)(const Record&, double, double[3]), const Record& record, const mjd::time& t,
          const ORBIT_COORD& site, double& azimuth, double& elevation) {
    double position[3] = {};
    if (calculate(record, t.GetGpsSeconds(), position) != CALN::kPositionDone) return false;
    CHalvexAlmanac::GetElevationAndAzimuth(site, {position[0], position[1], position[2]}, elevation, azimuth);
    return true;
}

}  // namespace

bool CHalvexEphemerisBDS::GetAzimuthElevation(const mjd::time& t, const ORBIT_COORD& site, double& azimuth,
                                              double& elevation) const {
    return look<CALX_SAT_EPHEMERIS_BEIDOU>(&CALN::POS_SAT_CalcSatPosCartesianBds, *this, t, site, azimuth, elevation);
}

bool CHalvexEphemerisBDS::GetAzimuthElevation(const ORBIT_COORD& site, double& azimuth, double& elevation) const {
    return GetAzimuthElevation(CSatelliteTime(), site, azimuth, elevation);
}

bool CHalvexEphemerisQZSS::GetAzimuthElevation(const mjd::time& t, const ORBIT_COORD& site, double& azimuth,
                                               double& elevation) const {
    return look<CALX_SAT_EPHEMERIS>(&CALN::POS_SAT_CalcSatPosCartesian, *this, t, site, azimuth, elevation);
}

bool CHalvexEphemerisQZSS::GetAzimuthElevation(const ORBIT_COORD& site, double& azimuth, double& elevation) const {
    return GetAzimuthElevation(CSatelliteTime(), site, azimuth, elevation);
}

bool CHalvexEphemerisNAVIC::GetAzimuthElevation(const mjd::time& /*t*/, const ORBIT_COORD& site, double& azimuth,
                                                double& elevation) const {
    CHalvexAlmanac::GetElevationAndAzimuth(site, ORBIT_COORD(), elevation, azimuth);
    return true;
}

bool CHalvexEphemerisNAVIC::GetAzimuthElevation(const ORBIT_COORD& site, double& azimuth, double& elevation) const {
    return GetAzimuthElevation(CSatelliteTime(), site, azimuth, elevation);
}

bool CHalvexEphemerisGAL::GetAzimuthElevation(const mjd::time& /*t*/, const ORBIT_COORD& site, double& azimuth,
                                              double& elevation) const {
    return GetAzimuthElevation(site, azimuth, elevation);
}

bool CHalvexEphemerisGAL::GetAzimuthElevation(const ORBIT_COORD& /*site*/, double& azimuth, double& elevation) const {
    const int satellites = CALN::getMaxSatNumber(CALN::eCALSATSYSTEM_GALILEO);
    azimuth = std::numbers::pi / 2.0 / satellites * GetSatID().number;
    elevation = azimuth;
    return true;
}

SMjdTime CHalvexEphemerisGAL::GetRefTime(eREFTIMETYPE type) const {
    if (type == eREFTIMETYPE_CLOCK_FNAV || type == eREFTIMETYPE_CLOCK_INAV) return GetRefTimeClock();
    SYS_Assert("false", "CHalvexEphemerisGAL::GetRefTime");
    return GetRefTimeOrbit();
}

void CHalvexEphemerisGAL::GetAdditionalInfo(std::string& info) const {
    info = isReceivedFNav() ? "F/NAV " : isReceivedINav() ? "I/NAV " : "NAV UNKNOWN ";
    std::array<char, 256> pageType1{};
    GetPageType1Time().GetAsMJDString(pageType1.data(), pageType1.size());
    info += pageType1.data();
    info += ' ';
    const SMjdTime clock = GetRefTimeClock();
    info += CGPSTime(clock.GetGpsWeek(), clock.GetGpsSeconds()).FormatRegional().str();
}
