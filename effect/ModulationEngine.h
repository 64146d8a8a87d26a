// The audio path: a tremolo (both channels' level follows a half-wave sine) followed by an
// automatic panner (the balance follows a full sine), each blended with its own input by the mix.
// All sample arithmetic is single precision in a fixed order: the output is defined bit for bit.
// Knows nothing of the plug-in interface; it is handed plain buffers and a settings snapshot.
#pragma once

#include <cstdint>

struct EngineSettings {
    float tremoloDepth = 0.0f;
    float tremoloSpeed = 0.0f;
    float pannerDepth = 0.0f;
    float pannerSpeed = 0.0f;
    float mix = 0.0f;
    int32_t rateChoice = 7; // 7, 8, 9, 10 for 44.1, 48, 88.2, 96 kHz; anything else counts as 7
};

class ModulationEngine {
public:
    // outL/outR may be the same buffers as inL/inR. frames <= 0 touches nothing.
    void process(const float* inL, const float* inR, float* outL, float* outR, int32_t frames,
                 const EngineSettings& settings);

    // Speed factor for a rate choice: 44100 divided by the chosen rate, 1.0 for unknown choices.
    static float rateFactor(int32_t rateChoice);

    // Oscillator state. It advances only while a stage runs and is never reset: not by a
    // program change, a parameter change or suspend/resume.
    float tremoloPhase = 0.0f; // in table steps, 0 <= phase < 18002
    float pannerPhase = 0.0f;  // in table steps, 0 <= phase < 36004
    uint32_t tremoloIndex = 0; // entry used by the next frame
    uint32_t pannerIndex = 0;
};
