// Every bad input ends with one line on stderr naming the problem, a non-zero exit status, and
// no file left behind: neither the output nor a temporary one.
#include <sndfile.h>

#include <filesystem>
#include <fstream>

#include "RenderTestSupport.h"

namespace {

struct BadCase {
    const char* what;
    std::vector<std::string> arguments; // "@" stands for the test's folder
    const char* message;                // part of the expected line
};

class RenderBadInput : public RenderTest {
protected:
    void SetUp() override
    {
        RenderTest::SetUp();
        writeSoundFile(path("good.wav"), SF_FORMAT_WAV | SF_FORMAT_PCM_16, 44100, 2,
                       testSignal(1000, 2));
        writeSoundFile(path("surround.wav"), SF_FORMAT_WAV | SF_FORMAT_PCM_16, 44100, 6,
                       testSignal(1000, 6));
        std::ofstream(path("notes.txt")) << "not a sound file\n";
        std::ofstream(path("broken.so")) << "not a module either\n";
        std::filesystem::create_directory(path("folder"));
    }

    std::vector<std::string> expand(const std::vector<std::string>& arguments) const
    {
        std::vector<std::string> result;
        for (std::string argument : arguments) {
            for (size_t at = argument.find('@'); at != std::string::npos; at = argument.find('@'))
                argument.replace(at, 1, folder);
            result.push_back(argument);
        }
        return result;
    }
};

TEST_F(RenderBadInput, EachProblemIsNamedInOneLineAndLeavesNoFile)
{
    const std::string noEntry = moduleWithoutEntryPath();
    const std::vector<BadCase> cases = {
        {"missing input", {"@/absent.wav", "@/out.wav"}, "cannot read input '"},
        {"input is a folder", {"@/folder", "@/out.wav"}, "is a folder, not a sound file"},
        {"input is not audio", {"@/notes.txt", "@/out.wav"}, "is not a sound file"},
        {"more than two channels", {"@/surround.wav", "@/out.wav"}, "has 6 channels"},
        {"unknown option", {"--louder", "@/good.wav", "@/out.wav"}, "unknown option '--louder'"},
        {"parameter index 6", {"--param", "6=0.5", "@/good.wav", "@/out.wav"},
         "index '6' is not a parameter 0 to 5"},
        {"parameter index -1", {"--param", "-1=0.5", "@/good.wav", "@/out.wav"},
         "index '-1' is not a parameter 0 to 5"},
        {"parameter value not a number", {"--param", "4=loud", "@/good.wav", "@/out.wav"},
         "value 'loud' is not a finite number"},
        {"parameter value with junk", {"--param", "4=0.5dB", "@/good.wav", "@/out.wav"},
         "value '0.5dB' is not a finite number"},
        {"parameter value NaN", {"--param", "4=nan", "@/good.wav", "@/out.wav"},
         "value 'nan' is not a finite number"},
        {"parameter without value", {"--param", "4", "@/good.wav", "@/out.wav"},
         "is not INDEX=VALUE"},
        {"program 10", {"--program", "10", "@/good.wav", "@/out.wav"},
         "--program '10' is not a program number 0 to 9"},
        {"program -1", {"--program", "-1", "@/good.wav", "@/out.wav"},
         "--program '-1' is not a program number 0 to 9"},
        {"program not a number", {"--program", "two", "@/good.wav", "@/out.wav"},
         "--program 'two' is not a program number"},
        {"block 0", {"--block", "0", "@/good.wav", "@/out.wav"}, "--block '0' is not a block"},
        {"block negative", {"--block", "-64", "@/good.wav", "@/out.wav"},
         "--block '-64' is not a block"},
        {"block absurd", {"--block", "65537", "@/good.wav", "@/out.wav"},
         "--block '65537' is not a block size 1 to 65536"},
        {"output folder missing", {"@/good.wav", "@/nowhere/out.wav"},
         "folder '@/nowhere' does not exist"},
        {"plot folder missing", {"--plot", "@/nowhere/plot.png", "@/good.wav", "@/out.wav"},
         "folder '@/nowhere' does not exist"},
        {"output is a folder", {"@/good.wav", "@/folder"}, "is a folder, not a file"},
        {"module missing", {"--plugin", "@/absent.so", "@/good.wav", "@/out.wav"},
         "cannot load plug-in: @/absent.so"},
        {"module not loadable", {"--plugin", "@/broken.so", "@/good.wav", "@/out.wav"},
         "cannot load plug-in: @/broken.so"},
        {"module without entry", {"--plugin", noEntry, "@/good.wav", "@/out.wav"},
         "does not export VSTPluginMain"},
        {"no output", {}, "no OUTPUT.wav given"},
        {"three files", {"@/good.wav", "@/good.wav", "@/out.wav"}, "too many files"},
        {"sample rate with an input", {"--sample-rate", "48000", "@/good.wav", "@/out.wav"},
         "--sample-rate is only for the demo signal"},
        {"sample rate not a rate", {"--sample-rate", "fast", "@/out.wav"},
         "--sample-rate 'fast' is not a whole number of Hz"},
    };

    const std::vector<std::string> before = filesInFolder();
    for (const BadCase& bad : cases) {
        SCOPED_TRACE(bad.what);
        const RunResult run = runRender(expand(bad.arguments));
        EXPECT_NE(run.status, 0);
        EXPECT_EQ(run.err.rfind("hvtremolo-render: ", 0), 0u) << run.err;
        EXPECT_NE(run.err.find(expand({bad.message})[0]), std::string::npos) << run.err;
        ASSERT_FALSE(run.err.empty());
        EXPECT_EQ(run.err.find('\n'), run.err.size() - 1) << "one line: " << run.err;
        EXPECT_EQ(run.out, "");
        EXPECT_EQ(filesInFolder(), before);
    }
}

TEST_F(RenderBadInput, FailedRenderLeavesAnEarlierOutputAsItWas)
{
    std::ofstream(path("out.wav")) << "an earlier render";
    const RunResult run = runRender({"--plugin", path("broken.so"), path("good.wav"),
                                     path("out.wav")});
    EXPECT_NE(run.status, 0);
    std::ifstream earlier(path("out.wav"));
    std::string text;
    std::getline(earlier, text);
    EXPECT_EQ(text, "an earlier render");
}

} // namespace
