// Parameters and programs: every accepted value goes into the live field and into the current
// program's record, and on to an open editor unless the panel itself is writing.
#include <cstring>

#include "editor/hveditor10.h"
#include "effect/VstXSynth.h"
#include "host/boundedCopy.h"
#include "host/truncate.h"

namespace {

constexpr VstInt32 kNumParameters = 6;
constexpr const char* kParameterNames[kNumParameters] = {
    "Tremolo Depth", "Tremolo Speed", "Stereo Panner", "Panner Speed", "Mix", "Sample Rate"};
constexpr const char* kParameterLabels[kNumParameters] = {"amount", "amount", "amount",
                                                          "amount", "percent", "Hz"};

bool isParameter(VstInt32 index)
{
    return static_cast<uint32_t>(index) < kNumParameters;
}

bool isProgram(VstInt32 program)
{
    return static_cast<uint32_t>(program) < kNumPrograms;
}

} // namespace

void VstXSynth::setParameter(VstInt32 index, float value)
{
    if (isParameter(index)) {
        TremoloProgram& program = programs[curProgram.load(std::memory_order_relaxed)];
        constexpr auto relaxed = std::memory_order_relaxed;
        switch (index) {
        case 0:
            tremoloDepth.store(value, relaxed);
            program.tremoloDepth.store(value, relaxed);
            break;
        case 1:
            tremoloSpeed.store(value, relaxed);
            program.tremoloSpeed.store(value, relaxed);
            break;
        case 2:
            pannerDepth.store(value, relaxed);
            program.pannerDepth.store(value, relaxed);
            break;
        case 3:
            pannerSpeed.store(value, relaxed);
            program.pannerSpeed.store(value, relaxed);
            break;
        case 4:
            mix.store(value, relaxed);
            program.mix.store(value, relaxed);
            break;
        case 5: {
            // The rate choice is an integer: 9.9 stores 9, 0.5 stores 0.
            const int32_t choice = truncateToInt32(value);
            rateChoice.store(choice, relaxed);
            program.rateChoice.store(choice, relaxed);
            break;
        }
        }
    }
    // Every index, known or not, reaches an open editor; the panel ignores what it does not know.
    if (guiEditor && guiEditor->isEditorOpen() && !inPanelUpdate.load(std::memory_order_relaxed))
        guiEditor->setParameter(index, value);
}

float VstXSynth::getParameter(VstInt32 index)
{
    constexpr auto relaxed = std::memory_order_relaxed;
    switch (index) {
    case 0:
        return tremoloDepth.load(relaxed);
    case 1:
        return tremoloSpeed.load(relaxed);
    case 2:
        return pannerDepth.load(relaxed);
    case 3:
        return pannerSpeed.load(relaxed);
    case 4:
        return mix.load(relaxed);
    case 5:
        return static_cast<float>(rateChoice.load(relaxed));
    default:
        return 0.0f;
    }
}

void VstXSynth::getParameterName(VstInt32 index, char* text)
{
    if (isParameter(index) && text)
        std::strcpy(text, kParameterNames[index]); // at most 13 characters
}

void VstXSynth::getParameterLabel(VstInt32 index, char* label)
{
    if (isParameter(index) && label)
        std::strcpy(label, kParameterLabels[index]);
}

void VstXSynth::getParameterDisplay(VstInt32 index, char* text)
{
    if (!text)
        return;
    text[0] = 0;
    if (index == 5)
        int2string(rateChoice.load(std::memory_order_relaxed), text, kVstMaxParamStrLen);
    else if (isParameter(index))
        float2string(getParameter(index), text, kVstMaxParamStrLen);
}

void VstXSynth::setProgram(VstInt32 program)
{
    if (!isProgram(program))
        return;
    curProgram = program;
    // The rate choice is not part of a program switch: it keeps its value.
    const TremoloProgram& record = programs[program];
    setParameter(2, record.pannerDepth);
    setParameter(3, record.pannerSpeed);
    setParameter(1, record.tremoloSpeed);
    setParameter(0, record.tremoloDepth);
    setParameter(4, record.mix);
}

void VstXSynth::setProgramName(char* name)
{
    if (!name)
        return;
    // Exactly the 24-character field: zero-filled after a shorter name, no terminator after a
    // name that fills it.
    std::strncpy(programs[curProgram].name, name, kVstMaxProgNameLen);
}

void VstXSynth::getProgramName(char* name)
{
    if (name)
        copyBounded(name, programs[curProgram].name, kVstMaxProgNameLen);
}

bool VstXSynth::getProgramNameIndexed(VstInt32, VstInt32 index, char* text)
{
    if (!isProgram(index) || !text)
        return false;
    copyBounded(text, programs[index].name, kVstMaxProgNameLen);
    return true;
}
