// What a host cannot see: how the base class reads the host's answers to its requests, and the
// panel's update flag.
#include <gtest/gtest.h>

#include <thread>

#include "host/AudioEffectX.h"
#include "host/PanelUpdateFlag.h"

namespace {

VstIntPtr hostAnswer = 0;
VstInt32 lastOpcode = -1;

VstIntPtr scriptedHost(AEffect*, VstInt32 opcode, VstInt32, VstIntPtr, void*, float)
{
    lastOpcode = opcode;
    return hostAnswer;
}

class BareEffect : public AudioEffectX {
public:
    explicit BareEffect(audioMasterCallback host) : AudioEffectX(host, 1, 3) {}
    void processReplacing(float**, float**, VstInt32) override {}
    void setParameter(VstInt32, float value) override { stored = value; }
    float stored = 0.0f;
};

} // namespace

TEST(HostCalls, AnswersAreMappedAsTheInterfaceDefines)
{
    char question[] = "sizeWindow";
    BareEffect effect(scriptedHost);
    hostAnswer = -1; // a host's "no" still reads as non-zero
    EXPECT_EQ(effect.canHostDo(question), 1);
    EXPECT_EQ(lastOpcode, audioMasterCanDo);
    EXPECT_FALSE(effect.sendVstEventsToHost(nullptr)); // only 1 means taken
    hostAnswer = 0;
    EXPECT_EQ(effect.getMasterVersion(), 1);
    hostAnswer = 48000;
    EXPECT_EQ(effect.updateSampleRate(), 48000.0);
    hostAnswer = 0; // no rate: the last one stays
    EXPECT_EQ(effect.updateSampleRate(), 48000.0);
    effect.setParameterAutomated(2, 0.25f);
    EXPECT_EQ(effect.stored, 0.25f);
    EXPECT_EQ(lastOpcode, audioMasterAutomate);
}

TEST(PanelUpdateFlag, ReadsRaisedOnlyOnTheThreadThatRaisedIt)
{
    PanelUpdateFlag flag;
    EXPECT_FALSE(flag);
    flag = true;
    EXPECT_TRUE(flag);
    bool seenElsewhere = true;
    std::thread([&] { seenElsewhere = flag.load(); }).join();
    EXPECT_FALSE(seenElsewhere); // automation on another thread is not taken for a panel write
    flag = false;
    EXPECT_FALSE(flag.load());
}
