#pragma once

#include <array>
#include <compare>
#include <cstdint>
#include <string_view>

#include "halvex/platform/Export.h"

namespace CALN {

/// Satellite systems by code. As a bit (satellite types, combinations, disable masks) a system is 1 << (code - 1).
enum eCALSATSYSTEM : std::uint8_t {
    eCALSATSYSTEM_NONE = 0,
    eCALSATSYSTEM_GPS = 1,
    eCALSATSYSTEM_GLONASS = 2,
    eCALSATSYSTEM_GALILEO = 3,
    eCALSATSYSTEM_SBAS = 4,
    eCALSATSYSTEM_BEIDOU = 5,
    eCALSATSYSTEM_QZSS = 6,
    eCALSATSYSTEM_NAVIC = 7,
    eCALSATSYSTEM_RESERVED = 8,
};

/// Length of an array with a slot for each system code; slot 0 means none.
inline constexpr int kSystemSlots = 9;

/// A satellite by system and number. Plain value.
struct SCalSatID {
    constexpr SCalSatID() = default;
    constexpr SCalSatID(eCALSATSYSTEM satelliteSystem, unsigned char satelliteNumber)
        : system(satelliteSystem), number(satelliteNumber) {}

    eCALSATSYSTEM system = eCALSATSYSTEM_NONE;
    unsigned char number = 0;  ///< 1-based within the system; SBAS: PRN - 100, QZSS: 1 for J01

    friend constexpr bool operator==(const SCalSatID&, const SCalSatID&) = default;
    /// By system, then by number.
    friend constexpr auto operator<=>(const SCalSatID&, const SCalSatID&) = default;
};

}  // namespace CALN

namespace halvex {

/// What the house knows of one satellite system; the one place where it stands.
struct SatelliteSystem {
    CALN::eCALSATSYSTEM code;
    std::string_view name;
    char letter;              ///< of RINEX file and satellite names
    unsigned char maxNumber;  ///< satellites are numbered 1 to this
    /// How far from its reference time, on either side, an ephemeris is used [min]; 0 without any.
    double ephemerisMinutes;
    /// How much faster an ephemeris gets worse before its reference time than behind it. Galileo and BeiDou make theirs
    /// for the hours that follow: against precise orbits Galileo's are off by twice as much an hour ahead, BeiDou's
    /// nearly two hours ahead, and neither two hours behind. Chosen from one day's orbits (docs/orbits.md).
    double costAhead;

    [[nodiscard]] constexpr std::uint8_t typeBit() const { return static_cast<std::uint8_t>(1U << (code - 1U)); }
};

/// The seven systems in the order of their codes. Numbers: RINEX 4.01, 3.5 (SBAS PRN - 100, QZSS PRN - 192).
inline constexpr std::array<SatelliteSystem, 7> kSatelliteSystems{{
    {CALN::eCALSATSYSTEM_GPS, "GPS", 'G', 32, 240.0, 1.0},
    {CALN::eCALSATSYSTEM_GLONASS, "GLONASS", 'R', 24, 60.0, 1.0},
    {CALN::eCALSATSYSTEM_GALILEO, "Galileo", 'E', 36, 180.0, 8.0},
    {CALN::eCALSATSYSTEM_SBAS, "SBAS", 'S', 39, 0.0, 1.0},
    {CALN::eCALSATSYSTEM_BEIDOU, "BeiDou", 'C', 63, 120.0, 2.0},
    {CALN::eCALSATSYSTEM_QZSS, "QZSS", 'J', 10, 120.0, 1.0},
    {CALN::eCALSATSYSTEM_NAVIC, "NavIC", 'I', 14, 120.0, 1.0},
}};

/// The system with that code, type bit or letter; null when there is none.
[[nodiscard]] constexpr const SatelliteSystem* systemOfCode(int code) {
    return code >= 1 && code <= static_cast<int>(kSatelliteSystems.size())
               ? &kSatelliteSystems[static_cast<std::size_t>(code - 1)]
               : nullptr;
}
[[nodiscard]] constexpr const SatelliteSystem* systemOfTypeBit(std::uint8_t bit) {
    for (const SatelliteSystem& system : kSatelliteSystems) {
        if (system.typeBit() == bit) return &system;
    }
    return nullptr;
}
[[nodiscard]] constexpr const SatelliteSystem* systemOfLetter(char letter) {
    for (const SatelliteSystem& system : kSatelliteSystems) {
        if (system.letter == letter) return &system;
    }
    return nullptr;
}

/// Satellites of all systems within their maxima; as an array index each has a place, see satelliteIndex.
inline constexpr int kSatellites = [] {
    int sum = 0;
    for (const SatelliteSystem& system : kSatelliteSystems) sum += system.maxNumber;
    return sum;
}();

/// Place of a satellite among all, 0 to kSatellites - 1, by system and number; -1 for what is none.
[[nodiscard]] constexpr int satelliteIndex(const CALN::SCalSatID& id) {
    int before = 0;
    for (const SatelliteSystem& system : kSatelliteSystems) {
        if (system.code == id.system) {
            return id.number >= 1 && id.number <= system.maxNumber ? before + id.number - 1 : -1;
        }
        before += system.maxNumber;
    }
    return -1;
}
/// The satellite at that place.
[[nodiscard]] constexpr CALN::SCalSatID satelliteAt(int index) {
    for (const SatelliteSystem& system : kSatelliteSystems) {
        if (index < system.maxNumber) return {system.code, static_cast<unsigned char>(index + 1)};
        index -= system.maxNumber;
    }
    return {};
}

}  // namespace halvex

namespace CALN {

/// Largest satellite number of a system; 0 for what is none.
[[nodiscard]] constexpr unsigned char getMaxSatNumber(eCALSATSYSTEM system) {
    for (const halvex::SatelliteSystem& entry : halvex::kSatelliteSystems) {
        if (entry.code == system) return entry.maxNumber;
    }
    return 0;
}

/// Length of the time around its reference in which a system's ephemeris is the one to use [min].
[[nodiscard]] constexpr double getEphemerisTimeframeMinutes(eCALSATSYSTEM system) {
    for (const halvex::SatelliteSystem& entry : halvex::kSatelliteSystems) {
        if (entry.code == system) return entry.ephemerisMinutes;
    }
    return 0.0;
}

/// How old an ephemeris is to be taken for at an instant `seconds` behind (before: negative) its reference time [s].
[[nodiscard]] constexpr double getEffectiveAge(eCALSATSYSTEM system, double seconds) {
    if (seconds >= 0.0) return seconds;
    for (const halvex::SatelliteSystem& entry : halvex::kSatelliteSystems) {
        if (entry.code == system) return -seconds * entry.costAhead;
    }
    return -seconds;
}

}  // namespace CALN

/// The table's maxima under the name that the library's callers use.
class CSatelliteSystem {
public:
    [[nodiscard]] static constexpr unsigned char GetMaxSatelliteNumber(CALN::eCALSATSYSTEM system) {
        return CALN::getMaxSatNumber(system);
    }
};
