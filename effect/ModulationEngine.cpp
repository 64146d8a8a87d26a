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
    takeSettings();
    __builtin_cpu_init();
    if (allowAvx2 && __builtin_cpu_supports("avx2") && __builtin_cpu_supports("bmi2"))
        kernel = &mixAvx2;
}

void ModulationEngine::takeSettings()
{
    job.tremoloOn = lastBlock.tremoloOn;
    job.pannerOn = lastBlock.pannerOn;
    tremoloOscillator.increment = lastBlock.tremoloIncrement;
    pannerOscillator.increment = lastBlock.pannerIncrement;
    job.tremoloFloor = 1.0f - lastBlock.tremoloDepth;
    job.pannerDepth = lastBlock.pannerDepth;
    job.mix = lastBlock.mix;
}

void ModulationEngine::process(const float* inL, const float* inR, float* outL, float* outR,
                               int32_t frames, const EngineSettings& settings)
{
    if (frames <= 0)
        return;
    if (inL != checkedInL || inR != checkedInR || outL != checkedOutL || outR != checkedOutR ||
        frames > checkedFrames) {
        if (!separateBuffers(inL, inR, outL, outR, frames)) {
            processReference(*this, inL, inR, outL, outR, frames, settings);
            return;
        }
        // Buffers apart over these frames are apart over fewer too.
        checkedInL = inL;
        checkedInR = inR;
        checkedOutL = outL;
        checkedOutR = outR;
        checkedFrames = frames;
    }
    // Compared bit for bit (the struct has no padding): a NaN setting is as reusable as any other.
    static_assert(sizeof(EngineSettings) == 5 * sizeof(float) + sizeof(int32_t));
    if (std::memcmp(&settings, &lastSettings, sizeof settings) != 0) {
        lastSettings = settings;
        lastBlock = blockSettings(settings);
        takeSettings();
    }
    const BlockSettings& block = lastBlock;
    job.inL = inL;
    job.inR = inR;
    job.outL = outL;
    job.outR = outR;
    job.frames = frames;
    // Set every block rather than once: a copied engine must not drive the original's oscillators.
    job.tremolo = &tremoloOscillator;
    job.panner = &pannerOscillator;
    tremoloOscillator.phase = tremoloPhase;
    tremoloOscillator.index = tremoloIndex;
    pannerOscillator.phase = pannerPhase;
    pannerOscillator.index = pannerIndex;
    if ((!block.tremoloOn || runCovers(tremoloOscillator, frames)) &&
        (!block.pannerOn || runCovers(pannerOscillator, frames))) {
        kernel->runs[stagesRunning(job)](job);
        if (block.tremoloOn)
            advanceRun(tremoloOscillator, frames);
        if (block.pannerOn)
            advanceRun(pannerOscillator, frames);
    } else {
        kernel->block[stagesRunning(job)](job); // moves only the oscillators of running stages
    }
    tremoloPhase = tremoloOscillator.phase;
    tremoloIndex = tremoloOscillator.index;
    pannerPhase = pannerOscillator.phase;
    pannerIndex = pannerOscillator.index;
}
