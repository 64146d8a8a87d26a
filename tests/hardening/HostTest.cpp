// What hosts do with a plug-in's state and threads: call it from audio, automation and UI threads
// at once and create instances on whatever thread loads a session (under ThreadSanitizer any data
// race fails); run instances side by side, save a project as parameter values (the module offers
// no chunks) and restore it; and the calls in which the dispatcher fuzzer found faults, replayed.
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <functional>
#include <iterator>
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

    // Blocks first .. first + blocks - 1 of a fixed stereo signal, each block's output left
    // channel first.
    static std::vector<float> render(const VstPlugin& plugin, int blocks, int first = 0)
    {
        constexpr int kBlock = 256;
        std::vector<float> result, in(2 * kBlock), out(2 * kBlock);
        float* inputs[2] = {in.data(), in.data() + kBlock};
        float* outputs[2] = {out.data(), out.data() + kBlock};
        for (int block = first; block < first + blocks; ++block) {
            for (int i = 0; i < kBlock; ++i) {
                const auto t = static_cast<float>(block * kBlock + i);
                inputs[0][i] = std::sin(0.031f * t);
                inputs[1][i] = std::sin(0.017f * t + 1.0f);
            }
            plugin.processReplacing(inputs, outputs, kBlock);
            result.insert(result.end(), out.begin(), out.end());
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

// Two tracks on one program, run block by block as a host runs them; one is edited and renamed,
// then switched away and back. Each keeps its own settings and name, and the edited one, saved as
// hosts save a project without chunks (the program number, then every parameter), restores into a
// new instance that sounds the same.
TEST_F(HostState, tracksKeepTheirOwnEditsAndNamesAndRestoreFromParameters)
{
    const std::unique_ptr<VstPlugin> tracks[] = {instance(1), instance(1)}; // "Waves"
    tracks[0]->setParameter(0, 0.3f);
    tracks[0]->setParameter(5, 10.0f);
    char name[] = "My Waves";
    tracks[0]->dispatch(effSetProgramName, 0, 0, name);
    tracks[0]->dispatch(effSetProgram, 0, 3);
    tracks[0]->dispatch(effSetProgram, 0, 1);
    std::vector<float> sound[2];
    for (int block = 0; block < 20; ++block)
        for (int t = 0; t < 2; ++t)
            std::ranges::copy(render(*tracks[t], 1, block), std::back_inserter(sound[t]));
    ASSERT_EQ(tracks[0]->effect()->flags & effFlagsProgramChunks, 0);
    const auto restored = instance(static_cast<int>(tracks[0]->dispatch(effGetProgram)));
    for (int index = 0; index < tracks[0]->effect()->numParams; ++index)
        restored->setParameter(index, tracks[0]->getParameter(index));
    EXPECT_EQ(sound[0], render(*restored, 20));
    EXPECT_EQ(sound[1], render(*instance(1), 20));
    EXPECT_NE(sound[0], sound[1]);
    EXPECT_EQ(tracks[0]->programName(), "My Waves");
    EXPECT_EQ(tracks[1]->programName(), "Waves");
}

// Found with seed 1: the rate choice of a NaN (or of a value no int holds) is INT32_MIN, and the
// panel subtracted the first choice from it to find a button, an int overflow that the sanitizer
// build shows.
TEST_F(FuzzRegression, thePanelOpensAndFollowsARateChoiceNoButtonShows)
{
    const auto plugin = instance(0);
    for (const float value : {std::numeric_limits<float>::quiet_NaN(), 1e30f, -1e30f}) {
        plugin->setParameter(5, value);
        EXPECT_EQ(plugin->dispatch(effEditOpen), 1); // builds the panel from the effect
        plugin->setParameter(5, value);              // and updates it while it is open
        plugin->dispatch(effEditIdle);
        plugin->dispatch(effEditClose);
    }
}

} // namespace
