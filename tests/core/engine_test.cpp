// The sound, sample for sample, as a host hears it: against a plain model of the effect written
// here from its definition, and against golden numbers a reader can check by hand.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <random>
#include <vector>

#include "tests/harness/TestHost.h"

using test_host::StereoBuffer;
using test_host::createEffect;

namespace {

// The definition, written as plainly as possible: a float angle accumulated in 0.01 degree
// steps (summed in double, rounded each step), sine in double, rounded to float.
struct ModelTables {
    std::vector<float> tremolo, panner;
    ModelTables()
    {
        float angle = 0.0f;
        for (int k = 0; k < 36004; ++k) {
            float entry = (float)sin((double)angle * 0.017453292519888888);
            if (k < 18002)
                tremolo.push_back(entry);
            panner.push_back(entry);
            angle = (float)((double)angle + 0.01);
        }
    }
};

const ModelTables& modelTables()
{
    static ModelTables tables;
    return tables;
}

struct Model {
    float tremoloDepth, tremoloSpeed, pannerDepth, pannerSpeed, mix;
    int rateChoice = 7;
    float tremoloPhase = 0, pannerPhase = 0;
    unsigned tremoloIndex = 0, pannerIndex = 0;

    void process(const float* inL, const float* inR, float* outL, float* outR, int n)
    {
        float f = 1.0f;
        if (rateChoice == 8)
            f = 0.91875f;
        if (rateChoice == 9)
            f = 0.5f;
        if (rateChoice == 10)
            f = 0.459375f;
        for (int i = 0; i < n; i++) {
            outL[i] = inL[i];
            outR[i] = inR[i];
        }
        if (tremoloSpeed > 0 && tremoloDepth > 0 && n >= 1) {
            float inc = (tremoloSpeed * 10.0f) * f;
            unsigned idx = tremoloIndex;
            for (int i = 0; i < n; i++) {
                float g = (1.0f - tremoloDepth) + modelTables().tremolo[idx];
                if (g > 1.0f)
                    g = 1.0f;
                float L = outL[i], R = outR[i];
                outL[i] = (L * g) * mix + (1.0f - mix) * L;
                outR[i] = (g * R) * mix + (1.0f - mix) * R;
                float p = tremoloPhase + inc;
                if (p >= 18002.0f)
                    p = p - 18002.0f;
                tremoloPhase = p;
                idx = (unsigned)p;
            }
            tremoloIndex = idx;
        }
        if (pannerDepth > 0 && pannerSpeed > 0 && n >= 1) {
            float inc = f * (pannerSpeed * 10.0f);
            unsigned idx = pannerIndex;
            for (int i = 0; i < n; i++) {
                float pan = pannerDepth * modelTables().panner[idx];
                float gL = 1.0f, gR = 1.0f;
                if (pan > 0)
                    gL = 1.0f - pan;
                if (pan < 0)
                    gR = 1.0f + pan;
                float L = outL[i];
                outL[i] = (gL * L) * mix + (1.0f - mix) * L;
                float R = outR[i];
                outR[i] = (gR * R) * mix + (1.0f - mix) * R;
                float p = pannerPhase + inc;
                if (p >= 36004.0f)
                    p = p - 36004.0f;
                pannerPhase = p;
                idx = (unsigned)p;
            }
            pannerIndex = idx;
        }
    }
};

const float kFactory[10][5] = {
    {0.634999f, 0.174999f, 0.0f, 0.0f, 1.0f},       {1.0f, 0.174999f, 0.479999f, 0.275f, 1.0f},
    {0.77999f, 0.5f, 1.0f, 0.495f, 0.545f},         {1.0f, 0.14f, 0.0f, 0.0f, 1.0f},
    {1.0f, 0.054999f, 1.0f, 0.75f, 0.68f},          {1.0f, 0.189999f, 0.455f, 0.475999f, 0.62999f},
    {1.0f, 0.189999f, 1.0f, 0.474999f, 0.62999f},   {0.69499f, 0.135f, 0.20999f, 0.474999f, 1.0f},
    {0.54f, 0.15999f, 1.0f, 0.35499f, 0.535f},      {0.834999f, 0.63499f, 1.0f, 0.63999f, 0.5f},
};

Model modelOfProgram(int program, int rateChoice)
{
    const float* v = kFactory[program];
    Model model{v[0], v[1], v[2], v[3], v[4]};
    model.rateChoice = rateChoice;
    return model;
}

StereoBuffer modelProcess(Model& model, StereoBuffer& input, const std::vector<int>& blocks)
{
    const size_t frames = input.left.size();
    StereoBuffer output(frames);
    size_t done = 0;
    for (size_t b = 0; done < frames; ++b) {
        const int size = (int)std::min<size_t>(blocks[b % blocks.size()], frames - done);
        model.process(input.left.data() + done, input.right.data() + done,
                      output.left.data() + done, output.right.data() + done, size);
        done += size;
    }
    return output;
}

// Bitwise equality, so that -0.0 and 0.0 differ and NaNs compare.
bool sameBits(const std::vector<float>& a, const std::vector<float>& b, size_t* firstDifference)
{
    if (a.size() != b.size())
        return false;
    for (size_t i = 0; i < a.size(); ++i) {
        if (std::memcmp(&a[i], &b[i], sizeof(float)) != 0) {
            *firstDifference = i;
            return false;
        }
    }
    return true;
}

#define EXPECT_SAME_AUDIO(actual, expected)                                                   \
    do {                                                                                      \
        size_t at = 0;                                                                        \
        EXPECT_TRUE(sameBits((actual).left, (expected).left, &at)) << "left differs at " << at;   \
        EXPECT_TRUE(sameBits((actual).right, (expected).right, &at)) << "right differs at " << at; \
    } while (0)

StereoBuffer ones(size_t frames)
{
    StereoBuffer buffer(frames);
    std::fill(buffer.left.begin(), buffer.left.end(), 1.0f);
    std::fill(buffer.right.begin(), buffer.right.end(), 1.0f);
    return buffer;
}

} // namespace

