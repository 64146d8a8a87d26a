// The LV2 UI in a real X server, hosted the way LV2 hosts do it: the UI binary loaded with
// dlopen, instantiated through its descriptor in a window of ours with ui:parent, ui:resize,
// ui:touch and ui:idleInterface, told every port's value through port_event, driven by idle
// calls, the mouse moved by xdotool. The host records what the UI writes and touches, and, as
// Ardour does, reports every written value back.
#include <gtest/gtest.h>

#include <dlfcn.h>
#include <lv2/atom/atom.h>
#include <lv2/options/options.h>
#include <lv2/ui/ui.h>
#include <lv2/urid/urid.h>

#include <algorithm>
#include <cstdint>
#include <functional>
#include <sstream>
#include <string>
#include <tuple>
#include <vector>

#include "tests/harness/OnScreen.h"
#include "tests/harness/Processes.h"
#include "tests/harness/XServer.h"
#include "tests/panel/PictureCheck.h"
#include "tools/vsthost/HostWindow.h"

namespace {

const LV2UI_Descriptor* uiDescriptor()
{
    static void* binary = dlopen(HVT_LV2_UI_PATH, RTLD_NOW | RTLD_LOCAL);
    if (!binary)
        return nullptr;
    const auto entry =
        reinterpret_cast<const LV2UI_Descriptor* (*)(uint32_t)>(dlsym(binary, "lv2ui_descriptor"));
    return entry ? entry(0) : nullptr;
}

// One UI in a parent window; the log lists what it asked of the host, in order:
// "write PORT VALUE", "touch PORT 1|0", "resize W H".
class HostedUi {
public:
    // A scaleFactor above 0 is offered as the ui:scaleFactor option.
    explicit HostedUi(uint32_t parent, bool withParent = true, float scaleFactor = 0.0f)
        : parentWindow(parent), scale(scaleFactor)
    {
        const LV2UI_Descriptor* descriptor = uiDescriptor();
        if (!descriptor)
            return;
        const LV2_Feature parentFeature{LV2_UI__parent,
                                        reinterpret_cast<void*>(uintptr_t{parent})};
        const LV2_Feature resizeFeature{LV2_UI__resize, &resize};
        const LV2_Feature touchFeature{LV2_UI__touch, &touch};
        const LV2_Feature idleFeature{LV2_UI__idleInterface, nullptr};
        const LV2_Options_Option options[] = {
            {LV2_OPTIONS_INSTANCE, 0, map(this, LV2_UI__scaleFactor), sizeof scale,
             map(this, LV2_ATOM__Float), &scale},
            {LV2_OPTIONS_INSTANCE, 0, 0, 0, 0, nullptr}};
        const LV2_Feature optionsFeature{LV2_OPTIONS__options, const_cast<LV2_Options_Option*>(options)};
        const LV2_Feature mapFeature{LV2_URID__map, &uridMap};
        const LV2_Feature* features[] = {&resizeFeature, &touchFeature, &idleFeature,
                                         withParent ? &parentFeature : nullptr,
                                         scaleFactor > 0.0f ? &optionsFeature : nullptr,
                                         &mapFeature, nullptr};
        std::stable_partition(std::begin(features), std::end(features),
                              [](const LV2_Feature* f) { return f != nullptr; });
        LV2UI_Widget widgetPointer = nullptr;
        handle = descriptor->instantiate(descriptor, "urn:halvo:hvtremolo", HVT_LV2_BUNDLE,
                                         write, this, &widgetPointer, features);
        widget = static_cast<uint32_t>(reinterpret_cast<uintptr_t>(widgetPointer));
        idleInterface = static_cast<const LV2UI_Idle_Interface*>(
            descriptor->extension_data(LV2_UI__idleInterface));
    }
    ~HostedUi() { close(); }

    bool ok() const { return handle && idleInterface; }
    void close()
    {
        if (handle)
            uiDescriptor()->cleanup(handle);
        handle = nullptr;
    }

