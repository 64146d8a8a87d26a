// Our own gestures and the value readout in a real X server: the wheel, Shift, a double-click
// and a rest of the pointer as xdotool makes them, values read back through the AEffect record,
// and the window's pixels compared with the panel drawn offscreen in the same state.
#include <gtest/gtest.h>

#include "panel/HalvoUiView10.h"
#include "platform/DevicePixels.h"
#include "platform/MouseTracker.h"
#include "platform/Renderer.h"
#include "tests/editor/EditorFixture.h"

namespace {

using namespace editor_test;

class Gestures : public EditorInX {
protected:
    void setKnobs(float value)
    {
        for (int parameter = 0; parameter < 5; ++parameter)
            plugin->setParameter(parameter, value);
        idleFor(50);
    }
    // Wheel notches over a control, Shift held when asked.
    void wheel(const Area& control, int notches, bool shift = false)
    {
        std::vector<std::string> args = moveTo(deviceX(control), deviceY(control), nullptr, false);
        if (shift)
            args.insert(args.end(), {"keydown", "shift"});
        for (int i = 0; i < std::abs(notches); ++i)
            args.insert(args.end(), {"click", notches > 0 ? "4" : "5"});
        if (shift)
            args.insert(args.end(), {"keyup", "shift"});
        xdotool(args);
    }
};

TEST_F(Gestures, WheelShiftWheelShiftDragAndDoubleClickWriteTheirKnobAloneToTheThousandth)
{
    open();
    setKnobs(0.2f);
    wheel(kKnobs[1], 2);
    EXPECT_EQ(plugin->getParameter(1), 0.22f);
    wheel(kKnobs[1], -1, true);
    EXPECT_EQ(plugin->getParameter(1), 0.219f);
    drag(kKnobs[2], 30, nullptr, {}, true); // a thousandth every 2.7 points
    EXPECT_EQ(plugin->getParameter(2), 0.211f);
    for (int parameter : {0, 3, 4})
        EXPECT_EQ(plugin->getParameter(parameter), 0.2f) << parameter;

    // Back to program 2's mix, whatever was set since.
    plugin->dispatch(effSetProgram, 0, 2);
    auto factory = test_host::createEffect();
    factory->dispatch(effSetProgram, 0, 2);
    plugin->setParameter(4, 0.3f);
    idleFor(50);
    const std::vector<std::string> click = {"click", "--repeat", "2", "--delay", "80", "1"};
    std::vector<std::string> args = moveTo(deviceX(kKnobs[4]), deviceY(kKnobs[4]));
    args.insert(args.end(), click.begin(), click.end());
    xdotool(args);
    EXPECT_EQ(plugin->getParameter(4), factory->getParameter(4));

    // A motion event that leaves the pointer where it was pressed (XTEST sends one for a move to
    // the same spot, as fine mice do below a pixel) is no movement: still a double-click.
    plugin->setParameter(4, 0.3f);
    idleFor(50);
    // The pointer is still there from the double-click above: no --sync, which would wait for
    // a move.
    const std::vector<std::string> stay =
        moveTo(deviceX(kKnobs[4]), deviceY(kKnobs[4]), nullptr, false);
    args = stay;
    args.insert(args.end(), {"click", "1"});
    args.insert(args.end(), stay.begin(), stay.end());
    args.insert(args.end(), {"click", "1"});
    xdotool(args);
    EXPECT_EQ(plugin->getParameter(4), factory->getParameter(4));

    // A press that went on into a drag is no first half: the click after it writes nothing.
    const int y = deviceY(kKnobs[0]);
    args = moveTo(deviceX(kKnobs[0]), y);
    args.insert(args.end(), {"mousedown", "1"});
    for (const std::string& word : moveTo(deviceX(kKnobs[0]), y - 9))
        args.push_back(word);
    args.insert(args.end(), {"mouseup", "1", "click", "1"});
    const float before = plugin->getParameter(0);
    xdotool(args);
    EXPECT_GT(plugin->getParameter(0), before);
    EXPECT_NE(plugin->getParameter(0), factory->getParameter(0));
}

// The panel as the editor draws it, offscreen, over the plug-in's values as the host reads them.
// It writes nothing: it is only looked at.
class Lookalike : public PanelParameters {
public:
    Lookalike(const VstPlugin& plugin, float rate) : plugin(plugin), rate(rate)
    {
        panel.awakeFromNib();
        for (int32_t index = 0; index < 6; ++index)
            panel.updateView(index, plugin.getParameter(index));
    }
    float getParameter(int32_t index) override { return plugin.getParameter(index); }
    void setParameter(int32_t, float) override {}
    void beginGesture(int32_t) override {}
    void endGesture(int32_t) override {}
    float sampleRate() override { return rate; }
    int32_t currentProgram() override { return 0; }

