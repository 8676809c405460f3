#pragma once

#include <array>

#include "halvex/platform/caln/EphemerisRecord.h"

namespace CALN {

/// GLONASS ephemeris: state vector at tb in PZ-90, with the fields of the message (GLONASS ICD 5.1, 4.4). The week is
/// the GPS week. Persisted, version 1.
struct HALVEX_EXPORT CALX_SAT_EPHEMERIS_GLONASS : CALX_SAT_EPHEMERIS_BASE,
                                                  halvex::PersistedRecord<CALX_SAT_EPHEMERIS_GLONASS> {
    double referenceSeconds = 0.0;           ///< tb as seconds of the GPS week, whole milliseconds
    std::array<double, 3> position{};        ///< [m]
    std::array<double, 3> velocity{};        ///< [m/s]
    std::array<double, 3> acceleration{};    ///< of Sun and Moon [m/s^2]
    double tauN = 0.0;                       ///< clock correction to system time [s]; RINEX prints its negative
    double deltaTauN = 0.0;                  ///< delay of G2 against G1 [s]
    double gammaN = 0.0;                     ///< relative deviation of the carrier frequency
    unsigned int health = 0;                 ///< 0 healthy; bit 0: the highest bit of Bn, bit 1: ln
    unsigned char tb = 0;                    ///< index of the reference time within the Moscow day, 15 min each
    signed char frequencyNumber = 0;         ///< channel, -7 to 6
    unsigned short dayNumber = 0;            ///< N_T: day within the four-year interval
    unsigned int frameTime = 0;              ///< t_k [s of the Moscow day]
    unsigned char modification = 0;          ///< M: 0 GLONASS, 1 GLONASS-M
    unsigned short accuracyIndex = 0;        ///< F_T
    unsigned int referenceSecondsOfDay = 0;  ///< tb [s of the Moscow day]
    int ageOfData = 0;                       ///< E_n [d]
    unsigned int fourYearInterval = 0;       ///< N_4
    unsigned int controlFlags = 0;           ///< P (bits 0, 1), P1 (2, 3), P2 (4), P3 (5), P4 (6)
    unsigned int healthFlags = 0;            ///< Cn of the almanac (bit 0: healthy), whether it is known (1), l_n (2)
    unsigned int recordFlags = 0;            ///< of the host, carried

    [[nodiscard]] unsigned int GetSatId() const { return satId; }
    [[nodiscard]] SMjdTime GetReferenceTime() const { return {int{week}, referenceSeconds}; }
    [[nodiscard]] bool isHealthy() const { return health == 0; }

    friend bool operator==(const CALX_SAT_EPHEMERIS_GLONASS&, const CALX_SAT_EPHEMERIS_GLONASS&) = default;

    static constexpr std::uint16_t kSavedVersion = 1;
    template <class Io, class Self>
    static void fields(Io& io, Self& r) {
        baseFields(io, r);
        io(r.referenceSeconds);
        for (auto* vector : {&r.position, &r.velocity, &r.acceleration}) {
            for (auto& component : *vector) io(component);
        }
        io(r.tauN);
        io(r.deltaTauN);
        io(r.gammaN);
        io(r.health);
        io(r.tb);
        io(r.frequencyNumber);
        io(r.dayNumber);
        io(r.frameTime);
        io(r.modification);
        io(r.accuracyIndex);
        io(r.referenceSecondsOfDay);
        io(r.ageOfData);
        for (auto* word : {&r.fourYearInterval, &r.controlFlags, &r.healthFlags, &r.recordFlags}) io(*word);
    }
};

}  // namespace CALN
