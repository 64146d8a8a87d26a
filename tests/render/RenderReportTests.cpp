// What the program shows besides the audio: the plot, the listing, the help and the summary.
#include <cairo.h>
#include <sndfile.h>

#include <cstdint>
#include <cstdlib>
#include <memory>

#include "RenderTestSupport.h"

namespace {

using Surface = std::unique_ptr<cairo_surface_t, decltype(&cairo_surface_destroy)>;

Surface loadPng(const std::string& path)
{
    return Surface(cairo_image_surface_create_from_png(path.c_str()), cairo_surface_destroy);
}

// Counts pixels within a small distance of an RGB colour.
int pixelsNear(cairo_surface_t* surface, uint32_t rgb)
{
    cairo_surface_flush(surface);
    const unsigned char* data = cairo_image_surface_get_data(surface);
    const int stride = cairo_image_surface_get_stride(surface);
    int count = 0;
    for (int y = 0; y < cairo_image_surface_get_height(surface); ++y) {
        const auto* row = reinterpret_cast<const uint32_t*>(data + y * stride);
        for (int x = 0; x < cairo_image_surface_get_width(surface); ++x) {
            int distance = 0;
            for (int shift : {16, 8, 0})
                distance += std::abs(static_cast<int>((row[x] >> shift) & 0xff) -
                                     static_cast<int>((rgb >> shift) & 0xff));
            count += distance <= 12 ? 1 : 0;
        }
    }
    return count;
}

constexpr uint32_t kInputGrey = 0x9e9e9e;
constexpr uint32_t kLeftBlue = 0x1f66cc;
constexpr uint32_t kRightOrange = 0xed730d;

using RenderReport = RenderTest;

TEST_F(RenderReport, PlotIsAPngOfTheStatedSizeShowingInputAndBothOutputs)
{
    const RunResult run =
        runRender({"--program", "1", "--plot", path("plot.png"), path("demo.wav")});
    ASSERT_EQ(run.status, 0) << run.err;
    const Surface plot = loadPng(path("plot.png"));
    ASSERT_EQ(cairo_surface_status(plot.get()), CAIRO_STATUS_SUCCESS);
    EXPECT_EQ(cairo_image_surface_get_width(plot.get()), 1000);
    EXPECT_EQ(cairo_image_surface_get_height(plot.get()), 400);
    // Each envelope is a line of hundreds of pixels, far more than the legend's swatch.
    EXPECT_GT(pixelsNear(plot.get(), kInputGrey), 500);
    EXPECT_GT(pixelsNear(plot.get(), kLeftBlue), 500);
    EXPECT_GT(pixelsNear(plot.get(), kRightOrange), 500);
    EXPECT_NE(run.err.find(path("plot.png")), std::string::npos) << run.err;
}

TEST_F(RenderReport, PlotOfASilentOrEmptyFileIsStillAPlot)
{
    for (int frames : {0, 4410}) {
        SCOPED_TRACE(std::to_string(frames) + " frames");
        writeSoundFile(path("in.wav"), SF_FORMAT_WAV | SF_FORMAT_PCM_16, 44100, 2,
                       std::vector<float>(static_cast<size_t>(frames) * 2, 0.0f));
        const RunResult run =
            runRender({"--plot", path("plot.png"), path("in.wav"), path("out.wav")});
        ASSERT_EQ(run.status, 0) << run.err;
        EXPECT_NE(run.err.find("peak L -inf dBFS, R -inf dBFS"), std::string::npos) << run.err;
        const Surface plot = loadPng(path("plot.png"));
        EXPECT_EQ(cairo_surface_status(plot.get()), CAIRO_STATUS_SUCCESS);
        EXPECT_EQ(readSoundFile(path("out.wav")).interleaved.size(),
                  static_cast<size_t>(frames) * 2);
    }
}

TEST_F(RenderReport, SummaryGivesFramesSecondsSpeedAndPeaksAndQuietSilencesIt)
{
    std::vector<float> samples(44100 * 2, 0.0f);
    samples[1000] = 0.5f;  // left peak: -6.0 dBFS
    samples[2001] = -0.25f; // right peak: -12.0 dBFS
    writeSoundFile(path("in.wav"), SF_FORMAT_WAV | SF_FORMAT_FLOAT, 44100, 2, samples);
    // Mix 0 leaves the audio as it is, so the peaks are the input's.
    const RunResult run = runRender({"--param", "4=0", path("in.wav"), path("out.wav")});
    ASSERT_EQ(run.status, 0) << run.err;
    EXPECT_NE(run.err.find("44100 frames, 1.00 s at 44100 Hz in "), std::string::npos) << run.err;
    EXPECT_NE(run.err.find("x real time); peak L -6.0 dBFS, R -12.0 dBFS\n"), std::string::npos)
        << run.err;
    EXPECT_EQ(run.err.find("NaN"), std::string::npos);
    EXPECT_EQ(run.out, "");

    const RunResult quiet = runRender({"--quiet", path("in.wav"), path("quiet.wav")});
    EXPECT_EQ(quiet.status, 0);
    EXPECT_EQ(quiet.err, "");
    EXPECT_EQ(quiet.out, "");
}

TEST_F(RenderReport, ProgressBarShowsOnATerminalForInputsLongerThanFiveSecondsOnly)
{
    // The demo lasts 6 seconds.
    const RunResult demo = runRender({path("demo.wav")}, true);
    ASSERT_EQ(demo.status, 0) << demo.err;
    // A bar is drawn, then its line is blanked so the summary stands alone on it.
    EXPECT_EQ(demo.err.rfind("\r[", 0), 0u) << demo.err;
    EXPECT_NE(demo.err.find("%"), std::string::npos) << demo.err;
    EXPECT_NE(demo.err.find("\r" + std::string(48, ' ') + "\r264600 frames"), std::string::npos)
        << demo.err;

    const RunResult quiet = runRender({"--quiet", path("demo.wav")}, true);
    EXPECT_EQ(quiet.err, "");

    writeSoundFile(path("in.wav"), SF_FORMAT_WAV | SF_FORMAT_PCM_16, 44100, 2,
                   testSignal(5 * 44100, 2));
    const RunResult shortInput = runRender({path("in.wav"), path("out.wav")}, true);
    ASSERT_EQ(shortInput.status, 0) << shortInput.err;
    EXPECT_EQ(shortInput.err.find('%'), std::string::npos) << shortInput.err;
    EXPECT_NE(shortInput.err.find("220500 frames"), std::string::npos) << shortInput.err;
}

TEST_F(RenderReport, ListShowsProgramsAndParametersAfterProgramAndParameters)
{
    const RunResult defaults = runRender({"--list"});
    ASSERT_EQ(defaults.status, 0) << defaults.err;
    for (const char* name : {"Wurli Classic", "Waves", "Warble", "SlowHand", "Undulate",
                             "The Gentleman", "Ghosts", "New Morning"})
        EXPECT_NE(defaults.out.find(name), std::string::npos) << name;
    EXPECT_NE(defaults.out.find("*  0  Wurli Classic"), std::string::npos) << defaults.out;
    // The plug-in truncates its display digits: 0.634999 is stored as 0.63499898...
    EXPECT_NE(defaults.out.find("Tremolo Depth  0.634998  amount"), std::string::npos)
        << defaults.out;

    const RunResult changed = runRender({"--list", "--param", "4=0.5", "--program", "3"});
    ASSERT_EQ(changed.status, 0) << changed.err;
    EXPECT_NE(changed.out.find("*  3  SlowHand"), std::string::npos) << changed.out;
    EXPECT_NE(changed.out.find("Tremolo Speed  0.140000  amount"), std::string::npos);
    EXPECT_NE(changed.out.find("Mix            0.500000  percent"), std::string::npos)
        << changed.out;
    EXPECT_NE(changed.out.find("Sample Rate    7         Hz"), std::string::npos);
}

TEST_F(RenderReport, HelpExplainsTheInterfaceAndWritesNothing)
{
    const RunResult help = runRender({"--help"});
    EXPECT_EQ(help.status, 0);
    EXPECT_EQ(help.out.rfind("Usage:", 0), 0u);
    for (const char* option : {"--plugin", "--program", "--param", "--block", "--sample-rate",
                               "--plot", "--quiet", "--list", "1000 x 400"})
        EXPECT_NE(help.out.find(option), std::string::npos) << option;
    EXPECT_TRUE(filesInFolder().empty());
}

} // namespace
