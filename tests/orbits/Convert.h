#pragma once

#include <gtest/gtest.h>

#include "halvex/orbits/HalvexAlmanac.h"
#include "halvex/orbits/HalvexAlmanacGlonass.h"
#include "halvex/orbits/HalvexEphemeris.h"
#include "halvex/orbits/HalvexEphemerisGLO.h"
#include "halvex/orbits/HalvexIonoUtc.h"
#include "halvex/orbits/HalvexTimeInfoGlonass.h"
#include "halvex/platform/kernix/ByteCodec.h"
#include "tests/support/Bytes.h"

namespace halvex::test {

/// The conversions under one name.
template <class From, class To>
bool convert(const From& from, To& to) {
    if constexpr (requires { convertGPSEphemeris(from, to); }) return convertGPSEphemeris(from, to);
    if constexpr (requires { convertGLOEphemeris(from, to); }) return convertGLOEphemeris(from, to);
    if constexpr (requires { convertGPSAlmanac(from, to); }) return convertGPSAlmanac(from, to);
    if constexpr (requires { convertGLOAlmanac(from, to); }) return convertGLOAlmanac(from, to);
    if constexpr (requires { convertIonoUTC(from, to); }) return convertIonoUTC(from, to);
    if constexpr (requires { convertGLOClkInfo(from, to); }) return convertGLOClkInfo(from, to);
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
    if (type == 'B') return patched(object, offset, static_cast<std::uint8_t>(value));
    if (type == 'H') return patched(object, offset, static_cast<std::uint16_t>(value));
    if (type == 'I') return patched(object, offset, static_cast<std::uint32_t>(value));
    return type == 'f' ? patched(object, offset, static_cast<float>(value)) : patched(object, offset, value);
}

}  // namespace halvex::test
