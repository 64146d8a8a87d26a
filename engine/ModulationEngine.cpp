#include "engine/ModulationEngine.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

#include "engine/ReferenceEngine.h"
#include "engine/SineTables.h"

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

ModulationEngine::Kernel ModulationEngine::chooseKernel(Kernel widest)
{
    __builtin_cpu_init();
    const bool avx2 = __builtin_cpu_supports("avx2") && __builtin_cpu_supports("bmi2");
    // Gathers pay only where they are fast: on Intel processors with AVX-512 one gather of
    // sixteen table entries beats sixteen loads and their shuffles, while AMD's are slower than
    // the loads (measured for eight entries on Zen 4).
    if (widest == Kernel::Avx512 && avx2 && __builtin_cpu_supports("avx512f") &&
        __builtin_cpu_is("intel"))
        return Kernel::Avx512;
    if (widest != Kernel::Sse2 && avx2)
        return Kernel::Avx2;
    return Kernel::Sse2;
}

ModulationEngine::ModulationEngine(Kernel widest)
    : inUse(chooseKernel(widest)), lastBlock(blockSettings(lastSettings))
{
    static const MixFunctions* const kernels[] = {&mixSse2, &mixAvx2, &mixAvx512};
    kernel = kernels[static_cast<int>(inUse)];
    shortBlockKernel = inUse == Kernel::Avx512 ? &mixAvx2 : kernel;
    job.tremolo.length = static_cast<float>(kTremoloLength);
    job.tremolo.table = sine_tables::tremoloTable();
    job.panner.length = static_cast<float>(kPannerLength);
    job.panner.table = sine_tables::pannerTable();
    takeSettings();
}

void ModulationEngine::takeSettings()
{
    job.tremoloOn = lastBlock.tremoloOn;
    job.pannerOn = lastBlock.pannerOn;
    job.tremolo.increment = lastBlock.tremoloIncrement;
    job.panner.increment = lastBlock.pannerIncrement;
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
        checkedInL = job.inL = inL;
        checkedInR = job.inR = inR;
        checkedOutL = job.outL = outL;
        checkedOutR = job.outR = outR;
        checkedFrames = frames;
    }
    // Compared bit for bit (the struct has no padding): a NaN setting is as reusable as any other.
    static_assert(sizeof(EngineSettings) == 5 * sizeof(float) + sizeof(int32_t));
    if (std::memcmp(&settings, &lastSettings, sizeof settings) != 0) {
        lastSettings = settings;
        lastBlock = blockSettings(settings);
        takeSettings();
        coveredFrames = 0; // the block's kernel finds out which runs still hold
    }
    job.frames = frames;
    // Every kernel leaves the oscillators as the plain loop does, so any block may take any one.
    const bool wide = frames >= kWideBlock;
    static_assert(sizeof(OscillatorState) == 4 * sizeof(uint32_t));
    const OscillatorState& now = *this;
    if (frames <= coveredFrames && std::memcmp(&now, &left, sizeof left) == 0) {
        runsLoops[wide](job, 0, frames, job.tremolo.runIndices, job.panner.runIndices);
        coveredFrames -= frames;
        // Field by field: a copy of the whole state would be one wide load waiting for these
        // narrow stores to complete.
        if (job.tremoloOn) {
            advanceRun(job.tremolo, frames);
            left.tremoloPhase = tremoloPhase = job.tremolo.phase;
            left.tremoloIndex = tremoloIndex = job.tremolo.index;
        }
        if (job.pannerOn) {
            advanceRun(job.panner, frames);
            left.pannerPhase = pannerPhase = job.panner.phase;
            left.pannerIndex = pannerIndex = job.panner.index;
        }
    } else {
        mixBlock(wide ? *kernel : *shortBlockKernel);
    }
}

void ModulationEngine::mixBlock(const MixFunctions& mix)
{
    job.tremolo.phase = tremoloPhase;
    job.tremolo.index = tremoloIndex;
    job.panner.phase = pannerPhase;
    job.panner.index = pannerIndex;
    mix.block[stagesRunning(job)](job); // moves only the oscillators of running stages
    left.tremoloPhase = tremoloPhase = job.tremolo.phase;
    left.tremoloIndex = tremoloIndex = job.tremolo.index;
    left.pannerPhase = pannerPhase = job.panner.phase;
    left.pannerIndex = pannerIndex = job.panner.index;
    coveredFrames = runsCoverage();
    runsLoops[0] = shortBlockKernel->runs(job);
    runsLoops[1] = kernel->runs(job);
}

int32_t ModulationEngine::runsCoverage() const
{
    constexpr int32_t kAll = INT32_MAX;
    int32_t covered = kAll;
    if (job.tremoloOn)
        covered = runFrames(job.tremolo, kAll);
    if (job.pannerOn)
        covered = std::min(covered, runFrames(job.panner, kAll));
    return covered;
}
