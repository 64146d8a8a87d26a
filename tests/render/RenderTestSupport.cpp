#include "RenderTestSupport.h"

#include <fcntl.h>
#include <pty.h>
#include <sndfile.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <memory>
#include <sstream>

#include "tools/vsthost/VstPlugin.h"

extern char** environ;

std::string renderProgram()
{
    return HVT_RENDER_PROGRAM;
}

std::string modulePath()
{
    return HVT_MODULE_PATH;
}

std::string moduleWithoutEntryPath()
{
    return HVT_NO_ENTRY_MODULE_PATH;
}

namespace {

std::string readWhole(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

uint32_t bitsOf(float value)
{
    uint32_t bits;
    std::memcpy(&bits, &value, sizeof bits);
    return bits;
}

} // namespace

RunResult runRender(const std::vector<std::string>& arguments, bool stderrOnTerminal)
{
    char outPattern[] = "/tmp/hvt-render-out.XXXXXX";
    char errPattern[] = "/tmp/hvt-render-err.XXXXXX";
    const int outFile = mkstemp(outPattern);
    int errFile = mkstemp(errPattern);
    int terminal = -1;
    if (stderrOnTerminal) {
        close(errFile);
        unlink(errPattern);
        EXPECT_EQ(openpty(&terminal, &errFile, nullptr, nullptr, nullptr), 0);
    }

    std::vector<std::string> words = {renderProgram()};
    words.insert(words.end(), arguments.begin(), arguments.end());
    std::vector<char*> argv;
    for (std::string& word : words)
        argv.push_back(word.data());
    argv.push_back(nullptr);

    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, outFile, STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&actions, errFile, STDERR_FILENO);
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);

    RunResult result;
    pid_t child = 0;
    if (posix_spawn(&child, argv[0], &actions, nullptr, argv.data(), environ) == 0) {
        int status = 0;
        waitpid(child, &status, 0);
        result.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }
    posix_spawn_file_actions_destroy(&actions);
    close(outFile);
    close(errFile);
    result.out = readWhole(outPattern);
    unlink(outPattern);
    if (stderrOnTerminal) {
        // The child has exited and its side is closed: read what is buffered until EIO.
        char buffer[4096];
        for (ssize_t got; (got = read(terminal, buffer, sizeof buffer)) > 0;)
            result.err.append(buffer, static_cast<size_t>(got));
        close(terminal);
    } else {
        result.err = readWhole(errPattern);
        unlink(errPattern);
    }
    return result;
}

void writeSoundFile(const std::string& path, int format, int sampleRate, int channels,
                    const std::vector<float>& interleaved)
{
    SF_INFO info{};
    info.samplerate = sampleRate;
    info.channels = channels;
    info.format = format;
    SNDFILE* file = sf_open(path.c_str(), SFM_WRITE, &info);
    ASSERT_NE(file, nullptr) << sf_strerror(nullptr);
    const auto frames = static_cast<sf_count_t>(interleaved.size()) / channels;
    EXPECT_EQ(sf_writef_float(file, interleaved.data(), frames), frames);
    sf_close(file);
}

SoundFile readSoundFile(const std::string& path)
{
    SoundFile result;
    SF_INFO info{};
    SNDFILE* file = sf_open(path.c_str(), SFM_READ, &info);
    EXPECT_NE(file, nullptr) << path << ": " << sf_strerror(nullptr);
    if (!file)
        return result;
    result.sampleRate = info.samplerate;
    result.channels = info.channels;
    result.format = info.format;
    result.interleaved.resize(static_cast<size_t>(info.frames * info.channels));
    EXPECT_EQ(sf_readf_float(file, result.interleaved.data(), info.frames), info.frames);
    sf_close(file);
    return result;
}

Stereo splitStereo(const SoundFile& file)
{
    Stereo result;
    if (file.channels < 1)
        return result;
    const size_t frames = file.interleaved.size() / static_cast<size_t>(file.channels);
    for (size_t i = 0; i < frames; ++i) {
        result.left.push_back(file.interleaved[i * file.channels]);
        result.right.push_back(file.interleaved[i * file.channels + file.channels - 1]);
    }
    return result;
}

