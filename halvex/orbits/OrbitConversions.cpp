// Between the library's classes and the computation library's records, field by field.

#include <algorithm>
#include <cmath>
#include <concepts>
#include <initializer_list>
#include <limits>

#include "halvex/orbits/HalvexAlmanac.h"
#include "halvex/orbits/HalvexAlmanacGlonass.h"
#include "halvex/orbits/HalvexElevAziCalculator.h"
#include "halvex/orbits/HalvexEphemeris.h"
#include "halvex/orbits/HalvexEphemerisGLO.h"
#include "halvex/orbits/HalvexIonoUtc.h"
#include "halvex/orbits/HalvexTimeInfoGlonass.h"
#include "halvex/platform/pio/Rtcm3.h"

namespace {

template <class Range>
bool areFinite(const Range& values) {
    return std::all_of(values.begin(), values.end(), [](double value) { return std::isfinite(value); });
}
bool areFinite(std::initializer_list<double> values) {
    return std::all_of(values.begin(), values.end(), [](double value) { return std::isfinite(value); });
}

/// A whole number into its field; false for fractions, numbers out of range and what is no number.
template <std::integral T>
bool toField(double value, T& field) {
    if (!(value >= static_cast<double>(std::numeric_limits<T>::min()) &&
          value <= static_cast<double>(std::numeric_limits<T>::max())) ||
        value != std::floor(value)) {
        return false;
    }
    field = static_cast<T>(value);
    return true;
}

/// A number into a field of single precision.
bool toField(double value, float& field) {
    if (!(std::abs(value) <= static_cast<double>(std::numeric_limits<float>::max()))) return false;
    field = static_cast<float>(value);
    return true;
}

/// Sources the library tells apart; the simulated bit travels along.
std::uint8_t knownSource(std::uint8_t source) {
    const unsigned code = source & 0x7FU;
    return static_cast<std::uint8_t>((code >= 1 && code <= 3 ? code : 0U) | (source & CALN::kSimulatedSource));
}

}  // namespace

bool convertGPSEphemeris(const CHalvexEphemeris& from, CALN::CALX_SAT_EPHEMERIS& to) {
    const CHalvexEphemeris::Data& d = from.m_data;
    if (!areFinite({d.ura,   d.tgd,      d.m0,   d.deltaN, d.e,          d.sqrtA,     d.omega0, d.i0,
                    d.omega, d.omegaDot, d.idot, d.cuc,    d.cus,        d.crc,       d.crs,    d.cic,
                    d.cis,   d.af0,      d.af1,  d.af2,    d.delayTerm1, d.delayTerm2})) {
        return false;
    }
    CALN::CALX_SAT_EPHEMERIS r;
    r.satId = d.prn;
    r.source = d.source;
    r.health = d.health;
    r.week = d.week;
    r.ura = d.ura;
    r.codeOnL2 = d.words[CHalvexEphemeris::kCodeOnL2];
    r.uraIndex = d.words[CHalvexEphemeris::kUraIndex];
    r.l2pDataFlag = d.words[CHalvexEphemeris::kL2PDataFlag];
    r.aodo = d.words[CHalvexEphemeris::kAodo];
    r.fitIntervalFlag = d.words[CHalvexEphemeris::kFitIntervalFlag];
    r.iodc = d.words[CHalvexEphemeris::kIodc];
    r.tgd = d.tgd;
    r.m0 = d.m0;
    r.deltaN = d.deltaN;
    r.e = d.e;
    r.sqrtA = d.sqrtA;
    r.omega0 = d.omega0;
    r.i0 = d.i0;
    r.omega = d.omega;
    r.omegaDot = d.omegaDot;
    r.idot = d.idot;
    r.cuc = d.cuc;
    r.cus = d.cus;
    r.crc = d.crc;
    r.crs = d.crs;
    r.cic = d.cic;
    r.cis = d.cis;
    r.toe = d.toe;
    r.toc = d.toc;
    r.af0 = d.af0;
    r.af1 = d.af1;
    r.af2 = d.af2;
    r.delayTerm1 = d.delayTerm1;
    r.delayTerm2 = d.delayTerm2;
    to = r;
    return true;
}

