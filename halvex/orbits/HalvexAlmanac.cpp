#include "halvex/orbits/HalvexAlmanac.h"

#include <cmath>

#include "halvex/platform/caln/KeplerOrbit.h"
#include "halvex/platform/kernix/ByteCodec.h"
#include "halvex/time/SatelliteTime.h"

CHalvexAlmanac::~CHalvexAlmanac() = default;

template <class Io, class Self>
void CHalvexAlmanac::fields(Io& io, Self& d) {
    io(d.prn);
    io(d.source);
    io(d.toa);
    io(d.health);
    for (auto* value : {&d.m0, &d.e, &d.sqrtA, &d.omega0, &d.i, &d.omega, &d.omegaDot, &d.af0, &d.af1}) io(*value);
    io(d.week);
}

bool CHalvexAlmanac::loadData(const unsigned char* buffer, std::size_t length) {
    if (buffer == nullptr || length < kSavedSize) return false;
    halvex::ByteReader in(buffer, length);
    fields(in, m_data);
    return true;
}

void CHalvexAlmanac::saveData(unsigned char* buffer, std::size_t length) const {
    if (buffer == nullptr || length < kSavedSize) return;
    halvex::ByteWriter out(buffer, length);
    fields(out, m_data);
}

void CHalvexAlmanac::Clear() {
    m_data = Data();
    m_data.source = 255;
}

SMjdTime CHalvexAlmanac::GetRefTime() const {
    return {static_cast<int>(m_data.week & 0x7FFFFFFFU), static_cast<double>(GetRefTimeInGPSSeconds())};
}

bool CHalvexAlmanac::IsValid(const mjd::time& t) const {
    return isNear(t, GetRefTime(), false);
}

bool CHalvexAlmanac::GetAzimuthElevation(const mjd::time& t, const ORBIT_COORD& site, double& azimuth,
                                         double& elevation) const {
    constexpr double kLongest = 168.0 * 3600.0;
    const SMjdTime reference = GetRefTime();
    const double tk = t.GetDifferenceInSeconds(reference);
    if (std::abs(tk) > kLongest) return false;

    // The plain Kepler orbit of IS-GPS-200, 20.3.3.5.2.1; time is not folded into a week.
    constexpr halvex::kepler::Constants kConstants = halvex::kepler::kGps;
    const double a = m_data.sqrtA * m_data.sqrtA;
    const double m = m_data.m0 + std::sqrt(kConstants.gm / (a * a * a)) * tk;
    double anomaly = m;
    for (int step = 0; step < 10; ++step) anomaly = m + m_data.e * std::sin(anomaly);
    const double v = 2.0 * std::atan(std::sqrt((1.0 + m_data.e) / (1.0 - m_data.e)) * std::tan(anomaly / 2.0));
    const double u = v + m_data.omega;
    const double r = a * (1.0 - m_data.e * std::cos(anomaly));
    const double node = m_data.omega0 + (m_data.omegaDot - kConstants.earthRate) * tk -
                        kConstants.earthRate * reference.GetGpsSeconds();
    const double x = r * std::cos(u);
    const double y = r * std::sin(u);
    const ORBIT_COORD satellite{x * std::cos(node) - y * std::sin(node) * std::cos(m_data.i),
                                x * std::sin(node) + y * std::cos(node) * std::cos(m_data.i), y * std::sin(m_data.i)};
    GetElevationAndAzimuth(site, satellite, elevation, azimuth);
    return true;
}

bool CHalvexAlmanac::GetAzimuthElevation(const ORBIT_COORD& site, double& azimuth, double& elevation) const {
    return GetAzimuthElevation(CSatelliteTime(), site, azimuth, elevation);
}

void CHalvexAlmanac::CartesianToGeographic(const ORBIT_COORD& xyz, ORBIT_GEOGRAPHIC& geographic) {
    geographic = halvex::toGeographic(xyz);
}

void CHalvexAlmanac::GetElevationAndAzimuth(const ORBIT_COORD& satellite, const ORBIT_COORD& site,
                                            const ORBIT_GEOGRAPHIC& siteGeographic, double& elevation,
                                            double& azimuth) {
    const auto direction = halvex::LocalFrame(site, siteGeographic).directionTo(satellite);
    elevation = direction.elevation;
    azimuth = direction.azimuth;
}

void CHalvexAlmanac::GetElevationAndAzimuth(ORBIT_COORD site, const ORBIT_COORD& satellite, double& elevation,
                                            double& azimuth) {
    GetElevationAndAzimuth(satellite, site, halvex::toGeographic(site), elevation, azimuth);
}
