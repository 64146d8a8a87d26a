// The LV2 bundle in Debian's LV2 tools and hosts, run as a user runs them: serdi, lv2_validate,
// lv2ls and lv2info read it; lv2apply renders through it bit for bit like hvtremolo-render
// through the VST module; Ardour runs it headless in a session; jalv shows its panel under a
// private Xvfb and JACK server, where a drag with xdotool changes what the plug-in does.
#include <gtest/gtest.h>

#include <cairo.h>
#include <xcb/xcb.h>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <sstream>

#include "engine/FactoryPrograms.h"
#include "tests/harness/Processes.h"
#include "tests/harness/XServer.h"
#include "tests/harness/TestHost.h"
#include "tests/lv2/JackProbe.h"
#include "tests/realhost/RunArdour.h"
#include "tests/render/Support.h"

namespace {

constexpr auto npos = std::string::npos;
const std::string kBundle = std::string(HVT_LV2_DIR) + "/HvTremolo.lv2";
const std::string kLv2Path = "LV2_PATH=" + quote(HVT_LV2_DIR) + " ";
const char* const kKnobSymbols[5] = {"tremolo_depth", "tremolo_speed", "stereo_panner",
                                     "panner_speed", "mix"};

std::vector<std::string> lines(const std::string& text)
{
    std::vector<std::string> result;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);)
        result.push_back(line);
    return result;
}

// Sound as hosts read and write it: interleaved stereo float WAV.
Sound stereo(const test_host::StereoBuffer& buffer, int rate)
{
    Sound sound;
    sound.rate = rate;
    for (size_t i = 0; i < buffer.left.size(); ++i)
        sound.samples.insert(sound.samples.end(), {buffer.left[i], buffer.right[i]});
    return sound;
}

// Nine digits, which read back as the same float.
std::string exact(float value)
{
    char text[32];
    std::snprintf(text, sizeof text, "%.9g", static_cast<double>(value));
    return text;
}

TEST(Lv2Tools, SerdiAndLv2validateAcceptTheBundleAndLv2lsAndLv2infoShowIt)
{
    std::string files;
    for (const char* name : {"manifest.ttl", "HvTremolo.ttl", "presets.ttl"}) {
        const std::string path = kBundle + "/" + name;
        const Ran syntax = shell("serdi -q -i turtle -o ntriples " + quote(path) + " >/dev/null");
        EXPECT_EQ(syntax.status, 0) << name << ": " << syntax.err << "(apt-get install serdi)";
        files += " " + quote(path);
    }
    // Its exit status says nothing; its report does (sord_validate comes from sordi).
    const Ran validated = shell("lv2_validate" + files + " 2>&1");
    EXPECT_NE(validated.out.find("Found 0 errors"), npos) << validated.out;
    for (const std::string& line : lines(validated.out))
        EXPECT_NE(line.rfind("error", 0), 0u) << line;

    const Ran listed = shell(kLv2Path + "lv2ls");
    EXPECT_EQ(listed.out, "urn:halvo:hvtremolo\n");
    EXPECT_EQ(listed.err, "") << "lilv found something else in the folder";

    // With the LV2 core bundles installed, lilv also knows the plug-in's class.
    const Ran info = shell("LV2_PATH=" + quote(std::string(HVT_LV2_DIR) + ":/usr/lib/lv2") +
                           " lv2info urn:halvo:hvtremolo");
    ASSERT_EQ(info.status, 0) << info.err;
    // The details of each port are our lilv host's to check (LilvHostTest.cpp).
    std::vector<std::string> expected = {
        "Name:              HvTremolo", "Class:             Modulator Plugin",
        "urn:halvo:hvtremolo#ui", "Class:  http://lv2plug.in/ns/extensions/ui#X11UI",
        kBundle + "/HvTremolo_ui.so", kBundle + "/HvTremolo_dsp.so"};
    for (const char* symbol : {"in_l", "in_r", "out_l", "out_r", "tremolo_depth", "tremolo_speed",
                               "stereo_panner", "panner_speed", "mix", "sample_rate", "tuning"})
        expected.push_back(std::string("Symbol:      ") + symbol + "\n");
    for (int program = 0; program < kNumPrograms; ++program)
        expected.push_back(std::string("         ") + factoryProgram(program).name + "\n");
    for (const std::string& text : expected)
        EXPECT_NE(info.out.find(text), npos) << text << "\n" << info.out;
}

