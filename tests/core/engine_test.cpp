// The sound, sample for sample, as a host hears it: against a plain model of the effect written
// here from its definition, and at frames a reader can check by hand.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>
#include <tuple>

#include "tests/harness/TestHost.h"

using test_host::StereoBuffer;
using test_host::createEffect;
using test_host::sameAudio;

namespace {

// One sine for both stages, the tremolo reading its first 18002 entries: a float angle
// accumulated in 0.01 degree steps (each step summed in double and rounded), its sine taken in
// double with the degree factor 3.14159265358 / 180.
const std::vector<float>& sineTable()
{
    static const std::vector<float> table = [] {
        std::vector<float> entries;
        for (float angle = 0.0f; entries.size() < 36004; angle = float(angle + 0.01))
            entries.push_back(float(std::sin(angle * 0.017453292519888888)));
        return entries;
    }();
    return table;
}

// Frame by frame, the tremolo stage then the panner stage, each mixed with its input and
// stepping its oscillator only while its speed and depth are above 0. Nothing else moves or resets
// the oscillators.
struct Model {
    float phase[2] = {};
    uint32_t index[2] = {};

    float next(int stage, float increment, float length) // the entry, then one step on
    {
        const float entry = sineTable()[index[stage]];
        phase[stage] += increment;
        if (phase[stage] >= length)
            phase[stage] -= length;
        index[stage] = static_cast<uint32_t>(phase[stage]);
        return entry;
    }
    // Frames [begin, end) in place, with the parameters as the plug-in reads them back.
    void process(const VstPlugin& plugin, StereoBuffer& audio, size_t begin, size_t end)
    {
        float p[6];
        for (int i = 0; i < 6; ++i)
            p[i] = plugin.getParameter(i);
        const auto [depth, speed, panDepth, panSpeed, mix, rate] = p;
        const float f = rate == 8 ? 0.91875f : rate == 9 ? 0.5f : rate == 10 ? 0.459375f : 1.0f;
        for (size_t i = begin; i < end; ++i) {
            float& L = audio.left[i];
            float& R = audio.right[i];
            if (depth > 0 && speed > 0) {
                const float g = std::min(1.0f - depth + next(0, speed * 10.0f * f, 18002), 1.0f);
                L = (L * g) * mix + (1.0f - mix) * L;
                R = (g * R) * mix + (1.0f - mix) * R;
            }
            if (panDepth > 0 && panSpeed > 0) {
                const float pan = panDepth * next(1, panSpeed * 10.0f * f, 36004);
                L = ((pan > 0 ? 1.0f - pan : 1.0f) * L) * mix + (1.0f - mix) * L;
                R = ((pan < 0 ? 1.0f + pan : 1.0f) * R) * mix + (1.0f - mix) * R;
            }
        }
    }
};

} // namespace

TEST(Engine, FramesCheckedByHand)
{
    const StereoBuffer ones(36006, 1.0f);
    // Speed 0.1 steps one entry a frame; with depth 1 and mix 1 the gain is the entry itself.
    // The accumulated angle runs ahead of k / 100 degrees: 90 one entry early, 360 eight early.
    auto plugin = createEffect();
    plugin->setParameter(0, 1.0f);
    plugin->setParameter(1, 0.1f);
    StereoBuffer out = test_host::process(*plugin, ones, 4096);
    EXPECT_EQ(out.left[0], 0.0f);
    EXPECT_LT(out.left[8998], 1.0f);
    EXPECT_EQ(out.right[8999], 1.0f);
    EXPECT_NEAR(out.left[18001], 0.000168312f, 1e-9f);
    EXPECT_EQ(out.left[18002], 0.0f); // back at the first entry
    // A positive entry lowers the left channel only, a negative one the right.
    plugin->setParameter(0, 0.0f);
    plugin->setParameter(2, 1.0f);
    plugin->setParameter(3, 0.1f);
    out = test_host::process(*plugin, ones, 512);
    EXPECT_EQ(std::tie(out.left[9000], out.right[9000]), std::make_tuple(0.0f, 1.0f));
    EXPECT_EQ(std::tie(out.left[27004], out.right[27004]), std::make_tuple(1.0f, 0.0f));
    EXPECT_LT(out.right[35995], 1.0f);
    EXPECT_LT(out.left[35996], 1.0f);
    EXPECT_NEAR(out.left[36003], 1.0f - 0.00122346f, 1e-7f);
}

