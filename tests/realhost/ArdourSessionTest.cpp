// Ardour, headless through ardour7-lua with its Dummy backend, puts HvTremolo on a stereo track
// and exports a test signal through it (tests/realhost/ardour/render.lua says how the
// oscillators' start is pinned down). The export must equal, bit for bit, what hvtremolo-render
// makes of the same input with the same settings; the saved session, loaded again, must sound
// the same; and Ardour must show the module's parameters and programs.
#include <gtest/gtest.h>

#include <chrono>
#include <cstring>
#include <filesystem>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include "tests/realhost/RealHostSupport.h"

namespace {

namespace fs = std::filesystem;

constexpr size_t kSignalStart = 22050; // as in the Lua scripts
constexpr size_t kLength = 3 * 44100;
// Parameters 0 to 4. Speeds whose increments are not whole numbers, so that the phase carries
// rounded fractions from frame to frame; depths and mix inside 0 to 1 as Ardour's controls are.
constexpr float kSettings[5] = {0.9f, 0.37f, 0.7f, 0.61f, 0.85f};

// Ardour 7.3's Lua session corrupts its own heap now and then and dies on SIGABRT or SIGSEGV,
// about one run in three here: with a session that holds no plug-in at all as well (an empty
// session that exports and saves), and under valgrind no invalid access shows, by Ardour or by
// us. A run that ends on a signal is therefore made again, from scratch, a few times; every
// other failure counts at once, and a run that keeps crashing fails the test.
constexpr int kArdourAttempts = 6;

bool diedOnSignal(const CommandResult& result)
{
    return result.exitCode == 128 + 6 || result.exitCode == 128 + 11;
}

CommandResult runArdour(const std::string& commandLine, const std::vector<fs::path>& outputs)
{
    CommandResult result;
    std::string crashes;
    for (int attempt = 1; attempt <= kArdourAttempts; ++attempt) {
        for (const fs::path& output : outputs)
            fs::remove_all(output);
        result = runCommand(commandLine);
        if (!diedOnSignal(result))
            break;
        const std::string crash = "Ardour crashed (exit " + std::to_string(result.exitCode) +
                                  "), attempt " + std::to_string(attempt) + "\n";
        std::cout << crash; // in the test log even when the next attempt succeeds
        crashes += crash;
    }
    result.output = crashes + result.output;
    return result;
}

class ArdourSession : public ::testing::Test {
protected:
    static void SetUpTestSuite()
    {
        if (!isExecutable(HVT_ARDOUR_LUA) || !isExecutable(HVT_ARDOUR_VST_SCANNER))
            return;
        scratch = std::make_unique<ScratchDirectory>();
        const fs::path home = scratch->path();
        const fs::path scripts = fs::path(HVT_ARDOUR_SCRIPTS);
        fs::create_directories(home / ".config" / "ardour7" / "scripts");
        fs::create_directories(home / ".config" / "ardour7" / "export");
        fs::copy_file(scripts / "hvt_test_signal.lua",
                      home / ".config" / "ardour7" / "scripts" / "hvt_test_signal.lua");
        fs::copy_file(scripts / "hvt-float-wav.preset",
                      home / ".config" / "ardour7" / "export" / "hvt-float-wav.preset");
        fs::create_directories(home / "vst");
        fs::copy_file(HVT_MODULE_PATH, home / "vst" / "HvTremolo.so");
        // Ardour trusts a scan only if its cache is newer than the module by the second.
        fs::last_write_time(home / "vst" / "HvTremolo.so",
                            fs::file_time_type::clock::now() - std::chrono::minutes(1));

        environment = "HOME=" + quoted(home.string()) + " LXVST_PATH=" +
                      quoted((home / "vst").string()) + " ";
        // Ardour loads VST 2 plug-ins it has scanned; a session does not scan by itself.
        const std::string libraries = fs::path(HVT_ARDOUR_VST_SCANNER).parent_path().string();
        scan = runCommand(environment + "LD_LIBRARY_PATH=" + quoted(libraries) + " " +
                          quoted(HVT_ARDOUR_VST_SCANNER) + " -f " +
                          quoted((home / "vst" / "HvTremolo.so").string()));

        std::string values;
        for (float value : kSettings)
            values += " " + std::to_string(value);
        render = runArdour(environment + quoted(HVT_ARDOUR_LUA) + " " +
                               quoted((scripts / "render.lua").string()) + " " +
                               quoted(sessionDir().string()) + " " +
                               quoted(exportDir().string()) + " " + std::to_string(kLength) +
                               values,
                           {sessionDir(), exportDir()});
    }

    static void TearDownTestSuite() { scratch.reset(); }

    void SetUp() override
    {
        ASSERT_TRUE(isExecutable(HVT_ARDOUR_LUA)) << "ardour7-lua not found: apt-get install ardour";
        ASSERT_TRUE(isExecutable(HVT_ARDOUR_VST_SCANNER)) << "ardour-vst-scanner not found";
        ASSERT_EQ(scan.exitCode, 0) << scan.output;
        ASSERT_EQ(render.exitCode, 0) << render.output;
        ASSERT_EQ(linesStartingWith(render.output, "hvt:exported ").size(), 2u) << render.output;
    }

    static fs::path sessionDir() { return scratch->path() / "session"; }
    static fs::path exportDir() { return scratch->path() / "export"; }

