// Values between the panel and the effect, driven by synthetic mouse events through the view
// layer as a window would deliver them.
#include <gtest/gtest.h>

#include "panel/FlatKnob10.h"
#include "panel/HalvoCustomGroupButton10.h"
#include "platform/Renderer.h"
#include "tests/panel/PanelTestSupport.h"

namespace {

class PanelRouting : public ::testing::Test {
protected:
    void SetUp() override
    {
        effect.values[0] = 0.5f;
        effect.values[1] = 0.123f;
        effect.values[2] = 0.25f;
        effect.values[3] = 0.0f;
        effect.values[4] = 0.5f;
        effect.values[5] = 10.0f;
        panel = makePanel(&effect);
        ASSERT_TRUE(effect.writes.empty()); // building reads, never writes
    }

    FlatKnob10* knob(int32_t parameter) { return panel->knobView()->knobForParameter(parameter); }
    ControlPoint10* overlay(int32_t parameter) { return knob(parameter)->controlPoint(); }
    // A point of a knob, given in the knob's own coordinates, as a panel point.
    Point onKnob(int32_t parameter, double x, double y)
    {
        const Rect& f = knob(parameter)->frame();
        return {f.x + x, f.y + y};
    }
    Point onRateButton(size_t i)
    {
        const Rect& f = panel->knobView()->rateButtons()[i]->frame();
        return {f.x + 6.5, f.y + 6.5};
    }
    std::vector<int32_t> selectedButtons()
    {
        std::vector<int32_t> selected;
        for (auto* button : panel->knobView()->rateButtons())
            if (button->imageState() != 0)
                selected.push_back(button->buttonType());
        return selected;
    }