TEST(Engine, FirstFramesOfTheFirstProgramFollowTheTremoloTable)
{
    auto plugin = createEffect();
    StereoBuffer input = ones(6);
    StereoBuffer output = test_host::process(*plugin, input, {6});
    // Increment 1.74999 (0.174999 * 10 in float): the first six frames read entries 0, 1, 3,
    // 5, 6, 8. Gain = (1 - 0.634999) + entry.
    const int entries[6] = {0, 1, 3, 5, 6, 8};
    for (int i = 0; i < 6; ++i) {
        const float entry = modelTables().tremolo[entries[i]];
        const float expected = (1.0f * ((1.0f - 0.634999f) + entry)) * 1.0f + (1.0f - 1.0f) * 1.0f;
        EXPECT_EQ(output.left[i], expected) << i;
        EXPECT_EQ(output.right[i], expected) << i;
    }
    EXPECT_NEAR(output.left[0], 0.365001f, 1e-6f);
    EXPECT_NEAR(output.left[1], 0.365001f + 0.000174533f, 1e-6f); // sin(0.01 deg)
}

TEST(Engine, FullDepthSilencesTheFirstFrameAndMixZeroPassesTheInputUnchanged)
{
    auto plugin = createEffect();
    plugin->setParameter(0, 1.0f);
    StereoBuffer input = test_host::testSignal(64);
    input.left[0] = 0.8f;
    input.right[0] = -0.6f;
    StereoBuffer output = test_host::process(*plugin, input, {64});
    EXPECT_EQ(output.left[0], 0.0f);
    EXPECT_EQ(output.right[0], 0.0f);

    for (int program = 0; program < 10; ++program) {
        plugin->dispatch(effSetProgram, 0, program);
        plugin->setParameter(4, 0.0f);
        StereoBuffer dry = test_host::process(*plugin, input, {17, 64});
        EXPECT_EQ(dry.left, input.left) << program;
        EXPECT_EQ(dry.right, input.right) << program;
    }
}

TEST(Engine, SpeedOfOneTenthStepsOneTableEntryPerFrameAndWrapsAfter18002)
{
    auto plugin = createEffect();
    plugin->setParameter(1, 0.1f); // increment exactly 1.0
    plugin->setParameter(0, 1.0f);
    StereoBuffer input = ones(18002 + 3);
    StereoBuffer output = test_host::process(*plugin, input, {4096});
    // With depth 1 and mix 1 the gain is the table entry itself.
    EXPECT_EQ(output.left[0], 0.0f);
    EXPECT_EQ(output.left[9000], 1.0f);
    EXPECT_EQ(output.left[18001], modelTables().tremolo[18001]);
    EXPECT_NEAR(output.left[18001], 0.000168312f, 1e-9f);
    EXPECT_EQ(output.left[18002], 0.0f); // back at entry 0
    EXPECT_EQ(output.left[18003], modelTables().tremolo[1]);
}

