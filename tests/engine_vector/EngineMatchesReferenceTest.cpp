// The vector engine against the plain loop, bit for bit in every sample and oscillator field,
// with each instruction set this processor can run.
#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "EngineTwin.h"
#include "effect/ReferenceEngine.h"

namespace {

constexpr int32_t kLargestBlock = 8192;
constexpr float kTremoloLength = 18002.0f;
constexpr float kPannerLength = 36004.0f;

EngineSettings programLike(float tremoloDepth, float tremoloSpeed, float pannerDepth,
                           float pannerSpeed, float mix, int32_t rateChoice)
{
    EngineSettings settings;
    settings.tremoloDepth = tremoloDepth;
    settings.tremoloSpeed = tremoloSpeed;
    settings.pannerDepth = pannerDepth;
    settings.pannerSpeed = pannerSpeed;
    settings.mix = mix;
    settings.rateChoice = rateChoice;
    return settings;
}

// Mostly values a host sends, sometimes the ones no host should: each category has tripped up a
// vector engine in some way (stages off, stalled or wrapping oscillators, clamping).
float randomParameter(std::mt19937& random)
{
    std::uniform_real_distribution<float> unit(0.0f, 1.0f);
    const float kinds = unit(random);
    if (kinds < 0.6f)
        return unit(random);
    if (kinds < 0.65f)
        return 0.0f;
    if (kinds < 0.7f)
        return 1.0f;
    if (kinds < 0.75f)
        return -unit(random);
    if (kinds < 0.8f)
        return 1.0f + 300.0f * unit(random); // beyond the clamp, and speeds that wrap every step
    if (kinds < 0.85f)
        return std::ldexp(unit(random), -static_cast<int>(140.0f * unit(random))); // tiny
    if (kinds < 0.9f)
        return 1e30f * unit(random);
    constexpr float specials[] = {std::numeric_limits<float>::quiet_NaN(),
                                  std::numeric_limits<float>::infinity(),
                                  -std::numeric_limits<float>::infinity(),
                                  std::numeric_limits<float>::denorm_min(), 1800.2f, 3600.4f};
    return specials[random() % 6];
}

EngineSettings randomSettings(std::mt19937& random)
{
    constexpr int32_t choices[] = {7, 8, 9, 10, 0, 11, -1, INT32_MIN};
    EngineSettings settings;
    settings.tremoloDepth = randomParameter(random);
    settings.tremoloSpeed = randomParameter(random);
    settings.pannerDepth = randomParameter(random);
    settings.pannerSpeed = randomParameter(random);
    settings.mix = randomParameter(random);
    settings.rateChoice = choices[random() % 8];
    return settings;
}

using Kernel = ModulationEngine::Kernel;

class EngineMatchesReference : public ::testing::TestWithParam<Kernel> {};

std::string kernelName(const ::testing::TestParamInfo<Kernel>& info)
{
    constexpr const char* names[] = {"Sse2", "Avx2", "Avx512"};
    return names[static_cast<int>(info.param)];
}

} // namespace

INSTANTIATE_TEST_SUITE_P(Kernels, EngineMatchesReference,
                         ::testing::Values(Kernel::Sse2, Kernel::Avx2, Kernel::Avx512), kernelName);

// One buffer holding the left channel at offset 0 and the right at 1000, for tests in which
// inputs and outputs share memory.
static std::vector<float> sharedMemory(const TestAudio& audio, size_t size)
{
    std::vector<float> memory(size);
    for (size_t i = 0; i < audio.left.size(); ++i) {
        memory[i] = audio.left[i];
        memory[1000 + i] = audio.right[i];
    }
    return memory;
}

TEST_P(EngineMatchesReference, KernelIsTheOneAskedForWhenTheProcessorHasIt)
{
    const ModulationEngine engine(GetParam());
    __builtin_cpu_init();
    const bool avx2 = __builtin_cpu_supports("avx2") && __builtin_cpu_supports("bmi2");
    const bool avx512 = avx2 && __builtin_cpu_supports("avx512f") && __builtin_cpu_is("intel");
    Kernel expected = Kernel::Sse2;
    if (GetParam() == Kernel::Avx512 && avx512)
        expected = Kernel::Avx512;
    else if (GetParam() != Kernel::Sse2 && avx2)
        expected = Kernel::Avx2;
    EXPECT_EQ(engine.kernelInUse(), expected);
}

