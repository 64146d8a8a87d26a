#include "tools/render/EffectSetup.h"

std::unique_ptr<VstPlugin> startEffect(const VstModule& module, const EffectSettings& settings,
                                       const std::string& modulePath, std::string& error)
{
    std::unique_ptr<VstPlugin> plugin = VstPlugin::create(module);
    if (!plugin) {
        error = "plug-in '" + modulePath + "' did not create an effect";
        return nullptr;
    }
    const AEffect* record = plugin->effect();
    if (record->magic != kEffectMagic) {
        // Not a VST 2.4 record: closing it through its dispatcher could be anything.
        plugin->release();
        error = "plug-in '" + modulePath + "' returned something that is not a VST effect";
        return nullptr;
    }
    if (record->numInputs != 2 || record->numOutputs != 2 ||
        !(record->flags & effFlagsCanReplacing) || !record->processReplacing) {
        error = "plug-in '" + modulePath + "' is not a stereo effect with processReplacing (" +
                std::to_string(record->numInputs) + " inputs, " +
                std::to_string(record->numOutputs) + " outputs)";
        return nullptr;
    }

    plugin->dispatch(effOpen);
    plugin->dispatch(effSetSampleRate, 0, 0, nullptr, settings.sampleRate);
    plugin->dispatch(effSetBlockSize, 0, settings.blockSize);
    plugin->dispatch(effMainsChanged, 0, 1);
    if (settings.program)
        plugin->dispatch(effSetProgram, 0, *settings.program);
    for (const ParameterSetting& parameter : settings.parameters)
        plugin->setParameter(parameter.index, parameter.value);
    return plugin;
}

void stopEffect(const VstPlugin& plugin)
{
    plugin.dispatch(effMainsChanged, 0, 0);
}
