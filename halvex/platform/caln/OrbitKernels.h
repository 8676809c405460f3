#pragma once

#include <algorithm>
#include <bit>
#include <cmath>

#include "halvex/platform/caln/OrbitBatch.h"

// The kernels of OrbitBatch over a pack of numbers. `Pack` is double, or a type with the arithmetic of double, a
// constant kWidth, load and store, and sin, cos, asin, atan2, sqrt, sineAndCosine, sameValue and clampToOne beside it.

namespace halvex::kernels {

template <class Pack>
struct PackTraits {
    static constexpr std::size_t kWidth = Pack::kWidth;
    static Pack load(const double* from) { return Pack::load(from); }
    static void store(const Pack& pack, double* to) { pack.store(to); }
};
template <>
struct PackTraits<double> {
    static constexpr std::size_t kWidth = 1;
    static double load(const double* from) { return *from; }
    static void store(double value, double* to) { *to = value; }
};

inline double clampToOne(double value) {
    return value > 1.0 ? 1.0 : value < -1.0 ? -1.0 : value;
}

template <class Pack>
void keplerPositions(const KeplerLanes& orbits, std::size_t count, PositionLanes& positions) {
    using Traits = PackTraits<Pack>;
    static_assert(sizeof(kepler::Elements<Pack>) == kepler::kElements * sizeof(Pack));
    for (std::size_t lane = 0; lane < count; lane += Traits::kWidth) {
        std::array<Pack, kepler::kElements> numbers;
        for (std::size_t i = 0; i < numbers.size(); ++i) numbers[i] = Traits::load(&orbits.elements[i][lane]);
        const auto elements = std::bit_cast<kepler::Elements<Pack>>(numbers);
        const auto position = kepler::position(elements, Traits::load(&orbits.tk[lane]));
        Traits::store(position.x, &positions.x[lane]);
        Traits::store(position.y, &positions.y[lane]);
        Traits::store(position.z, &positions.z[lane]);
    }
}

template <class Pack>
void glonassPositions(const GlonassLanes& orbits, std::size_t count, PositionLanes& positions) {
    using Traits = PackTraits<Pack>;
    for (std::size_t lane = 0; lane < count; lane += Traits::kWidth) {
        const auto load = [lane](const Lanes& lanes) { return Traits::load(&lanes[lane]); };
        const auto& s = orbits.state;
        glonass::State<Pack> state{load(s[0]), load(s[1]), load(s[2]), load(s[3]), load(s[4]), load(s[5])};
        const glonass::Acceleration<Pack> pull{load(orbits.pull[0]), load(orbits.pull[1]), load(orbits.pull[2])};

        const auto* steps = &orbits.steps[lane];
        int longest = 0;
        for (std::size_t i = 0; i < Traits::kWidth; ++i) longest = std::max(longest, steps[i].count);
        for (int step = 1; step <= longest; ++step) {
            alignas(64) double h[Traits::kWidth];  // satellites that have arrived take steps of length 0
            for (std::size_t i = 0; i < Traits::kWidth; ++i) {
                h[i] = step < steps[i].count ? steps[i].step : step == steps[i].count ? steps[i].last : 0.0;
            }
            state = glonass::step(state, Traits::load(h),
                                  [&pull](const auto& at) { return glonass::derivative(at, pull); });
        }
        Traits::store(state.x, &positions.x[lane]);
        Traits::store(state.y, &positions.y[lane]);
        Traits::store(state.z, &positions.z[lane]);
    }
}

template <class Pack>
void directions(const LocalFrame& frame, const PositionLanes& positions, std::size_t count, Lanes& elevation,
                Lanes& azimuth) {
    using std::asin;
    using std::atan2;
    using std::sqrt;
    using Traits = PackTraits<Pack>;
    const ORBIT_COORD& n = frame.north();
    const ORBIT_COORD& e = frame.east();
    const ORBIT_COORD& u = frame.up();
    for (std::size_t lane = 0; lane < count; lane += Traits::kWidth) {
        const Pack x = Traits::load(&positions.x[lane]) - frame.site().x;
        const Pack y = Traits::load(&positions.y[lane]) - frame.site().y;
        const Pack z = Traits::load(&positions.z[lane]) - frame.site().z;
        const Pack sine = (u.x * x + u.y * y + u.z * z) / sqrt(x * x + y * y + z * z);
        Traits::store(asin(clampToOne(sine)), &elevation[lane]);
        Traits::store(atan2(e.x * x + e.y * y, n.x * x + n.y * y + n.z * z), &azimuth[lane]);
    }
}

template <class Pack>
constexpr OrbitKernels kernelsOf(const char* name) {
    return {&keplerPositions<Pack>, &glonassPositions<Pack>, &directions<Pack>, name};
}

}  // namespace halvex::kernels
