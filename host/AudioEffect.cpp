#include "host/AudioEffect.h"

#include <cstdint>
#include <cstring>

#include "common/boundedCopy.h"
#include "host/AEffEditor.h"
#include "host/guarded.h"

AudioEffect::AudioEffect(audioMasterCallback audioMaster, VstInt32 numPrograms, VstInt32 numParams)
    : audioMaster(audioMaster), numPrograms(numPrograms), numParams(numParams)
{
    std::memset(&cEffect, 0, sizeof cEffect);
    cEffect.magic = kEffectMagic;
    cEffect.dispatcher = dispatchEffectClass;
    cEffect.process = processClass;
    cEffect.setParameter = setParameterClass;
    cEffect.getParameter = getParameterClass;
    cEffect.numPrograms = numPrograms;
    cEffect.numParams = numParams;
    cEffect.numInputs = 1;
    cEffect.numOutputs = 2;
    cEffect.ioRatio = 1.0f;
    cEffect.object = this;
    cEffect.uniqueID = fourCC('N', 'o', 'E', 'f');
    cEffect.version = 1;
    cEffect.processReplacing = processClassReplacing;
    cEffect.processDoubleReplacing = processClassDoubleReplacing;
    canProcessReplacing(true);
}

AudioEffect::~AudioEffect()
{
    delete editor;
}

void AudioEffect::setFlag(VstInt32 flag, bool state)
{
    if (state)
        cEffect.flags |= flag;
    else
        cEffect.flags &= ~flag;
}

void AudioEffect::setEditor(AEffEditor* newEditor)
{
    editor = newEditor;
    setFlag(effFlagsHasEditor, newEditor != nullptr);
}

VstIntPtr AudioEffect::callHost(VstInt32 opcode, VstInt32 index, VstIntPtr value, void* ptr,
                                float opt)
{
    return audioMaster(&cEffect, opcode, index, value, ptr, opt);
}

void AudioEffect::setParameterAutomated(VstInt32 index, float value)
{
    setParameter(index, value);
    if (audioMaster)
        callHost(audioMasterAutomate, index, 0, nullptr, value);
}

VstInt32 AudioEffect::getMasterVersion()
{
    if (!audioMaster)
        return 1;
    const VstInt32 version = static_cast<VstInt32>(callHost(audioMasterVersion));
    return version ? version : 1;
}

VstInt32 AudioEffect::getCurrentUniqueId()
{
    return audioMaster ? static_cast<VstInt32>(callHost(audioMasterCurrentId)) : 0;
}

void AudioEffect::masterIdle()
{
    if (audioMaster)
        callHost(audioMasterIdle);
}

// The host answers 0 for a connected pin.
bool AudioEffect::isInputConnected(VstInt32 input)
{
    return !audioMaster || callHost(audioMasterPinConnected, input, 0) == 0;
}

bool AudioEffect::isOutputConnected(VstInt32 output)
{
    return !audioMaster || callHost(audioMasterPinConnected, output, 1) == 0;
}

// --- Dispatcher for the base opcodes (0 to 24) ---

VstIntPtr AudioEffect::dispatcher(VstInt32 opcode, VstInt32 index, VstIntPtr value, void* ptr,
                                  float opt)
{
    switch (opcode) {
    case effOpen:
        open();
        return 0;
    case effClose:
        close();
        return 0;
    case effSetProgram:
        // A 64-bit value that does not fit 32 bits must not wrap onto a valid program.
        if (value < numPrograms && value >= INT32_MIN)
            setProgram(static_cast<VstInt32>(value));
        return 0;
    case effGetProgram:
        return getProgram();
    case effSetProgramName:
        setProgramName(static_cast<char*>(ptr));
        return 0;
    case effGetProgramName:
        getProgramName(static_cast<char*>(ptr));
        return 0;
    case effGetParamLabel:
        getParameterLabel(index, static_cast<char*>(ptr));
        return 0;
    case effGetParamDisplay:
        getParameterDisplay(index, static_cast<char*>(ptr));
        return 0;
    case effGetParamName:
        getParameterName(index, static_cast<char*>(ptr));
        return 0;
    case effSetSampleRate:
        setSampleRate(opt);
        return 0;
    case effSetBlockSize:
        setBlockSize(static_cast<VstInt32>(value));
        return 0;
    case effMainsChanged:
        if (value == 0)
            suspend();
        else
            resume();
        return 0;
    case effEditGetRect:
        return editor && editor->getRect(static_cast<ERect**>(ptr)) ? 1 : 0;
    case effEditOpen:
        return editor && editor->open(ptr) ? 1 : 0;
    case effEditClose:
        if (editor)
            editor->close();
        return 0;
    case effEditIdle:
        if (editor)
            editor->idle();
        return 0;
    case effIdentify:
        return fourCC('N', 'v', 'E', 'f');
    case effGetChunk:
        return getChunk(static_cast<void**>(ptr), index != 0);
    case effSetChunk:
        return setChunk(ptr, static_cast<VstInt32>(value), index != 0);
    default:
        return 0;
    }
}

// --- Record trampolines ---

VstIntPtr AudioEffect::dispatchEffectClass(AEffect* e, VstInt32 opcode, VstInt32 index,
                                           VstIntPtr value, void* ptr, float opt)
{
    auto* effect = static_cast<AudioEffect*>(e->object);
    const VstIntPtr result =
        guarded(VstIntPtr{0}, [&] { return effect->dispatcher(opcode, index, value, ptr, opt); });
    if (opcode != effClose)
        return result;
    delete effect;
    return 1;
}

void AudioEffect::processClass(AEffect* e, float** inputs, float** outputs, VstInt32 sampleFrames)
{
    guarded([&] { static_cast<AudioEffect*>(e->object)->process(inputs, outputs, sampleFrames); });
}

void AudioEffect::processClassReplacing(AEffect* e, float** inputs, float** outputs,
                                        VstInt32 sampleFrames)
{
    guarded([&] {
        static_cast<AudioEffect*>(e->object)->processReplacing(inputs, outputs, sampleFrames);
    });
}

void AudioEffect::processClassDoubleReplacing(AEffect* e, double** inputs, double** outputs,
                                              VstInt32 sampleFrames)
{
    guarded([&] {
        static_cast<AudioEffect*>(e->object)->processDoubleReplacing(inputs, outputs,
                                                                     sampleFrames);
    });
}

void AudioEffect::setParameterClass(AEffect* e, VstInt32 index, float value)
{
    guarded([&] { static_cast<AudioEffect*>(e->object)->setParameter(index, value); });
}

float AudioEffect::getParameterClass(AEffect* e, VstInt32 index)
{
    return guarded(0.0f, [&] { return static_cast<AudioEffect*>(e->object)->getParameter(index); });
}
