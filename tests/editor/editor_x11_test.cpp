// The editor in a real X server: a host window of ours, the panel embedded in it, the mouse moved
// by xdotool, parameters read back through the host and pixels read back from the server.
#include <gtest/gtest.h>

#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cmath>
#include <fstream>
#include <set>
#include <thread>

#include "tests/editor/XServer.h"
#include "tests/harness/TestHost.h"
#include "tools/vsthost/HostWindow.h"

using test_host::createEffect;

namespace {

constexpr int kWidth = 253;
constexpr int kHeight = 400;

// Where the controls sit on the panel (origin lower left, y up), by parameter.
struct Area {
    int x, y, w, h;
};
constexpr Area kKnobs[5] = {{48, 202, 48, 48}, {45, 128, 48, 48}, {154, 202, 48, 48},
                            {156, 128, 48, 48}, {104, 77, 48, 48}};
constexpr Area kButtons[4] = {{48, 46, 13, 13}, {78, 46, 13, 13}, {160, 46, 13, 13},
                              {190, 46, 13, 13}};

long residentKiB()
{
    std::ifstream statm("/proc/self/statm");
    long size = 0, resident = 0;
    statm >> size >> resident;
    return resident * (sysconf(_SC_PAGESIZE) / 1024);
}

class EditorInX : public ::testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_TRUE(server.running()) << "Xvfb did not start";
        window = std::make_unique<HostWindow>(40, 30, kWidth, kHeight, "test host");
        ASSERT_TRUE(window->ok());
        plugin = createEffect();
        ASSERT_TRUE(plugin);
    }

    void TearDown() override
    {
        if (plugin)
            plugin->dispatch(effEditClose);
    }

    void open()
    {
        ASSERT_EQ(plugin->dispatch(effEditOpen, 0, 0, reinterpret_cast<void*>(uintptr_t{window->id()})), 1);
        idleFor(150);
    }

    // Calls idle the way a host's timer does.
    void idleFor(int milliseconds, int period = 10)
    {
        const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(milliseconds);
        while (std::chrono::steady_clock::now() < end) {
            idleOnce();
            std::this_thread::sleep_for(std::chrono::milliseconds(period));
        }
    }

    void idleOnce()
    {
        window->pump();
        plugin->dispatch(effEditIdle);
    }

    // Screen position of a panel point.
    ScreenPoint onScreen(double panelX, double panelY)
    {
        const ScreenPoint origin = screenOrigin(window->connection(), window->id());
        return {origin.x + static_cast<int>(panelX), origin.y + static_cast<int>(kHeight - panelY)};
    }

    void xdotool(std::vector<std::string> arguments)
    {
        arguments.insert(arguments.begin(), "xdotool");
        ASSERT_EQ(runWhileServing(arguments, [this] { idleOnce(); }), 0);
        idleFor(60);
    }

    void drag(const Area& control, int dy)
    {
        const ScreenPoint from = onScreen(control.x + control.w / 2.0, control.y + control.h / 2.0);
        xdotool({"mousemove", "--sync", std::to_string(from.x), std::to_string(from.y), "mousedown",
                 "1", "mousemove", "--sync", std::to_string(from.x), std::to_string(from.y - dy / 2),
                 "mousemove", "--sync", std::to_string(from.x), std::to_string(from.y - dy),
                 "mouseup", "1"});
    }

    void click(const Area& control)
    {
        const ScreenPoint at = onScreen(control.x + control.w / 2.0, control.y + control.h / 2.0);
        xdotool({"mousemove", "--sync", std::to_string(at.x), std::to_string(at.y), "click", "1"});
    }

    Screenshot shot() { return screenshot(window->connection(), window->id(), kWidth, kHeight); }

    XServer server;
    std::unique_ptr<HostWindow> window;
    std::unique_ptr<VstPlugin> plugin;
};

bool isStep(float value)
{
    const float hundredths = value * 100.0f;
    return value == 1.0f || value == static_cast<float>(std::lround(hundredths)) / 100.0f;
}

} // namespace