TEST(Engine, PannerLowersOneSideAtATime)
{
    auto plugin = createEffect();
    plugin->setParameter(0, 0.0f); // tremolo off
    plugin->setParameter(2, 1.0f);
    plugin->setParameter(3, 0.1f); // one table entry per frame
    StereoBuffer input = ones(36004 + 2);
    StereoBuffer output = test_host::process(*plugin, input, {512});
    // First half of the swing: positive pan lowers the left channel only.
    EXPECT_EQ(output.right[9000], 1.0f);
    EXPECT_LT(output.left[9000], 1e-6f);
    // Second half: the right channel goes down, to silence at entry 27004 (-1.0).
    EXPECT_EQ(output.left[27004], 1.0f);
    EXPECT_EQ(output.right[27004], 0.0f);
    EXPECT_EQ(modelTables().panner[27004], -1.0f);
    EXPECT_EQ(output.left[36004], 1.0f);
    EXPECT_EQ(output.right[36004], 1.0f); // wrapped to entry 0, pan 0
}

TEST(Engine, EveryProgramAtEveryRateChoiceMatchesThePlainModel)
{
    StereoBuffer input = test_host::testSignal(30000, 7);
    for (int program = 0; program < 10; ++program) {
        for (int rate : {7, 8, 9, 10, 0, 11}) {
            auto plugin = createEffect();
            plugin->dispatch(effSetProgram, 0, program);
            plugin->setParameter(5, (float)rate);
            Model model = modelOfProgram(program, rate);
            StereoBuffer actual = test_host::process(*plugin, input, {512});
            StereoBuffer expected = modelProcess(model, input, {512});
            SCOPED_TRACE("program " + std::to_string(program) + " rate " + std::to_string(rate));
            EXPECT_SAME_AUDIO(actual, expected);
        }
    }
}

TEST(Engine, OneLongBlockEqualsManyShortBlocksOfRandomSizes)
{
    StereoBuffer input = test_host::testSignal(40000, 3);
    std::mt19937 random(42);
    std::vector<int> sizes;
    for (int i = 0; i < 500; ++i)
        sizes.push_back(std::uniform_int_distribution<int>(1, 300)(random));
    for (int program : {1, 2, 9}) {
        auto whole = createEffect();
        auto pieces = createEffect();
        whole->dispatch(effSetProgram, 0, program);
        pieces->dispatch(effSetProgram, 0, program);
        StereoBuffer a = test_host::process(*whole, input, {40000});
        StereoBuffer b = test_host::process(*pieces, input, sizes);
        SCOPED_TRACE("program " + std::to_string(program));
        EXPECT_SAME_AUDIO(b, a);
    }
}

TEST(Engine, InPlaceProcessingEqualsSeparateBuffersForEveryBlockSize)
{
    for (int block : {1, 2, 3, 31, 32, 512, 4096, 8192}) {
        StereoBuffer input = test_host::testSignal(9000, block);
        auto separate = createEffect();
        auto inPlace = createEffect();
        separate->dispatch(effSetProgram, 0, 6);
        inPlace->dispatch(effSetProgram, 0, 6);
        StereoBuffer expected = test_host::process(*separate, input, {block});
        StereoBuffer buffer = input;
        for (size_t done = 0; done < buffer.left.size(); done += block) {
            const int size = (int)std::min<size_t>(block, buffer.left.size() - done);
            float* channels[2] = {buffer.left.data() + done, buffer.right.data() + done};
            inPlace->processReplacing(channels, channels, size);
        }
        SCOPED_TRACE("block " + std::to_string(block));
        EXPECT_SAME_AUDIO(buffer, expected);
    }
}

