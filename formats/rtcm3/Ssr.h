#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "formats/rtcm3/FrameReader.h"
#include "halvex/corrections/CalSSRTypes.h"

namespace halvex::rtcm3 {

/// What a message of state-space corrections is about.
enum class SsrKind : std::uint8_t {
    orbits,
    clocks,
    orbitsAndClocks,
    highRateClocks,
    codeBiases,
    phaseBiases,
    ura,
    electronContent,
};

/// System and kind of a message. Electron content is of no system.
struct SsrType {
    CALN::eCALSATSYSTEM system = CALN::eCALSATSYSTEM_NONE;
    SsrKind kind = SsrKind::orbits;
};

/// 1057 to 1062 GPS, 1063 to 1068 GLONASS, 1240 to 1245 Galileo, 1246 to 1251 QZSS, 1252 to 1257 SBAS, 1258 to 1263
/// BeiDou, 1265 to 1270 their phase biases, 1264 electron content, and the sub-types of 4076. Empty for any other.
[[nodiscard]] std::optional<SsrType> ssrTypeOf(const MessageType& message);

/// What one message says.
struct SsrMessages {
    /// One message or, out of orbits with clocks, two: orbits (eCALSSR_ORBIT_COMBINED), then clocks
    /// (eCALSSR_CLOCK_COMBINED). They are shared and never change.
    std::vector<CHalvexSSRCorr::Message> messages;
    std::uint32_t unknownSatellites = 0;  ///< entries left out: no such satellite
    /// Behind the last field: below 8 unless the message is longer than its fields.
    std::size_t bitsLeft = 0;
};

/// Reads one of these. Values stay the integers that were sent; the epoch is the epoch time of the message (DF385 and
/// kin), completed to the instant of GPS time nearest to `reference`, which is set and within half a week, for GLONASS
/// in messages other than 4076 within half a day. Update interval and what of the epoch follows are told, not applied.
///
/// The issue of a BeiDou or SBAS ephemeris is what stands behind its reference time, which is left out: eight bits as
/// newer streams number BeiDou's, or a check sum of 24 bits. The length of the message tells which: such a message has
/// to end with its fields. Left out as well: the version of 4076 and the two consistency bits ahead of phase biases.
///
/// False, with `out` as it was, when the message is none of these, is cut off, counts more than it has, or has a time
/// that no clock shows.
[[nodiscard]] bool readSsr(const Frame& frame, const SMjdTime& reference, SsrMessages& out);

}  // namespace halvex::rtcm3
