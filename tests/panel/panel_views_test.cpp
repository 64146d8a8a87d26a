// The view kit's controls that the panel does not place: the picture slider, the number display,
// the percentage text view and the plain and kick picture buttons, drawn offscreen: their values,
// texts, pixels and reports to the controller.
#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cmath>
#include <optional>
#include <string>
#include <tuple>
#include <vector>

#include "panel/HalvoCustomDisplayView10.h"
#include "panel/HalvoCustomKickButton10.h"
#include "panel/HalvoCustomSlider10.h"
#include "panel/HalvoUiView10.h"
#include "panel/sTextView10.h"
#include "platform/Renderer.h"
#include "tests/panel/PictureCheck.h"

namespace {

constexpr uint32_t kRed = 0xffff0000u, kBlue = 0xff0000ffu, kGreen = 0xff00ff00u;

// Transparent, or an opaque colour over its left `painted` columns.
struct Canvas {
    Canvas(int width, int height, uint32_t colour = 0, int painted = INT_MAX)
        : image(cairo_image_surface_create(CAIRO_FORMAT_ARGB32, width, height))
    {
        cairo_set_source_rgba(cr.get(), (colour >> 16 & 255) / 255.0, (colour >> 8 & 255) / 255.0,
                              (colour & 255) / 255.0, (colour >> 24) / 255.0);
        cairo_rectangle(cr.get(), 0, 0, std::min(width, painted), height);
        cairo_fill(cr.get());
    }
    uint32_t operator()(int x, int y) const { return pixelAt(image.surface(), x, y); }
    void draw(View& view) { Renderer::renderAll(cr.get(), view); }

    Image image;
    std::unique_ptr<cairo_t, decltype(&cairo_destroy)> cr{cairo_create(image.surface()),
                                                          &cairo_destroy};
};

struct Reports : FlatKnobProtocol {
    void knobUpdatedWithIndex(int32_t index, std::optional<int32_t> value, View* sender) override
    {
        EXPECT_TRUE(!value && !sender) << "a control other than a knob attaches nothing";
        indices.push_back(index);
    }
    void knobPressed(View*) override {}
    void knobReleased(View*) override {}
    void updateGroupButtons(int32_t) override {}
    void knobFineDragged(View*, int32_t) override {}
    void knobDoubleClicked(View*) override {}
    void knobScrolled(View*, int32_t, bool) override {}
    std::vector<int32_t> indices;
};

// The box of the inked (not fully transparent) pixels in [x0, x1) x [y0, y1), y down, and the
// most opaque of them.
struct Ink {
    int left = INT_MAX, top = INT_MAX, right = -1, bottom = -1;
    uint32_t strongest = 0;
    int width() const { return right - left + 1; }
    double centre() const { return (left + right + 1) * 0.5; }
};

Ink inkIn(const Canvas& canvas, int x0, int y0, int x1, int y1)
{
    Ink ink;
    for (int y = y0; y < y1; ++y)
        for (int x = x0; x < x1; ++x)
            if (const uint32_t p = canvas(x, y); p >> 24) {
                ink.left = std::min(ink.left, x), ink.right = std::max(ink.right, x);
                ink.top = std::min(ink.top, y), ink.bottom = std::max(ink.bottom, y);
                ink.strongest = p >> 24 > ink.strongest >> 24 ? p : ink.strongest;
            }
    return ink;
}

// How the views' default face (sans, 12 points) sets a line: ink bearing and width, advance and
// the descent below the baseline.
struct Line {
    double bearing, width, advance, descent;
};
Line lineOf(const std::string& text)
{
    Canvas scratch(1, 1);
    cairo_select_font_face(scratch.cr.get(), "sans", CAIRO_FONT_SLANT_NORMAL,
                           CAIRO_FONT_WEIGHT_NORMAL);
    cairo_set_font_size(scratch.cr.get(), 12.0);
    cairo_text_extents_t glyphs;
    cairo_text_extents(scratch.cr.get(), text.c_str(), &glyphs);
    cairo_font_extents_t font;
    cairo_font_extents(scratch.cr.get(), &font);
    return {glyphs.x_bearing, glyphs.width, glyphs.x_advance, font.descent};
}

} // namespace

