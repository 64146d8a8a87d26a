#include <emmintrin.h>

#include "effect/MixKernel.h"

namespace {

struct Sse2Lanes {
    using F = __m128;
    static constexpr int32_t width = 4;
    static F load(const float* p) { return _mm_loadu_ps(p); }
    static void store(float* p, F v) { _mm_storeu_ps(p, v); }
    static F splat(float v) { return _mm_set1_ps(v); }
    static F gather(const float* table, const uint32_t* index)
    {
        return _mm_setr_ps(table[index[0]], table[index[1]], table[index[2]], table[index[3]]);
    }
    static F add(F a, F b) { return _mm_add_ps(a, b); }
    static F sub(F a, F b) { return _mm_sub_ps(a, b); }
    static F mul(F a, F b) { return _mm_mul_ps(a, b); }
    // minps gives its second operand unless the first is smaller: 1 < v ? 1 : v.
    static F atMostOne(F v) { return _mm_min_ps(_mm_set1_ps(1.0f), v); }
    static F greater(F a, F b) { return _mm_cmpgt_ps(a, b); }
    static F select(F mask, F a, F b)
    {
        return _mm_or_ps(_mm_and_ps(mask, a), _mm_andnot_ps(mask, b));
    }
};

} // namespace

#include "effect/MixKernel.inl"

void mixSse2(const MixJob& job)
{
    mixWith<Sse2Lanes>(job);
}
