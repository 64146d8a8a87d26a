// The panel drawn offscreen: every control shows the picture its state selects, over the
// background.
#include <gtest/gtest.h>

#include <string>

#include "panel/DetatchedView10.h"
#include "panel/FlatKnob10.h"
#include "panel/HalvoCustomGroupButton10.h"
#include "platform/Renderer.h"
#include "tests/panel/PanelTestSupport.h"

namespace {

// Device (y down) upper-left corner of a panel frame.
int deviceTop(const Rect& frame)
{
    return static_cast<int>(400 - frame.y - frame.height);
}

class PanelRendering : public ::testing::Test {
protected:
    void SetUp() override
    {
        effect.values[0] = 0.5f;   // step 50, frame 63
        effect.values[1] = 0.0f;   // step 0, frame 0
        effect.values[2] = 0.25f;  // step 25, frame 31
        effect.values[3] = 0.98f;  // step 98, frame 124
        effect.values[4] = 1.0f;   // step 100, frame 127
        effect.values[5] = 9.0f;   // the third rate button
        panel = makePanel(&effect);
        Renderer::renderAll(canvas.context(), *panel);
    }

    PictureMatch matchKnob(int32_t parameter, int32_t frame)
    {
        const Rect& f = panel->knobView()->knobForParameter(parameter)->frame();
        return matchPicture(canvas, Image::named("knob" + std::to_string(frame)),
                            static_cast<int>(f.x), deviceTop(f), background);
    }

    RecordingEffect effect;
    std::unique_ptr<HalvoUiView10> panel;
    Canvas canvas{253, 400};
    Image background = Image::named("tremolobk");
};

TEST_F(PanelRendering, EachKnobShowsTheFrameItsStepSelectsOverTheBackground)
{
    const std::pair<int32_t, int32_t> parametersAndFrames[] = {
        {0, 63}, {1, 0}, {2, 31}, {3, 124}, {4, 127}};
    for (const auto& [parameter, frame] : parametersAndFrames) {
        const PictureMatch match = matchKnob(parameter, frame);
        EXPECT_GT(match.opaqueChecked, 900) << "parameter " << parameter;
        EXPECT_EQ(match.opaqueMismatched, 0) << "parameter " << parameter;
        // The transparent corners show the background, not the layer or black.
        EXPECT_GT(match.clearChecked, 50) << "parameter " << parameter;
        EXPECT_EQ(match.clearMismatched, 0) << "parameter " << parameter;
    }
    // The pictures differ, so a knob showing the wrong frame would not match.
    EXPECT_GT(matchKnob(0, 62).opaqueMismatched, 0);
}

TEST_F(PanelRendering, TheSelectedRateButtonShowsPictureTwoAndTheOthersPictureOne)
{
    const Image off = Image::named("ringbutton1");
    const Image on = Image::named("ringbutton2");
    const auto& buttons = panel->knobView()->rateButtons();
    ASSERT_EQ(buttons.size(), 4u);
    for (size_t i = 0; i < buttons.size(); ++i) {
        const Rect& f = buttons[i]->frame();
        const Image& expected = i == 2 ? on : off;
        const Image& other = i == 2 ? off : on;
        const PictureMatch match =
            matchPicture(canvas, expected, static_cast<int>(f.x), deviceTop(f), background);
        EXPECT_GT(match.opaqueChecked, 60) << "button " << i;
        EXPECT_EQ(match.opaqueMismatched, 0) << "button " << i;
        EXPECT_EQ(match.clearMismatched, 0) << "button " << i;
        EXPECT_GT(matchPicture(canvas, other, static_cast<int>(f.x), deviceTop(f), background)
                      .opaqueMismatched,
                  0)
            << "button " << i;
    }
}

TEST_F(PanelRendering, TheBackgroundLiesBeneathEverythingAndShowsWhereNoControlIs)
{
    EXPECT_EQ(dynamic_cast<const DetatchedView10*>(panel->subviews().front().get()) != nullptr,
              true);
    // Subview order, bottom to top: background, five knobs, four buttons.
    ASSERT_EQ(panel->subviews().size(), 10u);
    for (size_t i = 1; i <= 5; ++i)
        EXPECT_NE(dynamic_cast<FlatKnob10*>(panel->subviews()[i].get()), nullptr);
    for (size_t i = 6; i < 10; ++i)
        EXPECT_NE(dynamic_cast<HalvoCustomGroupButton10*>(panel->subviews()[i].get()), nullptr);

    int checked = 0;
    int mismatched = 0;
    for (int y = 0; y < 400; ++y) {
        for (int x = 0; x < 253; ++x) {
            const Point p{x + 0.5, 400 - y - 0.5};
            if (panel->hitTest(p) != panel->subviews().front().get())
                continue;
            ++checked;
            mismatched += (canvas.pixel(x, y) | 0xff000000u) != picturePixel(background, x, y);
        }
    }
    EXPECT_GT(checked, 253 * 400 - 6 * 48 * 48);
    EXPECT_EQ(mismatched, 0);
}

TEST_F(PanelRendering, AHostChangeRedrawsOnlyWhatChangedAndShowsTheNewFrame)
{
    FlatKnob10* mix = panel->knobView()->knobForParameter(4);
    mix->controlPoint()->setIntValue(10);
    const DeviceRect drawn = Renderer::render(canvas.context(), *panel);
    EXPECT_EQ(drawn, (DeviceRect{104, deviceTop(mix->frame()), 48, 48}));
    const PictureMatch match = matchKnob(4, 12);
    EXPECT_EQ(match.opaqueMismatched, 0);
    EXPECT_EQ(match.clearMismatched, 0);
}

TEST(PanelWithoutEffect, ShowsEveryKnobAtZeroAndNoRateSelected)
{
    auto panel = makePanel(nullptr);
    for (int32_t parameter = 0; parameter < 5; ++parameter)
        EXPECT_EQ(panel->knobView()->knobForParameter(parameter)->controlPoint()->ReturnValue(),
                  0);
    for (auto* button : panel->knobView()->rateButtons())
        EXPECT_EQ(button->imageState(), 0);
    Canvas canvas(253, 400);
    Renderer::renderAll(canvas.context(), *panel);
    const Rect& f = panel->knobView()->knobForParameter(0)->frame();
    EXPECT_EQ(matchPicture(canvas, Image::named("knob0"), static_cast<int>(f.x), deviceTop(f),
                           Image::named("tremolobk"))
                  .opaqueMismatched,
              0);
}

} // namespace
