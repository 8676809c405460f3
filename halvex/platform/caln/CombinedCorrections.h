#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <type_traits>
#include <vector>

#include "halvex/platform/caln/SatelliteSystem.h"

/// Combined geometric and ionospheric correction differences between a master and an auxiliary station, as the network
/// messages 1017 and 1039 of RTCM 10403.3 carry them, and pseudorange offsets of GLONASS. Plain values.
namespace CALN {

/// Head of a network message: trivially copyable, 20 bytes without hidden padding.
struct MsgHeaderT {
    std::uint8_t flag = 0;  ///< 1: sent although it may be empty, see MsgGNSS17T
    std::uint8_t reserved = 0;
    std::uint8_t subnetwork = 0;         ///< 0 to 15 (DF072)
    std::uint8_t multipleMessage = 0;    ///< 1: more messages of this epoch follow (DF066)
    std::uint16_t masterStation = 0;     ///< 0 to 4095 (DF060)
    std::uint16_t auxiliaryStation = 0;  ///< 0 to 4095 (DF061)
    std::uint32_t epoch = 0;             ///< GPS time of week, GLONASS time of day [0.1 s] (DF065, DF233)
    std::uint16_t messageNumber = 0;     ///< 1017, 1039, 1071; 0: none is laid down for the system
    std::uint8_t satelliteCount = 0;
    std::uint8_t networkId = 0;    ///< DF059
    std::int8_t dpo = 0;           ///< of 1071: difference of the offsets of L1 and L2, rounded [m]
    std::int8_t p1or = 0;          ///< of 1071: the offsets' common part, rounded [m]
    std::uint8_t offsetCount = 0;  ///< of 1071: satellites with an offset
    std::uint8_t reserved2 = 0;

    friend bool operator==(const MsgHeaderT&, const MsgHeaderT&) = default;
};
static_assert(sizeof(MsgHeaderT) == 20 && std::is_trivially_copyable_v<MsgHeaderT> &&
              std::has_unique_object_representations_v<MsgHeaderT> && offsetof(MsgHeaderT, subnetwork) == 2 &&
              offsetof(MsgHeaderT, multipleMessage) == 3 && offsetof(MsgHeaderT, masterStation) == 4);

/// One satellite's differences, auxiliary minus master.
struct IonoGeoEntryT {
    std::uint8_t satId = 0;  ///< number within the system
    eCALSATSYSTEM system = eCALSATSYSTEM_NONE;
    std::uint8_t ambiguityStatus = 0;  ///< 1: integers right on both carriers (DF074)
    std::uint8_t nonSyncCount = 0;     ///< DF075
    std::int32_t geometric = 0;        ///< [0.5 mm] (DF070)
    std::int32_t ionospheric = 0;      ///< [0.5 mm] (DF069)
    std::uint8_t issueOfData = 0;      ///< of the broadcast ephemeris (DF071)
    std::uint8_t reserved = 0;

    friend bool operator==(const IonoGeoEntryT&, const IonoGeoEntryT&) = default;
};

/// Pseudorange offset of one GLONASS satellite before it is coded.
struct ProvIonoGeoGLOPRMsgT {
    unsigned char satId = 0;
    unsigned char value = 0;
    unsigned char issue = 0;  ///< issue of data
    double x = 0.0;           ///< difference of the pseudoranges on L1, auxiliary minus master [m]
    double y = 0.0;           ///< the same on L2 [m]

    friend bool operator==(const ProvIonoGeoGLOPRMsgT&, const ProvIonoGeoGLOPRMsgT&) = default;
};

/// The same, coded.
struct GloPrOffsetT {
    std::uint8_t satId = 0;
    std::uint8_t value = 0;
    std::uint8_t issueOfData = 0;
    std::int16_t residual = 0;  ///< of P1OR [0.02 m]

    friend bool operator==(const GloPrOffsetT&, const GloPrOffsetT&) = default;
};

/// The differences of one system, or the pseudorange offsets of GLONASS.
struct IonoGeoMsgT {
    MsgHeaderT header;
    std::vector<IonoGeoEntryT> entries;
    std::vector<GloPrOffsetT> offsets;

    friend bool operator==(const IonoGeoMsgT&, const IonoGeoMsgT&) = default;
};

/// What a producer hands to the network product for one epoch and one auxiliary station.
struct MsgGNSS17T {
    enum MsgType : std::uint32_t {
        kGps = 1,  ///< QZSS rides along
        kGlonass = 2,
        kGlonassPseudorange = 4,
        kBeidou = 8,
        kGalileo = 16,
    };

    IonoGeoMsgT gps;
    IonoGeoMsgT glonass;
    IonoGeoMsgT glonassPseudorange;
    IonoGeoMsgT galileo;
    IonoGeoMsgT beidou;
    std::uint32_t validTypes =
        0;  ///< MsgType bits: which of them are to be sent, empty ones to say that nothing is there

    void SetValidMsgType(MsgType type) { validTypes |= type; }
    [[nodiscard]] bool IsValidMsgType(MsgType type) const { return (validTypes & type) != 0; }

    friend bool operator==(const MsgGNSS17T&, const MsgGNSS17T&) = default;
};

}  // namespace CALN
