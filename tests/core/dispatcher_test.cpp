// Every opcode a host may send, the answers it gets, and what bad arguments do.
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "tests/harness/TestHost.h"

using test_host::createEffect;

namespace {

class Dispatcher : public ::testing::Test {
protected:
    void SetUp() override
    {
        plugin = createEffect();
        ASSERT_TRUE(plugin);
    }
    VstIntPtr dispatch(VstInt32 opcode, VstInt32 index = 0, VstIntPtr value = 0,
                       void* ptr = nullptr, float opt = 0.0f)
    {
        return plugin->dispatch(opcode, index, value, ptr, opt);
    }
    std::unique_ptr<VstPlugin> plugin;
};

// A text buffer with guard bytes after the part the plug-in may write.
struct GuardedText {
    explicit GuardedText(size_t writable) : writable(writable) { std::memset(bytes, 0x5A, sizeof bytes); }
    bool guardIntact() const
    {
        for (size_t i = writable; i < sizeof bytes; ++i)
            if (bytes[i] != 0x5A)
                return false;
        return true;
    }
    std::string text() const { return std::string(bytes, strnlen(bytes, writable)); }
    char bytes[512];
    size_t writable;
};

} // namespace

TEST_F(Dispatcher, IdentityAnswers)
{
    EXPECT_EQ(dispatch(effIdentify), fourCC('N', 'v', 'E', 'f'));
    EXPECT_EQ(dispatch(effGetVstVersion), 2400);
    EXPECT_EQ(dispatch(effGetPlugCategory), 1);
    EXPECT_EQ(dispatch(effGetVendorVersion), 1000);
    EXPECT_EQ(dispatch(effGetNumMidiInputChannels), 0);
    EXPECT_EQ(dispatch(effGetNumMidiOutputChannels), 0);

    GuardedText name(32), vendor(64), product(64);
    EXPECT_EQ(dispatch(effGetEffectName, 0, 0, name.bytes), 1);
    EXPECT_EQ(dispatch(effGetVendorString, 0, 0, vendor.bytes), 1);
    EXPECT_EQ(dispatch(effGetProductString, 0, 0, product.bytes), 1);
    EXPECT_EQ(name.text(), "HvTremolo 32-Bit");
    EXPECT_EQ(vendor.text(), "Halvo Music");
    EXPECT_EQ(product.text(), "Halvo's Tremolo");
    // Zero-filled after the text, and nothing written past the documented buffer sizes.
    EXPECT_EQ(name.bytes[20], 0);
    EXPECT_EQ(vendor.bytes[63], 0);
    EXPECT_TRUE(name.guardIntact());
    EXPECT_TRUE(vendor.guardIntact());
    EXPECT_TRUE(product.guardIntact());
}

TEST_F(Dispatcher, CanDoAnswersNoToEverything)
{
    for (const char* question : {"receiveVstMidiEvent", "midiProgramNames", "sendVstEvents",
                                 "plugAsChannelInsert", "", "bypass"}) {
        std::string text = question;
        EXPECT_EQ(dispatch(effCanDo, 0, 0, text.data()), -1) << question;
    }
}

TEST_F(Dispatcher, OutputPinsAreLabelledAndInputsAreNot)
{
    VstPinProperties pin;
    std::memset(&pin, 0x33, sizeof pin);
    EXPECT_EQ(dispatch(effGetOutputProperties, 0, 0, &pin), 1);
    EXPECT_STREQ(pin.label, "Vstx 1");
    EXPECT_EQ(pin.flags, kVstPinIsActive | kVstPinIsStereo);
    EXPECT_EQ(pin.shortLabel[0], 0x33); // fields other than label and flags are not written
    EXPECT_EQ(dispatch(effGetOutputProperties, 1, 0, &pin), 1);
    EXPECT_STREQ(pin.label, "Vstx 2");

    VstPinProperties untouched;
    std::memset(&untouched, 0x44, sizeof untouched);
    VstPinProperties probe = untouched;
    EXPECT_EQ(dispatch(effGetOutputProperties, 2, 0, &probe), 0);
    EXPECT_EQ(dispatch(effGetInputProperties, 0, 0, &probe), 0);
    EXPECT_EQ(std::memcmp(&probe, &untouched, sizeof probe), 0);
    // Negative pins count as the first ones, as the signed test allows.
    EXPECT_EQ(dispatch(effGetOutputProperties, -1, 0, &pin), 1);
    EXPECT_STREQ(pin.label, "Vstx 0");
}

