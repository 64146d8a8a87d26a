// Parameters and programs by name, their ranges, and the tuning chosen from the input's rate.
#include <gtest/gtest.h>

#include "tests/render/RenderSupport.h"

namespace {

TEST(RenderControls, NamesMeanWhatTheirIndicesMean)
{
    Scratch dir;
    ASSERT_TRUE(writeSound(dir / "in.wav", tone(44100, 2, kFloatWav)));
    const std::pair<std::string, std::string> rows[] = {
        {"--param tremolo-depth=0.3", "--param 0=0.3"},
        {"--param Tremolo-Speed=0.9", "--param 1=0.9"},
        {"--param STEREO-PANNER=0.7 --param panner-speed=0.4", "--param 2=0.7 --param 3=0.4"},
        {"--param mix=0.5", "--param 4=0.5"},
        {"--param sample-rate=9", "--param 5=9"},
        {"--param 'Sample Rate=8'", "--param 5=8"},
        {"--program waves", "--program 1"},
        {"--program 'The Gentleman'", "--program 5"},
        {"--program the-gentleman", "--program 5"},
        {"--program ROTARY --param mix=0.25", "--program 9 --param 4=0.25"},
    };
    for (const auto& [named, numbered] : rows) {
        SCOPED_TRACE(named);
        ASSERT_EQ(render(dir, "-q " + named + " in.wav a.wav").status, 0);
        ASSERT_EQ(render(dir, "-q " + numbered + " in.wav b.wav").status, 0);
        // Samples, not bytes: a float WAV file's PEAK chunk holds the time it was written.
        const std::vector<float> a = readSound(dir / "a.wav").samples;
        EXPECT_FALSE(a.empty());
        EXPECT_EQ(firstDifference(a, readSound(dir / "b.wav").samples), npos);
        // And not the same as the plug-in left alone.
        ASSERT_EQ(render(dir, "-q in.wav c.wav").status, 0);
        EXPECT_NE(firstDifference(a, readSound(dir / "c.wav").samples), npos);
    }
}

TEST(RenderControls, ValuesOutsideTheirRangesAndUnknownNamesAreUsageErrors)
{
    Scratch dir;
    ASSERT_TRUE(writeSound(dir / "in.wav", tone(44100, 2, kFloatWav, 1000)));
    const std::string before = listing(dir);
    const std::pair<std::string, std::string> rows[] = {
        {"--param tremolo-depth=1.5", "Tremolo Depth (0) takes 0 to 1"},
        {"--param 1=-0.1", "Tremolo Speed (1) takes 0 to 1"},
        {"--param stereo-panner=2", "Stereo Panner (2) takes 0 to 1"},
        {"--param panner-speed=1.01", "Panner Speed (3) takes 0 to 1"},
        {"--param mix=100", "Mix (4) takes 0 to 1"},
        {"--param 5=11", "Sample Rate (5) takes 7, 8, 9 or 10 (44.1, 48, 88.2 or 96 kHz)"},
        {"--param sample-rate=9.9", "Sample Rate (5) takes 7, 8, 9 or 10"},
        {"--param sample-rate=0.5", "Sample Rate (5) takes 7, 8, 9 or 10"},
        {"--param 6=0.5",
         "'6' is not a parameter: give 0 to 5 or a name: tremolo-depth, tremolo-speed, "
         "stereo-panner, panner-speed, mix, sample-rate"},
        {"--param depth=0.5", "'depth' is not a parameter"},
        {"--program 10", "--program '10' is not a program: give 0 to 9 or a name: wurli-classic, "
                         "waves, warble"},
        {"--program two", "--program 'two' is not a program"},
    };
    for (const auto& [options, message] : rows) {
        SCOPED_TRACE(options);
        const Ran run = render(dir, options + " in.wav out.wav");
        EXPECT_EQ(run.status, 2);
        EXPECT_NE(run.err.find(message), npos) << run.err;
        EXPECT_EQ(listing(dir), before);
    }
}

TEST(RenderTuning, FollowsTheInputsRateAndSaysSo)
{
    struct Row {
        int rate;
        std::string options;
        int choice; // the module's rate choice at the end
        std::string said, warning;
    };
    const Row rows[] = {
        {44100, "", 7, "tuned for 44.1 kHz", ""},
        {48000, "", 8, "tuned for 48 kHz", ""},
        {88200, "", 9, "tuned for 88.2 kHz", ""},
        {96000, "--program 1", 10, "tuned for 96 kHz", ""},
        {192000, "", 7, "tuned for 44.1 kHz",
         "warning: 192000 Hz matches no rate choice (44.1, 48, 88.2 or 96 kHz); tuned for "
         "44.1 kHz, the speeds run 4.35 times faster than the programs intend\n"},
        {22050, "", 7, "tuned for 44.1 kHz", "the speeds run 2.00 times slower"},
        {48000, "--keep-rate", 7, "tuned for 44.1 kHz", ""},
        {48000, "--param sample-rate=10", 10, "tuned for 96 kHz", ""},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(std::to_string(row.rate) + " " + row.options);
        Scratch dir;
        ASSERT_TRUE(writeSound(dir / "in.wav", tone(row.rate, 2, kFloatWav)));
        const Ran run = render(dir, row.options + " in.wav out.wav");
        ASSERT_EQ(run.status, 0) << run.err;
        EXPECT_NE(run.err.find(row.said + "; peak"), npos) << run.err;
        const size_t warned = run.err.find("warning:");
        EXPECT_EQ(warned != npos, !row.warning.empty()) << run.err;
        if (!row.warning.empty()) {
            EXPECT_NE(run.err.find(row.warning), npos) << run.err;
            EXPECT_EQ(run.err.find("warning:", warned + 1), npos) << "one warning: " << run.err;
        }
        // The output is what the module makes with that rate choice.
        const Sound input = readSound(dir / "in.wav");
        const int program = row.options == "--program 1" ? 1 : -1;
        const std::vector<float> direct = renderDirectly(input, {512, program, {{5, row.choice}}});
        EXPECT_EQ(firstDifference(readSound(dir / "out.wav").samples, direct), npos);
    }
}

} // namespace
