#pragma once

#include <array>
#include <bit>
#include <cmath>
#include <cstddef>

// Kepler orbits with the corrections of broadcast ephemerides. One kernel, for a single satellite (Number = double) and
// for several at once (Number = a pack of doubles, see OrbitBatch).

namespace halvex::kepler {

/// What a system's interface document fixes: gravitational parameter [m^3/s^2] and rotation rate of the Earth [rad/s].
/// The broadcast elements were fitted with these, so newer values would be wrong.
struct Constants {
    double gm;
    double earthRate;
};
inline constexpr Constants kGps{3.986005e14, 7.2921151467e-5};         ///< IS-GPS-200, table 20-IV; QZSS and NavIC too
inline constexpr Constants kGalileo{3.986004418e14, 7.2921151467e-5};  ///< Galileo OS SIS ICD, 5.1.1
inline constexpr Constants kBeidou{3.986004418e14, 7.2921150e-5};      ///< BDS-SIS-ICD-B1I, 5.2.4.12 (CGCS2000)

/// Orbits lower than this are none of a navigation satellite: their elements are rubbish [m].
inline constexpr double kSmallestSemiMajorAxis = 2.0e7;
inline constexpr double kHalfWeek = 302400.0;
inline constexpr double kWeek = 604800.0;

/// Brings a time from a reference into half a week on either side, with one correction each way and no loop: an absurd
/// reference time stays absurd but costs nothing. IS-GPS-200, 20.3.3.4.3.
inline double withinHalfWeek(double seconds) {
    if (seconds < -kHalfWeek) seconds += kWeek;
    if (seconds > kHalfWeek) seconds -= kWeek;
    return seconds;
}

/// Elements of one orbit, or of several side by side, with what does not depend on time worked out.
template <class Number>
struct Elements {
    Number a{}, aDot{};                    // semi-major axis [m], its rate [m/s]
    Number meanMotion{}, meanMotionDot{};  // with its correction [rad/s]; half of its rate [rad/s^2]
    Number m0{}, e{}, rootOneMinusE2{};
    Number sinOmega{}, cosOmega{};              // of the argument of perigee
    Number omega0{}, nodeRate{}, earthAngle{};  // node: omega0 + nodeRate tk - earthAngle
    Number i0{}, idot{};
    Number cuc{}, cus{}, crc{}, crs{}, cic{}, cis{};
};
inline constexpr std::size_t kElements = sizeof(Elements<double>) / sizeof(double);

inline bool sameValue(double left, double right) {
    return left == right;
}

inline bool isWithin(double value, double bound) {
    return std::abs(value) <= bound;
}

inline void sineAndCosine(double angle, double& sine, double& cosine) {
    sine = std::sin(angle);
    cosine = std::cos(angle);
}

/// The same, by a few terms of their series where all angles are small enough for these to be exact.
template <class Number>
inline void sineAndCosineOfSmall(const Number& angle, Number& sine, Number& cosine) {
    constexpr double kSmall = 0.01;  // the first terms left out: 2e-18 and 3e-21
    if (!isWithin(angle, kSmall)) return sineAndCosine(angle, sine, cosine);
    const Number square = angle * angle;
    sine = angle - angle * square * (1.0 / 6.0) * (1.0 - square * (1.0 / 20.0));
    cosine = 1.0 - square * 0.5 * (1.0 - square * (1.0 / 12.0) * (1.0 - square * (1.0 / 30.0)));
}

/// Of any record that names the elements as CALX_SAT_EPHEMERIS_COMMON does. `inertialNode`: the node's longitude counts
/// in a frame that does not turn with the Earth (geostationary BeiDou).
template <class Record>
inline Elements<double> elementsOf(const Record& r, const Constants& constants, bool inertialNode = false) {
    Elements<double> o;
    o.a = r.sqrtA * r.sqrtA;
    o.meanMotion = std::sqrt(constants.gm / (o.a * o.a * o.a));
    o.m0 = r.m0;
    o.e = r.e;
    o.rootOneMinusE2 = std::sqrt(1.0 - r.e * r.e);
    sineAndCosine(r.omega, o.sinOmega, o.cosOmega);
    o.omega0 = r.omega0;
    o.nodeRate = inertialNode ? r.omegaDot : r.omegaDot - constants.earthRate;
    if constexpr (requires { r.toa; }) {  // an almanac, whose toa may lie behind its week
        o.earthAngle = constants.earthRate * (r.toa - kWeek * std::floor(r.toa / kWeek));
        o.i0 = r.i;
    } else {
        o.meanMotion += r.deltaN;
        o.earthAngle = constants.earthRate * r.toe;
        o.i0 = r.i0;
        o.idot = r.idot;
        o.cuc = r.cuc;
        o.cus = r.cus;
        o.crc = r.crc;
        o.crs = r.crs;
        o.cic = r.cic;
        o.cis = r.cis;
    }
    if constexpr (requires { r.aDot; }) {
        o.aDot = r.aDot;
        o.meanMotionDot = 0.5 * r.deltaNDot;
    }
    return o;
}

template <class Number>
struct Position {
    Number x, y, z;
};

/// Earth-fixed position `tk` seconds from the reference time. IS-GPS-200, 20.3.3.4.3 and table 20-IV; with aDot and
/// meanMotionDot table 30-II. No velocity, no clock, no relativity.
///
/// Kepler's equation by ten fixed-point steps; the true anomaly takes the sine of the estimate before the last step and
/// the cosine of the last. A step that gives its estimate back to the bit would go on doing so: the rest is left out.
/// The angles that follow - true anomaly, argument of latitude, its correction - are summed up by their sines and
/// cosines, so that two calls of atan2 and sincos are saved and nothing but the last bits changes.
template <class Number>
inline Position<Number> position(const Elements<Number>& o, const Number& tk) {
    using std::cos;
    using std::sin;
    using std::sqrt;

    const Number m = o.m0 + (o.meanMotion + o.meanMotionDot * tk) * tk;
    Number anomaly = m;
    Number sine{};
    for (int step = 0; step < 10; ++step) {
        sine = sin(anomaly);
        const Number next = m + o.e * sine;
        const bool settled = sameValue(next, anomaly);
        anomaly = next;
        if (settled) break;
    }
    const Number cosine = cos(anomaly);
    const Number x = cosine - o.e;
    const Number y = o.rootOneMinusE2 * sine;
    const Number inverse = 1.0 / sqrt(x * x + y * y);
    const Number sinV = y * inverse;
    const Number cosV = x * inverse;
    const Number sinPhi = sinV * o.cosOmega + cosV * o.sinOmega;
    const Number cosPhi = cosV * o.cosOmega - sinV * o.sinOmega;
    const Number s2 = 2.0 * (sinPhi * cosPhi);
    const Number c2 = cosPhi * cosPhi - sinPhi * sinPhi;
    const Number r = (o.a + o.aDot * tk) * (1.0 - o.e * cosine) + (o.crc * c2 + o.crs * s2);
    const Number i = o.i0 + (o.cic * c2 + o.cis * s2) + o.idot * tk;
    Number sinDu, cosDu;
    sineAndCosineOfSmall(o.cus * s2 + o.cuc * c2, sinDu, cosDu);
    const Number node = o.omega0 + o.nodeRate * tk - o.earthAngle;

    Number sinI, cosI, sinNode, cosNode;
    sineAndCosine(i, sinI, cosI);
    sineAndCosine(node, sinNode, cosNode);
    const Number inPlaneX = r * (cosPhi * cosDu - sinPhi * sinDu);
    const Number inPlaneY = r * (sinPhi * cosDu + cosPhi * sinDu);
    return {inPlaneX * cosNode - inPlaneY * cosI * sinNode, inPlaneX * sinNode + inPlaneY * cosI * cosNode,
            inPlaneY * sinI};
}

/// Geostationary BeiDou satellites: from the tilted inertial frame of position() with an inertial node to the
/// Earth-fixed one, by -5 degrees about x and the Earth's turn since the reference time about z. BDS-SIS-ICD-B1I,
/// 5.2.4.12.
inline Position<double> turnGeostationary(const Position<double>& p, double tk) {
    constexpr double kSinTilt = -0.087155742747658174;  // of -5 degrees
    constexpr double kCosTilt = 0.99619469809174553;
    double sine = 0.0;
    double cosine = 0.0;
    sineAndCosine(kBeidou.earthRate * tk, sine, cosine);
    const double y = kCosTilt * p.y + kSinTilt * p.z;
    const double z = -kSinTilt * p.y + kCosTilt * p.z;
    return {cosine * p.x + sine * y, -sine * p.x + cosine * y, z};
}

}  // namespace halvex::kepler
