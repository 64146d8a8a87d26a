// The editor in a real X server: the module loaded as a host loads it, its editor embedded in a
// host window of ours, the mouse moved by xdotool, parameters read back through the AEffect
// record and the window's pixels read back from the server and compared with our pictures.
#include <gtest/gtest.h>

#include <atomic>
#include <cstdio>
#include <fstream>
#include <thread>

#include "tests/editor/EditorFixture.h"
#include "tests/harness/XServer.h"

namespace {

using namespace editor_test;

TEST_F(EditorInX, EmbedsAtItsSizeShowsPicturesAndSurvivesHostQuirks)
{
    plugin->dispatch(effEditIdle); // before any open
    open();
    open(); // without a close in between
    ERect* rect = nullptr;
    ASSERT_EQ(plugin->dispatch(effEditGetRect, 0, 0, &rect), 1);
    EXPECT_EQ(std::tie(rect->right, rect->bottom), std::tie(kWidth, kHeight));
    // Program 0, what a host starts with: steps 63, 17, 0, 0, 100 and 44.1 kHz. Pictures from the
    // top to the bottom of the host's window show the panel at its place and size.
    EXPECT_TRUE(shows(kTopStrip, panelPicture("tremolobk")));
    const int frames[5] = {80, 21, 0, 0, 127};
    for (int parameter = 0; parameter < 5; ++parameter)
        EXPECT_TRUE(shows(kKnobs[parameter], knobFrame(frames[parameter]))) << parameter;
    expectRateShown(0);

    // The window destroyed by the host before the close, which comes twice.
    window->destroy();
    for (int i = 0; i < 20; ++i) {
        plugin->setParameter(0, i / 20.0f);
        plugin->dispatch(effEditIdle);
    }
    plugin->dispatch(effEditClose);
    plugin->dispatch(effEditClose);
    window = std::make_unique<HostWindow>(40, 30, kWidth, kHeight, "second window");
    open();
    EXPECT_TRUE(shows(kKnobs[0], knobFrame(119))); // 0.95 read in double precision: step 94
}

TEST_F(EditorInX, DragsAndClicksWriteTheParametersAndShowThem)
{
    open();
    for (int parameter = 0; parameter < 5; ++parameter)
        plugin->setParameter(parameter, 0.2f);
    idleFor(50);
    drag(kKnobs[3], 3); // panner speed, from step 20
    EXPECT_EQ(plugin->getParameter(3), 0.21f);
    EXPECT_TRUE(shows(kKnobs[3], knobFrame(26)));

    drag(kKnobs[4], 380); // mix, far past the top
    EXPECT_EQ(plugin->getParameter(4), 1.0f);
    EXPECT_TRUE(shows(kKnobs[4], knobFrame(125)));
    EXPECT_EQ(plugin->getParameter(0), 0.2f); // every knob rewritten as it shows
    EXPECT_EQ(plugin->getParameter(3), 0.21f);

    for (int choice = 3; choice >= 0; --choice) {
        drag(kButtons[choice], 0);
        EXPECT_EQ(plugin->getParameter(5), static_cast<float>(7 + choice));
        expectRateShown(choice);
    }
}

TEST_F(EditorInX, AutomationFromAnotherThreadMovesTheKnobOnScreenAlsoDuringADrag)
{
    open();
    std::atomic<bool> stop{false};
    std::thread automation([&] {
        for (int i = 0; !stop; ++i) {
            plugin->setParameter(2, (i % 100) / 100.0f);
            std::this_thread::sleep_for(std::chrono::microseconds(100));
        }
        plugin->setParameter(2, 0.5f);
    });
    drag(kKnobs[0], 60); // every step of it writes parameter 2 as well, from this thread
    idleFor(100, 66);    // the slowest host timers
    stop = true;
    automation.join();
    idleFor(150, 66);
    EXPECT_GT(plugin->getParameter(0), 0.63f);
    EXPECT_EQ(plugin->getParameter(2), 0.5f);
    EXPECT_TRUE(shows(kKnobs[2], knobFrame(63)));
}

TEST_F(EditorInX, TwoHundredCloseOpenCyclesDoNotGrowMemory)
{
    auto residentKiB = [] {
        long size = 0, resident = 0;
        std::ifstream("/proc/self/statm") >> size >> resident;
        return resident * (sysconf(_SC_PAGESIZE) / 1024);
    };
    // The first cycles fill the drawing libraries' caches, and under valgrind its quarantine of
    // freed blocks; the next two hundred must not add to them.
    long before = 0;
    for (int i = 0; i < 260; ++i) {
        if (i == 60)
            before = residentKiB();
        ASSERT_EQ(openIn(*plugin, *window), 1);
        idleOnce();
        idleOnce();
        plugin->dispatch(effEditClose);
    }
    EXPECT_LT(residentKiB() - before, 4 * 1024);
}

TEST_F(EditorInX, EditorsOfTwoInstancesWorkSideBySide)
{
    open();
    HostWindow secondWindow(400, 30, kWidth, kHeight, "second host window");
    auto second = test_host::createEffect();
    ASSERT_EQ(openIn(*second, secondWindow), 1);
    auto serveBoth = [&] {
        idleOnce();
        secondWindow.pump();
        second->dispatch(effEditIdle);
    };
    serveFor(100, serveBoth);
    drag(kKnobs[4], -60, &secondWindow, serveBoth);
    EXPECT_LT(second->getParameter(4), 1.0f);
    EXPECT_EQ(plugin->getParameter(4), 1.0f);
    second->dispatch(effEditClose);
}

TEST(EditorPreviewTool, ShowsThePanelInAWindowOfItsOwnUntilTheWindowGoes)
{
    XServer server;
    ASSERT_TRUE(server.running());
    const pid_t tool = spawn({HVT_EDITOR_TOOL});
    ASSERT_GT(tool, 0);
    const xcb_window_t window = findWindowNamed("HvTremolo");
    xcb_connection_t* c = xcb_connect(nullptr, nullptr);
    auto shown = testing::AssertionFailure() << "no window named HvTremolo appeared";
    for (int i = 0; i < 50 && window && !shown; ++i) { // until the tool's idle has drawn
        std::this_thread::sleep_for(std::chrono::milliseconds(40));
        shown = shows(c, window, kKnobs[4], knobFrame(127));
    }
    xcb_disconnect(c);
    EXPECT_TRUE(shown);
    // Cut the window's connection as a window manager's "kill" does: the tool must then close
    // the editor and end by itself.
    if (!window || std::system(("xdotool windowkill " + std::to_string(window)).c_str()) != 0)
        kill(tool, SIGTERM);
    int status = -1;
    waitpid(tool, &status, 0);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << "the tool did not end cleanly";
}

} // namespace
