// General MIDI program and category names as a host asks for them.
#include <gtest/gtest.h>

#include <cstring>

#include "tests/harness/TestHost.h"

using test_host::createEffect;

namespace {

class MidiNames : public ::testing::Test {
protected:
    void SetUp() override { plugin = createEffect(); }

    VstIntPtr programName(VstInt32 channel, VstInt32 program, MidiProgramName& record)
    {
        std::memset(&record, 0x6B, sizeof record);
        record.thisProgramIndex = program;
        return plugin->dispatch(effGetMidiProgramName, channel, 0, &record);
    }
    std::unique_ptr<VstPlugin> plugin;
};

} // namespace

TEST_F(MidiNames, ProgramNamesOnAMelodicChannel)
{
    MidiProgramName record;
    struct Case {
        int program;
        const char* name;
        int category;
    };
    for (const Case c : {Case{0, "Acoustic Grand Piano", 0}, Case{6, "Harpsichord", 0},
                         Case{7, "Clavi", 1}, Case{31, "Guitar harmonics", 3},
                         Case{50, "SynthStrings 1", 6}, Case{62, "SynthBrass 1", 7},
                         Case{87, "Lead 8 (bass + lead)", 10}, Case{109, "Bag pipe", 13},
                         Case{111, "Shanai", 13}, Case{127, "Gunshot", 15}}) {
        EXPECT_EQ(programName(0, c.program, record), 128);
        EXPECT_STREQ(record.name, c.name);
        EXPECT_EQ(record.midiProgram, c.program);
        EXPECT_EQ(record.parentCategoryIndex, c.category) << c.name;
        EXPECT_EQ(record.midiBankMsb, -1);
        EXPECT_EQ(record.midiBankLsb, -1);
        EXPECT_EQ(record.reserved, 0);
        EXPECT_EQ(record.flags, 0);
        EXPECT_EQ(record.thisProgramIndex, c.program);
    }
}

TEST_F(MidiNames, TheDrumChannelHasOneKit)
{
    MidiProgramName record;
    for (int program : {0, 42, 127}) {
        EXPECT_EQ(programName(9, program, record), 1);
        EXPECT_STREQ(record.name, "Standard");
        EXPECT_EQ(record.midiProgram, 0);
        EXPECT_EQ(record.parentCategoryIndex, 0);
    }
    EXPECT_EQ(programName(9, 128, record), 0);
}

TEST_F(MidiNames, ProgramNumbersOutsideTheSetWriteNothing)
{
    MidiProgramName record;
    for (int program : {128, -1, 1 << 30}) {
        EXPECT_EQ(programName(3, program, record), 0);
        EXPECT_EQ(record.name[0], 0x6B);
        EXPECT_EQ(record.flags, 0x6B6B6B6B);
    }
}

TEST_F(MidiNames, Categories)
{
    MidiProgramCategory record;
    const char* names[17] = {"Piano", "Percussion", "Organ", "Guitar", "Bass", "Strings",
                             "Ensemble", "Brass", "Reed", "Pipe", "Synth Lead", "SynthPad",
                             "Synth Effects", "Ethnic", "Percussive", "Effects", "DrumSets"};
    for (int category = 0; category < 17; ++category) {
        std::memset(&record, 0x6B, sizeof record);
        record.thisCategoryIndex = category;
        EXPECT_EQ(plugin->dispatch(effGetMidiProgramCategory, 3, 0, &record), 17);
        EXPECT_STREQ(record.name, names[category]);
        EXPECT_EQ(record.parentCategoryIndex, -1);
        EXPECT_EQ(record.flags, 0);
    }
    for (int category : {17, -1}) {
        record.thisCategoryIndex = category;
        EXPECT_EQ(plugin->dispatch(effGetMidiProgramCategory, 3, 0, &record), 17);
        EXPECT_STREQ(record.name, "");
    }
    EXPECT_EQ(plugin->dispatch(effGetMidiProgramCategory, 9, 0, &record), 1);
    EXPECT_STREQ(record.name, "Drums");
}

TEST_F(MidiNames, CurrentProgramIsTheFirstOnEveryChannel)
{
    MidiProgramName record;
    for (int channel = 0; channel < 16; ++channel) {
        std::memset(&record, 0x6B, sizeof record);
        EXPECT_EQ(plugin->dispatch(effGetCurrentMidiProgram, channel, 0, &record), 0);
        EXPECT_EQ(record.thisProgramIndex, 0);
        EXPECT_STREQ(record.name, channel == 9 ? "Standard" : "Acoustic Grand Piano");
    }
    for (int channel : {16, -1, 1000})
        EXPECT_EQ(plugin->dispatch(effGetCurrentMidiProgram, channel, 0, &record), -1);
    EXPECT_EQ(plugin->dispatch(effGetCurrentMidiProgram, 0, 0, nullptr), -1);
}

TEST_F(MidiNames, KeysHaveNoNamesAndNothingChanges)
{
    MidiKeyName key;
    std::memset(&key, 0x6B, sizeof key);
    EXPECT_EQ(plugin->dispatch(effGetMidiKeyName, 9, 0, &key), 0);
    EXPECT_EQ(key.keyName[0], 0);
    EXPECT_EQ(key.reserved, 0);
    EXPECT_EQ(key.flags, 0);
    for (int channel : {0, 9, 15, 16, -1})
        EXPECT_EQ(plugin->dispatch(effHasMidiProgramsChanged, channel), 0);
}
