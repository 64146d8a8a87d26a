// Loading the module: the entry, the record a host reads, and the life of an effect.
#include <gtest/gtest.h>
#include <malloc.h>

#include <cstring>

#include "tests/harness/TestHost.h"

using test_host::createEffect;
using test_host::module;

namespace {

VstIntPtr refusingHost(AEffect*, VstInt32, VstInt32, VstIntPtr, void*, float)
{
    return 0;
}

size_t heapInUse()
{
    return mallinfo2().uordblks;
}

} // namespace

TEST(Entry, ModuleLoadsAndExportsTheEntry)
{
    ASSERT_NE(module().entry(), nullptr) << module().error();
}

TEST(Entry, RecordReadsAsAHostExpects)
{
    auto plugin = createEffect();
    ASSERT_TRUE(plugin);
    const AEffect& e = *plugin->effect();
    EXPECT_EQ(e.magic, fourCC('V', 's', 't', 'P'));
    EXPECT_EQ(e.numPrograms, 10);
    EXPECT_EQ(e.numParams, 6);
    EXPECT_EQ(e.numInputs, 2);
    EXPECT_EQ(e.numOutputs, 2);
    EXPECT_EQ(e.flags, effFlagsHasEditor | effFlagsCanReplacing);
    EXPECT_EQ(e.flags, 17);
    EXPECT_EQ(e.initialDelay, 0);
    EXPECT_EQ(e.realQualities, 0);
    EXPECT_EQ(e.offQualities, 0);
    EXPECT_EQ(e.resvd1, 0);
    EXPECT_EQ(e.resvd2, 0);
    EXPECT_EQ(e.uniqueID, fourCC('H', 'V', 'T', '8'));
    EXPECT_EQ(e.uniqueID, 0x48565438);
    EXPECT_EQ(e.version, 1);
    EXPECT_EQ(e.ioRatio, 1.0f);
    EXPECT_NE(e.object, nullptr);
    EXPECT_EQ(e.user, nullptr);
    EXPECT_NE(e.dispatcher, nullptr);
    EXPECT_NE(e.process, nullptr);
    EXPECT_NE(e.setParameter, nullptr);
    EXPECT_NE(e.getParameter, nullptr);
    EXPECT_NE(e.processReplacing, nullptr);
    EXPECT_NE(e.processDoubleReplacing, nullptr);
    const char zeros[sizeof e.future] = {};
    EXPECT_EQ(std::memcmp(e.future, zeros, sizeof zeros), 0);
}

TEST(Entry, AHostThatAnswersVersionZeroOrHasNoCallbackGetsNothing)
{
    EXPECT_EQ(module().entry()(refusingHost), nullptr);
    EXPECT_EQ(module().entry()(nullptr), nullptr);
}

TEST(Entry, LoadingAndUsingTheEffectCallsTheHostOnceForItsVersion)
{
    test_host::recordedCalls().clear();
    AEffect* e = module().entry()(test_host::recordingCallback);
    ASSERT_NE(e, nullptr);
    ASSERT_EQ(test_host::recordedCalls().size(), 1u);
    const test_host::HostCall call = test_host::recordedCalls()[0];
    EXPECT_EQ(call.effect, nullptr);
    EXPECT_EQ(call.opcode, audioMasterVersion);
    EXPECT_EQ(call.index, 0);
    EXPECT_EQ(call.value, 0);
    EXPECT_EQ(call.ptr, nullptr);
    EXPECT_EQ(call.opt, 0.0f);

    // Everything a host does in a session adds no call of the plug-in into the host.
    e->dispatcher(e, effOpen, 0, 0, nullptr, 0.0f);
    e->dispatcher(e, effSetSampleRate, 0, 0, nullptr, 48000.0f);
    e->dispatcher(e, effMainsChanged, 0, 1, nullptr, 0.0f);
    e->setParameter(e, 0, 0.3f);
    e->dispatcher(e, effSetProgram, 0, 4, nullptr, 0.0f);
    e->dispatcher(e, effEditOpen, 0, 0, nullptr, 0.0f);
    e->setParameter(e, 1, 0.3f);
    e->dispatcher(e, effEditIdle, 0, 0, nullptr, 0.0f);
    e->dispatcher(e, effEditClose, 0, 0, nullptr, 0.0f);
    e->dispatcher(e, effMainsChanged, 0, 0, nullptr, 0.0f);
    EXPECT_EQ(test_host::recordedCalls().size(), 1u);
    EXPECT_EQ(e->dispatcher(e, effClose, 0, 0, nullptr, 0.0f), 1);
}

