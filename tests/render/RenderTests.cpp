// hvtremolo-render run as a user runs it, in a folder of its own, its audio compared bit for bit
// with the module driven directly through the shared host-side loader; its plot and its report.
#include <cairo.h>
#include <gtest/gtest.h>

#include <limits>
#include <tuple>

#include "tests/render/RenderSupport.h"
#include "tools/render/DemoSignal.h"

namespace {

struct Case {
    std::string options;
    const char* input; // null: the demo
    int channels, format, rate;
    Direct direct;
    bool nonFinite = false;
};

TEST(RenderOutput, EqualsTheModuleDrivenDirectlyBitForBit)
{
    // The tuning the program chooses from the rate comes after the program, before the
    // parameters: {5, 7} at 44.1 kHz, {5, 8} at 48 kHz and so on.
    const Case cases[] = {
        {"--program 2 --param 4=0.8", "in.wav", 2, kFloatWav, 48000, {512, 2, {{5, 8}, {4, 0.8f}}}},
        {"--block 1 --program 6 --bits float", "in.wav", 2, SF_FORMAT_WAV | SF_FORMAT_PCM_16,
         44100, {1, 6, {{5, 7}}}},
        // Program 1 pans, so a mono input fed to one side only would sound different.
        {"--block 4096 --program waves --bits float", "in.flac", 1,
         SF_FORMAT_FLAC | SF_FORMAT_PCM_24, 44100, {4096, 1, {{5, 7}}}},
        // The program comes first wherever it is written, then the parameters in their order; a
        // rate choice given leaves the tuning alone.
        {"--param 0=0.3 --param tremolo-speed=0.9 --param 1=0.45 --param Sample-Rate=9 "
         "--program=slowhand",
         "in.wav", 2, kFloatWav, 44100, {512, 3, {{0, 0.3f}, {1, 0.9f}, {1, 0.45f}, {5, 9}}}},
        {"--param mix=0.5", "in.wav", 2, kFloatWav, 44100, {512, -1, {{5, 7}, {4, 0.5f}}}, true},
        {"--program 1", "in.wav", 2, kFloatWav, 96000, {512, 1, {{5, 10}}}},
        {"--program 1 --keep-rate", "in.wav", 2, kFloatWav, 96000, {512, 1, {}}},
        {"--demo", nullptr, 1, 0, 44100, {512, -1, {{5, 7}}}},
        {"--demo --sample-rate 22050", nullptr, 1, 0, 22050, {512, -1, {{5, 7}}}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.options + " " + (c.input ? c.input : "demo"));
        Scratch dir;
        // The demo is made only where it is rendered: it takes a while under valgrind.
        Sound input{c.rate, 1, 0, c.input ? std::vector<float>() : makeDemoSignal(c.rate)};
        if (c.input) {
            Sound made = tone(c.rate, c.channels, c.format);
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
        const std::vector<float> expected = renderDirectly(input, c.direct);
        EXPECT_EQ(firstDifference(output.samples, expected), npos);

        // Non-finite samples pass through as the effect makes them, and the summary counts them.
        const auto nonFinite = std::count_if(expected.begin(), expected.end(),
                                             [](float sample) { return !std::isfinite(sample); });
        EXPECT_EQ(nonFinite > 0, c.nonFinite);
        const std::string count = std::to_string(nonFinite) + " output samples are NaN or infinite";
        EXPECT_NE(run.err.find(nonFinite ? count + "\n" : "dBFS\n"), npos) << run.err;
    }
}

int pixelsNear(cairo_surface_t* image, uint32_t rgb, int x0 = 0, int y0 = 0, int x1 = 1000,
               int y1 = 400)
{
    const auto* pixels = reinterpret_cast<const uint32_t*>(cairo_image_surface_get_data(image));
    const int stride = cairo_image_surface_get_stride(image) / 4;
    int count = 0;
    for (int y = y0; y < y1; ++y)
        for (int x = x0; x < x1; ++x) {
            const uint32_t pixel = pixels[y * stride + x];
            int distance = 0;
            for (int shift : {16, 8, 0})
                distance += std::abs(int(pixel >> shift & 0xff) - int(rgb >> shift & 0xff));
            count += distance <= 12;
        }
    return count;
}

constexpr uint32_t kGrey = 0x9e9e9e, kBlue = 0x1f66cc, kOrange = 0xed730d, kViolet = 0x7333a6;

TEST(RenderPlot, APngOfTheStatedSizeWithTheLegendOutsideTheData)
{
    Scratch dir;
    ASSERT_TRUE(writeSound(dir / "empty.wav", {}));
    struct Row {
        std::string arguments;
        std::vector<uint32_t> lines, absent; // colours drawn as lines, and not drawn at all
        std::string title;
    };
    const Row rows[] = {
        // Waves pans: left and right differ.
        {"--program 1 --param tremolo-speed=0.3 --plot plot.png --demo out.wav",
         {kGrey, kBlue, kOrange}, {kViolet}, "(Waves, Tremolo Speed 0.30, tuned for 44.1 kHz)"},
        // Wurli Classic does not pan: one line for both sides.
        {"--plot plot.png --demo --sample-rate 48000 out.wav", {kGrey, kViolet}, {kBlue, kOrange},
         "(Wurli Classic, tuned for 48 kHz)"},
        {"--program 'the gentleman' --param mix=0.5 --param 5=10 --plot plot.png --demo out.wav",
         {kGrey, kBlue, kOrange}, {kViolet}, "(The Gentleman, Mix 0.50, tuned for 96 kHz)"},
        // An empty input has no envelopes but still a plot, with the legend above its frame.
        {"--program 1 --plot plot.png empty.wav out.wav", {}, {}, "(Waves, tuned for"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.arguments);
        const Ran run = render(dir, row.arguments);
        ASSERT_EQ(run.status, 0) << run.err;
        EXPECT_NE(run.err.find("plot  " + dir / "plot.png " + row.title), npos) << run.err;
        cairo_surface_t* plot = cairo_image_surface_create_from_png((dir / "plot.png").c_str());
        const int width = cairo_image_surface_get_width(plot);
        ASSERT_EQ(std::pair(width, cairo_image_surface_get_height(plot)), std::pair(1000, 400));
        // Each envelope is a line of hundreds of pixels, far more than its swatch in the legend.
        for (uint32_t colour : row.lines)
            EXPECT_GT(pixelsNear(plot, colour), 500) << std::hex << colour;
        for (uint32_t colour : row.absent)
            EXPECT_EQ(pixelsNear(plot, colour), 0) << std::hex << colour;
        // Inside the frame only data: with no envelopes, no colour of any line is there.
        if (row.lines.empty()) {
            for (uint32_t colour : {kGrey, kBlue, kOrange, kViolet})
                EXPECT_EQ(pixelsNear(plot, colour, 63, 53, 981, 353), 0) << std::hex << colour;
        }
        cairo_surface_destroy(plot);
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
          "x real time), tuned for 44.1 kHz; peak L -6.0 dBFS, R -12.0 dBFS\nwrote " +
              dir / "out.wav (WAV, float)\n"}},
        {"--quiet in.wav out.wav", false, {}},
        // 0.634999 is stored as 0.63499898..., and the display truncates.
        {"--list", false,
         {"*  0  Wurli Classic", "9  Rotary", "0  tremolo-depth   Tremolo Depth  0.634998  amount",
          "5  sample-rate     Sample Rate    7         Hz"}},
        {"--list --param mix=0.5 --program SlowHand --sample-rate 96000", false,
         {"*  3  SlowHand", "Tremolo Speed  0.140000  amount", "Mix            0.500000  percent",
          "Sample Rate    10        Hz"}},
        {"--version", false, {"hvtremolo-render " HVT_PROJECT_VERSION "\n"}},
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
    const std::string before = listing(dir);

    const std::tuple<std::string, int, std::string> cases[] = {
        {"absent.wav out.wav", 1, "cannot read input 'absent.wav'"},
        {"folder out.wav", 1, "is a folder, not a sound file"},
        {"notes.txt out.wav", 1, "'notes.txt' is not a sound file"},
        {"surround.wav out.wav", 1, "has 6 channels"},
        {"--louder in.wav out.wav", 2, "unknown option '--louder'"},
        {"--param 4=nan in.wav out.wav", 2, "value 'nan' is not a finite number"},
        {"--param 4 in.wav out.wav", 2, "'4' is not INDEX=VALUE or NAME=VALUE"},
        {"--block 0 in.wav out.wav", 2, "--block '0' is not a block size 1 to 65536"},
        {"--block 65537 in.wav out.wav", 2, "--block '65537' is not a block size 1 to 65536"},
        {"--bits 8 in.wav out.wav", 2, "--bits '8' is not 16, 24, 32 or float"},
        {"--type mp4 in.wav out.wav", 2, "--type 'mp4' is not a type this program writes"},
        {"in.wav nowhere/out.wav", 1, "folder 'nowhere' does not exist"},
        {"in.wav folder", 1, "is a folder, not a file"},
        {"--plugin broken.so in.wav out.wav", 1, "cannot load plug-in: ./broken.so"},
        {"--plugin " + quote(HVT_NO_ENTRY_MODULE_PATH) + " in.wav out.wav", 1,
         "does not export VSTPluginMain"},
        {"", 2, "missing INPUT and OUTPUT"},
        {"--demo", 2, "missing OUTPUT"},
        {"--demo in.wav out.wav", 2, "--demo renders the built-in demo, so it takes only OUTPUT"},
        {"in.wav out.wav more.wav", 2, "too many files"},
        {"--sample-rate 48000 in.wav out.wav", 2, "--sample-rate is only for the demo signal"},
        {"--plot plot.jpg in.wav out.wav", 2, "--plot 'plot.jpg' must name a .png file"},
        {"--plot out.png --type wav in.wav out.png", 2, "--plot 'out.png' names OUTPUT itself"},
        {"--plot in.wav.png --type wav in.wav in.wav.png", 2, "names OUTPUT itself"},
        {"--list in.wav", 2, "--list takes no files"},
    };
    for (const auto& [arguments, status, message] : cases) {
        SCOPED_TRACE(arguments);
        const Ran run = render(dir, arguments);
        EXPECT_EQ(run.status, status);
        EXPECT_EQ(run.out, "");
        EXPECT_EQ(run.err.rfind("hvtremolo-render: ", 0), 0u) << run.err;
        EXPECT_NE(run.err.find(message), npos) << run.err;
        EXPECT_EQ(run.err.find('\n'), run.err.size() - 1) << "one line: " << run.err;
        EXPECT_EQ(listing(dir), before);
        EXPECT_EQ(readText(dir / "out.wav"), "an earlier render\n");
    }
}

} // namespace
