#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <type_traits>

/// Contents of the messages about a network's reference, as plain records: trivially copyable, without hidden padding,
/// members reserved for it are 0. Saved as their memory image, whose size never changes.

/// Correction gradients of one satellite around the reference station (area correction parameters).
struct POS_REF_GRADIENTS {
    std::uint8_t satId = 0;          ///< number within the system
    std::uint8_t issueOfData = 0;    ///< of the ephemeris that the gradients belong to
    std::int16_t geometryNorth = 0;  ///< [0.01 ppm]
    std::int16_t geometryEast = 0;
    std::int16_t ionosphereNorth = 0;  ///< on the L1 carrier [0.01 ppm]
    std::int16_t ionosphereEast = 0;

    friend bool operator==(const POS_REF_GRADIENTS&, const POS_REF_GRADIENTS&) = default;
};

/// Area correction parameters (FKP) of an epoch: RTCM 10403.3, messages 1034 (GPS) and 1035 (GLONASS), and message 59
/// of RTCM version 2 that carried them before.
struct POS_REF_VR_CORRECTION {
    static constexpr std::size_t kMostSatellites = 18;

    std::int32_t messageNumber = 0;   ///< 59, 1034 or 1035
    std::uint16_t stationId = 0;      ///< of the reference station, 0 to 4095
    std::uint8_t system = 0;          ///< 1 GPS, 2 GLONASS
    std::uint8_t satelliteCount = 0;  ///< of `satellites`, from the first on
    double epochMilliseconds = 0.0;   ///< of epochDay
    std::int32_t epochDay = 0;        ///< MJD, GPS time
    std::array<POS_REF_GRADIENTS, kMostSatellites> satellites{};

    friend bool operator==(const POS_REF_VR_CORRECTION&, const POS_REF_VR_CORRECTION&) = default;
};
static_assert(sizeof(POS_REF_VR_CORRECTION) == 200 && offsetof(POS_REF_VR_CORRECTION, satellites) == 20 &&
              std::has_unique_object_representations_v<POS_REF_GRADIENTS>);

/// Where the physical reference station stands behind corrections that are made for another place: RTCM 10403.3,
/// message 1032.
struct POS_REF_PHYS_REFERENCE {
    std::uint16_t messageNumber = 1032;
    std::uint16_t stationId = 0;          ///< of the corrections, 0 to 4095
    std::uint16_t physicalStationId = 0;  ///< of the station that stands there, 0 to 4095
    std::uint8_t itrfYear = 0;            ///< realisation of the frame, 0 when not said
    std::uint8_t reserved = 0;
    double x = 0.0;  ///< Earth-fixed, of the antenna reference point [m]
    double y = 0.0;
    double z = 0.0;

    friend bool operator==(const POS_REF_PHYS_REFERENCE&, const POS_REF_PHYS_REFERENCE&) = default;
};
static_assert(sizeof(POS_REF_PHYS_REFERENCE) == 32 && offsetof(POS_REF_PHYS_REFERENCE, x) == 8);
