#pragma once

#include <cstdint>
#include <vector>

#include "halvex/platform/Export.h"
#include "halvex/platform/caln/SatelliteSystem.h"
#include "halvex/platform/mjd/MjdTime.h"

/// State-space corrections and corrections of a network ("QT"), as messages. Numbers are integers in the resolution of
/// the RTCM 10403.3 messages that they come in (the unit stands with each), so that a message comes back as it was
/// sent. Plain values, without locks.
namespace CALN {

/// Kind of a correction message; persisted. Where a kind has several codes, they say how it was sent.
enum eCALSSRCorrectionType : std::uint32_t {
    eCALSSR_NONE = 0,
    eCALSSR_ORBIT = 1,
    eCALSSR_ORBIT_COMBINED = 2,  ///< out of a message with orbits and clocks
    eCALSSR_CLOCK = 3,
    eCALSSR_CLOCK_COMBINED = 4,
    eCALSSR_PHASE_BIAS = 5,
    eCALSSR_CODE_BIAS = 6,
    eCALSSR_CODE_BIAS_2 = 7,
    eCALSSR_URA = 8,
    eCALSSR_HIGH_RATE_CLOCK = 9,
    eCALSSR_HIGH_RATE_CLOCK_2 = 10,
    eCALSSR_VERTICAL_IONOSPHERE = 11,
    eCALSSR_SLANT_IONOSPHERE = 12,
    eCALSSR_VERTICAL_TROPOSPHERE = 13,
    eCALSSR_SLANT_TROPOSPHERE = 14,
    eCALSSR_ORBIT_2 = 15,
    eCALSSR_BASE_COORDINATES = 16,
    eCALSSR_SIGNALS = 17,  ///< never saved alone
    eCALSSR_NETWORK_GEOMETRY = 18,
};

/// The first code of the kind that a code stands for; a code that is none stands for itself.
[[nodiscard]] constexpr eCALSSRCorrectionType getFirstCodeOfKind(eCALSSRCorrectionType type) {
    switch (type) {
        case eCALSSR_ORBIT_COMBINED:
        case eCALSSR_ORBIT_2:
            return eCALSSR_ORBIT;
        case eCALSSR_CLOCK_COMBINED:
            return eCALSSR_CLOCK;
        case eCALSSR_CODE_BIAS_2:
            return eCALSSR_CODE_BIAS;
        case eCALSSR_HIGH_RATE_CLOCK_2:
            return eCALSSR_HIGH_RATE_CLOCK;
        default:
            return type;
    }
}

/// A signal of a system, by the number that its corrections carry (RTCM 10403.3, DF380 and its kin: GPS 0 is L1 C/A).
struct SSRSignalID {
    eCALSATSYSTEM system = eCALSATSYSTEM_NONE;
    std::uint8_t signal = 0;

    friend bool operator==(const SSRSignalID&, const SSRSignalID&) = default;
};

/// What all correction messages have in common, and a message without entries.
///
/// Saved form: uint16 version 2, then the members in their order (type uint32, system uint8), then the entries: uint32
/// count, each entry's members in their order, lists in it as uint32 count and their elements. Loading is refused, with
/// the message as it was, for a null or short buffer, another version, the type of another kind, an epoch or a system
/// that is none, or a count that the rest of the buffer cannot hold; any other content is taken. SSRCorrMsgBaseT
/// itself takes every type, and no entries. `used` becomes the bytes read or written, 0 when it fails.
struct HALVEX_EXPORT SSRCorrMsgBaseT {
    eCALSSRCorrectionType type = eCALSSR_NONE;
    eCALSATSYSTEM system = eCALSATSYSTEM_NONE;
    SMjdTime epoch;                    ///< GPS time
    std::int32_t multipleMessage = 0;  ///< not 0: more messages of this epoch follow (DF388)
    std::uint8_t updateInterval = 0;   ///< code of DF391
    std::uint8_t issueOfData = 0;      ///< of the correction set (DF413)
    std::uint16_t provider = 0;        ///< DF414
    std::uint8_t solution = 0;         ///< DF415
    std::uint8_t referenceDatum = 0;   ///< DF375: 0 ITRF, 1 regional
    std::uint8_t igsVersion = 0;       ///< of the format that 4076 has (IGS SSR, IDF002); 0 in messages of RTCM's own
    /// Phase biases keep differences between carriers: 1 where those of the dispersive ones, and those of the
    /// Melbourne-Wuebbena combination, stay as they were from message to message (IGS SSR, IDF032 and IDF033).
    std::uint8_t dispersiveBiasConsistency = 0;
    std::uint8_t melbourneWuebbenaConsistency = 0;

