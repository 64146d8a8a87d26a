#include "effect/VstXSynth.h"

#include <new>

#include "editor/hveditor10.h"
#include "effect/SineTables.h"
#include "host/boundedCopy.h"

AudioEffect* createEffectInstance(audioMasterCallback audioMaster)
{
    // A host expects null, not an exception, when an effect cannot be made.
    return new (std::nothrow) VstXSynth(audioMaster);
}

VstXSynth::VstXSynth(audioMasterCallback audioMaster) : AudioEffectX(audioMaster, kNumPrograms, 6)
{
    loadFactoryPrograms(programs);
    // Built once per process; touching them here keeps the first audio block free of the work.
    sine_tables::tremoloTable();
    setProgram(0);
    setNumInputs(2);
    setNumOutputs(2);
    setUniqueID(fourCC('H', 'V', 'T', '8'));
    guiEditor = new hveditor10(this); // registers itself through setEditor
    setEditor(guiEditor);
    resume();
}

VstXSynth::~VstXSynth() = default;

EngineSettings VstXSynth::currentSettings() const
{
    EngineSettings settings;
    settings.tremoloDepth = tremoloDepth.load(std::memory_order_relaxed);
    settings.tremoloSpeed = tremoloSpeed.load(std::memory_order_relaxed);
    settings.pannerDepth = pannerDepth.load(std::memory_order_relaxed);
    settings.pannerSpeed = pannerSpeed.load(std::memory_order_relaxed);
    settings.mix = mix.load(std::memory_order_relaxed);
    settings.rateChoice = rateChoice.load(std::memory_order_relaxed);
    return settings;
}

void VstXSynth::processReplacing(float** inputs, float** outputs, VstInt32 sampleFrames)
{
    if (sampleFrames <= 0 || !inputs || !outputs || !inputs[0] || !inputs[1] || !outputs[0] ||
        !outputs[1])
        return;
    engine.process(inputs[0], inputs[1], outputs[0], outputs[1], sampleFrames, currentSettings());
}

// --- Identity ---

// The strings are bounded to the buffer sizes the interface documents for these queries, one
// terminator included, so a host that allocates exactly that much is never overrun.
bool VstXSynth::getEffectName(char* name)
{
    if (!name)
        return false;
    copyBounded(name, "HvTremolo 32-Bit", kVstMaxEffectNameLen - 1);
    return true;
}

bool VstXSynth::getVendorString(char* text)
{
    if (!text)
        return false;
    copyBounded(text, "Halvo Music", kVstMaxVendorStrLen - 1);
    return true;
}

bool VstXSynth::getProductString(char* text)
{
    if (!text)
        return false;
    copyBounded(text, "Halvo's Tremolo", kVstMaxProductStrLen - 1);
    return true;
}

bool VstXSynth::getOutputProperties(VstInt32 index, VstPinProperties* properties)
{
    if (index > 1 || !properties)
        return false;
    copyBounded(properties->label, "Vstx ", kVstMaxLabelLen - 1);
    char number[11] = {};
    int2string(index + 1, number, 10);
    appendBounded(properties->label, number, kVstMaxLabelLen - 1);
    properties->flags = kVstPinIsActive | kVstPinIsStereo;
    return true;
}
