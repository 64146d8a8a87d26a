// hvtremolo-render run as a user runs it, in a folder of its own, its audio compared bit for bit
// with the module driven directly through the shared host-side loader.
#include <cairo.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <tuple>

#include "tests/render/Support.h"
#include "tools/render/DemoSignal.h"
#include "tools/vsthost/VstPlugin.h"

namespace {

constexpr int kFloatWav = SF_FORMAT_WAV | SF_FORMAT_FLOAT;
constexpr auto npos = std::string::npos;

Ran render(const Scratch& dir, const std::string& arguments)
{
    return shell("cd " + quote(dir.dir) + " && " + quote(HVT_RENDER_PROGRAM) + " " + arguments);
}

struct Case {
    std::string options;
    const char* input; // null: the demo
    int channels, format, rate;
    int block, program; // program -1: the module's own
    std::vector<std::pair<int, float>> parameters;
    bool nonFinite = false;
};

// What the program must do, done directly: rate, block size, switched on, program, parameters in
// order, then processReplacing block by block. Returns interleaved stereo.
std::vector<float> renderDirectly(const Sound& input, const Case& settings)
{
    VstModule module(HVT_MODULE_PATH);
    const std::unique_ptr<VstPlugin> plugin = VstPlugin::create(module);
    if (!plugin)
        return {};
    plugin->dispatch(effOpen);
    plugin->dispatch(effSetSampleRate, 0, 0, nullptr, static_cast<float>(input.rate));
    plugin->dispatch(effSetBlockSize, 0, settings.block);
    plugin->dispatch(effMainsChanged, 0, 1);
    if (settings.program >= 0)
        plugin->dispatch(effSetProgram, 0, settings.program);
    for (const auto& [index, value] : settings.parameters)
        plugin->setParameter(index, value);

    const size_t frames = input.samples.size() / input.channels;
    std::vector<float> in[2], out[2];
    for (int c = 0; c < 2; ++c) {
        out[c].resize(frames);
        for (size_t i = 0; i < frames; ++i) // a mono input feeds both
            in[c].push_back(input.samples[i * input.channels + c % input.channels]);
    }
    for (size_t start = 0; start < frames; start += settings.block) {
        float* inputs[2] = {in[0].data() + start, in[1].data() + start};
        float* outputs[2] = {out[0].data() + start, out[1].data() + start};
        const auto length = std::min<size_t>(frames - start, settings.block);
        plugin->processReplacing(inputs, outputs, static_cast<VstInt32>(length));
    }
    std::vector<float> output;
    for (size_t i = 0; i < frames; ++i)
        output.insert(output.end(), {out[0][i], out[1][i]});
    return output;
}

TEST(RenderOutput, EqualsTheModuleDrivenDirectlyBitForBit)
{
    const Case cases[] = {
        {"--program 2 --param 4=0.8", "in.wav", 2, kFloatWav, 48000, 512, 2, {{4, 0.8f}}},
        {"--block 1 --program 6", "in.wav", 2, SF_FORMAT_WAV | SF_FORMAT_PCM_16, 44100, 1, 6, {}},
        // Program 1 pans, so a mono input fed to one side only would sound different.
        {"--block 4096 --program 1", "in.flac", 1, SF_FORMAT_FLAC | SF_FORMAT_PCM_24, 44100, 4096,
         1, {}},
        // The program comes first wherever it is written, then the parameters in their order.
        {"--param 0=0.3 --param 1=0.9 --param 1=0.45 --param 5=9.9 --program=3", "in.wav", 2,
         kFloatWav, 44100, 512, 3, {{0, 0.3f}, {1, 0.9f}, {1, 0.45f}, {5, 9.9f}}},
        {"--param 4=0.5", "in.wav", 2, kFloatWav, 44100, 512, -1, {{4, 0.5f}}, true},
        {"", nullptr, 1, 0, 44100, 512, -1, {}},
        {"--sample-rate 22050", nullptr, 1, 0, 22050, 512, -1, {}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.options + " " + (c.input ? c.input : "demo"));
        Scratch dir;
        Sound input{c.rate, 1, 0, makeDemoSignal(c.rate)};
        if (c.input) {
            // Not a multiple of any block size, so that every run ends on a shorter block.
            Sound made{c.rate, c.channels, c.format, std::vector<float>(30011 * c.channels)};
            for (size_t i = 0; i < made.samples.size(); ++i) // a tone of its own on each channel
                made.samples[i] = static_cast<float>(std::sin(0.01 * i * (i % c.channels + 1)));
            if (c.nonFinite) {
                made.samples[10] = std::numeric_limits<float>::quiet_NaN();
                made.samples[501] = std::numeric_limits<float>::infinity();
                made.samples[30000] = -std::numeric_limits<float>::infinity();
            }
            ASSERT_TRUE(writeSound(dir / c.input, made));
            input = readSound(dir / c.input); // the program hears what libsndfile decodes
        }
        const Ran run = render(dir, c.options + " " + (c.input ? c.input : "") + " out.wav");
        ASSERT_EQ(run.status, 0) << run.err;
        const Sound output = readSound(dir / "out.wav");
        EXPECT_EQ(std::tuple(output.format, output.channels, output.rate),
                  std::tuple(kFloatWav, 2, c.rate));
        const std::vector<float> expected = renderDirectly(input, c);
        EXPECT_EQ(firstDifference(output.samples, expected), npos);

        // Non-finite samples pass through as the effect makes them, and the summary counts them.
        const auto nonFinite = std::count_if(expected.begin(), expected.end(),
                                             [](float sample) { return !std::isfinite(sample); });
        EXPECT_EQ(nonFinite > 0, c.nonFinite);
        const std::string count = std::to_string(nonFinite) + " output samples are NaN or infinite";
        EXPECT_NE(run.err.find(nonFinite ? count + "\n" : "dBFS\n"), npos) << run.err;
    }
}

int pixelsNear(cairo_surface_t* image, uint32_t rgb)
{
    const auto* pixels = reinterpret_cast<const uint32_t*>(cairo_image_surface_get_data(image));
    return std::count_if(pixels, pixels + 1000 * 400, [rgb](uint32_t pixel) {
        int distance = 0;
        for (int shift : {16, 8, 0})
            distance += std::abs(int(pixel >> shift & 0xff) - int(rgb >> shift & 0xff));
        return distance <= 12;
    });
}

TEST(RenderReport, PlotIsAPngOfTheStatedSizeShowingInputAndBothOutputs)
{
    Scratch dir;
    ASSERT_TRUE(writeSound(dir / "empty.wav", {}));
    // The demo, and an empty input, which has no envelopes but still a plot.
    for (const std::string input : {"", "empty.wav"}) {
        const Ran run = render(dir, "--program 1 --plot plot.png " + input + " out.wav");
        ASSERT_EQ(run.status, 0) << run.err;
        cairo_surface_t* plot = cairo_image_surface_create_from_png((dir / "plot.png").c_str());
        const int width = cairo_image_surface_get_width(plot);
        ASSERT_EQ(std::pair(width, cairo_image_surface_get_height(plot)), std::pair(1000, 400));
        // Input grey, left blue, right orange: each envelope is a line of hundreds of pixels,
        // far more than its swatch in the legend.
        for (uint32_t colour : {0x9e9e9eu, 0x1f66ccu, 0xed730du})
            EXPECT_EQ(pixelsNear(plot, colour) > 500, input.empty()) << std::hex << colour;
        cairo_surface_destroy(plot);
        EXPECT_NE(run.err.find(input.empty() ? "plot  " + dir / "plot.png"
                                             : "peak L -inf dBFS, R -inf dBFS"),
                  npos)
            << run.err;
    }
}

TEST(RenderReport, SummaryGoesToStandardErrorUnlessQuietListAndHelpToStandardOutput)
{
    Scratch dir;
    Sound impulses{44100, 2, kFloatWav, std::vector<float>(2 * 44100)};
    impulses.samples[1000] = 0.5f;   // left, -6.0 dBFS
    impulses.samples[2001] = -0.25f; // right, -12.0 dBFS
    ASSERT_TRUE(writeSound(dir / "in.wav", impulses));
    const std::tuple<std::string, bool, std::vector<std::string>> cases[] = {
        // Mix 0 leaves the sound as it is, so the peaks are the input's.
        {"--param 4=0 in.wav out.wav", true,
         {"44100 frames, 1.00 s at 44100 Hz in ",
          "x real time); peak L -6.0 dBFS, R -12.0 dBFS\nwrote " + dir / "out.wav"}},
        {"--quiet in.wav out.wav", false, {}},
        // 0.634999 is stored as 0.63499898..., and the display truncates.
        {"--list", false, {"*  0  Wurli Classic", "9  Rotary", "Tremolo Depth  0.634998  amount"}},
        {"--list --param 4=0.5 --program 3", false,
         {"*  3  SlowHand", "Tremolo Speed  0.140000  amount", "Mix            0.500000  percent",
          "Sample Rate    7         Hz"}},
        {"--help", false, {"Usage:", "--plugin", "--program", "--param", "--block", "--sample-rate",
                           "--plot", "--quiet", "--list", "1000 x 400"}},
    };
    for (const auto& [options, summary, lines] : cases) {
        SCOPED_TRACE(options);
        const Ran ran = render(dir, options);
        EXPECT_EQ(ran.status, 0);
        EXPECT_EQ(summary ? ran.out : ran.err, "");
        for (const std::string& line : lines)
            EXPECT_NE((summary ? ran.err : ran.out).find(line), npos) << line;
        EXPECT_EQ(lines.empty(), ran.out + ran.err == "") << ran.out << ran.err;
    }
}

TEST(RenderBadInput, EachProblemIsNamedInOneLineAndLeavesEveryFileAsItWas)
{
    Scratch dir;
    ASSERT_TRUE(writeSound(dir / "in.wav", {44100, 2, kFloatWav, std::vector<float>(2000)}));
    ASSERT_TRUE(writeSound(dir / "surround.wav", {44100, 6, kFloatWav, std::vector<float>(6000)}));
    std::ofstream(dir / "notes.txt") << "not a sound file\n";
    std::ofstream(dir / "broken.so") << "not a module either\n";
    std::ofstream(dir / "out.wav") << "an earlier render\n";
    std::filesystem::create_directory(dir / "folder");
    const std::string before = shell("ls -A " + quote(dir.dir)).out;

    const std::pair<std::string, std::string> cases[] = {
        {"absent.wav out.wav", "cannot read input 'absent.wav'"},
        {"folder out.wav", "is a folder, not a sound file"},
        {"notes.txt out.wav", "'notes.txt' is not a sound file"},
        {"surround.wav out.wav", "has 6 channels"},
        {"--louder in.wav out.wav", "unknown option '--louder'"},
        {"--param 6=0.5 in.wav out.wav", "index '6' is not a parameter 0 to 5"},
        {"--param 4=nan in.wav out.wav", "value 'nan' is not a finite number"},
        {"--param 4 in.wav out.wav", "'4' is not INDEX=VALUE"},
        {"--program 10 in.wav out.wav", "--program '10' is not a program number 0 to 9"},
        {"--program two in.wav out.wav", "--program 'two' is not a program number 0 to 9"},
        {"--block 0 in.wav out.wav", "--block '0' is not a block size 1 to 65536"},
        {"--block 65537 in.wav out.wav", "--block '65537' is not a block size 1 to 65536"},
        {"in.wav nowhere/out.wav", "folder 'nowhere' does not exist"},
        {"in.wav folder", "is a folder, not a file"},
        {"--plugin broken.so in.wav out.wav", "cannot load plug-in: ./broken.so"},
        {"--plugin " + quote(HVT_NO_ENTRY_MODULE_PATH) + " in.wav out.wav",
         "does not export VSTPluginMain"},
        {"", "no OUTPUT.wav given"},
        {"--sample-rate 48000 in.wav out.wav", "--sample-rate is only for the demo signal"},
    };
    for (const auto& [arguments, message] : cases) {
        SCOPED_TRACE(arguments);
        const Ran run = render(dir, arguments);
        EXPECT_NE(run.status, 0);
        EXPECT_EQ(run.out, "");
        EXPECT_EQ(run.err.rfind("hvtremolo-render: ", 0), 0u) << run.err;
        EXPECT_NE(run.err.find(message), npos) << run.err;
        EXPECT_EQ(run.err.find('\n'), run.err.size() - 1) << "one line: " << run.err;
        EXPECT_EQ(shell("ls -A " + quote(dir.dir)).out, before);
        EXPECT_EQ(readText(dir / "out.wav"), "an earlier render\n");
    }
}

} // namespace
