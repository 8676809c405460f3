// Between the library's classes and the computation library's records. One list of pairs of fields for each of them
// serves both directions.

#include <cmath>
#include <concepts>
#include <limits>
#include <type_traits>

#include "halvex/orbits/HalvexAlmanac.h"
#include "halvex/orbits/HalvexAlmanacGlonass.h"
#include "halvex/orbits/HalvexElevAziCalculator.h"
#include "halvex/orbits/HalvexEphemeris.h"
#include "halvex/orbits/HalvexEphemerisGLO.h"
#include "halvex/orbits/HalvexIonoUtc.h"
#include "halvex/orbits/HalvexTimeInfoGlonass.h"
#include "halvex/platform/pio/Rtcm3.h"

namespace {

/// A number into a field; false when it is not finite, or the field cannot hold it as it is (singles round).
template <class From, class To>
requires std::is_arithmetic_v<From> && std::is_arithmetic_v<To>
bool take(From from, To& to) {
    if constexpr (std::floating_point<From>) {
        if (!std::isfinite(from)) return false;
    }
    const auto value = static_cast<double>(from);
    if constexpr (std::integral<To>) {
        if (value < static_cast<double>(std::numeric_limits<To>::min()) ||
            value > static_cast<double>(std::numeric_limits<To>::max()) || value != std::floor(value)) {
            return false;
        }
    } else if (std::abs(value) > static_cast<double>(std::numeric_limits<To>::max())) {
        return false;
    }
    to = static_cast<To>(from);
    return true;
}
template <class From, class To, std::size_t Size>
bool take(const std::array<From, Size>& from, std::array<To, Size>& to) {
    bool fits = true;
    for (std::size_t i = 0; i < Size; ++i) fits = take(from[i], to[i]) && fits;
    return fits;
}

/// The two directions of a list of pairs, the object's field first.
struct ToRecord {
    template <class Field, class Other>
    void operator()(const Field& field, Other& other) {
        fits = take(field, other) && fits;
    }
    bool fits = true;
};
struct FromRecord {
    template <class Field, class Other>
    void operator()(Field& field, const Other& other) {
        fits = take(other, field) && fits;
    }
    bool fits = true;
};

/// The number is one of the system's satellites.
bool isSatellite(CALN::eCALSATSYSTEM system, unsigned number) {
    return number >= 1 && number <= CALN::getMaxSatNumber(system);
}

/// Sources the library tells apart; the simulated bit travels along.
std::uint8_t knownSource(std::uint8_t source) {
    const unsigned code = source & 0x7FU;
    return static_cast<std::uint8_t>((code >= 1 && code <= 3 ? code : 0U) | (source & CALN::kSimulatedSource));
}

template <class Direction, class Data, class Record>
bool gpsFields(Direction pair, Data& d, Record& r) {
    auto& [codeOnL2, uraIndex, l2pDataFlag, aodo, fitIntervalFlag, iodc] = d.words;
    pair(d.prn, r.satId);
    pair(d.source, r.source);
    pair(d.health, r.health);
    pair(d.week, r.week);
    pair(d.ura, r.ura);
    pair(codeOnL2, r.codeOnL2);
    pair(uraIndex, r.uraIndex);
    pair(l2pDataFlag, r.l2pDataFlag);
    pair(aodo, r.aodo);
    pair(fitIntervalFlag, r.fitIntervalFlag);
    pair(iodc, r.iodc);
    pair(d.tgd, r.tgd);
    pair(d.m0, r.m0);
    pair(d.deltaN, r.deltaN);
    pair(d.e, r.e);
    pair(d.sqrtA, r.sqrtA);
    pair(d.omega0, r.omega0);
    pair(d.i0, r.i0);
    pair(d.omega, r.omega);
    pair(d.omegaDot, r.omegaDot);
    pair(d.idot, r.idot);
    pair(d.cuc, r.cuc);
    pair(d.cus, r.cus);
    pair(d.crc, r.crc);
    pair(d.crs, r.crs);
    pair(d.cic, r.cic);
    pair(d.cis, r.cis);
    pair(d.toe, r.toe);
    pair(d.toc, r.toc);
    pair(d.af0, r.af0);
    pair(d.af1, r.af1);
    pair(d.af2, r.af2);
    pair(d.delayTerm1, r.delayTerm1);
    pair(d.delayTerm2, r.delayTerm2);
    return pair.fits;
}

template <class Direction, class Data, class Record>
bool glonassFields(Direction pair, Data& d, Record& r) {
    pair(d.slot, r.satId);
    pair(d.source, r.source);
    pair(d.health, r.health);
    pair(d.dayNumber, r.dayNumber);
    pair(d.frameTime, r.frameTime);
    pair(d.modification, r.modification);
    pair(d.accuracyIndex, r.accuracyIndex);
    pair(d.week, r.week);
    pair(d.referenceSecondsOfDay, r.referenceSecondsOfDay);
    pair(d.tb, r.tb);
    pair(d.position, r.position);
    pair(d.velocity, r.velocity);
    pair(d.acceleration, r.acceleration);
    pair(d.tauN, r.tauN);
    pair(d.deltaTauN, r.deltaTauN);
    pair(d.gammaN, r.gammaN);
    pair(d.ageOfData, r.ageOfData);
    pair(d.trailing[0], r.fourYearInterval);
    pair(d.trailing[1], r.controlFlags);
    pair(d.trailing[2], r.healthFlags);
    pair(d.frequencyNumber, r.frequencyNumber);
    pair(d.flags, r.recordFlags);
    return pair.fits;
}

template <class Direction, class Data, class Record>
bool gpsAlmanacFields(Direction pair, Data& d, Record& r) {
    pair(d.prn, r.satId);
    pair(d.source, r.source);
    pair(d.health, r.health);
    pair(d.m0, r.m0);
    pair(d.e, r.e);
    pair(d.sqrtA, r.sqrtA);
    pair(d.omega0, r.omega0);
    pair(d.i, r.i);
    pair(d.omega, r.omega);
    pair(d.omegaDot, r.omegaDot);
    pair(d.af0, r.af0);
    pair(d.af1, r.af1);
    pair(d.week, r.week);
    return pair.fits;
}

template <class Direction, class Data, class Record>
bool glonassAlmanacFields(Direction pair, Data& d, Record& r) {
    pair(d.slot, r.satId);
    pair(d.source, r.source);
    pair(d.week, r.week);
    pair(d.dayNumber, r.dayNumber);
    pair(d.fourYearInterval, r.fourYearInterval);
    pair(d.modification, r.modification);
    pair(d.channel, r.channel);
    pair(d.controlFlags, r.controlFlags);
    pair(d.milliseconds, r.referenceMilliseconds);
    pair(d.nodeSecondsOfDay, r.nodeSecondsOfDay);
    pair(d.health, r.health);
    pair(d.tauN, r.tauN);
    pair(d.lambda, r.lambda);
    pair(d.deltaI, r.deltaI);
    pair(d.e, r.e);
    pair(d.omega, r.omega);
    pair(d.deltaT, r.deltaT);
    pair(d.deltaTDot, r.deltaTDot);
    pair(d.tauC, r.tauC);
    return pair.fits;
}

template <class Direction, class Data, class Record>
bool ionoUtcFields(Direction pair, Data& d, Record& r) {
    pair(d.alpha, r.alpha);
    pair(d.beta, r.beta);
    pair(d.a0, r.a0);
    pair(d.a1, r.a1);
    pair(d.wnt, r.wnt);
    pair(d.tot, r.tot);
    pair(d.word1, r.word1);
    pair(d.word2, r.word2);
    pair(d.deltaTls, r.deltaTls);
    pair(d.deltaTlsf, r.deltaTlsf);
    pair(d.wnLsf, r.wnLsf);
    pair(d.dn, r.dn);
    return pair.fits;
}

template <class Direction, class Data, class Record>
bool clockFields(Direction pair, Data& d, Record& r) {
    auto& [fourYearInterval, availability, leapNotice, source, slot] = d.bytes;
    pair(d.dayNumber, r.dayNumber);
    pair(d.frameTime, r.frameTime);
    pair(fourYearInterval, r.fourYearInterval);
    pair(leapNotice, r.leapNotice);
    pair(source, r.source);
    pair(slot, r.slot);
    pair(d.almanacDay, r.almanacDay);
    pair(d.tauC, r.tauC);
    pair(d.tauGps, r.tauGps);
    pair(d.b1, r.b1);
    pair(d.b2, r.b2);
    return pair.fits;
}

}  // namespace

