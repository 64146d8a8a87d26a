// The oscillator's phase steps, many at a time and bit for bit as the one-at-a-time loop takes
// them: p <- p + inc in single precision, then p <- p - length once p reaches the length, and
// each frame reads the table entry of the phase truncated toward zero.
//
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
// of floor(x) and floor(x) + 1, which is k = round-half-even(x) again, and lands on an even a;
// from an odd a it adds the other one, k - 1 or k + 1. (For E = 0 there are no ties: inc is a
// multiple of 2^-149 like every float, so x is an integer.)
//
// Runs. k is found from one float addition at the even point b: fl(b + inc) = b + k*u when
// b + inc <= t; when fl(b + inc) >= t, no step from anywhere in [b, t) stays inside. Call p
// settled when a is even or x is not a tie. From a settled p every step adds the same k while the
// sum stays within [b, t], and lands on a settled phase again: the phases form an exact arithmetic
// progression in bit patterns, bits(p) + i*k. Whether p is settled shows in its own plain step:
// that step adds exactly k if and only if p is settled, since from an odd a a tie adds k +- 1.
//
// Bounds. A run step from a follows the rule above if a + k < 2^23 (then
// s <= b + (a + k + 1/2)*u <= t - u/2 stays inside [b, t]) and does not wrap if its result is
// below the table length; together, bits(p) + k < min(bits(t), bits(length)), as floats >= 0
// compare like their bit patterns. A stalled oscillator (k = 0: inc at most half a grid step)
// finishes the block in one run. Everything else - wraps, binade crossings, an unsettled phase,
// increments as large as the binade - takes the plain step, as written in the one-at-a-time loop.
// So does the first step of every stretch planned here; the phase it reaches starts the run.
// (A run still exact at the end of a block goes on in the next one while nobody has changed the
// phase, index or increment; the engine checks that.)
//
// Indices. For E >= 127 (p >= 1) the phase b + j*u is (2^23 + j) * 2^(E-150), so its truncation
// is (2^23 + j) >> (150 - E): a run's indices need no float at all. Below 1 every index is 0.
#pragma once

#include <algorithm>
#include <bit>
#include <cstdint>

// The table entries the frames of a stretch read: frame j reads (mantissa + j * step) >> shift.
// The mantissa, which moves every block, comes last and alone in its eight bytes: a copy of the
// struct then never reads it together with the others in one wide load, which would have to wait
// for the last block's narrower store of it to complete.
struct IndexSteps {
    uint32_t step = 0;
    uint32_t shift = 0;
    uint32_t mantissa = 0;
};

// A stretch of frames of one oscillator: one plain step, then (usually) one exact run.
struct Stretch {
    int32_t frames = 1;
    IndexSteps indices;
    uint32_t phaseBits = 0; // the phase after `frames` frames is phaseBits + frames * bitStep
    uint32_t bitStep = 0;
    // Whether it ends in a run, which goes on exactly while phase bits + j * bitStep < limitBits.
    bool run = false;
    uint32_t limitBits = 0;

    // The phase once `done` frames of the stretch have run, 1 <= done <= frames.
    float phaseAfter(int32_t done) const
    {
        return std::bit_cast<float>(phaseBits + static_cast<uint32_t>(done) * bitStep);
    }
};

// The longest stretch, at most `limit` >= 1 frames, from an oscillator at `phase` whose next frame
// reads entry `index`: frame 0's step taken plainly, then one run from the phase it reaches.
// Expects 0 <= phase < length and 0 < inc <= 36000.
inline Stretch planStretch(float phase, uint32_t index, float inc, float length, int32_t limit)
{
    constexpr uint32_t kExponentMask = 0x7f800000;
    constexpr uint32_t kMantissaMask = 0x007fffff;
    constexpr uint32_t kOneBinade = 0x00800000; // bits(t) - bits(b), and the hidden mantissa bit
    constexpr uint32_t kExponentOfOne = 127;
    const auto bitsOf = [](float value) { return std::bit_cast<uint32_t>(value); };

    float next = phase + inc;
    if (next >= length)
        next = next - length;
    const uint32_t bits = bitsOf(next);
    Stretch stretch;
    stretch.indices.mantissa = index; // step 0, shift 0: frame 0 reads `index`
    stretch.phaseBits = bits;
    if (limit == 1)
        return stretch;

    // The run from `next`: frame j >= 1 reads the index of the phase bits + (j - 1) * k, and frame
    // 0 must find `index` one step back on the same formula.
    const uint32_t baseBits = bits & kExponentMask;
    const uint32_t k = bitsOf(std::bit_cast<float>(baseBits) + inc) - baseBits;
    const uint32_t limitBits = std::min(baseBits + kOneBinade, bitsOf(length));
    IndexSteps run;
    if (baseBits >> 23 >= kExponentOfOne) {
        run.mantissa = ((bits & kMantissaMask) | kOneBinade) - k;
        run.step = k;
        run.shift = 150 - (baseBits >> 23);
    }
    // The run's first step must stay inside and add exactly k (so `next` is settled).
    if (k >= kOneBinade || bits + k >= limitBits || bitsOf(next + inc) != bits + k ||
        run.mantissa >> run.shift != index)
        return stretch;
    // Run steps j = 1 .. frames - 1 all satisfy bits + j*k < limitBits.
    int32_t frames = limit;
    if (static_cast<uint64_t>(bits) + static_cast<uint64_t>(frames - 1) * k >= limitBits)
        frames = 1 + static_cast<int32_t>((limitBits - 1 - bits) / k);
    stretch.frames = frames;
    stretch.indices = run;
    stretch.phaseBits = bits - k;
    stretch.bitStep = k;
    stretch.run = true;
    stretch.limitBits = limitBits;
    return stretch;
}
