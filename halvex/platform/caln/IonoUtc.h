#pragma once

#include <array>
#include <cstdint>

#include "halvex/platform/Export.h"
#include "halvex/platform/kernix/RecordCodec.h"

namespace CALN {

/// Ionosphere and UTC parameters of GPS: Klobuchar coefficients and the relation of GPS time to UTC with its announced
/// leap second. IS-GPS-200, 20.3.3.5.2.4, 20.3.3.5.2.5 and table 20-IX. Plain value. Persisted, version 1.
struct CALX_IONO_UTC : halvex::PersistedRecord<CALX_IONO_UTC> {
    unsigned char source = 0;       ///< eCALORBITSOURCE and kSimulatedSource; 0: not filled
    std::array<double, 4> alpha{};  ///< [s, s/semicircle, s/semicircle^2, s/semicircle^3]
    std::array<double, 4> beta{};   ///< the same of the period
    double a0 = 0.0;                ///< GPS - UTC polynomial: constant [s]
    double a1 = 0.0;                ///< and rate [s/s]
    unsigned int wnt = 0;           ///< full GPS week of tot
    unsigned int tot = 0;           ///< reference time [s of week]
    unsigned int word1 = 0;         ///< of the host, carried
    unsigned int word2 = 0;         ///< of the host, carried
    unsigned char deltaTls = 0;     ///< current leap seconds
    unsigned char deltaTlsf = 0;    ///< leap seconds after the announced change
    unsigned int wnLsf = 0;         ///< full GPS week of the change
    unsigned char dn = 0;           ///< day of that week at whose end it happens, Sunday = 1

    friend bool operator==(const CALX_IONO_UTC&, const CALX_IONO_UTC&) = default;

    static constexpr std::uint16_t kSavedVersion = 1;
    template <class Io, class Self>
    static void fields(Io& io, Self& r) {
        io(r.source);
        for (auto* set : {&r.alpha, &r.beta}) {
            for (auto& coefficient : *set) io(coefficient);
        }
        io(r.a0);
        io(r.a1);
        for (auto* word : {&r.wnt, &r.tot, &r.word1, &r.word2}) io(*word);
        io(r.deltaTls);
        io(r.deltaTlsf);
        io(r.wnLsf);
        io(r.dn);
    }
};

/// System time of GLONASS (GLONASS ICD 5.1, 4.4 and table 4.3). Plain value. Persisted, version 1.
struct CALX_CLOCK_GLONASS : halvex::PersistedRecord<CALX_CLOCK_GLONASS> {
    bool available = false;              ///< the record has been filled
    unsigned short dayNumber = 0;        ///< N: day within the four-year interval of the terms
    unsigned int frameTime = 0;          ///< time of the frame that brought them [s of the Moscow day]
    unsigned char fourYearInterval = 0;  ///< N_4
    unsigned char leapNotice = 0;        ///< KP: leap second at the quarter's end, 0 none, 1 +1 s, 3 -1 s
    unsigned char source = 0;            ///< eCALORBITSOURCE and kSimulatedSource
    unsigned char slot = 0;              ///< of the satellite that sent them
    unsigned short almanacDay = 0;       ///< N_A
    double tauC = 0.0;                   ///< GLONASS time to UTC(SU) [s]
    double tauGps = 0.0;                 ///< fractional difference of GPS to GLONASS time [s]
    double b1 = 0.0;                     ///< UT1 - UTC(SU) [s]
    double b2 = 0.0;                     ///< and its daily change [s/d]

    friend bool operator==(const CALX_CLOCK_GLONASS&, const CALX_CLOCK_GLONASS&) = default;

    static constexpr std::uint16_t kSavedVersion = 1;
    template <class Io, class Self>
    static void fields(Io& io, Self& r) {
        io(r.available);
        io(r.dayNumber);
        io(r.frameTime);
        for (auto* byte : {&r.fourYearInterval, &r.leapNotice, &r.source, &r.slot}) io(*byte);
        io(r.almanacDay);
        for (auto* value : {&r.tauC, &r.tauGps, &r.b1, &r.b2}) io(*value);
    }
};

}  // namespace CALN
