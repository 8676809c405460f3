#pragma once

#include "formats/rinex/NavigationRecords.h"
#include "halvex/platform/caln/Coordinates.h"
#include "halvex/platform/caln/SatelliteSystem.h"

namespace halvex::tool {

// One ephemeris of whatever system, as a user of it works with it. A record that is no ephemeris has no satellite, an
// unset reference time, no position, and the clock 0.

[[nodiscard]] CALN::SCalSatID satelliteOf(const rinex::NavigationRecord& record);
/// Of the orbit, on the GPS scale.
[[nodiscard]] SMjdTime referenceTimeOf(const rinex::NavigationRecord& record);
/// The FDMA channel of a GLONASS satellite; 0 for all others.
[[nodiscard]] int glonassChannelOf(const rinex::NavigationRecord& record);

/// Issue of data in eight bits, as correction messages name an ephemeris: of GPS and QZSS the IODE, of Galileo the low
/// bits of IODnav, of GLONASS t_b.
[[nodiscard]] std::uint8_t issueOfDataOf(const rinex::NavigationRecord& record);

/// Earth-fixed position at a GPS second of the week [m]; false when the elements are no orbit.
[[nodiscard]] bool broadcastPosition(const rinex::NavigationRecord& record, double gpsSeconds, ORBIT_COORD& position);

/// Satellite clock minus GPS time at a GPS second of the week [s]: the polynomial and the relativistic term
/// F e sqrt(A) sin E (IS-GPS-200, 20.3.3.3.3.1; Galileo OS SIS ICD, 5.1.4; BDS-SIS-ICD-B1I, 5.2.4.10). GLONASS:
/// gamma_n (t - t_b) - tau_n, which has relativity in it (GLONASS ICD 5.1, 3.3.3). No group delay is applied, and
/// GLONASS time counts as GPS time less leap seconds.
[[nodiscard]] double broadcastClock(const rinex::NavigationRecord& record, double gpsSeconds);

}  // namespace halvex::tool
