// The panel at scales 2 and 3: every picture as the generator draws it for that scale, every
// control where the scale-1 panel has it, multiplied, showing its picture drawn for the scale,
// and hit by the same areas of the screen.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "panel/EmbeddedPictures.h"
#include "panel/PanelPictures.h"
#include "panel/PictureNames.h"
#include "platform/DevicePixels.h"
#include "tests/panel/PanelFixture.h"
#include "tools/pictures/PictureDrawing.h"

namespace {

using namespace panel_test;

testing::AssertionResult samePixels(const Image& shown, const Image& expected)
{
    if (shown.isEmpty() || shown.width() != expected.width() ||
        shown.height() != expected.height())
        return testing::AssertionFailure() << "no picture, or another size";
    int wrong = 0;
    for (int y = 0; y < expected.height(); ++y)
        for (int x = 0; x < expected.width(); ++x)
            wrong += pixelAt(shown.surface(), x, y) != pixelAt(expected.surface(), x, y);
    if (wrong > 0)
        return testing::AssertionFailure() << wrong << " pixels differ";
    return testing::AssertionSuccess();
}

TEST(Pictures, EveryPictureAtEveryScaleIsTheOneTheGeneratorDrawsAndNothingElseIsEmbedded)
{
    const std::vector<std::string> names = pictureNames();
    for (int scale = 1; scale <= picture_names::kLargestScale; ++scale) {
        for (const std::string& name : names) {
            const Image committed = panelPicture(name, scale);
            // Decoding the committed PNG gives back the drawn surface's premultiplied pixels.
            EXPECT_TRUE(samePixels(committed, Image(drawPicture(name, scale))))
                << name << " at scale " << scale;
        }
    }
    EXPECT_EQ(embeddedPictures().size(), names.size() * picture_names::kLargestScale);
    EXPECT_TRUE(panelPicture("knob0", 4).isEmpty()); // never stretched from another scale
}

// Which control a view of a panel is, so that two panels' views can be compared.
std::string controlName(HalvoUiView10& panel, const View* view)
{
    for (int32_t parameter = 0; parameter < 5; ++parameter)
        if (view && view->superview() == panel.knobView()->knobForParameter(parameter))
            return "knob " + std::to_string(parameter);
    const auto& buttons = panel.knobView()->rateButtons();
    for (size_t i = 0; i < buttons.size(); ++i)
        if (view == buttons[i])
            return "button " + std::to_string(i);
    return view ? "background" : "nothing";
}

TEST(ScaledPanel, AtScales2And3IsTheScale1PanelMultipliedDrawnFromItsOwnPictures)
{
    RecordingEffect effect;
    effect.values = {0.5f, 0.123f, 0.57f, 0.98f, 1.0f, 9.0f};
    HalvoUiView10 one(HalvoUiView10::kFrame, &effect, 1);
    one.awakeFromNib();
    const std::array<int, 5> frames = {63, 15, 71, 124, 127};
    for (int scale : {2, 3}) {
        HalvoUiView10 panel(HalvoUiView10::kFrame, &effect, scale);
        panel.awakeFromNib();
        Canvas canvas(253 * scale, 400 * scale);
        EXPECT_EQ(Renderer::renderAll(canvas.cr.get(), panel, scale),
                  (DeviceRect{0, 0, 253 * scale, 400 * scale}));
        // The same points: the same frames and the same steps.
        for (int32_t parameter = 0; parameter < 5; ++parameter) {
            const FlatKnob10* knob = panel.knobView()->knobForParameter(parameter);
            EXPECT_EQ(knob->frame(), one.knobView()->knobForParameter(parameter)->frame());
            EXPECT_TRUE(shows(canvas, *knob, knobFrame(frames[parameter], scale), scale))
                << parameter << " at scale " << scale;
        }
        for (size_t i = 0; i < 4; ++i) {
            const View* button = panel.knobView()->rateButtons()[i];
            const char* picture = i == 2 ? "ringbutton2" : "ringbutton1";
            EXPECT_TRUE(shows(canvas, *button, panelPicture(picture, scale), scale)) << i;
        }
        EXPECT_TRUE(showsPicture(canvas, panelPicture("tremolobk", scale), 0, 0, 253 * scale,
                                 140 * scale, scale)); // the legends above the knobs

        // Every device pixel hits what the pixel it doubles (or triples) hits at scale 1.
        int wrong = 0;
        for (int y = 0; y < 400 * scale; ++y) {
            for (int x = 0; x < 253 * scale; ++x) {
                const View* hit = panel.hitTest(pointOfDevicePixel(x, y, scale, 400));
                const View* atOne = one.hitTest(pointOfDevicePixel(x / scale, y / scale, 1, 400));
                wrong += controlName(panel, hit) != controlName(one, atOne);
            }
        }
        EXPECT_EQ(wrong, 0) << "at scale " << scale;
    }
}

} // namespace
