// Four frames a step, for the block loop in MixKernel.inl (which describes what a lane type
// offers). Included after it, by a kernel file, with or without a wider target switch.
#pragma once

#include <immintrin.h>

#include <cstdint>

namespace {

// Scalar loads: the indices come from integer registers, and SSE2 has no gather instruction.
// Loads and unpacks, not insertps from memory, which is slower on AMD processors.
struct Sse2Lanes {
    using F = __m128;
    typedef uint32_t U __attribute__((vector_size(16)));
    static constexpr int32_t width = 4;
    static constexpr bool windowed = false; // SSE2 has no shuffle by variable indices
    static F load(const float* p) { return _mm_loadu_ps(p); }
    static void store(float* p, F v) { _mm_storeu_ps(p, v); }
    static F splat(float v) { return _mm_set1_ps(v); }
    static F add(F a, F b) { return _mm_add_ps(a, b); }
    static F sub(F a, F b) { return _mm_sub_ps(a, b); }
    static F mul(F a, F b) { return _mm_mul_ps(a, b); }
    static F min(F a, F b) { return _mm_min_ps(a, b); }
    static F max(F a, F b) { return _mm_max_ps(a, b); }
    template <class Indices>
    static F lookup(const float* table, Indices& walker)
    {
        const __m128 a = _mm_load_ss(table + walker.next());
        const __m128 b = _mm_load_ss(table + walker.next());
        const __m128 c = _mm_load_ss(table + walker.next());
        const __m128 d = _mm_load_ss(table + walker.next());
        return _mm_movelh_ps(_mm_unpacklo_ps(a, b), _mm_unpacklo_ps(c, d));
    }
};

} // namespace