    void portEvent(uint32_t port, float value)
    {
        uiDescriptor()->port_event(handle, port, sizeof value, 0, &value);
    }
    // One host idle: the values the UI wrote since the last one come back, then the UI idles.
    void idle()
    {
        const auto echoes = std::move(unreported);
        unreported.clear();
        for (const auto& [port, value] : echoes)
            portEvent(port, value);
        idleInterface->idle(handle);
    }

    std::vector<std::string> log;
    uint32_t widget = 0;

private:
    static void write(LV2UI_Controller controller, uint32_t port, uint32_t size, uint32_t protocol,
                      const void* buffer)
    {
        auto* host = static_cast<HostedUi*>(controller);
        const float value = size == sizeof(float) && protocol == 0 ? *static_cast<const float*>(buffer) : -1.0f;
        std::ostringstream entry;
        entry << "write " << port << " " << value;
        host->log.push_back(entry.str());
        host->unreported.emplace_back(port, value);
    }
    static int resized(LV2UI_Feature_Handle handle, int width, int height)
    {
        static_cast<HostedUi*>(handle)->log.push_back("resize " + std::to_string(width) + " " +
                                                     std::to_string(height));
        return 0;
    }
    static void touched(LV2UI_Feature_Handle handle, uint32_t port, bool grabbed)
    {
        static_cast<HostedUi*>(handle)->log.push_back("touch " + std::to_string(port) + " " +
                                                     std::to_string(grabbed));
    }

    static LV2_URID map(LV2_URID_Map_Handle handle, const char* uri)
    {
        auto& uris = static_cast<HostedUi*>(handle)->uris;
        const auto found = std::find(uris.begin(), uris.end(), uri);
        if (found == uris.end())
            uris.emplace_back(uri);
        return static_cast<LV2_URID>(std::find(uris.begin(), uris.end(), uri) - uris.begin() + 1);
    }

    uint32_t parentWindow;
    float scale;
    std::vector<std::string> uris;
    LV2_URID_Map uridMap{this, map};
    LV2UI_Handle handle = nullptr;
    const LV2UI_Idle_Interface* idleInterface = nullptr;
    LV2UI_Resize resize{this, resized};
    LV2UI_Touch touch{this, touched};
    std::vector<std::pair<uint32_t, float>> unreported;
};

// Runs xdotool while serve answers for the windows (xdotool waits for the server, the server for
// the client that holds the pointer).
testing::AssertionResult xdotool(const std::vector<std::string>& commands,
                                 const std::function<void()>& serve)
{
    std::vector<std::string> argv = {"xdotool"};
    argv.insert(argv.end(), commands.begin(), commands.end());
    const pid_t pid = spawn(argv);
    int status = -1;
    while (pid > 0 && waitpid(pid, &status, WNOHANG) == 0)
        serveFor(5, serve);
    serveFor(60, serve);
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0)
        return testing::AssertionFailure() << "xdotool failed";
    return testing::AssertionSuccess();
}

// xdotool commands that press the middle of a control, move up by dy points in two motions and,
// unless asked not to, release (a click when dy is 0).
std::vector<std::string> dragCommands(uint32_t window, const Area& control, int dy,
                                      bool release = true)
{
    const std::string id = std::to_string(window);
    const int x = control.x + control.w / 2;
    const int y = kHeight - control.y - control.h / 2;
    // --sync waits for the pointer to move, so no motion may ask it to stay: the first goes to
    // the corner without waiting, in case the pointer is still where this press goes.
    std::vector<std::string> commands = {"mousemove", "--window", id, "0", "0",
                                         "mousemove", "--window", id, "--sync", std::to_string(x),
                                         std::to_string(y), "mousedown", "1"};
    for (int rise : dy == 0 ? std::vector<int>{} : std::vector{dy / 2, dy})
        commands.insert(commands.end(), {"mousemove", "--window", id, "--sync",
                                         std::to_string(x), std::to_string(y - rise)});
    if (release)
        commands.insert(commands.end(), {"mouseup", "1"});
    return commands;
}