bool convertGPSEphemeris(const CHalvexEphemeris& from, CALN::CALX_SAT_EPHEMERIS& to) {
    CALN::CALX_SAT_EPHEMERIS record;
    if (!gpsFields(ToRecord(), from.m_data, record) || !isSatellite(CALN::eCALSATSYSTEM_GPS, record.satId)) {
        return false;
    }
    to = record;
    return true;
}

bool convertGPSEphemeris(const CALN::CALX_SAT_EPHEMERIS& from, CHalvexEphemeris& to) {
    if (from.messageType != CALN::eCALGPSMESSAGE_LNAV || from.aDot != 0.0 || from.deltaNDot != 0.0) return false;
    CHalvexEphemeris::Data data;
    if (!isSatellite(CALN::eCALSATSYSTEM_GPS, from.satId) || !gpsFields(FromRecord(), data, from)) return false;
    data.source = knownSource(from.source);
    to.m_data = data;
    return true;
}

bool convertGLOEphemeris(const CHalvexEphemerisGLO& from, CALN::CALX_SAT_EPHEMERIS_GLONASS& to) {
    CALN::CALX_SAT_EPHEMERIS_GLONASS record;
    if (!glonassFields(ToRecord(), from.m_data, record) || !isSatellite(CALN::eCALSATSYSTEM_GLONASS, record.satId)) {
        return false;
    }
    record.referenceSeconds = from.m_data.milliseconds / 1000.0;
    to = record;
    return true;
}