TEST(Lv2Tools, CmakeInstallPutsTheBundleWhereHostsLookUnderThePrefix)
{
    const Scratch prefix;
    const Ran installed = shell(quote(HVT_CMAKE) + " --install " + quote(HVT_BUILD_DIR) +
                                " --prefix " + quote(prefix.dir));
    ASSERT_EQ(installed.status, 0) << installed.err;
    for (const char* file : {"manifest.ttl", "HvTremolo.ttl", "presets.ttl", "HvTremolo_dsp.so",
                             "HvTremolo_ui.so"})
        EXPECT_TRUE(std::filesystem::exists(prefix / "lib/lv2/HvTremolo.lv2/" + file)) << file;
    EXPECT_EQ(shell("LV2_PATH=" + quote(prefix / "lib/lv2") + " lv2ls").out,
              "urn:halvo:hvtremolo\n");
}

TEST(Lv2Tools, EachBinaryExportsItsDescriptorAloneAndTheDspNeedsNoWindowSystem)
{
    for (const auto& [binary, entry] : {std::pair{"HvTremolo_dsp.so", "lv2_descriptor\n"},
                                        std::pair{"HvTremolo_ui.so", "lv2ui_descriptor\n"}}) {
        const Ran symbols = shell("nm -D --defined-only " + quote(kBundle + "/" + binary) +
                                  " | awk '{print $3}'");
        EXPECT_EQ(symbols.out, entry) << binary;
    }
    const Ran needed = shell("readelf -d " + quote(kBundle + "/HvTremolo_dsp.so") +
                             " | sed -n 's/.*Shared library: \\[\\(.*\\)\\]/\\1/p'");
    const std::vector<std::string> runtime = {"libc.so.6", "libgcc_s.so.1", "libm.so.6",
                                              "libstdc++.so.6"};
    EXPECT_FALSE(lines(needed.out).empty());
    for (const std::string& library : lines(needed.out))
        EXPECT_NE(std::find(runtime.begin(), runtime.end(), library), runtime.end()) << library;
}

TEST(Lv2Tools, Lv2applyEqualsHvtremoloRenderBitForBit)
{
    const Scratch dir;
    struct Case {
        int rate;
        int program;                 // its values set through -c, as a host applies a preset
        std::vector<std::pair<int, float>> changes; // after the program
        const char* rateChoice;      // for -c sample_rate, or null for "Session rate"
        int tuning;                  // what hvtremolo-render is given
    };
    const Case cases[] = {
        {44100, 0, {}, nullptr, 7},
        {44100, 1, {}, nullptr, 7},
        {48000, 9, {}, nullptr, 8},
        {96000, 4, {}, nullptr, 10},
        {44100, 6, {}, "10", 10},
        {88200, 2, {{0, 0.9f}, {1, 0.37f}, {2, 0.7f}, {3, 0.61f}, {4, 0.85f}}, "8", 8},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::Message() << "program " << c.program << " at " << c.rate << " Hz");
        ASSERT_TRUE(writeSound(dir / "in.wav", stereo(test_host::testSignal(30000, c.program), c.rate)));
        std::string controls, parameters = " --program " + std::to_string(c.program);
        for (int parameter = 0; parameter < 5; ++parameter) {
            float value = factoryValue(c.program, parameter);
            for (const auto& [changed, to] : c.changes)
                if (changed == parameter)
                    value = to;
            // Program 0's values are the defaults: lv2apply is then given no control at all.
            if (c.program != 0)
                controls += std::string(" -c ") + kKnobSymbols[parameter] + " " + exact(value);
            if (value != factoryValue(c.program, parameter))
                parameters += " --param " + std::to_string(parameter) + "=" + exact(value);
        }
        if (c.rateChoice)
            controls += std::string(" -c sample_rate ") + c.rateChoice;
        parameters += " --param 5=" + std::to_string(c.tuning);

        const Ran lv2 = shell("cd " + quote(dir.dir) + " && " + kLv2Path + "lv2apply -i in.wav -o lv2.wav" +
                              controls + " urn:halvo:hvtremolo");
        ASSERT_EQ(lv2.status, 0) << lv2.err << "(apt-get install lilv-utils)";
        const Ran vst = shell("cd " + quote(dir.dir) + " && " + quote(HVT_RENDER_PROGRAM) +
                              " --quiet" + parameters + " in.wav vst.wav");
        ASSERT_EQ(vst.status, 0) << vst.err;
        const Sound ours = readSound(dir / "lv2.wav");
        const Sound module = readSound(dir / "vst.wav");
        ASSERT_EQ(ours.channels, 2);
        EXPECT_EQ(ours.rate, c.rate);
        EXPECT_EQ(firstDifference(ours.samples, module.samples), npos);
        EXPECT_NE(ours.samples, readSound(dir / "in.wav").samples) << "nothing was processed";
    }
}

