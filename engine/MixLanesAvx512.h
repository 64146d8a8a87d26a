// Sixteen frames a step, for the block loop in MixKernel.inl. Only for code compiled with
// AVX-512F allowed: included after that target switch.
#pragma once

#include <immintrin.h>

#include <cstdint>

namespace {

struct Avx512Lanes {
    using F = __m512;
    typedef uint32_t U __attribute__((vector_size(64)));
    static constexpr int32_t width = 16;
    static constexpr bool windowed = true;
    static F load(const float* p) { return _mm512_loadu_ps(p); }
    static void store(float* p, F v) { _mm512_storeu_ps(p, v); }
    static F splat(float v) { return _mm512_set1_ps(v); }
    static F add(F a, F b) { return _mm512_add_ps(a, b); }
    static F sub(F a, F b) { return _mm512_sub_ps(a, b); }
    static F mul(F a, F b) { return _mm512_mul_ps(a, b); }
    static F min(F a, F b) { return _mm512_min_ps(a, b); }
    static F max(F a, F b) { return _mm512_max_ps(a, b); }

    // A window of thirty-two entries from the first frame's: two loads and one two-source shuffle.
    static F lookup(const float* table, WindowReads<Avx512Lanes>& reads)
    {
        const __m512i indices = (__m512i)reads.indices(); // the same bits
        const __m512i first = _mm512_broadcastd_epi32(_mm512_castsi512_si128(indices));
        const float* const window = table + _mm_cvtsi128_si32(_mm512_castsi512_si128(indices));
        return _mm512_permutex2var_ps(_mm512_loadu_ps(window), _mm512_sub_epi32(indices, first),
                                      _mm512_loadu_ps(window + 16));
    }

    // Listed indices: one load and one gather.
    static F lookup(const float* table, ListedReads& reads)
    {
        const __m512i indices = _mm512_loadu_si512(reads.indices);
        reads.indices += width;
        return _mm512_i32gather_ps(indices, table, sizeof(float));
    }

    // Inside a stretch the sixteen indices follow from the walker's position in vector registers,
    // and one gather reads them: on the processors this kernel is chosen for, that beats sixteen
    // loads and the shuffles that join them.
    static F lookup(const float* table, IndexWalker& walker)
    {
        const uint64_t s = walker.step;
        const __m512i lowOffsets = _mm512_set_epi64(7 * s, 6 * s, 5 * s, 4 * s, 3 * s, 2 * s, s, 0);
        const __m512i highOffsets = _mm512_add_epi64(lowOffsets, _mm512_set1_epi64(8 * s));
        const __m512i position = _mm512_set1_epi64(static_cast<int64_t>(walker.position));
        // Each index is the upper half of a 64-bit position: the odd 32-bit words of both.
        const __m512i upperHalves =
            _mm512_setr_epi32(1, 3, 5, 7, 9, 11, 13, 15, 17, 19, 21, 23, 25, 27, 29, 31);
        const __m512i indices =
            _mm512_permutex2var_epi32(_mm512_add_epi64(position, lowOffsets), upperHalves,
                                      _mm512_add_epi64(position, highOffsets));
        walker.position += 16 * s;
        return _mm512_i32gather_ps(indices, table, sizeof(float));
    }
};

} // namespace
