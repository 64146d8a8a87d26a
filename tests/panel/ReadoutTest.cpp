// The value readout: its texts in a musician's units, the speeds as fast as the engine really
// turns, and when the panel shows it and how it leaves the panel.
#include <gtest/gtest.h>

#include <cmath>
#include <tuple>

#include "engine/EngineSettings.h"
#include "engine/ModulationEngine.h"
#include "engine/SineTables.h"
#include "panel/OscillatorRate.h"
#include "panel/ReadoutText.h"
#include "panel/ValueReadout.h"
#include "tests/panel/PanelFixture.h"

namespace {

using namespace panel_test;

TEST(ReadoutText, SaysEachParameterInAMusiciansUnitsAtTheTuningAndSampleRateInUse)
{
    const float nan = std::nanf("");
    // Speeds by hand: 0.175 steps 1.75 entries a frame (exact on every grid), so 44100 * 1.75 /
    // 18002 cycles a second; tuned for 96 kHz (choice 10) and run at 96 kHz it is the same rate.
    const std::tuple<int32_t, float, float, float, ReadoutText> table[] = {
        {kTremoloDepth, 0.635f, 7, 44100, {"Tremolo Depth", "63.5 %"}},
        {kStereoPanner, 0.0f, 7, 44100, {"Stereo Panner", "0.0 %"}},
        {kMix, 1.0f, 7, 44100, {"Mix", "100.0 %"}},
        {kMix, nan, 7, 44100, {"Mix", "0.0 %"}},                   // the engine runs it as 0
        {kTremoloDepth, 250.0f, 7, 44100, {"Tremolo Depth", "10000.0 %"}}, // and limits it
        {kTremoloSpeed, 0.175f, 7, 44100, {"Tremolo Speed", "4.29 Hz"}},
        {kTremoloSpeed, 0.175f, 7, 96000, {"Tremolo Speed", "9.33 Hz"}},
        {kTremoloSpeed, 0.175f, 10, 96000, {"Tremolo Speed", "4.29 Hz"}},
        {kTremoloSpeed, 1.0f, 7, 44100, {"Tremolo Speed", "24.5 Hz"}},
        {kTremoloSpeed, 0.0f, 7, 44100, {"Tremolo Speed", "0 Hz"}},
        {kTremoloSpeed, -1.0f, 7, 44100, {"Tremolo Speed", "0 Hz"}},
        {kTremoloSpeed, nan, 7, 44100, {"Tremolo Speed", "0 Hz"}},
        {kTremoloSpeed, 0.5f, 7, 0.0f, {"Tremolo Speed", "? Hz"}}, // no rate from the host
        {kPannerSpeed, 1.0f, 7, 44100, {"Panner Speed", "12.2 Hz"}},
        {kPannerSpeed, 0.275f, 8, 48000, {"Panner Speed", "3.37 Hz"}},
        {kPannerSpeed, 0.05f, 7, 44100, {"Panner Speed", "0.612 Hz"}},
        {kSampleRate, 7.0f, 7, 44100, {"Sample Rate", "44.1 kHz"}},
        {kSampleRate, 8.0f, 7, 44100, {"Sample Rate", "48 kHz"}},
        {kSampleRate, 9.7f, 7, 44100, {"Sample Rate", "88.2 kHz"}},
        {kSampleRate, 10.0f, 7, 44100, {"Sample Rate", "96 kHz"}},
        {kSampleRate, 0.5f, 7, 44100, {"Sample Rate", "44.1 kHz"}}, // what the engine tunes for
        {6, 0.5f, 7, 44100, {}},
        {-1, 0.5f, 7, 44100, {}},
    };
    for (const auto& [parameter, value, choice, rate, expected] : table)
        EXPECT_EQ(readoutText(parameter, value, choice, rate), expected)
            << parameter << " " << value << " " << choice << " " << rate;
}

// Cycles a second the engine really turns at, counted from its tremolo phase over whole blocks.
double countedTremoloRate(float speed, int32_t rateChoice, double sampleRate, int cycles)
{
    ModulationEngine engine;
    const EngineSettings settings = {1.0f, speed, 0.0f, 0.0f, 1.0f, rateChoice};
    constexpr int32_t kBlock = 1024; // short enough that a block wraps at most once
    std::vector<float> silence(kBlock), out(kBlock);
    int wraps = 0;
    int64_t frames = 0;
    while (wraps < cycles) {
        const float before = engine.tremoloPhase;
        engine.process(silence.data(), silence.data(), out.data(), out.data(), kBlock, settings);
        frames += kBlock;
        wraps += engine.tremoloPhase < before;
    }
    const double turned = wraps + double{engine.tremoloPhase} / sine_tables::kTremoloLength;
    return turned * sampleRate / static_cast<double>(frames);
}

TEST(OscillatorRate, IsTheRateTheEngineTurnsAtNotTheNominalOne)
{
    const std::tuple<float, int32_t, int> cases[] = {
        {0.001f, 7, 2}, {0.0037f, 9, 2}, {0.174999f, 7, 40}, {0.63499f, 10, 40}, {1.0f, 8, 60}};
    for (const auto& [speed, choice, cycles] : cases) {
        const float increment = blockSettings({1.0f, speed, 0.0f, 0.0f, 1.0f, choice}).tremoloIncrement;
        const double rate = cyclesPerSecond(increment, sine_tables::kTremoloLength, 44100.0);
        EXPECT_NEAR(rate / countedTremoloRate(speed, choice, 44100.0, cycles), 1.0, 1e-3)
            << speed << " " << choice;
    }
    // The slowest knob value: its steps lose almost 2 % to the phase's grid near the table's
    // end, which the nominal increment / length misses.
    const double nominal = 0.01 * 44100.0 / sine_tables::kTremoloLength;
    EXPECT_LT(cyclesPerSecond(0.01f, sine_tables::kTremoloLength, 44100.0), nominal * 0.985);
    // Steps that round to nothing near the end stop the oscillator there for good.
    EXPECT_EQ(cyclesPerSecond(0.0009f, sine_tables::kTremoloLength, 44100.0), 0.0);
}

class Readout : public Panel {
protected:
    using Clock = ReadoutTiming::Clock;

