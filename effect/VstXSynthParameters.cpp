// Parameters and programs: every accepted value goes into the live field and into the current
// program's record, and on to an open editor unless the panel itself is writing.
#include <cstring>

#include "common/boundedCopy.h"
#include "common/truncate.h"
#include "effect/VstXSynth.h"
#include "engine/Parameters.h"
#include "host/AEffGUIEditor.h"

namespace {

constexpr auto relaxed = std::memory_order_relaxed;

bool isProgram(VstInt32 program)
{
    return static_cast<uint32_t>(program) < kNumPrograms;
}

void store(std::atomic<float>& field, float value)
{
    field.store(value, relaxed);
}

// The rate choice is an integer: 9.9 stores 9, 0.5 stores 0.
void store(std::atomic<int32_t>& field, float value)
{
    field.store(truncateToInt32(value), relaxed);
}

template <typename Field>
float load(const std::atomic<Field>& field)
{
    return static_cast<float>(field.load(relaxed));
}

// The order a program switch sets the parameters in; the rate choice is not part of it and
// keeps its value.
constexpr Parameter kProgramOrder[] = {kStereoPanner, kPannerSpeed, kTremoloSpeed, kTremoloDepth,
                                       kMix};

} // namespace

void VstXSynth::setParameter(VstInt32 index, float value)
{
    if (isParameter(index)) {
        TremoloProgram& program = programs[curProgram.load(relaxed)];
        visitParameter(live, index, [&](auto& field) { store(field, value); });
        visitParameter(program, index, [&](auto& field) { store(field, value); });
    }
    // Every index, known or not, reaches an open editor; the panel ignores what it does not know.
    if (guiEditor && guiEditor->isEditorOpen() && !inPanelUpdate.load(relaxed))
        guiEditor->setParameter(index, value);
}

float VstXSynth::getParameter(VstInt32 index)
{
    float value = 0.0f;
    visitParameter(live, index, [&](const auto& field) { value = load(field); });
    return value;
}

void VstXSynth::getParameterName(VstInt32 index, char* text)
{
    if (isParameter(index) && text)
        std::strcpy(text, kParameterInfo[index].name); // at most 13 characters
}

void VstXSynth::getParameterLabel(VstInt32 index, char* label)
{
    if (isParameter(index) && label)
        std::strcpy(label, kParameterInfo[index].label);
}

void VstXSynth::getParameterDisplay(VstInt32 index, char* text)
{
    if (!text)
        return;
    text[0] = 0;
    if (index == kSampleRate)
        int2string(live.rateChoice.load(relaxed), text, kVstMaxParamStrLen);
    else if (isParameter(index))
        float2string(getParameter(index), text, kVstMaxParamStrLen);
}

void VstXSynth::setProgram(VstInt32 program)
{
    if (!isProgram(program))
        return;
    curProgram = program;
    const TremoloProgram& record = programs[program];
    for (Parameter parameter : kProgramOrder)
        visitParameter(record, parameter,
                       [&](const auto& field) { setParameter(parameter, load(field)); });
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