TEST(Entry, EachCallMakesAnIndependentEffect)
{
    auto a = createEffect();
    auto b = createEffect();
    ASSERT_TRUE(a && b);
    EXPECT_NE(a->effect(), b->effect());
    EXPECT_NE(a->effect()->object, b->effect()->object);
    a->setParameter(4, 0.25f);
    a->dispatch(effSetProgram, 0, 3);
    EXPECT_EQ(b->getParameter(4), 1.0f);
    EXPECT_EQ(b->dispatch(effGetProgram), 0);
    EXPECT_EQ(a->dispatch(effGetProgram), 3);
}

TEST(Entry, SixtyFourLiveInstancesKeepTheirOwnSettingsAndSound)
{
    std::vector<std::unique_ptr<VstPlugin>> plugins;
    for (int i = 0; i < 64; ++i) {
        plugins.push_back(createEffect());
        ASSERT_TRUE(plugins.back());
        plugins.back()->dispatch(effSetProgram, 0, i % 10);
        plugins.back()->setParameter(4, static_cast<float>(i) / 64.0f);
    }
    test_host::StereoBuffer input = test_host::testSignal(700);
    auto reference = createEffect();
    for (int i = 0; i < 64; ++i) {
        EXPECT_EQ(plugins[i]->getParameter(4), static_cast<float>(i) / 64.0f);
        EXPECT_EQ(plugins[i]->dispatch(effGetProgram), i % 10);
        // Interleaved processing of many instances must sound like one instance alone.
        if (i % 7 == 0) {
            reference->dispatch(effSetProgram, 0, i % 10);
            reference->setParameter(4, static_cast<float>(i) / 64.0f);
            auto fresh = createEffect();
            fresh->dispatch(effSetProgram, 0, i % 10);
            fresh->setParameter(4, static_cast<float>(i) / 64.0f);
            auto expected = test_host::process(*fresh, input, {700});
            auto actual = test_host::process(*plugins[i], input, {700});
            EXPECT_EQ(actual.left, expected.left) << "instance " << i;
            EXPECT_EQ(actual.right, expected.right) << "instance " << i;
        }
    }
}

TEST(Entry, CloseReturnsOneAndTwoHundredLoadCloseCyclesDoNotGrowTheHeap)
{
    auto cycle = [] {
        AEffect* e = module().entry()(VstPlugin::defaultCallback);
        ASSERT_NE(e, nullptr);
        e->dispatcher(e, effOpen, 0, 0, nullptr, 0.0f);
        e->dispatcher(e, effEditOpen, 0, 0, nullptr, 0.0f);
        e->dispatcher(e, effEditIdle, 0, 0, nullptr, 0.0f);
        e->dispatcher(e, effEditClose, 0, 0, nullptr, 0.0f);
        ASSERT_EQ(e->dispatcher(e, effClose, 0, 0, nullptr, 0.0f), 1);
    };
    // Warm up: what is made once per process (the tables, the decoded pictures) may stay.
    for (int i = 0; i < 5; ++i)
        cycle();
    const size_t before = heapInUse();
    for (int i = 0; i < 200; ++i)
        cycle();
    EXPECT_LE(heapInUse(), before + 4096);
}

TEST(Entry, ProcessAndDoubleProcessLeaveOutputsUntouched)
{
    auto plugin = createEffect();
    AEffect* e = plugin->effect();
    float in[2][16] = {};
    float out[2][16];
    std::fill(&out[0][0], &out[0][0] + 32, 0.5f);
    float* inputs[2] = {in[0], in[1]};
    float* outputs[2] = {out[0], out[1]};
    e->process(e, inputs, outputs, 16);
    for (float sample : out[0])
        EXPECT_EQ(sample, 0.5f);

    double din[2][16] = {};
    double dout[2][16];
    std::fill(&dout[0][0], &dout[0][0] + 32, 0.25);
    double* dinputs[2] = {din[0], din[1]};
    double* doutputs[2] = {dout[0], dout[1]};
    e->processDoubleReplacing(e, dinputs, doutputs, 16);
    for (double sample : dout[1])
        EXPECT_EQ(sample, 0.25);
}
