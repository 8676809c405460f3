// The kernels of OrbitBatch with four numbers in a vector register. Compiled for AVX2 and FMA; called only where the
// processor has both. SLEEF's functions of 3.5 units in the last place leave some 10 nm in a position.

#include <immintrin.h>
#include <sleef.h>

#include "halvex/platform/caln/OrbitKernels.h"

namespace halvex {
namespace avx2 {

struct Pack4 {
    static constexpr std::size_t kWidth = 4;

    Pack4() : v(_mm256_setzero_pd()) {}
    Pack4(__m256d vector) : v(vector) {}
    Pack4(double value) : v(_mm256_set1_pd(value)) {}
    static Pack4 load(const double* from) { return _mm256_loadu_pd(from); }
    void store(double* to) const { _mm256_storeu_pd(to, v); }

    friend Pack4 operator+(Pack4 a, Pack4 b) { return _mm256_add_pd(a.v, b.v); }
    friend Pack4 operator-(Pack4 a, Pack4 b) { return _mm256_sub_pd(a.v, b.v); }
    friend Pack4 operator*(Pack4 a, Pack4 b) { return _mm256_mul_pd(a.v, b.v); }
    friend Pack4 operator/(Pack4 a, Pack4 b) { return _mm256_div_pd(a.v, b.v); }

    friend Pack4 sqrt(Pack4 a) { return _mm256_sqrt_pd(a.v); }
    friend Pack4 sin(Pack4 a) { return Sleef_sind4_u35avx2(a.v); }
    friend Pack4 cos(Pack4 a) { return Sleef_cosd4_u35avx2(a.v); }
    friend Pack4 asin(Pack4 a) { return Sleef_asind4_u35avx2(a.v); }
    friend Pack4 atan2(Pack4 y, Pack4 x) { return Sleef_atan2d4_u35avx2(y.v, x.v); }
    friend void sineAndCosine(Pack4 angle, Pack4& sine, Pack4& cosine) {
        const auto both = Sleef_sincosd4_u35avx2(angle.v);
        sine = both.x;
        cosine = both.y;
    }
    friend bool sameValue(Pack4 a, Pack4 b) { return _mm256_movemask_pd(_mm256_cmp_pd(a.v, b.v, _CMP_EQ_OQ)) == 0xF; }
    friend bool isWithin(Pack4 a, double bound) {
        const __m256d magnitude = _mm256_andnot_pd(_mm256_set1_pd(-0.0), a.v);
        return _mm256_movemask_pd(_mm256_cmp_pd(magnitude, _mm256_set1_pd(bound), _CMP_LE_OQ)) == 0xF;
    }
    friend Pack4 clampToOne(Pack4 a) {  // of a NaN these instructions give their second operand: it must stay one
        return _mm256_max_pd(_mm256_set1_pd(-1.0), _mm256_min_pd(_mm256_set1_pd(1.0), a.v));
    }

    __m256d v;
};

}  // namespace avx2

extern const OrbitKernels avx2OrbitKernels;
const OrbitKernels avx2OrbitKernels = kernels::kernelsOf<avx2::Pack4>("AVX2");

}  // namespace halvex
