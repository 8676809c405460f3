#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <variant>
#include <vector>

#include "formats/rtcm3/EpochTime.h"
#include "formats/rtcm3/FrameReader.h"
#include "halvex/platform/caln/CombinedCorrections.h"
#include "halvex/platform/caln/NetworkMessages.h"
#include "halvex/platform/caln/ReferenceMessages.h"
#include "halvex/platform/pio/Rtcm3Text.h"

/// The messages of a network of reference stations and of plain text, RTCM 10403.3: 1014 to 1017, 1029 to 1032, 1034,
/// 1035, 1037 to 1039. Every field comes as the whole number that was sent, in the message's resolution, satellites
/// with numbers that are none among them (satelliteOf tells). Plain values.
namespace halvex::rtcm3 {

/// What stands in place of a value that is out of range or not known.
inline constexpr std::int32_t kNoDifference = -65536;          ///< DF069, DF070, DF237, DF238
inline constexpr std::int16_t kNoGeometricGradient = -2048;    ///< DF242, DF243
inline constexpr std::int16_t kNoIonosphericGradient = -8192;  ///< DF244, DF245

/// The time that a message has: of the GPS week or, for GLONASS, of the Moscow day. It may lie beyond their end.
struct NetworkEpoch {
    EpochScale scale = EpochScale::gpsWeek;  ///< or glonassDay
    std::int64_t milliseconds = 0;

    friend bool operator==(const NetworkEpoch&, const NetworkEpoch&) = default;
};

/// 1015 and 1037 with CALN::IonoMsgT, 1016 and 1038 with CALN::GeoMsgT, whose own epoch stays unset: it needs a date.
template <class Message>
struct Differences {
    Message message;
    NetworkEpoch epoch;

    friend bool operator==(const Differences&, const Differences&) = default;
};

/// How well corrections could be interpolated to one satellite: standard deviations of what is left.
struct ResidualsEntry {
    std::uint8_t satId = 0;
    std::uint8_t constant = 0;         ///< of the part without the ionosphere, everywhere [0.5 mm] (DF218)
    std::uint16_t byDistance = 0;      ///< its growth with the distance [0.01 ppm] (DF219)
    std::uint8_t byHeight = 0;         ///< and with the difference of heights [0.1 ppm] (DF220)
    std::uint16_t ionoConstant = 0;    ///< of the ionospheric part [0.5 mm] (DF221)
    std::uint16_t ionoByDistance = 0;  ///< [0.01 ppm] (DF222)

    friend bool operator==(const ResidualsEntry&, const ResidualsEntry&) = default;
};

/// 1030 (GPS) and 1031 (GLONASS): network residuals.
struct NetworkResiduals {
    unsigned messageNumber = 0;
    NetworkEpoch epoch;
    unsigned station = 0;            ///< 0 to 4095
    unsigned referenceStations = 0;  ///< whose data was used, 0 to 127
    std::vector<ResidualsEntry> satellites;

    friend bool operator==(const NetworkResiduals&, const NetworkResiduals&) = default;
};

/// 1032: where the physical reference station stands behind corrections that are made for another place.
struct PhysicalReference {
    unsigned station = 0;                    ///< of the corrections, 0 to 4095
    unsigned physicalStation = 0;            ///< that stands there, 0 to 4095
    unsigned itrfYear = 0;                   ///< 0 to 63
    std::array<std::int64_t, 3> position{};  ///< Earth-fixed, of the antenna reference point [0.1 mm]

    friend bool operator==(const PhysicalReference&, const PhysicalReference&) = default;
};

/// 1034 (GPS) and 1035 (GLONASS): gradients of the corrections around a station (area correction parameters).
struct AreaGradients {
    unsigned messageNumber = 0;
    NetworkEpoch epoch;
    unsigned station = 0;                       ///< 0 to 4095
    std::vector<POS_REF_GRADIENTS> satellites;  ///< with kNoGeometricGradient, kNoIonosphericGradient

    friend bool operator==(const AreaGradients&, const AreaGradients&) = default;
};

/// 1014, 1015 and 1037, 1016 and 1038, 1017 and 1039, 1030 and 1031, 1032, 1034 and 1035, 1029.
using NetworkMessage =
    std::variant<CALN::Msg1014T, Differences<CALN::IonoMsgT>, Differences<CALN::GeoMsgT>, CALN::IonoGeoMsgT,
                 NetworkResiduals, PhysicalReference, AreaGradients, PIO::RTCM3::UTF8MessageC>;

[[nodiscard]] bool isNetworkMessage(unsigned number);

/// Reads one of these. False when it is none or is cut off; `message` then stays as it was.
[[nodiscard]] bool readNetworkMessage(const Frame& frame, NetworkMessage& message);

/// GPS, or GLONASS for 1031, 1035, 1037, 1038 and 1039.
[[nodiscard]] CALN::eCALSATSYSTEM systemOfNetworkMessage(unsigned number);

/// When the differences of 1017 and 1039 are of.
[[nodiscard]] NetworkEpoch epochOf(const CALN::IonoGeoMsgT& message);

/// Completes the time of a message to the instant (GPS) nearest to a reference (GPS). Empty when the reference is unset
/// and for a time that its week or day does not have.
[[nodiscard]] std::optional<SMjdTime> instantOf(const NetworkEpoch& epoch, const SMjdTime& reference);

}  // namespace halvex::rtcm3
