// The vector engine against the plain loop, bit for bit in every sample and oscillator field, with
// each instruction set this processor can run.
#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "engine/ModulationEngine.h"
#include "engine/OscillatorSteps.h"
#include "engine/ReferenceEngine.h"
#include "engine/SineTables.h"

namespace {

using Kernel = ModulationEngine::Kernel;
const std::string kKernelNames[] = {"Sse2", "Avx2", "Avx512"};
constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr float kInf = std::numeric_limits<float>::infinity();

// Noise, so that every gain shows in the bits.
struct Audio {
    explicit Audio(int32_t frames, uint32_t seed = 1) : left(frames), right(frames)
    {
        std::mt19937 random(seed);
        std::uniform_real_distribution<float> noise(-0.95f, 0.95f);
        for (int32_t i = 0; i < frames; ++i)
            left[i] = noise(random), right[i] = noise(random);
    }
    std::vector<float> left, right;
};

// Samples, or the fields of two oscillator states, compared as 32-bit words.
::testing::AssertionResult sameBits(const void* fast, const void* plain, int32_t words,
                                    const char* what = "sample")
{
    for (int32_t i = 0; i < words; ++i) {
        float a, b;
        std::memcpy(&a, static_cast<const float*>(fast) + i, sizeof a);
        std::memcpy(&b, static_cast<const float*>(plain) + i, sizeof b);
        if (std::bit_cast<uint32_t>(a) != std::bit_cast<uint32_t>(b))
            return ::testing::AssertionFailure() << what << " " << i << " of " << words << ": "
                                                 << std::hexfloat << a << " vs " << b;
    }
    return ::testing::AssertionSuccess();
}

::testing::AssertionResult sameState(const OscillatorState& fast, const OscillatorState& plain)
{
    return sameBits(&fast, &plain, 4, "oscillator field (tremolo, panner phase; their indices)");
}

// The engine and the plain loop side by side, out of place, with guard words past every output.
struct Twin {
    explicit Twin(Kernel kernel) : fast(kernel) {}
    void setState(const OscillatorState& s) { static_cast<OscillatorState&>(fast) = plain = s; }

    ::testing::AssertionResult same(const float* inL, const float* inR, int32_t frames,
                                    const EngineSettings& settings)
    {
        const int32_t size = std::max(frames, 0);
        for (auto& buffer : out)
            buffer.assign(size + 8, std::bit_cast<float>(0x7fa5a5a5u)); // a NaN no engine makes
        fast.process(inL, inR, out[0].data(), out[1].data(), frames, settings);
        processReference(plain, inL, inR, out[2].data(), out[3].data(), frames, settings);
        auto result = sameBits(out[0].data(), out[2].data(), size + 8, "left frame");
        if (result)
            result = sameBits(out[1].data(), out[3].data(), size + 8, "right frame");
        return result ? sameState(fast, plain) : result;
    }

