#include "effect/ModulationEngine.h"

#include <cstdint>
#include <cstring>

#include "effect/ReferenceEngine.h"
#include "effect/SineTables.h"

namespace {

using sine_tables::kPannerLength;
using sine_tables::kTremoloLength;

// Whether [a, a + frames) and [b, b + frames) share a sample: |a - b| < frames samples.
bool overlap(const float* a, const float* b, int32_t frames)
{
    const uintptr_t bytes = static_cast<uintptr_t>(frames) * sizeof(float);
    const uintptr_t distance = reinterpret_cast<uintptr_t>(a) - reinterpret_cast<uintptr_t>(b);
    return distance + (bytes - 1) < 2 * bytes - 1;
}

// The vector path reads a group of frames before it writes them, which is the plain loop's result
// when each output is its own input or stands apart from every other buffer.
bool separateBuffers(const float* inL, const float* inR, const float* outL, const float* outR,
                     int32_t frames)
{
    return (outL == inL || !overlap(outL, inL, frames)) &&
           (outR == inR || !overlap(outR, inR, frames)) && !overlap(outL, inR, frames) &&
           !overlap(outR, inL, frames) && !overlap(outL, outR, frames);
}

} // namespace

ModulationEngine::ModulationEngine(bool allowAvx2)
    : kernel(&mixSse2), lastBlock(blockSettings(lastSettings))
{
    tremoloOscillator.length = static_cast<float>(kTremoloLength);
    tremoloOscillator.table = sine_tables::tremoloTable();
    pannerOscillator.length = static_cast<float>(kPannerLength);
    pannerOscillator.table = sine_tables::pannerTable();
    __builtin_cpu_init();
    if (allowAvx2 && __builtin_cpu_supports("avx2") && __builtin_cpu_supports("bmi2"))
        kernel = &mixAvx2;
}

void ModulationEngine::process(const float* inL, const float* inR, float* outL, float* outR,
                               int32_t frames, const EngineSettings& settings)
{
    if (frames <= 0)
        return;
    if (!separateBuffers(inL, inR, outL, outR, frames)) {
        processReference(*this, inL, inR, outL, outR, frames, settings);
        return;
    }
    // Compared bit for bit (the struct has no padding): a NaN setting is as reusable as any other.
    static_assert(sizeof(EngineSettings) == 5 * sizeof(float) + sizeof(int32_t));
    if (std::memcmp(&settings, &lastSettings, sizeof settings) != 0) {
        lastSettings = settings;
        lastBlock = blockSettings(settings);
    }
    const BlockSettings& block = lastBlock;
    MixJob job;
    job.inL = inL;
    job.inR = inR;
    job.outL = outL;
    job.outR = outR;
    job.frames = frames;
    job.tremoloOn = block.tremoloOn;
    job.pannerOn = block.pannerOn;
    tremoloOscillator.phase = tremoloPhase;
    tremoloOscillator.index = tremoloIndex;
    tremoloOscillator.increment = block.tremoloIncrement;
    pannerOscillator.phase = pannerPhase;
    pannerOscillator.index = pannerIndex;
    pannerOscillator.increment = block.pannerIncrement;
    job.tremolo = &tremoloOscillator;
    job.panner = &pannerOscillator;
    job.tremoloFloor = 1.0f - block.tremoloDepth;
    job.pannerDepth = block.pannerDepth;
    job.mix = block.mix;
    if ((!block.tremoloOn || runCovers(tremoloOscillator, frames)) &&
        (!block.pannerOn || runCovers(pannerOscillator, frames))) {
        kernel->runs(job);
        if (block.tremoloOn)
            advanceRun(tremoloOscillator, frames);
        if (block.pannerOn)
            advanceRun(pannerOscillator, frames);
    } else {
        kernel->block(job); // moves only the oscillators of running stages
    }
    tremoloPhase = tremoloOscillator.phase;
    tremoloIndex = tremoloOscillator.index;
    pannerPhase = pannerOscillator.phase;
    pannerIndex = pannerOscillator.index;
}
