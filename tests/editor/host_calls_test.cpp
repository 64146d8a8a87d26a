// What the editor tells the host, seen by a host: the module loaded as a host loads it, its editor
// embedded in a window of ours and idled on this thread (the host's GUI thread), real drags by
// xdotool in Xvfb, and every audioMaster call recorded with the thread it came from while
// another thread runs the audio and automates.
#include <gtest/gtest.h>

#include <atomic>
#include <cstring>
#include <chrono>
#include <cstdlib>
#include <functional>
#include <ostream>
#include <thread>

#include "panel/PanelLayout.h"
#include "tests/harness/OnScreen.h"
#include "tests/harness/TestHost.h"
#include "tests/harness/XServer.h"
#include "tests/panel/PictureCheck.h"
#include "tools/vsthost/HostCallLog.h"
#include "tools/vsthost/HostWindow.h"

void PrintTo(const HostCall& call, std::ostream* out)
{
    *out << "{opcode " << call.opcode << ", index " << call.index << ", value " << call.value
         << ", thread " << call.thread << "}";
}

namespace {

using panel_layout::kPanelHeight;
using panel_layout::kPanelWidth;

const Rect& knobRect(int32_t parameter)
{
    for (const panel_layout::KnobPlace& place : panel_layout::kKnobPlaces)
        if (place.parameter == parameter)
            return place.frame;
    throw std::out_of_range("no knob");
}

class HostCalls : public ::testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_TRUE(server.running()) << "Xvfb did not start";
        unsetenv("HVTREMOLO_SILENT_PANEL"); // whatever the environment running the tests says
        window = std::make_unique<HostWindow>(40, 30, kPanelWidth, kPanelHeight, "recording host");
        ASSERT_TRUE(window->ok());
        plugin = VstPlugin::create(test_host::module(), HostCallLog::callback);
        ASSERT_TRUE(plugin);
        open();
    }
    void TearDown() override
    {
        HostCallLog::onAutomate({});
        unsetenv("HVTREMOLO_SILENT_PANEL");
    }

    void open()
    {
        const auto parent = reinterpret_cast<void*>(uintptr_t{window->id()});
        ASSERT_EQ(plugin->dispatch(effEditOpen, 0, 0, parent), 1);
        serveFor(150, [this] { idle(); });
        HostCallLog::take(); // what the effect asked when it was made (the host's version)
    }
    void idle()
    {
        window->pump();
        if (plugin)
            plugin->dispatch(effEditIdle);
    }

    // Presses the middle of a control, moves up through the given rises in points and releases
    // unless told not to, idling meanwhile; then idles a little longer.
    void drag(const Rect& control, std::vector<int> rises, bool release = true)
    {
        const std::string id = std::to_string(window->id());
        const int x = static_cast<int>(control.x + control.width / 2);
        const int y = kPanelHeight - static_cast<int>(control.y + control.height / 2);
        std::vector<std::string> argv = {"xdotool", "mousemove", "--window", id, std::to_string(x),
                                         std::to_string(y), "mousedown", "1"};
        for (int rise : rises)
            argv.insert(argv.end(),
                        {"mousemove", "--window", id, std::to_string(x), std::to_string(y - rise)});
        if (release)
            argv.insert(argv.end(), {"mouseup", "1"});
        runWhileIdling(argv);
    }
    void click(const Rect& control) { drag(control, {}); }
    // xdotool waits for the server, and the server for the client that holds the pointer: this
    // thread goes on idling until xdotool is done.
    void runWhileIdling(const std::vector<std::string>& argv)
    {
        const pid_t xdotool = spawn(argv);
        int status = -1;
        while (xdotool > 0 && waitpid(xdotool, &status, WNOHANG) == 0)
            serveFor(5, [this] { idle(); });
        ASSERT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
        serveFor(60, [this] { idle(); });
    }

    testing::AssertionResult knobShows(int32_t parameter, int frame)
    {
        const Rect& f = knobRect(parameter);
        const int left = static_cast<int>(f.x), top = kPanelHeight - static_cast<int>(f.maxY());
        const int w = static_cast<int>(f.width), h = static_cast<int>(f.height);
        xcb_connection_t* c = window->connection();
        auto* image = xcb_get_image_reply(
            c, xcb_get_image(c, XCB_IMAGE_FORMAT_Z_PIXMAP, window->id(), left, top, w, h, ~0u),
            nullptr);
        if (!image || xcb_get_image_data_length(image) < w * h * 4) {
            free(image);
            return testing::AssertionFailure() << "no pixels from the server";
        }
        const auto* shown = reinterpret_cast<const uint32_t*>(xcb_get_image_data(image));
        auto result = showsPicture([&](int x, int y) { return shown[(y - top) * w + x - left]; },
                                   knobFrame(frame), left, top, w, h);
        free(image);
        return result;
    }

    HostCall begin(int32_t index) const { return {audioMasterBeginEdit, index, 0.0f, ui}; }
    HostCall automate(int32_t index, float value) const
    {
        return {audioMasterAutomate, index, value, ui};
    }
    HostCall end(int32_t index) const { return {audioMasterEndEdit, index, 0.0f, ui}; }
    // A gesture under way: begun, values told, not ended.
    void expectBegunOn(int32_t index)
    {
        const std::vector<HostCall> calls = HostCallLog::take();
        ASSERT_GE(calls.size(), 2u);
        EXPECT_EQ(calls.front(), begin(index));
        EXPECT_EQ(calls.back().opcode, audioMasterAutomate);
    }

    const std::thread::id ui = std::this_thread::get_id();
    XServer server;
    std::unique_ptr<HostWindow> window;
    std::unique_ptr<VstPlugin> plugin;
};

