#pragma once

#include <array>
#include <cstdint>
#include <optional>

#include "formats/rinex/ObservationHeader.h"
#include "halvex/platform/caln/Frequency.h"
#include "halvex/platform/caln/SatelliteSystem.h"

namespace halvex::rtcm3 {

/// Band digit and tracking attribute of a RINEX 3 observation code (RINEX 4.01, tables 11 to 17), with its carrier.
struct Signal {
    char band = 0;  ///< 0: none
    char attribute = 0;
    CALN::eCALFREQUENCY carrier = CALN::eCALFREQUENCY_L1;
    /// What no carrier of the house is: the S band of NavIC, 2492.028 MHz.
    bool sBand = false;

    friend bool operator==(const Signal&, const Signal&) = default;
};

/// The signal that a bit of an MSM's signal mask stands for, 1 to 32 (RTCM 10403.3, DF395); none for a reserved one.
[[nodiscard]] Signal signalOfMask(CALN::eCALSATSYSTEM system, unsigned id);

/// The signal with that band and attribute.
[[nodiscard]] Signal signalOf(CALN::eCALSATSYSTEM system, char band, char attribute);

/// Wavelength [m]; 0 for none and for G1 and G2 of a satellite whose channel is not known.
[[nodiscard]] double wavelengthOf(const Signal& signal, std::optional<int> glonassChannel);

/// Least time that a phase has been tracked without a slip, and less than what it has been [ms]; `below` is 0 when
/// there is no such limit.
struct LockTime {
    double atLeast = 0.0;
    double below = 0.0;
};
[[nodiscard]] LockTime lockTimeMsm(unsigned indicator);          ///< DF402, four bits
[[nodiscard]] LockTime lockTimeExtended(unsigned indicator);     ///< DF407, ten bits
[[nodiscard]] LockTime lockTimeObservation(unsigned indicator);  ///< DF013, DF019, DF043, DF049: seven bits

}  // namespace halvex::rtcm3
