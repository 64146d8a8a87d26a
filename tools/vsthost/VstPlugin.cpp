#include "tools/vsthost/VstPlugin.h"

#include <dlfcn.h>

#include <cstring>

VstModule::VstModule(const std::string& path)
{
    handle = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (!handle) {
        const char* why = dlerror();
        errorText = why ? why : ("cannot load " + path);
        return;
    }
    void* symbol = dlsym(handle, "VSTPluginMain");
    if (!symbol) {
        errorText = path + " does not export VSTPluginMain";
        return;
    }
    entryPoint = reinterpret_cast<Entry>(symbol);
}

VstModule::~VstModule()
{
    if (handle)
        dlclose(handle);
}

std::unique_ptr<VstPlugin> VstPlugin::create(const VstModule& module, audioMasterCallback callback)
{
    if (!module.entry())
        return nullptr;
    AEffect* record = module.entry()(callback);
    if (!record)
        return nullptr;
    return std::unique_ptr<VstPlugin>(new VstPlugin(record));
}

VstPlugin::~VstPlugin()
{
    if (record)
        record->dispatcher(record, effClose, 0, 0, nullptr, 0.0f);
}

AEffect* VstPlugin::release()
{
    AEffect* released = record;
    record = nullptr;
    return released;
}

VstIntPtr VstPlugin::dispatch(VstInt32 opcode, VstInt32 index, VstIntPtr value, void* ptr,
                              float opt) const
{
    return record->dispatcher(record, opcode, index, value, ptr, opt);
}

void VstPlugin::setParameter(VstInt32 index, float value) const
{
    record->setParameter(record, index, value);
}

float VstPlugin::getParameter(VstInt32 index) const
{
    return record->getParameter(record, index);
}

void VstPlugin::processReplacing(float** inputs, float** outputs, VstInt32 frames) const
{
    record->processReplacing(record, inputs, outputs, frames);
}

std::string VstPlugin::queryText(VstInt32 opcode, VstInt32 index) const
{
    // Larger than any answer the interface allows, so a bounded plug-in never overruns it.
    char text[256] = {};
    dispatch(opcode, index, 0, text, 0.0f);
    return std::string(text, strnlen(text, sizeof text));
}

std::string VstPlugin::parameterName(VstInt32 index) const
{
    return queryText(effGetParamName, index);
}

std::string VstPlugin::parameterLabel(VstInt32 index) const
{
    return queryText(effGetParamLabel, index);
}

std::string VstPlugin::parameterDisplay(VstInt32 index) const
{
    return queryText(effGetParamDisplay, index);
}

std::string VstPlugin::programName() const
{
    return queryText(effGetProgramName, 0);
}

std::string VstPlugin::programNameIndexed(VstInt32 index) const
{
    return queryText(effGetProgramNameIndexed, index);
}

std::string VstPlugin::effectName() const
{
    return queryText(effGetEffectName, 0);
}

VstIntPtr VstPlugin::defaultCallback(AEffect*, VstInt32 opcode, VstInt32, VstIntPtr, void*, float)
{
    return opcode == audioMasterVersion ? kVstVersion : 0;
}
