#pragma once

#include <gtest/gtest.h>

#include <cstring>

#include "halvex/orbits/HalvexAlmanac.h"
#include "halvex/orbits/HalvexAlmanacGlonass.h"
#include "halvex/orbits/HalvexEphemeris.h"
#include "halvex/orbits/HalvexEphemerisGLO.h"
#include "halvex/orbits/HalvexIonoUtc.h"
#include "halvex/orbits/HalvexTimeInfoGlonass.h"
#include "halvex/platform/kernix/ByteCodec.h"
#include "tests/support/Bytes.h"

namespace halvex::test {

// The conversions under one name.
inline bool convert(const CALN::CALX_SAT_EPHEMERIS& r, CHalvexEphemeris& o) {
    return convertGPSEphemeris(r, o);
}
inline bool convert(const CHalvexEphemeris& o, CALN::CALX_SAT_EPHEMERIS& r) {
    return convertGPSEphemeris(o, r);
}
inline bool convert(const CALN::CALX_SAT_EPHEMERIS_GLONASS& r, CHalvexEphemerisGLO& o) {
    return convertGLOEphemeris(r, o);
}
inline bool convert(const CHalvexEphemerisGLO& o, CALN::CALX_SAT_EPHEMERIS_GLONASS& r) {
    return convertGLOEphemeris(o, r);
}
inline bool convert(const CALN::CALX_SAT_ALMANAC& r, CHalvexAlmanac& o) {
    return convertGPSAlmanac(r, o);
}
inline bool convert(const CHalvexAlmanac& o, CALN::CALX_SAT_ALMANAC& r) {
    return convertGPSAlmanac(o, r);
}
inline bool convert(const CALN::CALX_SAT_ALMANAC_GLONASS& r, CHalvexAlmanacGlonass& o) {
    return convertGLOAlmanac(r, o);
}
inline bool convert(const CHalvexAlmanacGlonass& o, CALN::CALX_SAT_ALMANAC_GLONASS& r) {
    return convertGLOAlmanac(o, r);
}
inline bool convert(const CALN::CALX_IONO_UTC& r, CHalvexIonoUtc& o) {
    return convertIonoUTC(r, o);
}
inline bool convert(const CHalvexIonoUtc& o, CALN::CALX_IONO_UTC& r) {
    return convertIonoUTC(o, r);
}
inline bool convert(const CALN::CALX_CLOCK_GLONASS& r, CHalvexTimeInfoGlonass& o) {
    return convertGLOClkInfo(r, o);
}
inline bool convert(const CHalvexTimeInfoGlonass& o, CALN::CALX_CLOCK_GLONASS& r) {
    return convertGLOClkInfo(o, r);
}

template <class Object, class Record>
Object as(const Record& record) {
    Object object;
    EXPECT_TRUE(convert(record, object));
    return object;
}

/// The object with one field of its saved form changed.
template <class T, class Object>
Object patched(Object object, std::size_t offset, T value) {
    Bytes bytes = saved(object);
    storeLittleEndian(bytes.data() + offset, value);
    EXPECT_TRUE(object.loadData(bytes.data(), bytes.size()));
    return object;
}
/// The same with the field's type as a letter: B, H, I for unsigned integers of 1, 2, 4 bytes, f and d.
template <class Object>
Object patched(const Object& object, std::size_t offset, char type, double value) {
    switch (type) {
        case 'B':
            return patched(object, offset, static_cast<std::uint8_t>(value));
        case 'H':
            return patched(object, offset, static_cast<std::uint16_t>(value));
        case 'I':
            return patched(object, offset, static_cast<std::uint32_t>(value));
        case 'f':
            return patched(object, offset, static_cast<float>(value));
        default:
            return patched(object, offset, value);
    }
}

}  // namespace halvex::test
