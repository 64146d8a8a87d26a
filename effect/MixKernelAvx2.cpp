#include <immintrin.h>

#include <algorithm>

#include "effect/MixKernel.h"
#include "effect/OscillatorSteps.h"

// Everything from here on may use AVX2 and BMI2 (never FMA: products and sums stay separately
// rounded; BMI2 shifts by any register, which the index arithmetic needs twice at once).
// Only mixAvx2 is reachable from outside, and the engine calls it only on processors that have
// both.
#pragma GCC push_options
#pragma GCC target("avx2,bmi2")

#include "effect/MixKernel.inl"

namespace {

struct Avx2Lanes {
    using F = __m256;
    static constexpr int32_t width = 8;
    static F load(const float* p) { return _mm256_loadu_ps(p); }
    static void store(float* p, F v) { _mm256_storeu_ps(p, v); }
    static F splat(float v) { return _mm256_set1_ps(v); }
    static F add(F a, F b) { return _mm256_add_ps(a, b); }
    static F sub(F a, F b) { return _mm256_sub_ps(a, b); }
    static F mul(F a, F b) { return _mm256_mul_ps(a, b); }
    static F min(F a, F b) { return _mm256_min_ps(a, b); }
    static F max(F a, F b) { return _mm256_max_ps(a, b); }
    // Scalar loads beat vgatherdps here: the indices are in integer registers already, and on
    // AMD processors the gather instruction is slower than eight loads.
    template <class Indices>
    static F lookup(const float* table, Indices& walker)
    {
        const __m128 low = lookup4(table, walker);
        const __m128 high = lookup4(table, walker);
        return _mm256_insertf128_ps(_mm256_castps128_ps256(low), high, 1);
    }
    template <class Indices>
    static __m128 lookup4(const float* table, Indices& walker)
    {
        // Loads and unpacks, not insertps from memory, which is slower on AMD processors.
        const __m128 a = _mm_load_ss(table + walker.next());
        const __m128 b = _mm_load_ss(table + walker.next());
        const __m128 c = _mm_load_ss(table + walker.next());
        const __m128 d = _mm_load_ss(table + walker.next());
        return _mm_movelh_ps(_mm_unpacklo_ps(a, b), _mm_unpacklo_ps(c, d));
    }
};

} // namespace

const MixFunctions mixAvx2 = mixFunctions<Avx2Lanes>();

#pragma GCC pop_options
