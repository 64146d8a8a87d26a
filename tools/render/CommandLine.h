// What the user asked for on the command line, checked before anything is loaded or written.
// Names of parameters and programs are only read here; the loaded module decides what they mean
// (see EffectControls.h).
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "tools/render/OutputFormat.h"

// One --param, as written: KEY is an index or a name.
struct ParameterRequest {
    std::string given; // "tremolo-depth=0.5", for messages
    std::string key;
    float value = 0.0f;
};

struct RenderOptions {
    std::string pluginPath; // empty: the HvTremolo.so built next to the program
    std::optional<std::string> program; // a number or a name; applied before every parameter
    std::vector<ParameterRequest> parameters; // applied in the order given
    int blockSize = 512;
    std::optional<int> sampleRate; // only for the demo signal
    std::string plotPath; // empty: no plot
    std::string type;     // --type: the container's extension; empty: from OUTPUT's name
    std::optional<SampleBits> bits; // --bits; empty: the input's
    bool keepRate = false;
    bool quiet = false;
    bool list = false;
    bool help = false;
    bool version = false;
    bool demo = false;
    std::string inputPath; // empty with --demo; `-`: standard input
    std::string outputPath; // `-`: standard output
};

struct ParseResult {
    RenderOptions options;
    std::string error; // one line naming the problem; empty when the command line is good
};

ParseResult parseCommandLine(const std::vector<std::string>& arguments);

// The --help text.
std::string usageText();

constexpr int kDemoSampleRate = 44100;
