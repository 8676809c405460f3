#pragma once

#include "halvex/platform/caln/EphemerisRecord.h"

namespace CALN {

/// GPS navigation messages that carry an ephemeris.
enum eCALGPSMESSAGE : std::uint8_t {
    eCALGPSMESSAGE_LNAV = 0,   ///< IS-GPS-200, 20.3.3
    eCALGPSMESSAGE_CNAV = 1,   ///< L2C and L5; IS-GPS-200, 30.3.3
    eCALGPSMESSAGE_CNAV2 = 2,  ///< L1C; IS-GPS-800, 3.5
};

/// GPS ephemeris, with every field of LNAV, CNAV and CNAV-2. Persisted, version 1.
struct HALVEX_EXPORT CALX_SAT_EPHEMERIS : CALX_SAT_EPHEMERIS_COMMON, halvex::PersistedRecord<CALX_SAT_EPHEMERIS> {
    eCALGPSMESSAGE messageType = eCALGPSMESSAGE_LNAV;
    unsigned short health = 0;  ///< LNAV: six bits, IS-GPS-200, 20.3.3.3.1.4; CNAV: L1, L2, L5 health bits
    double ura = 0.0;           ///< nominal user range accuracy [m]

    // LNAV
    unsigned short codeOnL2 = 0;         ///< 1 P, 2 C/A
    unsigned short uraIndex = 0;         ///< IS-GPS-200, 20.3.3.3.1.3
    unsigned short l2pDataFlag = 0;      ///< 1: no data on L2 P
    unsigned short aodo = 0;             ///< age of data offset, in 900 s
    unsigned short fitIntervalFlag = 0;  ///< 1: fitted over more than four hours
    unsigned short iodc = 0;             ///< issue of the clock data; its low eight bits are the IODE
    double tgd = 0.0;                    ///< group delay [s]

    // CNAV and CNAV-2
    signed char uraiEd = 0;                                ///< elevation-dependent URA index
    signed char uraiNed0 = 0, uraiNed1 = 0, uraiNed2 = 0;  ///< non-elevation-dependent URA indices
    double iscL1CA = 0.0, iscL2C = 0.0, iscL5I5 = 0.0;     ///< inter-signal corrections [s]
    double iscL5Q5 = 0.0, iscL1Cd = 0.0, iscL1Cp = 0.0;    ///< inter-signal corrections [s]
    unsigned short topWeek = 0;                            ///< week of top
    double top = 0.0;                                      ///< time of the prediction [s of week]
    double delayTerm1 = 0.0, delayTerm2 = 0.0;             ///< further delays [s], carried for the library

    using CALX_SAT_EPHEMERIS_COMMON::GetReferenceTime;
    using CALX_SAT_EPHEMERIS_COMMON::GetRefTimeClock;
    using CALX_SAT_EPHEMERIS_COMMON::GetRefTimeOrbit;
    using CALX_SAT_EPHEMERIS_COMMON::GetSatId;
    [[nodiscard]] bool isHealthy() const { return health == 0; }

    friend bool operator==(const CALX_SAT_EPHEMERIS&, const CALX_SAT_EPHEMERIS&) = default;

    static constexpr std::uint16_t kSavedVersion = 1;
    template <class Io, class Self>
    static void fields(Io& io, Self& r) {
        commonFields(io, r);
        halvex::enumerationField(io, r.messageType);
        io(r.health);
        io(r.ura);
        for (auto* word : {&r.codeOnL2, &r.uraIndex, &r.l2pDataFlag, &r.aodo, &r.fitIntervalFlag, &r.iodc}) io(*word);
        io(r.tgd);
        for (auto* index : {&r.uraiEd, &r.uraiNed0, &r.uraiNed1, &r.uraiNed2}) io(*index);
        for (auto* delay : {&r.iscL1CA, &r.iscL2C, &r.iscL5I5, &r.iscL5Q5, &r.iscL1Cd, &r.iscL1Cp}) io(*delay);
        io(r.topWeek);
        for (auto* value : {&r.top, &r.delayTerm1, &r.delayTerm2}) io(*value);
    }
};

/// QZSS ephemeris: the fields of GPS. IS-QZSS-PNT, 4.
struct HALVEX_EXPORT CALX_SAT_EPHEMERIS_QZSS : CALX_SAT_EPHEMERIS {
    /// 1 for PRN 193; smaller numbers as they are.
    [[nodiscard]] unsigned int GetSatId1Based() const { return satId >= 193U ? satId - 192U : satId; }

    friend bool operator==(const CALX_SAT_EPHEMERIS_QZSS&, const CALX_SAT_EPHEMERIS_QZSS&) = default;
};

}  // namespace CALN
