#include "tools/render/CommandLine.h"

#include <cerrno>
#include <cmath>
#include <cstdlib>

namespace {

// Far beyond what any host uses; a larger block is a typo, not a wish.
constexpr int kLargestBlock = 65536;
constexpr int kLowestSampleRate = 1000;
constexpr int kHighestSampleRate = 768000;
constexpr int kNumPrograms = 10;
constexpr int kNumParameters = 6;

// The whole text must be a decimal integer: "12abc", "", " 1" and "1.5" are refused.
bool parseInteger(const std::string& text, long& result)
{
    if (text.empty() || text[0] == ' ')
        return false;
    char* end = nullptr;
    errno = 0;
    result = std::strtol(text.c_str(), &end, 10);
    return errno == 0 && *end == 0;
}

// The value reaches the effect exactly as strtof reads it, so "0.1" is the float nearest 0.1.
bool parseFloat(const std::string& text, float& result)
{
    if (text.empty() || text[0] == ' ')
        return false;
    char* end = nullptr;
    errno = 0;
    result = std::strtof(text.c_str(), &end);
    return errno != ERANGE && *end == 0;
}

std::string quoted(const std::string& text)
{
    return "'" + text + "'";
}

class Parser {
public:
    explicit Parser(const std::vector<std::string>& arguments) : arguments(arguments) {}

    ParseResult run()
    {
        std::vector<std::string> files;
        bool optionsEnded = false;
        for (position = 0; position < arguments.size() && result.error.empty(); ++position) {
            const std::string& argument = arguments[position];
            if (optionsEnded || argument.size() < 2 || argument[0] != '-')
                files.push_back(argument);
            else if (argument == "--")
                optionsEnded = true;
            else
                option(argument);
        }
        if (result.error.empty())
            placeFiles(files);
        return result;
    }

private:
    void option(const std::string& argument)
    {
        // Both "--block 64" and "--block=64".
        const size_t equals = argument.find('=');
        const std::string name = argument.substr(0, equals);
        std::optional<std::string> attached;
        if (equals != std::string::npos)
            attached = argument.substr(equals + 1);

        RenderOptions& options = result.options;
        if (name == "--help" || name == "-h")
            flag(name, attached, options.help);
        else if (name == "--quiet" || name == "-q")
            flag(name, attached, options.quiet);
        else if (name == "--list")
            flag(name, attached, options.list);
        else if (name == "--plugin")
            text(name, attached, options.pluginPath);
        else if (name == "--plot")
            text(name, attached, options.plotPath);
        else if (name == "--program")
            program(name, attached);
        else if (name == "--param")
            parameter(name, attached);
        else if (name == "--block")
            block(name, attached);
        else if (name == "--sample-rate")
            sampleRate(name, attached);
        else
            fail("unknown option " + quoted(name) + " (see --help)");
    }

    void flag(const std::string& name, const std::optional<std::string>& attached, bool& target)
    {
        if (attached)
            fail(name + " takes no value");
        else
            target = true;
    }

    bool value(const std::string& name, const std::optional<std::string>& attached,
               std::string& out)
    {
        if (attached) {
            out = *attached;
            return true;
        }
        if (position + 1 >= arguments.size()) {
            fail(name + " needs a value (see --help)");
            return false;
        }
        out = arguments[++position];
        return true;
    }

    void text(const std::string& name, const std::optional<std::string>& attached,
              std::string& target)
    {
        std::string given;
        if (!value(name, attached, given))
            return;
        if (given.empty())
            fail(name + " needs a file name");
        else
            target = given;
    }

    void program(const std::string& name, const std::optional<std::string>& attached)
    {
        std::string given;
        if (!value(name, attached, given))
            return;
        long number = 0;
        if (!parseInteger(given, number) || number < 0 || number >= kNumPrograms)
            fail("--program " + quoted(given) + " is not a program number 0 to 9");
        else
            result.options.program = static_cast<int>(number);
    }

    void parameter(const std::string& name, const std::optional<std::string>& attached)
    {
        std::string given;
        if (!value(name, attached, given))
            return;
        const size_t equals = given.find('=');
        if (equals == std::string::npos) {
            fail("--param " + quoted(given) + " is not INDEX=VALUE");
            return;
        }
        const std::string indexText = given.substr(0, equals);
        const std::string valueText = given.substr(equals + 1);
        long index = 0;
        if (!parseInteger(indexText, index) || index < 0 || index >= kNumParameters) {
            fail("--param " + quoted(given) + ": index " + quoted(indexText) +
                 " is not a parameter 0 to 5");
            return;
        }
        float number = 0.0f;
        // NaN and infinity are refused: no parameter means anything with them.
        if (!parseFloat(valueText, number) || !std::isfinite(number)) {
            fail("--param " + quoted(given) + ": value " + quoted(valueText) +
                 " is not a finite number");
            return;
        }
        result.options.parameters.push_back({static_cast<int>(index), number});
    }

