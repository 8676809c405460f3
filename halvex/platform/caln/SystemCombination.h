#pragma once

#include <cstdint>

#include "halvex/platform/caln/SatelliteSystem.h"

namespace CALN {

/// Satellite systems as bits: 1 << (system code - 1), to be ORed.
enum ebCALGNSSTYPECOMBINATION : std::uint32_t {
    ebCALGNSSTYPE_NONE = 0x00,
    ebCALGNSSTYPE_GPS = 0x01,
    ebCALGNSSTYPE_GLONASS = 0x02,
    ebCALGNSSTYPE_GALILEO = 0x04,
    ebCALGNSSTYPE_SBAS = 0x08,
    ebCALGNSSTYPE_BEIDOU = 0x10,
    ebCALGNSSTYPE_QZSS = 0x20,
    ebCALGNSSTYPE_NAVIC = 0x40,
};
constexpr ebCALGNSSTYPECOMBINATION operator|(ebCALGNSSTYPECOMBINATION left, ebCALGNSSTYPECOMBINATION right) {
    return static_cast<ebCALGNSSTYPECOMBINATION>(static_cast<std::uint32_t>(left) | static_cast<std::uint32_t>(right));
}
constexpr ebCALGNSSTYPECOMBINATION operator&(ebCALGNSSTYPECOMBINATION left, ebCALGNSSTYPECOMBINATION right) {
    return static_cast<ebCALGNSSTYPECOMBINATION>(static_cast<std::uint32_t>(left) & static_cast<std::uint32_t>(right));
}
constexpr ebCALGNSSTYPECOMBINATION operator~(ebCALGNSSTYPECOMBINATION systems) {
    return static_cast<ebCALGNSSTYPECOMBINATION>(~static_cast<std::uint32_t>(systems));
}
constexpr ebCALGNSSTYPECOMBINATION& operator|=(ebCALGNSSTYPECOMBINATION& left, ebCALGNSSTYPECOMBINATION right) {
    return left = left | right;
}
constexpr ebCALGNSSTYPECOMBINATION& operator&=(ebCALGNSSTYPECOMBINATION& left, ebCALGNSSTYPECOMBINATION right) {
    return left = left & right;
}

/// The bit of a system; none for a code that is no system.
[[nodiscard]] constexpr ebCALGNSSTYPECOMBINATION combinationOf(eCALSATSYSTEM system) {
    return system >= 1 && system < kSystemSlots ? static_cast<ebCALGNSSTYPECOMBINATION>(1U << (system - 1U))
                                                : ebCALGNSSTYPE_NONE;
}

}  // namespace CALN
