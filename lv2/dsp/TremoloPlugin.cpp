// The LV2 plug-in: the modulation engine behind eleven ports. Each run reads the controls into
// one settings snapshot, as the VST effect does once per block, so both editions give the same
// bits for the same values at any block size.
//
// Threads: run on the host's audio thread; instantiate, activate and cleanup on another, never
// at the same time as run (the LV2 threading classes).
#include <lv2/core/lv2.h>

#include <algorithm>
#include <cstdint>
#include <optional>

#include "engine/FactoryPrograms.h"
#include "engine/ModulationEngine.h"
#include "engine/SineTables.h"
#include "lv2/Ports.h"

namespace {

using namespace lv2_ports;

struct TremoloPlugin {
    std::optional<ModulationEngine> engine; // a fresh one at every activate
    int32_t sessionChoice = kFirstRateChoice;
    // Where the host put the ports; null until connected (hosts may connect late).
    const float* audioIn[2] = {};
    float* audioOut[2] = {};
    const float* controls[kNumParameters] = {};
    float* tuning = nullptr;

    EngineSettings settings() const;
};

// A control the host has not connected yet keeps its default, the value of program 0.
float control(const float* port, int32_t parameter)
{
    return port ? *port : factoryValue(0, parameter);
}

EngineSettings TremoloPlugin::settings() const
{
    EngineSettings read;
    forEachParameter([&](auto parameter) {
        if constexpr (parameter != kSampleRate)
            parameterField<parameter>(read) = control(controls[parameter], parameter);
    });
    read.rateChoice = controls[kSampleRate]
                          ? rateChoiceOfPort(*controls[kSampleRate], sessionChoice)
                          : sessionChoice;
    return read;
}

// No exception crosses into the host: a failure is a null instance.
LV2_Handle instantiate(const LV2_Descriptor*, double sampleRate, const char*,
                       const LV2_Feature* const*)
{
    try {
        // Built once per process; touching them here keeps the first run free of the work.
        sine_tables::tremoloTable();
        auto* plugin = new TremoloPlugin;
        plugin->engine.emplace();
        plugin->sessionChoice = sessionRateChoice(sampleRate);
        return plugin;
    } catch (...) {
        return nullptr;
    }
}

void connectPort(LV2_Handle instance, uint32_t port, void* data)
{
    auto* plugin = static_cast<TremoloPlugin*>(instance);
    if (port == kInLeft || port == kInRight)
        plugin->audioIn[port - kInLeft] = static_cast<const float*>(data);
    else if (port == kOutLeft || port == kOutRight)
        plugin->audioOut[port - kOutLeft] = static_cast<float*>(data);
    else if (const int32_t parameter = parameterOfPort(port); parameter >= 0)
        plugin->controls[parameter] = static_cast<const float*>(data);
    else if (port == kTuningPort)
        plugin->tuning = static_cast<float*>(data);
}

// The oscillators start where a new instance's do, as LV2 asks of activate.
void activate(LV2_Handle instance)
{
    static_cast<TremoloPlugin*>(instance)->engine.emplace();
}

void run(LV2_Handle instance, uint32_t frames)
{
    auto* plugin = static_cast<TremoloPlugin*>(instance);
    const EngineSettings settings = plugin->settings();
    if (plugin->tuning)
        *plugin->tuning = static_cast<float>(settings.rateChoice);
    const float* inL = plugin->audioIn[0];
    const float* inR = plugin->audioIn[1];
    float* outL = plugin->audioOut[0];
    float* outR = plugin->audioOut[1];
    if (!inL || !inR || !outL || !outR)
        return;
    // The engine counts frames in 32-bit signed integers; the split changes no output bit.
    for (uint32_t done = 0; done < frames;) {
        const uint32_t part = std::min<uint32_t>(frames - done, INT32_MAX);
        plugin->engine->process(inL + done, inR + done, outL + done, outR + done,
                                static_cast<int32_t>(part), settings);
        done += part;
    }
}

void cleanup(LV2_Handle instance)
{
    delete static_cast<TremoloPlugin*>(instance);
}

const void* extensionData(const char*)
{
    return nullptr;
}

constexpr LV2_Descriptor kDescriptor = {kPluginUri, instantiate, connectPort, activate,
                                        run,        nullptr,     cleanup,     extensionData};

} // namespace

extern "C" LV2_SYMBOL_EXPORT const LV2_Descriptor* lv2_descriptor(uint32_t index)
{
    return index == 0 ? &kDescriptor : nullptr;
}