class Lv2UiInX : public ::testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_TRUE(server.running()) << "Xvfb did not start";
        ASSERT_TRUE(uiDescriptor()) << dlerror();
        parent = std::make_unique<HostWindow>(40, 30, 300, 450, "LV2 host");
        ASSERT_TRUE(parent->ok());
    }

    // Instantiates a UI in the parent and reports the plug-in's values, as a host does before
    // the first idle: knobs 0 to 4, the rate choice and the tuning in use.
    std::unique_ptr<HostedUi> open(const std::vector<float>& values, float scaleFactor = 0.0f)
    {
        auto ui = std::make_unique<HostedUi>(parent->id(), true, scaleFactor);
        if (!ui->ok())
            return nullptr;
        for (uint32_t port = 4; port < 4 + values.size(); ++port)
            ui->portEvent(port, values[port - 4]);
        serveFor(100, [&] { serve(*ui); });
        return ui;
    }
    void serve(HostedUi& ui)
    {
        parent->pump();
        ui.idle();
    }
    testing::AssertionResult shows(const HostedUi& ui, const Area& a, const Image& picture)
    {
        return ::shows(parent->connection(), ui.widget, a, picture);
    }
    void expectRateShown(const HostedUi& ui, int lit)
    {
        for (int i = 0; i < 4; ++i)
            EXPECT_TRUE(shows(ui, kButtons[i], panelPicture(i == lit ? "ringbutton2" : "ringbutton1")))
                << "button " << i << ", lit should be " << lit;
    }

    XServer server;
    std::unique_ptr<HostWindow> parent;
};

TEST_F(Lv2UiInX, EmbedsAsAChildOfItsSizeAndShowsTheReportedValuesAsTheEditorWould)
{
    EXPECT_FALSE(HostedUi(parent->id(), false).ok()) << "a UI without ui:parent";
    // 0.57 builds as step 56 (read in double precision); 0.2, 1, 0 and 0.5 as 20, 100, 0, 50.
    auto ui = open({0.57f, 0.2f, 1.0f, 0.0f, 0.5f, 0.0f, 8.0f});
    ASSERT_TRUE(ui);
    EXPECT_EQ(ui->log, std::vector<std::string>{"resize 253 400"});
    xcb_connection_t* c = parent->connection();
    auto* tree = xcb_query_tree_reply(c, xcb_query_tree(c, ui->widget), nullptr);
    auto* geometry = xcb_get_geometry_reply(c, xcb_get_geometry(c, ui->widget), nullptr);
    ASSERT_TRUE(tree && geometry);
    EXPECT_EQ(tree->parent, parent->id());
    EXPECT_EQ(std::vector<int>({geometry->x, geometry->y, geometry->width, geometry->height}),
              std::vector<int>({0, 0, kWidth, kHeight}));
    free(tree);
    free(geometry);

    const int frames[5] = {71, 25, 127, 0, 63};
    for (int parameter = 0; parameter < 5; ++parameter)
        EXPECT_TRUE(shows(*ui, kKnobs[parameter], knobFrame(frames[parameter]))) << parameter;
    expectRateShown(*ui, 1); // "Session rate" at 48 kHz

    // Later reports move the controls as the editor's mailbox does; a value reported again
    // leaves the knob alone.
    ui->portEvent(4, 0.57f);
    ui->portEvent(5, 0.3f);
    ui->portEvent(10, 10.0f);
    serveFor(30, [&] { serve(*ui); });
    EXPECT_TRUE(shows(*ui, kKnobs[0], knobFrame(71)));
    EXPECT_TRUE(shows(*ui, kKnobs[1], knobFrame(38)));
    expectRateShown(*ui, 3);
    ui->portEvent(9, 7.0f); // a chosen tuning is lit whatever the session's
    ui->portEvent(10, 7.0f);
    serveFor(30, [&] { serve(*ui); });
    expectRateShown(*ui, 0);
    ui->portEvent(10, 9.0f);
    serveFor(30, [&] { serve(*ui); });
    expectRateShown(*ui, 0);
    EXPECT_EQ(ui->log.size(), 1u) << "the UI wrote a value it was told";
}

