#pragma once

#include <cmath>
#include <numbers>

#include "halvex/platform/caln/AlmanacRecords.h"
#include "halvex/platform/caln/EphemerisBeidou.h"
#include "halvex/platform/caln/EphemerisGlonass.h"
#include "tests/support/RandomFields.h"

namespace halvex::test {

inline constexpr double kPi = std::numbers::pi;
inline constexpr double kGpsEarthRate = 7.2921151467e-5;
inline constexpr unsigned short kWeek = 2111;

/// A circle in the plane of the equator that crosses `longitude` (Earth-fixed) at `seconds` of its own time.
template <class Record>
Record circularOrbit(unsigned char satId, double seconds, double longitude = 0.0, double semiMajorAxis = 26560e3) {
    constexpr bool kBeidouTime = std::is_base_of_v<CALN::CALX_SAT_EPHEMERIS_BEIDOU, Record> ||
                                 std::is_base_of_v<CALN::CALX_SAT_ALMANAC_BEIDOU, Record>;
    Record record;
    record.satId = satId, record.source = 1, record.week = kBeidouTime ? kWeek - 1356 : kWeek;
    record.sqrtA = std::sqrt(semiMajorAxis), record.m0 = longitude;
    record.omega0 = (kBeidouTime ? 7.2921150e-5 : kGpsEarthRate) * seconds;
    if constexpr (requires { record.toa; }) {
        record.toa = seconds;
    } else {
        record.toe = record.toc = seconds;
    }
    return record;
}

/// Makes an ephemeris any that a navigation satellite might have.
template <class Record>
void anyElements(Record& record, RandomFields& random) {
    record.sqrtA = random.number(5000, 6500), record.e = random.number(0, 0.1), record.i0 = random.number(0, 1.2);
    for (double* angle : {&record.m0, &record.omega0, &record.omega}) *angle = random.number(-kPi, kPi);
    for (double* rate : {&record.omegaDot, &record.deltaN, &record.idot}) *rate = random.number(-1e-9, 1e-9);
    for (double* c : {&record.cuc, &record.cus, &record.cic, &record.cis}) *c = random.number(-1e-5, 1e-5);
    for (double* c : {&record.crc, &record.crs}) *c = random.number(-500, 500);
}

/// GLONASS satellite over longitude and latitude 0, moving north on a nearly circular orbit.
inline CALN::CALX_SAT_EPHEMERIS_GLONASS glonassOrbit(unsigned char slot, double seconds) {
    CALN::CALX_SAT_EPHEMERIS_GLONASS record;
    record.satId = slot, record.source = 1, record.week = kWeek, record.referenceSeconds = seconds;
    record.position = {25500e3, 0.0, 0.0}, record.velocity = {0.0, -64.0, 3535.0};
    return record;
}

}  // namespace halvex::test