TEST(PanelViews, SliderClampsItsValueDrawsBarAndThumbAndReportsEveryRedraw)
{
    // The cell takes the frame's size truncated toward zero, and the bar fills the cell; the
    // value starts at 0.5.
    HalvoCustomSlider10 odd({3.5, 2.5, 60.9, 12.99}, Canvas(4, 4, kRed).image, Image());
    EXPECT_EQ(std::pair(odd.cell().SliderCellWidth(), odd.cell().SliderCellHeight()),
              std::pair(60, 12));
    EXPECT_EQ(odd.floatValue(), 0.5f);
    Canvas oddCanvas(61, 13);
    oddCanvas.draw(odd);
    EXPECT_EQ(std::pair(oddCanvas(59, 6), oddCanvas(60, 6)), std::pair(kRed, 0u));
    // A cell of its own takes the panel's thumb picture.
    EXPECT_EQ(HalvoCustomSliderCell10().knobImage().surface(), panelPicture("bmp00130").surface());

    HalvoCustomSlider10 slider({0, 0, 100, 20}, Canvas(4, 4, kRed).image,
                               Canvas(8, 8, kBlue).image);
    Reports reports;
    slider.setDelegate(&reports);
    slider.setCaseValue(3);
    // Set directly, or by a press at x, which puts the thumb's centre under the pointer.
    const std::tuple<float, double, float> rows[] = {
        {0.25f, NAN, 0.25f}, {-1.0f, NAN, 0.0f}, {2.0f, NAN, 1.0f}, {NAN, NAN, 0.0f},
        {NAN, 50.0, 0.5f},   {NAN, -50.0, 0.0f}, {NAN, 500.0, 1.0f}};
    for (auto [set, pressX, value] : rows) {
        SCOPED_TRACE(testing::Message() << "set " << set << ", pressed at " << pressX);
        if (std::isnan(pressX))
            slider.setFloatValue(set);
        else
            slider.mouseDown({{pressX, 10.0}});
        EXPECT_EQ(slider.floatValue(), value);
        Canvas canvas(100, 20);
        canvas.draw(slider);
        // The thumb travels the bar; its lower-left corner lies 4 points right of and above the
        // thumb rectangle's.
        const Rect k = slider.knobRect();
        EXPECT_EQ(k.x, 92.0 * value);
        const int left = int(k.x) + 4, bottom = 20 - int(k.y) - 4 - 1;
        EXPECT_EQ(std::pair(canvas(left, bottom), canvas(left + 3, bottom - 7)),
                  std::pair(kBlue, kBlue));
        EXPECT_EQ(std::tuple(canvas(left - 1, bottom), canvas(left, bottom + 1),
                             canvas(left, bottom - 8)),
                  std::tuple(kRed, kRed, kRed));
    }
    // Every redraw reports the case value.
    EXPECT_EQ(reports.indices, std::vector<int32_t>(std::size(rows), 3));
}