TEST_F(Lv2UiInX, AtTheHostsScaleFactorItAsksForAndTakesThePanelsSizeTimesTheScale)
{
    parent = std::make_unique<HostWindow>(0, 0, 800, 1000, "LV2 host at scale 2");
    ASSERT_TRUE(parent->ok());
    for (const auto& [factor, width, height] :
         {std::tuple{2.0f, 506, 800}, {1.2f, 253, 400}, {2.6f, 759, 1200}, {9.0f, 759, 1200}}) {
        auto ui = open({0.57f, 0.2f, 1.0f, 0.0f, 0.5f, 0.0f, 8.0f}, factor);
        ASSERT_TRUE(ui) << factor;
        EXPECT_EQ(ui->log, std::vector<std::string>{"resize " + std::to_string(width) + " " +
                                                    std::to_string(height)})
            << factor;
        xcb_connection_t* c = parent->connection();
        auto* geometry = xcb_get_geometry_reply(c, xcb_get_geometry(c, ui->widget), nullptr);
        ASSERT_TRUE(geometry);
        EXPECT_EQ(std::make_pair(int{geometry->width}, int{geometry->height}),
                  std::make_pair(width, height))
            << factor;
        free(geometry);
    }
}

TEST_F(Lv2UiInX, TakesTheDepthAndVisualOfAParentOfAnotherDepth)
{
    xcb_connection_t* c = parent->connection();
    xcb_screen_t* screen = xcb_setup_roots_iterator(xcb_get_setup(c)).data;
    xcb_visualid_t visual = 0;
    for (auto depths = xcb_screen_allowed_depths_iterator(screen); depths.rem && !visual;
         xcb_depth_next(&depths))
        if (depths.data->depth == 32 && xcb_depth_visuals_length(depths.data) > 0)
            visual = xcb_depth_visuals(depths.data)->visual_id;
    if (!visual)
        GTEST_SKIP() << "this X server offers no 32-bit visual";
    const xcb_colormap_t colormap = xcb_generate_id(c);
    xcb_create_colormap(c, XCB_COLORMAP_ALLOC_NONE, colormap, screen->root, visual);
    const xcb_window_t deep = xcb_generate_id(c);
    const uint32_t values[] = {0, 0, colormap};
    xcb_create_window(c, 32, deep, parent->id(), 0, 0, kWidth, kHeight, 0,
                      XCB_WINDOW_CLASS_INPUT_OUTPUT, visual,
                      XCB_CW_BACK_PIXEL | XCB_CW_BORDER_PIXEL | XCB_CW_COLORMAP, values);
    xcb_map_window(c, deep);
    xcb_flush(c);

    HostedUi ui(deep);
    ASSERT_TRUE(ui.ok()) << "refused by the server";
    for (uint32_t port = 4; port < 9; ++port)
        ui.portEvent(port, 1.0f);
    serveFor(100, [&] {
        parent->pump();
        ui.idle();
    });
    auto* geometry = xcb_get_geometry_reply(c, xcb_get_geometry(c, ui.widget), nullptr);
    ASSERT_TRUE(geometry);
    EXPECT_EQ(geometry->depth, 32);
    free(geometry);
    EXPECT_TRUE(::shows(c, ui.widget, kKnobs[4], knobFrame(127)));
}

