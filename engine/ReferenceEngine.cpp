#include "engine/ReferenceEngine.h"

#include "engine/SineTables.h"

using sine_tables::kPannerLength;
using sine_tables::kTremoloLength;

void processReference(OscillatorState& state, const float* inL, const float* inR, float* outL,
                      float* outR, int32_t frames, const EngineSettings& settings)
{
    if (frames <= 0)
        return;
    const BlockSettings block = blockSettings(settings);
    const float m = block.mix;

    // Frame by frame, so that in-place buffers are safe.
    for (int32_t i = 0; i < frames; ++i) {
        outL[i] = inL[i];
        outR[i] = inR[i];
    }

    if (block.tremoloOn) {
        const float* table = sine_tables::tremoloTable();
        const float inc = block.tremoloIncrement;
        const float floor = 1.0f - block.tremoloDepth;
        float phase = state.tremoloPhase;
        uint32_t idx = state.tremoloIndex;
        for (int32_t i = 0; i < frames; ++i) {
            float g = floor + table[idx];
            if (g > 1.0f)
                g = 1.0f;
            const float L = outL[i];
            const float R = outR[i];
            outL[i] = (L * g) * m + (1.0f - m) * L;
            outR[i] = (g * R) * m + (1.0f - m) * R;
            phase = phase + inc;
            if (phase >= static_cast<float>(kTremoloLength))
                phase = phase - static_cast<float>(kTremoloLength);
            idx = static_cast<uint32_t>(phase);
        }
        state.tremoloPhase = phase;
        state.tremoloIndex = idx;
    }

    if (block.pannerOn) {
        const float* table = sine_tables::pannerTable();
        const float inc = block.pannerIncrement;
        const float pannerDepth = block.pannerDepth;
        float phase = state.pannerPhase;
        uint32_t idx = state.pannerIndex;
        for (int32_t i = 0; i < frames; ++i) {
            const float pan = pannerDepth * table[idx];
            // A positive pan lowers the left channel (the sound moves right), a negative one
            // lowers the right.
            float gL = 1.0f;
            float gR = 1.0f;
            if (pan > 0.0f)
                gL = 1.0f - pan;
            else if (pan < 0.0f)
                gR = 1.0f + pan;
            const float L = outL[i];
            outL[i] = (gL * L) * m + (1.0f - m) * L;
            const float R = outR[i];
            outR[i] = (gR * R) * m + (1.0f - m) * R;
            phase = phase + inc;
            if (phase >= static_cast<float>(kPannerLength))
                phase = phase - static_cast<float>(kPannerLength);
            idx = static_cast<uint32_t>(phase);
        }
        state.pannerPhase = phase;
        state.pannerIndex = idx;
    }
}
