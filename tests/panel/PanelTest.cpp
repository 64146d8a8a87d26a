// The view layer and the control panel offscreen: what they draw, checked pixel for pixel against
// our pictures, and what the panel writes into its effect under synthetic mouse events.
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <string>
#include <tuple>
#include <vector>

#include "panel/FlatKnob10.h"
#include "panel/HalvoCustomGroupButton10.h"
#include "panel/HalvoUiView10.h"
#include "panel/PanelPictures.h"
#include "platform/MouseTracker.h"
#include "platform/Renderer.h"
#include "tests/panel/PanelFixture.h"
#include "tests/panel/PictureCheck.h"

namespace {

using namespace panel_test;

// Paints itself red, logs the mouse events it receives and may ask to be drawn while drawing.
class Probe : public View {
public:
    using View::View;
    void drawRect(cairo_t* cr, const Rect& rect) override
    {
        ++drawings;
        cairo_set_source_rgb(cr, 1, 0, 0);
        cairo_rectangle(cr, rect.x, rect.y, rect.width, rect.height);
        cairo_fill(cr);
        setNeedsDisplay(askAgain);
    }
    void mouseDown(const MouseEvent& e) override { note('d', e.location); }
    void mouseDragged(const MouseEvent& e) override { note('m', e.location); }
    void mouseUp(const MouseEvent& e) override { note('u', e.location); }
    void note(char kind, Point p)
    {
        events += kind + std::to_string(int(p.x)) + ',' + std::to_string(int(p.y)) + ' ';
    }

