#include "halvex/orbits/HalvexEphemerisGLO.h"

#include <algorithm>
#include <cmath>
#include <typeinfo>

#include "halvex/orbits/HalvexAlmanac.h"
#include "halvex/orbits/HalvexAlmanacGlonass.h"
#include "halvex/orbits/OldVersion.h"
#include "halvex/platform/caln/GlonassMotion.h"
#include "halvex/platform/caln/KeplerOrbit.h"
#include "halvex/platform/os/Thread.h"
#include "halvex/platform/pio/Rtcm3.h"
#include "halvex/time/GPSTime.h"
#include "halvex/time/SatelliteTime.h"

namespace {

namespace glonass = halvex::glonass;

constexpr std::uint8_t kFormat = 32;

}  // namespace

CHalvexEphemerisGLO::~CHalvexEphemerisGLO() = default;

template <class Self, class Use>
void CHalvexEphemerisGLO::numbers(Self& d, Use&& use) {
    for (auto* vector : {&d.position, &d.velocity, &d.acceleration}) {
        for (auto& component : *vector) use(component);
    }
    for (auto* value : {&d.tauN, &d.deltaTauN, &d.gammaN, &d.ageOfData}) use(*value);
}

template <class Io, class Self>
void CHalvexEphemerisGLO::fields(Io& io, Self& d) {
    io(d.slot);
    io(d.source);
    io(d.frequencyNumber);
    io(d.health);
    io(d.dayNumber);
    io(d.frameTime);
    io(d.modification);
    io(d.accuracyIndex);
    io(d.week);
    io(d.milliseconds);
    io(d.referenceSecondsOfDay);
    io(d.tb);
    numbers(d, [&io](auto& value) { io(value); });
    for (auto& word : d.trailing) io(word);
    io(d.flags);
    io(d.iod);
    io(d.crc24);
}

bool CHalvexEphemerisGLO::loadData(const unsigned char* buffer, std::size_t length) {
    halvex::ByteReader in(buffer, length);
    std::uint8_t format = 0;
    in(format);
    if (!in.ok()) return false;
    if (format != kFormat) {  // the oldest form began with the slot number
        halvex::traceOldVersion("CHalvexEphemerisGLO", format);
        return false;
    }
    if (length < kSavedSize) return false;
    std::uint32_t writingThread = 0;
    in(writingThread);
    fields(in, m_data);
    return true;
}

void CHalvexEphemerisGLO::saveData(unsigned char* buffer, std::size_t length) const {
    if (buffer == nullptr || length < kSavedSize) return;
    halvex::ByteWriter out(buffer, length);
    out(kFormat);
    out(os::currentThreadId());
    fields(out, m_data);
}

bool CHalvexEphemerisGLO::IsValid(const mjd::time& t) const {
    return isNear(t, GetRefTime(), false);
}

bool CHalvexEphemerisGLO::GetAzimuthElevation(const mjd::time& t, const ORBIT_COORD& site, double& azimuth,
                                              double& elevation) const {
    ORBIT_COORD satellite;
    if (!CalcSatPosCartesianGlo(t, satellite)) return false;
    CHalvexAlmanac::GetElevationAndAzimuth(site, satellite, elevation, azimuth);
    return true;
}

bool CHalvexEphemerisGLO::GetAzimuthElevation(const ORBIT_COORD& site, double& azimuth, double& elevation) const {
    return GetAzimuthElevation(CSatelliteTime(), site, azimuth, elevation);
}

bool CHalvexEphemerisGLO::CalcSatPosCartesianGlo(mjd::time t, ORBIT_COORD& position) const {
    const double seconds = halvex::kepler::withinHalfWeek(t.GetGpsSeconds() - m_data.milliseconds / 1000.0);
    const auto& [x, y, z] = m_data.position;
    const auto& [vx, vy, vz] = m_data.velocity;
    glonass::State<double> state{x, y, z, vx, vy, vz};
    if (typeid(*this) == typeid(CHalvexEphemerisGLO)) {
        const glonass::Acceleration<double> pull{m_data.acceleration[0], m_data.acceleration[1],
                                                 m_data.acceleration[2]};
        state = glonass::propagate(state, seconds, [&pull](const auto& s) { return glonass::derivative(s, pull); });
    } else {  // a derived class may have equations of its own
        state = glonass::propagate(state, seconds, [this](const glonass::State<double>& s) {
            const double from[6] = {s.x, s.y, s.z, s.vx, s.vy, s.vz};
            double to[6] = {};
            ComputeEquationOfMotion(from, m_data.acceleration.data(), to);
            return glonass::State<double>{to[0], to[1], to[2], to[3], to[4], to[5]};
        });
    }
    position = {state.x, state.y, state.z};
    CHalvexAlmanacGlonass::TransformPZ90ToWGS84(position);
    return true;
}

