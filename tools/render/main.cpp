// hvtremolo-render: a command-line VST 2.4 host that renders sound files through HvTremolo.
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <climits>
#include <cmath>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include "tools/render/CommandLine.h"
#include "tools/render/EffectSetup.h"
#include "tools/render/Envelope.h"
#include "tools/render/EnvelopePlot.h"
#include "tools/render/PendingFile.h"
#include "tools/render/Progress.h"
#include "tools/render/Renderer.h"
#include "tools/render/SoundSource.h"
#include "tools/render/WavWriter.h"
#include "tools/vsthost/modulePath.h"
#include "tools/vsthost/VstPlugin.h"

namespace {

constexpr int kFailed = 1;
constexpr int kBadCommandLine = 2;
constexpr double kEnvelopeStepSeconds = 0.005;
constexpr int kEnvelopeStepsPerWindow = 6;
constexpr double kProgressAfterSeconds = 5.0;

volatile std::sig_atomic_t interrupted = 0;

void onInterrupt(int)
{
    interrupted = 1;
}

// Ctrl-C stops the render between two blocks, so the temporary files are removed on the way out.
void catchInterrupts()
{
    struct sigaction action {};
    action.sa_handler = onInterrupt;
    sigemptyset(&action.sa_mask);
    sigaction(SIGINT, &action, nullptr);
    sigaction(SIGTERM, &action, nullptr);
}

int fail(const std::string& message, int status = kFailed)
{
    std::fprintf(stderr, "hvtremolo-render: %s\n", message.c_str());
    return status;
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

std::string absolutePath(const std::string& path)
{
    char* resolved = realpath(path.c_str(), nullptr);
    if (!resolved)
        return path;
    std::string result = resolved;
    std::free(resolved);
    return result;
}

EffectSettings settingsFor(const RenderOptions& options, int sampleRate)
{
    EffectSettings settings;
    settings.sampleRate = static_cast<float>(sampleRate);
    settings.blockSize = options.blockSize;
    settings.program = options.program;
    settings.parameters = options.parameters;
    return settings;
}

void printList(const VstPlugin& plugin, const AEffect& record)
{
    const VstIntPtr current = plugin.dispatch(effGetProgram);
    std::printf("%s\n\nPrograms (* current):\n", plugin.effectName().c_str());
    for (VstInt32 i = 0; i < record.numPrograms; ++i)
        std::printf("  %c %2d  %s\n", i == current ? '*' : ' ', i,
                    plugin.programNameIndexed(i).c_str());
    std::printf("\nParameters (--param INDEX=VALUE):\n");
    for (VstInt32 i = 0; i < record.numParams; ++i)
        std::printf("    %2d  %-14s %-9s %-8s (value %g)\n", i, plugin.parameterName(i).c_str(),
                    plugin.parameterDisplay(i).c_str(), plugin.parameterLabel(i).c_str(),
                    static_cast<double>(plugin.getParameter(i)));
}

int list(const RenderOptions& options, const VstModule& module, const std::string& modulePath)
{
    std::string error;
    const int rate = options.sampleRate.value_or(kDemoSampleRate);
    std::unique_ptr<VstPlugin> plugin =
        startEffect(module, settingsFor(options, rate), modulePath, error);
    if (!plugin)
        return fail(error);
    printList(*plugin, *plugin->effect());
    stopEffect(*plugin);
    return 0;
}

// The three envelopes the plot shows, fed while rendering.
struct PlotEnvelopes {
    explicit PlotEnvelopes(int stepFrames)
        : stepFrames(stepFrames), input(stepFrames, kEnvelopeStepsPerWindow),
          left(stepFrames, kEnvelopeStepsPerWindow), right(stepFrames, kEnvelopeStepsPerWindow)
    {
    }

    PlotData finish(const VstPlugin& plugin, int sampleRate, int64_t frames)
    {
        input.finish();
        left.finish();
        right.finish();
        PlotData data;
        data.title = plugin.effectName() + " \u2013 program " +
                     std::to_string(plugin.dispatch(effGetProgram)) + " \u201c" +
                     plugin.programName() + "\u201d";
        data.secondsPerLevel = static_cast<double>(stepFrames) / sampleRate;
        data.totalSeconds = static_cast<double>(frames) / sampleRate;
        data.input = input.levels();
        data.left = left.levels();
        data.right = right.levels();
        return data;
    }

    int stepFrames;
    Envelope input, left, right;
};

int render(const RenderOptions& options, const VstModule& module, const std::string& modulePath)
{
    std::string error;
    std::unique_ptr<SoundSource> source =
        options.inputPath.empty()
            ? openDemoSignal(options.sampleRate.value_or(kDemoSampleRate))
            : openSoundFile(options.inputPath, options.blockSize, error);
    if (!source)
        return fail(error);
    const int rate = source->sampleRate();

    std::unique_ptr<PendingFile> output = PendingFile::create(options.outputPath, error);
    if (!output)
        return fail(error);
    std::unique_ptr<PendingFile> plot;
    if (!options.plotPath.empty()) {
        plot = PendingFile::create(options.plotPath, error);
        if (!plot)
            return fail(error);
    }
    WavWriter wav;
    if (!wav.open(output->temporaryPath(), rate, options.blockSize))
        return fail("'" + options.outputPath + "': " + wav.error());

    std::unique_ptr<VstPlugin> plugin =
        startEffect(module, settingsFor(options, rate), modulePath, error);
    if (!plugin)
        return fail(error);

    OutputStats stats;
    const bool longInput = source->frames() > static_cast<int64_t>(kProgressAfterSeconds * rate);
    ProgressBar progress(!options.quiet && isatty(STDERR_FILENO) && longInput, source->frames());
    const auto stepFrames = static_cast<int>(std::lround(kEnvelopeStepSeconds * rate));
    PlotEnvelopes envelopes(std::max(1, stepFrames));
    RenderTargets targets{wav, stats, progress};
    if (plot) {
        targets.input = &envelopes.input;
        targets.left = &envelopes.left;
        targets.right = &envelopes.right;
    }

    const auto started = std::chrono::steady_clock::now();
    const bool rendered =
        renderAll(*source, *plugin, options.blockSize, targets, interrupted, error);
    const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - started;
    progress.finish();
    stopEffect(*plugin);
    if (!rendered)
        return fail(error + "; nothing written");
    if (!wav.close())
        return fail("'" + options.outputPath + "': " + wav.error());

    if (plot) {
        if (!writeEnvelopePlot(envelopes.finish(*plugin, rate, stats.frames),
                               plot->temporaryPath(), error))
            return fail("'" + options.plotPath + "': " + error);
        if (!plot->commit(error))
            return fail(error);
    }
    if (!output->commit(error)) {
        // The plot alone would look like a finished render.
        if (plot)
            std::remove(plot->finalPath().c_str());
        return fail(error);
    }

    if (!options.quiet) {
        std::fprintf(stderr, "%s\n", summaryLine(stats, rate, elapsed.count()).c_str());
        std::fprintf(stderr, "wrote %s\n", absolutePath(options.outputPath).c_str());
        if (plot)
            std::fprintf(stderr, "plot  %s\n", absolutePath(options.plotPath).c_str());
    }
    return 0;
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

    const std::string modulePath = pluginPathFor(options);
    const VstModule module(modulePath);
    if (!module.entry())
        return fail("cannot load plug-in: " + module.error());

    catchInterrupts();
    return options.list ? list(options, module, modulePath) : render(options, module, modulePath);
}
