// The module as a host sees it: the entry and the record, the life of an effect, the dispatcher's
// answers, parameters and programs. Last, the panel's update flag, which no host can observe.
#include <gtest/gtest.h>
#include <malloc.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <string>
#include <thread>
#include <tuple>

#include "host/PanelUpdateFlag.h"
#include "tests/harness/TestHost.h"

using test_host::createEffect;
using test_host::module;

namespace {

class Effect : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(plugin); }
    std::unique_ptr<VstPlugin> plugin = createEffect();
};
using Dispatcher = Effect;
using Parameters = Effect;

std::vector<std::pair<AEffect*, VstInt32>> hostCalls;

VstIntPtr recordingHost(AEffect* effect, VstInt32 opcode, VstInt32, VstIntPtr, void*, float)
{
    hostCalls.emplace_back(effect, opcode);
    return opcode == audioMasterVersion ? kVstVersion : 0;
}

const float kNaN = std::numeric_limits<float>::quiet_NaN();
const float kInf = std::numeric_limits<float>::infinity();

// Written out again here, as a host's preset list shows them.
const std::pair<const char*, std::vector<float>> kFactory[10] = {
    {"Wurli Classic", {0.634999f, 0.174999f, 0.0f, 0.0f, 1.0f}},
    {"Waves", {1.0f, 0.174999f, 0.479999f, 0.275f, 1.0f}},
    {"Warble", {0.77999f, 0.5f, 1.0f, 0.495f, 0.545f}},
    {"SlowHand", {1.0f, 0.14f, 0.0f, 0.0f, 1.0f}},
    {"Undulate", {1.0f, 0.054999f, 1.0f, 0.75f, 0.68f}},
    {"The Gentleman", {1.0f, 0.189999f, 0.455f, 0.475999f, 0.62999f}},
    {"Ghosts", {1.0f, 0.189999f, 1.0f, 0.474999f, 0.62999f}},
    {"New Morning", {0.69499f, 0.135f, 0.20999f, 0.474999f, 1.0f}},
    {"Mystery Spot", {0.54f, 0.15999f, 1.0f, 0.35499f, 0.535f}},
    {"Rotary", {0.834999f, 0.63499f, 1.0f, 0.63999f, 0.5f}},
};

} // namespace

TEST(Entry, RecordReadsAsAHostExpectsAndTheHostIsAskedOnlyItsVersion)
{
    ASSERT_NE(module().entry(), nullptr) << module().error();
    EXPECT_EQ(module().entry()(nullptr), nullptr);
    EXPECT_EQ(module().entry()([](AEffect*, VstInt32, VstInt32, VstIntPtr, void*,
                                  float) -> VstIntPtr { return 0; }),
              nullptr);
    hostCalls.clear();
    AEffect* e = module().entry()(recordingHost);
    ASSERT_NE(e, nullptr);
    EXPECT_EQ(e->magic, fourCC('V', 's', 't', 'P'));
    EXPECT_EQ(std::tie(e->numPrograms, e->numParams, e->numInputs, e->numOutputs),
              std::make_tuple(10, 6, 2, 2));
    EXPECT_EQ(e->flags, effFlagsHasEditor | effFlagsCanReplacing);
    EXPECT_EQ(e->uniqueID, 0x48565438); // "HVT8"
    EXPECT_EQ(std::tie(e->version, e->initialDelay, e->ioRatio), std::make_tuple(1, 0, 1.0f));
    ASSERT_TRUE(e->object && e->dispatcher && e->setParameter && e->getParameter &&
                e->processReplacing && e->process && e->processDoubleReplacing);
    // A whole session adds no call into the host: a host's own changes are not echoed to it.
    for (auto [opcode, value] : {std::pair{effOpen, 0}, {effSetSampleRate, 0}, {effMainsChanged, 1},
                                 {effSetProgram, 4}, {effEditOpen, 0}, {effEditIdle, 0},
                                 {effEditClose, 0}, {effMainsChanged, 0}}) {
        e->dispatcher(e, opcode, 0, value, nullptr, 48000.0f);
        e->setParameter(e, 1, 0.3f);
    }
    EXPECT_EQ(e->dispatcher(e, effClose, 0, 0, nullptr, 0.0f), 1);
    ASSERT_EQ(hostCalls.size(), 1u);
    EXPECT_EQ(hostCalls[0], std::make_pair(static_cast<AEffect*>(nullptr), +audioMasterVersion));
}