    void block(const std::string& name, const std::optional<std::string>& attached)
    {
        std::string given;
        if (!value(name, attached, given))
            return;
        long number = 0;
        if (!parseInteger(given, number) || number < 1 || number > kLargestBlock)
            fail("--block " + quoted(given) + " is not a block size 1 to " +
                 std::to_string(kLargestBlock));
        else
            result.options.blockSize = static_cast<int>(number);
    }

    void sampleRate(const std::string& name, const std::optional<std::string>& attached)
    {
        std::string given;
        if (!value(name, attached, given))
            return;
        long number = 0;
        if (!parseInteger(given, number) || number < kLowestSampleRate ||
            number > kHighestSampleRate)
            fail("--sample-rate " + quoted(given) + " is not a whole number of Hz from " +
                 std::to_string(kLowestSampleRate) + " to " + std::to_string(kHighestSampleRate));
        else
            result.options.sampleRate = static_cast<int>(number);
    }

    void placeFiles(const std::vector<std::string>& files)
    {
        RenderOptions& options = result.options;
        if (options.help)
            return;
        if (options.list) {
            if (!files.empty())
                fail("--list takes no files, only --plugin, --program and --param");
            return;
        }
        if (files.empty()) {
            fail("no OUTPUT.wav given (see --help)");
            return;
        }
        if (files.size() > 2) {
            fail("too many files: give at most INPUT and OUTPUT.wav");
            return;
        }
        options.outputPath = files.back();
        if (files.size() == 2)
            options.inputPath = files.front();
        if (!options.inputPath.empty() && options.sampleRate)
            fail("--sample-rate is only for the demo signal; an input file keeps its own rate");
    }

    void fail(const std::string& message)
    {
        if (result.error.empty())
            result.error = message;
    }

    const std::vector<std::string>& arguments;
    size_t position = 0;
    ParseResult result;
};

} // namespace

ParseResult parseCommandLine(const std::vector<std::string>& arguments)
{
    return Parser(arguments).run();
}

std::string usageText()
{
    return R"(Usage:
  hvtremolo-render [--plugin PATH.so] [--program N] [--param INDEX=VALUE]... [--block N]
                   [--sample-rate HZ] [--plot FILE.png] [--quiet] [INPUT] OUTPUT.wav
  hvtremolo-render --list [--plugin PATH.so] [--program N] [--param INDEX=VALUE]...
  hvtremolo-render --help

Renders an audio file through the HvTremolo plug-in, loaded the way any VST 2.4 host loads it,
and writes the result as a stereo 32-bit float WAV file at the input's sample rate.

  INPUT               any file libsndfile reads (WAV, FLAC, AIFF, OGG; 16/24/32-bit or float),
                      mono or stereo; a mono file feeds both inputs of the plug-in.
                      Without INPUT a built-in demo is rendered: 6 seconds of two sustained
                      electric-piano chords, the same on both channels.
  --plugin PATH.so    the module to load (default: HvTremolo.so next to this program)
  --program N         factory program 0 to 9 (see --list). Without it the plug-in keeps its
                      own default, program 0 "Wurli Classic": tremolo only, no panning, which
                      is what a host gives you on first load. The demo keeps that default
                      too, so you hear the plug-in as it comes; try --program 1 ("Waves") to
                      hear the panner swing the sound between left and right.
  --param INDEX=VALUE set parameter INDEX (0 to 5, see --list) to VALUE, a number passed to
                      the plug-in exactly as written; repeatable, applied in the order given,
                      always after --program (a program change would overwrite them)
                      0 Tremolo Depth, 1 Tremolo Speed, 2 Stereo Panner, 3 Panner Speed and
                      4 Mix take 0 to 1; 5 Sample Rate takes 7, 8, 9 or 10 (44.1, 48, 88.2
                      or 96 kHz), the rate the modulation speeds are tuned for.
  --block N           frames per processing call, 1 to 65536 (default 512); the last call of
                      a file gets what is left
  --sample-rate HZ    sample rate of the demo signal (default 44100); an input file keeps its own
  --plot FILE.png     also draw a 1000 x 400 PNG of the envelopes (RMS over 30 ms, in dB)
                      of the input (grey) and of the left (blue) and right (orange) output
                      over time, titled with the plug-in's current program
  --quiet, -q         print nothing but errors (no progress bar, no summary)
  --list              print the ten programs and the six parameters with their current display
                      texts (after --program and --param), then stop
  --help, -h          print this text

A progress bar appears on a terminal for inputs longer than 5 seconds. At the end one line sums
up frames, seconds, speed relative to real time and the peak of each output channel; samples
that are not finite numbers (NaN or infinity, which a float input may carry) are counted there.
Nothing is left behind on failure: the output is written under a temporary name and renamed at
the end. Exit status: 0 on success, 1 when the work fails, 2 for a wrong command line.

Examples:
  hvtremolo-render --plot demo.png demo.wav
  hvtremolo-render --program 1 --plot waves.png waves.wav
  hvtremolo-render --program 2 --param 4=0.8 guitar.flac guitar-warble.wav
)";
}
