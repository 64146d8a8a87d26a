// Ardour 7.3's own GUI under Xvfb, on a session made headless that holds the plug-in and opens
// its editor on load: what a drag on the panel does to the user's session. Told to the host, it
// marks the session modified, reaches Ardour's own control on save and comes back on reload;
// with the silent panel Ardour never learns of it, and a quit loses it without a question.
#include <gtest/gtest.h>

#include <cairo.h>

#include <chrono>
#include <cstdio>
#include <map>
#include <memory>
#include <regex>

#include "panel/PanelLayout.h"
#include "tests/harness/XServer.h"
#include "tests/realhost/ArdourGui.h"
#include "tests/realhost/ArdourSupport.h"
#include "tests/realhost/XInspector.h"

namespace {

using namespace std::chrono_literals;
using panel_layout::kPanelHeight;
using panel_layout::kPanelWidth;

constexpr auto npos = std::string::npos;

// The module installed, Ardour set up to start without a question, and a session made by
// Ardour's Lua tool whose window state asks for the plug-in's editor to be open. Made once.
struct Prepared {
    Scratch home;
    std::string error; // empty when ready
    std::string made;  // the session folder every run copies
};

const Prepared& prepared()
{
    static const std::unique_ptr<Prepared> ready = [] {
        auto p = std::make_unique<Prepared>();
        const std::string environment = install(p->home);
        const std::string scripts = quote(HVT_ARDOUR_SCRIPTS);
        // A session loads only plug-ins that were scanned, and Ardour trusts a scan only if its
        // cache is newer than the module by a second.
        const Ran setup = shell(environment + "install -Dm644 " + scripts +
                                "/gui-config.xml .config/ardour7/config && : >.config/ardour7/.a7"
                                " && touch -d '-1 minute' vst/HvTremolo.so && " + kArdourScan);
        p->made = p->home / "made";
        const Ran made = runArdour(environment + quote(HVT_ARDOUR_LUA) + " " + scripts +
                                       "/gui_session.lua made",
                                   {p->made});
        std::smatch window;
        const std::string sessionFile = p->made + "/hvtremolo.ardour";
        std::string session = readText(sessionFile);
        const size_t end = session.rfind("</Session>");
        if (setup.status != 0)
            p->error = "setting Ardour up failed: " + setup.err;
        else if (made.status != 0 || end == npos ||
                 !std::regex_search(made.out, window, std::regex("window (P-[0-9]+-[0-9]+)")))
            p->error = "Ardour's Lua tool made no session: " + made.out + made.err;
        if (!p->error.empty())
            return p;
        // Ardour's GUI keeps which windows are open in the session's "UI" node and opens them
        // again on load.
        session.insert(end, "  <Extra>\n    <UI>\n      <Window name=\"" + window[1].str() +
                                "\" visible=\"1\" x-off=\"0\" y-off=\"0\" x-size=\"-1\""
                                " y-size=\"-1\" custom-ui=\"1\"/>\n    </UI>\n  </Extra>\n");
        std::ofstream(sessionFile) << session;
        return p;
    }();
    return *ready;
}

// The plug-in in a session file: its own dump of its parameters, and Ardour's control of each
// (what Ardour shows, automates and sets on load), by parameter.
struct PluginState {
    std::map<int, double> dump;
    std::map<int, double> controls;
};

PluginState readPluginState(const std::string& sessionFile)
{
    const std::string text = readText(sessionFile);
    PluginState state;
    const size_t start = text.find("type=\"lxvst\"");
    const size_t end = text.find("</Processor>", start);
    if (start == npos || end == npos)
        return state;
    const std::string plugin = text.substr(start, end - start);
    static const std::regex dumped(R"re(param-(\d+)="([^"]*)")re");
    static const std::regex control(R"re(<Controllable [^>]*value="([^"]*)" parameter="(\d+)")re");
    for (std::sregex_iterator i(plugin.begin(), plugin.end(), dumped), e; i != e; ++i)
        state.dump[std::stoi((*i)[1])] = std::stod((*i)[2]);
    for (std::sregex_iterator i(plugin.begin(), plugin.end(), control), e; i != e; ++i)
        state.controls[std::stoi((*i)[2])] = std::stod((*i)[1]);
    return state;
}

// The panel as hvtremolo-panel draws it for these values: what an editor opened on them shows.
std::string expectedPanel(const std::map<int, double>& values)
{
    const std::string picture = prepared().home / "expected.png";
    std::string command = quote(HVT_PANEL_PROGRAM);
    for (const auto& [index, value] : values) {
        char text[40];
        std::snprintf(text, sizeof text, " --param %d=%.9g", index, value);
        command += text;
    }
    return shell(command + " " + quote(picture)).status == 0 ? picture : "";
}

// How many pixels of shown differ from the picture; -1 when the two cannot be compared.
long differingPixels(const std::vector<uint32_t>& shown, const std::string& picture)
{
    cairo_surface_t* image = cairo_image_surface_create_from_png(picture.c_str());
    long differing = -1;
    if (cairo_surface_status(image) == CAIRO_STATUS_SUCCESS &&
        cairo_image_surface_get_width(image) == kPanelWidth &&
        cairo_image_surface_get_height(image) == kPanelHeight &&
        shown.size() == size_t{kPanelWidth} * kPanelHeight) {
        differing = 0;
        const int stride = cairo_image_surface_get_stride(image);
        for (int y = 0; y < kPanelHeight; ++y) {
            const auto* row =
                reinterpret_cast<const uint32_t*>(cairo_image_surface_get_data(image) + y * stride);
            for (int x = 0; x < kPanelWidth; ++x)
                differing += (row[x] & 0xffffff) != shown[size_t(y) * kPanelWidth + x];
        }
    }
    cairo_surface_destroy(image);
    return differing;
}

// One run of Ardour's GUI on a session, its windows seen from outside, driven by xdotool.
class Ardour {
public:
    Ardour(const std::string& sessionFile, bool silentPanel)
        : gui(HVT_ARDOUR, sessionFile, settings(silentPanel), prepared().home / "ardour.log")
    {
    }

    // Waits for the session's window and the plug-in's editor, the panel's 253 x 400 child.
    testing::AssertionResult opened()
    {
        if (!gui.started())
            return testing::AssertionFailure() << "Ardour did not start";
        if (!gui.waitFor(120s, [&] { return (main = mainWindow()) && (panel = panelWindow()); })) {
            const std::string log = readText(prepared().home / "ardour.log");
            const size_t tail = std::min<size_t>(log.size(), 3000);
            return testing::AssertionFailure() << "no session window with the plug-in's editor; "
                                               << "Ardour's output ends:\n"
                                               << log.substr(log.size() - tail);
        }
        return testing::AssertionSuccess();
    }
    // Whether the panel shows, within a few seconds, exactly what an editor opened on these
    // values shows.
    testing::AssertionResult panelShows(const std::map<int, double>& values)
    {
        const std::string picture = expectedPanel(values);
        long differing = -1;
        gui.waitFor(10s, [&] { return (differing = panelDiffersFrom(picture)) == 0; });
        if (differing == 0)
            return testing::AssertionSuccess();
        return testing::AssertionFailure() << differing << " pixels differ from hvtremolo-panel's";
    }
    // Whether the panel stops showing the picture within a few seconds.
    bool moved(const std::string& picture)
    {
        return gui.waitFor(10s, [&] { return panelDiffersFrom(picture) > 0; });
    }

    // Turns the mix knob down by 30 points: a press, two motions, a release.
    void dragMixDown()
    {
        Rect knob{};
        for (const panel_layout::KnobPlace& place : panel_layout::kKnobPlaces)
            if (place.parameter == kMix)
                knob = place.frame;
        const std::string at = "mousemove --window " + std::to_string(panel) + " " +
                               std::to_string(int(knob.x + knob.width / 2)) + " ";
        const int y = kPanelHeight - int(knob.y + knob.height / 2);
        const Ran drag = shell("xdotool " + at + std::to_string(y) + " mousedown 1 " + at +
                                   std::to_string(y + 10) + " " + at + std::to_string(y + 30) +
                                   " mouseup 1",
                               20);
        EXPECT_EQ(drag.status, 0) << drag.err;
    }
    void press(const std::string& keys)
    {
        const Ran pressed = shell("xdotool key --window " + std::to_string(main) + " " + keys, 20);
        EXPECT_EQ(pressed.status, 0) << pressed.err;
    }
    // Ardour marks a session with changes not saved by a star before its name in the title.
    bool marksModified() { return titleOf(main).starts_with("*"); }

    // Ctrl+Q: Ardour ends without asking anything (a question would keep it running) and
    // without a fault.
    testing::AssertionResult quits()
    {
        press("ctrl+q");
        gui.waitFor(60s, [] { return false; });
        if (gui.running())
            return testing::AssertionFailure() << "Ardour still runs a minute after Ctrl+Q";
        if (gui.exitStatus() != 0)
            return testing::AssertionFailure() << "Ardour ended with status " << gui.exitStatus();
        return testing::AssertionSuccess();
    }

    ArdourGui gui;

private:
    static std::vector<std::string> settings(bool silentPanel)
    {
        const std::string home = prepared().home.dir;
        std::vector<std::string> settings = {
            "HOME=" + home, "XDG_CONFIG_HOME=" + home + "/.config",
            "XDG_CACHE_HOME=" + home + "/.cache", "XDG_DATA_HOME=" + home + "/.local/share",
            "LXVST_PATH=" + home + "/vst"};
        if (silentPanel)
            settings.push_back("HVTREMOLO_SILENT_PANEL=1");
        return settings;
    }
    std::string titleOf(xcb_window_t window)
    {
        for (const XInspector::TopLevel& top : x.topLevels())
            if (top.window == window)
                return top.title;
        return {};
    }
    xcb_window_t mainWindow()
    {
        for (const XInspector::TopLevel& top : x.topLevels())
            if (top.title.ends_with("hvtremolo - Ardour"))
                return top.window;
        return 0;
    }
    xcb_window_t panelWindow() { return x.findWindowOfSize(kPanelWidth, kPanelHeight); }
    long panelDiffersFrom(const std::string& picture)
    {
        return differingPixels(x.pixels(panel, kPanelWidth, kPanelHeight), picture);
    }

    XInspector x;
    xcb_window_t main = 0;
    xcb_window_t panel = 0;
};

// Runs flow on a fresh copy of the prepared session until Ardour gets through it without
// crashing by itself, at most four times. Any other failure counts at once.
void retryingCrashes(const std::function<void(const std::string& sessionFile)>& flow)
{
    ASSERT_EQ(prepared().error, "");
    static int runs = 0;
    for (int attempt = 1; attempt <= 4; ++attempt) {
        const std::string copy = prepared().home / ("run" + std::to_string(++runs));
        std::filesystem::copy(prepared().made, copy, std::filesystem::copy_options::recursive);
        const auto start = std::chrono::steady_clock::now();
        try {
            flow(copy + "/hvtremolo.ardour");
            std::cout << "Ardour's runs took " << (std::chrono::steady_clock::now() - start) / 1s
                      << " s\n";
            return;
        } catch (const ArdourCrashed& crash) {
            std::cout << "Ardour crashed (signal " << crash.signal << "), attempt " << attempt
                      << "\n";
        }
    }
    FAIL() << "Ardour crashed in every attempt";
}

class ArdourGuiSession : public ::testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_TRUE(server.running()) << "Xvfb did not start";
    }
    XServer server{"1600x1000x24"};
};

TEST_F(ArdourGuiSession, ADragMarksTheSessionModifiedReachesArdoursControlsOnSaveAndComesBack)
{
    retryingCrashes([](const std::string& session) {
        const PluginState made = readPluginState(session);
        ASSERT_EQ(made.dump.size(), 6u);
        PluginState saved;
        {
            Ardour ardour(session, false);
            ASSERT_TRUE(ardour.opened());
            ASSERT_TRUE(ardour.panelShows(made.dump));
            EXPECT_FALSE(ardour.marksModified());
            ardour.dragMixDown();
            EXPECT_TRUE(ardour.gui.waitFor(10s, [&] { return ardour.marksModified(); }))
                << "Ardour did not mark the session modified";
            ardour.press("ctrl+s");
            EXPECT_TRUE(ardour.gui.waitFor(20s, [&] {
                saved = readPluginState(session);
                return !ardour.marksModified() && saved.dump != made.dump;
            })) << "Ctrl+S saved nothing";
            ASSERT_TRUE(ardour.quits());
        }
        EXPECT_NE(saved.dump.at(kMix), made.dump.at(kMix));
        // Ardour's controls hold what the plug-in holds: the dragged knob's new value and the
        // values the panel rewrote as its knobs show them.
        EXPECT_EQ(saved.controls, saved.dump);

        Ardour reloaded(session, false);
        ASSERT_TRUE(reloaded.opened());
        EXPECT_TRUE(reloaded.panelShows(saved.dump));
        EXPECT_TRUE(reloaded.quits());
    });
}

TEST_F(ArdourGuiSession, WithTheSilentPanelArdourNeverHearsOfADragAndAQuitLosesIt)
{
    retryingCrashes([](const std::string& session) {
        const PluginState made = readPluginState(session);
        ASSERT_EQ(made.dump.size(), 6u);
        const std::string before = expectedPanel(made.dump);
        {
            Ardour ardour(session, true);
            ASSERT_TRUE(ardour.opened());
            ASSERT_TRUE(ardour.panelShows(made.dump));
            ardour.dragMixDown();
            EXPECT_TRUE(ardour.moved(before)) << "the drag did not move the knob";
            // Long enough for the star to come, as it does within a second when told.
            EXPECT_FALSE(ardour.gui.waitFor(3s, [&] { return ardour.marksModified(); }));
            ASSERT_TRUE(ardour.quits());
        }
        EXPECT_EQ(readPluginState(session).dump, made.dump);

        Ardour reloaded(session, true);
        ASSERT_TRUE(reloaded.opened());
        EXPECT_TRUE(reloaded.panelShows(made.dump)) << "the drag came back";
        // Saved by hand, the plug-in's own dump has the drag but Ardour's control does not.
        reloaded.dragMixDown();
        EXPECT_TRUE(reloaded.moved(before)) << "the drag did not move the knob";
        reloaded.press("ctrl+s");
        PluginState saved;
        EXPECT_TRUE(reloaded.gui.waitFor(20s, [&] {
            saved = readPluginState(session);
            return saved.dump != made.dump;
        })) << "Ctrl+S saved nothing";
        EXPECT_NE(saved.dump.at(kMix), made.dump.at(kMix));
        EXPECT_EQ(saved.controls.at(kMix), made.controls.at(kMix));
        EXPECT_TRUE(reloaded.quits());
    });
}

} // namespace
