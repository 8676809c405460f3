#pragma once

#include <array>
#include <compare>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "halvex/platform/caln/SatelliteSystem.h"
#include "halvex/platform/mjd/MjdTime.h"

namespace halvex::rinex {

/// Observation code of RINEX 3 and 4: type (C pseudorange [m], L phase [cycle], D Doppler [Hz], S signal strength,
/// X channel, I ionosphere), band digit and tracking attribute, as "C1W". RINEX 4.01, tables 11 to 17.
struct ObservationCode {
    char type = ' ';
    char band = ' ';
    char attribute = ' ';

    [[nodiscard]] std::string text() const { return {type, band, attribute}; }
    friend bool operator==(const ObservationCode&, const ObservationCode&) = default;
    friend auto operator<=>(const ObservationCode&, const ObservationCode&) = default;
};

/// Time scale of a file's epochs. RINEX 4.01, 4.1.3.
enum class TimeSystem : std::uint8_t { gps, glonass, galileo, beidou, qzss, navic };

/// Phase shift of a signal, already applied to its phases (RINEX 4.01, 9.1).
struct PhaseShift {
    CALN::eCALSATSYSTEM system = CALN::eCALSATSYSTEM_NONE;
    std::optional<ObservationCode> code;  ///< none: the system's phases are not aligned or unknown
    std::optional<double> cycles;
    std::vector<CALN::SCalSatID> satellites;  ///< empty: all of the system
};

/// Header of a RINEX observation file, and what event records changed since. Plain value.
struct ObservationHeader {
    double version = 3.05;
    char fileSystem = 'M';  ///< system letter, M for mixed
    std::string program, runBy, date;
    std::vector<std::string> comments;
    std::string markerName, markerNumber, markerType;
    std::string observer, agency;
    std::string receiverNumber, receiverType, receiverVersion;
    std::string antennaNumber, antennaType;
    std::optional<std::array<double, 3>> position;      ///< approximate marker position, Earth-fixed [m]
    std::optional<std::array<double, 3>> antennaDelta;  ///< height, east, north of the antenna reference point [m]
    double interval = 0.0;                              ///< [s]; 0: not given
    TimeSystem timeSystem = TimeSystem::gps;
    std::optional<SMjdTime> firstObservation, lastObservation;  ///< in the file's time system
    bool clockOffsetApplied = false;
    std::string signalStrengthUnit;

    /// For each system code the columns of the file in their order. Types of RINEX 2 are given as the RINEX 3 code that
    /// they are converted to (see ObservationCodes.h); one that has none keeps a blank attribute.
    std::array<std::vector<ObservationCode>, CALN::kSystemSlots> codes;
    /// What the values of a column are divided by, parallel to codes: 1, 10, 100 or 1000.
    std::array<std::vector<double>, CALN::kSystemSlots> scaleFactors;
    std::vector<PhaseShift> phaseShifts;
    std::map<CALN::SCalSatID, int> glonassChannels;
    std::map<ObservationCode, double> glonassBiases;  ///< code-phase bias of C1C, C1P, C2C, C2P [m]
    std::optional<int> leapSeconds;                   ///< GPS - UTC [s] (BDT - UTC for files in BeiDou time)
    /// RINEX 2 wavelength factors on L1 and L2 (1 full, 2 half cycle): the default under number 0, then by GPS
    /// satellite.
    std::map<unsigned char, std::array<int, 2>> wavelengthFactors;

    std::uint32_t unknownRecords = 0;  ///< header lines with a label this reader does not know
};

}  // namespace halvex::rinex
