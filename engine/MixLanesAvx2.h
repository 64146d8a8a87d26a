// Eight frames a step, for the block loop in MixKernel.inl. Only for code compiled with AVX2
// allowed: included after that target switch.
#pragma once

#include "engine/MixLanesSse2.h"

namespace {

struct Avx2Lanes {
    using F = __m256;
    typedef uint32_t U __attribute__((vector_size(32)));
    static constexpr int32_t width = 8;
    static constexpr bool windowed = true;
    static F load(const float* p) { return _mm256_loadu_ps(p); }
    static void store(float* p, F v) { _mm256_storeu_ps(p, v); }
    static F splat(float v) { return _mm256_set1_ps(v); }
    static F add(F a, F b) { return _mm256_add_ps(a, b); }
    static F sub(F a, F b) { return _mm256_sub_ps(a, b); }
    static F mul(F a, F b) { return _mm256_mul_ps(a, b); }
    static F min(F a, F b) { return _mm256_min_ps(a, b); }
    static F max(F a, F b) { return _mm256_max_ps(a, b); }
    // A window of sixteen entries from the first frame's: two loads, each shuffled into every
    // lane, and the lanes whose offset is 8 or more take the second.
    static F lookup(const float* table, WindowReads<Avx2Lanes>& reads)
    {
        const __m256i indices = (__m256i)reads.indices(); // the same bits
        const __m128i first = _mm256_castsi256_si128(indices);
        const __m256i offsets = _mm256_sub_epi32(indices, _mm256_broadcastd_epi32(first));
        const float* const window = table + _mm_cvtsi128_si32(first);
        const F low = _mm256_permutevar8x32_ps(_mm256_loadu_ps(window), offsets);
        const F high = _mm256_permutevar8x32_ps(_mm256_loadu_ps(window + 8), offsets);
        // Offset bit 3 moved to the sign bit, which is what the blend looks at.
        return _mm256_blendv_ps(low, high, _mm256_castsi256_ps(_mm256_slli_epi32(offsets, 28)));
    }

    // Elsewhere scalar loads beat vgatherdps: the indices are in integer registers already, and
    // on AMD processors the gather instruction is slower than eight loads. Each entry is loaded
    // broadcast and the eight are joined by blends: broadcast loads need no shuffle unit, and
    // blends run on every vector port, while shuffles have one or two.
    template <class Indices>
    static F lookup(const float* table, Indices& walker)
    {
        const F e0 = _mm256_broadcast_ss(table + walker.next());
        const F e1 = _mm256_broadcast_ss(table + walker.next());
        const F e2 = _mm256_broadcast_ss(table + walker.next());
        const F e3 = _mm256_broadcast_ss(table + walker.next());
        const F e4 = _mm256_broadcast_ss(table + walker.next());
        const F e5 = _mm256_broadcast_ss(table + walker.next());
        const F e6 = _mm256_broadcast_ss(table + walker.next());
        const F e7 = _mm256_broadcast_ss(table + walker.next());
        const F e01 = _mm256_blend_ps(e0, e1, 0x02);
        const F e23 = _mm256_blend_ps(e2, e3, 0x08);
        const F e45 = _mm256_blend_ps(e4, e5, 0x20);
        const F e67 = _mm256_blend_ps(e6, e7, 0x80);
        return _mm256_blend_ps(_mm256_blend_ps(e01, e23, 0x0c), _mm256_blend_ps(e45, e67, 0xc0),
                               0xf0);
    }
};

} // namespace