bool convertGPSEphemeris(const CALN::CALX_SAT_EPHEMERIS& r, CHalvexEphemeris& to) {
    if (r.messageType != CALN::eCALGPSMESSAGE_LNAV || r.aDot != 0.0 || r.deltaNDot != 0.0) return false;
    if (!areFinite({r.ura, r.m0, r.deltaN, r.e, r.sqrtA, r.omega0, r.i0, r.omega, r.omegaDot, r.idot, r.delayTerm1,
                    r.delayTerm2})) {
        return false;
    }
    CHalvexEphemeris::Data d;
    const bool fits = toField(r.tgd, d.tgd) && toField(r.cuc, d.cuc) && toField(r.cus, d.cus) &&
                      toField(r.crc, d.crc) && toField(r.crs, d.crs) && toField(r.cic, d.cic) &&
                      toField(r.cis, d.cis) && toField(r.toe, d.toe) && toField(r.toc, d.toc) &&
                      toField(r.af0, d.af0) && toField(r.af1, d.af1) && toField(r.af2, d.af2);
    if (!fits) return false;
    d.prn = r.satId;
    d.source = knownSource(r.source);
    d.health = r.health;
    d.week = r.week;
    d.ura = r.ura;
    d.words = {r.codeOnL2, r.uraIndex, r.l2pDataFlag, r.aodo, r.fitIntervalFlag, r.iodc};
    d.m0 = r.m0;
    d.deltaN = r.deltaN;
    d.e = r.e;
    d.sqrtA = r.sqrtA;
    d.omega0 = r.omega0;
    d.i0 = r.i0;
    d.omega = r.omega;
    d.omegaDot = r.omegaDot;
    d.idot = r.idot;
    d.delayTerm1 = r.delayTerm1;
    d.delayTerm2 = r.delayTerm2;
    to.m_data = d;
    return true;
}

bool convertGLOEphemeris(const CHalvexEphemerisGLO& from, CALN::CALX_SAT_EPHEMERIS_GLONASS& to) {
    const CHalvexEphemerisGLO::Data& d = from.m_data;
    CALN::CALX_SAT_EPHEMERIS_GLONASS r;
    if (!areFinite(d.position) || !areFinite(d.velocity) || !areFinite(d.acceleration) ||
        !areFinite({d.tauN, d.deltaTauN, d.gammaN}) || !toField(d.ageOfData, r.ageOfData) || !toField(d.tb, r.tb)) {
        return false;
    }
    r.satId = d.slot;
    r.source = d.source;
    r.week = d.week;
    r.referenceSeconds = d.milliseconds / 1000.0;
    r.position = d.position;
    r.velocity = d.velocity;
    r.acceleration = d.acceleration;
    r.tauN = d.tauN;
    r.deltaTauN = d.deltaTauN;
    r.gammaN = d.gammaN;
    r.health = d.health;
    r.frequencyNumber = d.frequencyNumber;
    r.dayNumber = d.dayNumber;
    r.frameTime = d.frameTime;
    r.modification = d.modification;
    r.accuracyIndex = d.accuracyIndex;
    r.referenceSecondsOfDay = d.referenceSecondsOfDay;
    r.fourYearInterval = d.trailing[0];
    r.controlFlags = d.trailing[1];
    r.healthFlags = d.trailing[2];
    r.recordFlags = d.flags;
    to = r;
    return true;
}

bool convertGLOEphemeris(const CALN::CALX_SAT_EPHEMERIS_GLONASS& r, CHalvexEphemerisGLO& to) {
    CHalvexEphemerisGLO result;
    CHalvexEphemerisGLO::Data& d = result.m_data;
    if (!areFinite(r.position) || !areFinite(r.velocity) || !areFinite(r.acceleration) ||
        !areFinite({r.tauN, r.deltaTauN, r.gammaN, r.referenceSeconds}) ||
        !toField(std::round(r.referenceSeconds * 1000.0), d.milliseconds)) {
        return false;
    }
    d.slot = r.satId;
    d.source = knownSource(r.source);
    d.health = r.health;
    d.dayNumber = r.dayNumber;
    d.frameTime = r.frameTime;
    d.modification = r.modification;
    d.accuracyIndex = r.accuracyIndex;
    d.week = r.week;
    d.referenceSecondsOfDay = r.referenceSecondsOfDay;
    d.tb = r.tb;
    d.position = r.position;
    d.velocity = r.velocity;
    d.acceleration = r.acceleration;
    d.tauN = r.tauN;
    d.deltaTauN = r.deltaTauN;
    d.gammaN = r.gammaN;
    d.ageOfData = r.ageOfData;
    d.trailing = {r.fourYearInterval, r.controlFlags, r.healthFlags};
    d.iod = PIO::RTCM3::generateGLONASSIOD(r.tb);
    d.frequencyNumber = r.frequencyNumber;
    d.flags = r.recordFlags;
    if (!GenerateNavIdentValues(result)) return false;
    to = result;
    return true;
}