TEST_F(HostCalls, ADragIsBegunEachChangedValueAutomatedAndEndedOnTheIdleThread)
{
    // Host automation, some of it from another thread: shown, never told back to the host.
    std::thread([this] { plugin->setParameter(1, 0.2f); }).join();
    for (int32_t parameter : {0, 2, 3, 4})
        plugin->setParameter(parameter, 0.2f);
    plugin->setParameter(0, 0.333f); // shown as step 33, which the panel writes as 0.33
    serveFor(60, [this] { idle(); });
    EXPECT_TRUE(knobShows(0, 41));
    EXPECT_TRUE(HostCallLog::take().empty());

    // Three points up turn panner speed from step 20 to 21. Every step writes all five knobs as
    // they show; of those only tremolo depth's value changes besides the dragged knob's.
    drag(knobRect(3), {1, 3});
    EXPECT_EQ(HostCallLog::take(),
              (std::vector{begin(3), automate(0, 0.33f), automate(3, 0.21f), end(3)}));

    // Far past the top while the audio thread runs and automates the rate: each step of the mix
    // is told, rising, and only from this thread.
    std::atomic<bool> stop{false};
    std::thread audio([&] {
        test_host::StereoBuffer in(64, 0.5f), out(64);
        // A block about every millisecond, as a host's audio thread runs them: a loop that never
        // waits would starve the idle thread under valgrind, whose threads take turns.
        for (int i = 0; !stop; ++i) {
            plugin->setParameter(kSampleRate, static_cast<float>(7 + i % 4));
            plugin->processReplacing(in.channels(), out.channels(), 64);
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
    });
    drag(knobRect(4), {40, 120, 380});
    stop = true;
    audio.join();
    const std::vector<HostCall> calls = HostCallLog::take();
    ASSERT_GE(calls.size(), 5u);
    EXPECT_EQ(calls.front(), begin(4));
    EXPECT_EQ(calls.back(), end(4));
    EXPECT_EQ(calls[calls.size() - 2], automate(4, 1.0f));
    for (size_t i = 1; i + 1 < calls.size(); ++i) {
        EXPECT_EQ(calls[i], automate(4, calls[i].value)) << i;
        EXPECT_GT(calls[i].value, i == 1 ? 0.2f : calls[i - 1].value) << i;
    }
    EXPECT_EQ(plugin->getParameter(4), 1.0f);
}

TEST_F(HostCalls, ARateButtonBracketsItsWriteAndAHostChangeOrProgramTellsNothing)
{
    using panel_layout::kRateButtonFrames;
    click(kRateButtonFrames[1]);
    EXPECT_EQ(HostCallLog::take(), (std::vector{begin(5), automate(5, 8.0f), end(5)}));
    click(kRateButtonFrames[1]); // chosen already: a gesture without a change
    EXPECT_EQ(HostCallLog::take(), (std::vector{begin(5), end(5)}));

    plugin->dispatch(effSetProgram, 0, 2); // "Warble": stereo panner 1, shown as step 100
    std::thread([this] { plugin->setParameter(3, 0.7f); }).join();
    serveFor(60, [this] { idle(); });
    EXPECT_TRUE(knobShows(2, 127));
    EXPECT_TRUE(knobShows(3, 88));
    EXPECT_TRUE(HostCallLog::take().empty());
}

TEST_F(HostCalls, TheSilentPanelTellsTheHostNothing)
{
    setenv("HVTREMOLO_SILENT_PANEL", "1", 1); // read when the effect and its editor are made
    plugin = VstPlugin::create(test_host::module(), HostCallLog::callback);
    open();
    drag(knobRect(4), {-40});
    click(panel_layout::kRateButtonFrames[3]);
    EXPECT_LT(plugin->getParameter(4), 1.0f);
    EXPECT_EQ(plugin->getParameter(kSampleRate), 10.0f);
    EXPECT_TRUE(HostCallLog::take().empty());
}

TEST_F(HostCalls, AHostThatSetsTheValueAgainFromItsAutomateHandlerIsNeitherLoopedNorEchoed)
{
    int handled = 0, depth = 0, deepest = 0;
    HostCallLog::onAutomate([&](AEffect* effect, VstInt32 index, float value) {
        ++handled;
        deepest = std::max(deepest, ++depth);
        effect->setParameter(effect, index, value);
        --depth;
    });
    drag(knobRect(4), {-20}); // down from program 0's top
    drag(knobRect(4), {380});
    const std::vector<HostCall> calls = HostCallLog::take();
    EXPECT_EQ(static_cast<size_t>(handled), calls.size() - 4); // two gestures' begins and ends
    EXPECT_GT(handled, 2);
    EXPECT_EQ(deepest, 1);
    EXPECT_EQ(plugin->getParameter(4), 1.0f);
    // The top drag step sends 1.0, which the panel would show as step 100 (frame 127) had the
    // host's write come back to it; the knob stays where the drag left it, step 99.
    EXPECT_TRUE(knobShows(4, 125));
}

TEST_F(HostCalls, AGestureCutShortByClosingTheEditorEndsAndOneCutShortByClosingTheEffectIsSilent)
{
    drag(knobRect(4), {-20}, false);
    expectBegunOn(4);
    plugin->dispatch(effEditClose);
    EXPECT_EQ(HostCallLog::take(), std::vector{end(4)});
    runWhileIdling({"xdotool", "mouseup", "1"});

    // A host that closes the effect while its editor is open mid-drag: a dying effect calls
    // nobody.
    open();
    drag(knobRect(4), {20}, false);
    expectBegunOn(4);
    plugin.reset();
    EXPECT_TRUE(HostCallLog::take().empty());
    runWhileIdling({"xdotool", "mouseup", "1"});
}

// The stand-alone editor as a host of its own, run as a person runs it: what it prints of its
// plug-in's calls for a drag down from program 0's mix.
TEST(EditorToolLog, PrintsEachCallOfADragWithItsThread)
{
    XServer server;
    ASSERT_TRUE(server.running());
    unsetenv("HVTREMOLO_SILENT_PANEL");
    FILE* out = popen("exec timeout 60 " HVT_EDITOR_TOOL " --log-host-calls", "r");
    ASSERT_TRUE(out);
    const xcb_window_t window = findWindowNamed("HvTremolo");
    // The press must find the editor's child window in place.
    xcb_connection_t* c = xcb_connect(nullptr, nullptr);
    for (int i = 0; i < 100 && window; ++i) {
        auto* tree = xcb_query_tree_reply(c, xcb_query_tree(c, window), nullptr);
        const bool embedded = tree && xcb_query_tree_children_length(tree) > 0;
        free(tree);
        if (embedded)
            break;
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
    xcb_disconnect(c);
    const std::string id = std::to_string(window);
    const Rect& mix = knobRect(kMix);
    const std::string x = std::to_string(int(mix.x + mix.width / 2));
    const int y = kPanelHeight - int(mix.y + mix.height / 2);
    EXPECT_EQ(std::system(("xdotool mousemove --window " + id + " " + x + " " + std::to_string(y) +
                           " mousedown 1 mousemove --window " + id + " " + x + " " +
                           std::to_string(y + 20) + " mouseup 1")
                              .c_str()),
              0);
    std::string printed;
    char line[200];
    while (fgets(line, sizeof line, out)) {
        printed += line;
        if (std::strncmp(line, "endEdit", 7) == 0)
            break;
    }
    EXPECT_EQ(std::system(("xdotool windowkill " + id).c_str()), 0);
    while (fgets(line, sizeof line, out))
        printed += line;
    EXPECT_EQ(pclose(out), 0);
    // The host's version asked at creation, then the gesture: the panel rewrites tremolo depth
    // and speed as their knobs show them, 0.635 as 0.63 and 0.175 as 0.17.
    EXPECT_EQ(printed, "request 1 (idle thread)\n"
                       "beginEdit 4 (idle thread)\n"
                       "automate 0 0.63 (idle thread)\n"
                       "automate 1 0.17 (idle thread)\n"
                       "automate 4 0.92 (idle thread)\n"
                       "endEdit 4 (idle thread)\n");
}

} // namespace
