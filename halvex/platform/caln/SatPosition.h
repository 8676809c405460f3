#pragma once

#include "halvex/platform/Export.h"
#include "halvex/platform/caln/Coordinates.h"
#include "halvex/platform/caln/EphemerisBeidou.h"
#include "halvex/platform/caln/EphemerisGalileo.h"
#include "halvex/platform/caln/EphemerisGlonass.h"
#include "halvex/platform/caln/EphemerisGps.h"
#include "halvex/platform/caln/EphemerisNavic.h"

// Position of a satellite from its broadcast ephemeris: Earth-fixed, centre of phase, in the system's own realisation
// of the terrestrial frame (they agree to some centimetres; GLONASS is transformed, see CGlobalGeodeticSettings) [m].
// No clock, no relativity, no light time. `gpsSecondsOfWeek` is the GPS second of the week, whatever the system: it is
// brought within half a week of the reference time, once. Plain functions, safe from any thread.

namespace CALN {

/// Status of the position routines: 0 done; otherwise the position is left alone.
inline constexpr int kPositionDone = 0;
inline constexpr int kPositionNoOrbit = 1;  ///< the elements are no navigation satellite's, or not numbers

/// GPS and QZSS, LNAV and CNAV. IS-GPS-200, 20.3.3.4.3 and 30.3.3.1.3.
HALVEX_EXPORT int POS_SAT_CalcSatPosCartesian(const CALX_SAT_EPHEMERIS& record, double gpsSecondsOfWeek,
                                              double position[3]);
/// Galileo. Galileo OS SIS ICD, 5.1.1.
HALVEX_EXPORT int POS_SAT_CalcSatPosCartesianGal(const CALX_SAT_EPHEMERIS_GALILEO& record, double gpsSecondsOfWeek,
                                                 double position[3]);
/// BeiDou with its geostationary satellites; takes the 14 s to BeiDou time off itself. BDS-SIS-ICD-B1I, 5.2.4.12.
HALVEX_EXPORT int POS_SAT_CalcSatPosCartesianBds(const CALX_SAT_EPHEMERIS_BEIDOU& record, double gpsSecondsOfWeek,
                                                 double position[3]);
/// NavIC. NavIC ICD for SPS, appendix A.
HALVEX_EXPORT int POS_SAT_CalcSatPosCartesianNavic(const CALX_SAT_EPHEMERIS_NAVIC& record, double gpsSecondsOfWeek,
                                                   double position[3]);
/// GLONASS, transformed to WGS-84. GLONASS ICD 5.1, A.3.1.2, in the Runge-Kutta steps of CHalvexEphemerisGLO (500 s),
/// which leave up to a metre after a quarter of an hour.
HALVEX_EXPORT int POS_SAT_CalcSatPosCartesianGlo(const CALX_SAT_EPHEMERIS_GLONASS& record, double gpsSecondsOfWeek,
                                                 double position[3]);
/// The same in steps of `step` seconds, at least 1; the ICD has 60.
HALVEX_EXPORT int POS_SAT_CalcSatPosCartesianGloSteps(const CALX_SAT_EPHEMERIS_GLONASS& record, double gpsSecondsOfWeek,
                                                      double step, double position[3]);

}  // namespace CALN

namespace halvex {

/// X' = T + R X with the parameters of CGlobalGeodeticSettings that are in force.
HALVEX_EXPORT void transformPZ90ToWGS84(ORBIT_COORD& position);

}  // namespace halvex
