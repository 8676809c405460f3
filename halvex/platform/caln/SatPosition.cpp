#include "halvex/platform/caln/SatPosition.h"

#include <cmath>

#include "halvex/platform/caln/GeodeticSettings.h"
#include "halvex/platform/caln/GlonassMotion.h"
#include "halvex/platform/caln/KeplerOrbit.h"

namespace CALN {
namespace {

namespace kepler = halvex::kepler;

bool isUsable(const CALX_SAT_EPHEMERIS_COMMON& record) {
    return record.sqrtA * record.sqrtA >= kepler::kSmallestSemiMajorAxis;
}

int hand(const kepler::Position<double>& from, double to[3]) {
    if (!std::isfinite(from.x + from.y + from.z)) return kPositionNoOrbit;
    to[0] = from.x;
    to[1] = from.y;
    to[2] = from.z;
    return kPositionDone;
}

int calculate(const CALX_SAT_EPHEMERIS_COMMON& record, const kepler::Constants& constants, double seconds,
              double position[3]) {
    if (!isUsable(record)) return kPositionNoOrbit;
    const double tk = kepler::withinHalfWeek(seconds - record.toe);
    return hand(kepler::position(kepler::elementsOf(record, constants), tk), position);
}

}  // namespace

int POS_SAT_CalcSatPosCartesian(const CALX_SAT_EPHEMERIS& record, double gpsSecondsOfWeek, double position[3]) {
    return calculate(record, kepler::kGps, gpsSecondsOfWeek, position);
}

int POS_SAT_CalcSatPosCartesianGal(const CALX_SAT_EPHEMERIS_GALILEO& record, double gpsSecondsOfWeek,
                                   double position[3]) {
    return calculate(record, kepler::kGalileo, gpsSecondsOfWeek, position);
}

int POS_SAT_CalcSatPosCartesianNavic(const CALX_SAT_EPHEMERIS_NAVIC& record, double gpsSecondsOfWeek,
                                     double position[3]) {
    return calculate(record, kepler::kGps, gpsSecondsOfWeek, position);
}

int POS_SAT_CalcSatPosCartesianBds(const CALX_SAT_EPHEMERIS_BEIDOU& record, double gpsSecondsOfWeek,
                                   double position[3]) {
    const double seconds = gpsSecondsOfWeek - CALX_SAT_EPHEMERIS_BEIDOU::kGpsMinusBdt;
    if (!record.isGeostationary()) return calculate(record, kepler::kBeidou, seconds, position);
    if (!isUsable(record)) return kPositionNoOrbit;
    const double tk = kepler::withinHalfWeek(seconds - record.toe);
    const auto tilted = kepler::position(kepler::elementsOf(record, kepler::kBeidou, true), tk);
    return hand(kepler::turnGeostationary(tilted, tk), position);
}

int POS_SAT_CalcSatPosCartesianGlo(const CALX_SAT_EPHEMERIS_GLONASS& record, double gpsSecondsOfWeek,
                                   double position[3]) {
    return POS_SAT_CalcSatPosCartesianGloSteps(record, gpsSecondsOfWeek, halvex::glonass::kStep, position);
}

int POS_SAT_CalcSatPosCartesianGloSteps(const CALX_SAT_EPHEMERIS_GLONASS& record, double gpsSecondsOfWeek, double step,
                                        double position[3]) {
    namespace glonass = halvex::glonass;
    const double seconds = kepler::withinHalfWeek(gpsSecondsOfWeek - record.referenceSeconds);
    if (!(std::abs(seconds) <= kepler::kWeek && step >= 1.0)) return kPositionNoOrbit;
    const glonass::Acceleration<double> pull{record.acceleration[0], record.acceleration[1], record.acceleration[2]};
    const auto state = glonass::propagate(
        {record.position[0], record.position[1], record.position[2], record.velocity[0], record.velocity[1],
         record.velocity[2]},
        seconds, [&pull](const auto& s) { return glonass::derivative(s, pull); }, step);
    ORBIT_COORD wgs84{state.x, state.y, state.z};
    halvex::transformPZ90ToWGS84(wgs84);
    return hand({wgs84.x, wgs84.y, wgs84.z}, position);
}

}  // namespace CALN

namespace halvex {

void transformPZ90ToWGS84(ORBIT_COORD& position) {
    const auto [r, t] = CGlobalGeodeticSettings::GetPZ90ToWGS84();
    const ORBIT_COORD p = position;
    position.x = t.x + r[0][0] * p.x + r[0][1] * p.y + r[0][2] * p.z;
    position.y = t.y + r[1][0] * p.x + r[1][1] * p.y + r[1][2] * p.z;
    position.z = t.z + r[2][0] * p.x + r[2][1] * p.y + r[2][2] * p.z;
}

}  // namespace halvex