TEST(Entry, ManyLiveInstancesKeepTheirOwnSettingsAndSound)
{
    const auto setUp = [](VstPlugin& plugin, int i) {
        plugin.dispatch(effSetProgram, 0, i % 10);
        plugin.setParameter(4, i / 64.0f);
    };
    std::vector<std::unique_ptr<VstPlugin>> plugins;
    for (int i = 0; i < 64; ++i) {
        ASSERT_TRUE(plugins.emplace_back(createEffect()));
        setUp(*plugins[i], i);
    }
    // Each sounds like a fresh instance alone, however many others live and played before it.
    test_host::StereoBuffer input = test_host::testSignal(700);
    for (int i = 0; i < 64; ++i) {
        auto alone = createEffect();
        setUp(*alone, i);
        EXPECT_TRUE(test_host::sameAudio(test_host::process(*plugins[i], input, 100),
                                         test_host::process(*alone, input, 100)))
            << "instance " << i;
    }
}

TEST(Entry, LoadCloseCyclesDoNotGrowTheHeap)
{
    auto cycle = [] {
        AEffect* e = module().entry()(VstPlugin::defaultCallback);
        ASSERT_NE(e, nullptr);
        for (VstInt32 opcode : {effOpen, effEditOpen, effEditIdle, effEditClose})
            e->dispatcher(e, opcode, 0, 0, nullptr, 0.0f);
        ASSERT_EQ(e->dispatcher(e, effClose, 0, 0, nullptr, 0.0f), 1);
    };
    // What is made once per process (the tables, the decoded pictures) may stay.
    for (int i = 0; i < 5; ++i)
        cycle();
    const size_t before = mallinfo2().uordblks;
    for (int i = 0; i < 200; ++i)
        cycle();
    EXPECT_LE(mallinfo2().uordblks, before + 4096);
}

TEST_F(Dispatcher, IdentityAndPins)
{
    // Zero-filled after the text, and nothing written past the documented buffer size.
    auto text = [&](VstInt32 opcode, size_t size) {
        char bytes[96];
        std::memset(bytes, 0x5A, sizeof bytes);
        EXPECT_EQ(plugin->dispatch(opcode, 0, 0, bytes), 1);
        EXPECT_TRUE(std::all_of(bytes + strlen(bytes), bytes + size, [](char c) { return !c; }));
        EXPECT_TRUE(std::all_of(bytes + size, std::end(bytes), [](char c) { return c == 0x5A; }));
        return std::string(bytes);
    };
    EXPECT_EQ(text(effGetEffectName, kVstMaxEffectNameLen), "HvTremolo 32-Bit");
    EXPECT_EQ(text(effGetVendorString, kVstMaxVendorStrLen), "Halvo Music");
    EXPECT_EQ(text(effGetProductString, kVstMaxProductStrLen), "Halvo's Tremolo");
    for (std::string question : {"receiveVstMidiEvent", "midiProgramNames", "bypass", ""})
        EXPECT_EQ(plugin->dispatch(effCanDo, 0, 0, question.data()), -1) << question;

    VstPinProperties pin;
    std::memset(&pin, 0x33, sizeof pin);
    for (VstInt32 index : {0, 1, -1}) { // negative pins pass the signed bound
        EXPECT_EQ(plugin->dispatch(effGetOutputProperties, index, 0, &pin), 1);
        EXPECT_EQ(pin.label, "Vstx " + std::to_string(index + 1));
        EXPECT_EQ(pin.flags, kVstPinIsActive | kVstPinIsStereo);
    }
    EXPECT_EQ(pin.shortLabel[0], 0x33); // only the label and the flags are written

    ERect* rect = nullptr; // hosts may size their window before the first open
    ASSERT_EQ(plugin->dispatch(effEditGetRect, 0, 0, &rect), 1);
    EXPECT_EQ(std::tie(rect->top, rect->left, rect->bottom, rect->right),
              std::make_tuple(0, 0, 400, 253));
}

