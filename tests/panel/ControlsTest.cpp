// The picture buttons and the views that the panel builds but does not place: slider, number
// display and percentage text.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>

#include "panel/HalvoCustomDisplayView10.h"
#include "panel/HalvoCustomGroupButton10.h"
#include "panel/HalvoCustomSlider10.h"
#include "panel/sTextView10.h"
#include "platform/Renderer.h"
#include "tests/panel/PanelTestSupport.h"

namespace {

class RecordingDelegate : public FlatKnobProtocol {
public:
    void knobUpdatedWithIndex(int32_t index, std::optional<int32_t> value, View* sender) override
    {
        reports.push_back({index, value, sender});
    }
    void updateGroupButtons(int32_t buttonType) override { groupChoices.push_back(buttonType); }

    struct Report {
        int32_t index;
        std::optional<int32_t> value;
        View* sender;
    };
    std::vector<Report> reports;
    std::vector<int32_t> groupChoices;
};

const Rect kButtonFrame{0, 0, 13, 13};

TEST(ImageButtons, AnImageViewToggles)
{
    RecordingDelegate delegate;
    HalvoCustomImageView10 view(kButtonFrame, Image::named("ringbutton1"),
                                Image::named("ringbutton2"));
    view.setDelegate(&delegate);
    MouseTracker mouse;
    mouse.press(view, {6, 6});
    mouse.release({6, 6});
    EXPECT_EQ(view.imageState(), 1);
    mouse.press(view, {6, 6});
    EXPECT_EQ(view.imageState(), 0);
    ASSERT_EQ(delegate.reports.size(), 2u);
    EXPECT_EQ(delegate.reports[1].index, 0);
    EXPECT_FALSE(delegate.reports[1].value.has_value());
    EXPECT_EQ(delegate.reports[1].sender, nullptr);
}

TEST(ImageButtons, AKickButtonIsOnOnlyWhileHeld)
{
    RecordingDelegate delegate;
    HalvoCustomKickButton10 button(kButtonFrame, Image(), Image(), 42);
    button.setNewDelegate(&delegate);
    MouseTracker mouse;
    mouse.press(button, {6, 6});
    EXPECT_EQ(button.imageState(), 1);
    mouse.press(button, {6, 6}); // a second press while held still ends on
    EXPECT_EQ(button.imageState(), 1);
    mouse.release({6, 6});
    EXPECT_EQ(button.imageState(), 0);
    EXPECT_EQ(delegate.reports.size(), 2u);
}

TEST(ImageButtons, AGroupButtonHandsItsTypeOverAndLeavesItsStateAlone)
{
    RecordingDelegate delegate;
    HalvoCustomGroupButton10 button(kButtonFrame, Image(), Image(), 9);
    button.setNewDelegate(&delegate);
    MouseTracker mouse;
    mouse.press(button, {6, 6});
    mouse.release({6, 6});
    EXPECT_EQ(delegate.groupChoices, std::vector<int32_t>{9});
    EXPECT_TRUE(delegate.reports.empty());
    EXPECT_EQ(button.imageState(), 0);

    HalvoCustomGroupButton10 alone(kButtonFrame, Image(), Image(), 7);
    Canvas canvas(13, 13);
    Renderer::render(canvas.context(), alone);
    mouse.press(alone, {6, 6});
    EXPECT_TRUE(alone.needsDisplay()); // without a delegate a press only redisplays
}

TEST(ImageButtons, AnyStateOtherThanZeroShowsPictureTwo)
{
    const Image off = Image::named("ringbutton1");
    const Image on = Image::named("ringbutton2");
    HalvoCustomImageView10 view(kButtonFrame, off, on);
    Canvas canvas(13, 13);
    view.setImageState(5);
    Renderer::renderAll(canvas.context(), view);
    const Image none;
    EXPECT_EQ(matchPicture(canvas, on, 0, 0, none).opaqueMismatched, 0);
    EXPECT_GT(matchPicture(canvas, off, 0, 0, none).opaqueMismatched, 0);
}

TEST(Slider, EveryDrawingReportsTheCaseValueWithNothingAttached)
{
    RecordingDelegate delegate;
    HalvoCustomSlider10 slider({0, 0, 160.7, 20.9}, Image::named("bmp00131"),
                               Image::named("bmp00130"));
    EXPECT_EQ(slider.cell().SliderCellWidth(), 160);
    EXPECT_EQ(slider.cell().SliderCellHeight(), 20);
    EXPECT_EQ(slider.floatValue(), 0.5f);
    slider.setDelegate(&delegate);
    slider.setCaseValue(3);
    Canvas canvas(161, 21);
    Renderer::renderAll(canvas.context(), slider);
    Renderer::renderAll(canvas.context(), slider);
    ASSERT_EQ(delegate.reports.size(), 2u);
    EXPECT_EQ(delegate.reports[1].index, 3);
    EXPECT_FALSE(delegate.reports[1].value.has_value());
}

TEST(Slider, TheThumbFollowsTheValueAndThePointer)
{
    const Image thumb = Image::named("bmp00130");
    HalvoCustomSlider10 slider({0, 0, 160, 20}, Image::named("bmp00131"), thumb);
    const double travel = 160 - thumb.width();
    EXPECT_EQ(slider.knobRect().x, travel * 0.5);
    slider.setFloatValue(2.0f);
    EXPECT_EQ(slider.knobRect().x, travel);
    slider.setFloatValue(std::nanf(""));
    EXPECT_EQ(slider.floatValue(), 0.0f);

    MouseTracker mouse;
    mouse.press(slider, {thumb.width() * 0.5 + travel * 0.25, 10});
    EXPECT_FLOAT_EQ(slider.floatValue(), 0.25f);
    mouse.drag({1000, 10});
    EXPECT_EQ(slider.floatValue(), 1.0f);

    // The thumb's picture sits 4 points right of and above the thumb rectangle's corner.
    slider.setFloatValue(0.5f);
    Canvas canvas(160, 20);
    Renderer::renderAll(canvas.context(), slider);
    const Rect k = slider.knobRect();
    const int left = static_cast<int>(k.x + 4);
    const int top = static_cast<int>(20 - (k.y + 4) - thumb.height());
    EXPECT_EQ(matchPicture(canvas, thumb, left, top, Image()).opaqueMismatched, 0);
}

// The columns of the canvas holding pixels brighter than half white.
std::pair<int, int> brightColumns(const Canvas& canvas, int width, int height)
{
    int first = width;
    int last = -1;
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            if (((canvas.pixel(x, y) >> 8) & 0xff) > 128) {
                first = std::min(first, x);
                last = std::max(last, x);
            }
    return {first, last};
}

TEST(DisplayView, Draws42WhiteAndCentred)
{
    HalvoCustomDisplayView10 display({0, 0, 80, 20}, 42);
    Canvas canvas(80, 20);
    Renderer::renderAll(canvas.context(), display);
    const auto [first, last] = brightColumns(canvas, 80, 20);
    ASSERT_LT(first, last);
    EXPECT_NEAR((first + last) * 0.5, 40.0, 1.5);
    EXPECT_GT(last - first, 8); // two digits, not one

    display.setSValue(7);
    canvas.fill(0, 0, 0, 0);
    Renderer::renderAll(canvas.context(), display);
    const auto [firstOfOne, lastOfOne] = brightColumns(canvas, 80, 20);
    EXPECT_LT(lastOfOne - firstOfOne, last - first);
}

TEST(TextView, SplitsThePanPositionIntoLeftAndRight)
{
    EXPECT_EQ(panFigures(75).right, 50);
    EXPECT_EQ(panFigures(75).left, 0);
    EXPECT_EQ(panFigures(20).left, 60);
    EXPECT_EQ(panFigures(20).right, 0);
    EXPECT_EQ(panFigures(51).right, 2);
    EXPECT_EQ(panFigures(49).left, 2);
    EXPECT_EQ(panFigures(50).left, 0);
    EXPECT_EQ(panFigures(50).right, 0);
}

TEST(TextView, DrawsItsThreeFiguresSeeThroughInItsColour)
{
    HalvoUiView10 owner(HalvoUiView10::kFrame, nullptr);
    owner.setVolumeSliderVal(80);
    owner.setPanningSliderVal(51);
    sTextView10 text({0, 0, 560, 260});
    text.setOwner(&owner);
    Canvas canvas(560, 260);
    Renderer::renderAll(canvas.context(), text);
    EXPECT_FALSE(text.needsDisplay());
    // Text only where the three figures stand, each above its point (y up, so device row
    // 260 - 234 and above); everything else stays transparent.
    int inked = 0;
    int stray = 0;
    for (int y = 0; y < 260; ++y) {
        for (int x = 0; x < 560; ++x) {
            if (alphaOf(canvas.pixel(x, y)) == 0)
                continue;
            const bool nearFigure = y >= 260 - 234 - 20 && y < 260 - 234 &&
                                    ((x >= 120 && x < 160) || (x >= 363 && x < 400) ||
                                     (x >= 494 && x < 530));
            (nearFigure ? inked : stray) += 1;
        }
    }
    EXPECT_GT(inked, 60);
    EXPECT_EQ(stray, 0);
    // A fully inked pixel has the text colour, 242/255, 240/255, 238/256.
    bool sawTextColour = false;
    for (int x = 120; x < 160; ++x) {
        for (int y = 260 - 254; y < 260 - 234; ++y) {
            const uint32_t p = canvas.pixel(x, y);
            sawTextColour |= alphaOf(p) == 255 && ((p >> 16) & 0xff) == 242 &&
                             ((p >> 8) & 0xff) == 240 && std::abs(int(p & 0xff) - 237) <= 1;
        }
    }
    EXPECT_TRUE(sawTextColour);
}

} // namespace
