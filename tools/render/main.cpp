// hvtremolo-render: a command-line VST 2.4 host that renders sound files through HvTremolo.
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include "tools/Version.h"
#include "tools/render/BlockLoop.h"
#include "tools/render/CommandLine.h"
#include "tools/render/EffectSetup.h"
#include "tools/render/Envelope.h"
#include "tools/render/EnvelopePlot.h"
#include "tools/render/Interrupts.h"
#include "tools/render/OutputFormat.h"
#include "tools/render/OutputTarget.h"
#include "tools/render/Progress.h"
#include "tools/render/SoundSource.h"
#include "tools/render/SoundWriter.h"
#include "tools/vsthost/modulePath.h"
#include "tools/vsthost/VstPlugin.h"

namespace {

constexpr int kFailed = 1;
constexpr int kBadCommandLine = 2;
constexpr double kEnvelopeStepSeconds = 0.005;
constexpr int kEnvelopeStepsPerWindow = 6;
constexpr double kProgressAfterSeconds = 5.0;

int fail(const std::string& message, int status = kFailed)
{
    std::fprintf(stderr, "hvtremolo-render: %s\n", message.c_str());
    return status;
}

void warn(const RenderOptions& options, const std::string& message)
{
    if (!options.quiet)
        std::fprintf(stderr, "hvtremolo-render: warning: %s\n", message.c_str());
}

std::string quoted(const std::string& text)
{
    return "'" + text + "'";
}

// dlopen searches the library path for a bare name; a user naming a file means that file.
std::string pluginPathFor(const RenderOptions& options)
{
    if (options.pluginPath.empty())
        return defaultModulePath();
    if (options.pluginPath.find('/') == std::string::npos)
        return "./" + options.pluginPath;
    return options.pluginPath;
}

std::string twoDecimals(double value)
{
    char text[32];
    std::snprintf(text, sizeof text, "%.2f", value);
    return text;
}

// The tuning the effect has now: "44.1 kHz", or a description of a choice that is none.
std::string tuningOf(const VstPlugin& plugin, const EffectVocabulary& vocabulary)
{
    const float choice = plugin.getParameter(vocabulary.rateParameter);
    for (const RateChoice& c : kRateChoices)
        if (choice == c.choice)
            return kilohertz(c.rate);
    return "rate choice " + plugin.parameterDisplay(vocabulary.rateParameter);
}

// Matches the tuning to the rate, unless the user set it or asked to keep it.
std::optional<ParameterSetting> tuningFor(int rate, const RenderOptions& options,
                                          const EffectVocabulary& vocabulary,
                                          const EffectRequest& request)
{
    if (vocabulary.rateParameter < 0 || options.keepRate || request.rateGiven)
        return std::nullopt;
    for (const RateChoice& c : kRateChoices)
        if (c.rate == rate)
            return ParameterSetting{vocabulary.rateParameter, static_cast<float>(c.choice)};
    const RateChoice& base = kRateChoices[0];
    const double ratio = static_cast<double>(rate) / base.rate;
    warn(options, std::to_string(rate) + " Hz matches no rate choice (44.1, 48, 88.2 or 96 kHz); "
                  "tuned for " + kilohertz(base.rate) + ", the speeds run " +
                  (ratio > 1.0 ? twoDecimals(ratio) + " times faster"
                               : twoDecimals(1.0 / ratio) + " times slower") +
                  " than the programs intend");
    return ParameterSetting{vocabulary.rateParameter, static_cast<float>(base.choice)};
}

// "Waves, Tremolo Speed 0.30, tuned for 48 kHz"
std::string plotTitle(const VstPlugin& plugin, const EffectVocabulary& vocabulary,
                      const std::vector<float>& programValues)
{
    std::string title = plugin.programName();
    if (title.empty())
        title = plugin.effectName();
    for (size_t i = 0; i < programValues.size(); ++i) {
        if (static_cast<int>(i) == vocabulary.rateParameter)
            continue;
        const float now = plugin.getParameter(static_cast<VstInt32>(i));
        if (now != programValues[i])
            title += ", " + vocabulary.parameters[i] + " " + twoDecimals(now);
    }
    if (vocabulary.rateParameter >= 0)
        title += ", tuned for " + tuningOf(plugin, vocabulary);
    return title;
}

EffectSettings settingsFor(const RenderOptions& options, const EffectRequest& request, int rate,
                           const EffectVocabulary& vocabulary)
{
    EffectSettings settings;
    settings.sampleRate = static_cast<float>(rate);
    settings.blockSize = options.blockSize;
    settings.program = request.program;
    settings.tuning = tuningFor(rate, options, vocabulary, request);
    settings.parameters = request.parameters;
    return settings;
}

void printList(const VstPlugin& plugin, const EffectVocabulary& vocabulary)
{
    const VstIntPtr current = plugin.dispatch(effGetProgram);
    std::printf("%s\n\nPrograms (--program NUMBER or NAME; * current):\n",
                plugin.effectName().c_str());
    for (size_t i = 0; i < vocabulary.programs.size(); ++i)
        std::printf("  %c %2zu  %s\n", static_cast<VstIntPtr>(i) == current ? '*' : ' ', i,
                    vocabulary.programs[i].c_str());
    std::printf("\nParameters (--param INDEX=VALUE or NAME=VALUE):\n");
    for (size_t i = 0; i < vocabulary.parameters.size(); ++i) {
        const auto index = static_cast<VstInt32>(i);
        std::printf("    %2zu  %-15s %-14s %-9s %-8s (value %g)\n", i,
                    controlName(vocabulary.parameters[i]).c_str(),
                    vocabulary.parameters[i].c_str(), plugin.parameterDisplay(index).c_str(),
                    plugin.parameterLabel(index).c_str(),
                    static_cast<double>(plugin.getParameter(index)));
    }
}

// The three envelopes the plot shows, fed while rendering.
struct PlotEnvelopes {
    explicit PlotEnvelopes(int stepFrames)
        : stepFrames(stepFrames), input(stepFrames, kEnvelopeStepsPerWindow),
          left(stepFrames, kEnvelopeStepsPerWindow), right(stepFrames, kEnvelopeStepsPerWindow)
    {
    }

