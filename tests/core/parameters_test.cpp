// Parameters and programs as a host reads and writes them: values, names, labels, display texts.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <string>

#include "tests/harness/TestHost.h"

using test_host::createEffect;

namespace {

class Parameters : public ::testing::Test {
protected:
    void SetUp() override
    {
        plugin = createEffect();
        ASSERT_TRUE(plugin);
    }
    std::string display(VstInt32 index, float value)
    {
        plugin->setParameter(index, value);
        return plugin->parameterDisplay(index);
    }
    std::unique_ptr<VstPlugin> plugin;
};

struct Factory {
    const char* name;
    float values[5];
};

// Written out again here, as a host's preset list would show them.
const Factory kFactory[10] = {
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

TEST_F(Parameters, NamesAndLabels)
{
    const char* names[] = {"Tremolo Depth", "Tremolo Speed", "Stereo Panner",
                           "Panner Speed",  "Mix",           "Sample Rate"};
    const char* labels[] = {"amount", "amount", "amount", "amount", "percent", "Hz"};
    for (int i = 0; i < 6; ++i) {
        EXPECT_EQ(plugin->parameterName(i), names[i]);
        EXPECT_EQ(plugin->parameterLabel(i), labels[i]);
    }
    // Unknown indices leave the host's buffer as it was.
    for (VstInt32 index : {-1, 6, 1000}) {
        char text[64];
        std::memset(text, 'x', sizeof text);
        plugin->dispatch(effGetParamName, index, 0, text);
        plugin->dispatch(effGetParamLabel, index, 0, text);
        EXPECT_EQ(text[0], 'x');
        EXPECT_EQ(text[63], 'x');
    }
}

TEST_F(Parameters, StartsAsTheFirstProgramWithTheFirstRateChoice)
{
    EXPECT_EQ(plugin->dispatch(effGetProgram), 0);
    EXPECT_EQ(plugin->programName(), "Wurli Classic");
    for (int i = 0; i < 5; ++i)
        EXPECT_EQ(plugin->getParameter(i), kFactory[0].values[i]) << i;
    EXPECT_EQ(plugin->getParameter(5), 7.0f);
}

TEST_F(Parameters, ValuesAreStoredAsGivenAndOutOfRangeIndicesAreIgnored)
{
    for (float value : {0.5f, 0.0f, 1.0f, -0.25f, 3.5f, 1e30f, -1e-40f}) {
        plugin->setParameter(4, value);
        EXPECT_EQ(plugin->getParameter(4), value);
    }
    plugin->setParameter(0, std::numeric_limits<float>::quiet_NaN());
    EXPECT_TRUE(std::isnan(plugin->getParameter(0)));

    plugin->setParameter(4, 0.5f);
    for (VstInt32 index : {-1, 6, 100, INT32_MIN}) {
        plugin->setParameter(index, 0.3f);
        EXPECT_EQ(plugin->getParameter(index), 0.0f);
    }
    EXPECT_EQ(plugin->getParameter(4), 0.5f);
    EXPECT_EQ(plugin->parameterDisplay(6), "");
}

TEST_F(Parameters, RateChoiceIsStoredAsATruncatedInteger)
{
    EXPECT_EQ(display(5, 9.9f), "9");
    EXPECT_EQ(plugin->getParameter(5), 9.0f);
    EXPECT_EQ(display(5, 0.5f), "0");
    EXPECT_EQ(plugin->getParameter(5), 0.0f);
    EXPECT_EQ(display(5, 10.0f), "10");
    EXPECT_EQ(display(5, -3.7f), "-3");
    EXPECT_EQ(plugin->getParameter(5), -3.0f);
    EXPECT_EQ(display(5, 123456789.0f), "Huge!");
    EXPECT_EQ(display(5, 12345678.0f), "12345678");
    // Values no integer holds are stored as the most negative one, never undefined behaviour.
    EXPECT_EQ(display(5, std::numeric_limits<float>::quiet_NaN()), "-0");
    EXPECT_EQ(display(5, -1e20f), "-0");
}

TEST_F(Parameters, DisplayTextsTruncateTheDigitsOfTheStoredFloat)
{
    EXPECT_EQ(display(0, 0.0f), "0.000000");
    EXPECT_EQ(display(0, 0.2f), "0.200000");
    EXPECT_EQ(display(0, 0.75f), "0.750000");
    EXPECT_EQ(display(0, 1.0f), "1.000000");
    EXPECT_EQ(display(0, -0.5f), "-0.50000");
    EXPECT_EQ(display(0, 0.174999f), "0.174998");
    EXPECT_EQ(display(1, 123.5f), "123.5000");
    EXPECT_EQ(display(2, 1234567.0f), "1234567.");
    EXPECT_EQ(display(2, 98765432.0f), "8765432."); // only the lowest seven digits fit
    EXPECT_EQ(display(3, -9999999.0f), "-999999.");
    EXPECT_EQ(display(3, -2.0e7f), "Huge!");
    EXPECT_EQ(display(4, 1.0e9f), "Huge!");
    EXPECT_EQ(display(4, std::numeric_limits<float>::infinity()), "Huge!");
    EXPECT_EQ(display(4, -std::numeric_limits<float>::infinity()), "Huge!");
    EXPECT_EQ(display(4, std::numeric_limits<float>::quiet_NaN()), "0.000000");
    EXPECT_EQ(display(4, 1e-30f), "0.000000");
}

TEST_F(Parameters, DisplayTextsNeverWritePastNineBytes)
{
    for (float value : {0.123456f, -0.5f, 123.5f, 1.0e9f, -9999999.0f, 12345678.0f}) {
        for (VstInt32 index = 0; index < 6; ++index) {
            plugin->setParameter(index, value);
            char text[32];
            std::memset(text, 0x7F, sizeof text);
            plugin->dispatch(effGetParamDisplay, index, 0, text);
            EXPECT_LE(strnlen(text, sizeof text), 8u);
            for (size_t i = 9; i < sizeof text; ++i)
                ASSERT_EQ(text[i], 0x7F) << "index " << index << " value " << value;
        }
    }
}

TEST_F(Parameters, EveryChangeIsWrittenIntoTheCurrentProgram)
{
    plugin->dispatch(effSetProgram, 0, 1);
    plugin->setParameter(0, 0.3f);
    plugin->dispatch(effSetProgram, 0, 2);
    EXPECT_EQ(plugin->getParameter(0), kFactory[2].values[0]);
    plugin->dispatch(effSetProgram, 0, 1);
    EXPECT_EQ(plugin->getParameter(0), 0.3f);
}

TEST_F(Parameters, ProgramSwitchesRestoreEveryFactoryProgramButKeepTheRateChoice)
{
    plugin->setParameter(5, 9.0f);
    for (int program = 9; program >= 0; --program) {
        plugin->dispatch(effSetProgram, 0, program);
        EXPECT_EQ(plugin->dispatch(effGetProgram), program);
        EXPECT_EQ(plugin->programName(), kFactory[program].name);
        for (int i = 0; i < 5; ++i)
            EXPECT_EQ(plugin->getParameter(i), kFactory[program].values[i]) << program << "/" << i;
        EXPECT_EQ(plugin->getParameter(5), 9.0f);
    }
}

TEST_F(Parameters, ProgramNamesAreBoundedToTwentyFourCharacters)
{
    for (int i = 0; i < 10; ++i)
        EXPECT_EQ(plugin->programNameIndexed(i), kFactory[i].name);
    char untouched[40];
    std::memset(untouched, 'q', sizeof untouched);
    for (VstInt32 index : {10, -1, 1 << 20})
        EXPECT_EQ(plugin->dispatch(effGetProgramNameIndexed, index, 0, untouched), 0);
    EXPECT_EQ(untouched[0], 'q');
    EXPECT_EQ(plugin->dispatch(effGetProgramNameIndexed, 4, 7, untouched), 1); // category ignored
    EXPECT_STREQ(untouched, "Undulate");

    plugin->dispatch(effSetProgram, 0, 3);
    std::string longName = "abcdefghijklmnopqrstuvwxyz0123";
    plugin->dispatch(effSetProgramName, 0, 0, longName.data());
    char name[40];
    std::memset(name, 0x11, sizeof name);
    plugin->dispatch(effGetProgramName, 0, 0, name);
    EXPECT_EQ(std::string(name), longName.substr(0, 24));
    EXPECT_EQ(name[25], 0x11);
    EXPECT_EQ(plugin->programNameIndexed(3), longName.substr(0, 24));
    EXPECT_EQ(plugin->programNameIndexed(4), "Undulate");

    std::string shortName = "Mine";
    plugin->dispatch(effSetProgramName, 0, 0, shortName.data());
    EXPECT_EQ(plugin->programName(), "Mine");
    for (int i : {0, 1, 2, 4, 9})
        EXPECT_EQ(plugin->programNameIndexed(i), kFactory[i].name);
}

TEST_F(Parameters, ProgramChangeKeepsOldRateInTheRecordItWasSetIn)
{
    plugin->dispatch(effSetProgram, 0, 2);
    plugin->setParameter(5, 9.0f);
    plugin->dispatch(effSetProgram, 0, 4);
    EXPECT_EQ(plugin->getParameter(5), 9.0f);
    plugin->setParameter(5, 8.0f);
    plugin->dispatch(effSetProgram, 0, 2);
    EXPECT_EQ(plugin->getParameter(5), 8.0f);
}