TEST_P(EngineMatchesReference, RandomSettingsChangingBetweenBlocksOverMillionsOfFrames)
{
    const TestAudio audio(kLargestBlock + 64);
    EngineTwin twin(GetParam());
    std::mt19937 random(2024);
    int64_t frames = 0;
    EngineSettings settings = randomSettings(random);
    while (frames < 6'000'000) {
        // Short blocks half the time: they keep the oscillators near a block start.
        const int32_t size = random() % 2 ? 1 + static_cast<int32_t>(random() % 64)
                                          : 1 + static_cast<int32_t>(random() % kLargestBlock);
        const int32_t offset = static_cast<int32_t>(random() % 64); // any alignment
        if (random() % 4 == 0)
            settings = randomSettings(random);
        ASSERT_TRUE(twin.sameBlock(audio.left.data() + offset, audio.right.data() + offset, size,
                                   settings))
            << "after " << frames << " frames";
        frames += size;
    }
}

TEST_P(EngineMatchesReference, EveryBlockSizeFrom1To8192)
{
    const TestAudio audio(kLargestBlock);
    EngineTwin twin(GetParam());
    const EngineSettings settings[] = {
        programLike(1.0f, 0.174999f, 0.479999f, 0.275f, 1.0f, 7),
        programLike(0.77999f, 0.5f, 1.0f, 0.495f, 0.545f, 8),
        programLike(0.834999f, 0.63499f, 1.0f, 0.63999f, 0.5f, 10),
        programLike(0.634999f, 0.174999f, 0.0f, 0.0f, 1.0f, 9),
    };
    for (int32_t size = 1; size <= kLargestBlock; ++size)
        ASSERT_TRUE(twin.sameBlock(audio.left.data(), audio.right.data(), size,
                                   settings[size % 4]));
}

TEST_P(EngineMatchesReference, WrapsAtEveryPositionOfABlock)
{
    // Sizes around the vector widths and around the engine's internal chunk of 256 frames.
    const TestAudio audio(1024);
    EngineTwin twin(GetParam());
    const EngineSettings settings = programLike(0.9f, 0.174999f, 0.8f, 0.34f, 0.75f, 7);
    const BlockSettings block = blockSettings(settings);
    for (const int32_t size : {1, 2, 3, 4, 5, 7, 8, 9, 15, 16, 17, 31, 32, 33, 255, 256, 257,
                               513}) {
        for (int32_t wrapAt = 1; wrapAt <= size; ++wrapAt) {
            const float frame = static_cast<float>(wrapAt) - 0.5f;
            OscillatorState state;
            state.tremoloPhase = kTremoloLength - frame * block.tremoloIncrement;
            state.pannerPhase = kPannerLength - frame * block.pannerIncrement;
            state.tremoloIndex = static_cast<uint32_t>(state.tremoloPhase);
            state.pannerIndex = static_cast<uint32_t>(state.pannerPhase);
            twin.setState(state);
            ASSERT_TRUE(twin.sameBlock(audio.left.data(), audio.right.data(), size, settings))
                << "size " << size << ", wrap at frame " << wrapAt;
        }
    }
}

TEST_P(EngineMatchesReference, TiedAndStalledPhases)
{
    // Speeds whose increments fall on half grid steps of the binade the phase is in, or below half
    // a step, from phases with odd and even last mantissa bits. Rate choice 9 halves the speed
    // exactly, so the increment is exactly (speed * 10) / 2.
    const TestAudio audio(600);
    EngineTwin twin(GetParam());
    for (int e = 4; e <= 14; ++e) {
        const float u = std::ldexp(1.0f, e - 23);
        for (const float steps : {0.25f, 0.5f, 1.5f, 2.5f, 7.5f, 1000.5f}) {
            const float inc = steps * u;
            // speed * 10 must round to exactly 2 * inc; search the few floats around the quotient.
            float speed = (2.0f * inc) / 10.0f;
            for (int tries = 0; tries < 8 && speed * 10.0f != 2.0f * inc; ++tries)
                speed = std::nextafter(speed, speed * 10.0f < 2.0f * inc ? 1.0f : 0.0f);
            if (speed * 10.0f != 2.0f * inc)
                continue; // this increment cannot be reached from a speed
            const EngineSettings settings = programLike(0.6f, speed, 0.7f, speed, 0.9f, 9);
            ASSERT_EQ(blockSettings(settings).tremoloIncrement, inc);
            for (const uint32_t mantissa : {0u, 1u, 2u, 3u, 0x400001u, 0x7ffffdu}) {
                OscillatorState state;
                state.tremoloPhase = std::ldexp(1.0f, e) + static_cast<float>(mantissa) * u;
                state.pannerPhase = state.tremoloPhase;
                if (state.tremoloPhase >= kTremoloLength)
                    continue;
                state.tremoloIndex = static_cast<uint32_t>(state.tremoloPhase);
                state.pannerIndex = state.tremoloIndex;
                twin.setState(state);
                ASSERT_TRUE(twin.sameBlock(audio.left.data(), audio.right.data(), 600, settings))
                    << "binade 2^" << e << ", " << steps << " grid steps, mantissa " << mantissa;
            }
        }
    }
}

