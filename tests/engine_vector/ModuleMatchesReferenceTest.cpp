// The built module, driven only through VSTPluginMain and the AEffect record as a host drives it,
// against the plain loop fed with the parameters the module reports.
#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <vector>

#include "CountedAllocation.h"
#include "EngineTwin.h"
#include "effect/ReferenceEngine.h"
#include "tools/vsthost/VstPlugin.h"

namespace {

const VstModule& module()
{
    static const VstModule loaded(HVT_MODULE_PATH);
    return loaded;
}

EngineSettings reportedSettings(const VstPlugin& plugin)
{
    EngineSettings settings;
    settings.tremoloDepth = plugin.getParameter(0);
    settings.tremoloSpeed = plugin.getParameter(1);
    settings.pannerDepth = plugin.getParameter(2);
    settings.pannerSpeed = plugin.getParameter(3);
    settings.mix = plugin.getParameter(4);
    settings.rateChoice = static_cast<int32_t>(plugin.getParameter(5));
    return settings;
}

// Host and model process the same block; the host's buffers are in place when asked.
::testing::AssertionResult sameBlockThroughTheHost(const VstPlugin& plugin, OscillatorState& model,
                                                   const TestAudio& audio, int32_t frames,
                                                   bool inPlace)
{
    std::vector<float> left(audio.left.begin(), audio.left.begin() + frames);
    std::vector<float> right(audio.right.begin(), audio.right.begin() + frames);
    std::vector<float> outL(frames), outR(frames), expectedL(frames), expectedR(frames);
    float* inputs[2] = {left.data(), right.data()};
    float* outputs[2] = {outL.data(), outR.data()};
    const EngineSettings settings = reportedSettings(plugin);
    processReference(model, audio.left.data(), audio.right.data(), expectedL.data(),
                     expectedR.data(), frames, settings);
    counted_allocation::start();
    plugin.processReplacing(inputs, inPlace ? inputs : outputs, frames);
    if (const long allocations = counted_allocation::stop())
        return ::testing::AssertionFailure() << "processReplacing allocated " << allocations
                                             << " times";
    float* const* result = inPlace ? inputs : outputs;
    if (auto l = sameSamples(result[0], expectedL.data(), frames, "left"); !l)
        return l;
    return sameSamples(result[1], expectedR.data(), frames, "right");
}

} // namespace

TEST(ModuleMatchesReference, EveryProgramAndRateChoiceWithParameterChangesBetweenBlocks)
{
    ASSERT_TRUE(module().entry()) << module().error();
    const auto plugin = VstPlugin::create(module());
    ASSERT_TRUE(plugin);
    const TestAudio audio(4096, 3);
    OscillatorState model; // a fresh effect's oscillators
    std::mt19937 random(11);
    std::uniform_real_distribution<float> unit(0.0f, 1.0f);
    for (int32_t program = 0; program < 10; ++program) {
        plugin->dispatch(effSetProgram, 0, program);
        for (const float rate : {7.0f, 8.0f, 9.0f, 10.0f, 0.0f, 11.0f}) {
            plugin->setParameter(5, rate);
            int32_t block = 0;
            for (const int32_t frames : {1, 31, 32, 512, 4096, 777, 3}) {
                ASSERT_TRUE(sameBlockThroughTheHost(*plugin, model, audio, frames, block % 2))
                    << "program " << program << ", rate choice " << rate << ", block " << block;
                // A knob moved between blocks; the next program change undoes it.
                plugin->setParameter(static_cast<int32_t>(random() % 5), unit(random));
                ++block;
            }
        }
    }
}