    int drawings = 0;
    bool askAgain = false;
    std::string events;
};

// Placement and order are proven by the panel's pictures below; these are the view layer's own
// promises the panel does not exercise.
TEST(ViewLayer, RedrawsOnlyWhatIsMarkedNeverRecursesAndGivesThePressedViewTheMouse)
{
    View root({0, 0, 20, 20});
    auto* probe = root.addSubview(std::make_unique<Probe>(Rect{2, 3, 4, 5}));
    Canvas canvas(20, 20);
    Renderer::renderAll(canvas.cr.get(), root);
    EXPECT_EQ(canvas(2, 20 - 3 - 1), 0xffff0000u); // the probe's lower left corner, y up
    EXPECT_EQ(canvas(2, 20 - 3), 0u);
    EXPECT_TRUE(Renderer::render(canvas.cr.get(), root).isEmpty());
    // A request made while drawing waits for the next pass instead of recursing.
    probe->askAgain = true;
    probe->setNeedsDisplay();
    EXPECT_EQ(Renderer::render(canvas.cr.get(), root), (DeviceRect{2, 20 - 3 - 5, 4, 5}));
    EXPECT_EQ(probe->drawings, 2);
    EXPECT_TRUE(root.needsDisplayAnywhere());

    EXPECT_EQ(root.hitTest({6, 8}), &root); // the right and top edges lie outside
    MouseTracker mouse;
    EXPECT_EQ(mouse.press(root, {3, 4}), probe);
    mouse.drag({-20, 30}); // far outside, still the pressed view's
    mouse.release({0, 0});
    mouse.drag({3, 4}); // after the release, nobody's
    EXPECT_EQ(probe->events, "d1,1 m-22,27 u-2,-3 ");
}

TEST_F(Panel, ShowsEachKnobsFrameAndTheSelectedRateOverTheBackground)
{
    // 0.57 is read at building in double precision: step 56, not 57.
    const std::array<int32_t, 5> steps = {50, 12, 56, 98, 100};
    const std::array<int32_t, 5> frames = {63, 15, 71, 124, 127};
    for (int32_t parameter = 0; parameter < 5; ++parameter) {
        EXPECT_EQ(step(parameter), steps[parameter]);
        EXPECT_TRUE(shows(canvas, *knob(parameter), knobFrame(frames[parameter]))) << parameter;
    }
    EXPECT_FALSE(shows(canvas, *knob(0), knobFrame(62))); // neighbouring frames do differ
    const Image off = panelPicture("ringbutton1");
    const Image on = panelPicture("ringbutton2");
    ASSERT_EQ(panel->knobView()->rateButtons().size(), 4u);
    for (size_t i = 0; i < 4; ++i) {
        EXPECT_TRUE(shows(canvas, *rateButton(i), i == 2 ? on : off)) << i;
        EXPECT_FALSE(shows(canvas, *rateButton(i), i == 2 ? off : on)) << i;
    }
}

TEST_F(Panel, HostUpdatesRedrawTheirControlWriteNothingBackAndUnknownIndicesChangeNothing)
{
    panel->knobView()->updateControllers(4, 0.1f);
    EXPECT_EQ(Renderer::render(canvas.cr.get(), *panel),
              (DeviceRect{104, static_cast<int>(400 - knob(4)->frame().maxY()), 48, 48}));
    EXPECT_TRUE(shows(canvas, *knob(4), knobFrame(12)));
    // Read in single precision now, and steps no frame shows clamped to the filmstrip.
    const std::tuple<float, int32_t, int> updates[] = {
        {0.57f, 57, 72}, {1.5f, 150, 127}, {-0.005f, 0, 0}, {std::nanf(""), INT32_MIN, 0}};
    for (const auto& [value, shownStep, frame] : updates) {
        panel->updateView(1, value);
        Renderer::render(canvas.cr.get(), *panel);
        EXPECT_EQ(step(1), shownStep) << value;
        EXPECT_TRUE(shows(canvas, *knob(1), knobFrame(frame))) << value;
    }
    panel->updateView(5, 8.7f);
    EXPECT_EQ(selectedRates(), std::vector<int32_t>{8});
    for (float outside : {6.9f, 0.5f, 11.0f, std::nanf("")}) { // 0.5: a normalised value
        panel->updateView(5, outside);
        EXPECT_TRUE(selectedRates().empty()) << outside;
    }

    panel->updateView(5, 10.0f);
    for (int32_t index : {6, -1, 1000}) {
        panel->updateView(index, 0.3f);
        panel->updateParameters(index, 0.3f);
    }
    EXPECT_EQ(selectedRates(), std::vector<int32_t>{10});
    EXPECT_EQ(step(0), 50);
    EXPECT_TRUE(effect.writes.empty());
    EXPECT_TRUE(effect.gestures.empty());
}

TEST_F(Panel, OneStepWritesAllFiveKnobsInTheOrder02134InsideOneGestureOnTheDraggedKnob)
{
    drag(knob(2), {1, 2, 3}); // 0.57 shows step 56; three points up reach 57
    const std::vector<RecordingEffect::Write> expected = {
        {0, 0.5f}, {2, 0.57f}, {1, 0.12f}, {3, 0.98f}, {4, 1.0f}};
    EXPECT_EQ(effect.writes, expected);
    EXPECT_EQ(effect.gestures, "+2-2");
    drag(knob(4), {}); // a click without a drag is a gesture that writes nothing
    EXPECT_EQ(effect.gestures, "+2-2+4-4");
    EXPECT_EQ(effect.writes.size(), 5u);
}

TEST_F(Panel, ADragGoesOnFromTheShownStepAStepFor2Point7Points)
{
    // Whichever step the host set, the first motion must not jump to another.
    for (int32_t shown = 0; shown < 100; ++shown) {
        panel->updateView(0, shown / 100.0f);
        drag(knob(0), {0});
    }
    EXPECT_TRUE(effect.writes.empty());
    panel->updateView(0, 0.5f);
    std::vector<double> rises;
    for (int dy = 1; dy <= 30; ++dy)
        rises.push_back(dy);
    drag(knob(0), rises);
    EXPECT_EQ(step(0), 61);
    EXPECT_EQ(effect.writes.size(), 11u * 5u); // each step written once, all five knobs
    EXPECT_EQ(effect.values[0], 0.61f);
    drag(knob(0), {3}); // the next drag goes on from where the last one was released
    EXPECT_EQ(step(0), 62);
}

TEST_F(Panel, DragsPastTheEndsStopAtTheTopStepWhichSends1AndAtZero)
{
    // The first drag starts from a host's step 100, beyond the travel. The pointer 3e9 points
    // below must not wrap around to the top in 32 bits.
    const std::tuple<double, int32_t, float> drags[] = {
        {6, 99, 1.0f}, {-2000, 0, 0.0f}, {-3e9, 0, 0.0f}, {500, 99, 1.0f}};
    for (const auto& [rise, shown, value] : drags) {
        drag(knob(4), {rise});
        EXPECT_EQ(step(4), shown) << rise;
        EXPECT_EQ(effect.values[4], value) << rise;
    }
}

TEST_F(Panel, ARateButtonSelectsItselfAloneOnThePressAndWritesItsChoice)
{
    drag(rateButton(1), {});
    EXPECT_EQ(selectedRates(), std::vector<int32_t>{8});
    EXPECT_EQ(effect.writes, (std::vector<RecordingEffect::Write>{{5, 8.0f}}));
    EXPECT_EQ(effect.gestures, "+5-5");
    drag(rateButton(3), {-100}); // dragged off before the release
    EXPECT_EQ(selectedRates(), std::vector<int32_t>{10});
    drag(rateButton(3), {});
    EXPECT_EQ(selectedRates(), std::vector<int32_t>{10});
    EXPECT_EQ(effect.writes.size(), 3u);
    EXPECT_EQ(effect.writes.back(), (RecordingEffect::Write{5, 10.0f}));

    // A choice outside the group switches all off and writes nothing.
    panel->knobView()->updateGroupButtons(11);
    EXPECT_TRUE(selectedRates().empty());
    EXPECT_EQ(effect.writes.size(), 3u);
    EXPECT_EQ(effect.gestures, "+5-5+5-5+5-5");
}

TEST_F(Panel, WithoutAnEffectShowsEveryKnobAtZeroAndNoRateAndStillFollowsTheMouse)
{
    build(nullptr);
    for (int32_t parameter = 0; parameter < 5; ++parameter)
        EXPECT_TRUE(shows(canvas, *knob(parameter), knobFrame(0))) << parameter;
    EXPECT_TRUE(selectedRates().empty());
    drag(knob(4), {16});
    EXPECT_EQ(step(4), 5);
    drag(rateButton(0), {});
    EXPECT_EQ(selectedRates(), std::vector<int32_t>{7});
}

} // namespace
