// The audio path of one block, several frames at a time: each running oscillator's table reads
// (in exact runs where it can, one plain step where it must) and the per-frame sample arithmetic
// of both stages, in the plain loop's operation order lane by lane, so that every sample and the
// oscillators' final state come out bit for bit as the plain loop has them.
#pragma once

#include <bit>
#include <cstdint>

#include "engine/OscillatorSteps.h"

// One running oscillator as the kernel sees it. The engine says where it stands before each block;
// the kernel leaves where it ends and the exact run it is in, which the next block goes on with
// (instead of planning again) while phase, index and increment are still the ones it left.
struct KernelOscillator {
    float phase = 0.0f;     // 0 <= phase < length
    uint32_t index = 0;     // the entry the next frame reads
    float increment = 0.0f; // 0 < increment <= 36000
    float length = 0.0f;
    const float* table = nullptr;

    bool inRun = false;
    uint32_t runPhaseBits = 0; // phase and increment the run was left with
    uint32_t runIncrementBits = 0;
    IndexSteps runIndices; // the next frame reads runIndices.mantissa >> runIndices.shift
    uint32_t runBitStep = 0;
    uint32_t runLimitBits = 0;
};

struct MixJob {
    const float* inL;
    const float* inR;
    float* outL; // each the same buffer as its input or not overlapping any other buffer
    float* outR;
    int32_t frames; // at least 1
    bool tremoloOn;
    bool pannerOn;
    float tremoloFloor; // 1 - tremolo depth
    float pannerDepth;
    float mix;
    // Held here rather than pointed to, so that a copied job (and engine) has its own.
    KernelOscillator tremolo;
    KernelOscillator panner;
};

// How many of the next `frames` frames the run the oscillator was left in still covers: 0 when it
// was left in none or anything changed since, at most `frames`.
inline int32_t runFrames(const KernelOscillator& oscillator, int32_t frames)
{
    const uint32_t phaseBits = std::bit_cast<uint32_t>(oscillator.phase);
    const IndexSteps& run = oscillator.runIndices;
    if (!oscillator.inRun || phaseBits != oscillator.runPhaseBits ||
        std::bit_cast<uint32_t>(oscillator.increment) != oscillator.runIncrementBits ||
        oscillator.index != run.mantissa >> run.shift || phaseBits >= oscillator.runLimitBits)
        return 0;
    if (oscillator.runBitStep == 0)
        return frames; // stalled
    const uint32_t covered = (oscillator.runLimitBits - 1 - phaseBits) / oscillator.runBitStep;
    return covered < static_cast<uint32_t>(frames) ? static_cast<int32_t>(covered) : frames;
}

// Moves an oscillator `frames` frames along the run that covers them.
inline void advanceRun(KernelOscillator& oscillator, int32_t frames)
{
    const auto steps = static_cast<uint32_t>(frames);
    IndexSteps& run = oscillator.runIndices;
    oscillator.runPhaseBits += steps * oscillator.runBitStep;
    run.mantissa += steps * run.step;
    oscillator.phase = std::bit_cast<float>(oscillator.runPhaseBits);
    oscillator.index = run.mantissa >> run.shift; // the phase truncated, as the run's formula says
}

// Frames [from, to) of the running oscillators' current stretches, which start with these steps.
using StretchLoop = void (*)(const MixJob& job, int32_t from, int32_t to,
                             const IndexSteps& tremoloSteps, const IndexSteps& pannerSteps);

struct MixFunctions {
    // Any block: plans stretches, leaves the runs. Indexed by stagesRunning.
    void (*block[4])(MixJob& job);
    // The loop that goes on along the runs the block left, from frame 0 of a block they cover.
    // It depends only on the stages running and the runs, so the engine keeps it as long as they
    // last.
    StretchLoop (*runs)(const MixJob& job);
};

inline int stagesRunning(const MixJob& job) { return job.tremoloOn + 2 * job.pannerOn; }

// Four frames a step with SSE2, which every x86-64 processor has.
extern const MixFunctions mixSse2;
// Eight frames a step with AVX2 (and BMI2's shifts); only for processors that have both.
extern const MixFunctions mixAvx2;
// Sixteen frames a step with AVX-512F, table reads gathered or shuffled out of windows; only for
// processors that have it besides AVX2 and BMI2.
extern const MixFunctions mixAvx512;
