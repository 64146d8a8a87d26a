// The effect as this host drives it. Its parameters and programs are whatever the loaded module
// says: counts from its AEffect record (numParams, numPrograms), names through its dispatcher;
// a name on the command line is the display name in lower case with spaces as `-`
// ("Tremolo Depth" is tremolo-depth), matched without regard to case.
//
// Setting up follows the order a host uses: effOpen; the sample rate, the block size, switched
// on (effMainsChanged 1); then the program, the tuning, and each parameter in the order given, so
// that a parameter always wins over the program.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tools/render/CommandLine.h"
#include "tools/vsthost/VstPlugin.h"

struct ParameterSetting {
    int index = 0;
    float value = 0.0f;
};

// "Tremolo Depth" -> "tremolo-depth".
std::string controlName(const std::string& displayName);

// HvTremolo's Sample Rate parameter: the rate the modulation speeds are tuned for, as a choice
// 7 to 10. Other parameters take 0 to 1.
struct RateChoice {
    int choice;
    int rate; // Hz
};
constexpr RateChoice kRateChoices[] = {{7, 44100}, {8, 48000}, {9, 88200}, {10, 96000}};
constexpr const char* kRateParameterName = "sample-rate";
std::string kilohertz(int rate); // 44100 -> "44.1 kHz"

// What the module calls its parameters and programs.
struct EffectVocabulary {
    std::vector<std::string> parameters; // display names, numParams of them
    std::vector<std::string> programs;   // numPrograms of them
    int rateParameter = -1;              // the Sample Rate parameter; -1 if there is none
};
EffectVocabulary vocabularyOf(const VstPlugin& plugin);

// The command line's --program and --param in the module's terms. Empty `error` when all are
// good; otherwise one line naming the first problem (a usage error).
struct EffectRequest {
    std::optional<int> program;
    std::vector<ParameterSetting> parameters;
    bool rateGiven = false; // a --param set the Sample Rate parameter
    std::string error;
};
EffectRequest resolveRequest(const RenderOptions& options, const EffectVocabulary& vocabulary);

// Creates the effect and opens it (effOpen). Null, with `error` set, when the module gives no
// effect or one this program cannot drive (it needs two inputs, two outputs and
// processReplacing).
std::unique_ptr<VstPlugin> createEffect(const VstModule& module, const std::string& modulePath,
                                        std::string& error);

struct EffectSettings {
    float sampleRate = 44100.0f;
    int blockSize = 512;
    std::optional<int> program;
    std::optional<ParameterSetting> tuning; // applied after the program, before the parameters
    std::vector<ParameterSetting> parameters;
};

// Brings the opened effect to the point where it can process. Returns every parameter's value
// as the program left it (before the tuning and the parameters).
std::vector<float> prepareEffect(const VstPlugin& plugin, const EffectSettings& settings);

// Switches the effect off (effMainsChanged 0); closing it is the VstPlugin's destructor.
void stopEffect(const VstPlugin& plugin);