    // Whether the window shows exactly this panel.
    testing::AssertionResult shownBy(const HostWindow& window)
    {
        Image canvas(cairo_image_surface_create(CAIRO_FORMAT_RGB24, kWidth, kHeight));
        cairo_t* cr = cairo_create(canvas.surface());
        Renderer::renderAll(cr, panel);
        cairo_destroy(cr);
        const WindowPixels shown(window.connection(), window.id(), 0, 0, kWidth, kHeight);
        if (!shown.reply)
            return testing::AssertionFailure() << "no pixels from the server";
        int wrong = 0;
        for (int y = 0; y < kHeight; ++y)
            for (int x = 0; x < kWidth; ++x)
                wrong += shown(x, y) != (pixelAt(canvas.surface(), x, y) & 0xffffff);
        if (wrong > 0)
            return testing::AssertionFailure() << wrong << " pixels differ";
        return testing::AssertionSuccess();
    }

    const VstPlugin& plugin;
    float rate;
    HalvoUiView10 panel{HalvoUiView10::kFrame, this};
};

TEST_F(Gestures, ReadoutShowsWhileDraggingAndAfterAHoverAndThenThePanelIsAsNew)
{
    constexpr float kRate = 48000.0f; // the host's, which the readout's hertz count in
    plugin->dispatch(effSetSampleRate, 0, 0, nullptr, kRate);
    open();
    const float values[5] = {0.25f, 0.5f, 0.75f, 0.4f, 1.0f};
    for (int parameter = 0; parameter < 5; ++parameter)
        plugin->setParameter(parameter, values[parameter]);
    idleFor(50);
    EXPECT_TRUE(Lookalike(*plugin, kRate).shownBy(*window));

    // Pressed and dragged 30 points, still held: the readout over the tremolo speed knob. The
    // panel offscreen is made before, as the editor's was, and dragged the same way after.
    Lookalike dragged(*plugin, kRate);
    const int x = std::stoi(deviceX(kKnobs[1]));
    const int y = deviceY(kKnobs[1]);
    std::vector<std::string> args = moveTo(deviceX(kKnobs[1]), y);
    args.insert(args.end(), {"mousedown", "1"});
    for (const std::string& word : moveTo(deviceX(kKnobs[1]), y - 30))
        args.push_back(word);
    xdotool(args);
    EXPECT_EQ(plugin->getParameter(1), 0.61f);
    MouseTracker mouse;
    mouse.press(dragged.panel, pointOfDevicePixel(x, y, 1, kHeight));
    mouse.drag(pointOfDevicePixel(x, y - 30, 1, kHeight));
    EXPECT_TRUE(dragged.shownBy(*window));
    xdotool({"mouseup", "1"});
    EXPECT_TRUE(Lookalike(*plugin, kRate).shownBy(*window));

    // A rest of the pointer over the panner speed knob, then away over the legends.
    const int restX = std::stoi(deviceX(kKnobs[3]));
    const int restY = deviceY(kKnobs[3]);
    xdotool(moveTo(deviceX(kKnobs[3]), restY));
    idleFor(700);
    {
        Lookalike expected(*plugin, kRate);
        MouseTracker::move(expected.panel, pointOfDevicePixel(restX, restY, 1, kHeight));
        const auto start = std::chrono::steady_clock::now();
        expected.panel.idle(start);
        expected.panel.idle(start + std::chrono::seconds(1));
        EXPECT_TRUE(expected.shownBy(*window));
    }
    xdotool(moveTo("120", 40));
    EXPECT_TRUE(Lookalike(*plugin, kRate).shownBy(*window));
}

} // namespace