TEST_F(EditorInX, PanelEmbedsAtItsSizeAndShowsPictures)
{
    open();
    ERect* rect = nullptr;
    ASSERT_EQ(plugin->dispatch(effEditGetRect, 0, 0, &rect), 1);
    EXPECT_EQ(rect->right - rect->left, kWidth);
    EXPECT_EQ(rect->bottom - rect->top, kHeight);

    xcb_query_tree_reply_t* tree = xcb_query_tree_reply(
        window->connection(), xcb_query_tree(window->connection(), window->id()), nullptr);
    ASSERT_NE(tree, nullptr);
    ASSERT_EQ(xcb_query_tree_children_length(tree), 1);
    const xcb_window_t child = xcb_query_tree_children(tree)[0];
    free(tree);
    xcb_get_geometry_reply_t* geometry = xcb_get_geometry_reply(
        window->connection(), xcb_get_geometry(window->connection(), child), nullptr);
    ASSERT_NE(geometry, nullptr);
    EXPECT_EQ(geometry->x, 0);
    EXPECT_EQ(geometry->y, 0);
    EXPECT_EQ(geometry->width, kWidth);
    EXPECT_EQ(geometry->height, kHeight);
    free(geometry);

    const Screenshot pixels = shot();
    ASSERT_EQ(pixels.pixels.size(), size_t{kWidth * kHeight});
    const std::set<uint32_t> colours(pixels.pixels.begin(), pixels.pixels.end());
    EXPECT_GT(colours.size(), 100u) << "the panel looks blank";
}

TEST_F(EditorInX, DraggingAKnobUpRaisesItsParameterToAStep)
{
    open();
    for (int parameter = 0; parameter < 5; ++parameter)
        plugin->setParameter(parameter, 0.2f);
    idleFor(50);
    const Screenshot before = shot();
    drag(kKnobs[3], 40); // panner speed
    const float raised = plugin->getParameter(3);
    EXPECT_GT(raised, 0.2f);
    EXPECT_TRUE(isStep(raised)) << raised;
    EXPECT_NE(shot().area(kKnobs[3].x, kKnobs[3].y, 48, 48), before.area(kKnobs[3].x, kKnobs[3].y, 48, 48));

    drag(kKnobs[4], 380); // mix, far past the top
    EXPECT_EQ(plugin->getParameter(4), 1.0f);
    // One knob's step writes every knob's value as its step shows it.
    EXPECT_EQ(plugin->getParameter(0), 0.2f);
    EXPECT_EQ(plugin->getParameter(3), raised);
}

TEST_F(EditorInX, EveryRateButtonSelectsItsChoiceAndShowsAlone)
{
    open();
    std::vector<std::vector<uint32_t>> unlit, lit;
    plugin->setParameter(5, 0.0f); // no button selected
    idleFor(50);
    for (const Area& button : kButtons)
        unlit.push_back(shot().area(button.x, button.y, button.w, button.h));
    for (int choice = 0; choice < 4; ++choice) {
        click(kButtons[choice]);
        EXPECT_EQ(plugin->getParameter(5), static_cast<float>(7 + choice));
        const Screenshot pixels = shot();
        for (int other = 0; other < 4; ++other) {
            const Area& b = kButtons[other];
            const auto area = pixels.area(b.x, b.y, b.w, b.h);
            if (other == choice)
                EXPECT_NE(area, unlit[other]) << "button " << choice << " does not look selected";
            else
                EXPECT_EQ(area, unlit[other]) << "button " << other << " still looks selected";
        }
    }
}

TEST_F(EditorInX, AutomationFromAnotherThreadMovesTheKnobOnScreen)
{
    open();
    const Screenshot atOne = shot(); // mix starts at 1.0 in the first program
    std::thread automation([this] {
        for (int i = 0; i <= 100; ++i)
            plugin->setParameter(4, i / 100.0f);
        plugin->setParameter(4, 0.5f);
    });
    idleFor(100, 5);
    automation.join();
    idleFor(100, 66);
    const auto live = shot().area(kKnobs[4].x, kKnobs[4].y, 48, 48);
    EXPECT_NE(live, atOne.area(kKnobs[4].x, kKnobs[4].y, 48, 48));

    // A panel built afresh from the same value shows the same picture.
    plugin->dispatch(effEditClose);
    open();
    EXPECT_EQ(shot().area(kKnobs[4].x, kKnobs[4].y, 48, 48), live);
}