TEST(PanelViews, DisplayAndTextViewsDrawTheirFiguresInTheirColours)
{
    // The display: "%d" in white, centred, the line hanging from the top edge.
    for (auto [value, text] : {std::pair{42, "42"}, {-7, "-7"}, {0, "0"}, {123456, "123456"}}) {
        SCOPED_TRACE(text);
        HalvoCustomDisplayView10 display({0, 0, 80, 20}, value);
        Canvas canvas(80, 20);
        canvas.draw(display);
        const Ink ink = inkIn(canvas, 0, 0, 80, 20);
        const Line line = lineOf(text);
        EXPECT_NEAR(ink.width(), line.width, 2.0);
        EXPECT_NEAR(ink.centre(), (80 - line.advance) / 2 + line.bearing + line.width / 2, 1.0);
        EXPECT_LE(ink.top, 4);
        EXPECT_EQ(ink.strongest, 0xffffffffu);
    }

    // The text view: the owner's volume, and its pan position as a left and a right figure,
    // each "%d%%" with the line's lower-left corner at (120, 234), (363, 234) and (494, 234).
    HalvoUiView10 owner(HalvoUiView10::kFrame, nullptr);
    sTextView10 view({0, 0, 560, 250});
    view.setOwner(&owner);
    const Color& c = view.textColor(); // blue 238 / 256, as it was always defined
    EXPECT_EQ(std::tuple(c.red, c.green, c.blue, c.alpha),
              std::tuple(242 / 255.0, 240 / 255.0, 238 / 256.0, 1.0));
    const std::tuple<int, int, int, int> rows[] = { // volume, pan, left, right
        {80, 75, 0, 50}, {5, 20, 60, 0}, {100, 50, 0, 0}, {0, 51, 0, 2}, {7, 49, 2, 0}};
    for (auto [volume, pan, left, right] : rows) {
        SCOPED_TRACE(testing::Message() << "volume " << volume << ", pan " << pan);
        EXPECT_EQ(std::pair(panFigures(pan).left, panFigures(pan).right), std::pair(left, right));
        owner.setVolumeSliderVal(volume);
        owner.setPanningSliderVal(pan);
        Canvas canvas(560, 250);
        canvas.draw(view);
        for (auto [x, figure] : {std::pair{120, volume}, {363, left}, {494, right}}) {
            const std::string text = std::to_string(figure) + "%";
            const Ink ink = inkIn(canvas, x - 2, 0, std::min(x + 100, 560), 250);
            const Line line = lineOf(text);
            EXPECT_NEAR(ink.left, x + line.bearing, 1.0) << text;
            EXPECT_NEAR(ink.width(), line.width, 2.0) << text;
            EXPECT_NEAR(ink.bottom, 250 - 234 - line.descent, 1.5) << text;
            EXPECT_EQ(ink.strongest, 0xfff2f0edu) << text; // 242, 240, 237
        }
        // Nothing else is painted: the view stays see-through.
        EXPECT_EQ(inkIn(canvas, 0, 0, 118, 250).right, -1);
        EXPECT_EQ(inkIn(canvas, 0, 20, 560, 250).right, -1);
    }
}

TEST(PanelViews, ImageViewTogglesOnEveryPressAndKickButtonShowsPictureTwoWhileHeld)
{
    // Pictures with a clear right half, which must show what lies beneath: they are blended.
    const Image one = Canvas(2, 2, kRed, 1).image, two = Canvas(2, 2, kBlue, 1).image;
    // Actions: d press, u release, 2 state 2 set from outside (any state but 0 shows picture two).
    // Kick button or plain view, actions, then the state, the reports and the picture shown.
    const std::tuple<bool, std::string, int, size_t, uint32_t> rows[] = {
        {false, "", 0, 0, kRed},   {false, "d", 1, 1, kBlue}, {false, "dd", 0, 2, kRed},
        {false, "2", 2, 0, kBlue}, {false, "2d", 0, 1, kRed}, {true, "d", 1, 1, kBlue},
        {true, "du", 0, 1, kRed},  {true, "dudu", 0, 2, kRed}};
    for (const auto& [kick, actions, state, reportCount, shown] : rows) {
        SCOPED_TRACE(testing::Message() << (kick ? "kick button " : "image view ") << actions);
        const Rect frame{0, 0, 10, 10};
        auto view = kick ? std::make_unique<HalvoCustomKickButton10>(frame, one, two, 9)
                         : std::make_unique<HalvoCustomImageView10>(frame, one, two);
        Reports reports;
        view->setDelegate(&reports);
        for (const char action : actions)
            action == 'd'   ? view->mouseDown({})
            : action == 'u' ? view->mouseUp({})
                            : view->setImageState(2);
        EXPECT_EQ(view->imageState(), state);
        EXPECT_EQ(reports.indices, std::vector<int32_t>(reportCount, 0));
        Canvas canvas(10, 10, kGreen);
        canvas.draw(*view);
        // The picture is stretched over the whole view.
        EXPECT_EQ(std::tuple(canvas(0, 0), canvas(0, 9), canvas(9, 5)),
                  std::tuple(shown, shown, kGreen));
    }
}