void CHalvexEphemerisGLO::ComputeEquationOfMotion(const double state[6], const double acceleration[3],
                                                  double derivative[6]) const {
    const auto rates =
        glonass::derivative(glonass::State<double>{state[0], state[1], state[2], state[3], state[4], state[5]},
                            glonass::Acceleration<double>{acceleration[0], acceleration[1], acceleration[2]});
    derivative[0] = rates.x;
    derivative[1] = rates.y;
    derivative[2] = rates.z;
    derivative[3] = rates.vx;
    derivative[4] = rates.vy;
    derivative[5] = rates.vz;
}

bool CHalvexEphemerisGLO::IsDataValid() const {
    return m_data.slot >= 1 && m_data.slot <= 24 && m_data.week < 10000;
}

void CHalvexEphemerisGLO::SetSimulated(bool on) {
    m_data.source = static_cast<std::uint8_t>(on ? m_data.source | CALN::kSimulatedSource
                                                 : m_data.source & ~unsigned{CALN::kSimulatedSource});
}

void CHalvexEphemerisGLO::SetHealth(double health) {
    // What no integer of 64 bits holds is certainly not healthy.
    constexpr double kLargest = 9.2e18;
    const bool fits = std::abs(health) < kLargest;
    m_data.health = fits ? static_cast<std::uint32_t>(static_cast<std::int64_t>(health)) : ~std::uint32_t{0};
}

namespace {

CGPSTime utcOf(const SMjdTime& gps, IGPSLeapSeconds& table) {
    CGPSTime result(gps);
    result.AdjustGPS2UTC(table);
    result.RoundTo(10.0);
    return result;
}

}  // namespace

unsigned short CHalvexEphemerisGLO::GetUTCWeek(IGPSLeapSeconds& table) const {
    return static_cast<unsigned short>(utcOf(GetRefTime(), table).GetGpsWeek());
}

std::uint32_t CHalvexEphemerisGLO::GetUTCMsec(IGPSLeapSeconds& table) const {
    return static_cast<std::uint32_t>(utcOf(GetRefTime(), table).GetGpsSeconds() * 1000.0);
}

bool operator==(const CHalvexEphemerisGLO& left, const CHalvexEphemerisGLO& right) {
    return left.m_data.slot == right.m_data.slot && left.m_data.tb == right.m_data.tb &&
           left.m_data.crc24 == right.m_data.crc24;
}

bool CHalvexEphemerisGLO::EquivalentAll(const CHalvexEphemerisGLO& other) const {
    if (this == &other) return true;
    const Data& a = m_data;
    const Data& b = other.m_data;
    if (a.slot != b.slot || a.source != b.source || a.health != b.health || a.dayNumber != b.dayNumber ||
        a.frameTime != b.frameTime || a.modification != b.modification || a.accuracyIndex != b.accuracyIndex ||
        a.week != b.week || a.milliseconds != b.milliseconds || a.referenceSecondsOfDay != b.referenceSecondsOfDay ||
        a.tb != b.tb || a.trailing != b.trailing) {
        return false;
    }
    std::array<double, 13> there{};
    numbers(b, [at = there.begin()](double value) mutable { *at++ = value; });
    bool same = true;
    numbers(a, [&same, at = there.begin()](double value) mutable {
        const double left = value;
        const double right = *at++;
        const double scale = std::max(std::abs(left), std::abs(right));
        same = same && (left == right || std::abs(left - right) <= 1e-14 * scale);
    });
    return same;
}

bool GenerateNavIdentValues(CHalvexEphemerisGLO& ephemeris) {
    CHalvexEphemerisGLO::Data& d = ephemeris.m_data;
    std::array<unsigned char, 26> bytes{};
    PIO::RTCM3::CBitCollector collector(bytes);

    // Fields as the satellite sends them (GLONASS ICD 5.1, table 4.5): kilometres and sign-magnitude.
    const auto add = [&collector](double value, int exponent, unsigned bits) {
        const double scaled = std::ldexp(value, -exponent);
        const double rounded = std::trunc(scaled + (scaled < 0.0 ? -0.5 : 0.5));
        std::uint32_t coded = 0;
        return std::abs(rounded) < 4294967296.0 &&
               PIO::RTCM3::ConvertIntToIntS(static_cast<std::int64_t>(rounded), bits, coded) &&
               collector.Add(coded, bits);
    };
    const auto addVector = [&add](const std::array<double, 3>& vector, int exponent, unsigned bits) {
        return std::all_of(vector.begin(), vector.end(),
                           [&](double value) { return add(value / 1000.0, exponent, bits); });
    };
    const bool fits = collector.Add(d.tb, 7) && add(d.tauN, -30, 22) && add(d.gammaN, -40, 11) &&
                      addVector(d.position, -11, 27) && addVector(d.velocity, -20, 24) &&
                      addVector(d.acceleration, -30, 5);
    if (fits) d.crc24 = PIO::RTCM3::ComputeCRC24(bytes);
    return fits;
}
