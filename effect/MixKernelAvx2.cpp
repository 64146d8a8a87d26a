#include <immintrin.h>

#include "effect/MixKernel.h"

// Everything from here on may use AVX2 (never FMA: products and sums stay separately rounded).
// Only mixAvx2 is reachable from outside, and the engine calls it only on processors that have
// AVX2.
#pragma GCC push_options
#pragma GCC target("avx2")

namespace {

struct Avx2Lanes {
    using F = __m256;
    static constexpr int32_t width = 8;
    static F load(const float* p) { return _mm256_loadu_ps(p); }
    static void store(float* p, F v) { _mm256_storeu_ps(p, v); }
    static F splat(float v) { return _mm256_set1_ps(v); }
    static F gather(const float* table, const uint32_t* index)
    {
        const __m256i lanes = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(index));
        return _mm256_i32gather_ps(table, lanes, 4);
    }
    static F add(F a, F b) { return _mm256_add_ps(a, b); }
    static F sub(F a, F b) { return _mm256_sub_ps(a, b); }
    static F mul(F a, F b) { return _mm256_mul_ps(a, b); }
    // vminps gives its second operand unless the first is smaller: 1 < v ? 1 : v.
    static F atMostOne(F v) { return _mm256_min_ps(_mm256_set1_ps(1.0f), v); }
    static F greater(F a, F b) { return _mm256_cmp_ps(a, b, _CMP_GT_OQ); }
    static F select(F mask, F a, F b) { return _mm256_blendv_ps(b, a, mask); }
};

} // namespace

#include "effect/MixKernel.inl"

void mixAvx2(const MixJob& job)
{
    mixWith<Avx2Lanes>(job);
}

#pragma GCC pop_options
