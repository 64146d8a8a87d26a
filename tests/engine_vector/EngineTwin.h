// Runs the vector engine and the plain loop side by side on the same input and reports the first
// sample or oscillator field whose bits differ.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "effect/EngineSettings.h"
#include "effect/ModulationEngine.h"
#include "effect/OscillatorState.h"

// Audio with some structure (two slow sines and noise) so that every gain shows in the bits.
struct TestAudio {
    explicit TestAudio(int32_t frames, uint32_t seed = 1);
    std::vector<float> left, right;
};

struct EngineTwin {
    explicit EngineTwin(ModulationEngine::Kernel kernel) : fast(kernel) {}

    void setState(const OscillatorState& state);

    // Out of place, with guard words after both outputs of both engines.
    ::testing::AssertionResult sameBlock(const float* inL, const float* inR, int32_t frames,
                                         const EngineSettings& settings);

    ModulationEngine fast;
    OscillatorState plain;

private:
    std::vector<float> fastL, fastR, plainL, plainR;
};

::testing::AssertionResult sameState(const OscillatorState& fast, const OscillatorState& plain);
::testing::AssertionResult sameSamples(const float* fast, const float* plain, int32_t frames,
                                       const char* channel);
