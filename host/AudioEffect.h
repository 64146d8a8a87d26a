// The effect base class: owns the AEffect record handed to the host, routes the record's function
// pointers to virtual operations and answers the base opcodes with their defaults.
//
// Threads: the host may call setParameter/getParameter from any thread, also while
// processReplacing runs on the audio thread; everything those touch is atomic.
#pragma once

#include <atomic>

#include "host/PanelUpdateFlag.h"
#include "host/vst2.h"

class AEffEditor;

class AudioEffect {
public:
    AudioEffect(audioMasterCallback audioMaster, VstInt32 numPrograms, VstInt32 numParams);
    virtual ~AudioEffect();

    AudioEffect(const AudioEffect&) = delete;
    AudioEffect& operator=(const AudioEffect&) = delete;

    virtual VstIntPtr dispatcher(VstInt32 opcode, VstInt32 index, VstIntPtr value, void* ptr,
                                 float opt);

    virtual void open() {}
    virtual void close() {}
    virtual void suspend() {}
    virtual void resume() {}

    virtual void setSampleRate(float newSampleRate) { sampleRate = newSampleRate; }
    virtual void setBlockSize(VstInt32 newBlockSize) { blockSize = newBlockSize; }

    virtual void processReplacing(float** inputs, float** outputs, VstInt32 sampleFrames) = 0;
    virtual void processDoubleReplacing(double**, double**, VstInt32) {}
    // The deprecated accumulating process; hosts of this century never call it.
    virtual void process(float**, float**, VstInt32) {}

    virtual void setParameter(VstInt32, float) {}
    virtual float getParameter(VstInt32) { return 0.0f; }
    virtual void setParameterAutomated(VstInt32 index, float value);

    virtual VstInt32 getProgram() { return curProgram; }
    virtual void setProgram(VstInt32 program) { curProgram = program; }
    virtual void setProgramName(char*) {}
    virtual void getProgramName(char* name) { name[0] = 0; }
    virtual void getParameterLabel(VstInt32, char* label) { label[0] = 0; }
    virtual void getParameterDisplay(VstInt32, char* text) { text[0] = 0; }
    virtual void getParameterName(VstInt32, char* text) { text[0] = 0; }
    virtual VstInt32 getChunk(void**, bool) { return 0; }
    virtual VstInt32 setChunk(void*, VstInt32, bool) { return 0; }

    virtual void setUniqueID(VstInt32 id) { cEffect.uniqueID = id; }
    virtual void setNumInputs(VstInt32 inputs) { cEffect.numInputs = inputs; }
    virtual void setNumOutputs(VstInt32 outputs) { cEffect.numOutputs = outputs; }
    virtual void canProcessReplacing(bool state) { setFlag(effFlagsCanReplacing, state); }
    virtual void canDoubleReplacing(bool state) { setFlag(effFlagsCanDoubleReplacing, state); }
    virtual void programsAreChunks(bool state) { setFlag(effFlagsProgramChunks, state); }
    virtual void setInitialDelay(VstInt32 delay) { cEffect.initialDelay = delay; }
    void setEditor(AEffEditor* newEditor);

    virtual AEffEditor* getEditor() { return editor; }
    virtual AEffect* getAeffect() { return &cEffect; }
    virtual float getSampleRate() { return sampleRate; }
    virtual VstInt32 getBlockSize() { return blockSize; }

    virtual VstInt32 getMasterVersion();
    virtual VstInt32 getCurrentUniqueId();
    virtual void masterIdle();
    // Deprecated: whether the host has connected the pin; 1 without a host.
    virtual bool isInputConnected(VstInt32 input);
    virtual bool isOutputConnected(VstInt32 output);

    // Value-to-text conversions; each writes at most maxLen characters and a terminator at
    // maxLen, so the buffer must hold maxLen + 1 bytes.
    virtual void dB2string(float value, char* text, VstInt32 maxLen);
    virtual void Hz2string(float samples, char* text, VstInt32 maxLen);
    virtual void ms2string(float samples, char* text, VstInt32 maxLen);
    virtual void float2string(float value, char* text, VstInt32 maxLen);
    virtual void int2string(VstInt32 value, char* text, VstInt32 maxLen);

    // Raised by the panel around its own setParameter calls so that the effect does not echo a
    // panel edit back to the panel. Lives here so that the panel needs nothing but this interface.
    PanelUpdateFlag inPanelUpdate;

protected:
    void setFlag(VstInt32 flag, bool state);
    VstIntPtr callHost(VstInt32 opcode, VstInt32 index = 0, VstIntPtr value = 0,
                       void* ptr = nullptr, float opt = 0.0f);

    audioMasterCallback audioMaster;
    AEffEditor* editor = nullptr;
    float sampleRate = 44100.0f;
    VstInt32 blockSize = 1024;
    VstInt32 numPrograms;
    VstInt32 numParams;
    // Read by setParameter on any thread to find the program record to write.
    std::atomic<VstInt32> curProgram{0};
    AEffect cEffect;

private:
    static VstIntPtr dispatchEffectClass(AEffect* e, VstInt32 opcode, VstInt32 index,
                                         VstIntPtr value, void* ptr, float opt);
    static void processClass(AEffect* e, float** inputs, float** outputs, VstInt32 sampleFrames);
    static void processClassReplacing(AEffect* e, float** inputs, float** outputs,
                                      VstInt32 sampleFrames);
    static void processClassDoubleReplacing(AEffect* e, double** inputs, double** outputs,
                                            VstInt32 sampleFrames);
    static void setParameterClass(AEffect* e, VstInt32 index, float value);
    static float getParameterClass(AEffect* e, VstInt32 index);
};

// Defined by the effect: the one object VSTPluginMain creates for each call.
AudioEffect* createEffectInstance(audioMasterCallback audioMaster);
