#include "halvex/orbits/HalvexAlmanacGlonass.h"

#include <cmath>

#include "halvex/orbits/HalvexAlmanac.h"
#include "halvex/platform/caln/GlonassAlmanac.h"
#include "halvex/platform/caln/SatPosition.h"
#include "halvex/platform/kernix/ByteCodec.h"
#include "halvex/time/SatelliteTime.h"

CHalvexAlmanacGlonass::~CHalvexAlmanacGlonass() = default;

template <class Io, class Self>
void CHalvexAlmanacGlonass::fields(Io& io, Self& d) {
    io(d.slot);
    io(d.dayNumber);
    io(d.fourYearInterval);
    io(d.modification);
    io(d.channel);
    io(d.controlFlags);
    io(d.week);
    io(d.milliseconds);
    io(d.nodeSecondsOfDay);
    io(d.source);
    io(d.health);
    for (auto* value : {&d.tauN, &d.lambda, &d.deltaI, &d.e, &d.omega, &d.deltaT, &d.deltaTDot, &d.tauC}) io(*value);
}

bool CHalvexAlmanacGlonass::loadData(const unsigned char* buffer, std::size_t length) {
    if (buffer == nullptr || length < kSavedSize) return false;
    halvex::ByteReader in(buffer, length);
    fields(in, m_data);
    return true;
}

void CHalvexAlmanacGlonass::saveData(unsigned char* buffer, std::size_t length) const {
    if (buffer == nullptr || length < kSavedSize) return;
    halvex::ByteWriter out(buffer, length);
    fields(out, m_data);
}

bool CHalvexAlmanacGlonass::IsValid(const mjd::time& t) const {
    if (m_data.slot < 1 || m_data.slot > 24) return false;
    return isNear(t, GetRefTime(), false);
}

bool CHalvexAlmanacGlonass::GetSatelliteCoordinates(const mjd::time& t, ORBIT_COORD& position) const {
    position = halvex::glonass::almanacPosition({m_data.lambda, m_data.deltaI, m_data.e, m_data.omega, m_data.deltaT},
                                                t.GetDifferenceInSeconds(GetRefTime()));
    return true;
}

bool CHalvexAlmanacGlonass::GetAzimuthElevation(const mjd::time& t, const ORBIT_COORD& site, double& azimuth,
                                                double& elevation) const {
    ORBIT_COORD satellite;
    if (!GetSatelliteCoordinates(t, satellite)) return false;
    CHalvexAlmanac::GetElevationAndAzimuth(site, satellite, elevation, azimuth);
    return true;
}

bool CHalvexAlmanacGlonass::GetAzimuthElevation(const ORBIT_COORD& site, double& azimuth, double& elevation) const {
    return GetAzimuthElevation(CSatelliteTime(), site, azimuth, elevation);
}

void CHalvexAlmanacGlonass::TransformPZ90ToWGS84(ORBIT_COORD& xyz) {
    halvex::transformPZ90ToWGS84(xyz);
}
