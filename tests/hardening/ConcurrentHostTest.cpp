// Hosts call the module from several threads at once: audio on one, automation on another, the
// dispatcher and the editor on the UI thread, and they create instances on whatever thread loads a
// session. These tests do the same; under ThreadSanitizer (HVT_TSAN) any data race fails them.
#include <gtest/gtest.h>

#include <atomic>
#include <cmath>
#include <thread>
#include <vector>

#include "tools/vsthost/VstPlugin.h"

namespace {

constexpr int kFrames = 256;

struct Block {
    Block()
    {
        for (int i = 0; i < kFrames; ++i) {
            inL[i] = std::sin(0.05f * static_cast<float>(i));
            inR[i] = -inL[i];
        }
    }
    void process(const VstPlugin& plugin)
    {
        float* inputs[2] = {inL.data(), inR.data()};
        float* outputs[2] = {outL.data(), outR.data()};
        plugin.processReplacing(inputs, outputs, kFrames);
    }
    bool finite() const
    {
        for (int i = 0; i < kFrames; ++i)
            if (!std::isfinite(outL[i]) || !std::isfinite(outR[i]))
                return false;
        return true;
    }
    std::vector<float> inL = std::vector<float>(kFrames), inR = std::vector<float>(kFrames);
    std::vector<float> outL = std::vector<float>(kFrames), outR = std::vector<float>(kFrames);
};

// Spins until every thread has arrived, so that their first calls really overlap.
void meet(std::atomic<int>& arrived, int threads)
{
    arrived.fetch_add(1);
    while (arrived.load() < threads)
        std::this_thread::yield();
}

TEST(ConcurrentHost, instancesCreatedOnSeveralThreadsAtOnceSoundTheSame)
{
    // A fresh load of the module, so that the first instances also build the shared tables.
    VstModule module(HVT_MODULE_PATH);
    ASSERT_TRUE(module.entry()) << module.error();
    constexpr int kThreads = 4;
    std::vector<std::unique_ptr<VstPlugin>> plugins(kThreads);
    std::vector<Block> blocks(kThreads);
    std::atomic<int> arrived{0};
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t)
        threads.emplace_back([&, t] {
            meet(arrived, kThreads);
            plugins[t] = VstPlugin::create(module);
            if (plugins[t])
                blocks[t].process(*plugins[t]);
        });
    for (auto& thread : threads)
        thread.join();
    for (int t = 0; t < kThreads; ++t) {
        ASSERT_TRUE(plugins[t]);
        EXPECT_EQ(blocks[t].outL, blocks[0].outL) << "instance " << t;
        EXPECT_EQ(blocks[t].outR, blocks[0].outR) << "instance " << t;
    }
}

TEST(ConcurrentHost, audioAutomationAndUiThreadsRunTogether)
{
    VstModule module(HVT_MODULE_PATH);
    ASSERT_TRUE(module.entry()) << module.error();
    auto plugin = VstPlugin::create(module);
    ASSERT_TRUE(plugin);

    constexpr int kRounds = 2000;
    std::atomic<int> arrived{0};
    std::atomic<bool> allFinite{true};
    std::thread audio([&] {
        Block block;
        meet(arrived, 3);
        for (int round = 0; round < kRounds; ++round) {
            block.process(*plugin);
            if (!block.finite())
                allFinite = false;
        }
    });
    std::thread automation([&] {
        meet(arrived, 3);
        for (int round = 0; round < kRounds; ++round)
            for (int index = 0; index < 6; ++index)
                plugin->setParameter(index, index == 5 ? static_cast<float>(7 + round % 4)
                                                       : static_cast<float>(round % 101) / 100.0f);
    });
    std::thread ui([&] {
        meet(arrived, 3);
        for (int round = 0; round < kRounds; ++round) {
            if (round % 200 == 0)
                plugin->dispatch(effEditOpen); // the panel shown nowhere: no window needed
            plugin->dispatch(effEditIdle);
            plugin->dispatch(effSetProgram, 0, round % 10);
            for (int index = 0; index < 6; ++index) {
                plugin->parameterDisplay(index);
                plugin->getParameter(index);
            }
            plugin->programName();
            if (round % 200 == 199)
                plugin->dispatch(effEditClose);
        }
    });
    audio.join();
    automation.join();
    ui.join();

    EXPECT_TRUE(allFinite);
    // The edits went into whichever programs were current; the names and the effect still work.
    plugin->dispatch(effSetProgram, 0, 3);
    EXPECT_EQ(plugin->programName(), "SlowHand");
    plugin->setParameter(4, 0.5f);
    EXPECT_EQ(plugin->getParameter(4), 0.5f);
}

} // namespace