bool convertGPSAlmanac(const CHalvexAlmanac& from, CALN::CALX_SAT_ALMANAC& to) {
    const CHalvexAlmanac::Data& d = from.m_data;
    CALN::CALX_SAT_ALMANAC r;
    if (!areFinite({d.m0, d.e, d.sqrtA, d.omega0, d.i, d.omega, d.omegaDot, d.af0, d.af1}) ||
        !toField(d.week, r.week)) {
        return false;
    }
    r.satId = d.prn;
    r.source = d.source;
    r.toa = from.GetRefTimeInGPSSeconds();
    r.health = d.health;
    r.m0 = d.m0;
    r.e = d.e;
    r.sqrtA = d.sqrtA;
    r.omega0 = d.omega0;
    r.i = d.i;
    r.omega = d.omega;
    r.omegaDot = d.omegaDot;
    r.af0 = d.af0;
    r.af1 = d.af1;
    to = r;
    return true;
}

bool convertGPSAlmanac(const CALN::CALX_SAT_ALMANAC& r, CHalvexAlmanac& to) {
    CHalvexAlmanac::Data d;
    if (!areFinite({r.m0, r.e, r.sqrtA, r.omega0, r.i, r.omega, r.omegaDot, r.af0, r.af1}) ||
        !toField(r.toa / 4096.0, d.toa)) {
        return false;
    }
    d.prn = r.satId;
    d.source = r.source;
    d.health = r.health;
    d.m0 = r.m0;
    d.e = r.e;
    d.sqrtA = r.sqrtA;
    d.omega0 = r.omega0;
    d.i = r.i;
    d.omega = r.omega;
    d.omegaDot = r.omegaDot;
    d.af0 = r.af0;
    d.af1 = r.af1;
    d.week = r.week;
    to.m_data = d;
    return true;
}

bool convertGLOAlmanac(const CHalvexAlmanacGlonass& from, CALN::CALX_SAT_ALMANAC_GLONASS& to) {
    const CHalvexAlmanacGlonass::Data& d = from.m_data;
    if (!areFinite({d.tauN, d.lambda, d.deltaI, d.e, d.omega, d.deltaT, d.deltaTDot, d.tauC})) return false;
    CALN::CALX_SAT_ALMANAC_GLONASS r;
    r.satId = d.slot;
    r.source = d.source;
    r.week = d.week;
    r.dayNumber = d.dayNumber;
    r.fourYearInterval = d.fourYearInterval;
    r.modification = d.modification;
    r.channel = d.channel;
    r.controlFlags = d.controlFlags;
    r.referenceMilliseconds = d.milliseconds;
    r.nodeSecondsOfDay = d.nodeSecondsOfDay;
    r.health = d.health;
    r.tauN = d.tauN;
    r.lambda = d.lambda;
    r.deltaI = d.deltaI;
    r.e = d.e;
    r.omega = d.omega;
    r.deltaT = d.deltaT;
    r.deltaTDot = d.deltaTDot;
    r.tauC = d.tauC;
    to = r;
    return true;
}

bool convertGLOAlmanac(const CALN::CALX_SAT_ALMANAC_GLONASS& r, CHalvexAlmanacGlonass& to) {
    if (!areFinite({r.tauN, r.lambda, r.deltaI, r.e, r.omega, r.deltaT, r.deltaTDot, r.tauC})) return false;
    CHalvexAlmanacGlonass::Data d;
    d.slot = r.satId;
    d.source = r.source;
    d.week = r.week;
    d.dayNumber = r.dayNumber;
    d.fourYearInterval = r.fourYearInterval;
    d.modification = r.modification;
    d.channel = r.channel;
    d.controlFlags = r.controlFlags;
    d.milliseconds = r.referenceMilliseconds;
    d.nodeSecondsOfDay = r.nodeSecondsOfDay;
    d.health = r.health;
    d.tauN = r.tauN;
    d.lambda = r.lambda;
    d.deltaI = r.deltaI;
    d.e = r.e;
    d.omega = r.omega;
    d.deltaT = r.deltaT;
    d.deltaTDot = r.deltaTDot;
    d.tauC = r.tauC;
    to.m_data = d;
    return true;
}