TEST_P(EngineMatchesReference, OscillatorFieldsWrittenBetweenBlocksAreFollowed)
{
    // The engine carries the run an oscillator is in from block to block (here the runs in
    // [4096, 8192) and [8192, 16384) outlast every block); whoever writes the fields in between
    // must still be followed exactly.
    const TestAudio audio(64);
    EngineTwin twin(GetParam());
    const EngineSettings settings = programLike(0.9f, 0.05f, 0.8f, 0.07f, 0.75f, 7);
    OscillatorState start;
    start.tremoloPhase = 5000.25f;
    start.tremoloIndex = 5000;
    start.pannerPhase = 9000.5f;
    start.pannerIndex = 9000;
    twin.setState(start);
    const auto poke = [&](auto change) {
        ASSERT_TRUE(twin.sameBlock(audio.left.data(), audio.right.data(), 64, settings));
        OscillatorState state = twin.plain;
        change(state);
        twin.setState(state);
        ASSERT_TRUE(twin.sameBlock(audio.left.data(), audio.right.data(), 64, settings));
    };
    poke([](OscillatorState& s) { s.tremoloPhase = std::nextafter(s.tremoloPhase, 0.0f); });
    poke([](OscillatorState& s) { s.pannerPhase = s.pannerPhase + 0.25f; });
    poke([](OscillatorState& s) { s.tremoloIndex = s.tremoloIndex + 1; });
    poke([](OscillatorState& s) { s.pannerIndex = s.pannerIndex - 3; });
    poke([](OscillatorState&) {});
}

TEST_P(EngineMatchesReference, StagesSwitchedOffKeepTheirOscillatorsFrozen)
{
    const TestAudio audio(512);
    EngineTwin twin(GetParam());
    const EngineSettings running = programLike(0.5f, 0.3f, 0.5f, 0.3f, 1.0f, 7);
    const EngineSettings tremoloOff = programLike(0.0f, 0.3f, 0.5f, 0.3f, 1.0f, 7);
    const EngineSettings pannerOff = programLike(0.5f, 0.3f, 0.5f, -0.3f, 1.0f, 7);
    const EngineSettings bothOff = programLike(0.5f, 0.0f, 0.5f, 0.0f, 0.5f, 7);
    ASSERT_TRUE(twin.sameBlock(audio.left.data(), audio.right.data(), 300, running));
    const OscillatorState before = twin.fast;
    ASSERT_TRUE(twin.sameBlock(audio.left.data(), audio.right.data(), 301, tremoloOff));
    EXPECT_EQ(twin.fast.tremoloPhase, before.tremoloPhase);
    ASSERT_TRUE(twin.sameBlock(audio.left.data(), audio.right.data(), 302, pannerOff));
    ASSERT_TRUE(twin.sameBlock(audio.left.data(), audio.right.data(), 303, bothOff));
    const OscillatorState after = twin.fast;
    EXPECT_EQ(after.pannerPhase, twin.plain.pannerPhase);
    ASSERT_TRUE(twin.sameBlock(audio.left.data(), audio.right.data(), 304, running));
}