    SSRCorrMsgBaseT() = default;
    SSRCorrMsgBaseT(const SSRCorrMsgBaseT&) = default;
    SSRCorrMsgBaseT& operator=(const SSRCorrMsgBaseT&) = default;
    virtual ~SSRCorrMsgBaseT();

    /// The type that is set or, without one, the first code of the kind.
    [[nodiscard]] virtual eCALSSRCorrectionType GetSSRType() const;
    [[nodiscard]] virtual std::uint64_t getSize() const;
    virtual void saveData(unsigned char* buffer, std::uint64_t length, std::uint64_t& used) const;
    virtual bool loadData(const unsigned char* buffer, std::uint64_t length, std::uint64_t& used);
    /// Appends the satellites of the entries, in their order.
    virtual void getSatIDs(std::vector<SCalSatID>& satellites) const;

protected:
    bool equals(const SSRCorrMsgBaseT& other) const;
};

/// A message of one kind: the common part and a list of entries. `Kind` names the entry's fields and the kind's type.
template <class Kind>
struct HALVEX_EXPORT SSRMessageT : virtual SSRCorrMsgBaseT {
    using Entry = typename Kind::Entry;
    std::vector<Entry> entries;

    [[nodiscard]] eCALSSRCorrectionType GetSSRType() const override;
    [[nodiscard]] std::uint64_t getSize() const override;
    void saveData(unsigned char* buffer, std::uint64_t length, std::uint64_t& used) const override;
    bool loadData(const unsigned char* buffer, std::uint64_t length, std::uint64_t& used) override;
    void getSatIDs(std::vector<SCalSatID>& satellites) const override;