TEST_F(Lv2UiInX, ADragWritesTheKnobsPortsInsideATouchAndTheEchoDoesNotMoveTheKnob)
{
    // Tremolo depth at 0.123: every knob step writes all five knobs as they show (0.12), as the
    // module's panel does; the others already hold what they show.
    auto ui = open({0.123f, 0.2f, 0.2f, 0.2f, 0.2f, 0.0f, 7.0f});
    ASSERT_TRUE(ui);
    ui->log.clear();
    auto serveUi = [&] { serve(*ui); };
    ASSERT_TRUE(xdotool(dragCommands(ui->widget, kKnobs[3], 3), serveUi)); // panner speed
    EXPECT_EQ(ui->log,
              (std::vector<std::string>{"touch 7 1", "write 4 0.12", "write 7 0.21", "touch 7 0"}));
    EXPECT_TRUE(shows(*ui, kKnobs[3], knobFrame(26)));

    // Far past the top: step 99, which writes 1.0; its echo would show step 100's frame, 127.
    ui->log.clear();
    ASSERT_TRUE(xdotool(dragCommands(ui->widget, kKnobs[4], 380), serveUi));
    ASSERT_GE(ui->log.size(), 3u);
    EXPECT_EQ(ui->log.front(), "touch 8 1");
    EXPECT_EQ(ui->log[ui->log.size() - 2], "write 8 1");
    EXPECT_EQ(ui->log.back(), "touch 8 0");
    EXPECT_TRUE(shows(*ui, kKnobs[4], knobFrame(125)));
    // Automation after the drag still moves it.
    ui->portEvent(8, 0.5f);
    serveFor(30, serveUi);
    EXPECT_TRUE(shows(*ui, kKnobs[4], knobFrame(63)));
}

TEST_F(Lv2UiInX, ARateButtonChoosesItsTuningAndPressedAgainReturnsToSessionRate)
{
    auto ui = open({0.5f, 0.5f, 0.5f, 0.5f, 0.5f, 0.0f, 7.0f});
    ASSERT_TRUE(ui);
    auto serveUi = [&] { serve(*ui); };
    expectRateShown(*ui, 0);
    ui->log.clear();
    ASSERT_TRUE(xdotool(dragCommands(ui->widget, kButtons[2], 0), serveUi)); // 88.2 kHz
    EXPECT_EQ(ui->log, (std::vector<std::string>{"touch 9 1", "write 9 9", "touch 9 0"}));
    expectRateShown(*ui, 2);
    ui->portEvent(10, 9.0f); // the plug-in now runs with it

    ui->log.clear();
    ASSERT_TRUE(xdotool(dragCommands(ui->widget, kButtons[2], 0), serveUi));
    EXPECT_EQ(ui->log, (std::vector<std::string>{"touch 9 1", "write 9 0", "touch 9 0"}));
    ui->portEvent(10, 7.0f); // back to the session's 44.1 kHz
    serveFor(30, serveUi);
    expectRateShown(*ui, 0);
    ui->portEvent(10, 8.0f); // the session's rate changes
    serveFor(30, serveUi);
    expectRateShown(*ui, 1);

    // The button lit for the session's rate chooses that tuning.
    ui->log.clear();
    ASSERT_TRUE(xdotool(dragCommands(ui->widget, kButtons[1], 0), serveUi));
    EXPECT_EQ(ui->log, (std::vector<std::string>{"touch 9 1", "write 9 8", "touch 9 0"}));
    expectRateShown(*ui, 1);
}

// The whole window's pixels, as the server holds them.
std::vector<uint32_t> windowPixels(xcb_connection_t* c, uint32_t window)
{
    std::vector<uint32_t> pixels;
    auto* image = xcb_get_image_reply(
        c, xcb_get_image(c, XCB_IMAGE_FORMAT_Z_PIXMAP, window, 0, 0, kWidth, kHeight, ~0u),
        nullptr);
    if (image && xcb_get_image_data_length(image) >= kWidth * kHeight * 4) {
        const auto* data = reinterpret_cast<const uint32_t*>(xcb_get_image_data(image));
        for (int i = 0; i < kWidth * kHeight; ++i)
            pixels.push_back(data[i] & 0xffffff);
    }
    free(image);
    return pixels;
}

