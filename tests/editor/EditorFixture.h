// What the editor tests in a real X server share: a fixture holding a host window and an effect
// whose editor it opens, with xdotool to move the mouse (the panel's areas and pixel checks are in
// tests/harness/OnScreen.h).
#pragma once

#include <gtest/gtest.h>

#include <sys/wait.h>

#include <chrono>
#include <cstdlib>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "panel/PanelPictures.h"
#include "tests/harness/OnScreen.h"
#include "tests/harness/Processes.h"
#include "tests/harness/TestHost.h"
#include "tests/harness/XServer.h"
#include "tests/panel/PictureCheck.h"
#include "tools/vsthost/HostWindow.h"

namespace editor_test {

class EditorInX : public ::testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_TRUE(server.running()) << "Xvfb did not start";
        window = std::make_unique<HostWindow>(40, 30, kWidth, kHeight, "test host");
        ASSERT_TRUE(window->ok());
        plugin = test_host::createEffect();
        ASSERT_TRUE(plugin);
    }

    static VstIntPtr openIn(const VstPlugin& effect, const HostWindow& parent)
    {
        return effect.dispatch(effEditOpen, 0, 0, reinterpret_cast<void*>(uintptr_t{parent.id()}));
    }
    void open()
    {
        ASSERT_EQ(openIn(*plugin, *window), 1);
        idleFor(150);
    }
    void idleOnce()
    {
        window->pump();
        plugin->dispatch(effEditIdle);
    }
    void idleFor(int milliseconds, int period = 10)
    {
        serveFor(milliseconds, [this] { idleOnce(); }, period);
    }

    // The device pixel at the middle of a control, at the editor's scale.
    std::string deviceX(const Area& control) const
    {
        return std::to_string((control.x + control.w / 2) * scale);
    }
    int deviceY(const Area& control) const { return (kHeight - control.y - control.h / 2) * scale; }

    // Runs xdotool with args, the windows served meanwhile (xdotool waits for the server, and
    // the server for the client that holds the pointer), then serves a little longer.
    void xdotool(std::vector<std::string> args, std::function<void()> serve = {})
    {
        if (!serve)
            serve = [this] { idleOnce(); };
        args.insert(args.begin(), "xdotool");
        const pid_t tool = spawn(args);
        int status = -1;
        while (tool > 0 && waitpid(tool, &status, WNOHANG) == 0)
            serveFor(5, serve);
        ASSERT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
        serveFor(60, serve);
    }
    // xdotool's words that put the pointer on device pixel (x, y) of the window in. With sync
    // xdotool waits for the pointer to arrive, which it waits for in vain when the pointer is
    // there already.
    std::vector<std::string> moveTo(const std::string& x, int y, const HostWindow* in = nullptr,
                                    bool sync = true)
    {
        std::vector<std::string> words = {"mousemove", "--window",
                                          std::to_string((in ? in : window.get())->id())};
        if (sync)
            words.push_back("--sync");
        words.insert(words.end(), {x, std::to_string(y)});
        return words;
    }

    // Presses the middle of a control in the given window, moves up by dy device pixels in two
    // motions and releases (a click when dy is 0), with serve answering for the windows
    // meanwhile. Shift held throughout when asked.
    void drag(const Area& control, int dy, const HostWindow* in = nullptr,
              std::function<void()> serve = {}, bool shift = false)
    {
        const int y = deviceY(control);
        const std::vector<int> rises = dy == 0 ? std::vector{0} : std::vector{0, dy / 2, dy};
        std::vector<std::string> args;
        if (shift)
            args = {"keydown", "shift"};
        for (size_t i = 0; i < rises.size(); ++i) {
            for (std::string& word : moveTo(deviceX(control), y - rises[i], in))
                args.push_back(word);
            if (i == 0)
                args.insert(args.end(), {"mousedown", "1"});
        }
        args.insert(args.end(), {"mouseup", "1"});
        if (shift)
            args.insert(args.end(), {"keyup", "shift"});
        xdotool(args, serve);
    }

    testing::AssertionResult shows(const Area& a, const Image& picture)
    {
        return ::shows(window->connection(), window->id(), a, picture, scale);
    }
    void expectRateShown(int chosen)
    {
        for (int i = 0; i < 4; ++i) {
            const char* picture = i == chosen ? "ringbutton2" : "ringbutton1";
            EXPECT_TRUE(shows(kButtons[i], panelPicture(picture, scale))) << "button " << i;
        }
    }

    XServer server{"1280x1024x24"}; // large enough for the panel at scale 2
    std::unique_ptr<HostWindow> window;
    std::unique_ptr<VstPlugin> plugin;
    int scale = 1; // the editor's, when a test makes it draw at another
};

} // namespace editor_test
