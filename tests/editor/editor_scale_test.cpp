// The editor at the scale the desktop asks for: GDK_SCALE, else Xft.dpi on the X server, read
// when the effect is made; at scale 2 twice the size, drawn from the pictures for that scale, and
// turning as at scale 1 for every point the pointer travels.
#include <gtest/gtest.h>

#include <cstring>
#include <optional>

#include "tests/editor/EditorFixture.h"

namespace {

using namespace editor_test;

// Sets or clears an environment variable for as long as it lives.
class ScopedVariable {
public:
    ScopedVariable(const char* name, const char* value) : name(name)
    {
        if (const char* old = std::getenv(name))
            previous = old;
        if (value)
            setenv(name, value, 1);
        else
            unsetenv(name);
    }
    ~ScopedVariable()
    {
        if (previous)
            setenv(name, previous->c_str(), 1);
        else
            unsetenv(name);
    }

private:
    const char* name;
    std::optional<std::string> previous;
};

// The resources a desktop puts on the root window (what xrdb does), or none.
void setRootResources(const char* resources)
{
    int screenNumber = 0;
    xcb_connection_t* c = xcb_connect(nullptr, &screenNumber);
    xcb_screen_iterator_t screens = xcb_setup_roots_iterator(xcb_get_setup(c));
    for (int i = 0; i < screenNumber; ++i)
        xcb_screen_next(&screens);
    const xcb_window_t root = screens.data->root;
    if (resources)
        xcb_change_property(c, XCB_PROP_MODE_REPLACE, root, XCB_ATOM_RESOURCE_MANAGER,
                            XCB_ATOM_STRING, 8, static_cast<uint32_t>(std::strlen(resources)),
                            resources);
    else
        xcb_delete_property(c, root, XCB_ATOM_RESOURCE_MANAGER);
    free(xcb_get_input_focus_reply(c, xcb_get_input_focus(c), nullptr)); // a round trip
    xcb_disconnect(c);
}

// Width and height of the editor rectangle a host is told before any open.
std::pair<int, int> editorSize(const VstPlugin& plugin)
{
    ERect* rect = nullptr;
    if (plugin.dispatch(effEditGetRect, 0, 0, &rect) != 1 || !rect)
        return {0, 0};
    return {rect->right - rect->left, rect->bottom - rect->top};
}

TEST(DesktopScale, ComesFromGdkScaleElseXftDpiWhenTheEffectIsMadeAndIsOneWhenNeitherSays)
{
    XServer server;
    ASSERT_TRUE(server.running());
    struct Case {
        const char* gdkScale;
        const char* resources;
        int scale;
    };
    const Case cases[] = {
        {nullptr, nullptr, 1},
        {"2", nullptr, 2},
        {"3", nullptr, 3},
        {"7", nullptr, 3},                          // as far as there are pictures
        {"1", "Xft.dpi:\t192\n", 1},                // GDK_SCALE decides when it is set
        {"0", "Xft.dpi:\t144\n", 2},                // and is a whole number of at least 1
        {"2.5", "Xft.dpi:\t144\n", 2},
        {nullptr, "Xft.antialias:\t1\nXft.dpi:\t144\nXft.hinting:\t1\n", 2},
        {nullptr, "Xft.dpi:\t143\n", 1},            // 1.49
        {nullptr, "Xft.dpi:\t240\n", 3},            // 2.5: halves go up
        {nullptr, "Xft.dpi:\t96\n", 1},
        {nullptr, "Xft.dpi:\t480\n", 3},
        {nullptr, "Xft.dpi:\tlarge\n", 1},
        {nullptr, "Xft.dpis:\t192\n", 1},
    };
    for (const Case& c : cases) {
        setRootResources(c.resources);
        ScopedVariable gdk("GDK_SCALE", c.gdkScale);
        auto plugin = test_host::createEffect();
        EXPECT_EQ(editorSize(*plugin), std::make_pair(253 * c.scale, 400 * c.scale))
            << (c.gdkScale ? c.gdkScale : "-") << " " << (c.resources ? c.resources : "-");
    }

    // Read once, when the effect is made.
    setRootResources(nullptr);
    auto plugin = [] {
        ScopedVariable gdk("GDK_SCALE", "2");
        return test_host::createEffect();
    }();
    EXPECT_EQ(editorSize(*plugin), std::make_pair(506, 800));
    // No X server at all: scale 1.
    ScopedVariable noDisplay("DISPLAY", nullptr);
    EXPECT_EQ(editorSize(*test_host::createEffect()), std::make_pair(253, 400));
}

class ScaledEditor : public EditorInX {
protected:
    void SetUp() override
    {
        EditorInX::SetUp();
        ScopedVariable gdk("GDK_SCALE", "2");
        plugin = test_host::createEffect();
        scale = 2;
        window = std::make_unique<HostWindow>(40, 30, 2 * kWidth, 2 * kHeight, "scaled host");
    }
};

TEST_F(ScaledEditor, IsTwiceAsLargeSharpAndTurnsAsAtScale1ForEveryPoint)
{
    open();
    EXPECT_EQ(editorSize(*plugin), std::make_pair(506, 800));
    // Program 0 (steps 63, 17, 0, 0, 100 and 44.1 kHz) from the pictures drawn for scale 2.
    EXPECT_TRUE(shows(kTopStrip, panelPicture("tremolobk", 2)));
    const int frames[5] = {80, 21, 0, 0, 127};
    for (int parameter = 0; parameter < 5; ++parameter)
        EXPECT_TRUE(shows(kKnobs[parameter], knobFrame(frames[parameter], 2))) << parameter;
    expectRateShown(0);

    // The drags of the scale-1 test, every point two device pixels: the same values and frames.
    for (int parameter = 0; parameter < 5; ++parameter)
        plugin->setParameter(parameter, 0.2f);
    idleFor(50);
    drag(kKnobs[3], 4); // two points: less than a step from step 20
    EXPECT_EQ(plugin->getParameter(3), 0.2f);
    drag(kKnobs[3], 6); // three more points go on from there
    EXPECT_EQ(plugin->getParameter(3), 0.22f);
    EXPECT_TRUE(shows(kKnobs[3], knobFrame(27, 2)));
    drag(kKnobs[4], 760); // mix, far past the top
    EXPECT_EQ(plugin->getParameter(4), 1.0f);
    EXPECT_TRUE(shows(kKnobs[4], knobFrame(125, 2)));
    drag(kButtons[1], 0);
    EXPECT_EQ(plugin->getParameter(5), 8.0f);
    expectRateShown(1);
}

} // namespace
