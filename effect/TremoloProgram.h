// A program: one value for each of the six parameters and a name.
#pragma once

#include <atomic>
#include <cstdint>

#include "engine/FactoryPrograms.h"
#include "host/vst2.h"

struct TremoloProgram {
    // Written by setParameter on whatever thread the host uses, so atomic like the live values.
    std::atomic<float> pannerDepth{0.0f};
    std::atomic<float> tremoloSpeed{0.0f};
    std::atomic<float> tremoloDepth{0.0f};
    std::atomic<float> pannerSpeed{0.0f};
    std::atomic<float> mix{0.0f};
    std::atomic<int32_t> rateChoice{7};
    // Terminated only when shorter than the field.
    char name[kVstMaxProgNameLen] = {};
};

// Writes the factory programs over the records.
void loadFactoryPrograms(TremoloProgram (&programs)[kNumPrograms]);
