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
#include "platform/MouseTracker.h"
#include "platform/Renderer.h"
#include "tests/panel/PictureCheck.h"

namespace {

struct Canvas {
    Canvas(int width, int height)
        : surface(cairo_image_surface_create(CAIRO_FORMAT_ARGB32, width, height)),
          cr(cairo_create(surface))
    {
    }
    ~Canvas()
    {
        cairo_destroy(cr);
        cairo_surface_destroy(surface);
    }
    Canvas(const Canvas&) = delete;
    uint32_t operator()(int x, int y) const { return pixelAt(surface, x, y); }

    cairo_surface_t* surface;
    cairo_t* cr;
};

// Fills itself with red, counts its drawings and logs the mouse events it receives.
class Probe : public View {
public:
    using View::View;
    void drawRect(cairo_t* cr, const Rect& rect) override
    {
        ++drawings;
        cairo_set_source_rgb(cr, 1, 0, 0);
        cairo_rectangle(cr, rect.x, rect.y, rect.width, rect.height);
        cairo_fill(cr);
        if (askAgain)
            setNeedsDisplay();
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

TEST(ViewLayer, DrawsBackToFrontYUpAndOnlyWhatIsMarkedWhenItIsAsked)
{
    View root({0, 0, 20, 20});
    auto* back = root.addSubview(std::make_unique<View>(Rect{0, 0, 20, 20}));
    auto* small = root.addSubview(std::make_unique<Probe>(Rect{2, 3, 4, 5}));
    back->setWantsLayer(true);
    back->setLayerBackgroundColor({0, 0, 1, 1});
    Canvas canvas(20, 20);
    Renderer::renderAll(canvas.cr, root);
    EXPECT_EQ(canvas(2, 20 - 3 - 1), 0xffff0000u); // the lower left corner of the red view
    EXPECT_EQ(canvas(2, 20 - 3), 0xff0000ffu);
    EXPECT_EQ(canvas(1, 20 - 3 - 1), 0xff0000ffu);
    EXPECT_TRUE(Renderer::render(canvas.cr, root).isEmpty());

    small->setNeedsDisplay();
    EXPECT_EQ(small->drawings, 1);
    EXPECT_EQ(Renderer::render(canvas.cr, root), (DeviceRect{2, 20 - 3 - 5, 4, 5}));
    EXPECT_EQ(small->drawings, 2);
    // A request made while drawing waits for the next pass instead of recursing.
    small->askAgain = true;
    small->setNeedsDisplay();
    Renderer::render(canvas.cr, root);
    EXPECT_EQ(small->drawings, 3);
    EXPECT_TRUE(root.needsDisplayAnywhere());
}

TEST(ViewLayer, ThePressedFrontmostViewGetsEveryDragAndTheReleaseInItsOwnCoordinates)
{
    View root({0, 0, 10, 10});
    auto* back = root.addSubview(std::make_unique<Probe>(Rect{0, 0, 10, 10}));
    auto* front = root.addSubview(std::make_unique<Probe>(Rect{5, 5, 5, 5}));
    EXPECT_EQ(root.hitTest({6, 6}), front);
    EXPECT_EQ(root.hitTest({4, 6}), back);
    EXPECT_EQ(root.hitTest({10, 10}), nullptr); // the right and top edges lie outside
    EXPECT_EQ(root.hitTest({-1, 0}), nullptr);

    MouseTracker mouse;
    EXPECT_EQ(mouse.press(root, {6, 7}), front);
    mouse.drag({6, 9});
    mouse.drag({-20, 30}); // far outside, still the pressed view's
    mouse.release({0, 0});
    mouse.drag({6, 7}); // after the release, nobody's
    EXPECT_EQ(front->events, "d1,2 m1,4 m-25,25 u-5,-5 ");
    EXPECT_EQ(back->events, "");
}

// Holds six values and records each write, with whether the panel marked it as its own.
class RecordingEffect : public AudioEffect {
public:
    struct Write {
        int32_t index;
        float value;
        bool own;
        bool operator==(const Write&) const = default;
    };

    RecordingEffect() : AudioEffect(nullptr, 1, 6) {}
    void processReplacing(float**, float**, VstInt32) override {}
    void setParameter(VstInt32 index, float value) override
    {
        writes.push_back({index, value, inPanelUpdate.load()});
        values.at(static_cast<size_t>(index)) = value;
    }
    float getParameter(VstInt32 index) override { return values.at(static_cast<size_t>(index)); }

    std::array<float, 6> values{};
    std::vector<Write> writes;
};

std::ostream& operator<<(std::ostream& out, const RecordingEffect::Write& w)
{
    return out << '{' << w.index << ", " << w.value << (w.own ? ", own}" : ", host}");
}

// Whether the canvas of a whole panel shows picture where view lies.
testing::AssertionResult shows(const Canvas& canvas, const View& view, const Image& picture)
{
    return showsPicture([&](int x, int y) { return canvas(x, y); }, picture,
                        static_cast<int>(view.frame().x),
                        static_cast<int>(400 - view.frame().maxY()), picture.width(),
                        picture.height());
}

class Panel : public ::testing::Test {
protected:
    void SetUp() override
    {
        effect.values = {0.5f, 0.123f, 0.57f, 0.98f, 1.0f, 9.0f};
        build(&effect);
        ASSERT_TRUE(effect.writes.empty()); // building reads, never writes
    }
    void build(AudioEffect* withEffect)
    {
        panel = std::make_unique<HalvoUiView10>(HalvoUiView10::kFrame, withEffect);
        panel->awakeFromNib();
        Renderer::renderAll(canvas.cr, *panel);
    }

    FlatKnob10* knob(int32_t parameter) { return panel->knobView()->knobForParameter(parameter); }
    int32_t step(int32_t parameter) { return knob(parameter)->controlPoint()->ReturnValue(); }
    // Presses the middle of a control and drags through points the given heights above it.
    void drag(const View* control, std::vector<double> rises)
    {
        const Rect& f = control->frame();
        const double x = f.x + f.width / 2;
        const double y = f.y + f.height / 2;
        MouseTracker mouse;
        mouse.press(*panel, {x, y});
        for (double dy : rises)
            mouse.drag({x, y + dy});
        mouse.release({x, y + (rises.empty() ? 0 : rises.back())});
    }
    HalvoCustomGroupButton10* rateButton(size_t i) { return panel->knobView()->rateButtons()[i]; }
    std::vector<int32_t> selectedRates()
    {
        std::vector<int32_t> selected;
        for (auto* button : panel->knobView()->rateButtons())
            if (button->imageState() != 0)
                selected.push_back(button->buttonType());
        return selected;
    }

    RecordingEffect effect;
    std::unique_ptr<HalvoUiView10> panel;
    Canvas canvas{253, 400};
};

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
    const Image off = Image::named("ringbutton1");
    const Image on = Image::named("ringbutton2");
    ASSERT_EQ(panel->knobView()->rateButtons().size(), 4u);
    for (size_t i = 0; i < 4; ++i) {
        EXPECT_TRUE(shows(canvas, *rateButton(i), i == 2 ? on : off)) << i;
        EXPECT_FALSE(shows(canvas, *rateButton(i), i == 2 ? off : on)) << i;
    }
}

TEST_F(Panel, AKnobMovedByTheHostRedrawsOnlyItself)
{
    panel->knobView()->updateControllers(4, 0.1f);
    const Rect& mix = knob(4)->frame();
    EXPECT_EQ(Renderer::render(canvas.cr, *panel),
              (DeviceRect{104, static_cast<int>(400 - mix.maxY()), 48, 48}));
    EXPECT_TRUE(shows(canvas, *knob(4), knobFrame(12)));
}

TEST_F(Panel, OneStepWritesAllFiveKnobsInTheOrder02134AsThePanelsOwn)
{
    drag(knob(0), {1, 2, 3}); // from step 50's drag start of 88 degrees, 85 reads 51
    const std::vector<RecordingEffect::Write> expected = {
        {0, 0.51f, true}, {2, 0.56f, true}, {1, 0.12f, true}, {3, 0.98f, true}, {4, 1.0f, true}};
    EXPECT_EQ(effect.writes, expected);
    EXPECT_FALSE(effect.inPanelUpdate.load());
}

TEST_F(Panel, ADragGoesOnFromTheShownStepAStepFor2Point7Points)
{
    drag(knob(0), {0, 1}); // the first motion must not jump a step
    EXPECT_TRUE(effect.writes.empty());
    std::vector<double> rises;
    for (int dy = 1; dy <= 30; ++dy)
        rises.push_back(dy);
    drag(knob(0), rises);
    EXPECT_EQ(step(0), 61);
    EXPECT_EQ(effect.writes.size(), 11u * 5u); // each step written once, all five knobs
    EXPECT_EQ(effect.values[0], 0.61f);
    drag(knob(0), {3}); // the next drag goes on from where the last one was released
    EXPECT_EQ(step(0), 62);

    panel->updateView(0, 0.2f);
    drag(knob(0), {3});
    EXPECT_EQ(effect.values[0], 0.21f);
}

TEST_F(Panel, DragsPastTheEndsStopAtTheTopStepWhichSends1AndAtZero)
{
    // The first drag starts from a host's step 100, beyond the travel.
    const std::tuple<double, int32_t, float> drags[] = {{6, 99, 1.0f}, {-2000, 0, 0.0f},
                                                        {500, 99, 1.0f}};
    for (const auto& [rise, shown, value] : drags) {
        drag(knob(4), {rise});
        EXPECT_EQ(step(4), shown) << rise;
        EXPECT_EQ(effect.values[4], value) << rise;
    }
}

TEST_F(Panel, HostUpdatesMoveTheControlsWithoutWritingBackAndUnknownIndicesChangeNothing)
{
    panel->updateView(2, 0.57f);
    EXPECT_EQ(step(2), 57);
    panel->updateView(5, 8.7f);
    EXPECT_EQ(selectedRates(), std::vector<int32_t>{8});
    for (float outside : {6.9f, 0.5f, 11.0f, std::nanf("")}) { // 0.5: a normalised value
        panel->updateView(5, outside);
        EXPECT_TRUE(selectedRates().empty()) << outside;
    }
    panel->updateView(1, std::nanf(""));
    Renderer::render(canvas.cr, *panel);
    EXPECT_TRUE(shows(canvas, *knob(1), knobFrame(0)));

    panel->updateView(5, 10.0f);
    for (int32_t index : {6, -1, 1000}) {
        panel->updateView(index, 0.3f);
        panel->updateParameters(index, 0.3f);
    }
    EXPECT_EQ(selectedRates(), std::vector<int32_t>{10});
    EXPECT_EQ(step(0), 50);
    EXPECT_TRUE(effect.writes.empty());
    EXPECT_FALSE(effect.inPanelUpdate.load());
}

TEST_F(Panel, ARateButtonSelectsItselfAloneOnThePressAndWritesItsChoice)
{
    drag(rateButton(1), {});
    EXPECT_EQ(selectedRates(), std::vector<int32_t>{8});
    EXPECT_EQ(effect.writes, (std::vector<RecordingEffect::Write>{{5, 8.0f, true}}));
    drag(rateButton(3), {-100}); // dragged off before the release
    EXPECT_EQ(selectedRates(), std::vector<int32_t>{10});
    drag(rateButton(3), {});
    EXPECT_EQ(selectedRates(), std::vector<int32_t>{10});
    EXPECT_EQ(effect.writes.size(), 3u);
    EXPECT_EQ(effect.writes.back(), (RecordingEffect::Write{5, 10.0f, true}));

    // A choice outside the group switches all off and writes nothing.
    panel->knobView()->updateGroupButtons(11);
    EXPECT_TRUE(selectedRates().empty());
    EXPECT_EQ(effect.writes.size(), 3u);
}

TEST_F(Panel, WithoutAnEffectShowsEveryKnobAtZeroAndNoRateAndStillFollowsTheMouse)
{
    build(nullptr);
    for (int32_t parameter = 0; parameter < 5; ++parameter)
        EXPECT_TRUE(shows(canvas, *knob(parameter), knobFrame(0))) << parameter;
    for (size_t i = 0; i < 4; ++i)
        EXPECT_TRUE(shows(canvas, *rateButton(i), Image::named("ringbutton1"))) << i;
    drag(knob(4), {16});
    EXPECT_EQ(step(4), 5);
    drag(rateButton(0), {});
    EXPECT_EQ(selectedRates(), std::vector<int32_t>{7});
}

} // namespace
