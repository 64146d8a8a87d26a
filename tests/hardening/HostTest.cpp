// What hosts do with a plug-in's state and threads: switch programs and edit them, run instances
// side by side, save a project as parameter values (the module offers no chunks) and restore it;
// call from audio, automation and UI threads at once, and create instances on whatever thread
// loads a session (under ThreadSanitizer any data race fails); and the calls in which the
// dispatcher fuzzer found faults, replayed.
#include <gtest/gtest.h>

#include <atomic>
#include <cmath>
#include <functional>
#include <limits>
#include <memory>
#include <thread>
#include <vector>

#include "tools/vsthost/VstPlugin.h"

namespace {

// A load of the module per test, so that the first instances also build the shared tables.
class Host : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(module.entry()) << module.error(); }

    std::unique_ptr<VstPlugin> instance(int program) const
    {
        auto plugin = VstPlugin::create(module);
        if (plugin)
            plugin->dispatch(effSetProgram, 0, program);
        return plugin;
    }

    // Blocks first .. first + blocks - 1 of a fixed stereo signal, outputs one after another.
    static std::vector<float> render(const VstPlugin& plugin, int blocks, int first = 0)
    {
        constexpr int kBlock = 256;
        std::vector<float> result, left(kBlock), right(kBlock), outL(kBlock), outR(kBlock);
        for (int i = first * kBlock; i < (first + blocks) * kBlock; ++i) {
            left[i % kBlock] = std::sin(0.031f * static_cast<float>(i));
            right[i % kBlock] = std::sin(0.017f * static_cast<float>(i) + 1.0f);
            if (i % kBlock == kBlock - 1) {
                float* inputs[2] = {left.data(), right.data()};
                float* outputs[2] = {outL.data(), outR.data()};
                plugin.processReplacing(inputs, outputs, kBlock);
                result.insert(result.end(), outL.begin(), outL.end());
                result.insert(result.end(), outR.begin(), outR.end());
            }
        }
        return result;
    }

    VstModule module{HVT_MODULE_PATH};
};
using ConcurrentHost = Host;
using HostState = Host;
using FuzzRegression = Host;

// Runs the functions on threads of their own, starting together so that their calls overlap.
void together(const std::vector<std::function<void()>>& work)
{
    std::atomic<size_t> arrived{0};
    std::vector<std::thread> threads;
    for (const auto& function : work)
        threads.emplace_back([&, function] {
            for (++arrived; arrived < work.size();)
                std::this_thread::yield();
            function();
        });
    for (auto& thread : threads)
        thread.join();
}

TEST_F(ConcurrentHost, instancesCreatedOnSeveralThreadsAtOnceSoundTheSame)
{
    std::unique_ptr<VstPlugin> plugins[4];
    std::vector<float> sound[4];
    std::vector<std::function<void()>> work;
    for (int t = 0; t < 4; ++t)
        work.push_back([&, t] { sound[t] = render(*(plugins[t] = instance(0)), 1); });
    together(work);
    for (int t = 1; t < 4; ++t)
        EXPECT_EQ(sound[t], sound[0]) << "instance " << t;
}

TEST_F(ConcurrentHost, audioAutomationAndUiThreadsRunTogether)
{
    const auto plugin = instance(0);
    bool allFinite = true;
    together({[&] {
                  for (int round = 0; round < 2000; ++round)
                      for (const float sample : render(*plugin, 1, round))
                          allFinite = allFinite && std::isfinite(sample);
              },
              [&] {
                  for (int round = 0; round < 2000; ++round)
                      for (int index = 0; index < 6; ++index)
                          plugin->setParameter(index, index == 5 ? 7.0f + round % 4
                                                                 : (round % 101) / 100.0f);
              },
              [&] {
                  for (int round = 0; round < 2000; ++round) {
                      if (round % 200 == 0)
                          plugin->dispatch(effEditOpen); // shown nowhere: no window needed
                      plugin->dispatch(effEditIdle);
                      plugin->dispatch(effSetProgram, 0, round % 10);
                      for (int index = 0; index < 6; ++index)
                          plugin->parameterDisplay(index);
                      plugin->programName();
                      if (round % 200 == 199)
                          plugin->dispatch(effEditClose);
                  }
              }});
    EXPECT_TRUE(allFinite);
}

