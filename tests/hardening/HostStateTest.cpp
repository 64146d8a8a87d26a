// What hosts do with a plug-in's state: switch programs and edit them, run several instances side
// by side, and save a project without chunks (the module offers none) by reading every parameter,
// then restore it into a new instance by selecting the program and setting the parameters again.
#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <string>
#include <vector>

#include "tools/vsthost/VstPlugin.h"

namespace {

constexpr int kBlock = 300;

class HostState : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(module.entry()) << module.error(); }

    std::unique_ptr<VstPlugin> newInstance()
    {
        auto plugin = VstPlugin::create(module);
        EXPECT_TRUE(plugin);
        return plugin;
    }

    // Processes blocks of a fixed stereo signal and returns the output, block after block.
    static std::vector<float> render(const VstPlugin& plugin, int blocks, int firstBlock = 0)
    {
        std::vector<float> result;
        std::vector<float> left(kBlock), right(kBlock), outLeft(kBlock), outRight(kBlock);
        for (int b = firstBlock; b < firstBlock + blocks; ++b) {
            for (int i = 0; i < kBlock; ++i) {
                const float t = static_cast<float>(b * kBlock + i);
                left[i] = std::sin(0.031f * t);
                right[i] = std::sin(0.017f * t + 1.0f);
            }
            float* inputs[2] = {left.data(), right.data()};
            float* outputs[2] = {outLeft.data(), outRight.data()};
            plugin.processReplacing(inputs, outputs, kBlock);
            result.insert(result.end(), outLeft.begin(), outLeft.end());
            result.insert(result.end(), outRight.begin(), outRight.end());
        }
        return result;
    }

    VstModule module{HVT_MODULE_PATH};
};

TEST_F(HostState, anEditStaysWithItsProgramAcrossSwitches)
{
    auto plugin = newInstance();
    plugin->dispatch(effSetProgram, 0, 1); // "Waves"
    plugin->setParameter(0, 0.3f);
    plugin->setParameter(5, 9.0f);
    char name[] = "My Waves";
    plugin->dispatch(effSetProgramName, 0, 0, name);

    plugin->dispatch(effSetProgram, 0, 3); // "SlowHand", untouched
    EXPECT_EQ(plugin->programName(), "SlowHand");
    EXPECT_EQ(plugin->getParameter(0), 1.0f);
    EXPECT_EQ(plugin->getParameter(1), 0.14f);
    // The rate choice is not part of a program switch.
    EXPECT_EQ(plugin->getParameter(5), 9.0f);

    plugin->dispatch(effSetProgram, 0, 1);
    EXPECT_EQ(plugin->dispatch(effGetProgram), 1);
    EXPECT_EQ(plugin->programName(), "My Waves");
    EXPECT_EQ(plugin->programNameIndexed(1), "My Waves");
    EXPECT_EQ(plugin->getParameter(0), 0.3f);
    EXPECT_EQ(plugin->parameterDisplay(0), "0.300000");
    EXPECT_EQ(plugin->getParameter(2), 0.479999f); // the rest of "Waves" as it was
}

TEST_F(HostState, twoInstancesKeepTheirOwnSettingsAndSound)
{
    auto first = newInstance();
    auto second = newInstance();
    first->dispatch(effSetProgram, 0, 4);
    second->dispatch(effSetProgram, 0, 6);
    second->setParameter(4, 0.4f);
    char name[] = "Second";
    second->dispatch(effSetProgramName, 0, 0, name);

    // Alone, each with the same settings, for comparison.
    auto firstAlone = newInstance();
    auto secondAlone = newInstance();
    firstAlone->dispatch(effSetProgram, 0, 4);
    secondAlone->dispatch(effSetProgram, 0, 6);
    secondAlone->setParameter(4, 0.4f);

    // Interleaved block by block, as a host runs two tracks.
    std::vector<float> firstOut, secondOut;
    for (int b = 0; b < 20; ++b) {
        const auto a = render(*first, 1, b);
        const auto c = render(*second, 1, b);
        firstOut.insert(firstOut.end(), a.begin(), a.end());
        secondOut.insert(secondOut.end(), c.begin(), c.end());
    }
    EXPECT_EQ(firstOut, render(*firstAlone, 20));
    EXPECT_EQ(secondOut, render(*secondAlone, 20));
    EXPECT_NE(firstOut, secondOut);

    EXPECT_EQ(first->programName(), "Undulate");
    EXPECT_EQ(second->programName(), "Second");
    EXPECT_EQ(first->getParameter(4), 0.68f);
    EXPECT_EQ(second->getParameter(4), 0.4f);
}

TEST_F(HostState, aProjectSavedAsParametersRestoresIntoANewInstance)
{
    auto original = newInstance();
    original->dispatch(effSetProgram, 0, 2);
    original->setParameter(0, 0.55f);
    original->setParameter(3, 0.2f);
    original->setParameter(5, 10.0f);
    render(*original, 5); // a project is saved while it plays

    // Without the chunk flag hosts save the program number and every parameter.
    ASSERT_EQ(original->effect()->flags & effFlagsProgramChunks, 0);
    void* chunk = nullptr;
    EXPECT_EQ(original->dispatch(effGetChunk, 0, 0, &chunk), 0);
    const auto program = original->dispatch(effGetProgram);
    std::vector<float> saved;
    for (int index = 0; index < original->effect()->numParams; ++index)
        saved.push_back(original->getParameter(index));

    // Reopened: program first, then the parameters, as hosts restore.
    auto restored = newInstance();
    restored->dispatch(effSetProgram, 0, program);
    for (int index = 0; index < static_cast<int>(saved.size()); ++index)
        restored->setParameter(index, saved[index]);
    for (int index = 0; index < static_cast<int>(saved.size()); ++index)
        EXPECT_EQ(restored->getParameter(index), saved[index]) << "parameter " << index;

    // A fresh instance of the original settings sounds exactly like the restored one.
    auto reference = newInstance();
    reference->dispatch(effSetProgram, 0, 2);
    reference->setParameter(0, 0.55f);
    reference->setParameter(3, 0.2f);
    reference->setParameter(5, 10.0f);
    EXPECT_EQ(render(*restored, 10), render(*reference, 10));
}

} // namespace