    ModulationEngine fast;
    OscillatorState plain;
    std::vector<float> out[4]; // the engine's left and right, then the plain loop's
};

// Mostly values a host sends, sometimes ones no host should: each kind has tripped up a vector
// engine in some way (stages off, stalled or wrapping oscillators, clamping).
float randomParameter(std::mt19937& random)
{
    std::uniform_real_distribution<float> unit(0.0f, 1.0f);
    constexpr float specials[] = {0.0f, 1.0f, kNaN, kInf, -kInf, 1e-45f, 1800.2f, 3600.4f};
    const float kind = unit(random);
    return kind < 0.6f    ? unit(random)
           : kind < 0.65f ? -unit(random)
           : kind < 0.7f  ? 1.0f + 300.0f * unit(random) // past the clamp; speeds wrapping at once
           : kind < 0.75f ? std::ldexp(unit(random), -static_cast<int>(140.0f * unit(random)))
           : kind < 0.8f  ? 1e30f * unit(random)
                          : specials[random() % 8];
}

EngineSettings randomSettings(std::mt19937& random)
{
    constexpr int32_t choices[] = {7, 8, 9, 10, 0, 11, -1, INT32_MIN};
    return {randomParameter(random), randomParameter(random), randomParameter(random),
            randomParameter(random), randomParameter(random), choices[random() % 8]};
}

// The skip below must not hide a kernel chooser that stops picking what the processor runs.
TEST(KernelChoice, EachKernelIsUsedWhereTheProcessorRunsItAndANarrowerOneElsewhere)
{
    __builtin_cpu_init();
    const bool avx2 = __builtin_cpu_supports("avx2") && __builtin_cpu_supports("bmi2");
    const bool avx512 = avx2 && __builtin_cpu_supports("avx512f") && __builtin_cpu_is("intel");
    for (Kernel asked : {Kernel::Sse2, Kernel::Avx2, Kernel::Avx512}) {
        const Kernel expected = asked == Kernel::Avx512 && avx512 ? Kernel::Avx512
                                : asked != Kernel::Sse2 && avx2   ? Kernel::Avx2
                                                                  : Kernel::Sse2;
        EXPECT_EQ(ModulationEngine(asked).kernelInUse(), expected) << kKernelNames[int(asked)];
    }
}

// A kernel this processor cannot run is skipped, and says so: run on a narrower kernel instead,
// its tests would pass without testing it.
class EngineMatchesReference : public ::testing::TestWithParam<Kernel> {
protected:
    void SetUp() override
    {
        if (ModulationEngine(GetParam()).kernelInUse() != GetParam())
            GTEST_SKIP() << "this processor does not run the " << kKernelNames[int(GetParam())]
                         << " kernel";
    }
};
INSTANTIATE_TEST_SUITE_P(Kernels, EngineMatchesReference,
                         ::testing::Values(Kernel::Sse2, Kernel::Avx2, Kernel::Avx512),
                         [](const auto& kernel) { return kKernelNames[int(kernel.param)]; });


TEST_P(EngineMatchesReference, RandomSettingsChangingBetweenBlocksOverMillionsOfFrames)
{
    const Audio audio(8192 + 64);
    Twin twin(GetParam());
    std::mt19937 random(2024);
    EngineSettings settings = randomSettings(random);
    for (int64_t frames = 0; frames < 6'000'000;) {
        // Short blocks half the time: they keep the oscillators near a block start.
        const bool shortBlock = random() % 2;
        const int32_t size = 1 + static_cast<int32_t>(random() % (shortBlock ? 64 : 8192));
        const int32_t offset = static_cast<int32_t>(random() % 64); // any alignment
        if (random() % 4 == 0)
            settings = randomSettings(random);
        ASSERT_TRUE(twin.same(&audio.left[offset], &audio.right[offset], size, settings))
            << "after " << frames << " frames";
        frames += size;
    }
}

TEST_P(EngineMatchesReference, EveryBlockSizeFrom1To8192)
{
    const Audio audio(8192);
    Twin twin(GetParam());
    const EngineSettings settings[] = {{1.0f, 0.174999f, 0.479999f, 0.275f, 1.0f, 7},
                                       {0.77999f, 0.5f, 1.0f, 0.495f, 0.545f, 8},
                                       {0.834999f, 0.63499f, 1.0f, 0.63999f, 0.5f, 10},
                                       {0.634999f, 0.174999f, 0.0f, 0.0f, 1.0f, 9}};
    for (int32_t size = 1; size <= 8192; ++size)
        ASSERT_TRUE(twin.same(audio.left.data(), audio.right.data(), size, settings[size % 4]));
}

TEST_P(EngineMatchesReference, WrapsAtEveryPositionOfABlock)
{
    // Sizes around the vector widths and the engine's wide-block threshold of 256 frames. Speed
    // 0.2 steps by exactly 2 and 4 entries, so those phases land exactly on the table lengths.
    const Audio audio(1024);
    Twin twin(GetParam());
    for (const float speed : {0.174999f, 0.2f}) {
        const EngineSettings settings{0.9f, speed, 0.8f, 2.0f * speed, 0.75f, 7};
        const BlockSettings block = blockSettings(settings);
        for (const int32_t size :
             {1, 2, 3, 4, 5, 7, 8, 9, 15, 16, 17, 31, 32, 33, 255, 256, 257, 513})
            for (int32_t wrapAt = 1; wrapAt <= size; ++wrapAt) {
                const float frame = static_cast<float>(wrapAt) - (speed == 0.2f ? 0.0f : 0.5f);
                const float tremolo = sine_tables::kTremoloLength - frame * block.tremoloIncrement;
                const float panner = sine_tables::kPannerLength - frame * block.pannerIncrement;
                twin.setState({tremolo, panner, static_cast<uint32_t>(tremolo),
                               static_cast<uint32_t>(panner)});
                ASSERT_TRUE(twin.same(audio.left.data(), audio.right.data(), size, settings))
                    << "speed " << speed << ", size " << size << ", wrap at frame " << wrapAt;
            }
    }
}

TEST_P(EngineMatchesReference, TiedAndStalledPhases)
{
    // Increments of half grid steps of the phase's binade, or below half a step, from phases with
    // odd and even last mantissa bits: from an odd one the first step rounds the other way than
    // all later ones, so a run that took its step from the first would drift. Rate choice 9
    // halves the speed exactly: inc = speed * 5.
    const Audio audio(600);
    Twin twin(GetParam());
    for (int e = -12; e <= 14; ++e) {
        const float u = std::ldexp(1.0f, e - 23);
        for (const float steps : {0.25f, 0.5f, 1.5f, 2.5f, 7.5f, 1000.5f}) {
            float speed = steps * u / 5.0f; // then the floats around the quotient
            for (int tries = 0; tries < 8 && speed * 10.0f != 2.0f * steps * u; ++tries)
                speed = std::nextafter(speed, speed * 10.0f < 2.0f * steps * u ? 1.0f : 0.0f);
            const EngineSettings settings{0.6f, speed, 0.7f, speed, 0.9f, 9};
            if (blockSettings(settings).tremoloIncrement != steps * u)
                continue; // no speed reaches this increment
            for (const uint32_t mantissa : {0u, 1u, 2u, 3u, 0x400001u, 0x7ffffdu}) {
                const float phase = std::ldexp(1.0f, e) + static_cast<float>(mantissa) * u;
                const auto index = static_cast<uint32_t>(phase);
                if (index >= sine_tables::kTremoloLength)
                    continue;
                twin.setState({phase, phase, index, index});
                ASSERT_TRUE(twin.same(audio.left.data(), audio.right.data(), 600, settings))
                    << "binade 2^" << e << ", " << steps << " grid steps, mantissa " << mantissa;
            }
        }
    }
}

TEST_P(EngineMatchesReference, StagesSwitchedOffKeepTheirOscillatorsFrozen)
{
    const Audio audio(512);
    Twin twin(GetParam());
    // Running, then without tremolo depth, with a negative panner speed, with no speeds at all.
    const EngineSettings steps[] = {{0.5f, 0.3f, 0.5f, 0.3f, 1.0f, 7},
                                    {0.0f, 0.3f, 0.5f, 0.3f, 1.0f, 7},
                                    {0.5f, 0.3f, 0.5f, -0.3f, 1.0f, 7},
                                    {0.5f, 0.0f, 0.5f, 0.0f, 0.5f, 7}};
    for (int step = 0; step < 5; ++step) {
        const OscillatorState before = twin.plain;
        ASSERT_TRUE(twin.same(audio.left.data(), audio.right.data(), 301, steps[step % 4]));
        EXPECT_EQ(twin.fast.tremoloPhase == before.tremoloPhase, step == 1 || step == 3);
        EXPECT_EQ(twin.fast.pannerPhase == before.pannerPhase, step == 2 || step == 3);
    }
}

TEST_P(EngineMatchesReference, OverlappingBuffersGiveThePlainLoopsResult)
{
    // In place is what hosts do; the other layouts are odd but allowed, and come out as the
    // frame-by-frame loop has them. The engine remembers buffers it found apart over short
    // blocks; over more frames the same ones may overlap ("40 apart").
    const Audio audio(700, 5);
    const EngineSettings settings{0.8f, 0.3f, 0.9f, 0.45f, 0.7f, 7};
    const struct {
        const char* name;
        int inL, inR, outL, outR; // offsets into one shared buffer
    } layouts[] = {{"in place", 0, 1000, 0, 1000},      {"swapped", 0, 1000, 1000, 0},
                   {"one output", 0, 1000, 2000, 2000}, {"shifted by one", 0, 1000, 1, 1001},
                   {"shifted back", 1, 1001, 0, 1000},  {"one input", 0, 0, 2000, 3000},
                   {"right on left", 0, 1000, 0, 1},    {"40 apart", 0, 1000, 40, 1040}};
    for (const auto& layout : layouts) {
        std::vector<float> fastMemory(4000);
        std::copy(audio.left.begin(), audio.left.end(), fastMemory.begin());
        std::copy(audio.right.begin(), audio.right.end(), fastMemory.begin() + 1000);
        std::vector<float> plainMemory = fastMemory;
        ModulationEngine fast(GetParam());
        OscillatorState plain;
        float* f = fastMemory.data();
        float* p = plainMemory.data();
        for (const int32_t frames : {32, 32, 600, 16}) {
            fast.process(f + layout.inL, f + layout.inR, f + layout.outL, f + layout.outR, frames,
                         settings);
            processReference(plain, p + layout.inL, p + layout.inR, p + layout.outL,
                             p + layout.outR, frames, settings);
            ASSERT_TRUE(sameBits(f, p, 4000)) << layout.name << ", " << frames << " frames";
            ASSERT_TRUE(sameState(fast, plain)) << layout.name << ", " << frames << " frames";
        }
    }
}

TEST_P(EngineMatchesReference, EmptyAndNegativeBlocksTouchNothing)
{
    ModulationEngine engine(GetParam());
    for (const int32_t frames : {0, -1, INT32_MIN})
        engine.process(nullptr, nullptr, nullptr, nullptr, frames, {1.0f, 0.5f, 1.0f, 0.5f, 1, 7});
    EXPECT_TRUE(sameState(engine, OscillatorState{}));
}

} // namespace

TEST(PhaseSteps, ARunLastsUntilItsBinadeEnds)
{
    // The engine would match the plain loop as well with one plain step per stretch; this proves
    // runs are taken. From 9000 with inc 1.75 the phase stays in [8192, 16384) for 4000 steps.
    EXPECT_EQ(planStretch(9000.0f, 9000, 1.75f, 18002.0f, 512).frames, 512);
    const Stretch last = planStretch(16370.0f, 16370, 1.75f, 18002.0f, 512);
    EXPECT_EQ(last.frames, 7); // 16370 + 7 * 1.75 = 16382.25, the last phase below 16384
    EXPECT_EQ(last.phaseAfter(last.frames), 16382.25f);
}
