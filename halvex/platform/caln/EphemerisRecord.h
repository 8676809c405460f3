#pragma once

#include <cstddef>
#include <cstdint>

#include "halvex/platform/Export.h"
#include "halvex/platform/kernix/RecordCodec.h"
#include "halvex/platform/mjd/MjdTime.h"

namespace CALN {

/// What an orbit description is.
enum eCALEPHEMERISTYPE : std::uint8_t {
    eCALEPHEMERISTYPE_ALMANAC = 0,
    eCALEPHEMERISTYPE_EPHEMERIS = 1,
};

/// Where a record came from: bits 0 to 6 of its source byte. 0 means that nobody has filled the record.
enum eCALORBITSOURCE : std::uint8_t {
    eCALORBITSOURCE_NONE = 0,
    eCALORBITSOURCE_RECEIVER = 1,
    eCALORBITSOURCE_STREAM = 2,
    eCALORBITSOURCE_FILE = 3,
};
/// Bit 7 of the source byte: the record is made up.
inline constexpr unsigned char kSimulatedSource = 0x80;

/// What every satellite record begins with.
struct CALX_SAT_EPHEMERIS_BASE {
    unsigned char satId = 0;   ///< raw byte: Galileo number + 56, QZSS 193 to 202, others the number
    unsigned char source = 0;  ///< eCALORBITSOURCE and kSimulatedSource
    unsigned short week = 0;   ///< full week of the reference time, in the system's own time

    friend bool operator==(const CALX_SAT_EPHEMERIS_BASE&, const CALX_SAT_EPHEMERIS_BASE&) = default;

protected:
    template <class Io, class Self>
    static void baseFields(Io& io, Self& r) {
        io(r.satId);
        io(r.source);
        io(r.week);
    }
};

/// Orbit and clock of one satellite as Kepler elements with their corrections, as all systems but GLONASS send them
/// (IS-GPS-200, 20.3.3.4 and 30.3.3; Galileo OS SIS ICD, 5.1; BDS-SIS-ICD-B1I, 5.2.4; IS-QZSS-PNT, 4; NavIC ICD for
/// SPS, 6). Angles in radians, lengths in metres, times in seconds. Week, toe and toc are in the system's own time:
/// BeiDou time (week 0 is GPS week 1356, 14 s behind GPS time), the others on the GPS scale with GPS weeks. Plain
/// value.
struct HALVEX_EXPORT CALX_SAT_EPHEMERIS_COMMON : CALX_SAT_EPHEMERIS_BASE {
    double toe = 0.0;                 ///< reference time of the orbit [s of week]
    double toc = 0.0;                 ///< reference time of the clock [s of week], less than half a week from toe
    double transmissionTime = 0.0;    ///< of the message [s of week, may lie before 0]
    unsigned char navType = 0;        ///< Galileo: 1 F/NAV, 2 I/NAV
    unsigned char inavReception = 0;  ///< Galileo I/NAV received on: 1 both, 2 E1-B alone, 3 E5b alone
    double m0 = 0.0;                  ///< mean anomaly at toe [rad]
    double deltaN = 0.0;              ///< correction of the mean motion [rad/s]
    double e = 0.0;                   ///< eccentricity
    double sqrtA = 0.0;               ///< square root of the semi-major axis [m^0.5]
    double omega0 = 0.0;              ///< longitude of the ascending node at the week's begin [rad]
    double i0 = 0.0;                  ///< inclination at toe [rad]
    double omega = 0.0;               ///< argument of perigee [rad]
    double omegaDot = 0.0;            ///< rate of right ascension [rad/s]
    double idot = 0.0;                ///< rate of inclination [rad/s]
    double cuc = 0.0, cus = 0.0;      ///< corrections of the argument of latitude [rad]
    double crc = 0.0, crs = 0.0;      ///< corrections of the radius [m]
    double cic = 0.0, cis = 0.0;      ///< corrections of the inclination [rad]
    double aDot = 0.0;                ///< rate of the semi-major axis [m/s]; CNAV messages
    double deltaNDot = 0.0;           ///< rate of deltaN [rad/s^2]; CNAV messages
    double af0 = 0.0;                 ///< clock bias [s]
    double af1 = 0.0;                 ///< clock drift [s/s]
    double af2 = 0.0;                 ///< clock drift rate [s/s^2]

    friend bool operator==(const CALX_SAT_EPHEMERIS_COMMON&, const CALX_SAT_EPHEMERIS_COMMON&) = default;

protected:
    // The forms of most systems. Only the system's own record knows whether they are its own, so it makes them public.
    [[nodiscard]] unsigned int GetSatId() const { return satId; }
    /// toe and toc as instants on the GPS scale.
    [[nodiscard]] SMjdTime GetReferenceTime() const { return GetRefTimeOrbit(); }
    [[nodiscard]] SMjdTime GetRefTimeOrbit() const { return {int{week}, toe}; }
    [[nodiscard]] SMjdTime GetRefTimeClock() const { return {int{week}, tocFromWeek()}; }
    /// toc counted from the begin of toe's week: it may lie in a neighbouring one.
    [[nodiscard]] double tocFromWeek() const {
        constexpr double kWeek = 604800.0;
        return toc - toe > kWeek / 2 ? toc - kWeek : toc - toe < -kWeek / 2 ? toc + kWeek : toc;
    }
    template <class Io, class Self>
    static void commonFields(Io& io, Self& r) {
        baseFields(io, r);
        for (auto* value : {&r.toe, &r.toc, &r.transmissionTime}) io(*value);
        io(r.navType);
        io(r.inavReception);
        for (auto* value : {&r.m0, &r.deltaN, &r.e, &r.sqrtA, &r.omega0, &r.i0, &r.omega, &r.omegaDot, &r.idot}) {
            io(*value);
        }
        for (auto* value : {&r.cuc, &r.cus, &r.crc, &r.crs, &r.cic, &r.cis}) io(*value);
        for (auto* value : {&r.aDot, &r.deltaNDot, &r.af0, &r.af1, &r.af2}) io(*value);
    }
};

}  // namespace CALN
