#include "effect/OscillatorSteps.h"

#include <emmintrin.h>

#include <algorithm>
#include <bit>

// Why long runs of steps can be taken with integer additions on the bit patterns, and give exactly
// what the one-at-a-time loop gives.
//
// Binades. Take a non-negative float p with exponent field E. Call its binade [b, t): for E >= 1,
// b = 2^(E-127) and t = 2b; for E = 0 (zero and subnormals), b = 0 and t = 2^-126. In both cases
// the floats in [b, t] are exactly the points b + j*u, 0 <= j <= 2^23, with u = 2^(E-150) for
// E >= 1 and u = 2^-149 for E = 0, and the bit pattern of b + j*u is bits(b) + j (t itself, with
// its zero mantissa, continues the count). A sum s in [b, t] therefore rounds to the nearest
// such point, and a tie goes to the point with even j (j's parity is the last mantissa bit; t's
// j = 2^23 is even).
//
// One step. Let p = b + a*u and inc = x*u with x real, and s = p + inc <= t. Then
// fl(s) = b + round(a + x)*u. If x is not an integer plus one half, round(a + x) = a + round(x):
// the step adds k = round(x) whatever a is. If x is an integer plus one half (a tie), the step
// goes to the even one of a + floor(x) and a + floor(x) + 1: from an even a it adds the even one
// of floor(x) and floor(x) + 1, which is k = round-half-even(x) again, and lands on an even a. (For
// E = 0 there are no ties: inc is a multiple of 2^-149 like every float, so x is an integer.)
//
// So from a "settled" phase (even a, or x not a tie) every step adds the same k while the result
// stays below t, and each result is settled again: the phases form an exact arithmetic progression
// in bit patterns, bits(p) + i*k. A phase reached by a step that began in the same binade and did
// not wrap is settled: that step rounded on this grid, so a tie made its result even.
// And k is found from one float addition at the even point b: fl(b + inc) = b + k*u when
// b + inc <= t; when fl(b + inc) >= t, no step from anywhere in [b, t) stays inside and there is
// no run.
//
// Bounds. A run step from a = bits(p) - bits(b) follows the rule above if a + k < 2^23 (then
// s <= b + (a + k + 1/2)*u <= t - u/2 stays inside [b, t]) and does not wrap if its result is
// below the table length; together, bits(p) + k < min(bits(t), bits(length)), as floats >= 0
// compare like their bit patterns. A stalled oscillator (k = 0: inc at most half a grid step)
// finishes the block in one run. Everything else - the first step of a block, wraps, binade
// crossings, increments as large as the binade - takes the plain step, as written in the
// one-at-a-time loop.

namespace {

constexpr uint32_t kExponentMask = 0x7f800000;
constexpr uint32_t kOneBinade = 0x00800000; // bits(t) - bits(b)

uint32_t bitsOf(float value)
{
    return std::bit_cast<uint32_t>(value);
}

float fromBits(uint32_t bits)
{
    return std::bit_cast<float>(bits);
}

// Writes the indices of the phases with bit patterns start + k, start + 2k, ... start + count*k
// to indices[0 .. count-1], four at a time. Up to three entries past them are overwritten, from
// patterns that are still finite floats below 2^20, so the conversion raises no flag.
void writeRun(uint32_t start, uint32_t k, uint32_t* indices, int32_t count)
{
    const auto lane = [&](uint32_t j) { return static_cast<int32_t>(start + j * k); };
    __m128i bits = _mm_setr_epi32(lane(1), lane(2), lane(3), lane(4));
    const __m128i step = _mm_set1_epi32(static_cast<int32_t>(4 * k));
    for (int32_t i = 0; i < count; i += 4) {
        _mm_storeu_si128(reinterpret_cast<__m128i*>(indices + i),
                         _mm_cvttps_epi32(_mm_castsi128_ps(bits)));
        bits = _mm_add_epi32(bits, step);
    }
}

} // namespace

void advancePhase(float& phase, float inc, float length, uint32_t* indices, int32_t steps)
{
    const uint32_t lengthBits = bitsOf(length);
    float p = phase;
    int32_t i = 1;
    while (i <= steps) {
        const float before = p;
        p = p + inc;
        const bool wrapped = p >= length;
        if (wrapped)
            p = p - length;
        indices[i++] = static_cast<uint32_t>(p);

        const uint32_t bits = bitsOf(p);
        const uint32_t baseBits = bits & kExponentMask;
        if (wrapped || i > steps || (bitsOf(before) & kExponentMask) != baseBits)
            continue; // p may not be settled, or nothing is left to do
        const uint32_t stepBits = bitsOf(fromBits(baseBits) + inc);
        const uint32_t limitBits = std::min(baseBits + kOneBinade, lengthBits);
        if (stepBits >= baseBits + kOneBinade)
            continue; // every step from this binade leaves it
        const uint32_t k = stepBits - baseBits;
        // Steps i .. i + run - 1 all satisfy bits + j*k < limitBits, j = 1 .. run.
        int32_t run = steps - i + 1;
        if (static_cast<uint64_t>(bits) + static_cast<uint64_t>(run) * k >= limitBits)
            run = static_cast<int32_t>((limitBits - 1 - bits) / k);
        if (run == 0)
            continue;
        writeRun(bits, k, indices + i, run);
        i += run;
        p = fromBits(bits + static_cast<uint32_t>(run) * k);
    }
    phase = p;
}
