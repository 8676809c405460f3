#pragma once

#include <cstdint>

#include "halvex/platform/Export.h"
#include "halvex/platform/caln/SatelliteSystem.h"

namespace CALN {

/// Carriers that differ in frequency; GLONASS carriers are those of channel 0. Values are persisted and index arrays.
enum eCALFREQUENCY : std::uint8_t {
    eCALFREQUENCY_L1 = 0,   ///< 1575.42 MHz: GPS/QZSS/SBAS/NavIC L1, Galileo E1, BeiDou B1C
    eCALFREQUENCY_L2 = 1,   ///< 1227.60 MHz: GPS/QZSS L2
    eCALFREQUENCY_L5 = 2,   ///< 1176.45 MHz: GPS/QZSS/SBAS/NavIC L5, Galileo E5a, BeiDou B2a
    eCALFREQUENCY_G1 = 3,   ///< 1602 MHz + channel x 0.5625 MHz
    eCALFREQUENCY_G2 = 4,   ///< 1246 MHz + channel x 0.4375 MHz
    eCALFREQUENCY_G3 = 5,   ///< 1202.025 MHz
    eCALFREQUENCY_E5B = 6,  ///< 1207.14 MHz: Galileo E5b, BeiDou B2I and B2b
    eCALFREQUENCY_E5 = 7,   ///< 1191.795 MHz: Galileo E5 AltBOC, BeiDou B2
    eCALFREQUENCY_E6 = 8,   ///< 1278.75 MHz: Galileo E6, QZSS L6
    eCALFREQUENCY_B1 = 9,   ///< 1561.098 MHz: BeiDou B1I
    eCALFREQUENCY_B3 = 10,  ///< 1268.52 MHz: BeiDou B3I
};
inline constexpr int kFrequencyCount = 11;

/// Bands as bits, to be ORed.
enum eCALFREQUENCY_GROUP : std::uint32_t {
    eCALFREQUENCY_GROUP_NONE = 0x00,
    eCALFREQUENCY_GROUP_L1 = 0x01,   ///< L1, E1, B1, G1
    eCALFREQUENCY_GROUP_L2 = 0x02,   ///< L2, G2
    eCALFREQUENCY_GROUP_L5 = 0x04,   ///< L5, E5a, B2a
    eCALFREQUENCY_GROUP_E5B = 0x08,  ///< E5b, B2
    eCALFREQUENCY_GROUP_E6 = 0x10,   ///< E6, B3
    eCALFREQUENCY_GROUP_E5 = 0x20,   ///< E5 AltBOC and the others, G3 among them
};
constexpr eCALFREQUENCY_GROUP operator|(eCALFREQUENCY_GROUP left, eCALFREQUENCY_GROUP right) {
    return static_cast<eCALFREQUENCY_GROUP>(static_cast<std::uint32_t>(left) | static_cast<std::uint32_t>(right));
}
constexpr eCALFREQUENCY_GROUP operator&(eCALFREQUENCY_GROUP left, eCALFREQUENCY_GROUP right) {
    return static_cast<eCALFREQUENCY_GROUP>(static_cast<std::uint32_t>(left) & static_cast<std::uint32_t>(right));
}

/// The band of a carrier; NONE for a value that is no carrier.
[[nodiscard]] HALVEX_EXPORT eCALFREQUENCY_GROUP getFrequencyGroup(eCALFREQUENCY frequency);

/// Carrier frequency [Hz]; the channel, -7 to 6, counts for G1 and G2 alone. 0 for a value that is no carrier.
/// IS-GPS-200, IS-GPS-705, GLONASS ICD 5.1, Galileo OS SIS ICD 2.1, BDS-SIS-ICD-B1I and -B3I.
[[nodiscard]] HALVEX_EXPORT double getCarrierFrequency(eCALFREQUENCY frequency, int glonassChannel = 0);

}  // namespace CALN

namespace halvex {

/// Slots of an observation record: 0 = L1, 1 = L2, 2 = third.
inline constexpr int kFrequencySlots = 3;

/// What one slot of a system's observation holds.
struct SlotBand {
    CALN::eCALFREQUENCY frequency;
    char rinexBand;  ///< band digit of a RINEX 3.03+ observation code; 0: the slot stays empty
};

/// Which carrier of a system stands in which slot. Slot 1 is the system's second civil carrier near 1.2 GHz, slot 2 the
/// L5/E5a carrier, for GLONASS G3 and for BeiDou, whose B1I/B2/B3 are the ones that all its satellites send, B3.
[[nodiscard]] HALVEX_EXPORT SlotBand slotBand(CALN::eCALSATSYSTEM system, int slot);

}  // namespace halvex
