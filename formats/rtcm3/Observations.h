#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "formats/rtcm3/EpochTime.h"
#include "formats/rtcm3/FrameReader.h"
#include "formats/rtcm3/Signals.h"

namespace halvex::rtcm3 {

/// What one satellite's signal measured. Lengths in metres: who knows the wavelength makes cycles of them.
struct Measurement {
    CALN::SCalSatID satellite;
    Signal signal;
    std::optional<int> glonassChannel;
    std::optional<double> pseudorange;  ///< [m]
    std::optional<double> phaseRange;   ///< [m], grows as the pseudorange does
    std::optional<double> rangeRate;    ///< [m/s], grows away from the station
    std::optional<double> cno;          ///< [dB-Hz]
    LockTime lock;
    bool halfCycle = false;  ///< the phase may be off by half a cycle
    /// The phase range may step by this many cycles, with no slip, to stay near the pseudorange; 0: it does not.
    int phaseStep = 0;
};

/// One message of observations.
struct ObservationMessage {
    CALN::eCALSATSYSTEM system = CALN::eCALSATSYSTEM_NONE;
    unsigned station = 0;
    EpochScale scale = EpochScale::gpsWeek;
    std::int64_t milliseconds = 0;  ///< of the week or day
    int dayOfWeek = 0;              ///< of glonassInWeek: 0 Sunday
    bool more = false;              ///< another message of the same epoch follows
    std::vector<Measurement> measurements;
    std::uint32_t unknownSatellites = 0;  ///< left out: no such satellite
    std::uint32_t unknownSignals = 0;     ///< values left out: a reserved signal
};

/// The system of an MSM (1071 to 1077 GPS, 1081 GLONASS, 1091 Galileo, 1101 SBAS, 1111 QZSS, 1121 BeiDou, 1131 NavIC)
/// and its kind 1 to 7; none for another number.
struct MsmKind {
    CALN::eCALSATSYSTEM system = CALN::eCALSATSYSTEM_NONE;
    unsigned kind = 0;
};
[[nodiscard]] MsmKind msmKindOf(unsigned number);

/// Reads MSM4, 5, 6 and 7. False when it is none of these, or cut off, or its time lies outside of a week: `message`
/// then means nothing.
[[nodiscard]] bool readMsm(const Frame& frame, ObservationMessage& message);

/// The satellite of a number of six bits in a message of GPS (1 to 32; 40 to 58 are PRN 120 to 138 of SBAS) or GLONASS.
/// RTCM 10403.3, DF009, DF038. Its number is 0 when there is none.
[[nodiscard]] CALN::SCalSatID satelliteOf(CALN::eCALSATSYSTEM system, unsigned number);

/// Reads 1002, 1004, 1010 and 1012. Messages 1001, 1003, 1009 and 1011 leave the whole milliseconds of the range out:
/// no pseudorange comes of them.
[[nodiscard]] bool readLegacyObservations(const Frame& frame, ObservationMessage& message);

}  // namespace halvex::rtcm3
