#include "halvex/platform/caln/OrbitBatch.h"

#include "halvex/platform/caln/OrbitKernels.h"
#include "halvex/platform/caln/SatPosition.h"

namespace halvex {

#ifdef HALVEX_HAS_AVX2_KERNELS
extern const OrbitKernels avx2OrbitKernels;
#endif

const OrbitKernels& plainOrbitKernels() {
    static constexpr OrbitKernels kPlain = kernels::kernelsOf<double>("plain");
    return kPlain;
}

const OrbitKernels& orbitKernels() {
#ifdef HALVEX_HAS_AVX2_KERNELS
    static const bool hasAvx2 = __builtin_cpu_supports("avx2") != 0 && __builtin_cpu_supports("fma") != 0;
    if (hasAvx2) return avx2OrbitKernels;
#endif
    return plainOrbitKernels();
}

void OrbitBatch::clear() {
    m_keplerCount = 0;
    m_glonassCount = 0;
    m_geostationaryCount = 0;
}

void OrbitBatch::addKepler(std::size_t tag, const kepler::Elements<double>& elements, double tk, bool geostationary) {
    const std::size_t lane = m_keplerCount++;
    const auto numbers = std::bit_cast<std::array<double, kepler::kElements>>(elements);
    for (std::size_t i = 0; i < numbers.size(); ++i) m_kepler.elements[i][lane] = numbers[i];
    m_kepler.tk[lane] = tk;
    m_keplerTags[lane] = tag;
    if (geostationary) m_geostationary[m_geostationaryCount++] = lane;
}

void OrbitBatch::addGlonass(std::size_t tag, const glonass::State<double>& state,
                            const glonass::Acceleration<double>& pull, double seconds) {
    const std::size_t lane = m_glonassCount++;
    const std::array numbers{state.x, state.y, state.z, state.vx, state.vy, state.vz};
    for (std::size_t i = 0; i < numbers.size(); ++i) m_glonass.state[i][lane] = numbers[i];
    m_glonass.pull[0][lane] = pull.x;
    m_glonass.pull[1][lane] = pull.y;
    m_glonass.pull[2][lane] = pull.z;
    m_glonass.steps[lane] = glonass::stepsFor(seconds);
    m_glonassTags[lane] = tag;
}

void OrbitBatch::run(const OrbitKernels& kernels) {
    // A last pack that is not full works on what an earlier batch left there: of no interest, but it must end soon.
    for (std::size_t lane = m_glonassCount; lane < kLanes && lane % 8 != 0; ++lane) m_glonass.steps[lane] = {};
    kernels.kepler(m_kepler, m_keplerCount, m_keplerPositions);
    kernels.glonass(m_glonass, m_glonassCount, m_glonassPositions);
    for (std::size_t i = 0; i < m_geostationaryCount; ++i) {
        const std::size_t lane = m_geostationary[i];
        const auto [x, y, z] = m_keplerPositions.at(lane);
        const auto turned = kepler::turnGeostationary({x, y, z}, m_kepler.tk[lane]);
        m_keplerPositions.x[lane] = turned.x;
        m_keplerPositions.y[lane] = turned.y;
        m_keplerPositions.z[lane] = turned.z;
    }
    for (std::size_t lane = 0; lane < m_glonassCount; ++lane) {
        ORBIT_COORD position = m_glonassPositions.at(lane);
        transformPZ90ToWGS84(position);
        m_glonassPositions.x[lane] = position.x;
        m_glonassPositions.y[lane] = position.y;
        m_glonassPositions.z[lane] = position.z;
    }
}

}  // namespace halvex