TEST_F(Dispatcher, UnhandledAndOutOfRangeOpcodesAnswerZero)
{
    for (VstInt32 opcode : {9, 16, 17, 18, 20, 21, 28, 30, 31, 32, 36, 37, 43, 46, 53, 54, 55, 57,
                            80, 81, 200, -1, -100, INT32_MIN, INT32_MAX}) {
        char scratch[256] = {};
        EXPECT_EQ(dispatch(opcode, 1, 1, scratch, 1.0f), 0) << "opcode " << opcode;
        EXPECT_EQ(scratch[0], 0) << "opcode " << opcode;
    }
    // The unhandled opcodes change nothing.
    EXPECT_EQ(dispatch(effGetProgram), 0);
    EXPECT_EQ(plugin->getParameter(0), 0.634999f);
}

TEST_F(Dispatcher, BaseDefaultsOfTheExtensionLevel)
{
    EXPECT_EQ(dispatch(effCanBeAutomated, 0), 1);
    EXPECT_EQ(dispatch(effCanBeAutomated, 100), 1);
    EXPECT_EQ(dispatch(effCanBeAutomated, -5), 1);
    char text[64] = "0.5";
    EXPECT_EQ(dispatch(effString2Parameter, 0, 0, text), 0);
    EXPECT_EQ(plugin->getParameter(0), 0.634999f);
    EXPECT_EQ(dispatch(effProcessEvents, 0, 0, nullptr), 0);
    EXPECT_EQ(dispatch(effSetBypass, 0, 1), 0);
    EXPECT_EQ(dispatch(effGetTailSize), 0);
    EXPECT_EQ(dispatch(effVendorSpecific, 1, 2, nullptr, 3.0f), 0);
    EXPECT_EQ(dispatch(effBeginSetProgram), 0);
    EXPECT_EQ(dispatch(effEndSetProgram), 0);
    EXPECT_EQ(dispatch(effStartProcess), 0);
    EXPECT_EQ(dispatch(effStopProcess), 0);
    EXPECT_EQ(dispatch(effSetTotalSampleToProcess, 0, 4096), 4096);
    EXPECT_EQ(dispatch(effSetTotalSampleToProcess, 0, -7), -7);
    EXPECT_EQ(dispatch(effSetPanLaw, 0, 1, nullptr, 0.7f), 0);
    EXPECT_EQ(dispatch(effSetProcessPrecision, 0, 1), 0);
    EXPECT_EQ(dispatch(effShellGetNextPlugin, 0, 0, text), 0);
    EXPECT_EQ(dispatch(effBeginLoadBank), 0);
    EXPECT_EQ(dispatch(effBeginLoadProgram), 0);
    EXPECT_EQ(dispatch(effGetParameterProperties, 0, 0, text), 0);
    EXPECT_EQ(dispatch(effHasMidiProgramsChanged, 0), 0);

    void* input = &input;
    void* output = &output;
    EXPECT_EQ(dispatch(effGetSpeakerArrangement, 0, reinterpret_cast<VstIntPtr>(&input), &output), 0);
    EXPECT_EQ(input, nullptr);
    EXPECT_EQ(output, nullptr);
}

TEST_F(Dispatcher, ChunksAreNotOffered)
{
    void* chunk = &chunk;
    EXPECT_EQ(dispatch(effGetChunk, 0, 0, &chunk), 0);
    EXPECT_EQ(chunk, &chunk);
    EXPECT_EQ(dispatch(effGetChunk, 1, 0, &chunk), 0);
    char data[16] = {};
    EXPECT_EQ(dispatch(effSetChunk, 0, sizeof data, data), 0);
}