TEST(Lv2Ardour, RendersTheLv2PluginFoundByUriBitForBitLikeTheModuleAndReloadsIt)
{
    const Scratch home;
    const std::string scripts = quote(HVT_ARDOUR_SCRIPTS);
    const std::string environment = "export HOME=" + quote(home.dir) + " " + kLv2Path +
                                    "HVT_LV2_URI=urn:halvo:hvtremolo; cd \"$HOME\"; ";
    const Ran setup = shell(environment + "install -Dt .config/ardour7/scripts " + scripts +
                            "/hvt_test_signal.lua && install -Dt .config/ardour7/export " +
                            scripts + "/hvt-float-wav.preset");
    ASSERT_EQ(setup.status, 0) << setup.err;

    constexpr size_t kStart = 22050, kLength = 3 * 44100; // as in the Lua scripts
    const std::string session = environment + quote(HVT_ARDOUR_LUA) + " " + scripts +
                                "/session.lua session export " + std::to_string(kLength);
    const Ran made = runArdour(session + " 0.9 0.37 0.7 0.61 0.85",
                               {home / "session", home / "export"});
    ASSERT_EQ(made.status, 0) << made.out << made.err << "(apt-get install ardour)";
    const Sound dry = readSound(home / "export/dry.wav");
    const Sound wet = readSound(home / "export/wet.wav");
    ASSERT_EQ(dry.samples.size(), 2 * (kStart + kLength));
    ASSERT_EQ(wet.samples.size(), dry.samples.size());
    EXPECT_NE(dry.samples[2 * kStart], 0.0f);

    // The session runs at 44.1 kHz, so "Session rate" is the module's rate choice 7.
    ASSERT_TRUE(writeSound(home / "signal.wav",
                           {.samples = {dry.samples.begin() + 2 * kStart, dry.samples.end()}}));
    const Ran module = shell(environment + quote(HVT_RENDER_PROGRAM) +
                             " --quiet --param 0=0.9 --param 1=0.37 --param 2=0.7 --param 3=0.61"
                             " --param 4=0.85 --param 5=7 signal.wav module.wav");
    ASSERT_EQ(module.status, 0) << module.err;
    EXPECT_EQ(firstDifference(readSound(home / "module.wav").samples,
                              {wet.samples.begin() + 2 * kStart, wet.samples.end()}),
              npos);

    const Ran reloaded = runArdour(session, {home / "export/reloaded.wav"});
    ASSERT_EQ(reloaded.status, 0) << reloaded.out << reloaded.err;
    EXPECT_EQ(firstDifference(readSound(home / "export/reloaded.wav").samples, wet.samples), npos);
}

// The viewable 253 x 400 window without children: our panel's, inside the host's socket.
xcb_window_t findPanel(xcb_connection_t* c, xcb_window_t window)
{
    auto* tree = xcb_query_tree_reply(c, xcb_query_tree(c, window), nullptr);
    if (!tree)
        return 0;
    xcb_window_t found = 0;
    const xcb_window_t* children = xcb_query_tree_children(tree);
    for (int i = 0; i < xcb_query_tree_children_length(tree) && !found; ++i)
        found = findPanel(c, children[i]);
    if (!found && xcb_query_tree_children_length(tree) == 0) {
        auto* geometry = xcb_get_geometry_reply(c, xcb_get_geometry(c, window), nullptr);
        auto* attributes = xcb_get_window_attributes_reply(c, xcb_get_window_attributes(c, window), nullptr);
        if (geometry && attributes && geometry->width == 253 && geometry->height == 400 &&
            attributes->map_state == XCB_MAP_STATE_VIEWABLE)
            found = window;
        free(geometry);
        free(attributes);
    }
    free(tree);
    return found;
}

// How many pixels of two pictures of the same size differ in colour; -1 if they cannot be read
// or their sizes differ.
long differingPixels(const std::string& a, const std::string& b)
{
    cairo_surface_t* first = cairo_image_surface_create_from_png(a.c_str());
    cairo_surface_t* second = cairo_image_surface_create_from_png(b.c_str());
    long differing = -1;
    const int width = cairo_image_surface_get_width(first);
    const int height = cairo_image_surface_get_height(first);
    if (cairo_surface_status(first) == CAIRO_STATUS_SUCCESS &&
        cairo_surface_status(second) == CAIRO_STATUS_SUCCESS && width > 0 &&
        width == cairo_image_surface_get_width(second) &&
        height == cairo_image_surface_get_height(second)) {
        differing = 0;
        for (int y = 0; y < height; ++y) {
            const auto* rowA = reinterpret_cast<const uint32_t*>(
                cairo_image_surface_get_data(first) + y * cairo_image_surface_get_stride(first));
            const auto* rowB = reinterpret_cast<const uint32_t*>(
                cairo_image_surface_get_data(second) + y * cairo_image_surface_get_stride(second));
            for (int x = 0; x < width; ++x)
                differing += ((rowA[x] ^ rowB[x]) & 0xffffff) != 0;
        }
    }
    cairo_surface_destroy(first);
    cairo_surface_destroy(second);
    return differing;
}