TEST_F(Dispatcher, AnEditorOpenedIntoAWindowWithNoXServerSaysItFailed)
{
    const std::string display = std::getenv("DISPLAY") ? std::getenv("DISPLAY") : "";
    setenv("DISPLAY", ":9999", 1); // no server listens there
    const VstIntPtr opened = plugin->dispatch(effEditOpen, 0, 0, reinterpret_cast<void*>(0x400001));
    display.empty() ? unsetenv("DISPLAY") : setenv("DISPLAY", display.c_str(), 1);
    EXPECT_EQ(opened, 0);
    plugin->dispatch(effEditIdle); // a host may still idle and close what did not open
    plugin->dispatch(effEditClose);
    ERect* rect = nullptr;
    ASSERT_EQ(plugin->dispatch(effEditGetRect, 0, 0, &rect), 1);
    EXPECT_EQ(std::tie(rect->bottom, rect->right), std::make_tuple(400, 253));
}

TEST_F(Dispatcher, NumericAnswersAndOpcodesItDoesNotHandle)
{
    struct Case {
        VstInt32 opcode, index;
        VstIntPtr value, answer;
    };
    for (const Case c : {Case{effIdentify, 0, 0, fourCC('N', 'v', 'E', 'f')},
                         {effGetVstVersion, 0, 0, 2400}, {effGetPlugCategory, 0, 0, 1},
                         {effGetVendorVersion, 0, 0, 1000}, {effGetNumMidiInputChannels, 0, 0, 0},
                         {effCanBeAutomated, -5, 0, 1}, {effSetTotalSampleToProcess, 0, -7, -7},
                         {effSetEditKnobMode, 0, 9, 1}, {effSetBypass, 0, 1, 0},
                         {effGetTailSize, 0, 0, 0}, {effGetChunk, 1, 0, 0}, {effSetChunk, 0, 16, 0},
                         {effGetInputProperties, 0, 0, 0}, {effGetOutputProperties, 2, 0, 0},
                         {effGetProgramNameIndexed, 10, 0, 0}, {effGetProgramNameIndexed, -1, 0, 0},
                         {effGetVu, 1, 1, 0}, {effEditDraw, 1, 1, 0}, {30, 1, 1, 0}, {53, 1, 1, 0},
                         {80, 1, 1, 0}, {INT32_MIN, 1, 1, 0}, {INT32_MAX, 1, 1, 0}}) {
        char scratch[256] = {};
        EXPECT_EQ(plugin->dispatch(c.opcode, c.index, c.value, scratch), c.answer) << c.opcode;
        EXPECT_TRUE(std::all_of(std::begin(scratch), std::end(scratch), [](char b) { return !b; }))
            << "opcode " << c.opcode << " wrote into the buffer";
    }
}

TEST_F(Dispatcher, NullPointersNaNAndProgramsOutsideTheTenChangeNothing)
{
    for (VstInt32 opcode = -2; opcode <= 82; ++opcode) {
        for (VstInt32 index : {-1, 0, 5, 6, 9, 10, 16, 127, 128}) {
            for (VstIntPtr value : {VstIntPtr{-1}, VstIntPtr{0}, VstIntPtr{9}, VstIntPtr{10},
                                    VstIntPtr{1} << 40, -(VstIntPtr{1} << 32) + 3}) {
                // That opcode's value is itself a pointer; only null is a fair test. A null
                // parent window opens the editor without one.
                if (opcode != effClose && (opcode != effGetSpeakerArrangement || value == 0))
                    plugin->dispatch(opcode, index, value, nullptr, kNaN);
            }
        }
    }
    // Only effSetProgram with a valid value changed anything: 9 was the last one; 10, -1, and
    // the values that cut to 32 bits would read 0 and 3 were ignored.
    EXPECT_EQ(plugin->dispatch(effGetProgram), 9);
    EXPECT_EQ(plugin->programName(), "Rotary");
    EXPECT_EQ(plugin->getParameter(5), 7.0f);
}

