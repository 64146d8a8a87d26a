// The tremolo effect: six parameters, ten programs, the modulation engine, its identity and its
// General MIDI name answers.
//
// Threads: the host calls setParameter/getParameter from any thread, processReplacing on its
// audio thread, and the dispatcher from its UI thread. Live values are relaxed atomics; the
// engine copies them once per block.
#pragma once

#include <atomic>
#include <cstdint>

#include "effect/TremoloProgram.h"
#include "engine/ModulationEngine.h"
#include "host/AudioEffectX.h"

class AEffGUIEditor;

class VstXSynth : public AudioEffectX {
public:
    explicit VstXSynth(audioMasterCallback audioMaster);
    ~VstXSynth() override;

    // Registers the editor (owned through the base) that hears every change the panel did not
    // make. Called once, by whoever builds the effect with its editor.
    void setGuiEditor(AEffGUIEditor* editor);

    void processReplacing(float** inputs, float** outputs, VstInt32 sampleFrames) override;

    void setParameter(VstInt32 index, float value) override;
    float getParameter(VstInt32 index) override;
    void getParameterName(VstInt32 index, char* text) override;
    void getParameterLabel(VstInt32 index, char* label) override;
    void getParameterDisplay(VstInt32 index, char* text) override;

    void setProgram(VstInt32 program) override;
    void setProgramName(char* name) override;
    void getProgramName(char* name) override;
    bool getProgramNameIndexed(VstInt32 category, VstInt32 index, char* text) override;

    bool getOutputProperties(VstInt32 index, VstPinProperties* properties) override;
    VstInt32 getNumMidiInputChannels() override { return 0; }
    VstInt32 getNumMidiOutputChannels() override { return 0; }
    bool getEffectName(char* name) override;
    bool getVendorString(char* text) override;
    bool getProductString(char* text) override;
    VstInt32 getVendorVersion() override { return 1000; }
    VstInt32 canDo(char*) override { return -1; }
    VstInt32 getPlugCategory() override { return kPlugCategEffect; }

    VstInt32 getMidiProgramName(VstInt32 channel, MidiProgramName* record) override;
    VstInt32 getCurrentMidiProgram(VstInt32 channel, MidiProgramName* record) override;
    VstInt32 getMidiProgramCategory(VstInt32 channel, MidiProgramCategory* record) override;
    bool hasMidiProgramsChanged(VstInt32) override { return false; }
    bool getMidiKeyName(VstInt32 channel, MidiKeyName* record) override;

private:
    EngineSettings currentSettings() const;
    void fillMidiProgram(VstInt32 channel, VstInt32 program, MidiProgramName* record);

    ModulationEngine engine; // audio thread only

    // The live values, in the order the effect has always kept them; named after the
    // parameters, so engine/Parameters.h maps an index to its field.
    struct LiveParameters {
        std::atomic<float> pannerDepth{0.0f};
        std::atomic<float> tremoloSpeed{0.0f};
        std::atomic<float> pannerSpeed{0.0f};
        std::atomic<float> tremoloDepth{0.0f};
        std::atomic<int32_t> rateChoice{7};
        std::atomic<float> mix{0.0f};
    } live;

    TremoloProgram programs[kNumPrograms];
    // The MIDI program each channel reports; nothing changes them, every channel starts at 0.
    int32_t currentMidiPrograms[16] = {};

    AEffGUIEditor* guiEditor = nullptr; // owned through the base's editor field
};
