// The audio path with every field kept in memory, step for step as the behaviour is defined: the
// effect's fields are read where the definition reads them (depths and mix anew for every frame)
// and each new phase is stored back into its field before the next frame reads it. Nothing here
// is clever, and because the output arrays may alias those float fields, the compiler has to keep
// every read and write in memory: this is the latency-bound loop the vector engine was set
// against. The engine's own reference (processReference) is the leaner yardstick, with
// everything per block in registers; the benchmarks report both.
#pragma once

#include <cstdint>

#include "engine/EngineSettings.h"
#include "engine/SineTables.h"

struct FieldsInMemoryEffect {
    float tremoloDepth = 0.0f;
    float tremoloSpeed = 0.0f;
    float pannerDepth = 0.0f;
    float pannerSpeed = 0.0f;
    float mix = 0.0f;
    int32_t rateChoice = 7;
    float tremoloPhase = 0.0f;
    float pannerPhase = 0.0f;
    uint32_t tremoloIndex = 0;
    uint32_t pannerIndex = 0;
    const float* tremoloTable = sine_tables::tremoloTable();
    const float* pannerTable = sine_tables::pannerTable();

    explicit FieldsInMemoryEffect(const EngineSettings& s)
        : tremoloDepth(s.tremoloDepth), tremoloSpeed(s.tremoloSpeed), pannerDepth(s.pannerDepth),
          pannerSpeed(s.pannerSpeed), mix(s.mix), rateChoice(s.rateChoice)
    {
    }

    // Only for settings inside the engine's bounds (the factory programs): it has none of the
    // engine's guards against unusable parameters.
    __attribute__((noinline)) void processReplacing(float** inputs, float** outputs, int32_t n)
    {
        const float* inL = inputs[0];
        const float* inR = inputs[1];
        float* outL = outputs[0];
        float* outR = outputs[1];
        const float f = rateFactor(rateChoice);
        for (int32_t i = 0; i < n; ++i) {
            outL[i] = inL[i];
            outR[i] = inR[i];
        }
        const float pannerSpeedAtStart = pannerSpeed;
        if (tremoloSpeed > 0.0f && tremoloDepth > 0.0f && n >= 1) {
            const float inc = (tremoloSpeed * 10.0f) * f;
            uint32_t idx = tremoloIndex;
            for (int32_t i = 0; i < n; ++i) {
                float g = (1.0f - tremoloDepth) + tremoloTable[idx];
                if (g > 1.0f)
                    g = 1.0f;
                const float L = outL[i];
                const float R = outR[i];
                outL[i] = (L * g) * mix + (1.0f - mix) * L;
                outR[i] = (g * R) * mix + (1.0f - mix) * R;
                float p = tremoloPhase + inc;
                if (p >= 18002.0f)
                    p = p - 18002.0f;
                tremoloPhase = p;
                idx = static_cast<uint32_t>(p);
            }
            tremoloIndex = idx;
        }
        if (pannerDepth > 0.0f && pannerSpeedAtStart > 0.0f && n >= 1) {
            const float inc = f * (pannerSpeedAtStart * 10.0f);
            uint32_t idx = pannerIndex;
            for (int32_t i = 0; i < n; ++i) {
                const float pan = pannerDepth * pannerTable[idx];
                float gL = 1.0f;
                float gR = 1.0f;
                if (pan > 0.0f)
                    gL = 1.0f - pan;
                else if (pan < 0.0f)
                    gR = 1.0f + pan;
                const float L = outL[i];
                outL[i] = (gL * L) * mix + (1.0f - mix) * L;
                const float R = outR[i];
                outR[i] = (gR * R) * mix + (1.0f - mix) * R;
                float p = pannerPhase + inc;
                if (p >= 36004.0f)
                    p = p - 36004.0f;
                pannerPhase = p;
                idx = static_cast<uint32_t>(p);
            }
            pannerIndex = idx;
        }
    }
};