bool convertIonoUTC(const CHalvexIonoUtc& from, CALN::CALX_IONO_UTC& to) {
    const CHalvexIonoUtc::Data& d = from.m_data;
    CALN::CALX_IONO_UTC r;
    if (!areFinite(d.alpha) || !areFinite(d.beta) || !areFinite({d.a0, d.a1})) return false;
    if (d.source < CHalvexIonoUtc::kNoSource || d.source >= CALN::kSimulatedSource) return false;
    r.source = d.source == CHalvexIonoUtc::kSimulatedSource  ? CALN::kSimulatedSource
               : d.source == CHalvexIonoUtc::kReceiverSource ? static_cast<std::uint8_t>(CALN::eCALORBITSOURCE_RECEIVER)
               : d.source == CHalvexIonoUtc::kNoSource       ? std::uint8_t{0}
                                                             : static_cast<std::uint8_t>(d.source);
    r.alpha = d.alpha;
    r.beta = d.beta;
    r.a0 = d.a0;
    r.a1 = d.a1;
    r.wnt = d.wnt;
    r.tot = d.tot;
    r.word1 = d.word1;
    r.word2 = d.word2;
    r.deltaTls = d.deltaTls;
    r.deltaTlsf = d.deltaTlsf;
    r.wnLsf = d.wnLsf;
    r.dn = d.dn;
    to = r;
    return true;
}

bool convertIonoUTC(const CALN::CALX_IONO_UTC& r, CHalvexIonoUtc& to) {
    if (!areFinite(r.alpha) || !areFinite(r.beta) || !areFinite({r.a0, r.a1})) return false;
    CHalvexIonoUtc::Data d;
    d.source = r.source == CALN::eCALORBITSOURCE_NONE       ? CHalvexIonoUtc::kNoSource
               : r.source == CALN::eCALORBITSOURCE_RECEIVER ? CHalvexIonoUtc::kReceiverSource
               : (r.source & CALN::kSimulatedSource) != 0   ? CHalvexIonoUtc::kSimulatedSource
                                                            : std::int32_t{r.source};
    d.alpha = r.alpha;
    d.beta = r.beta;
    d.a0 = r.a0;
    d.a1 = r.a1;
    d.wnt = r.wnt;
    d.tot = r.tot;
    d.word1 = r.word1;
    d.word2 = r.word2;
    d.deltaTls = r.deltaTls;
    d.deltaTlsf = r.deltaTlsf;
    d.wnLsf = r.wnLsf;
    d.dn = r.dn;
    to.m_data = d;
    return true;
}

bool convertGLOClkInfo(const CHalvexTimeInfoGlonass& from, CALN::CALX_CLOCK_GLONASS& to) {
    const CHalvexTimeInfoGlonass::Data& d = from.m_data;
    if (!areFinite({d.tauC, d.tauGps, d.b1, d.b2})) return false;
    CALN::CALX_CLOCK_GLONASS r;
    r.available = from.IsAvailable();
    r.dayNumber = d.dayNumber;
    r.frameTime = d.frameTime;
    r.fourYearInterval = d.bytes[CHalvexTimeInfoGlonass::kFourYearInterval];
    r.leapNotice = d.bytes[CHalvexTimeInfoGlonass::kLeapNotice];
    r.source = d.bytes[CHalvexTimeInfoGlonass::kSource];
    r.slot = d.bytes[CHalvexTimeInfoGlonass::kSlot];
    r.almanacDay = d.almanacDay;
    r.tauC = d.tauC;
    r.tauGps = d.tauGps;
    r.b1 = d.b1;
    r.b2 = d.b2;
    to = r;
    return true;
}

bool convertGLOClkInfo(const CALN::CALX_CLOCK_GLONASS& r, CHalvexTimeInfoGlonass& to) {
    if (!areFinite({r.tauC, r.tauGps, r.b1, r.b2})) return false;
    CHalvexTimeInfoGlonass::Data d;
    d.dayNumber = r.dayNumber;
    d.frameTime = r.frameTime;
    d.bytes = {r.fourYearInterval, static_cast<std::uint8_t>(r.available ? CHalvexTimeInfoGlonass::kFilled : 0),
               r.leapNotice, r.source, r.slot};
    d.almanacDay = r.almanacDay;
    d.tauC = r.tauC;
    d.tauGps = r.tauGps;
    d.b1 = r.b1;
    d.b2 = r.b2;
    to.m_data = d;
    return true;
}

bool convertCoords(const CGeoCoord& from, CALN::SCalCoordinateSet& to) {
    if (!areFinite({from.GetLatitude(), from.GetLongitude(), from.GetHeight()}) ||
        std::abs(from.GetLatitude()) > 1.5707963267948968) {
        return false;
    }
    to.geographic = {from.GetLatitude(), from.GetLongitude(), from.GetHeight()};
    to.cartesian = halvex::toCartesian(to.geographic);
    return true;
}
