// The rendered audio must be exactly what the module gives a host that drives it directly.
#include <sndfile.h>

#include <cmath>
#include <limits>

#include "RenderTestSupport.h"
#include "tools/render/DemoSignal.h"

namespace {

constexpr int kFloatWav = SF_FORMAT_WAV | SF_FORMAT_FLOAT;
// Not a multiple of any block size tested, so every run ends with a shorter block.
constexpr int kFrames = 30011;

class RenderOutput : public RenderTest {
protected:
    // Renders `input` with `arguments` placed before the file names and returns the output.
    Stereo render(const std::string& input, const std::vector<std::string>& arguments)
    {
        std::vector<std::string> all = arguments;
        all.push_back(input);
        all.push_back(path("out.wav"));
        const RunResult run = runRender(all);
        EXPECT_EQ(run.status, 0) << run.err;
        const SoundFile output = readSoundFile(path("out.wav"));
        EXPECT_EQ(output.format, kFloatWav);
        EXPECT_EQ(output.channels, 2);
        return splitStereo(output);
    }

    Stereo stereoInput(int sampleRate)
    {
        writeSoundFile(path("in.wav"), kFloatWav, sampleRate, 2, testSignal(kFrames, 2));
        return splitStereo(readSoundFile(path("in.wav")));
    }
};

TEST_F(RenderOutput, StereoFileEqualsTheModuleDrivenDirectlyBitForBit)
{
    const Stereo input = stereoInput(48000);
    const Stereo output = render(path("in.wav"), {"--program", "2", "--param", "4=0.8"});
    EXPECT_EQ(readSoundFile(path("out.wav")).sampleRate, 48000);

    HostSettings host;
    host.sampleRate = 48000.0f;
    host.program = 2;
    host.parameters = {{4, 0.8f}};
    const Stereo expected = renderDirectly(input, host);
    EXPECT_EQ(compareBits(output, expected), "");
    // The effect did something: the comparison is not between two copies of the input.
    EXPECT_NE(compareBits(output, input), "");
}

TEST_F(RenderOutput, BlocksOfOneAndOf4096FramesEqualTheModuleDrivenInTheSameBlocks)
{
    const Stereo input = stereoInput(44100);
    for (int block : {1, 4096}) {
        SCOPED_TRACE("block " + std::to_string(block));
        // Program 6 runs both stages with speeds read once per block.
        const Stereo output = render(path("in.wav"), {"--block", std::to_string(block),
                                                      "--program", "6"});
        HostSettings host;
        host.blockSize = block;
        host.program = 6;
        EXPECT_EQ(compareBits(output, renderDirectly(input, host)), "");
    }
}

TEST_F(RenderOutput, MonoFileFeedsTheSameSamplesToBothInputs)
{
    // Neither WAV nor float: the program renders what libsndfile decodes, like any reader.
    const std::pair<const char*, int> formats[] = {{"in.flac", SF_FORMAT_FLAC | SF_FORMAT_PCM_24},
                                                   {"in.ogg", SF_FORMAT_OGG | SF_FORMAT_VORBIS}};
    for (const auto& [name, format] : formats) {
        SCOPED_TRACE(name);
        writeSoundFile(path(name), format, 44100, 1, testSignal(kFrames, 1));
        const Stereo input = splitStereo(readSoundFile(path(name)));
        ASSERT_EQ(input.left, input.right);

        const Stereo output = render(path(name), {"--program", "1"});
        HostSettings host;
        host.program = 1;
        EXPECT_EQ(compareBits(output, renderDirectly(input, host)), "");
        // Program 1 pans, so the two outputs of one mono input differ.
        EXPECT_NE(output.left, output.right);
    }
}

TEST_F(RenderOutput, ProgramComesFirstAndParametersFollowInTheOrderGiven)
{
    const Stereo input = stereoInput(44100);
    HostSettings host;
    host.program = 3;
    host.parameters = {{0, 0.3f}, {1, 0.9f}, {1, 0.45f}, {5, 9.9f}};
    const Stereo expected = renderDirectly(input, host);

    const std::vector<std::string> programFirst = {"--program", "3",       "--param", "0=0.3",
                                                   "--param",   "1=0.9",   "--param", "1=0.45",
                                                   "--param",   "5=9.9"};
    const std::vector<std::string> programLast = {"--param", "0=0.3",  "--param", "1=0.9",
                                                  "--param", "1=0.45", "--param", "5=9.9",
                                                  "--program=3"};
    EXPECT_EQ(compareBits(render(path("in.wav"), programFirst), expected), "");
    EXPECT_EQ(compareBits(render(path("in.wav"), programLast), expected), "");

    // The parameters matter: without them program 3 sounds different, and so does the other
    // order of the two speeds.
    HostSettings programOnly;
    programOnly.program = 3;
    EXPECT_NE(compareBits(expected, renderDirectly(input, programOnly)), "");
    HostSettings swapped = host;
    swapped.parameters = {{0, 0.3f}, {1, 0.45f}, {1, 0.9f}, {5, 9.9f}};
    EXPECT_NE(compareBits(expected, renderDirectly(input, swapped)), "");
}

TEST_F(RenderOutput, DemoIsRenderedAtTheDefaultOrTheGivenSampleRate)
{
    for (int rate : {44100, 22050}) {
        SCOPED_TRACE("rate " + std::to_string(rate));
        std::vector<std::string> arguments;
        if (rate != 44100)
            arguments = {"--sample-rate", std::to_string(rate)};
        arguments.push_back(path("demo.wav"));
        const RunResult run = runRender(arguments);
        ASSERT_EQ(run.status, 0) << run.err;
        const SoundFile file = readSoundFile(path("demo.wav"));
        EXPECT_EQ(file.sampleRate, rate);

        Stereo input;
        input.left = makeDemoSignal(rate);
        input.right = input.left;
        EXPECT_EQ(input.left.size(), static_cast<size_t>(kDemoSeconds * rate));
        HostSettings host;
        host.sampleRate = static_cast<float>(rate);
        EXPECT_EQ(compareBits(splitStereo(file), renderDirectly(input, host)), "");
    }
}

TEST_F(RenderOutput, NonFiniteInputPassesThroughAsTheEffectMakesItAndIsCounted)
{
    std::vector<float> samples = testSignal(1000, 2);
    samples[10] = std::numeric_limits<float>::quiet_NaN();
    samples[501] = std::numeric_limits<float>::infinity();
    samples[777] = -std::numeric_limits<float>::infinity();
    writeSoundFile(path("in.wav"), kFloatWav, 44100, 2, samples);
    const Stereo input = splitStereo(readSoundFile(path("in.wav")));

    const RunResult run = runRender({"--param", "4=0.5", path("in.wav"), path("out.wav")});
    ASSERT_EQ(run.status, 0) << run.err;
    const Stereo output = splitStereo(readSoundFile(path("out.wav")));
    HostSettings host;
    host.parameters = {{4, 0.5f}};
    const Stereo expected = renderDirectly(input, host);
    EXPECT_EQ(compareBits(output, expected), "");

    int nonFinite = 0;
    for (const auto* channel : {&expected.left, &expected.right})
        for (float sample : *channel)
            nonFinite += std::isfinite(sample) ? 0 : 1;
    ASSERT_GT(nonFinite, 0);
    EXPECT_NE(run.err.find(std::to_string(nonFinite) + " output samples are NaN or infinite"),
              std::string::npos)
        << run.err;
}

} // namespace