bool convertGLOEphemeris(const CALN::CALX_SAT_EPHEMERIS_GLONASS& from, CHalvexEphemerisGLO& to) {
    CHalvexEphemerisGLO result;
    CHalvexEphemerisGLO::Data& data = result.m_data;
    if (!isSatellite(CALN::eCALSATSYSTEM_GLONASS, from.satId) || !glonassFields(FromRecord(), data, from) ||
        !take(std::round(from.referenceSeconds * 1000.0), data.milliseconds)) {
        return false;
    }
    data.source = knownSource(from.source);
    data.iod = PIO::RTCM3::generateGLONASSIOD(from.tb);
    if (!GenerateNavIdentValues(result)) return false;
    to = result;
    return true;
}

bool convertGPSAlmanac(const CHalvexAlmanac& from, CALN::CALX_SAT_ALMANAC& to) {
    CALN::CALX_SAT_ALMANAC record;
    if (!gpsAlmanacFields(ToRecord(), from.m_data, record) || !isSatellite(CALN::eCALSATSYSTEM_GPS, record.satId)) {
        return false;
    }
    record.toa = from.GetRefTimeInGPSSeconds();
    to = record;
    return true;
}

bool convertGPSAlmanac(const CALN::CALX_SAT_ALMANAC& from, CHalvexAlmanac& to) {
    CHalvexAlmanac::Data data;
    if (!isSatellite(CALN::eCALSATSYSTEM_GPS, from.satId) || !gpsAlmanacFields(FromRecord(), data, from) ||
        !take(from.toa / 4096.0, data.toa))
        return false;
    to.m_data = data;
    return true;
}