    PlotData finish(std::string title, int sampleRate, const OutputStats& stats)
    {
        input.finish();
        left.finish();
        right.finish();
        PlotData data;
        data.title = std::move(title);
        data.secondsPerLevel = static_cast<double>(stepFrames) / sampleRate;
        data.totalSeconds = static_cast<double>(stats.frames) / sampleRate;
        data.input = input.levels();
        data.left = left.levels();
        data.right = right.levels();
        data.sidesEqual = stats.sidesEqual;
        return data;
    }

    int stepFrames;
    Envelope input, left, right;
};

// Refuses an output that is the input, or the plot that is the output, before anything is
// written. A name that does not exist yet is no file of the others.
std::string sameFileProblem(const RenderOptions& options)
{
    const FileIdentity input =
        options.demo ? FileIdentity{} : identityOf(options.inputPath, STDIN_FILENO);
    const FileIdentity output = identityOf(options.outputPath, STDOUT_FILENO);
    const FileIdentity plot =
        options.plotPath.empty() ? FileIdentity{} : identityOf(options.plotPath, -1);
    const auto shown = [](const std::string& path) {
        return path == "-" ? std::string("standard output") : quoted(path);
    };
    if (input.sameAs(output))
        return "OUTPUT " + shown(options.outputPath) + " is the same file as INPUT " +
               quoted(options.inputPath) + "; nothing was written";
    if (plot.sameAs(output))
        return "--plot " + quoted(options.plotPath) + " is the same file as OUTPUT " +
               shown(options.outputPath);
    if (plot.sameAs(input))
        return "--plot " + quoted(options.plotPath) + " is the same file as INPUT " +
               quoted(options.inputPath);
    return "";
}

struct Render {
    const RenderOptions& options;
    const VstPlugin& plugin;
    const EffectVocabulary& vocabulary;
    const EffectRequest& request;

