#pragma once

#include <cstddef>
#include <string>

#include "halvex/platform/caln/EphemerisGlonass.h"
#include "halvex/platform/mjd/MjdTime.h"

namespace halvex::rinex {

/// Sets the reference time of a GLONASS record from its epoch in UTC: on the GPS scale, and in the terms of the
/// message, which counts from Moscow's midnight. False when a record cannot hold it.
[[nodiscard]] bool setGlonassTime(const SMjdTime& utc, int leapSeconds, CALN::CALX_SAT_EPHEMERIS_GLONASS& record);

/// The day's second in Moscow of a second of the day or week in UTC, and back to the second of the UTC week that is
/// nearest to an instant.
[[nodiscard]] unsigned moscowSecond(double utcSecond);
[[nodiscard]] double utcSecondOfWeek(unsigned moscowSecond, const SMjdTime& near);

/// The fields of a GLONASS record behind its epoch `utc`. `status`: with the line of versions 3.05 and 4.
/// GLONASS ICD 5.1, 4.4; RINEX 4.01, appendix A.
template <class Io>
void glonassFields(Io& io, CALN::CALX_SAT_EPHEMERIS_GLONASS& r, const SMjdTime& utc, bool status) {
    double minusTauN = -r.tauN;
    io.number(minusTauN, "the clock bias");
    r.tauN = -minusTauN;
    io.number(r.gammaN, "the frequency bias");
    double frame = Io::kReads ? 0.0 : utcSecondOfWeek(r.frameTime, utc);
    io.transmissionTime(frame, utc.GetGpsSeconds());
    if constexpr (Io::kReads) r.frameTime = moscowSecond(frame);
    unsigned bn = r.health & 1U;
    int channel = +r.frequencyNumber;
    for (std::size_t axis = 0; axis < 3; ++axis) {
        io.kilometres(r.position[axis], "the position");
        io.kilometres(r.velocity[axis], "the velocity");
        io.kilometres(r.acceleration[axis], "the acceleration");
        if (axis == 0) io.integer(bn, "the health");
        if (axis == 1) io.integer(channel, "the frequency number");
        if (axis == 2) io.integer(r.ageOfData, "the age of the data");
    }
    if constexpr (Io::kReads) {
        if (channel > 127) channel -= 256;  // the byte of a negative one, as old files have it
        // GLONASS ICD 5.1, 3.3.1.1; 7 to 13 were in use until 2005.
        if (channel < -7 || channel > 13) io.fault("there is no frequency number " + std::to_string(channel));
        r.frequencyNumber = static_cast<signed char>(channel);
    }
    // Status: P, P1, P2, P3, P4 in bits 0 to 6, M in bits 7 and 8. Health: Cn, A_C and ln from bit 0 on; published
    // files show which is ln: it goes with Bn.
    unsigned flags = (r.controlFlags & 0x7FU) | (r.modification & 3U) << 7U;
    unsigned health = r.healthFlags & 7U;
    if (status) {
        io.integer(flags, "the status flags");
        io.optionalKnown(r.deltaTauN);
        io.integer(r.accuracyIndex, "the accuracy index", 15);
        io.integer(health, "the health flags");
    } else if constexpr (Io::kReads) {
        r.accuracyIndex = 15;
    }
    if constexpr (Io::kReads) {
        r.controlFlags = flags & 0x7FU;
        r.modification = static_cast<unsigned char>(flags >> 7U & 3U);
        r.healthFlags = health & 7U;
        r.health = (bn != 0 ? 1U : 0U) | (health >> 2U & 1U) << 1U;
    }
}

}  // namespace halvex::rinex
