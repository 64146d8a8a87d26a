// The calls a host makes on its audio thread (processReplacing, setParameter, getParameter) must
// not allocate, free, lock or enter the kernel: any of them can block for an unbounded time and
// make the host drop out. The module is loaded as a host loads it and driven on a thread where
// each of those is counted.
#include <gtest/gtest.h>

#include <sys/syscall.h>
#include <unistd.h>

#include <cmath>
#include <cstdlib>
#include <limits>
#include <mutex>
#include <string>
#include <vector>

#include "tests/hardening/CallGuard.h"
#include "tools/vsthost/VstPlugin.h"

namespace {

std::string describe(const call_guard::Counts& counts)
{
    return "allocations " + std::to_string(counts.allocations) + ", frees " +
           std::to_string(counts.releases) + ", new " + std::to_string(counts.news) +
           ", delete " + std::to_string(counts.deletes) + ", locks " +
           std::to_string(counts.locks) + ", system calls " + std::to_string(counts.systemCalls) +
           " (last " + std::to_string(counts.lastSystemCall) + ")";
}

// Values a host may send, sensible and not: the audio path must treat all of them alike.
const std::vector<float> kParameterValues = {
    0.0f,  0.25f, 1.0f,  0.5f, -1.0f, 7.0f, 8.0f, 9.0f, 10.0f, 1e30f,
    -1e30f, std::numeric_limits<float>::denorm_min(), std::numeric_limits<float>::quiet_NaN(),
    std::numeric_limits<float>::infinity(), -std::numeric_limits<float>::infinity()};

const std::vector<int> kBlockSizes = {1, 2, 3, 31, 64, 100, 512, 1000, 4096, 8192};

struct StereoBuffers {
    explicit StereoBuffers(size_t frames)
        : inL(frames), inR(frames), outL(frames), outR(frames)
    {
        for (size_t i = 0; i < frames; ++i) {
            inL[i] = std::sin(0.01f * static_cast<float>(i));
            inR[i] = std::cos(0.013f * static_cast<float>(i));
        }
    }
    std::vector<float> inL, inR, outL, outR;
};

class AudioPathGuard : public ::testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_TRUE(module.entry()) << module.error();
        plugin = VstPlugin::create(module);
        ASSERT_TRUE(plugin);
    }

    // One pass of everything an audio thread does, over all programs, block sizes and parameter
    // values, in place and out of place. Dispatcher calls (program switches) are not audio-thread
    // calls, so they run disarmed. Returns the number of frames processed.
    long driveAudioPath(StereoBuffers& buffers)
    {
        long frames = 0;
        size_t valueIndex = 0;
        for (int program = 0; program < 10; ++program) {
            call_guard::disarm();
            plugin->dispatch(effSetProgram, 0, program);
            call_guard::arm();
            for (int blockSize : kBlockSizes) {
                for (int index = -1; index <= 6; ++index) {
                    const float value = kParameterValues[valueIndex++ % kParameterValues.size()];
                    plugin->setParameter(index, value);
                    sink = plugin->getParameter(index);
                }
                // Sensible settings for the processing itself, so that the stages really run.
                plugin->setParameter(0, 0.8f);
                plugin->setParameter(1, 0.3f + 0.05f * static_cast<float>(program));
                plugin->setParameter(2, 0.7f);
                plugin->setParameter(3, 0.6f);
                plugin->setParameter(4, 0.9f);
                plugin->setParameter(5, static_cast<float>(7 + program % 4));

                float* inputs[2] = {buffers.inL.data(), buffers.inR.data()};
                float* outputs[2] = {buffers.outL.data(), buffers.outR.data()};
                plugin->processReplacing(inputs, outputs, blockSize);
                float* inPlace[2] = {buffers.outL.data(), buffers.outR.data()};
                plugin->processReplacing(inPlace, inPlace, blockSize);
                frames += 2 * blockSize;
            }
        }
        call_guard::disarm();
        return frames;
    }

    VstModule module{HVT_MODULE_PATH};
    std::unique_ptr<VstPlugin> plugin;
    volatile float sink = 0.0f;
};

TEST_F(AudioPathGuard, seesTheModulesAllocationsWhenArmed)
{
    // Without this, a guard that never fires would pass every test below.
    call_guard::reset();
    call_guard::arm();
    AEffect* effect = module.entry()(VstPlugin::defaultCallback);
    call_guard::disarm();
    ASSERT_NE(effect, nullptr);
    EXPECT_GE(call_guard::counts().news, 1u) << "the module's operator new was not intercepted";

    call_guard::reset();
    call_guard::arm();
    effect->dispatcher(effect, effClose, 0, 0, nullptr, 0.0f);
    call_guard::disarm();
    EXPECT_GE(call_guard::counts().deletes, 1u) << "the module's operator delete was not seen";

    // Through volatile pointers, so that the compiler cannot drop the pair.
    void* (*volatile allocate)(size_t) = malloc;
    void (*volatile release)(void*) = free;
    call_guard::reset();
    call_guard::arm();
    release(allocate(16));
    call_guard::disarm();
    EXPECT_EQ(call_guard::counts().allocations, 1u);
    EXPECT_EQ(call_guard::counts().releases, 1u);
}

TEST_F(AudioPathGuard, seesLocksAndSystemCallsOnAGuardedThread)
{
    std::mutex mutex;
    call_guard::Counts afterLock;
    call_guard::Counts afterSystemCall;
    const bool ran = call_guard::runOnGuardedThread([&] {
        call_guard::reset();
        call_guard::arm();
        mutex.lock();
        mutex.unlock();
        call_guard::disarm();
        afterLock = call_guard::counts();

        call_guard::reset();
        call_guard::arm();
        syscall(SYS_getppid);
        call_guard::disarm();
        afterSystemCall = call_guard::counts();
    });
    ASSERT_TRUE(ran) << "the kernel refused the seccomp filter";
    EXPECT_EQ(afterLock.locks, 1u);
    EXPECT_EQ(afterSystemCall.systemCalls, 1u);
    EXPECT_EQ(afterSystemCall.lastSystemCall, SYS_getppid);
}

TEST_F(AudioPathGuard, processingAndParameterChangesNeitherAllocateNorLockNorCallTheKernel)
{
    StereoBuffers buffers(8192);
    // The panel, when shown, receives every host change: that path must be as quiet.
    for (bool editorOpen : {false, true}) {
        plugin->dispatch(editorOpen ? effEditOpen : effEditClose);
        long frames = 0;
        call_guard::Counts counts;
        call_guard::reset();
        const bool ran = call_guard::runOnGuardedThread([&] {
            frames = driveAudioPath(buffers);
            counts = call_guard::counts();
        });
        ASSERT_TRUE(ran) << "the kernel refused the seccomp filter";
        EXPECT_GT(frames, 0);
        EXPECT_EQ(counts.total(), 0u)
            << (editorOpen ? "editor open: " : "editor closed: ") << describe(counts);
        bool changed = false;
        for (size_t i = 0; i < buffers.outL.size(); ++i)
            changed = changed || buffers.outL[i] != buffers.inL[i];
        EXPECT_TRUE(changed) << "the effect did not process anything";
    }
    plugin->dispatch(effEditClose);
}

} // namespace