    int run()
    {
        std::string error;
        std::unique_ptr<SoundSource> source =
            options.demo ? openDemoSignal(options.sampleRate.value_or(kDemoSampleRate))
                         : openSoundFile(options.inputPath, options.blockSize, error);
        if (!source)
            return fail(error);
        const int rate = source->sampleRate();

        const std::string extension =
            !options.type.empty() ? options.type
                                  : options.outputPath == "-" ? ""
                                                              : extensionOf(options.outputPath);
        const Container& container = *containerFor(extension.empty() ? "wav" : extension);
        const SampleBits bits = options.bits.value_or(bitsOfInput(source->format()));
        const std::optional<OutputFormat> format =
            chooseFormat(container, bits, options.bits.has_value(), rate, source->frames(), error);
        if (!format)
            return fail("output " + quoted(options.outputPath) + ": " + error);
        if (!format->note.empty())
            warn(options, format->note);

        std::unique_ptr<OutputTarget> output = OutputTarget::open(options.outputPath, "output",
                                                                  error);
        if (!output)
            return fail(error);
        std::unique_ptr<OutputTarget> plot;
        if (!options.plotPath.empty()) {
            plot = OutputTarget::open(options.plotPath, "plot", error);
            if (!plot)
                return fail(error);
        }
        SoundWriter sound;
        if (!sound.open(output->descriptor(), *format, rate, source->tags()))
            return fail("output " + quoted(options.outputPath) + ": " + sound.error());

        const std::vector<float> programValues =
            prepareEffect(plugin, settingsFor(options, request, rate, vocabulary));

        OutputStats stats;
        const bool longInput =
            source->frames() > static_cast<int64_t>(kProgressAfterSeconds * rate);
        ProgressBar progress(!options.quiet && isatty(STDERR_FILENO) && longInput,
                             source->frames());
        const auto stepFrames = static_cast<int>(std::lround(kEnvelopeStepSeconds * rate));
        PlotEnvelopes envelopes(std::max(1, stepFrames));
        BlockSinks sinks{sound, stats, progress};
        if (plot) {
            sinks.input = &envelopes.input;
            sinks.left = &envelopes.left;
            sinks.right = &envelopes.right;
        }

        const auto started = std::chrono::steady_clock::now();
        const bool rendered = renderThrough(*source, plugin, options.blockSize, sinks, error);
        const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - started;
        progress.finish();
        stopEffect(plugin);
        if (!rendered)
            return fail(error + "; nothing written");
        if (!sound.close())
            return fail("output " + quoted(options.outputPath) + ": " + sound.error() +
                        "; nothing written");

        std::string title;
        if (plot) {
            title = plotTitle(plugin, vocabulary, programValues);
            if (!writeEnvelopePlot(envelopes.finish(title, rate, stats), plot->descriptor(),
                                   error))
                return fail("plot " + quoted(options.plotPath) + ": " + error);
        }
        // The sound first: a plot alone would look like a finished render.
        if (!output->commit(error))
            return fail(error);
        if (plot && !plot->commit(error))
            return fail(error);

        if (!options.quiet) {
            const std::string tuning =
                vocabulary.rateParameter >= 0 ? "tuned for " + tuningOf(plugin, vocabulary) : "";
            std::fprintf(stderr, "%s\n", summaryLine(stats, rate, elapsed.count(), tuning).c_str());
            std::fprintf(stderr, "wrote %s (%s)\n", output->shownName().c_str(),
                         format->description.c_str());
            if (plot)
                std::fprintf(stderr, "plot  %s (%s)\n", plot->shownName().c_str(), title.c_str());
        }
        return 0;
    }
};

int run(const RenderOptions& options)
{
    if (!options.list && !options.demo && options.inputPath == "-" && isatty(STDIN_FILENO))
        return fail("INPUT '-' is standard input, which is a terminal; pipe a sound file in",
                    kBadCommandLine);
    if (!options.list && options.outputPath == "-" && isatty(STDOUT_FILENO))
        return fail("OUTPUT '-' is standard output, which is a terminal; redirect it or name a "
                    "file", kBadCommandLine);
    if (!options.list) {
        const std::string problem = sameFileProblem(options);
        if (!problem.empty())
            return fail(problem, kBadCommandLine);
    }

    const std::string modulePath = pluginPathFor(options);
    const VstModule module(modulePath);
    if (!module.entry())
        return fail("cannot load plug-in: " + module.error());
    std::string error;
    std::unique_ptr<VstPlugin> plugin = createEffect(module, modulePath, error);
    if (!plugin)
        return fail(error);
    const EffectVocabulary vocabulary = vocabularyOf(*plugin);
    const EffectRequest request = resolveRequest(options, vocabulary);
    if (!request.error.empty())
        return fail(request.error, kBadCommandLine);

    if (options.list) {
        const int rate = options.sampleRate.value_or(kDemoSampleRate);
        prepareEffect(*plugin, settingsFor(options, request, rate, vocabulary));
        printList(*plugin, vocabulary);
        stopEffect(*plugin);
        return 0;
    }
    return Render{options, *plugin, vocabulary, request}.run();
}

} // namespace

int main(int argc, char** argv)
{
    const std::vector<std::string> arguments(argv + 1, argv + argc);
    const ParseResult parsed = parseCommandLine(arguments);
    if (!parsed.error.empty())
        return fail(parsed.error, kBadCommandLine);
    const RenderOptions& options = parsed.options;
    if (options.help) {
        std::fputs(usageText().c_str(), stdout);
        return 0;
    }
    if (options.version) {
        std::printf("hvtremolo-render %s\n", HVT_VERSION);
        return 0;
    }
    catchInterrupts();
    return run(options);
}