    void SetUp() override
    {
        Panel::SetUp();
        // As the host would have shown them, so that a panel built afresh and updated the same
        // way is the one to compare with.
        for (int32_t index = 0; index < kNumParameters; ++index)
            panel->updateView(index, effect.values[static_cast<size_t>(index)]);
        draw();
    }
    const ValueReadout& readout() { return *panel->knobView()->readout(); }
    void draw() { Renderer::render(canvas.cr.get(), *panel); }
    void idleAt(int milliseconds)
    {
        panel->idle(Clock::time_point{} + std::chrono::milliseconds(milliseconds));
        draw();
    }
    void moveTo(Point p)
    {
        MouseTracker::move(*panel, p);
        draw();
    }
    ReadoutText textOf(int32_t parameter)
    {
        return readoutText(parameter, effect.values[static_cast<size_t>(parameter)],
                           effect.values[kSampleRate], effect.rate);
    }
    // Whether the canvas shows exactly what a panel built afresh over the same values shows.
    testing::AssertionResult looksNew()
    {
        HalvoUiView10 fresh(HalvoUiView10::kFrame, &effect);
        fresh.awakeFromNib();
        for (int32_t index = 0; index < kNumParameters; ++index)
            fresh.updateView(index, effect.values[static_cast<size_t>(index)]);
        Canvas expected(253, 400);
        Renderer::renderAll(expected.cr.get(), fresh);
        int wrong = 0;
        for (int y = 0; y < 400; ++y)
            for (int x = 0; x < 253; ++x)
                wrong += canvas(x, y) != expected(x, y);
        if (wrong > 0)
            return testing::AssertionFailure() << wrong << " pixels differ";
        return testing::AssertionSuccess();
    }
};

TEST_F(Readout, ShowsAboveTheDraggedKnobFromPressToReleaseAndThenLeavesNoTrace)
{
    const Point start = middle(knob(1));
    MouseTracker mouse;
    mouse.press(*panel, start);
    draw();
    EXPECT_FALSE(readout().isHidden());
    EXPECT_EQ(readout().text(), textOf(kTremoloSpeed));
    EXPECT_GE(readout().frame().y, knob(1)->frame().maxY()); // above the knob, not over it
    EXPECT_FALSE(looksNew());
    mouse.drag({start.x, start.y + 30});
    draw();
    EXPECT_EQ(effect.values[kTremoloSpeed], 0.23f);
    EXPECT_EQ(readout().text(), textOf(kTremoloSpeed)); // the value written
    mouse.release({start.x, start.y + 30});
    draw();
    EXPECT_TRUE(readout().isHidden());
    EXPECT_TRUE(looksNew());
    // The pointer has not moved since: resting shows nothing.
    idleAt(1000);
    idleAt(3000);
    EXPECT_TRUE(readout().isHidden());
}

TEST_F(Readout, ShowsAfterAHalfSecondRestOverAControlAndGoesWhenThePointerLeavesIt)
{
    moveTo(middle(knob(3)));
    idleAt(1000); // the rest starts at the idle after the motion
    idleAt(1499);
    EXPECT_TRUE(readout().isHidden());
    idleAt(1500);
    EXPECT_FALSE(readout().isHidden());
    EXPECT_EQ(readout().text(), textOf(kPannerSpeed));

    // Another control: gone at once, back after its own rest, moved over the mix knob.
    moveTo(middle(knob(4)));
    EXPECT_TRUE(readout().isHidden());
    idleAt(2000);
    idleAt(2600);
    EXPECT_EQ(readout().text(), textOf(kMix));
    // The mouse passes through the readout to the panner speed knob beneath its corner.
    ASSERT_TRUE(readout().frame().contains({160, 140}));
    ASSERT_TRUE(knob(3)->frame().contains({160, 140}));
    MouseTracker mouse;
    mouse.press(*panel, {160, 140});
    mouse.release({160, 140});
    EXPECT_EQ(effect.gestures, "+3-3");

    // A rate button speaks of the rate it chooses.
    moveTo(middle(rateButton(1)));
    idleAt(3000);
    idleAt(3500);
    EXPECT_EQ(readout().text(), (ReadoutText{"Sample Rate", "48 kHz"}));
    // Automation while it shows: the readout follows at the next idle.
    moveTo(middle(knob(0)));
    idleAt(4000);
    idleAt(4500);
    effect.values[kTremoloDepth] = 0.25f;
    idleAt(4520);
    EXPECT_EQ(readout().text(), textOf(kTremoloDepth));

    MouseTracker::leave(*panel);
    draw();
    EXPECT_TRUE(readout().isHidden());
    panel->updateView(kTremoloDepth, 0.25f);
    draw();
    EXPECT_TRUE(looksNew());
}

} // namespace