TEST_F(EditorInX, AutomationDuringADragIsNotLost)
{
    open();
    std::atomic<bool> stop{false};
    std::thread automation([&] {
        for (int i = 0; !stop; ++i)
            plugin->setParameter(2, (i % 100) / 100.0f);
    });
    drag(kKnobs[0], 60);
    stop = true;
    automation.join();
    plugin->setParameter(2, 0.5f); // the last word is the host's
    idleFor(60);
    const auto shown = shot().area(kKnobs[2].x, kKnobs[2].y, 48, 48);
    plugin->dispatch(effEditClose);
    open();
    EXPECT_EQ(shot().area(kKnobs[2].x, kKnobs[2].y, 48, 48), shown);
}

TEST_F(EditorInX, TwoHundredCloseOpenCyclesDoNotGrowMemory)
{
    for (int i = 0; i < 20; ++i) {
        open();
        plugin->dispatch(effEditClose);
    }
    const long before = residentKiB();
    for (int i = 0; i < 200; ++i) {
        ASSERT_EQ(plugin->dispatch(effEditOpen, 0, 0, reinterpret_cast<void*>(uintptr_t{window->id()})), 1);
        idleOnce();
        idleOnce();
        plugin->dispatch(effEditClose);
    }
    EXPECT_LT(residentKiB() - before, 4 * 1024);
}

TEST_F(EditorInX, HostQuirksAreSurvived)
{
    // Idle before any open, open twice without a close, close twice.
    plugin->dispatch(effEditIdle);
    open();
    open();
    plugin->dispatch(effEditClose);
    plugin->dispatch(effEditClose);
    plugin->dispatch(effEditIdle);

    // The host destroys its window before closing the editor.
    open();
    window->destroy();
    for (int i = 0; i < 20; ++i) {
        plugin->setParameter(0, i / 20.0f);
        plugin->dispatch(effEditIdle);
    }
    plugin->dispatch(effEditClose);

    // A new window afterwards works as before.
    window = std::make_unique<HostWindow>(40, 30, kWidth, kHeight, "second window");
    open();
    const Screenshot pixels = shot();
    EXPECT_GT(std::set<uint32_t>(pixels.pixels.begin(), pixels.pixels.end()).size(), 100u);
}

TEST_F(EditorInX, EditorsOfTwoInstancesWorkSideBySide)
{
    open();
    HostWindow secondWindow(400, 30, kWidth, kHeight, "second host window");
    auto second = createEffect();
    ASSERT_EQ(second->dispatch(effEditOpen, 0, 0, reinterpret_cast<void*>(uintptr_t{secondWindow.id()})), 1);
    auto serveBoth = [&] {
        idleOnce();
        secondWindow.pump();
        second->dispatch(effEditIdle);
    };
    for (int i = 0; i < 20; ++i)
        serveBoth();
    const ScreenPoint origin = screenOrigin(secondWindow.connection(), secondWindow.id());
    const Area& mix = kKnobs[4];
    const int x = origin.x + mix.x + 24;
    const int y = origin.y + (kHeight - mix.y - 24);
    ASSERT_EQ(runWhileServing({"xdotool", "mousemove", "--sync", std::to_string(x), std::to_string(y),
                               "mousedown", "1", "mousemove", "--sync", std::to_string(x),
                               std::to_string(y + 60), "mouseup", "1"},
                              serveBoth),
              0);
    for (int i = 0; i < 20; ++i)
        serveBoth();
    EXPECT_LT(second->getParameter(4), 1.0f);
    EXPECT_EQ(plugin->getParameter(4), 1.0f);
    second->dispatch(effEditClose);
}

TEST(EditorPreviewTool, ShowsThePanelInAWindowOfItsOwnUntilTheWindowGoes)
{
    XServer server;
    ASSERT_TRUE(server.running());
    const pid_t tool = fork();
    ASSERT_GE(tool, 0);
    if (tool == 0) {
        execl(HVT_EDITOR_TOOL, "hvtremolo-editor", static_cast<char*>(nullptr));
        _exit(127);
    }
    // Find the tool's window, then take the connection away from it as a window manager's
    // "kill" does; the tool then closes the editor and ends by itself.
    int searches = 0;
    while (runWhileServing({"xdotool", "search", "--sync", "--limit", "1", "--name", "^HvTremolo$",
                            "windowkill"},
                           [] {}) != 0 &&
           ++searches < 20) {
    }
    int status = -1;
    waitpid(tool, &status, 0);
    EXPECT_LT(searches, 20) << "no window named HvTremolo appeared";
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << "the tool did not end cleanly";
}
