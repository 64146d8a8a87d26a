#include "effect/ModulationEngine.h"

#include <algorithm>
#include <cstdint>

#include "effect/OscillatorSteps.h"
#include "effect/ReferenceEngine.h"
#include "effect/SineTables.h"

namespace {

using sine_tables::kPannerLength;
using sine_tables::kTremoloLength;

// Frames whose table indices are worked out before their samples are; the index buffers live on
// the audio thread's stack.
constexpr int32_t kChunkFrames = 256;

bool overlap(const float* a, const float* b, int32_t frames)
{
    const auto start = [](const float* p) { return reinterpret_cast<uintptr_t>(p); };
    const uintptr_t bytes = static_cast<uintptr_t>(frames) * sizeof(float);
    return start(a) < start(b) + bytes && start(b) < start(a) + bytes;
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

ModulationEngine::ModulationEngine(bool allowAvx2) : kernel(mixSse2)
{
    __builtin_cpu_init();
    if (allowAvx2 && __builtin_cpu_supports("avx2"))
        kernel = mixAvx2;
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
    const BlockSettings block = blockSettings(settings);

    uint32_t tremoloIndices[kChunkFrames + 1 + kIndexSlack];
    uint32_t pannerIndices[kChunkFrames + 1 + kIndexSlack];
    MixJob job;
    job.tremoloIndices = block.tremoloOn ? tremoloIndices : nullptr;
    job.pannerIndices = block.pannerOn ? pannerIndices : nullptr;
    job.tremoloTable = sine_tables::tremoloTable();
    job.pannerTable = sine_tables::pannerTable();
    job.tremoloFloor = 1.0f - block.tremoloDepth;
    job.pannerDepth = block.pannerDepth;
    job.mix = block.mix;

    for (int32_t done = 0; done < frames; done += job.frames) {
        job.frames = std::min(frames - done, kChunkFrames);
        job.inL = inL + done;
        job.inR = inR + done;
        job.outL = outL + done;
        job.outR = outR + done;
        // Frame i of the chunk reads entry indices[i]; indices[frames] is the next chunk's first.
        if (block.tremoloOn) {
            tremoloIndices[0] = tremoloIndex;
            advancePhase(tremoloPhase, block.tremoloIncrement, static_cast<float>(kTremoloLength),
                         tremoloIndices, job.frames);
            tremoloIndex = tremoloIndices[job.frames];
        }
        if (block.pannerOn) {
            pannerIndices[0] = pannerIndex;
            advancePhase(pannerPhase, block.pannerIncrement, static_cast<float>(kPannerLength),
                         pannerIndices, job.frames);
            pannerIndex = pannerIndices[job.frames];
        }
        kernel(job);
    }
}
