#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "halvex/platform/caln/SatelliteSystem.h"

/// Contents of the network RTK messages between a master and an auxiliary station (RTCM 10403.3, messages 1014 to 1016,
/// 1037 and 1038), as plain records: trivially copyable, without hidden padding, members reserved for it are 0. Saved
/// as their memory image, whose size never changes.
namespace CALN {

/// Network auxiliary station data, message 1014: where an auxiliary station stands, seen from the master.
struct Msg1014T {
    std::uint16_t messageNumber = 1014;
    std::uint8_t networkId = 0;
    std::uint8_t subnetworkId = 0;       ///< 0 to 15
    std::uint8_t auxiliaryStations = 0;  ///< how many the master has, 0 to 31
    std::array<std::uint8_t, 3> reserved{};
    std::uint16_t masterStation = 0;     ///< 0 to 4095
    std::uint16_t auxiliaryStation = 0;  ///< 0 to 4095
    std::int32_t deltaLatitude = 0;      ///< auxiliary minus master [25e-6 degrees]
    std::int32_t deltaLongitude = 0;     ///< [25e-6 degrees]
    std::int32_t deltaHeight = 0;        ///< [mm]

    friend bool operator==(const Msg1014T&, const Msg1014T&) = default;
};
static_assert(sizeof(Msg1014T) == 24 && std::has_unique_object_representations_v<Msg1014T>);

/// Ionospheric carrier-phase difference of one satellite, messages 1015 and 1037.
struct IonoDifferenceT {
    std::uint8_t satId = 0;            ///< number within the system
    std::uint8_t ambiguityStatus = 0;  ///< 1 integers right on L1 and L2, 2 for the wide lane, 3 uncertain
    std::uint8_t nonSyncCount = 0;     ///< counts up, modulo 8, with every unresolved cycle slip
    std::uint8_t reserved = 0;
    std::int32_t difference = 0;  ///< auxiliary minus master [0.5 mm]

    friend bool operator==(const IonoDifferenceT&, const IonoDifferenceT&) = default;
};

/// Geometric carrier-phase difference of one satellite, messages 1016 and 1038.
struct GeoDifferenceT {
    std::uint8_t satId = 0;            ///< number within the system
    std::uint8_t ambiguityStatus = 0;  ///< as in IonoDifferenceT
    std::uint8_t nonSyncCount = 0;
    std::uint8_t reserved = 0;
    std::uint32_t issueOfData = 0;  ///< of the ephemeris that the difference was made with
    std::int32_t difference = 0;    ///< auxiliary minus master [0.5 mm]

    friend bool operator==(const GeoDifferenceT&, const GeoDifferenceT&) = default;
};

/// The correction differences of one epoch and one pair of stations. A message counts its satellites in four bits; here
/// is room for two messages' worth.
template <class Difference>
struct CorrectionDifferencesT {
    static constexpr std::size_t kMostSatellites = 30;

    std::uint16_t messageNumber = 0;
    eCALSATSYSTEM system = eCALSATSYSTEM_NONE;  ///< GPS or GLONASS
    std::uint8_t networkId = 0;
    std::uint8_t subnetworkId = 0;     ///< 0 to 15
    std::uint8_t multipleMessage = 0;  ///< 1: more messages of this epoch follow
    std::uint8_t satelliteCount = 0;   ///< of `satellites`, from the first on
    std::uint8_t reserved = 0;
    std::uint16_t masterStation = 0;     ///< 0 to 4095
    std::uint16_t auxiliaryStation = 0;  ///< 0 to 4095
    std::int32_t epochDay = 0;           ///< MJD, GPS time
    double epochMilliseconds = 0.0;      ///< of that day
    std::array<Difference, kMostSatellites> satellites{};

    friend bool operator==(const CorrectionDifferencesT&, const CorrectionDifferencesT&) = default;
};

using IonoMsgT = CorrectionDifferencesT<IonoDifferenceT>;
using GeoMsgT = CorrectionDifferencesT<GeoDifferenceT>;
static_assert(sizeof(IonoMsgT) == 264 && offsetof(IonoMsgT, epochMilliseconds) == 16 &&
              std::has_unique_object_representations_v<IonoDifferenceT>);
static_assert(sizeof(GeoMsgT) == 384 && offsetof(GeoMsgT, satellites) == 24 &&
              std::has_unique_object_representations_v<GeoDifferenceT>);

}  // namespace CALN
