#pragma once

#include "halvex/platform/caln/EphemerisRecord.h"

namespace CALN {

/// NavIC ephemeris. NavIC SIS ICD for SPS 1.1, 5.9 and 6. Weeks are GPS weeks (NavIC's plus 1024). Persisted,
/// version 1.
struct HALVEX_EXPORT CALX_SAT_EPHEMERIS_NAVIC : CALX_SAT_EPHEMERIS_COMMON,
                                                halvex::PersistedRecord<CALX_SAT_EPHEMERIS_NAVIC> {
    unsigned short iodec = 0;   ///< issue of data of ephemeris and clock
    unsigned short health = 0;  ///< bit 0: L5 not healthy, bit 1: S not healthy
    double ura = 0.0;           ///< user range accuracy [m]
    double tgd = 0.0;           ///< group delay [s]

    using CALX_SAT_EPHEMERIS_COMMON::GetReferenceTime;
    using CALX_SAT_EPHEMERIS_COMMON::GetRefTimeClock;
    using CALX_SAT_EPHEMERIS_COMMON::GetRefTimeOrbit;
    using CALX_SAT_EPHEMERIS_COMMON::GetSatId;
    [[nodiscard]] unsigned int GetSatId1Based() const { return satId; }
    [[nodiscard]] bool isHealthy() const { return health == 0; }

    friend bool operator==(const CALX_SAT_EPHEMERIS_NAVIC&, const CALX_SAT_EPHEMERIS_NAVIC&) = default;

    static constexpr std::uint16_t kSavedVersion = 1;
    template <class Io, class Self>
    static void fields(Io& io, Self& r) {
        commonFields(io, r);
        io(r.iodec);
        io(r.health);
        io(r.ura);
        io(r.tgd);
    }
};

}  // namespace CALN
