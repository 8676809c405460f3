#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "halvex/platform/caln/EphemerisBeidou.h"
#include "halvex/platform/caln/EphemerisGalileo.h"
#include "halvex/platform/caln/EphemerisGlonass.h"
#include "halvex/platform/caln/EphemerisGps.h"
#include "halvex/platform/caln/EphemerisNavic.h"
#include "halvex/platform/caln/SatelliteSystem.h"
#include "halvex/platform/mjd/MjdTime.h"

namespace halvex::rinex {

/// Ionosphere coefficients in a file's header, as printed there.
struct IonosphereCorrection {
    std::string type;                    ///< GPSA, GPSB, GAL, QZSA, QZSB, BDSA, BDSB, IRNA, IRNB
    std::array<double, 4> parameters{};  ///< alpha or beta of Klobuchar's model; Galileo: a0 to a2 and 0
    char timeMark = ' ';                 ///< hour of the transmission, A for 00 to X for 23; blank: not given
    int satellite = 0;                   ///< that sent them, number within its system; 0: not given
};

/// Offset between two time systems in a file's header: a0 + a1 (t - reference) [s].
struct TimeSystemCorrection {
    std::string type;       ///< GPUT, GLUT, GAUT, BDUT, QZUT, IRUT, SBUT, GAGP, GLGP, ...: the first minus the second
    double a0 = 0.0;        ///< [s]; GLUT: -TauC
    double a1 = 0.0;        ///< [s/s]
    int secondsOfWeek = 0;  ///< reference time [s of week]
    int week = 0;           ///< its continuous week; BDUT: of BeiDou time
    std::string source;     ///< of the message, "G10" or an SBAS provider; blank: not given
    int utcId = 0;          ///< realisation of UTC, 0 unknown
};

/// Leap seconds in a file's header: GPS - UTC.
struct LeapSecondRecord {
    int seconds = 0;
    std::optional<int> future;  ///< announced value
    std::optional<int> week;    ///< GPS week in which the change happens or happened
    std::optional<int> day;     ///< day of that week at whose end it does, as printed
};

/// Header of a RINEX navigation file. Records of version 2 are given as their successors: ION ALPHA and BETA as GPSA
/// and GPSB, DELTA-UTC as GPUT, CORR TO SYSTEM TIME as GLUT, D-UTC as SBUT. Plain value.
struct NavigationHeader {
    double version = 3.05;
    char fileSystem = 'M';  ///< system letter, M for mixed
    std::string program, runBy, date;
    std::vector<std::string> comments;
    std::optional<LeapSecondRecord> leapSeconds;
    std::vector<IonosphereCorrection> ionosphere;
    std::vector<TimeSystemCorrection> timeSystems;
    std::uint32_t unknownRecords = 0;  ///< header lines with a label this reader does not know
};

/// Position of a geostationary SBAS satellite as its message 9 gives it. RINEX 4.01, appendix A. Plain value.
struct SbasOrbit {
    unsigned char number = 0;              ///< PRN - 100
    SMjdTime referenceTime;                ///< on the GPS scale
    double clockBias = 0.0;                ///< aGf0 [s]
    double clockDrift = 0.0;               ///< aGf1 [s/s]
    double transmissionTime = 0.0;         ///< of the message [s of GPS week]
    std::array<double, 3> position{};      ///< Earth-fixed [m]
    std::array<double, 3> velocity{};      ///< [m/s]
    std::array<double, 3> acceleration{};  ///< [m/s^2]
    unsigned int health = 0;               ///< of message 17, 63 when not received
    double ura = 0.0;                      ///< accuracy [m], 32767 when not received
    unsigned int iodn = 0;                 ///< issue of the data

    friend bool operator==(const SbasOrbit&, const SbasOrbit&) = default;
};

/// Where a version 4 record other than an ephemeris came from.
struct MessageSource {
    CALN::SCalSatID satellite;  ///< number 0: the system as a whole
    std::string message;        ///< LNAV, CNVX, D1D2, IFNV, FDMA, SBAS, ...

    friend bool operator==(const MessageSource&, const MessageSource&) = default;
};

/// STO record: offset between two time systems, a0 + a1 dt + a2 dt^2 [s]. RINEX 4.01, appendix A.
struct SystemTimeOffset {
    MessageSource source;
    SMjdTime referenceTime;  ///< of the polynomial, in the time of the message's system, as printed
    std::string pair;        ///< GPUT, BDGA, ...: the first minus the second
    std::string sbasId;      ///< SBAS provider, blank: none
    std::string utcId;       ///< UTC(USNO), ...; blank: none
    double transmissionTime = 0.0;
    double a0 = 0.0, a1 = 0.0, a2 = 0.0;  ///< [s, s/s, s/s^2]

    friend bool operator==(const SystemTimeOffset&, const SystemTimeOffset&) = default;
};

/// Klobuchar's model. IS-GPS-200, 20.3.3.5.2.5. Powers of semicircles.
struct KlobucharModel {
    std::array<double, 4> alpha{}, beta{};
    int region = 0;  ///< QZSS: 0 wide area, 1 Japan

    friend bool operator==(const KlobucharModel&, const KlobucharModel&) = default;
};

/// NeQuick-G. Galileo OS SIS ICD, 5.1.6.
struct NeQuickModel {
    std::array<double, 3> ai{};         ///< effective ionisation level [sfu, sfu/deg, sfu/deg^2]
    unsigned int disturbanceFlags = 0;  ///< regions 1 to 5 from bit 4 down

    friend bool operator==(const NeQuickModel&, const NeQuickModel&) = default;
};

/// BeiDou's global model. BDS-SIS-ICD-B1C, 7.8.
struct BdgimModel {
    std::array<double, 9> alpha{};  ///< [TECU]

    friend bool operator==(const BdgimModel&, const BdgimModel&) = default;
};

/// ION record. RINEX 4.01, appendix A.
struct IonosphereModel {
    MessageSource source;
    SMjdTime transmissionTime;  ///< in the time of the message's system, as printed
    std::variant<KlobucharModel, NeQuickModel, BdgimModel> model;

    friend bool operator==(const IonosphereModel&, const IonosphereModel&) = default;
};

/// EOP record: value, first and second derivative of each parameter. RINEX 4.01, appendix A.
struct EarthOrientation {
    MessageSource source;
    SMjdTime referenceTime;            ///< in the time of the message's system, as printed
    std::array<double, 3> xp{}, yp{};  ///< pole [arcsec, arcsec/d, arcsec/d^2]
    double transmissionTime = 0.0;     ///< [s of week]
    std::array<double, 3> deltaUt1{};  ///< UT1 - UTC or UT1 - GPST, as sent [s, s/d, s/d^2]

    friend bool operator==(const EarthOrientation&, const EarthOrientation&) = default;
};

/// One record of a navigation file.
using NavigationRecord =
    std::variant<CALN::CALX_SAT_EPHEMERIS, CALN::CALX_SAT_EPHEMERIS_GLONASS, CALN::CALX_SAT_EPHEMERIS_GALILEO,
                 CALN::CALX_SAT_EPHEMERIS_BEIDOU, CALN::CALX_SAT_EPHEMERIS_QZSS, CALN::CALX_SAT_EPHEMERIS_NAVIC,
                 SbasOrbit, SystemTimeOffset, IonosphereModel, EarthOrientation>;

}  // namespace halvex::rinex
