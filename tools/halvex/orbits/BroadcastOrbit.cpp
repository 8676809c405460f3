#include "tools/halvex/orbits/BroadcastOrbit.h"

#include <cmath>
#include <concepts>

#include "halvex/platform/caln/KeplerOrbit.h"
#include "halvex/platform/caln/SatPosition.h"
#include "tools/halvex/signals/SignalPath.h"

namespace halvex::tool {
namespace {

/// What `of` says of an ephemeris; `otherwise` of any other record.
template <class Value, class Function>
Value ofEphemeris(const rinex::NavigationRecord& record, const Value& otherwise, Function&& of) {
    return std::visit(
        [&]<class Record>(const Record& r) -> Value {
            if constexpr (std::derived_from<Record, CALN::CALX_SAT_EPHEMERIS_BASE>) {
                return of(r);
            } else {
                return otherwise;
            }
        },
        record);
}

CALN::SCalSatID idOf(CALN::eCALSATSYSTEM system, unsigned number) {
    return {system, static_cast<unsigned char>(number)};
}
CALN::SCalSatID identify(const CALN::CALX_SAT_EPHEMERIS& r) {
    return idOf(CALN::eCALSATSYSTEM_GPS, r.satId);
}
CALN::SCalSatID identify(const CALN::CALX_SAT_EPHEMERIS_GLONASS& r) {
    return idOf(CALN::eCALSATSYSTEM_GLONASS, r.satId);
}
CALN::SCalSatID identify(const CALN::CALX_SAT_EPHEMERIS_GALILEO& r) {
    return idOf(CALN::eCALSATSYSTEM_GALILEO, r.GetSatId());
}
CALN::SCalSatID identify(const CALN::CALX_SAT_EPHEMERIS_BEIDOU& r) {
    return idOf(CALN::eCALSATSYSTEM_BEIDOU, r.satId);
}
CALN::SCalSatID identify(const CALN::CALX_SAT_EPHEMERIS_QZSS& r) {
    return idOf(CALN::eCALSATSYSTEM_QZSS, r.GetSatId1Based());
}
CALN::SCalSatID identify(const CALN::CALX_SAT_EPHEMERIS_NAVIC& r) {
    return idOf(CALN::eCALSATSYSTEM_NAVIC, r.satId);
}

int calculate(const CALN::CALX_SAT_EPHEMERIS& r, double seconds, double position[3]) {
    return CALN::POS_SAT_CalcSatPosCartesian(r, seconds, position);
}
int calculate(const CALN::CALX_SAT_EPHEMERIS_GALILEO& r, double seconds, double position[3]) {
    return CALN::POS_SAT_CalcSatPosCartesianGal(r, seconds, position);
}
int calculate(const CALN::CALX_SAT_EPHEMERIS_BEIDOU& r, double seconds, double position[3]) {
    return CALN::POS_SAT_CalcSatPosCartesianBds(r, seconds, position);
}
int calculate(const CALN::CALX_SAT_EPHEMERIS_NAVIC& r, double seconds, double position[3]) {
    return CALN::POS_SAT_CalcSatPosCartesianNavic(r, seconds, position);
}
int calculate(const CALN::CALX_SAT_EPHEMERIS_GLONASS& r, double seconds, double position[3]) {
    return CALN::POS_SAT_CalcSatPosCartesianGlo(r, seconds, position);
}

/// `seconds` in the time of the record's system.
double keplerClock(const CALN::CALX_SAT_EPHEMERIS_COMMON& r, double gm, double seconds) {
    const double tc = kepler::withinHalfWeek(seconds - r.toc);
    const double tk = kepler::withinHalfWeek(seconds - r.toe);
    const double a = r.sqrtA * r.sqrtA;
    const double m = r.m0 + (std::sqrt(gm / (a * a * a)) + r.deltaN + 0.5 * r.deltaNDot * tk) * tk;
    double anomaly = m;
    for (int step = 0; step < 10; ++step) anomaly = m + r.e * std::sin(anomaly);
    const double f = -2.0 * std::sqrt(gm) / (kSpeedOfLight * kSpeedOfLight);
    return r.af0 + (r.af1 + r.af2 * tc) * tc + f * r.e * r.sqrtA * std::sin(anomaly);
}
double clockOf(const CALN::CALX_SAT_EPHEMERIS_COMMON& r, double seconds) {  // GPS, QZSS, NavIC
    return keplerClock(r, kepler::kGps.gm, seconds);
}
double clockOf(const CALN::CALX_SAT_EPHEMERIS_GALILEO& r, double seconds) {
    return keplerClock(r, kepler::kGalileo.gm, seconds);
}
double clockOf(const CALN::CALX_SAT_EPHEMERIS_BEIDOU& r, double seconds) {
    return keplerClock(r, kepler::kBeidou.gm, seconds - CALN::CALX_SAT_EPHEMERIS_BEIDOU::kGpsMinusBdt);
}
double clockOf(const CALN::CALX_SAT_EPHEMERIS_GLONASS& r, double seconds) {
    return r.gammaN * kepler::withinHalfWeek(seconds - r.referenceSeconds) - r.tauN;
}

unsigned issueOf(const CALN::CALX_SAT_EPHEMERIS& r) {  // GPS and QZSS
    return r.iodc;
}
unsigned issueOf(const CALN::CALX_SAT_EPHEMERIS_GALILEO& r) {
    return r.iodNav;
}
unsigned issueOf(const CALN::CALX_SAT_EPHEMERIS_BEIDOU& r) {
    return r.iode;
}
unsigned issueOf(const CALN::CALX_SAT_EPHEMERIS_NAVIC& r) {
    return r.iodec;
}
unsigned issueOf(const CALN::CALX_SAT_EPHEMERIS_GLONASS& r) {
    return r.tb;
}

}  // namespace

CALN::SCalSatID satelliteOf(const rinex::NavigationRecord& record) {
    return ofEphemeris(record, CALN::SCalSatID(), [](const auto& r) { return identify(r); });
}

SMjdTime referenceTimeOf(const rinex::NavigationRecord& record) {
    return ofEphemeris(record, SMjdTime(), [](const auto& r) { return r.GetReferenceTime(); });
}

int glonassChannelOf(const rinex::NavigationRecord& record) {
    const auto* glonass = std::get_if<CALN::CALX_SAT_EPHEMERIS_GLONASS>(&record);
    return glonass != nullptr ? glonass->frequencyNumber : 0;
}

std::uint8_t issueOfDataOf(const rinex::NavigationRecord& record) {
    return ofEphemeris(record, std::uint8_t{0},
                       [](const auto& r) { return static_cast<std::uint8_t>(issueOf(r) & 0xFFU); });
}

bool broadcastPosition(const rinex::NavigationRecord& record, double gpsSeconds, ORBIT_COORD& position) {
    double xyz[3] = {};
    const auto calculated = [&](const auto& r) { return calculate(r, gpsSeconds, xyz) == CALN::kPositionDone; };
    if (!ofEphemeris(record, false, calculated)) return false;
    position = {xyz[0], xyz[1], xyz[2]};
    return true;
}

double broadcastClock(const rinex::NavigationRecord& record, double gpsSeconds) {
    return ofEphemeris(record, 0.0, [gpsSeconds](const auto& r) { return clockOf(r, gpsSeconds); });
}

}  // namespace halvex::tool