// One instance a rate choice plays every program in turn as a switch leaves it, then Rotary edited
// past 0..1 with values that cannot overflow finite audio, which are used as given. Each program
// gets one long block, then blocks of mixed sizes (single frames among them), in place every
// other block, with a knob moved or a suspend and resume between them.
TEST(Engine, EveryProgramAtEveryRateChoiceMatchesTheModelThroughAHostsChanges)
{
    StereoBuffer input = test_host::testSignal(24000, 7);
    const int blocks[] = {10000, 1, 3, 1, 64, 700, 2, 1, 31, 4096, 5, 8192};
    std::mt19937 random(11);
    std::uniform_real_distribution<float> knob(-0.25f, 1.5f);
    for (float rate : {7.0f, 8.0f, 9.0f, 10.0f, 0.0f, 11.0f}) {
        auto plugin = createEffect();
        plugin->setParameter(5, rate);
        Model model;
        for (int program = 0; program <= 10; ++program) {
            plugin->dispatch(effSetProgram, 0, std::min(program, 9));
            if (program == 10)
                for (auto [index, value] : {std::pair{0, 1.5f}, {1, 3.0f}, {4, -0.5f}})
                    plugin->setParameter(index, value);
            StereoBuffer output = input, expected = input;
            for (size_t done = 0, block = 0; done < input.left.size(); ++block) {
                const size_t end = std::min(done + blocks[block % 12], input.left.size());
                model.process(*plugin, expected, done, end);
                float* in[2] = {input.left.data() + done, input.right.data() + done};
                float* out[2] = {output.left.data() + done, output.right.data() + done};
                plugin->processReplacing(block % 2 ? out : in, out, VstInt32(end - done));
                if (block % 3 == 0)
                    plugin->setParameter(VstInt32(random() % 5), knob(random));
                else if (block % 3 == 1)
                    for (VstIntPtr on : {0, 1})
                        plugin->dispatch(effMainsChanged, 0, on);
                done = end;
            }
            EXPECT_TRUE(sameAudio(output, expected)) << "program " << program << " rate " << rate;
        }
    }
}

// Empty blocks and missing buffers must touch nothing and leave the oscillators where they
// were: the instance that gets them sounds like its twin that does not.
TEST(Engine, HostileParametersAndEmptyBlocksNeverHarmFiniteAudio)
{
    const float inf = std::numeric_limits<float>::infinity();
    const float hostile[] = {std::numeric_limits<float>::quiet_NaN(), inf, -inf, 1e30f, -1e30f,
                             3e38f, 1e-42f, -0.0f, 5000.0f, 2.0f};
    std::mt19937 random(17);
    auto plugin = createEffect();
    auto twin = createEffect();
    StereoBuffer input = test_host::testSignal(2048, 2), output(2048), twinOutput(2048), spare(64);
    float* none[2] = {nullptr, nullptr};
    for (int round = 0; round < 400; ++round) {
        const VstInt32 index = static_cast<VstInt32>(random() % 6);
        const float value = hostile[random() % std::size(hostile)];
        plugin->setParameter(index, value);
        twin->setParameter(index, value);
        const VstInt32 empty[] = {0, -1, INT32_MIN};
        plugin->processReplacing(input.channels(), spare.channels(), empty[round % 3]);
        plugin->processReplacing(round % 2 ? nullptr : none, spare.channels(), 64);
        plugin->processReplacing(input.channels(), round % 2 ? nullptr : none, 64);
        const VstInt32 frames = static_cast<VstInt32>(random() % 2048 + 1);
        plugin->processReplacing(input.channels(), output.channels(), frames);
        twin->processReplacing(input.channels(), twinOutput.channels(), frames);
        for (VstInt32 i = 0; i < frames; ++i)
            ASSERT_TRUE(std::isfinite(output.left[i]) && std::isfinite(output.right[i]))
                << "round " << round << " frame " << i;
        ASSERT_TRUE(sameAudio(output, twinOutput)) << "round " << round;
    }
    EXPECT_TRUE(sameAudio(spare, StereoBuffer(64)));
}