TEST_F(HostState, anEditStaysWithItsProgramAcrossSwitches)
{
    const auto plugin = instance(1); // "Waves"
    plugin->setParameter(0, 0.3f);
    plugin->setParameter(5, 9.0f);
    char name[] = "My Waves";
    plugin->dispatch(effSetProgramName, 0, 0, name);
    plugin->dispatch(effSetProgram, 0, 3);
    EXPECT_EQ(plugin->programName(), "SlowHand");
    EXPECT_EQ(plugin->getParameter(0), 1.0f);
    EXPECT_EQ(plugin->getParameter(5), 9.0f); // the rate choice is not part of a program
    plugin->dispatch(effSetProgram, 0, 1);
    EXPECT_EQ(plugin->programNameIndexed(1), "My Waves");
    EXPECT_EQ(plugin->getParameter(0), 0.3f);
    EXPECT_EQ(plugin->getParameter(2), 0.479999f); // the rest of "Waves" as it was
}

TEST_F(HostState, twoInstancesKeepTheirOwnSettingsAndSound)
{
    // Two tracks, and each one's settings again in an instance of its own.
    const std::unique_ptr<VstPlugin> plugins[] = {instance(4), instance(6), instance(4),
                                                  instance(6)};
    plugins[1]->setParameter(4, 0.4f);
    plugins[3]->setParameter(4, 0.4f);
    char name[] = "Second";
    plugins[1]->dispatch(effSetProgramName, 0, 0, name);
    std::vector<float> tracks[2]; // block by block, as a host runs two tracks
    for (int b = 0; b < 20; ++b)
        for (int t = 0; t < 2; ++t) {
            const auto block = render(*plugins[t], 1, b);
            tracks[t].insert(tracks[t].end(), block.begin(), block.end());
        }
    EXPECT_EQ(tracks[0], render(*plugins[2], 20));
    EXPECT_EQ(tracks[1], render(*plugins[3], 20));
    EXPECT_NE(tracks[0], tracks[1]);
    EXPECT_EQ(plugins[0]->programName(), "Undulate");
    EXPECT_EQ(plugins[1]->programName(), "Second");
    EXPECT_EQ(plugins[0]->getParameter(4), 0.68f);
}

TEST_F(HostState, aProjectSavedAsParametersRestoresIntoANewInstance)
{
    const auto edited = [&] {
        auto plugin = instance(2);
        plugin->setParameter(0, 0.55f);
        plugin->setParameter(3, 0.2f);
        plugin->setParameter(5, 10.0f);
        return plugin;
    };
    const auto original = edited();
    render(*original, 5); // a project is saved while it plays
    // Without the chunk flag hosts save the program number and every parameter, and restore them
    // in that order.
    ASSERT_EQ(original->effect()->flags & effFlagsProgramChunks, 0);
    const auto restored = instance(static_cast<int>(original->dispatch(effGetProgram)));
    for (int index = 0; index < original->effect()->numParams; ++index) {
        restored->setParameter(index, original->getParameter(index));
        EXPECT_EQ(restored->getParameter(index), original->getParameter(index)) << index;
    }
    EXPECT_EQ(render(*restored, 10), render(*edited(), 10));
}

// Found with seed 1: the rate choice of a NaN (or of a value no int holds) is INT32_MIN, and the
// panel subtracted the first choice from it to find a button, an int overflow that the sanitizer
// build shows.
TEST_F(FuzzRegression, thePanelOpensAndFollowsARateChoiceNoButtonShows)
{
    const auto plugin = instance(0);
    for (const float value : {std::numeric_limits<float>::quiet_NaN(), 1e30f, -1e30f}) {
        plugin->setParameter(5, value);
        EXPECT_EQ(plugin->getParameter(5), -2147483648.0f);
        EXPECT_EQ(plugin->dispatch(effEditOpen), 1); // builds the panel from the effect
        plugin->setParameter(5, value);              // and updates it while it is open
        plugin->dispatch(effEditIdle);
        plugin->dispatch(effEditClose);
    }
}

} // namespace
