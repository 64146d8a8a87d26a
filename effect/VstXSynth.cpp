#include "effect/VstXSynth.h"

#include "common/boundedCopy.h"
#include "engine/Parameters.h"
#include "engine/SineTables.h"
#include "host/AEffGUIEditor.h"

VstXSynth::VstXSynth(audioMasterCallback audioMaster)
    : AudioEffectX(audioMaster, kNumPrograms, kNumParameters)
{
    loadFactoryPrograms(programs);
    // Built once per process; touching them here keeps the first audio block free of the work.
    sine_tables::tremoloTable();
    setProgram(0);
    setNumInputs(2);
    setNumOutputs(2);
    setUniqueID(fourCC('H', 'V', 'T', '8'));
    resume();
}

VstXSynth::~VstXSynth() = default;

void VstXSynth::setGuiEditor(AEffGUIEditor* editor)
{
    guiEditor = editor;
    setEditor(editor);
}

EngineSettings VstXSynth::currentSettings() const
{
    EngineSettings settings;
    forEachParameter([&](auto parameter) {
        parameterField<parameter>(settings) =
            parameterField<parameter>(live).load(std::memory_order_relaxed);
    });
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
