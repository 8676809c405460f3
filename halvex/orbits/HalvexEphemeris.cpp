#include "halvex/orbits/HalvexEphemeris.h"

#include <cmath>

#include "halvex/orbits/HalvexAlmanac.h"
#include "halvex/orbits/OldVersion.h"
#include "halvex/platform/caln/KeplerOrbit.h"
#include "halvex/platform/os/Thread.h"
#include "halvex/time/GPSTime.h"
#include "halvex/time/SatelliteTime.h"

namespace {

namespace kepler = halvex::kepler;

/// NaN lies nowhere.
bool within(double value, double bound) {
    return value >= -bound && value <= bound;
}

}  // namespace

CHalvexEphemeris::~CHalvexEphemeris() = default;

template <class Io, class Self>
void CHalvexEphemeris::fields(Io& io, Self& d) {
    io(d.prn);
    io(d.source);
    io(d.health);
    io(d.week);
    io(d.ura);
    for (auto& word : d.words) io(word);
    io(d.tgd);
    for (auto* value : {&d.m0, &d.deltaN, &d.e, &d.sqrtA, &d.omega0, &d.i0, &d.omega, &d.omegaDot, &d.idot}) {
        io(*value);
    }
    for (auto* value : {&d.cuc, &d.cus, &d.crc, &d.crs, &d.cic, &d.cis}) io(*value);
    io(d.toe);
    io(d.toc);
    for (auto* value : {&d.af0, &d.af1, &d.af2}) io(*value);
    io(d.delayTerm1);
    io(d.delayTerm2);
}

bool CHalvexEphemeris::loadData(const unsigned char* buffer, std::size_t length) {
    halvex::ByteReader in(buffer, length);
    std::uint16_t version = 0;
    in(version);
    if (!in.ok()) return false;
    if (version != GetVersionID()) {
        halvex::traceOldVersion("CHalvexEphemeris", version);
        return false;
    }
    if (length < kSavedSize) return false;
    std::uint32_t writingThread = 0;
    in(writingThread);
    fields(in, m_data);
    return true;
}

void CHalvexEphemeris::saveData(unsigned char* buffer, std::size_t length) const {
    if (buffer == nullptr || length < kSavedSize) return;
    halvex::ByteWriter out(buffer, length);
    out(static_cast<std::uint16_t>(GetVersionID()));
    out(os::currentThreadId());
    fields(out, m_data);
}

bool CHalvexEphemeris::IsValid(const mjd::time& t) const {
    const CGPSTime reference(int{m_data.week}, static_cast<double>(m_data.toe));
    return isNear(t, reference, false);
}

bool CHalvexEphemeris::GetAzimuthElevation(const mjd::time& t, const ORBIT_COORD& site, double& azimuth,
                                           double& elevation) const {
    ORBIT_COORD satellite;
    if (!CalcSatPosCartesian(t.GetGpsSeconds(), satellite)) return false;
    CHalvexAlmanac::GetElevationAndAzimuth(site, satellite, elevation, azimuth);
    return true;
}

bool CHalvexEphemeris::GetAzimuthElevation(const ORBIT_COORD& site, double& azimuth, double& elevation) const {
    return GetAzimuthElevation(CSatelliteTime(), site, azimuth, elevation);
}

bool CHalvexEphemeris::IsDataValid() {
    if (m_data.prn < 1 || m_data.prn > 32 || m_data.week >= 10000) return false;
    // The bound of the eccentricity is as wide as those of the angles on purpose.
    if (!within(m_data.m0, 10.0) || !within(m_data.deltaN, 1e-6) || !within(m_data.e, 10.0)) return false;
    if (!(m_data.sqrtA >= 4500.0 && m_data.sqrtA <= 6000.0)) return false;
    if (!within(m_data.i0, 10.0) || !within(m_data.omegaDot, 1e-6)) return false;
    if (!within(m_data.cuc, 0.001) || !within(m_data.cus, 0.001) || !(m_data.crs >= -1000.0F && m_data.crs <= 1000.0F))
        return false;
    if (m_data.toe >= 604801) return false;
    if (!within(m_data.af0, 0.01) || !within(m_data.af1, 1e-6) || !within(m_data.af2, 1e-9)) return false;
    return within(m_data.delayTerm1, 1e-9) && within(m_data.delayTerm2, 1e-9);
}

