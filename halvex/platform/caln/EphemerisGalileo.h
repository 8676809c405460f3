#pragma once

#include "halvex/platform/caln/EphemerisRecord.h"

namespace CALN {

/// Galileo ephemeris of F/NAV or I/NAV pages. Galileo OS SIS ICD 2.1, 4 and 5. Weeks are GPS weeks (Galileo's plus
/// 1024). Persisted, version 1.
struct HALVEX_EXPORT CALX_SAT_EPHEMERIS_GALILEO : CALX_SAT_EPHEMERIS_COMMON,
                                                  halvex::PersistedRecord<CALX_SAT_EPHEMERIS_GALILEO> {
    static constexpr unsigned char kFNav = 1;
    static constexpr unsigned char kINav = 2;
    static constexpr unsigned char kReceivedOnBoth = 1;
    static constexpr unsigned char kReceivedOnE1B = 2;
    static constexpr unsigned char kReceivedOnE5b = 3;
    static constexpr unsigned char kNoSisa = 255;

    /// State of one signal.
    struct SignalStatus {
        unsigned char dataValidity = 0;  ///< DVS: 0 valid, 1 working without guarantee
        unsigned char health = 0;        ///< HS: 0 good, 1 out of service, 2 will be out of service, 3 in test

        [[nodiscard]] bool isGood() const { return dataValidity == 0 && health == 0; }
        friend bool operator==(const SignalStatus&, const SignalStatus&) = default;
    };

    unsigned short iodNav = 0;       ///< issue of data, ten bits
    unsigned char sisaIndex = 0;     ///< signal-in-space accuracy; kNoSisa: no prediction
    unsigned short dataSources = 0;  ///< clock pair and pages as RINEX 4.01 numbers them (table A8)
    double bgdE5aE1 = 0.0;           ///< broadcast group delay E1, E5a [s]
    double bgdE5bE1 = 0.0;           ///< broadcast group delay E1, E5b [s]
    SignalStatus e1b, e5a, e5b;
    unsigned short pageType1Week = 0;  ///< when page type 1 was sent, GPS week
    double pageType1Seconds = 0.0;     ///< and second of week

    using CALX_SAT_EPHEMERIS_COMMON::GetReferenceTime;
    using CALX_SAT_EPHEMERIS_COMMON::GetRefTimeClock;
    using CALX_SAT_EPHEMERIS_COMMON::GetRefTimeOrbit;
    /// The number; the raw byte holds it plus 56.
    [[nodiscard]] unsigned int GetSatId() const { return static_cast<unsigned char>(satId - 56U); }
    [[nodiscard]] unsigned int GetNavigationType() const { return navType; }
    [[nodiscard]] SMjdTime GetPageType1Time() const { return {int{pageType1Week}, pageType1Seconds}; }
    /// Good and valid on the signals that the message came on and stands for: E5a for F/NAV, E1-B and E5b for I/NAV
    /// (the one of them when it was received on one alone).
    [[nodiscard]] bool isHealthy() const;
    /// Accuracy that the index stands for [m]; negative for none. Galileo OS SIS ICD, table 92.
    [[nodiscard]] double GetSisa() const;
    /// The smallest index that stands for at least `metres`; kNoSisa when negative or above 6 m.
    [[nodiscard]] static unsigned char indexOfSisa(double metres);

    friend bool operator==(const CALX_SAT_EPHEMERIS_GALILEO&, const CALX_SAT_EPHEMERIS_GALILEO&) = default;

    static constexpr std::uint16_t kSavedVersion = 1;
    template <class Io, class Self>
    static void fields(Io& io, Self& r) {
        commonFields(io, r);
        io(r.iodNav);
        io(r.sisaIndex);
        io(r.dataSources);
        io(r.bgdE5aE1);
        io(r.bgdE5bE1);
        for (auto* signal : {&r.e1b, &r.e5a, &r.e5b}) {
            io(signal->dataValidity);
            io(signal->health);
        }
        io(r.pageType1Week);
        io(r.pageType1Seconds);
    }
};

}  // namespace CALN
