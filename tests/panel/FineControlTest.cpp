// Our own knob gestures, offscreen: the wheel, the Shift drag and the double-click each write
// their knob's parameter alone, to the thousandth, as one gesture; the knob shows the frame
// nearest to the value; plain drags keep their rules around them.
#include <gtest/gtest.h>

#include "engine/FactoryPrograms.h"
#include "tests/panel/PanelFixture.h"

namespace {

using namespace panel_test;
using Writes = std::vector<RecordingEffect::Write>;

class FineControl : public Panel {
protected:
    void scroll(const View* control, int notches, bool shift = false)
    {
        MouseTracker::scroll(*panel, middle(control), notches, shift);
        Renderer::render(canvas.cr.get(), *panel);
    }
    // Two presses and releases on the spot, the second counted as completing a double-click;
    // then the pointer is dragged by rise points before the last release.
    void doubleClick(const View* control, double rise = 0)
    {
        const Point p = middle(control);
        MouseTracker mouse;
        mouse.press(*panel, p);
        mouse.release(p);
        mouse.press(*panel, p, false, 2);
        mouse.drag({p.x, p.y + rise});
        mouse.release({p.x, p.y + rise});
        Renderer::render(canvas.cr.get(), *panel);
    }
    void takeWrites()
    {
        effect.writes.clear();
        effect.gestures.clear();
    }
};

TEST_F(FineControl, TheWheelMovesOnlyItsKnobAHundredthOrWithShiftAThousandthANotch)
{
    scroll(knob(1), 1); // 0.123 up to the next hundredth
    EXPECT_EQ(effect.writes, (Writes{{1, 0.13f}}));
    EXPECT_EQ(effect.gestures, "+1-1");
    EXPECT_EQ(step(1), 13);
    // The nearest frame to 0.13 is 17 (16.51 of 127), one past plain step 13's frame 16.
    EXPECT_TRUE(shows(canvas, *knob(1), knobFrame(17)));
    takeWrites();
    scroll(knob(1), -1, true);
    scroll(knob(1), -3);
    EXPECT_EQ(effect.writes, (Writes{{1, 0.129f}, {1, 0.10f}}));
    EXPECT_EQ(effect.gestures, "+1-1+1-1");
    // At the ends nothing moves, nothing is written and no gesture is told.
    takeWrites();
    scroll(knob(4), 2);
    effect.values[kTremoloDepth] = 0.0f;
    scroll(knob(0), -1, true);
    EXPECT_TRUE(effect.writes.empty());
    EXPECT_EQ(effect.gestures, "");
}

TEST_F(FineControl, AShiftDragGoesTenTimesFinerToTheThousandthAndPlainDragsStillRoundEveryKnob)
{
    std::vector<double> rises;
    for (int rise = 1; rise <= 30; ++rise)
        rises.push_back(rise);
    drag(knob(2), rises, true); // from 0.57: a thousandth every 2.7 points, 11 in 30
    Writes expected;
    for (int thousandths = 571; thousandths <= 581; ++thousandths)
        expected.emplace_back(2, thousandths / 1000.0f);
    EXPECT_EQ(effect.writes, expected);
    EXPECT_EQ(effect.gestures, "+2-2");
    Renderer::render(canvas.cr.get(), *panel);
    EXPECT_TRUE(shows(canvas, *knob(2), knobFrame(74))); // 73.8 of 127

    // A factory value such as 0.175 is dialled back by hand.
    effect.values[kTremoloSpeed] = 0.17f;
    drag(knob(1), {14}, true);
    EXPECT_EQ(effect.values[kTremoloSpeed], 0.175f);
    drag(knob(1), {-3e9}, true); // far below: stops at 0
    EXPECT_EQ(effect.values[kTremoloSpeed], 0.0f);

    // A plain drag of another knob writes all five as their knobs' steps show them, as always:
    // 0.581 goes back to 0.58.
    takeWrites();
    drag(knob(0), {3});
    EXPECT_EQ(effect.writes,
              (Writes{{0, 0.51f}, {2, 0.58f}, {1, 0.0f}, {3, 0.98f}, {4, 1.0f}}));
}

TEST_F(FineControl, ADoubleClickResetsItsKnobToTheCurrentProgramsFactoryValue)
{
    effect.program = 2;
    doubleClick(knob(4), 50); // the drag after the second press does nothing
    EXPECT_EQ(effect.writes, (Writes{{4, factoryValue(2, kMix)}}));
    EXPECT_EQ(effect.gestures, "+4-4+4-4"); // the first click is a gesture writing nothing
    EXPECT_TRUE(shows(canvas, *knob(4), knobFrame(69))); // 0.545: 69.2 of 127

    takeWrites();
    for (int32_t program : {-1, kNumPrograms}) {
        effect.program = program;
        doubleClick(knob(4));
    }
    EXPECT_TRUE(effect.writes.empty());
}

} // namespace
