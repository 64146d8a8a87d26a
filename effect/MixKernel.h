// The per-frame sample arithmetic of both stages, several frames at a time, once the oscillators'
// table indices for the frames are known. Same operations in the same order as the plain loop,
// lane by lane, so every sample comes out bit for bit the same.
#pragma once

#include <cstdint>

struct MixJob {
    const float* inL;
    const float* inR;
    float* outL; // each the same buffer as its input or not overlapping any other buffer
    float* outR;
    int32_t frames;
    // Index per frame, or null when the stage is off.
    const uint32_t* tremoloIndices;
    const uint32_t* pannerIndices;
    const float* tremoloTable;
    const float* pannerTable;
    float tremoloFloor; // 1 - tremolo depth
    float pannerDepth;
    float mix;
};

using MixFunction = void (*)(const MixJob& job);

// Four frames a step with SSE2, which every x86-64 processor has.
void mixSse2(const MixJob& job);
// Eight frames a step with AVX2; only for processors that have it.
void mixAvx2(const MixJob& job);
