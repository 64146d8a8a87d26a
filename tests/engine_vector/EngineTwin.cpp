#include "EngineTwin.h"

#include <bit>
#include <cmath>
#include <random>

#include "effect/ReferenceEngine.h"

namespace {

constexpr int32_t kGuardWords = 8;
constexpr uint32_t kGuard = 0x7fa5a5a5; // a NaN no engine computes

void fill(std::vector<float>& buffer, int32_t frames)
{
    buffer.assign(frames + kGuardWords, std::bit_cast<float>(kGuard));
}

bool guardsIntact(const std::vector<float>& buffer, int32_t frames)
{
    for (int32_t i = frames; i < frames + kGuardWords; ++i) {
        if (std::bit_cast<uint32_t>(buffer[i]) != kGuard)
            return false;
    }
    return true;
}

} // namespace

TestAudio::TestAudio(int32_t frames, uint32_t seed) : left(frames), right(frames)
{
    std::mt19937 random(seed);
    std::uniform_real_distribution<float> noise(-0.25f, 0.25f);
    for (int32_t i = 0; i < frames; ++i) {
        left[i] = 0.7f * std::sin(0.01f * static_cast<float>(i)) + noise(random);
        right[i] = 0.6f * std::cos(0.0137f * static_cast<float>(i)) + noise(random);
    }
}

void EngineTwin::setState(const OscillatorState& state)
{
    static_cast<OscillatorState&>(fast) = state;
    plain = state;
}

::testing::AssertionResult sameState(const OscillatorState& fast, const OscillatorState& plain)
{
    const auto bits = [](float value) { return std::bit_cast<uint32_t>(value); };
    if (bits(fast.tremoloPhase) != bits(plain.tremoloPhase) ||
        bits(fast.pannerPhase) != bits(plain.pannerPhase) ||
        fast.tremoloIndex != plain.tremoloIndex || fast.pannerIndex != plain.pannerIndex)
        return ::testing::AssertionFailure()
               << "oscillators differ: tremolo " << fast.tremoloPhase << "/" << fast.tremoloIndex
               << " vs " << plain.tremoloPhase << "/" << plain.tremoloIndex << ", panner "
               << fast.pannerPhase << "/" << fast.pannerIndex << " vs " << plain.pannerPhase
               << "/" << plain.pannerIndex;
    return ::testing::AssertionSuccess();
}

::testing::AssertionResult sameSamples(const float* fast, const float* plain, int32_t frames,
                                       const char* channel)
{
    for (int32_t i = 0; i < frames; ++i) {
        if (std::bit_cast<uint32_t>(fast[i]) != std::bit_cast<uint32_t>(plain[i]))
            return ::testing::AssertionFailure() << channel << " frame " << i << " of " << frames
                                                 << ": " << fast[i] << " vs " << plain[i];
    }
    return ::testing::AssertionSuccess();
}

::testing::AssertionResult EngineTwin::sameBlock(const float* inL, const float* inR,
                                                 int32_t frames, const EngineSettings& settings)
{
    const int32_t size = frames > 0 ? frames : 0;
    fill(fastL, size);
    fill(fastR, size);
    fill(plainL, size);
    fill(plainR, size);
    fast.process(inL, inR, fastL.data(), fastR.data(), frames, settings);
    processReference(plain, inL, inR, plainL.data(), plainR.data(), frames, settings);
    if (!guardsIntact(fastL, size) || !guardsIntact(fastR, size))
        return ::testing::AssertionFailure() << "wrote past the end of a " << frames
                                             << "-frame block";
    if (auto left = sameSamples(fastL.data(), plainL.data(), size, "left"); !left)
        return left;
    if (auto right = sameSamples(fastR.data(), plainR.data(), size, "right"); !right)
        return right;
    return sameState(fast, plain);
}