TEST(Engine, ChangesBetweenBlocksTakeEffectFromTheNextBlockAndNeverResetTheOscillators)
{
    StereoBuffer input = test_host::testSignal(20000, 11);
    auto plugin = createEffect();
    Model model = modelOfProgram(0, 7);
    // The host's view of the programs: every edit lands in the current one.
    float records[10][5];
    std::memcpy(records, kFactory, sizeof records);
    int current = 0;
    auto set = [&](int index, float value) {
        plugin->setParameter(index, value);
        float* fields[5] = {&model.tremoloDepth, &model.tremoloSpeed, &model.pannerDepth,
                            &model.pannerSpeed, &model.mix};
        *fields[index] = value;
        records[current][index] = value;
    };
    std::mt19937 random(5);
    StereoBuffer actual(20000), expected(20000);
    size_t done = 0;
    for (int step = 0; done < 20000; ++step) {
        const int size = (int)std::min<size_t>(std::uniform_int_distribution<int>(1, 700)(random),
                                                20000 - done);
        switch (step % 6) {
        case 1: // program change: parameters 0..4 from the record, oscillators keep going
            current = step % 10;
            plugin->dispatch(effSetProgram, 0, current);
            model.tremoloDepth = records[current][0];
            model.tremoloSpeed = records[current][1];
            model.pannerDepth = records[current][2];
            model.pannerSpeed = records[current][3];
            model.mix = records[current][4];
            break;
        case 2:
            set(4, 0.3f);
            break;
        case 3: {
            const int rate = 7 + step % 4;
            plugin->setParameter(5, (float)rate);
            model.rateChoice = rate;
            break;
        }
        case 4: // a stage switched off freezes its oscillator
            set(0, 0.0f);
            break;
        case 5:
            set(3, 0.9f);
            set(2, 0.8f);
            break;
        }
        plugin->dispatch(effMainsChanged, 0, step % 2); // suspend/resume resets nothing
        float* in[2] = {input.left.data() + done, input.right.data() + done};
        float* out[2] = {actual.left.data() + done, actual.right.data() + done};
        plugin->processReplacing(in, out, size);
        model.process(in[0], in[1], expected.left.data() + done, expected.right.data() + done, size);
        done += size;
    }
    EXPECT_SAME_AUDIO(actual, expected);
}

TEST(Engine, ZeroOrNegativeFrameCountsTouchNothingAndLeaveTheOscillatorsWhereTheyWere)
{
    auto plugin = createEffect();
    auto reference = createEffect();
    StereoBuffer input = test_host::testSignal(100);
    StereoBuffer output(100);
    std::fill(output.left.begin(), output.left.end(), 9.0f);
    for (VstInt32 frames : {0, -1, -4096, INT32_MIN}) {
        plugin->processReplacing(input.channels(), output.channels(), frames);
        for (float sample : output.left)
            ASSERT_EQ(sample, 9.0f);
    }
    StereoBuffer a = test_host::process(*plugin, input, {100});
    StereoBuffer b = test_host::process(*reference, input, {100});
    EXPECT_SAME_AUDIO(a, b);
}

TEST(Engine, ABlockOfOneFrameAdvancesEachOscillatorByOneIncrement)
{
    auto single = createEffect();
    single->dispatch(effSetProgram, 0, 9);
    StereoBuffer input = test_host::testSignal(300, 9);
    Model model = modelOfProgram(9, 7);
    StereoBuffer actual = test_host::process(*single, input, {1});
    StereoBuffer expected = modelProcess(model, input, {1});
    EXPECT_SAME_AUDIO(actual, expected);
}

TEST(Engine, HostileParametersNeverTurnFiniteAudioIntoNaNOrInfinity)
{
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const float inf = std::numeric_limits<float>::infinity();
    const float hostile[] = {nan, inf, -inf, 1e30f, -1e30f, 3e38f, 1e-42f, -0.0f, 5000.0f, 2.0f};
    std::mt19937 random(17);
    std::uniform_int_distribution<int> pick(0, std::size(hostile) - 1);
    auto plugin = createEffect();
    StereoBuffer input = test_host::testSignal(2048, 2);
    for (int round = 0; round < 400; ++round) {
        for (int index = 0; index < 6; ++index)
            if (random() % 2)
                plugin->setParameter(index, hostile[pick(random)]);
        const int frames = std::uniform_int_distribution<int>(1, 2048)(random);
        StereoBuffer output(2048);
        plugin->processReplacing(input.channels(), output.channels(), frames);
        for (int i = 0; i < frames; ++i) {
            ASSERT_TRUE(std::isfinite(output.left[i]) && std::isfinite(output.right[i]))
                << "round " << round << " frame " << i;
        }
    }
}

TEST(Engine, OutOfRangeButFiniteSettingsKeepTheirArithmetic)
{
    // A depth above 1 and a negative mix are used as given; only values that could overflow
    // finite audio are bounded.
    auto plugin = createEffect();
    plugin->setParameter(0, 1.5f);
    plugin->setParameter(4, -0.5f);
    plugin->setParameter(1, 3.0f);
    Model model = modelOfProgram(0, 7);
    model.tremoloDepth = 1.5f;
    model.mix = -0.5f;
    model.tremoloSpeed = 3.0f;
    StereoBuffer input = test_host::testSignal(5000, 4);
    StereoBuffer actual = test_host::process(*plugin, input, {256});
    StereoBuffer expected = modelProcess(model, input, {256});
    EXPECT_SAME_AUDIO(actual, expected);
}
