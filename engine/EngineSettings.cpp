#include "engine/EngineSettings.h"

#include <cmath>

#include "engine/Parameters.h"

namespace {

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
    if (value > kLargestGainParameter)
        return kLargestGainParameter;
    return value < -kLargestGainParameter ? -kLargestGainParameter : value;
}

float limitedIncrement(float increment, float largest)
{
    return increment < largest ? increment : largest;
}

} // namespace

float rateFactor(int32_t rateChoice)
{
    static constexpr float factors[kNumRateChoices] = {1.0f, 0.91875f, 0.5f, 0.459375f};
    return isRateChoice(rateChoice) ? factors[rateChoice - kFirstRateChoice] : 1.0f;
}

BlockSettings blockSettings(const EngineSettings& settings)
{
    const float f = rateFactor(settings.rateChoice);
    // Speeds only switch a stage on and set its increment; they need no gain bound, only the
    // increment limit, so they are not clamped like depth and mix.
    const float tremoloSpeed = std::isfinite(settings.tremoloSpeed) ? settings.tremoloSpeed : 0.0f;
    const float pannerSpeed = std::isfinite(settings.pannerSpeed) ? settings.pannerSpeed : 0.0f;

    BlockSettings block;
    block.tremoloDepth = usable(settings.tremoloDepth);
    block.pannerDepth = usable(settings.pannerDepth);
    block.mix = usable(settings.mix);
    block.tremoloOn = tremoloSpeed > 0.0f && block.tremoloDepth > 0.0f;
    block.pannerOn = block.pannerDepth > 0.0f && pannerSpeed > 0.0f;
    if (block.tremoloOn)
        block.tremoloIncrement =
            limitedIncrement((tremoloSpeed * 10.0f) * f, kMaxTremoloIncrement);
    if (block.pannerOn)
        block.pannerIncrement = limitedIncrement(f * (pannerSpeed * 10.0f), kMaxPannerIncrement);
    return block;
}
