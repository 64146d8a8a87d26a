// What the user asked for on the command line, checked before anything is loaded or written.
#pragma once

#include <optional>
#include <string>
#include <vector>

struct ParameterSetting {
    int index = 0;
    float value = 0.0f;
};

struct RenderOptions {
    std::string pluginPath; // empty: the HvTremolo.so built next to the program
    std::optional<int> program; // applied before every parameter
    std::vector<ParameterSetting> parameters; // applied in the order given
    int blockSize = 512;
    std::optional<int> sampleRate; // only for the demo signal
    std::string plotPath; // empty: no plot
    bool quiet = false;
    bool list = false;
    bool help = false;
    std::string inputPath; // empty: the built-in demo signal
    std::string outputPath;
};

struct ParseResult {
    RenderOptions options;
    std::string error; // one line naming the problem; empty when the command line is good
};

ParseResult parseCommandLine(const std::vector<std::string>& arguments);

// The --help text.
std::string usageText();

constexpr int kDemoSampleRate = 44100;
