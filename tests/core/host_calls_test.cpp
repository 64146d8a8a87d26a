// The base classes' requests into the host and the editor's key record: the effect never makes
// these calls itself, so they are checked on a bare effect built on the same base classes.
#include <gtest/gtest.h>

#include <cmath>

#include "host/AEffEditor.h"
#include "host/AudioEffectX.h"

namespace {

VstIntPtr hostAnswer = 0;
VstInt32 lastOpcode = -1;
VstInt32 lastIndex = 0;
VstIntPtr lastValue = 0;
float lastOpt = 0.0f;

VstIntPtr scriptedHost(AEffect*, VstInt32 opcode, VstInt32 index, VstIntPtr value, void*, float opt)
{
    lastOpcode = opcode;
    lastIndex = index;
    lastValue = value;
    lastOpt = opt;
    return hostAnswer;
}

class BareEffect : public AudioEffectX {
public:
    explicit BareEffect(audioMasterCallback host) : AudioEffectX(host, 1, 3) {}
    void processReplacing(float**, float**, VstInt32) override {}
    void setParameter(VstInt32 index, float value) override
    {
        if (index == 2)
            stored = value;
    }
    float stored = 0.0f;
};

class KeyEditor : public AEffEditor {
public:
    using AEffEditor::AEffEditor;
    bool onKeyDown(VstKeyCode& key) override
    {
        received = key;
        return true;
    }
    VstKeyCode received{};
};

} // namespace

TEST(HostCalls, WithoutACallbackEveryRequestAnswersItsDefault)
{
    BareEffect effect(nullptr);
    char text[64] = "sizeWindow";
    EXPECT_EQ(effect.getMasterVersion(), 1);
    EXPECT_EQ(effect.getCurrentUniqueId(), 0);
    EXPECT_EQ(effect.canHostDo(text), 0);
    EXPECT_FALSE(effect.sendVstEventsToHost(nullptr));
    EXPECT_EQ(effect.updateSampleRate(), 44100.0);
    EXPECT_EQ(effect.updateBlockSize(), 1024);
    EXPECT_EQ(effect.getTimeInfo(0), nullptr);
    EXPECT_EQ(effect.getDirectory(), nullptr);
    EXPECT_FALSE(effect.sizeWindow(253, 400));
    effect.setParameterAutomated(2, 0.5f);
    EXPECT_EQ(effect.stored, 0.5f);
}

TEST(HostCalls, AnswersAreMappedAsTheInterfaceDefines)
{
    BareEffect effect(scriptedHost);
    char text[64] = "sizeWindow";
    hostAnswer = 1;
    EXPECT_EQ(effect.canHostDo(text), 1);
    hostAnswer = -1; // a host's "no" still reads as non-zero
    EXPECT_EQ(effect.canHostDo(text), 1);
    hostAnswer = 0;
    EXPECT_EQ(effect.canHostDo(text), 0);
    EXPECT_EQ(lastOpcode, audioMasterCanDo);

    hostAnswer = 2;
    EXPECT_FALSE(effect.sendVstEventsToHost(nullptr));
    hostAnswer = 1;
    EXPECT_TRUE(effect.sendVstEventsToHost(nullptr));

    hostAnswer = 0;
    EXPECT_EQ(effect.getMasterVersion(), 1);
    hostAnswer = 2400;
    EXPECT_EQ(effect.getMasterVersion(), 2400);

    hostAnswer = 48000;
    EXPECT_EQ(effect.updateSampleRate(), 48000.0);
    EXPECT_EQ(effect.getSampleRate(), 48000.0f);
    hostAnswer = 0;
    EXPECT_EQ(effect.updateSampleRate(), 48000.0);
    hostAnswer = -5;
    EXPECT_EQ(effect.updateBlockSize(), 1024);

    hostAnswer = 0;
    effect.setParameterAutomated(2, 0.25f);
    EXPECT_EQ(effect.stored, 0.25f);
    EXPECT_EQ(lastOpcode, audioMasterAutomate);
    EXPECT_EQ(lastIndex, 2);
    EXPECT_EQ(lastOpt, 0.25f);

    EXPECT_FALSE(effect.openFileSelector(nullptr));
    EXPECT_EQ(lastOpcode, audioMasterAutomate); // a null selector never reaches the host
    hostAnswer = 1;
    EXPECT_TRUE(effect.sizeWindow(253, 400));
    EXPECT_EQ(lastOpcode, audioMasterSizeWindow);
    EXPECT_EQ(lastIndex, 253);
    EXPECT_EQ(lastValue, 400);
}

TEST(HostCalls, ResumeAsksForMidiOnlyForSynths)
{
    BareEffect effect(scriptedHost);
    lastOpcode = -1;
    effect.resume();
    EXPECT_EQ(lastOpcode, -1);
    effect.isSynth(true);
    effect.resume();
    EXPECT_EQ(lastOpcode, audioMasterWantMidi);
    EXPECT_EQ(effect.getPlugCategory(), kPlugCategSynth);
}

TEST(HostCalls, KeyOpcodesBuildTheKeyRecordFromIndexValueAndOpt)
{
    BareEffect effect(nullptr);
    auto* editor = new KeyEditor(&effect);
    effect.setEditor(editor); // owned by the effect from here
    EXPECT_EQ(effect.getAeffect()->flags & effFlagsHasEditor, effFlagsHasEditor);
    EXPECT_EQ(effect.dispatcher(effEditKeyDown, 65, 0x2A1, nullptr, 3.9f), 1);
    EXPECT_EQ(editor->received.character, 65);
    EXPECT_EQ(editor->received.virt, 0xA1);
    EXPECT_EQ(editor->received.modifier, 3);
    EXPECT_EQ(effect.dispatcher(effEditKeyDown, 1, 0, nullptr, NAN), 1);
    EXPECT_EQ(editor->received.modifier, 0);
    EXPECT_EQ(effect.dispatcher(effEditKeyUp, 65, 0, nullptr, 0.0f), 0);
}

TEST(HostCalls, EditorOpcodesWithoutAnEditorAnswerZero)
{
    BareEffect effect(nullptr);
    ERect* rect = nullptr;
    EXPECT_EQ(effect.dispatcher(effEditGetRect, 0, 0, &rect, 0.0f), 0);
    EXPECT_EQ(effect.dispatcher(effEditOpen, 0, 0, nullptr, 0.0f), 0);
    EXPECT_EQ(effect.dispatcher(effSetEditKnobMode, 0, 1, nullptr, 0.0f), 0);
    EXPECT_EQ(effect.getAeffect()->flags, effFlagsCanReplacing);
}
