#include <gtest/gtest.h>

#include <algorithm>

#include "halvex/platform/caln/OrbitBatch.h"
#include "halvex/platform/caln/SatPosition.h"
#include "tests/support/OrbitSamples.h"

namespace {

using namespace halvex;
using namespace halvex::test;

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

/// Adds `count` orbits of each kind; every one of `absurd` is of no use. What the others must come to, by tag.
std::vector<ORBIT_COORD> fill(OrbitBatch& batch, std::size_t count, const std::vector<std::size_t>& absurd,
                              RandomFields& random) {
    std::vector<ORBIT_COORD> expected(2 * count);
    for (std::size_t i = 0; i < count; ++i) {
        CALN::CALX_SAT_EPHEMERIS_BEIDOU record;
        anyElements(record, random);
        const bool geostationary = i % 3 == 0;
        auto elements = kepler::elementsOf(record, kepler::kBeidou, geostationary);
        double tk = random.number(-20000, 20000);
        auto position = kepler::position(elements, tk);
        if (geostationary) position = kepler::turnGeostationary(position, tk);
        expected[2 * i] = {position.x, position.y, position.z};

        glonass::State<double> state{random.number(2e7, 3e7),  random.number(-1e7, 1e7), random.number(-1e7, 1e7),
                                     random.number(-3e3, 3e3), random.number(-3e3, 3e3), random.number(-3e3, 3e3)};
        const glonass::Acceleration<double> pull{1e-6, -2e-6, random.number(-1e-6, 1e-6)};
        const double seconds = random.number(-3000, 3000);
        const auto end =
            glonass::propagate(state, seconds, [&](const auto& s) { return glonass::derivative(s, pull); });
        expected[2 * i + 1] = {end.x, end.y, end.z};
        transformPZ90ToWGS84(expected[2 * i + 1]);
        if (std::ranges::count(absurd, i) != 0) {
            elements.e = i % 2 == 0 ? kNan : 1e300;
            elements.m0 = 1e308;
            tk = 1e18;
            state.x = i % 2 == 0 ? kNan : 1e308;
        }
        batch.addKepler(2 * i, elements, tk, geostationary);
        batch.addGlonass(2 * i + 1, state, pull, seconds);
    }
    return expected;
}

TEST(OrbitBatch, AllKernelsAgreeWithSingleOrbitsWhateverTheNeighbours) {
    for (const OrbitKernels* kernels : {&plainOrbitKernels(), &orbitKernels()}) {
        RandomFields random;
        OrbitBatch batch;  // used again and again: old numbers must not show
        for (const std::size_t count : {1U, 3U, 4U, 5U, 8U, 63U, 0U, 7U}) {
            for (const std::vector<std::size_t>& absurd : {std::vector<std::size_t>{}, {0}, {1, 2}, {0, 2, 3, 6}}) {
                batch.clear();
                const auto expected = fill(batch, count, absurd, random);
                std::vector<int> seen(expected.size(), 0);
                batch.compute(*kernels, [&](std::size_t tag, const ORBIT_COORD& position) {
                    ASSERT_LT(tag, seen.size());
                    ++seen[tag];
                    const ORBIT_COORD& p = expected[tag];
                    const double off = std::hypot(position.x - p.x, position.y - p.y, position.z - p.z);
                    EXPECT_TRUE(off < 1e-6 || std::ranges::count(absurd, tag / 2) != 0)
                        << kernels->name << ' ' << count << ' ' << tag;
                });
                EXPECT_EQ(seen, std::vector<int>(expected.size(), 1));
            }
        }
    }
}

}  // namespace