TEST_F(Lv2UiInX, TheReadoutShowsAfterAHoverAndGoesWhenThePointerMovesOffOrLeaves)
{
    auto ui = open({0.5f, 0.5f, 0.5f, 0.5f, 0.5f, 0.0f, 7.0f});
    ASSERT_TRUE(ui);
    auto serveUi = [&] { serve(*ui); };
    const std::string id = std::to_string(ui->widget);
    const std::string x = std::to_string(kKnobs[2].x + kKnobs[2].w / 2);
    const std::string y = std::to_string(kHeight - kKnobs[2].y - kKnobs[2].h / 2);
    // The pointer at the panel's lower corner, away from every control.
    ASSERT_TRUE(xdotool({"mousemove", "--window", id, "--sync", "5", "395"}, serveUi));
    serveFor(100, serveUi);
    const std::vector<uint32_t> plain = windowPixels(parent->connection(), ui->widget);
    ASSERT_EQ(plain.size(), size_t{kWidth * kHeight});

    // Resting over the stereo panner for more than half a second shows its readout.
    ASSERT_TRUE(xdotool({"mousemove", "--window", id, "--sync", x, y}, serveUi));
    serveFor(700, serveUi);
    EXPECT_TRUE(windowPixels(parent->connection(), ui->widget) != plain) << "no readout on a hover";
    // Moved off the knob within the panel, it goes and leaves the panel as it was.
    ASSERT_TRUE(xdotool({"mousemove", "--window", id, "--sync", "5", "395"}, serveUi));
    serveFor(100, serveUi);
    EXPECT_TRUE(windowPixels(parent->connection(), ui->widget) == plain) << "the readout stayed";

    // A wheel notch shows the readout too; the pointer leaving the UI's window takes it away.
    ASSERT_TRUE(xdotool({"mousemove", "--window", id, "--sync", x, y, "click", "4"}, serveUi));
    serveFor(100, serveUi);
    EXPECT_EQ(ui->log.back(), "touch 6 0");
    ASSERT_TRUE(xdotool({"mousemove", "--window", std::to_string(parent->id()), "--sync", "280",
                         "20"},
                        serveUi));
    serveFor(100, serveUi);
    ui->portEvent(6, 0.5f); // as the knob was, to compare with the panel before
    serveFor(100, serveUi);
    EXPECT_TRUE(windowPixels(parent->connection(), ui->widget) == plain) << "the readout stayed";
}

TEST_F(Lv2UiInX, ClosedMidDragItEndsTheTouchAndAParentDestroyedFirstCostsNothing)
{
    auto ui = open({0.5f, 0.5f, 0.5f, 0.5f, 0.5f, 0.0f, 7.0f});
    ASSERT_TRUE(ui);
    auto serveUi = [&] { serve(*ui); };
    ASSERT_TRUE(xdotool(dragCommands(ui->widget, kKnobs[1], 20, false), serveUi));
    ASSERT_FALSE(ui->log.empty());
    EXPECT_EQ(ui->log.back().substr(0, 8), "write 5 ");
    ui->close();
    EXPECT_EQ(ui->log.back(), "touch 5 0");
    EXPECT_TRUE(xdotool({"mouseup", "1"}, [] {}));

    // The host destroys its window first, then goes on reporting and idling, then closes.
    ui = open({0.5f, 0.5f, 0.5f, 0.5f, 0.5f, 0.0f, 7.0f});
    ASSERT_TRUE(ui);
    parent->destroy();
    for (int i = 0; i < 20; ++i) {
        ui->portEvent(4 + i % 7, i / 20.0f);
        ui->idle();
    }
    ui->close();
    // A new UI in a new window works as ever.
    parent = std::make_unique<HostWindow>(40, 30, kWidth, kHeight, "second window");
    ui = open({0.95f, 0.5f, 0.5f, 0.5f, 0.5f, 0.0f, 7.0f});
    ASSERT_TRUE(ui);
    EXPECT_TRUE(shows(*ui, kKnobs[0], knobFrame(119)));
}

} // namespace