bool convertGLOAlmanac(const CHalvexAlmanacGlonass& from, CALN::CALX_SAT_ALMANAC_GLONASS& to) {
    CALN::CALX_SAT_ALMANAC_GLONASS record;
    if (!glonassAlmanacFields(ToRecord(), from.m_data, record) ||
        !isSatellite(CALN::eCALSATSYSTEM_GLONASS, record.satId)) {
        return false;
    }
    to = record;
    return true;
}

bool convertGLOAlmanac(const CALN::CALX_SAT_ALMANAC_GLONASS& from, CHalvexAlmanacGlonass& to) {
    CHalvexAlmanacGlonass::Data data;
    if (!isSatellite(CALN::eCALSATSYSTEM_GLONASS, from.satId) || !glonassAlmanacFields(FromRecord(), data, from))
        return false;
    to.m_data = data;
    return true;
}

bool convertIonoUTC(const CHalvexIonoUtc& from, CALN::CALX_IONO_UTC& to) {
    const std::int32_t source = from.m_data.source;
    if (source < CHalvexIonoUtc::kNoSource || source >= CALN::kSimulatedSource) return false;
    CALN::CALX_IONO_UTC record;
    if (!ionoUtcFields(ToRecord(), from.m_data, record)) return false;
    record.source = source == CHalvexIonoUtc::kSimulatedSource  ? CALN::kSimulatedSource
                    : source == CHalvexIonoUtc::kReceiverSource ? std::uint8_t{CALN::eCALORBITSOURCE_RECEIVER}
                    : source == CHalvexIonoUtc::kNoSource       ? std::uint8_t{CALN::eCALORBITSOURCE_NONE}
                                                                : static_cast<std::uint8_t>(source);
    to = record;
    return true;
}

bool convertIonoUTC(const CALN::CALX_IONO_UTC& from, CHalvexIonoUtc& to) {
    CHalvexIonoUtc::Data data;
    if (!ionoUtcFields(FromRecord(), data, from)) return false;
    data.source = from.source == CALN::eCALORBITSOURCE_NONE       ? CHalvexIonoUtc::kNoSource
                  : from.source == CALN::eCALORBITSOURCE_RECEIVER ? CHalvexIonoUtc::kReceiverSource
                  : (from.source & CALN::kSimulatedSource) != 0   ? CHalvexIonoUtc::kSimulatedSource
                                                                  : std::int32_t{from.source};
    to.m_data = data;
    return true;
}

bool convertGLOClkInfo(const CHalvexTimeInfoGlonass& from, CALN::CALX_CLOCK_GLONASS& to) {
    CALN::CALX_CLOCK_GLONASS record;
    if (!clockFields(ToRecord(), from.m_data, record)) return false;
    record.available = from.IsAvailable();
    to = record;
    return true;
}

bool convertGLOClkInfo(const CALN::CALX_CLOCK_GLONASS& from, CHalvexTimeInfoGlonass& to) {
    CHalvexTimeInfoGlonass::Data data;
    if (!clockFields(FromRecord(), data, from)) return false;
    data.bytes[CHalvexTimeInfoGlonass::kAvailability] = from.available ? CHalvexTimeInfoGlonass::kFilled : 0;
    to.m_data = data;
    return true;
}

bool convertCoords(const CGeoCoord& from, CALN::SCalCoordinateSet& to) {
    constexpr double kQuarterCircle = 1.5707963267948968;
    if (!std::isfinite(from.GetLongitude() + from.GetHeight()) || !(std::abs(from.GetLatitude()) <= kQuarterCircle)) {
        return false;
    }
    to.geographic = {from.GetLatitude(), from.GetLongitude(), from.GetHeight()};
    to.cartesian = halvex::toCartesian(to.geographic);
    return true;
}
