#pragma once

#include <cstdint>

#include "halvex/platform/caln/EphemerisRecord.h"
#include "halvex/platform/caln/SatelliteSystem.h"

namespace CALN {

/// Kepler almanac of one satellite: complete values, nothing as an offset to a nominal orbit (IS-GPS-200, 20.3.3.5.1.2;
/// Galileo OS SIS ICD, 5.1.10; BDS-SIS-ICD-B1I, 5.2.4.15; NavIC ICD for SPS, 6.2.4). Week and toa in the system's own
/// time. Plain value.
struct CALX_SAT_ALMANAC_COMMON : CALX_SAT_EPHEMERIS_BASE {
    double toa = 0.0;          ///< reference time [s of week]
    unsigned char health = 0;  ///< 0 healthy
    double m0 = 0.0;           ///< mean anomaly at toa [rad]
    double e = 0.0;            ///< eccentricity
    double sqrtA = 0.0;        ///< [m^0.5]
    double omega0 = 0.0;       ///< longitude of the ascending node at the week's begin [rad]
    double i = 0.0;            ///< inclination [rad]
    double omega = 0.0;        ///< argument of perigee [rad]
    double omegaDot = 0.0;     ///< rate of right ascension [rad/s]
    double af0 = 0.0;          ///< clock bias [s]
    double af1 = 0.0;          ///< clock drift [s/s]

    [[nodiscard]] unsigned int GetSatId() const { return satId; }
    /// toa on the GPS scale.
    [[nodiscard]] SMjdTime GetReferenceTime() const { return {int{week}, toa}; }
    [[nodiscard]] bool isHealthy() const { return health == 0; }

    friend bool operator==(const CALX_SAT_ALMANAC_COMMON&, const CALX_SAT_ALMANAC_COMMON&) = default;

    static constexpr std::uint16_t kSavedVersion = 1;
    template <class Io, class Self>
    static void fields(Io& io, Self& r) {
        baseFields(io, r);
        io(r.toa);
        io(r.health);
        for (auto* value : {&r.m0, &r.e, &r.sqrtA, &r.omega0, &r.i, &r.omega, &r.omegaDot, &r.af0, &r.af1}) {
            io(*value);
        }
    }
};

/// GPS almanac.
struct CALX_SAT_ALMANAC : CALX_SAT_ALMANAC_COMMON, halvex::PersistedRecord<CALX_SAT_ALMANAC> {
    [[nodiscard]] SCalSatID GetCalSatID() const { return {eCALSATSYSTEM_GPS, satId}; }

    friend bool operator==(const CALX_SAT_ALMANAC&, const CALX_SAT_ALMANAC&) = default;
};

/// Galileo almanac. `health` is 0 when E5a, E5b and E1-B are all good.
struct CALX_SAT_ALMANAC_GALILEO : CALX_SAT_ALMANAC_COMMON, halvex::PersistedRecord<CALX_SAT_ALMANAC_GALILEO> {
    unsigned char iodAlmanac = 0;  ///< IODa

    /// The number; the raw byte holds it plus 56.
    [[nodiscard]] unsigned int GetSatId() const { return static_cast<unsigned char>(satId - 56U); }
    [[nodiscard]] SCalSatID GetCalSatID() const {
        return {eCALSATSYSTEM_GALILEO, static_cast<unsigned char>(GetSatId())};
    }

    friend bool operator==(const CALX_SAT_ALMANAC_GALILEO&, const CALX_SAT_ALMANAC_GALILEO&) = default;

    template <class Io, class Self>
    static void fields(Io& io, Self& r) {
        CALX_SAT_ALMANAC_COMMON::fields(io, r);
        io(r.iodAlmanac);
    }
};

/// BeiDou almanac. Week and toa are BeiDou time.
struct CALX_SAT_ALMANAC_BEIDOU : CALX_SAT_ALMANAC_COMMON, halvex::PersistedRecord<CALX_SAT_ALMANAC_BEIDOU> {
    [[nodiscard]] SCalSatID GetCalSatID() const { return {eCALSATSYSTEM_BEIDOU, satId}; }
    /// On the GPS scale: BeiDou week 0 is GPS week 1356, 14 s behind.
    [[nodiscard]] SMjdTime GetReferenceTime() const { return {week + 1356, toa + 14.0}; }