    static std::unique_ptr<ScratchDirectory> scratch;
    static std::string environment;
    static CommandResult scan;
    static CommandResult render;
};

std::unique_ptr<ScratchDirectory> ArdourSession::scratch;
std::string ArdourSession::environment;
CommandResult ArdourSession::scan;
CommandResult ArdourSession::render;

// Our command-line host on the signal part of Ardour's dry export, with the settings Ardour
// reached at the signal's first sample. Before that sample both speeds were 0 in Ardour: the
// stages let the silence through unchanged and their oscillators did not move, so the effect met
// the signal exactly as the fresh instance hvtremolo-render creates does.
std::vector<float> renderWithOurHost(const std::vector<float>& signal, const fs::path& folder,
                                     std::string& report)
{
    const fs::path input = folder / "signal.wav";
    const fs::path output = folder / "ours.wav";
    if (!writeStereoWav(input, signal.data(), signal.size() / 2, 44100)) {
        report = "cannot write " + input.string();
        return {};
    }
    std::string command = quoted(HVT_RENDER_PROGRAM) + " --quiet --plugin " +
                          quoted(HVT_MODULE_PATH);
    for (int index = 0; index < 5; ++index)
        command += " --param " + std::to_string(index) + "=" + std::to_string(kSettings[index]);
    const CommandResult render =
        runCommand(command + " " + quoted(input.string()) + " " + quoted(output.string()));
    report = render.output;
    return render.exitCode == 0 ? readStereoWav(output) : std::vector<float>();
}

size_t firstDifference(const std::vector<float>& a, const std::vector<float>& b)
{
    for (size_t i = 0; i < a.size() && i < b.size(); ++i)
        if (std::memcmp(&a[i], &b[i], sizeof(float)) != 0)
            return i;
    return a.size() == b.size() ? a.size() : std::min(a.size(), b.size());
}

TEST_F(ArdourSession, exportEqualsOurHostBitForBit)
{
    const std::vector<float> dry = readStereoWav(exportDir() / "dry.wav");
    const std::vector<float> wet = readStereoWav(exportDir() / "wet.wav");
    ASSERT_EQ(dry.size(), 2 * (kSignalStart + kLength));
    ASSERT_EQ(wet.size(), dry.size());

    // The input is what the test signal promises: silence, then sound from its first sample.
    for (size_t i = 0; i < 2 * kSignalStart; ++i)
        ASSERT_EQ(dry[i], 0.0f) << "sample " << i;
    EXPECT_NE(dry[2 * kSignalStart], 0.0f);

    // Silence in, silence out, up to the signal's first sample.
    for (size_t i = 0; i < 2 * kSignalStart; ++i)
        ASSERT_EQ(wet[i], 0.0f) << "sample " << i;

    const std::vector<float> signal(dry.begin() + 2 * kSignalStart, dry.end());
    const std::vector<float> processed(wet.begin() + 2 * kSignalStart, wet.end());
    std::string report;
    const std::vector<float> ours = renderWithOurHost(signal, exportDir(), report);
    ASSERT_EQ(ours.size(), processed.size()) << report;
    const size_t difference = firstDifference(ours, processed);
    EXPECT_EQ(difference, processed.size())
        << "first difference at frame " << difference / 2 << " of the signal, channel "
        << difference % 2 << ": ours " << ours[difference] << ", Ardour's "
        << processed[difference];

    // And the effect was audible: most samples of the signal changed.
    size_t changed = 0;
    for (size_t i = 2 * kSignalStart; i < wet.size(); ++i)
        changed += wet[i] != dry[i];
    EXPECT_GT(changed, kLength);
}

TEST_F(ArdourSession, showsSixParametersAndTenProgramsByName)
{
    const auto plugin = linesStartingWith(render.output, "hvt:plugin ");
    ASSERT_EQ(plugin.size(), 1u) << render.output;
    EXPECT_EQ(plugin[0], "HvTremolo 32-Bit|Halvo Music|1213617208|2|2|6");

    const std::vector<std::string> expectedParameters = {
        "0 Tremolo Depth", "1 Tremolo Speed", "2 Stereo Panner",
        "3 Panner Speed",  "4 Mix",           "5 Sample Rate"};
    EXPECT_EQ(linesStartingWith(render.output, "hvt:parameter "), expectedParameters);

    // Ardour asks for program 10 too and finds none.
    const std::vector<std::string> expectedPrograms = {
        "0 Wurli Classic", "1 Waves",     "2 Warble",      "3 SlowHand",     "4 Undulate",
        "5 The Gentleman", "6 Ghosts",    "7 New Morning", "8 Mystery Spot", "9 Rotary"};
    EXPECT_EQ(linesStartingWith(render.output, "hvt:program "), expectedPrograms);
}

TEST_F(ArdourSession, savedSessionLoadsAgainAndSoundsTheSame)
{
    const CommandResult reload = runArdour(
        environment + quoted(HVT_ARDOUR_LUA) + " " +
            quoted((fs::path(HVT_ARDOUR_SCRIPTS) / "reload.lua").string()) + " " +
            quoted(sessionDir().string()) + " " + quoted(exportDir().string()) + " " +
            std::to_string(kLength),
        {exportDir() / "reloaded.wav"});
    ASSERT_EQ(reload.exitCode, 0) << reload.output;

    // Ardour keeps no chunk for this module: it saved the parameter values and set them again.
    const auto restored = linesStartingWith(reload.output, "hvt:restored ");
    ASSERT_EQ(restored.size(), 6u) << reload.output;
    for (int index : {0, 2, 4}) {
        const float value = std::stof(restored[index].substr(2));
        EXPECT_EQ(value, kSettings[index]) << restored[index];
    }

    // A fresh instance in a new process, set from the session file alone, makes the same sound.
    const std::vector<float> first = readStereoWav(exportDir() / "wet.wav");
    const std::vector<float> again = readStereoWav(exportDir() / "reloaded.wav");
    ASSERT_FALSE(again.empty()) << reload.output;
    EXPECT_EQ(firstDifference(first, again), first.size());
}

} // namespace
