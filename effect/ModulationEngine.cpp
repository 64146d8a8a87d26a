#include "effect/ModulationEngine.h"

#include <cmath>

#include "effect/SineTables.h"

namespace {

using sine_tables::kPannerLength;
using sine_tables::kTremoloLength;

// The largest per-frame increments allowed. With the phase below the table length, one step of
// at most this size rounds to below twice the length, so a single subtraction brings it back
// into the table (exactly, by Sterbenz' lemma) and every index stays valid.
constexpr float kMaxTremoloIncrement = 18000.0f;
constexpr float kMaxPannerIncrement = 36000.0f;

// Depth and mix beyond this size could overflow finite audio to infinity; values a host can
// sensibly send (0 to 1, a little beyond) are used exactly as given.
constexpr float kLargestGainParameter = 100.0f;

// A parameter the engine may use: non-finite values count as 0 (the stage is off).
float usable(float value)
{
    if (!std::isfinite(value))
        return 0.0f;
    return std::fmax(-kLargestGainParameter, std::fmin(value, kLargestGainParameter));
}

float limitedIncrement(float increment, float largest)
{
    return increment < largest ? increment : largest;
}

} // namespace

float ModulationEngine::rateFactor(int32_t rateChoice)
{
    static constexpr float factors[4] = {1.0f, 0.91875f, 0.5f, 0.459375f};
    return rateChoice >= 7 && rateChoice <= 10 ? factors[rateChoice - 7] : 1.0f;
}

void ModulationEngine::process(const float* inL, const float* inR, float* outL, float* outR,
                               int32_t frames, const EngineSettings& settings)
{
    if (frames <= 0)
        return;
    const float f = rateFactor(settings.rateChoice);
    // Speeds only switch a stage on and set its increment; they need no gain bound, only the
    // increment limit below, so they are not clamped like depth and mix.
    const float tremoloSpeed = std::isfinite(settings.tremoloSpeed) ? settings.tremoloSpeed : 0.0f;
    const float pannerSpeed = std::isfinite(settings.pannerSpeed) ? settings.pannerSpeed : 0.0f;
    const float tremoloDepth = usable(settings.tremoloDepth);
    const float pannerDepth = usable(settings.pannerDepth);
    const float m = usable(settings.mix);

    // Frame by frame, so that in-place buffers are safe.
    for (int32_t i = 0; i < frames; ++i) {
        outL[i] = inL[i];
        outR[i] = inR[i];
    }

    if (tremoloSpeed > 0.0f && tremoloDepth > 0.0f) {
        const float* table = sine_tables::tremoloTable();
        const float inc = limitedIncrement((tremoloSpeed * 10.0f) * f, kMaxTremoloIncrement);
        const float floor = 1.0f - tremoloDepth;
        float phase = tremoloPhase;
        uint32_t idx = tremoloIndex;
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
        tremoloPhase = phase;
        tremoloIndex = idx;
    }

    if (pannerDepth > 0.0f && pannerSpeed > 0.0f) {
        const float* table = sine_tables::pannerTable();
        const float inc = limitedIncrement(f * (pannerSpeed * 10.0f), kMaxPannerIncrement);
        float phase = pannerPhase;
        uint32_t idx = pannerIndex;
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
        pannerPhase = phase;
        pannerIndex = idx;
    }
}