std::vector<float> testSignal(int frames, int channels)
{
    std::vector<float> samples;
    uint32_t state = 12345;
    for (int i = 0; i < frames; ++i) {
        for (int c = 0; c < channels; ++c) {
            state = state * 1664525u + 1013904223u;
            const double noise = static_cast<double>(state >> 8) / 16777216.0 - 0.5;
            const double tone = std::sin(0.0314 * i * (c + 1));
            samples.push_back(static_cast<float>(0.6 * tone + 0.3 * noise));
        }
    }
    return samples;
}

Stereo renderDirectly(const Stereo& input, const HostSettings& settings)
{
    Stereo output;
    VstModule module(modulePath());
    std::unique_ptr<VstPlugin> plugin = VstPlugin::create(module);
    EXPECT_TRUE(plugin) << module.error();
    if (!plugin)
        return output;
    plugin->dispatch(effOpen);
    plugin->dispatch(effSetSampleRate, 0, 0, nullptr, settings.sampleRate);
    plugin->dispatch(effSetBlockSize, 0, settings.blockSize);
    plugin->dispatch(effMainsChanged, 0, 1);
    if (settings.program)
        plugin->dispatch(effSetProgram, 0, *settings.program);
    for (const auto& [index, value] : settings.parameters)
        plugin->setParameter(index, value);

    const size_t total = input.left.size();
    output.left.resize(total);
    output.right.resize(total);
    // Copies of each block, so the module reads exactly what a host hands it and nothing beyond.
    std::vector<float> inL, inR, outL, outR;
    for (size_t start = 0; start < total; start += settings.blockSize) {
        const size_t frames = std::min(total - start, static_cast<size_t>(settings.blockSize));
        inL.assign(input.left.begin() + start, input.left.begin() + start + frames);
        inR.assign(input.right.begin() + start, input.right.begin() + start + frames);
        outL.assign(frames, 0.0f);
        outR.assign(frames, 0.0f);
        float* inputs[2] = {inL.data(), inR.data()};
        float* outputs[2] = {outL.data(), outR.data()};
        plugin->processReplacing(inputs, outputs, static_cast<VstInt32>(frames));
        std::copy(outL.begin(), outL.end(), output.left.begin() + start);
        std::copy(outR.begin(), outR.end(), output.right.begin() + start);
    }
    plugin->dispatch(effMainsChanged, 0, 0);
    return output;
}

std::string compareBits(const Stereo& actual, const Stereo& expected)
{
    if (actual.left.size() != expected.left.size() || actual.right.size() != expected.right.size())
        return "lengths differ: " + std::to_string(actual.left.size()) + " frames, expected " +
               std::to_string(expected.left.size());
    const std::vector<float>* channels[2][2] = {{&actual.left, &expected.left},
                                                {&actual.right, &expected.right}};
    for (int c = 0; c < 2; ++c) {
        const std::vector<float>& got = *channels[c][0];
        const std::vector<float>& want = *channels[c][1];
        for (size_t i = 0; i < got.size(); ++i) {
            if (bitsOf(got[i]) != bitsOf(want[i])) {
                std::ostringstream text;
                text.precision(9);
                text << (c == 0 ? "left" : "right") << " frame " << i << ": " << got[i]
                     << ", expected " << want[i];
                return text.str();
            }
        }
    }
    return "";
}

void RenderTest::SetUp()
{
    char pattern[] = "/tmp/hvt-render-test.XXXXXX";
    ASSERT_NE(mkdtemp(pattern), nullptr);
    folder = pattern;
}

void RenderTest::TearDown()
{
    std::error_code ignored;
    std::filesystem::remove_all(folder, ignored);
}

std::vector<std::string> RenderTest::filesInFolder() const
{
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder))
        names.push_back(entry.path().filename().string());
    std::sort(names.begin(), names.end());
    return names;
}