TEST_F(Dispatcher, GeneralMidiNames)
{
    struct Case {
        VstInt32 channel, program;
        VstIntPtr answer;
        const char* name; // null: nothing written
        int category;
    };
    for (const Case c : {Case{0, 0, 128, "Acoustic Grand Piano", 0}, {3, 6, 128, "Harpsichord", 0},
                         {3, 7, 128, "Clavi", 1}, {15, 87, 128, "Lead 8 (bass + lead)", 10},
                         {0, 127, 128, "Gunshot", 15}, {9, 42, 1, "Standard", 0},
                         {9, 128, 0, nullptr, 0}, {3, -1, 0, nullptr, 0}}) {
        MidiProgramName record;
        std::memset(&record, 0x6B, sizeof record);
        record.thisProgramIndex = c.program;
        EXPECT_EQ(plugin->dispatch(effGetMidiProgramName, c.channel, 0, &record), c.answer);
        if (!c.name) {
            EXPECT_EQ(record.name[0], 0x6B);
            continue;
        }
        EXPECT_STREQ(record.name, c.name);
        EXPECT_EQ(record.parentCategoryIndex, c.category) << c.name;
        EXPECT_EQ(std::tie(record.midiProgram, record.midiBankMsb, record.midiBankLsb),
                  std::make_tuple(char(c.channel == 9 ? 0 : c.program), char{-1}, char{-1}));
        EXPECT_EQ(record.flags, 0);
    }
}

TEST_F(Parameters, NamesLabelsAndValuesStoredAsGiven)
{
    const char* names[] = {"Tremolo Depth", "Tremolo Speed", "Stereo Panner",
                           "Panner Speed",  "Mix",           "Sample Rate"};
    const char* labels[] = {"amount", "amount", "amount", "amount", "percent", "Hz"};
    for (int i = 0; i < 6; ++i) {
        EXPECT_EQ(plugin->parameterName(i), names[i]);
        EXPECT_EQ(plugin->parameterLabel(i), labels[i]);
    }
    for (float value : {0.5f, -0.25f, 3.5f, 1e30f, -1e-40f, kInf}) {
        plugin->setParameter(4, value);
        EXPECT_EQ(plugin->getParameter(4), value);
    }
    plugin->setParameter(0, kNaN);
    EXPECT_TRUE(std::isnan(plugin->getParameter(0)));
    // Unknown indices store nothing, read 0, and leave the host's text buffers as they were.
    for (VstInt32 index : {-1, 6, 1000, INT32_MIN}) {
        plugin->setParameter(index, 0.3f);
        EXPECT_EQ(plugin->getParameter(index), 0.0f);
        char text[64];
        std::memset(text, 'x', sizeof text);
        plugin->dispatch(effGetParamName, index, 0, text);
        plugin->dispatch(effGetParamLabel, index, 0, text);
        EXPECT_EQ(std::string(text, sizeof text), std::string(sizeof text, 'x'));
        EXPECT_EQ(plugin->parameterDisplay(index), "");
    }
    EXPECT_EQ(plugin->getParameter(4), kInf);
}

