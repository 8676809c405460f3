#pragma once

#include <array>
#include <cstddef>
#include <string>

#include "formats/rinex/NavigationRecords.h"

/// The fields of every record of a navigation file in the order in which they are printed, from behind the epoch on:
/// one list for each kind of record, for both directions. An Io is a FieldReader or a FieldWriter.
namespace halvex::rinex {

template <class Io>
void clockFields(Io& io, CALN::CALX_SAT_EPHEMERIS_COMMON& r) {
    io.number(r.af0, "the clock bias");
    io.number(r.af1, "the clock drift");
    io.number(r.af2, "the clock drift rate");
}

/// From Crs to the root of the axis.
template <class Io>
void shapeFields(Io& io, CALN::CALX_SAT_EPHEMERIS_COMMON& r) {
    io.number(r.crs, "Crs");
    io.number(r.deltaN, "Delta n");
    io.number(r.m0, "M0");
    io.number(r.cuc, "Cuc");
    io.number(r.e, "the eccentricity");
    io.number(r.cus, "Cus");
    io.number(r.sqrtA, "sqrt(A)");
}

/// From Cic to the rate of inclination.
template <class Io>
void planeFields(Io& io, CALN::CALX_SAT_EPHEMERIS_COMMON& r) {
    io.number(r.cic, "Cic");
    io.number(r.omega0, "OMEGA0");
    io.number(r.cis, "Cis");
    io.number(r.i0, "i0");
    io.number(r.crc, "Crc");
    io.number(r.omega, "omega");
    io.number(r.omegaDot, "OMEGA DOT");
    io.number(r.idot, "IDOT");
}

/// All the elements of the messages that send toe among them.
template <class Io>
void keplerFields(Io& io, CALN::CALX_SAT_EPHEMERIS_COMMON& r) {
    shapeFields(io, r);
    io.secondsOfWeek(r.toe, "toe");
    planeFields(io, r);
}

/// Index of a user range accuracy in metres: the nominal value that is nearest, ties going to the smaller one, so that
/// printed upper bounds are understood too. IS-GPS-200, 20.3.3.3.1.3; 15: none.
[[nodiscard]] inline unsigned short uraIndexOf(double metres) {
    constexpr double kSlack = 1e-9;
    static constexpr std::array<double, 15> kBounds{2.4,  3.4,   4.85,  6.85,  9.65,   13.65,  24.0,  48.0,
                                                    96.0, 192.0, 384.0, 768.0, 1536.0, 3072.0, 6144.0};
    unsigned short index = 0;
    while (index < kBounds.size() && metres > kBounds[index] + kSlack) ++index;
    return index;
}

/// LNAV of GPS and QZSS.
template <class Io>
void lnavFields(Io& io, CALN::CALX_SAT_EPHEMERIS& r, bool qzss) {
    clockFields(io, r);
    unsigned short iode = r.iodc & 0xFFU;
    io.integer(iode, "IODE");
    keplerFields(io, r);
    io.integer(r.codeOnL2, "the code on L2");
    io.week(r, 0);
    io.integer(r.l2pDataFlag, "the L2 P data flag");
    io.optional(r.ura);
    io.integer(r.health, "the health");
    io.optional(r.tgd);
    io.integer(r.iodc, "IODC");
    io.transmissionTime(r.transmissionTime, r.toe);
    // GPS prints hours (six stand for all that are longer than the usual four), QZSS the flag; some files have it the
    // other way round.
    const double usual = qzss ? 2.0 : 4.0;
    double fit = qzss ? r.fitIntervalFlag : r.fitIntervalFlag != 0 ? 6.0 : usual;
    io.optional(fit);
    if constexpr (Io::kReads) {
        r.fitIntervalFlag = fit == 1.0 || fit > usual ? 1 : 0;
        r.uraIndex = uraIndexOf(r.ura);
    }
}

/// CNAV, and CNAV-2 with a line more. The reference time is the epoch's.
template <class Io>
void cnavFields(Io& io, CALN::CALX_SAT_EPHEMERIS& r) {
    clockFields(io, r);
    io.weekOfEpoch(r, 0);
    io.number(r.aDot, "A DOT");
    shapeFields(io, r);
    io.secondsOfWeek(r.top, "top");
    planeFields(io, r);
    io.number(r.deltaNDot, "Delta n DOT");
    io.integer(r.uraiNed0, "URAI NED0");
    io.integer(r.uraiNed1, "URAI NED1");
    io.integer(r.uraiEd, "URAI ED");
    io.integer(r.health, "the health");
    io.optional(r.tgd);
    io.integer(r.uraiNed2, "URAI NED2");
    for (double* delay : {&r.iscL1CA, &r.iscL2C, &r.iscL5I5, &r.iscL5Q5}) io.optional(*delay);
    if (r.messageType == CALN::eCALGPSMESSAGE_CNAV2) {
        io.optional(r.iscL1Cd);
        io.optional(r.iscL1Cp);
        io.spare();
        io.spare();
    }
    io.transmissionTime(r.transmissionTime, r.toe);
    io.integer(r.topWeek, "the week of top");
}

template <class Io>
void galileoFields(Io& io, CALN::CALX_SAT_EPHEMERIS_GALILEO& r) {
    using Galileo = CALN::CALX_SAT_EPHEMERIS_GALILEO;
    clockFields(io, r);
    io.integer(r.iodNav, "IODnav");
    keplerFields(io, r);
    io.integer(r.dataSources, "the data sources");
    if constexpr (Io::kReads) {
        // Bits 0 and 2: I/NAV on E1-B and E5b-I, bit 1: F/NAV; bit 8: the clock is that of F/NAV, bit 9: of I/NAV.
        const bool inav = (r.dataSources & 5U) != 0;
        const bool fnav = (r.dataSources & 2U) != 0;
        if (r.navType == 0 && !inav && !fnav) io.fault("the data sources name neither I/NAV nor F/NAV");
        const bool fnavClock = (r.dataSources & 0x300U) == 0x100U;
        if (r.navType == 0) r.navType = fnav && (!inav || fnavClock) ? Galileo::kFNav : Galileo::kINav;
        if (r.navType == Galileo::kINav) {
            r.inavReception = (r.dataSources & 5U) == 1U   ? Galileo::kReceivedOnE1B
                              : (r.dataSources & 5U) == 4U ? Galileo::kReceivedOnE5b
                                                           : Galileo::kReceivedOnBoth;
        }
    }
    io.week(r, 0);
    io.spare();
    double sisa = Io::kReads ? -1.0 : r.GetSisa();
    io.optional(sisa, -1.0);
    if constexpr (Io::kReads) r.sisaIndex = Galileo::indexOfSisa(sisa);
    // Three bits each for E1-B, E5a and E5b: data validity, then health.
    unsigned health = 0;
    unsigned shift = 0;
    for (const auto* signal : {&r.e1b, &r.e5a, &r.e5b}) {
        health |= ((signal->dataValidity & 1U) | (signal->health & 3U) << 1U) << shift;
        shift += 3;
    }
    io.integer(health, "the health");
    if constexpr (Io::kReads) {
        for (auto* signal : {&r.e1b, &r.e5a, &r.e5b}) {
            signal->dataValidity = health & 1U;
            signal->health = health >> 1U & 3U;
            health >>= 3U;
        }
    }
    io.optional(r.bgdE5aE1);
    io.optional(r.bgdE5bE1);
    io.transmissionTime(r.transmissionTime, r.toe);
    if constexpr (Io::kReads) {
        const SMjdTime sent(r.week, r.transmissionTime);
        r.pageType1Week = static_cast<unsigned short>(sent.GetGpsWeek());
        r.pageType1Seconds = sent.GetGpsSeconds();
    }
}

/// D1 and D2.
template <class Io>
void beidouFields(Io& io, CALN::CALX_SAT_EPHEMERIS_BEIDOU& r) {
    clockFields(io, r);
    io.integer(r.aode, "AODE");
    keplerFields(io, r);
    io.spare();
    io.week(r, CALN::CALX_SAT_EPHEMERIS_BEIDOU::kGpsWeekOfWeek0);
    io.spare();
    io.optional(r.ura);
    io.integer(r.health, "the health");
    io.optional(r.tgd1);
    io.optional(r.tgd2);
    io.transmissionTime(r.transmissionTime, r.toe);
    io.integer(r.aodc, "AODC");
}

/// B-CNAV1, 2 and 3. The week is the one that brings toe near the epoch.
template <class Io>
void beidouCnavFields(Io& io, CALN::CALX_SAT_EPHEMERIS_BEIDOU& r) {
    clockFields(io, r);
    io.number(r.aDot, "A DOT");
    keplerFields(io, r);
    io.weekOfToe(r, CALN::CALX_SAT_EPHEMERIS_BEIDOU::kGpsWeekOfWeek0);
    io.number(r.deltaNDot, "Delta n DOT");
    io.integer(r.satelliteType, "the type of satellite");
    io.optional(r.top);
    for (auto* index : {&r.sisaiOe, &r.sisaiOcb, &r.sisaiOc1, &r.sisaiOc2}) io.integer(*index, "the SISAI");
    const bool cnav3 = r.messageType == CALN::eCALBDSMESSAGE_CNAV3;
    if (!cnav3) {
        const bool cnav1 = r.messageType == CALN::eCALBDSMESSAGE_CNAV1;
        cnav1 ? io.optional(r.iscB1Cd) : io.spare();
        cnav1 ? io.spare() : io.optional(r.iscB2ad);
        io.optional(r.tgdB1Cp);
        io.optional(r.tgdB2ap);
    }
    io.integer(r.sismai, "the SISMAI");
    io.integer(r.health, "the health");
    io.integer(r.integrityFlags, "the integrity flags");
    cnav3 ? io.optional(r.tgdB2bI) : io.integer(r.iodc, "IODC");
    io.transmissionTime(r.transmissionTime, r.toe);
    if (cnav3) return;
    io.spare();
    io.spare();
    io.integer(r.iode, "IODE");
}

template <class Io>
void navicFields(Io& io, CALN::CALX_SAT_EPHEMERIS_NAVIC& r) {
    clockFields(io, r);
    io.integer(r.iodec, "IODEC");
    keplerFields(io, r);
    io.spare();
    io.week(r, 0);
    io.spare();
    io.optional(r.ura);
    io.integer(r.health, "the health");
    io.optional(r.tgd);
    io.spare();
    io.transmissionTime(r.transmissionTime, r.toe);
}

template <class Io>
void sbasFields(Io& io, SbasOrbit& r) {
    io.number(r.clockBias, "the clock bias");
    io.number(r.clockDrift, "the clock drift");
    io.transmissionTime(r.transmissionTime, r.referenceTime.GetGpsSeconds());
    for (std::size_t axis = 0; axis < 3; ++axis) {
        io.kilometres(r.position[axis], "the position");
        io.kilometres(r.velocity[axis], "the velocity");
        io.kilometres(r.acceleration[axis], "the acceleration");
        if (axis == 0) io.integer(r.health, "the health");
        if (axis == 1) io.optional(r.ura);
        if (axis == 2) io.integer(r.iodn, "IODN");
    }
}

template <class Io>
void timeOffsetFields(Io& io, SystemTimeOffset& r) {
    for (std::string* text : {&r.pair, &r.sbasId, &r.utcId}) io.word(*text);
    io.transmissionTime(r.transmissionTime, 0.0);
    io.number(r.a0, "A0");
    io.number(r.a1, "A1");
    io.optional(r.a2);
}

template <class Io>
void earthOrientationFields(Io& io, EarthOrientation& r) {
    for (double& value : r.xp) io.number(value, "the pole");
    io.spare();
    for (double& value : r.yp) io.number(value, "the pole");
    io.transmissionTime(r.transmissionTime, 0.0);
    for (double& value : r.deltaUt1) io.number(value, "Delta UT1");
}

template <class Io>
void ionosphereFields(Io& io, KlobucharModel& r) {
    for (double& value : r.alpha) io.number(value, "alpha");
    for (double& value : r.beta) io.number(value, "beta");
    io.integer(r.region, "the region");
}

template <class Io>
void ionosphereFields(Io& io, NeQuickModel& r) {
    for (double& value : r.ai) io.number(value, "ai");
    io.integer(r.disturbanceFlags, "the disturbance flags");
}

template <class Io>
void ionosphereFields(Io& io, BdgimModel& r) {
    for (double& value : r.alpha) io.number(value, "alpha");
}

}  // namespace halvex::rinex