TEST_F(Dispatcher, HostSettingsAndMainsAreServedInAnyOrder)
{
    EXPECT_EQ(dispatch(effMainsChanged, 0, 1), 0);
    EXPECT_EQ(dispatch(effSetSampleRate, 0, 0, nullptr, 96000.0f), 0);
    EXPECT_EQ(dispatch(effSetBlockSize, 0, 64), 0);
    EXPECT_EQ(dispatch(effMainsChanged, 0, 0), 0);
    EXPECT_EQ(dispatch(effMainsChanged, 0, 7), 0);
    EXPECT_EQ(dispatch(effOpen), 0);
    EXPECT_EQ(dispatch(effOpen), 0);
    EXPECT_EQ(dispatch(effSetSampleRate, 0, 0, nullptr, -1.0f), 0);
    EXPECT_EQ(dispatch(effSetBlockSize, 0, -64), 0);
}

TEST_F(Dispatcher, EditorAnswersWithoutAWindow)
{
    ERect* rect = nullptr;
    // Hosts may size their window before the first open.
    EXPECT_EQ(dispatch(effEditGetRect, 0, 0, &rect), 1);
    ASSERT_NE(rect, nullptr);
    EXPECT_EQ(rect->top, 0);
    EXPECT_EQ(rect->left, 0);
    EXPECT_EQ(rect->bottom, 400);
    EXPECT_EQ(rect->right, 253);

    EXPECT_EQ(dispatch(effEditOpen, 0, 0, nullptr), 1);
    EXPECT_EQ(dispatch(effEditGetRect, 0, 0, &rect), 1);
    EXPECT_EQ(rect->bottom, 100);
    EXPECT_EQ(rect->right, 100);
    EXPECT_EQ(dispatch(effEditIdle), 0);
    plugin->setParameter(0, 0.5f); // reaches the unshown panel without harm
    EXPECT_EQ(dispatch(effEditOpen, 0, 0, nullptr), 1); // open twice
    EXPECT_EQ(dispatch(effEditClose), 0);
    EXPECT_EQ(dispatch(effEditClose), 0); // close twice
    EXPECT_EQ(dispatch(effEditIdle), 0); // idle while closed
    EXPECT_EQ(dispatch(effEditGetRect, 0, 0, nullptr), 0);

    for (VstInt32 key : {0, 65, -1}) {
        EXPECT_EQ(dispatch(effEditKeyDown, key, 0x2A1, nullptr, 3.9f), 0);
        EXPECT_EQ(dispatch(effEditKeyUp, key, 0, nullptr, 1e30f), 0);
    }
    EXPECT_EQ(dispatch(effSetEditKnobMode, 0, 2), 1);
    EXPECT_EQ(dispatch(effSetEditKnobMode, 0, -9), 1);
    for (VstInt32 opcode : {effEditDraw, effEditMouse, effEditKey, effEditTop, effEditSleep})
        EXPECT_EQ(dispatch(opcode), 0);
}

TEST_F(Dispatcher, NullPointersWhereBuffersBelongAnswerWithoutCrashingOrChangingState)
{
    for (VstInt32 opcode = -2; opcode <= 82; ++opcode) {
        if (opcode == effClose || opcode == effEditOpen)
            continue;
        for (VstInt32 index : {-1, 0, 5, 6, 9, 10, 16, 127, 128}) {
            for (VstIntPtr value : {VstIntPtr{-1}, VstIntPtr{0}, VstIntPtr{9}, VstIntPtr{1} << 40}) {
                // This opcode's value is itself a pointer; only null is a fair test.
                if (opcode == effGetSpeakerArrangement && value != 0)
                    continue;
                dispatch(opcode, index, value, nullptr, 0.5f);
            }
        }
    }
    // Programs and parameters are where the set-up left them, except what the opcodes with
    // values set on purpose: effSetProgram 9 and -1 were tried, and 9 is valid.
    EXPECT_EQ(dispatch(effGetProgram), 9);
    EXPECT_EQ(plugin->programName(), "Rotary");
    EXPECT_EQ(plugin->getParameter(5), 7.0f);
}

TEST_F(Dispatcher, ProgramChangesOutsideTheTenAreIgnored)
{
    dispatch(effSetProgram, 0, 4);
    for (VstIntPtr value : {VstIntPtr{10}, VstIntPtr{-1}, VstIntPtr{1000}, VstIntPtr{INT32_MIN},
                            (VstIntPtr{1} << 32) + 3, -(VstIntPtr{1} << 32) + 3}) {
        dispatch(effSetProgram, 0, value);
        EXPECT_EQ(dispatch(effGetProgram), 4) << value;
    }
    EXPECT_EQ(plugin->programName(), "Undulate");
}