// The digits of the stored float, truncated, never rounded, in at most eight characters; the
// rate choice is stored as an integer, truncated toward zero.
TEST_F(Parameters, DisplayTextsAndTheRateChoice)
{
    struct Case {
        VstInt32 index;
        float value;
        const char* text;
    };
    for (const Case c : {Case{0, 0.0f, "0.000000"}, {0, 0.2f, "0.200000"}, {0, 1.0f, "1.000000"},
                         {0, -0.5f, "-0.50000"}, {0, 0.174999f, "0.174998"},
                         {1, 123.5f, "123.5000"}, {2, 1234567.0f, "1234567."},
                         {2, 98765432.0f, "8765432."}, {3, -9999999.0f, "-999999."},
                         {3, -2.0e7f, "Huge!"}, {4, 1.0e9f, "Huge!"}, {4, kInf, "Huge!"},
                         {4, -kInf, "Huge!"}, {4, kNaN, "0.000000"}, {4, 1e-30f, "0.000000"},
                         {5, 9.9f, "9"}, {5, 0.5f, "0"}, {5, -3.7f, "-3"},
                         {5, 12345678.0f, "12345678"}, {5, 123456789.0f, "Huge!"},
                         // Values no integer holds store the most negative one, whose display
                         // wraps to "-0"; never undefined behaviour.
                         {5, kNaN, "-0"}, {5, -1e20f, "-0"}}) {
        plugin->setParameter(c.index, c.value);
        char text[32];
        std::memset(text, 0x7F, sizeof text);
        plugin->dispatch(effGetParamDisplay, c.index, 0, text);
        EXPECT_STREQ(text, c.text) << c.index << " = " << c.value;
        for (size_t i = kVstMaxParamStrLen + 1; i < sizeof text; ++i)
            ASSERT_EQ(text[i], 0x7F) << "written past nine bytes for " << c.value;
        if (c.index == 5) {
            const bool fits = std::isfinite(c.value) && std::fabs(c.value) < 2e9f;
            EXPECT_EQ(plugin->getParameter(5), fits ? std::trunc(c.value) : -2147483648.0f);
        }
    }
}

TEST_F(Parameters, EditsGoIntoTheCurrentProgramAndSwitchesRestoreTheOthers)
{
    EXPECT_EQ(plugin->dispatch(effGetProgram), 0);
    EXPECT_EQ(plugin->getParameter(5), 7.0f); // the 44.1 kHz choice
    plugin->dispatch(effSetProgram, 0, 1);
    plugin->setParameter(0, 0.3f);
    plugin->setParameter(5, 9.0f);
    for (int program = 9; program >= 0; --program) {
        plugin->dispatch(effSetProgram, 0, program);
        EXPECT_EQ(plugin->dispatch(effGetProgram), program);
        EXPECT_EQ(plugin->programName(), kFactory[program].first);
        EXPECT_EQ(plugin->programNameIndexed(program), kFactory[program].first);
        std::vector<float> values = kFactory[program].second;
        if (program == 1)
            values[0] = 0.3f;
        for (int i = 0; i < 5; ++i)
            EXPECT_EQ(plugin->getParameter(i), values[i]) << program << "/" << i;
        EXPECT_EQ(plugin->getParameter(5), 9.0f); // not part of a program switch
    }
}

TEST_F(Parameters, ProgramNamesAreBoundedToTwentyFourCharacters)
{
    char name[40];
    std::memset(name, 0x11, sizeof name);
    plugin->dispatch(effSetProgram, 0, 3);
    std::string longName = "abcdefghijklmnopqrstuvwxyz0123";
    plugin->dispatch(effSetProgramName, 0, 0, longName.data());
    plugin->dispatch(effGetProgramName, 0, 0, name);
    EXPECT_EQ(std::string(name), longName.substr(0, 24));
    EXPECT_EQ(name[25], 0x11);
    EXPECT_EQ(plugin->programNameIndexed(3), longName.substr(0, 24));
    EXPECT_EQ(plugin->dispatch(effGetProgramNameIndexed, 4, 7, name), 1); // category ignored
    EXPECT_STREQ(name, "Undulate");
}

// The panel raises the flag around its own writes so that they are not echoed back to it;
// automation arriving on another thread meanwhile must still be shown.
TEST(PanelUpdateFlag, ReadsRaisedOnlyOnTheThreadThatRaisedIt)
{
    PanelUpdateFlag flag;
    EXPECT_FALSE(flag);
    flag = true;
    EXPECT_TRUE(flag);
    bool seenElsewhere = true;
    std::thread([&] { seenElsewhere = flag.load(); }).join();
    EXPECT_FALSE(seenElsewhere);
    flag = false;
    EXPECT_FALSE(flag.load());
}