// Polls until done() or ten seconds have passed.
bool within10s(const std::function<bool()>& done)
{
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (!done()) {
        if (std::chrono::steady_clock::now() > deadline)
            return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
    }
    return true;
}

TEST(Lv2Jalv, ShowsThePanelEmbeddedAsHvtremoloPanelDrawsItAndADragChangesThePluginsControl)
{
    XServer display;
    ASSERT_TRUE(display.running()) << "Xvfb did not start";
    const std::string server = "hvt-lv2-test-" + std::to_string(getpid());
    setenv("JACK_NO_AUDIO_RESERVATION", "1", 1);
    setenv("JACK_DEFAULT_SERVER", server.c_str(), 1);
    setenv("LV2_PATH", HVT_LV2_DIR, 1);
    setenv("NO_AT_BRIDGE", "1", 1); // no accessibility bus for GTK to wait for
    ChildProcess jack({"jackd", "--no-realtime", "-n", server, "-d", "dummy", "-r", "48000",
                       "-p", "256"});
    ASSERT_TRUE(jack.started()) << "apt-get install jackd2";
    JackProbe probe(server);
    ASSERT_TRUE(probe.ok()) << "the JACK server did not come up";
    ChildProcess jalv({"jalv.gtk3", "--jack-name", "hvt-jalv", "-x", "-c", "tremolo_depth=0.57",
                       "-c", "tremolo_speed=0.2", "-c", "stereo_panner=1", "-c", "mix=0.5",
                       "urn:halvo:hvtremolo"});
    ASSERT_TRUE(jalv.started()) << "apt-get install jalv";
    ASSERT_TRUE(probe.attach("hvt-jalv")) << "jalv's ports did not appear";

    xcb_connection_t* c = xcb_connect(nullptr, nullptr);
    const xcb_window_t root = xcb_setup_roots_iterator(xcb_get_setup(c)).data->root;
    xcb_window_t panel = 0;
    EXPECT_TRUE(within10s([&] { return (panel = findPanel(c, root)) != 0; }));
    xcb_disconnect(c);
    ASSERT_NE(panel, 0u) << "no 253 x 400 window appeared";

    // The same values, "Session rate" at the server's 48 kHz being the rate choice 8.
    const Scratch dir;
    const Ran reference = shell(quote(HVT_PANEL_PROGRAM) + " --param 0=0.57 --param 1=0.2"
                                " --param 2=1 --param 3=0 --param 4=0.5 --param 5=8 " +
                                quote(dir / "reference.png"));
    ASSERT_EQ(reference.status, 0) << reference.err;
    long differing = -1;
    within10s([&] { // until the tuning in use has reached the panel
        shell("import -window " + std::to_string(panel) + " " + quote(dir / "shown.png"));
        return (differing = differingPixels(dir / "shown.png", dir / "reference.png")) == 0;
    });
    EXPECT_EQ(differing, 0) << "pixels differ from hvtremolo-panel's";

    // The tremolo runs: over two of its cycles some periods come back changed. Dragged to 0,
    // its depth switches it off, and then none does.
    probe.take();
    std::this_thread::sleep_for(std::chrono::milliseconds(500));
    const JackProbe::Counts before = probe.take();
    EXPECT_GT(before.periods, 10);
    EXPECT_GT(before.changed, 0);
    const std::string id = std::to_string(panel);
    const Ran dragged = shell("xdotool mousemove --window " + id + " 0 0 mousemove --window " + id +
                              " --sync 72 174 mousedown 1 mousemove --window " + id +
                              " --sync 72 300 mousemove --window " + id +
                              " --sync 72 480 mouseup 1", 20);
    ASSERT_EQ(dragged.status, 0) << dragged.err;
    JackProbe::Counts after;
    EXPECT_TRUE(within10s([&] {
        probe.take();
        std::this_thread::sleep_for(std::chrono::milliseconds(500));
        after = probe.take();
        return after.periods > 10 && after.changed == 0;
    })) << after.changed << " of " << after.periods << " periods changed after the drag";

    // Closed by its host in the middle of a drag, the UI lets jalv end cleanly.
    const Ran pressed = shell("xdotool mousemove --window " + id + " --sync 128 299 mousedown 1"
                              " mousemove --window " + id + " --sync 128 250", 20);
    EXPECT_EQ(pressed.status, 0) << pressed.err;
    jalv.stop();
    EXPECT_EQ(jalv.exitStatus(), 0);
    shell("xdotool mouseup 1", 10);
}

} // namespace
