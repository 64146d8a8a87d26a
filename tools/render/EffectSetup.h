// Brings a freshly created effect to the point where it can process, in the order a host uses:
// effOpen, the sample rate, the block size, switched on (effMainsChanged 1); then the program,
// then each parameter in the order given, so that a parameter always wins over the program.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "tools/render/CommandLine.h"
#include "tools/vsthost/VstPlugin.h"

struct EffectSettings {
    float sampleRate = 44100.0f;
    int blockSize = 512;
    std::optional<int> program;
    std::vector<ParameterSetting> parameters;
};

// Loads nothing: the module is already open. Null, with `error` set, when the module gives no
// effect or one this program cannot drive (it needs two inputs, two outputs and
// processReplacing).
std::unique_ptr<VstPlugin> startEffect(const VstModule& module, const EffectSettings& settings,
                                       const std::string& modulePath, std::string& error);

// Switches the effect off (effMainsChanged 0); closing it is the VstPlugin's destructor.
void stopEffect(const VstPlugin& plugin);