TEST_P(EngineMatchesReference, NonFiniteAndExtremeAudioPassesThroughTheSameWay)
{
    constexpr float inf = std::numeric_limits<float>::infinity();
    const float odd[] = {std::numeric_limits<float>::quiet_NaN(), inf, -inf, 0.0f, -0.0f,
                         std::numeric_limits<float>::denorm_min(), -3e38f, 3e38f, 1e-40f,
                         std::bit_cast<float>(0x7fc12345u), std::bit_cast<float>(0xffc00001u)};
    std::vector<float> left(257), right(257);
    for (size_t i = 0; i < left.size(); ++i) {
        left[i] = odd[i % 11];
        right[i] = odd[(i * 7 + 3) % 11];
    }
    EngineTwin twin(GetParam());
    for (const auto& settings : {programLike(0.634999f, 0.174999f, 0.0f, 0.0f, 1.0f, 7),
                                 programLike(1.0f, 0.5f, 1.0f, 0.5f, 0.5f, 7),
                                 programLike(100.0f, 0.5f, 100.0f, 0.5f, -100.0f, 8)})
        ASSERT_TRUE(twin.sameBlock(left.data(), right.data(), 257, settings));
}

TEST_P(EngineMatchesReference, OverlappingBuffersGiveThePlainLoopsResult)
{
    // In place is what hosts do; the other layouts are odd but allowed, and must come out as the
    // frame-by-frame loop has them.
    const TestAudio audio(700, 5);
    const EngineSettings settings = programLike(0.8f, 0.3f, 0.9f, 0.45f, 0.7f, 7);
    struct Layout {
        const char* name;
        int inL, inR, outL, outR; // offsets into one shared buffer
    };
    const Layout layouts[] = {
        {"in place", 0, 1000, 0, 1000},   {"swapped", 0, 1000, 1000, 0},
        {"one output", 0, 1000, 2000, 2000}, {"shifted by one", 0, 1000, 1, 1001},
        {"shifted back", 1, 1001, 0, 1000}, {"one input", 0, 0, 2000, 3000},
        {"left in place, right on left", 0, 1000, 0, 1}};
    for (const Layout& layout : layouts) {
        std::vector<float> fastMemory = sharedMemory(audio, 4000);
        std::vector<float> plainMemory = fastMemory;
        ModulationEngine fast(GetParam());
        OscillatorState plain;
        float* f = fastMemory.data();
        float* p = plainMemory.data();
        fast.process(f + layout.inL, f + layout.inR, f + layout.outL, f + layout.outR, 600,
                     settings);
        processReference(plain, p + layout.inL, p + layout.inR, p + layout.outL, p + layout.outR,
                         600, settings);
        EXPECT_TRUE(sameSamples(f, p, 4000, "memory")) << layout.name;
        EXPECT_TRUE(sameState(fast, plain)) << layout.name;
    }
}

TEST_P(EngineMatchesReference, BuffersApartForShortBlocksMayOverlapInLongerOnes)
{
    // The engine remembers buffers it found apart; the same ones over more frames may overlap.
    const TestAudio audio(700, 6);
    const EngineSettings settings = programLike(0.8f, 0.3f, 0.9f, 0.45f, 0.7f, 7);
    std::vector<float> fastMemory = sharedMemory(audio, 2000);
    std::vector<float> plainMemory = fastMemory;
    ModulationEngine fast(GetParam());
    OscillatorState plain;
    float* f = fastMemory.data();
    float* p = plainMemory.data();
    // Outputs 40 samples past the inputs: apart for 32 frames, overlapping for 600.
    for (const int32_t frames : {32, 32, 600, 16}) {
        fast.process(f, f + 1000, f + 40, f + 1040, frames, settings);
        processReference(plain, p, p + 1000, p + 40, p + 1040, frames, settings);
        EXPECT_TRUE(sameSamples(f, p, 2000, "memory")) << frames << " frames";
        EXPECT_TRUE(sameState(fast, plain)) << frames << " frames";
    }
}

TEST_P(EngineMatchesReference, EmptyAndNegativeBlocksTouchNothing)
{
    const EngineSettings settings = programLike(1.0f, 0.5f, 1.0f, 0.5f, 1.0f, 7);
    ModulationEngine engine(GetParam());
    for (const int32_t frames : {0, -1, INT32_MIN}) {
        engine.process(nullptr, nullptr, nullptr, nullptr, frames, settings);
        EXPECT_EQ(engine.tremoloPhase, 0.0f);
        EXPECT_EQ(engine.pannerIndex, 0u);
    }
}