    friend bool operator==(const CALX_SAT_ALMANAC_BEIDOU&, const CALX_SAT_ALMANAC_BEIDOU&) = default;
};

/// QZSS almanac.
struct CALX_SAT_ALMANAC_QZSS : CALX_SAT_ALMANAC_COMMON, halvex::PersistedRecord<CALX_SAT_ALMANAC_QZSS> {
    /// Number 1 for the raw byte 193.
    [[nodiscard]] SCalSatID GetCalSatID() const {
        return {eCALSATSYSTEM_QZSS, static_cast<unsigned char>(satId >= 193U ? satId - 192U : satId)};
    }

    friend bool operator==(const CALX_SAT_ALMANAC_QZSS&, const CALX_SAT_ALMANAC_QZSS&) = default;
};

/// NavIC almanac.
struct CALX_SAT_ALMANAC_NAVIC : CALX_SAT_ALMANAC_COMMON, halvex::PersistedRecord<CALX_SAT_ALMANAC_NAVIC> {
    double interSignalCorrection = 0.0;  ///< S against L5 [s]

    [[nodiscard]] SCalSatID GetCalSatID() const { return {eCALSATSYSTEM_NAVIC, satId}; }

    friend bool operator==(const CALX_SAT_ALMANAC_NAVIC&, const CALX_SAT_ALMANAC_NAVIC&) = default;

    template <class Io, class Self>
    static void fields(Io& io, Self& r) {
        CALX_SAT_ALMANAC_COMMON::fields(io, r);
        io(r.interSignalCorrection);
    }
};

/// GLONASS almanac (GLONASS ICD 5.1, 4.5). The week is the GPS week of the reference time.
struct CALX_SAT_ALMANAC_GLONASS : CALX_SAT_EPHEMERIS_BASE, halvex::PersistedRecord<CALX_SAT_ALMANAC_GLONASS> {
    unsigned short dayNumber = 0;            ///< N_A: day within the four-year interval
    unsigned int fourYearInterval = 0;       ///< N_4
    unsigned char modification = 0;          ///< M_n: 0 GLONASS, 1 GLONASS-M
    unsigned char channel = 0;               ///< H_n as it is sent: 25 to 31 are channels -7 to -1
    unsigned short controlFlags = 0;         ///< of the host, carried
    unsigned int referenceMilliseconds = 0;  ///< t_lambda as milliseconds of the GPS week
    unsigned short nodeSecondsOfDay = 0;     ///< t_lambda in units of 2 s of the Moscow day
    unsigned int health = 0;                 ///< C_n: 1 healthy
    double tauN = 0.0;                       ///< coarse clock correction to system time [s]
    double lambda = 0.0;                     ///< longitude of the first ascending node [rad], Earth-fixed
    double deltaI = 0.0;                     ///< correction of the inclination to 63 degrees [rad]
    double e = 0.0;                          ///< eccentricity
    double omega = 0.0;                      ///< argument of perigee [rad]
    double deltaT = 0.0;                     ///< correction of the draconic period to 43 200 s [s]
    double deltaTDot = 0.0;                  ///< its rate [s per revolution]
    double tauC = 0.0;                       ///< correction of GLONASS time to UTC(SU) [s]

    [[nodiscard]] unsigned int GetSatId() const { return satId; }
    [[nodiscard]] SCalSatID GetCalSatID() const { return {eCALSATSYSTEM_GLONASS, satId}; }
    [[nodiscard]] SMjdTime GetReferenceTime() const { return {int{week}, referenceMilliseconds / 1000.0}; }
    [[nodiscard]] bool isHealthy() const { return health == 1; }

    friend bool operator==(const CALX_SAT_ALMANAC_GLONASS&, const CALX_SAT_ALMANAC_GLONASS&) = default;

    static constexpr std::uint16_t kSavedVersion = 1;
    template <class Io, class Self>
    static void fields(Io& io, Self& r) {
        baseFields(io, r);
        io(r.dayNumber);
        io(r.fourYearInterval);
        io(r.modification);
        io(r.channel);
        io(r.controlFlags);
        io(r.referenceMilliseconds);
        io(r.nodeSecondsOfDay);
        io(r.health);
        for (auto* value : {&r.tauN, &r.lambda, &r.deltaI, &r.e, &r.omega, &r.deltaT, &r.deltaTDot, &r.tauC}) {
            io(*value);
        }
    }
};

}  // namespace CALN
