#pragma once

#include <array>
#include <cstddef>
#include <span>

#include "halvex/platform/caln/Coordinates.h"
#include "halvex/platform/caln/GlonassMotion.h"
#include "halvex/platform/caln/KeplerOrbit.h"
#include "halvex/platform/caln/SatelliteSystem.h"

namespace halvex {

/// Numbers of many satellites side by side. Lanes behind the used ones hold harmless zeros or old numbers, so that
/// kernels may work on whole packs.
inline constexpr std::size_t kLanes = (static_cast<std::size_t>(kSatellites) + 7) / 8 * 8;
struct alignas(64) Lanes : std::array<double, kLanes> {};

/// Positions by lane [m].
struct PositionLanes {
    Lanes x, y, z;
    [[nodiscard]] ORBIT_COORD at(std::size_t lane) const { return {x[lane], y[lane], z[lane]}; }
};

struct KeplerLanes {
    std::array<Lanes, kepler::kElements> elements;
    Lanes tk;
};

struct GlonassLanes {
    std::array<Lanes, 6> state;
    std::array<Lanes, 3> pull;
    std::array<glonass::Steps, kLanes> steps{};
};

/// What is worked out for many satellites at once: plain, or with vector units. All give the same to well below a
/// micrometre or, for directions, 1e-13 rad.
struct OrbitKernels {
    void (*kepler)(const KeplerLanes& orbits, std::size_t count, PositionLanes& positions);
    void (*glonass)(const GlonassLanes& orbits, std::size_t count, PositionLanes& positions);
    /// Elevation, and azimuth from -pi to pi.
    void (*directions)(const LocalFrame& frame, const PositionLanes& positions, std::size_t count, Lanes& elevation,
                       Lanes& azimuth);
    const char* name;
};
[[nodiscard]] const OrbitKernels& plainOrbitKernels();
/// The fastest that this machine can run.
[[nodiscard]] const OrbitKernels& orbitKernels();

/// Positions of many satellites at one instant. Collects orbits, works them out together. One thread at a time.
class OrbitBatch {
public:
    void clear();
    /// Up to kLanes orbits in all. `tag` comes back with the position.
    void addKepler(std::size_t tag, const kepler::Elements<double>& elements, double tk, bool geostationary);
    void addGlonass(std::size_t tag, const glonass::State<double>& state, const glonass::Acceleration<double>& pull,
                    double seconds);
    /// Calls `take(tag, position)` for every orbit; GLONASS positions are transformed to WGS-84.
    template <class Take>
    void compute(const OrbitKernels& kernels, Take&& take) {
        run(kernels);
        for (std::size_t i = 0; i < m_keplerCount; ++i) take(m_keplerTags[i], m_keplerPositions.at(i));
        for (std::size_t i = 0; i < m_glonassCount; ++i) take(m_glonassTags[i], m_glonassPositions.at(i));
    }

private:
    void run(const OrbitKernels& kernels);

    KeplerLanes m_kepler{};
    GlonassLanes m_glonass{};
    PositionLanes m_keplerPositions{}, m_glonassPositions{};
    std::array<std::size_t, kLanes> m_keplerTags{}, m_glonassTags{}, m_geostationary{};
    std::size_t m_keplerCount = 0, m_glonassCount = 0, m_geostationaryCount = 0;
};

}  // namespace halvex
