#pragma once

#include <cmath>
#include <cstddef>

// Motion of GLONASS satellites: the state vector of an ephemeris carried to another time by Runge-Kutta steps. One
// kernel, for a single satellite (Number = double) and for several at once (a pack of doubles, see OrbitBatch).

namespace halvex::glonass {

// PZ-90 values. GLONASS ICD 5.1, A.3.1.2.
inline constexpr double kGm = 3.9860044e14;                   ///< [m^3/s^2]
inline constexpr double kOblateness = -2.633267117769225e25;  ///< -3/2 J2 GM a_e^2 [m^5/s^2]
inline constexpr double kEarthRate2 = 5.3174941173225e-9;     ///< square of the Earth's rate [rad^2/s^2]
inline constexpr double kTwiceEarthRate = 0.0001458423;       ///< [rad/s]
/// The library's step: a compromise that costs up to a metre over a quarter of an hour against the minute of the ICD.
inline constexpr double kStep = 500.0;  ///< [s]

template <class Number>
struct State {
    Number x{}, y{}, z{}, vx{}, vy{}, vz{};
};
template <class Number>
struct Acceleration {
    Number x{}, y{}, z{};
};

/// Equations of motion in the Earth-fixed frame; `pull` is that of Sun and Moon [m/s^2].
template <class Number>
inline State<Number> derivative(const State<Number>& s, const Acceleration<Number>& pull) {
    using std::sqrt;
    const Number z2 = s.z * s.z;
    const Number r2 = s.x * s.x + s.y * s.y + z2;
    const Number inverse2 = 1.0 / r2;
    const Number inverse3 = inverse2 / sqrt(r2);
    const Number m = -kGm * inverse3;
    const Number j = kOblateness * inverse3 * inverse2;
    const Number q = 5.0 * z2 * inverse2;
    const Number level = m + j * (1.0 - q) + kEarthRate2;
    return {s.vx,
            s.vy,
            s.vz,
            level * s.x + pull.x + kTwiceEarthRate * s.vy,
            level * s.y + pull.y - kTwiceEarthRate * s.vx,
            (m + j * (3.0 - q)) * s.z + pull.z};
}

template <class Number>
inline State<Number> plus(const State<Number>& s, const State<Number>& k, const Number& h) {
    return {s.x + k.x * h, s.y + k.y * h, s.z + k.z * h, s.vx + k.vx * h, s.vy + k.vy * h, s.vz + k.vz * h};
}

/// One classical fourth-order Runge-Kutta step of `h` seconds; `motion(state)` gives the derivative.
template <class Number, class Motion>
inline State<Number> step(const State<Number>& s, const Number& h, Motion&& motion) {
    const Number half = h * 0.5;
    const State<Number> k1 = motion(s);
    const State<Number> k2 = motion(plus(s, k1, half));
    const State<Number> k3 = motion(plus(s, k2, half));
    const State<Number> k4 = motion(plus(s, k3, h));
    const Number sixth = h / 6.0;
    return {s.x + sixth * (k1.x + 2.0 * k2.x + 2.0 * k3.x + k4.x),
            s.y + sixth * (k1.y + 2.0 * k2.y + 2.0 * k3.y + k4.y),
            s.z + sixth * (k1.z + 2.0 * k2.z + 2.0 * k3.z + k4.z),
            s.vx + sixth * (k1.vx + 2.0 * k2.vx + 2.0 * k3.vx + k4.vx),
            s.vy + sixth * (k1.vy + 2.0 * k2.vy + 2.0 * k3.vy + k4.vy),
            s.vz + sixth * (k1.vz + 2.0 * k2.vz + 2.0 * k3.vz + k4.vz)};
}

/// How a time is cut into steps of a length [s]: all of `step` seconds but the last; a whole multiple ends with a step
/// of length 0.
struct Steps {
    int count = 0;
    double step = 0.0;
    double last = 0.0;
};
inline Steps stepsFor(double seconds, double length = kStep) {
    const int count = std::abs(static_cast<int>(seconds / length)) + 1;
    const double step = seconds > 0.0 ? length : -length;
    return {count, step, seconds - step * (count - 1)};
}

/// Carries a state over `seconds` (at most some weeks).
template <class Motion>
inline State<double> propagate(State<double> state, double seconds, Motion&& motion, double length = kStep) {
    const Steps steps = stepsFor(seconds, length);
    for (int i = 1; i < steps.count; ++i) state = step(state, steps.step, motion);
    return step(state, steps.last, motion);
}

}  // namespace halvex::glonass