    friend bool operator==(const SSRMessageT& left, const SSRMessageT& right) {
        return left.equals(right) && left.entries == right.entries;
    }
};

/// Orbit corrections (1057 and kin): to be taken off the broadcast position.
struct SSROrbitKind {
    static constexpr eCALSSRCorrectionType kType = eCALSSR_ORBIT;
    struct Entry {
        SCalSatID satId;
        std::uint32_t issueOfData = 0;    ///< of the broadcast ephemeris that they belong to
        std::uint16_t ephemerisTime = 0;  ///< reference time of that ephemeris modulo 8192 s: BeiDou toe [8 s], SBAS t0
                                          ///< [16 s]; 0 of the others, which are told by their issue alone
        std::int32_t radial = 0;          ///< [0.1 mm]
        std::int32_t alongTrack = 0;      ///< [0.4 mm]
        std::int32_t crossTrack = 0;      ///< [0.4 mm]
        std::int32_t radialRate = 0;      ///< [0.001 mm/s]
        std::int32_t alongTrackRate = 0;  ///< [0.004 mm/s]
        std::int32_t crossTrackRate = 0;  ///< [0.004 mm/s]
        friend bool operator==(const Entry&, const Entry&) = default;
    };
};
/// Clock corrections (1058 and kin): c0 + c1 t + c2 t^2, to be added to the broadcast clock.
struct SSRClockKind {
    static constexpr eCALSSRCorrectionType kType = eCALSSR_CLOCK;
    struct Entry {
        SCalSatID satId;
        std::int32_t c0 = 0;  ///< [0.1 mm]
        std::int32_t c1 = 0;  ///< [0.001 mm/s]
        std::int32_t c2 = 0;  ///< [0.00002 mm/s^2]
        friend bool operator==(const Entry&, const Entry&) = default;
    };
};
/// High-rate clock corrections (1062 and kin), on top of the clock corrections.
struct SSRHighRateClockKind {
    static constexpr eCALSSRCorrectionType kType = eCALSSR_HIGH_RATE_CLOCK;
    struct Entry {
        SCalSatID satId;
        std::int32_t correction = 0;  ///< [0.1 mm]
        friend bool operator==(const Entry&, const Entry&) = default;
    };
};
/// Code biases (1059 and kin), to be added to a pseudorange.
struct SSRCodeBiasKind {
    static constexpr eCALSSRCorrectionType kType = eCALSSR_CODE_BIAS;
    struct Bias {
        std::uint8_t signal = 0;  ///< as in SSRSignalID
        std::int16_t bias = 0;    ///< [0.01 m]
        friend bool operator==(const Bias&, const Bias&) = default;
    };
    struct Entry {
        SCalSatID satId;
        std::vector<Bias> biases;
        friend bool operator==(const Entry&, const Entry&) = default;
    };
};
/// Phase biases (1265 and kin), to be added to a carrier phase.
struct SSRPhaseBiasKind {
    static constexpr eCALSSRCorrectionType kType = eCALSSR_PHASE_BIAS;
    struct Bias {
        std::uint8_t signal = 0;                ///< as in SSRSignalID
        std::uint8_t integer = 0;               ///< 1: the ambiguity of the signal is an integer
        std::uint8_t wideLane = 0;              ///< integer group of the wide lane, 0 to 3
        std::uint8_t discontinuityCounter = 0;  ///< counts up when the bias jumps
        std::int32_t bias = 0;                  ///< [0.1 mm]
        friend bool operator==(const Bias&, const Bias&) = default;
    };
    struct Entry {
        SCalSatID satId;
        std::uint16_t yawAngle = 0;  ///< [semicircle / 256]
        std::int16_t yawRate = 0;    ///< [semicircle/s / 8192]
        std::vector<Bias> biases;
        friend bool operator==(const Entry&, const Entry&) = default;
    };
};
/// User range accuracies (1061 and kin).
struct SSRURAKind {
    static constexpr eCALSSRCorrectionType kType = eCALSSR_URA;
    struct Entry {
        SCalSatID satId;
        std::uint8_t ura = 0;  ///< class in the upper three bits, value in the lower three (DF389)
        friend bool operator==(const Entry&, const Entry&) = default;
    };
};
/// Which signals a correction set speaks of.
struct SSRSignalKind {
    static constexpr eCALSSRCorrectionType kType = eCALSSR_SIGNALS;
    struct Entry {
        SCalSatID satId;  ///< number 0: all of the system
        SSRSignalID signal;
        friend bool operator==(const Entry&, const Entry&) = default;
    };
};
/// Where the base stations of the network stand. The satellite of an entry is none, here and in the other kinds that
/// are not about satellites.
struct QTBaseCoordsKind {
    static constexpr eCALSSRCorrectionType kType = eCALSSR_BASE_COORDINATES;
    struct Entry {
        SCalSatID satId;
        std::uint32_t stationId = 0;
        std::int64_t x = 0;  ///< Earth-fixed [0.1 mm]
        std::int64_t y = 0;
        std::int64_t z = 0;
        friend bool operator==(const Entry&, const Entry&) = default;
    };
};
/// Troposphere over a station.
struct QTVertTropoKind {
    static constexpr eCALSSRCorrectionType kType = eCALSSR_VERTICAL_TROPOSPHERE;
    struct Entry {
        SCalSatID satId;
        std::uint32_t stationId = 0;
        std::int32_t hydrostaticDelay = 0;  ///< in the zenith [0.1 mm]
        std::int32_t wetDelay = 0;          ///< in the zenith [0.1 mm]
        std::int32_t gradientNorth = 0;     ///< [0.1 mm]
        std::int32_t gradientEast = 0;
        friend bool operator==(const Entry&, const Entry&) = default;
    };
};
/// Tropospheric delay on the way to a satellite, beside the vertical one.
struct QTSlantTropoKind {
    static constexpr eCALSSRCorrectionType kType = eCALSSR_SLANT_TROPOSPHERE;
    struct Entry {
        SCalSatID satId;
        std::uint32_t stationId = 0;
        std::int32_t delay = 0;  ///< [0.1 mm]
        friend bool operator==(const Entry&, const Entry&) = default;
    };
};
/// Vertical electron content as spherical harmonics, a layer an entry (1264).
struct QTVertIonoKind {
    static constexpr eCALSSRCorrectionType kType = eCALSSR_VERTICAL_IONOSPHERE;
    struct Entry {
        SCalSatID satId;
        std::uint8_t height = 0;            ///< of the layer [10 km]
        std::uint8_t degree = 0;            ///< 1 to 16
        std::uint8_t order = 0;             ///< 1 to 16, at most the degree
        std::uint16_t quality = 0;          ///< [0.05 TECU]
        std::vector<std::int16_t> cosines;  ///< by order, then degree [0.005 TECU]
        std::vector<std::int16_t> sines;
        friend bool operator==(const Entry&, const Entry&) = default;
    };
};
/// Ionospheric delay on the way to a satellite.
struct QTSlantIonoKind {
    static constexpr eCALSSRCorrectionType kType = eCALSSR_SLANT_IONOSPHERE;
    struct Entry {
        SCalSatID satId;
        std::uint32_t stationId = 0;
        std::int32_t delay = 0;  ///< on the system's first carrier [0.1 mm]
        friend bool operator==(const Entry&, const Entry&) = default;
    };
};
/// Geometric part of a network's corrections.
struct QTNetGeometryKind {
    static constexpr eCALSSRCorrectionType kType = eCALSSR_NETWORK_GEOMETRY;
    struct Entry {
        SCalSatID satId;
        std::uint32_t stationId = 0;
        std::uint32_t issueOfData = 0;  ///< of the broadcast ephemeris
        std::int32_t correction = 0;    ///< [0.1 mm]
        friend bool operator==(const Entry&, const Entry&) = default;
    };
};

using SSROrbitCorrMsgT = SSRMessageT<SSROrbitKind>;
using SSRClockCorrMsgT = SSRMessageT<SSRClockKind>;
using SSRHighRateClockMsgT = SSRMessageT<SSRHighRateClockKind>;
using SSRCodeBiasMsgT = SSRMessageT<SSRCodeBiasKind>;
using SSRPhaseBiasMsgT = SSRMessageT<SSRPhaseBiasKind>;
using SSRURAMsgT = SSRMessageT<SSRURAKind>;
using SSRSignalMsgT = SSRMessageT<SSRSignalKind>;
using QTBaseCoordsMsgT = SSRMessageT<QTBaseCoordsKind>;
using QTVertTropoCorrMsgT = SSRMessageT<QTVertTropoKind>;
using QTSlantTropoCorrMsgT = SSRMessageT<QTSlantTropoKind>;
using QTVertIonoCorrMsgT = SSRMessageT<QTVertIonoKind>;
using QTSlantIonoCorrMsgT = SSRMessageT<QTSlantIonoKind>;
using QTNetGeometryCorrMsgT = SSRMessageT<QTNetGeometryKind>;

extern template struct HALVEX_EXPORT SSRMessageT<SSROrbitKind>;
extern template struct HALVEX_EXPORT SSRMessageT<SSRClockKind>;
extern template struct HALVEX_EXPORT SSRMessageT<SSRHighRateClockKind>;
extern template struct HALVEX_EXPORT SSRMessageT<SSRCodeBiasKind>;
extern template struct HALVEX_EXPORT SSRMessageT<SSRPhaseBiasKind>;
extern template struct HALVEX_EXPORT SSRMessageT<SSRURAKind>;
extern template struct HALVEX_EXPORT SSRMessageT<SSRSignalKind>;
extern template struct HALVEX_EXPORT SSRMessageT<QTBaseCoordsKind>;
extern template struct HALVEX_EXPORT SSRMessageT<QTVertTropoKind>;
extern template struct HALVEX_EXPORT SSRMessageT<QTSlantTropoKind>;
extern template struct HALVEX_EXPORT SSRMessageT<QTVertIonoKind>;
extern template struct HALVEX_EXPORT SSRMessageT<QTSlantIonoKind>;
extern template struct HALVEX_EXPORT SSRMessageT<QTNetGeometryKind>;

}  // namespace CALN
