// Eight frames a step, for the block loop in MixKernel.inl. Only for code compiled with AVX2
// allowed: included after that target switch.
#pragma once

#include "effect/MixLanesSse2.h"

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
    static void progression(uint32_t* out, int32_t count, const IndexSteps& steps)
    {
        const auto s = static_cast<int32_t>(steps.step);
        __m256i value =
            _mm256_add_epi32(_mm256_set1_epi32(static_cast<int32_t>(steps.mantissa)),
                             _mm256_setr_epi32(0, s, 2 * s, 3 * s, 4 * s, 5 * s, 6 * s, 7 * s));
        const __m256i stride = _mm256_set1_epi32(8 * s);
        const __m128i shift = _mm_cvtsi32_si128(static_cast<int32_t>(steps.shift));
        for (int32_t j = 0; j < count; j += 8) {
            _mm256_storeu_si256(reinterpret_cast<__m256i*>(out + j),
                                _mm256_srl_epi32(value, shift));
            value = _mm256_add_epi32(value, stride);
        }
    }
    // Scalar loads beat vgatherdps here: the indices are in integer registers already, and on
    // AMD processors the gather instruction is slower than eight loads.
    template <class Indices>
    static F lookup(const float* table, Indices& walker)
    {
        const __m128 low = Sse2Lanes::lookup(table, walker);
        const __m128 high = Sse2Lanes::lookup(table, walker);
        return _mm256_insertf128_ps(_mm256_castps128_ps256(low), high, 1);
    }
};

} // namespace
