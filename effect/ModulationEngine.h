// The audio path: a tremolo (both channels' level follows a half-wave sine) followed by an
// automatic panner (the balance follows a full sine), each blended with its own input by the mix.
// All sample arithmetic is single precision in a fixed order: the output is defined bit for bit,
// by the plain loop in ReferenceEngine, and this engine gives the same bits several frames at a
// time. Knows nothing of the plug-in interface; it is handed plain buffers and a settings snapshot.
#pragma once

#include <cstdint>

#include "effect/EngineSettings.h"
#include "effect/MixKernel.h"
#include "effect/OscillatorState.h"

class ModulationEngine : public OscillatorState {
public:
    // Uses AVX2 when the processor has it (and allowAvx2 is set), SSE2 otherwise.
    explicit ModulationEngine(bool allowAvx2 = true);

    // outL/outR may be the same buffers as inL/inR. frames <= 0 touches nothing.
    void process(const float* inL, const float* inR, float* outL, float* outR, int32_t frames,
                 const EngineSettings& settings);

    bool usesAvx2() const { return kernel == mixAvx2; }

private:
    MixFunction kernel;
};