bool CHalvexEphemeris::CalcSatPosCartesian(double gpsSecondsOfWeek, ORBIT_COORD& position) const {
    if (m_data.sqrtA * m_data.sqrtA < kepler::kSmallestSemiMajorAxis) return false;
    const double tk = kepler::withinHalfWeek(gpsSecondsOfWeek - m_data.toe);
    const auto [x, y, z] = kepler::position(kepler::elementsOf(m_data, kepler::kGps), tk);
    position = {x, y, z};
    return true;
}

bool CHalvexEphemeris::MustOlderEphemerisBeUsed(const SMjdTime& newer, const SMjdTime& older) {
    const double minutes = (static_cast<double>(newer.GetMjdDay()) - older.GetMjdDay()) * 1440.0 +
                           (newer.GetMjdFractMilliseconds() - older.GetMjdFractMilliseconds()) / 60000.0;
    return std::abs(minutes) < 1.0 && minutes > 0.0;
}

bool CHalvexEphemeris::MustOlderEphemerisBeUsed(const CHalvexEphemeris& other) {
    return MustOlderEphemerisBeUsed(GetRefTime(), other.GetRefTime());
}

bool CHalvexEphemeris::Equivalent(double a, double b, int exponent) {
    const double difference = a - b;
    return difference == 0.0 || std::abs(difference) < std::ldexp(1.0, exponent);
}

bool CHalvexEphemeris::Equivalent(const CHalvexEphemeris& other) const {
    if (m_data.prn != other.m_data.prn || m_data.source != other.m_data.source) return false;
    if ((m_data.health == 0) != (other.m_data.health == 0) || m_data.week != other.m_data.week) return false;
    if (!Equivalent(m_data.ura, other.m_data.ura, 4)) return false;
    for (unsigned word = 0; word < kWords; ++word) {
        if (word != kAodo && m_data.words[word] != other.m_data.words[word]) return false;
    }
    // The exponents are the last bits of the message's fields (IS-GPS-200, tables 20-I and 20-III), applied to the
    // values as they are stored.
    struct Row {
        double here, there;
        int exponent;
    };
    const Row rows[] = {
        {m_data.tgd, other.m_data.tgd, -31},
        {m_data.m0, other.m_data.m0, -31},
        {m_data.deltaN, other.m_data.deltaN, -43},
        {m_data.e, other.m_data.e, -33},
        {m_data.sqrtA, other.m_data.sqrtA, -19},
        {m_data.omega0, other.m_data.omega0, -31},
        {m_data.i0, other.m_data.i0, -31},
        {m_data.omega, other.m_data.omega, -31},
        {m_data.omegaDot, other.m_data.omegaDot, -43},
        {m_data.idot, other.m_data.idot, -43},
        {m_data.cuc, other.m_data.cuc, -29},
        {m_data.cus, other.m_data.cus, -29},
        {m_data.crc, other.m_data.crc, -5},
        {m_data.crs, other.m_data.crs, -5},
        {m_data.cic, other.m_data.cic, -29},
        {m_data.cis, other.m_data.cis, -29},
        {static_cast<double>(m_data.toe), static_cast<double>(other.m_data.toe), 0},
        {static_cast<double>(m_data.toc), static_cast<double>(other.m_data.toc), 4},
        {m_data.af0, other.m_data.af0, -31},
        {m_data.af1, other.m_data.af1, -43},
        {m_data.af2, other.m_data.af2, -55},
    };
    for (const Row& row : rows) {
        if (!Equivalent(row.here, row.there, row.exponent)) return false;
    }
    return true;
}

bool CHalvexEphemeris::IsBiggerIODE(unsigned short a, unsigned short b) {
    return a > b || b - a > 200;
}

double CHalvexEphemeris::GetSvAccuracy(unsigned short uraIndex) {
    if (uraIndex == 15) return 15.0;
    if (uraIndex > 16) return 0.0;  // of ten times such a power of two the 16 bits that are kept are all 0
    const double metres = uraIndex <= 6 ? std::exp2(1.0 + uraIndex / 2.0) : std::exp2(uraIndex - 2.0);
    return static_cast<std::uint16_t>(static_cast<std::uint32_t>(metres * 10.0 + 0.5)) / 10.0;
}