    RecordingEffect effect;
    std::unique_ptr<HalvoUiView10> panel;
};

TEST_F(PanelRouting, TheWorkedExampleReportsOnceAndNotAgainForTheSameStep)
{
    ControlPoint10* mix = overlay(4);
    mix->setCurrentAngle(85);
    mix->setPreviousValue(50);
    dragOn(*panel, onKnob(4, 24, 20), {onKnob(4, 24, 21)});
    EXPECT_EQ(mix->ReturnValue(), 51);
    ASSERT_EQ(effect.writes.size(), 5u);
    EXPECT_EQ(effect.writes[4].index, 4);
    EXPECT_EQ(effect.writes[4].value, 0.51f);

    effect.writes.clear();
    mix->setCurrentAngle(85);
    mix->setPreviousValue(51);
    Canvas canvas(253, 400);
    Renderer::render(canvas.context(), *panel);
    dragOn(*panel, onKnob(4, 24, 20), {onKnob(4, 24, 20)});
    EXPECT_EQ(mix->ReturnValue(), 51); // 51.33, the step reported last
    EXPECT_TRUE(effect.writes.empty());
    EXPECT_FALSE(panel->needsDisplayAnywhere()); // and no redisplay either
    EXPECT_EQ(mix->currentDraggedAngle(), 85.0f); // the raw angle, not snapped
}

TEST_F(PanelRouting, FromStepZeroThreePointsUpReportAStepAndTwoDoNot)
{
    ControlPoint10* depth = overlay(0);
    depth->setCurrentAngle(225);
    depth->setPreviousValue(0);
    dragOn(*panel, onKnob(0, 24, 10), {onKnob(0, 24, 12)});
    EXPECT_TRUE(effect.writes.empty());
    EXPECT_EQ(depth->currentAngle(), 223); // the raw angle, truncated, is the next start
    depth->setCurrentAngle(225);
    dragOn(*panel, onKnob(0, 24, 10), {onKnob(0, 24, 13)});
    EXPECT_EQ(depth->ReturnValue(), 1);
    ASSERT_EQ(effect.writes.size(), 5u);
    EXPECT_EQ(effect.writes[0].value, 0.01f);
}

TEST_F(PanelRouting, OneStepWritesAllFiveKnobsInTheOrder02134MarkedAsThePanels)
{
    // Tremolo depth rests at step 50 (88.6 degrees, a drag start of 88); three points up reach
    // 51, the first two points report nothing.
    dragOn(*panel, onKnob(0, 24, 24), {onKnob(0, 24, 25), onKnob(0, 24, 26), onKnob(0, 24, 27)});
    ASSERT_EQ(effect.writes.size(), 5u);
    const int32_t order[] = {0, 2, 1, 3, 4};
    const float values[] = {0.51f, 0.25f, 0.12f, 0.0f, 0.5f};
    for (size_t i = 0; i < 5; ++i) {
        EXPECT_EQ(effect.writes[i].index, order[i]);
        EXPECT_EQ(effect.writes[i].value, values[i]); // 0.123 comes back as 0.12
        EXPECT_TRUE(effect.writes[i].inPanelUpdate);
    }
    EXPECT_FALSE(effect.inPanelUpdate.load());
}

TEST_F(PanelRouting, ADragStartsFromTheStepShownAndGoesOnStepByStep)
{
    // A fresh knob at step 50 must not jump to 51 at the first motion.
    dragOn(*panel, onKnob(4, 24, 24), {onKnob(4, 24, 24), onKnob(4, 24, 25)});
    EXPECT_TRUE(effect.writes.empty());
    EXPECT_EQ(overlay(4)->ReturnValue(), 50);

    std::vector<Point> path;
    for (int y = 1; y <= 30; ++y)
        path.push_back(onKnob(4, 24, 24 + y));
    dragOn(*panel, onKnob(4, 24, 24), path);
    EXPECT_EQ(overlay(4)->ReturnValue(), 61);
    // Eleven steps, each reported once with all five knobs.
    EXPECT_EQ(effect.writes.size(), 11u * 5u);
    EXPECT_EQ(effect.values[4], 0.61f);
}

TEST_F(PanelRouting, ADragToTheTopWrites1AndShowsFrame125)
{
    dragOn(*panel, onKnob(4, 24, 24), {onKnob(4, 24, 500)});
    EXPECT_EQ(overlay(4)->ReturnValue(), 99);
    EXPECT_EQ(overlay(4)->currentDraggedAngle(), -45.0f);
    EXPECT_EQ(effect.values[4], 1.0f);
    // And far below, step 0.
    dragOn(*panel, onKnob(4, 24, 24), {onKnob(4, 24, -2000)});
    EXPECT_EQ(overlay(4)->ReturnValue(), 0);
    EXPECT_EQ(effect.values[4], 0.0f);
}

TEST_F(PanelRouting, HostUpdatesMoveTheControlsWithoutWritingBack)
{
    panel->updateView(2, 0.57f);
    EXPECT_EQ(overlay(2)->ReturnValue(), 57);
    panel->updateView(4, 1.0f);
    EXPECT_EQ(overlay(4)->ReturnValue(), 100);
    panel->updateView(5, 9.7f);
    EXPECT_EQ(selectedButtons(), std::vector<int32_t>{9});
    panel->updateView(5, 6.9f);
    EXPECT_TRUE(selectedButtons().empty());
    panel->updateView(5, 0.5f); // a normalised value from a host selects nothing
    EXPECT_TRUE(selectedButtons().empty());
    EXPECT_TRUE(effect.writes.empty());
}

TEST_F(PanelRouting, UnknownIndicesChangeNothing)
{
    for (int32_t index : {6, -1, 1000}) {
        panel->updateView(index, 0.3f);
        panel->updateParameters(index, 0.3f);
    }
    EXPECT_EQ(overlay(0)->ReturnValue(), 50);
    EXPECT_EQ(selectedButtons(), std::vector<int32_t>{10});
    EXPECT_TRUE(effect.writes.empty());
    EXPECT_FALSE(effect.inPanelUpdate.load());
}

TEST_F(PanelRouting, ADragAfterAHostChangeContinuesFromTheNewStep)
{
    panel->updateView(4, 1.0f); // step 100, beyond the drag range
    dragOn(*panel, onKnob(4, 24, 24), {onKnob(4, 24, 30)});
    EXPECT_EQ(overlay(4)->ReturnValue(), 99);
    effect.writes.clear();
    panel->updateView(4, 0.2f);
    dragOn(*panel, onKnob(4, 24, 24), {onKnob(4, 24, 27)});
    EXPECT_EQ(overlay(4)->ReturnValue(), 21);
    EXPECT_EQ(effect.values[4], 0.21f);
}

TEST_F(PanelRouting, ARateButtonSelectsItselfAloneAndWritesItsChoice)
{
    EXPECT_EQ(selectedButtons(), std::vector<int32_t>{10});
    dragOn(*panel, onRateButton(1), {onRateButton(1)});
    EXPECT_EQ(selectedButtons(), std::vector<int32_t>{8});
    ASSERT_EQ(effect.writes.size(), 1u);
    EXPECT_EQ(effect.writes[0].index, 5);
    EXPECT_EQ(effect.writes[0].value, 8.0f);
    EXPECT_TRUE(effect.writes[0].inPanelUpdate);

    // Selection happens on the press: dragging off before the release keeps it.
    dragOn(*panel, onRateButton(2), {{5, 5}, {250, 390}});
    EXPECT_EQ(selectedButtons(), std::vector<int32_t>{9});
    // The selected button pressed again stays selected and writes again.
    dragOn(*panel, onRateButton(2), {});
    EXPECT_EQ(selectedButtons(), std::vector<int32_t>{9});
    ASSERT_EQ(effect.writes.size(), 3u);
    EXPECT_EQ(effect.writes[2].value, 9.0f);
}

TEST_F(PanelRouting, AGroupChoiceOutsideTheGroupSwitchesAllOffAndWritesNothing)
{
    panel->knobView()->updateGroupButtons(11);
    EXPECT_TRUE(selectedButtons().empty());
    EXPECT_TRUE(effect.writes.empty());
}

TEST(PanelRoutingWithoutEffect, ControlsStillMoveAndNothingIsWritten)
{
    auto panel = makePanel(nullptr);
    const Rect& f = panel->knobView()->knobForParameter(4)->frame();
    dragOn(*panel, {f.x + 24, f.y + 24}, {{f.x + 24, f.y + 40}});
    EXPECT_GT(panel->knobView()->knobForParameter(4)->controlPoint()->ReturnValue(), 0);
    panel->knobView()->updateGroupButtons(7);
    EXPECT_EQ(panel->knobView()->rateButtons()[0]->imageState(), 1);
}

} // namespace
