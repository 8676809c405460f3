#pragma once

#include <cstdint>
#include <string_view>

#include "halvex/platform/caln/SatelliteSystem.h"

namespace halvex::rinex {

/// What a record of a navigation file holds.
enum class MessageKind : std::uint8_t {
    lnav,
    cnav,
    cnav2,
    glonass,
    galileo,
    beidouD1,
    beidouD2,
    beidouCnav1,
    beidouCnav2,
    beidouCnav3,
    navic,
    sbas,
    timeOffset,
    earthOrientation,
    klobuchar,
    nequick,
    bdgim,
};

/// One kind of record as version 4 announces it. RINEX 4.01, appendix A.
struct MessageLayout {
    std::string_view type;                                  ///< EPH, STO, EOP, ION
    CALN::eCALSATSYSTEM system = CALN::eCALSATSYSTEM_NONE;  ///< none: every system
    std::string_view message;                               ///< empty: whatever message it came from
    MessageKind kind = MessageKind::lnav;
    unsigned lines = 0;  ///< with the epoch's, without what announces the record
};

/// Null when no such record is known.
[[nodiscard]] const MessageLayout* layoutOf(std::string_view type, CALN::eCALSATSYSTEM system,
                                            std::string_view message);
/// The ephemeris of a satellite in versions 2 and 3, which have one for each system.
[[nodiscard]] const MessageLayout& layoutOfSatellite(const CALN::SCalSatID& satellite);

}  // namespace halvex::rinex
