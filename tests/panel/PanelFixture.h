// What the offscreen panel tests share: a canvas to draw into, an effect that records what the
// panel writes, and a fixture holding a panel built over it.
#pragma once

#include <gtest/gtest.h>

#include <array>
#include <memory>
#include <string>
#include <tuple>
#include <vector>

#include "panel/FlatKnob10.h"
#include "panel/HalvoCustomGroupButton10.h"
#include "panel/HalvoUiView10.h"
#include "platform/MouseTracker.h"
#include "platform/Renderer.h"
#include "tests/panel/PictureCheck.h"

namespace panel_test {

struct Canvas {
    Canvas(int width, int height)
        : image(cairo_image_surface_create(CAIRO_FORMAT_ARGB32, width, height))
    {
    }
    uint32_t operator()(int x, int y) const { return pixelAt(image.surface(), x, y); }

    Image image;
    std::unique_ptr<cairo_t, decltype(&cairo_destroy)> cr{cairo_create(image.surface()),
                                                          &cairo_destroy};
};

// Holds six values and records each write (index, value) and each gesture ("+i" begun, "-i"
// ended).
class RecordingEffect : public PanelParameters {
public:
    using Write = std::tuple<int32_t, float>;

    void setParameter(int32_t index, float value) override
    {
        writes.emplace_back(index, value);
        values.at(static_cast<size_t>(index)) = value;
    }
    float getParameter(int32_t index) override { return values.at(static_cast<size_t>(index)); }
    void beginGesture(int32_t index) override { gestures += "+" + std::to_string(index); }
    void endGesture(int32_t index) override { gestures += "-" + std::to_string(index); }
    float sampleRate() override { return rate; }
    int32_t currentProgram() override { return program; }

    std::array<float, 6> values{};
    float rate = 44100.0f;
    int32_t program = 0;
    std::vector<Write> writes;
    std::string gestures;
};

// Whether the canvas of a whole panel drawn at scale shows picture where view lies.
inline testing::AssertionResult shows(const Canvas& canvas, const View& view,
                                      const Image& picture, int scale = 1)
{
    return showsPicture(canvas, picture, static_cast<int>(view.frame().x) * scale,
                        static_cast<int>(400 - view.frame().maxY()) * scale, picture.width(),
                        picture.height(), scale);
}

class Panel : public ::testing::Test {
protected:
    void SetUp() override
    {
        effect.values = {0.5f, 0.123f, 0.57f, 0.98f, 1.0f, 9.0f};
        build(&effect);
        ASSERT_TRUE(effect.writes.empty()); // building reads, never writes
    }
    void build(PanelParameters* withEffect)
    {
        panel = std::make_unique<HalvoUiView10>(HalvoUiView10::kFrame, withEffect);
        panel->awakeFromNib();
        Renderer::renderAll(canvas.cr.get(), *panel);
    }

    FlatKnob10* knob(int32_t parameter) { return panel->knobView()->knobForParameter(parameter); }
    int32_t step(int32_t parameter) { return knob(parameter)->controlPoint()->ReturnValue(); }
    static Point middle(const View* control)
    {
        const Rect& f = control->frame();
        return {f.x + f.width / 2, f.y + f.height / 2};
    }
    // Presses the middle of a control and drags through points the given heights above it.
    void drag(const View* control, std::vector<double> rises, bool shift = false)
    {
        const auto [x, y] = middle(control);
        MouseTracker mouse;
        mouse.press(*panel, {x, y}, shift);
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

} // namespace panel_test
