// What the hvtremolo-render tests share: a scratch folder per test, running the real program as
// a separate process, sound files written and read with libsndfile, and the reference: the same
// module driven directly through hvt_vsthost, block by block, the way the program should.
#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

struct Stereo {
    std::vector<float> left;
    std::vector<float> right;
};

struct SoundFile {
    int sampleRate = 0;
    int channels = 0;
    int format = 0; // libsndfile's SF_FORMAT_* bits
    std::vector<float> interleaved;
};

struct RunResult {
    int status = -1; // exit status, or -1 when the program did not exit normally
    std::string out;
    std::string err;
};

// The program, the module and a module without VSTPluginMain, as built.
std::string renderProgram();
std::string modulePath();
std::string moduleWithoutEntryPath();

// Runs hvtremolo-render with `arguments`; stdout and stderr are captured whole. With
// `stderrOnTerminal` stderr is a pseudo-terminal, as when a user runs the program by hand.
RunResult runRender(const std::vector<std::string>& arguments, bool stderrOnTerminal = false);

void writeSoundFile(const std::string& path, int format, int sampleRate, int channels,
                    const std::vector<float>& interleaved);
// Fails the test (and returns an empty file) when the file cannot be read.
SoundFile readSoundFile(const std::string& path);
Stereo splitStereo(const SoundFile& file); // a mono file gives the same samples on both sides

// A deterministic test signal: a sine with noise from a fixed generator, different per channel.
std::vector<float> testSignal(int frames, int channels);

struct HostSettings {
    float sampleRate = 44100.0f;
    int blockSize = 512;
    std::optional<int> program;
    std::vector<std::pair<int, float>> parameters;
};
// The module driven directly: created, opened, rate, block size, switched on, program, then the
// parameters in order, then processReplacing over `input` in blocks of blockSize frames.
Stereo renderDirectly(const Stereo& input, const HostSettings& settings);

// Bit for bit, so that NaN equals NaN and -0 differs from 0. Empty when equal, otherwise says
// where the first difference is.
std::string compareBits(const Stereo& actual, const Stereo& expected);

// A fresh folder for one test, removed with everything in it at the end.
class RenderTest : public ::testing::Test {
protected:
    void SetUp() override;
    void TearDown() override;
    std::string path(const std::string& name) const { return folder + "/" + name; }
    std::vector<std::string> filesInFolder() const; // sorted names, hidden ones included

    std::string folder;
};
