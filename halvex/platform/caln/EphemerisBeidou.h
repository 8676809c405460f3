#pragma once

#include "halvex/platform/caln/EphemerisRecord.h"

namespace CALN {

/// BeiDou navigation messages that carry an ephemeris.
enum eCALBDSMESSAGE : std::uint8_t {
    eCALBDSMESSAGE_D1 = 0,     ///< medium and inclined orbits; BDS-SIS-ICD-B1I 3.0, 5.2
    eCALBDSMESSAGE_D2 = 1,     ///< geostationary; BDS-SIS-ICD-B1I 3.0, 5.3
    eCALBDSMESSAGE_CNAV1 = 2,  ///< BDS-SIS-ICD-B1C
    eCALBDSMESSAGE_CNAV2 = 3,  ///< BDS-SIS-ICD-B2a
    eCALBDSMESSAGE_CNAV3 = 4,  ///< BDS-SIS-ICD-B2b
};

/// BeiDou ephemeris, with every field of D1, D2 and the B-CNAV messages. Week, toe and toc are BeiDou time. Persisted,
/// version 1.
struct HALVEX_EXPORT CALX_SAT_EPHEMERIS_BEIDOU : CALX_SAT_EPHEMERIS_COMMON,
                                                 halvex::PersistedRecord<CALX_SAT_EPHEMERIS_BEIDOU> {
    static constexpr int kGpsWeekOfWeek0 = 1356;  ///< BDS-SIS-ICD-B1I, 3.3: week 0 began on 1 January 2006
    static constexpr double kGpsMinusBdt = 14.0;  ///< [s]

    eCALBDSMESSAGE messageType = eCALBDSMESSAGE_D1;
    unsigned short health = 0;  ///< D1, D2: SatH1; B-CNAV: HS, 0 good, 1 not, 2 in test
    double ura = 0.0;           ///< user range accuracy [m]; D1, D2

    // D1 and D2
    unsigned short aode = 0, aodc = 0;  ///< age of the orbit's and of the clock's data
    double tgd1 = 0.0, tgd2 = 0.0;      ///< group delays B1I and B2I against B3I [s]

    // B-CNAV
    unsigned short iode = 0, iodc = 0;
    unsigned char satelliteType = 0;                                    ///< 1 GEO, 2 IGSO, 3 MEO
    unsigned char integrityFlags = 0;                                   ///< DIF, SIF, AIF from the highest bit
    signed char sisaiOe = 0, sisaiOcb = 0, sisaiOc1 = 0, sisaiOc2 = 0;  ///< accuracy indices
    signed char sismai = 0;                                             ///< monitoring accuracy index
    double iscB1Cd = 0.0, iscB2ad = 0.0;                                ///< inter-signal corrections [s]
    double tgdB1Cp = 0.0, tgdB2ap = 0.0, tgdB2bI = 0.0;                 ///< group delays [s]
    double top = 0.0;                                                   ///< time of the prediction [s of week]

    using CALX_SAT_EPHEMERIS_COMMON::GetSatId;
    /// Geostationary by its number: 1 to 5 and 59 to 63.
    [[nodiscard]] bool isGeostationary() const { return (satId >= 1 && satId <= 5) || (satId >= 59 && satId <= 63); }
    [[nodiscard]] bool isHealthy() const { return health == 0; }
    /// On the GPS scale.
    [[nodiscard]] SMjdTime GetReferenceTime() const { return GetRefTimeOrbit(); }
    [[nodiscard]] SMjdTime GetRefTimeOrbit() const { return {week + kGpsWeekOfWeek0, toe + kGpsMinusBdt}; }
    [[nodiscard]] SMjdTime GetRefTimeClock() const { return {week + kGpsWeekOfWeek0, tocFromWeek() + kGpsMinusBdt}; }

    friend bool operator==(const CALX_SAT_EPHEMERIS_BEIDOU&, const CALX_SAT_EPHEMERIS_BEIDOU&) = default;

    static constexpr std::uint16_t kSavedVersion = 1;
    template <class Io, class Self>
    static void fields(Io& io, Self& r) {
        commonFields(io, r);
        halvex::enumerationField(io, r.messageType);
        io(r.health);
        io(r.ura);
        io(r.aode);
        io(r.aodc);
        io(r.tgd1);
        io(r.tgd2);
        io(r.iode);
        io(r.iodc);
        io(r.satelliteType);
        io(r.integrityFlags);
        for (auto* index : {&r.sisaiOe, &r.sisaiOcb, &r.sisaiOc1, &r.sisaiOc2, &r.sismai}) io(*index);
        for (auto* delay : {&r.iscB1Cd, &r.iscB2ad, &r.tgdB1Cp, &r.tgdB2ap, &r.tgdB2bI, &r.top}) io(*delay);
    }
};

}  // namespace CALN
