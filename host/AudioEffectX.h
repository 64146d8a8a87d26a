// The VST 2.x extension level of the effect base: the opcodes 25 to 79 and the requests into
// the host that the 2.x interface added.
#pragma once

#include "host/AudioEffect.h"

class AudioEffectX : public AudioEffect {
public:
    using AudioEffect::AudioEffect;

    VstIntPtr dispatcher(VstInt32 opcode, VstInt32 index, VstIntPtr value, void* ptr,
                         float opt) override;
    void resume() override;

    virtual bool canParameterBeAutomated(VstInt32) { return true; }
    virtual bool string2parameter(VstInt32, char*) { return false; }
    virtual bool getParameterProperties(VstInt32, VstParameterProperties*) { return false; }
    virtual bool beginEdit(VstInt32 index);
    virtual bool endEdit(VstInt32 index);

    virtual bool getProgramNameIndexed(VstInt32, VstInt32, char*) { return false; }
    virtual bool beginSetProgram() { return false; }
    virtual bool endSetProgram() { return false; }
    virtual VstInt32 beginLoadBank(VstPatchChunkInfo*) { return 0; }
    virtual VstInt32 beginLoadProgram(VstPatchChunkInfo*) { return 0; }

    virtual bool ioChanged();
    virtual double updateSampleRate();
    virtual VstInt32 updateBlockSize();
    virtual VstInt32 getInputLatency();
    virtual VstInt32 getOutputLatency();
    virtual bool getInputProperties(VstInt32, VstPinProperties*) { return false; }
    virtual bool getOutputProperties(VstInt32, VstPinProperties*) { return false; }
    virtual bool setSpeakerArrangement(VstSpeakerArrangement*, VstSpeakerArrangement*)
    {
        return false;
    }
    virtual bool getSpeakerArrangement(VstSpeakerArrangement** input,
                                       VstSpeakerArrangement** output);
    virtual bool setBypass(bool) { return false; }
    virtual bool setPanLaw(VstInt32, float) { return false; }
    virtual bool setProcessPrecision(VstInt32) { return false; }
    virtual VstInt32 getNumMidiInputChannels() { return 0; }
    virtual VstInt32 getNumMidiOutputChannels() { return 0; }

    virtual VstTimeInfo* getTimeInfo(VstInt32 filter);
    virtual VstInt32 getCurrentProcessLevel();
    virtual VstInt32 getAutomationState();
    virtual VstInt32 processEvents(VstEvents*) { return 0; }
    bool sendVstEventsToHost(VstEvents* events);
    virtual VstInt32 startProcess() { return 0; }
    virtual VstInt32 stopProcess() { return 0; }
    virtual bool processVariableIo(VstVariableIo*) { return false; }
    virtual VstInt32 setTotalSampleToProcess(VstInt32 value) { return value; }

    virtual bool getHostVendorString(char* text);
    virtual bool getHostProductString(char* text);
    virtual VstInt32 getHostVendorVersion();
    virtual VstIntPtr hostVendorSpecific(VstInt32 arg1, VstIntPtr arg2, void* ptrArg,
                                         float floatArg);
    virtual VstInt32 canHostDo(char* text);
    virtual VstInt32 getHostLanguage();

    virtual void isSynth(bool state) { setFlag(effFlagsIsSynth, state); }
    virtual void noTail(bool state) { setFlag(effFlagsNoSoundInStop, state); }
    virtual VstInt32 getGetTailSize() { return 0; }
    virtual void* getDirectory();
    virtual bool getEffectName(char*) { return false; }
    virtual bool getVendorString(char*) { return false; }
    virtual bool getProductString(char*) { return false; }
    virtual VstInt32 getVendorVersion() { return 0; }
    virtual VstIntPtr vendorSpecific(VstInt32, VstIntPtr, void*, float) { return 0; }
    virtual VstInt32 canDo(char*) { return 0; }
    virtual VstInt32 getVstVersion() { return kVstVersion; }
    virtual VstInt32 getPlugCategory();

    virtual VstInt32 getMidiProgramName(VstInt32, MidiProgramName*) { return 0; }
    virtual VstInt32 getCurrentMidiProgram(VstInt32, MidiProgramName*) { return -1; }
    virtual VstInt32 getMidiProgramCategory(VstInt32, MidiProgramCategory*) { return 0; }
    virtual bool hasMidiProgramsChanged(VstInt32) { return false; }
    virtual bool getMidiKeyName(VstInt32, MidiKeyName*) { return false; }

    virtual bool updateDisplay();
    virtual bool sizeWindow(VstInt32 width, VstInt32 height);
    virtual bool openFileSelector(VstFileSelect* ptr);
    virtual bool closeFileSelector(VstFileSelect* ptr);
    virtual VstInt32 getNextShellPlugin(char*) { return 0; }

    virtual bool offlineNotify(VstAudioFile*, VstInt32, bool) { return false; }
    virtual bool offlinePrepare(VstOfflineTask*, VstInt32) { return false; }
    virtual bool offlineRun(VstOfflineTask*, VstInt32) { return false; }
    virtual bool offlineStart(VstAudioFile* files, VstInt32 numAudioFiles,
                              VstInt32 numNewAudioFiles);
    virtual bool offlineRead(VstOfflineTask* offline, VstInt32 option, bool readSource = true);
    virtual bool offlineWrite(VstOfflineTask* offline, VstInt32 option);
    virtual VstInt32 offlineGetCurrentPass();
    virtual VstInt32 offlineGetCurrentMetaPass();

    // Deprecated; kept because a 2.3 host may still ask for MIDI through it.
    virtual void wantEvents(VstInt32 filter = 1);
    // Deprecated requests of the 2.x interface, passed to the host as they are.
    virtual VstInt32 tempoAt(VstInt32 pos);
    virtual VstInt32 getNumAutomatableParameters();
    virtual VstInt32 getParameterQuantization();
    virtual VstInt32 willProcessReplacing();
    virtual bool needIdle();
    virtual AEffect* getPreviousPlug(VstInt32 input);
    virtual AEffect* getNextPlug(VstInt32 output);
    virtual bool setOutputSamplerate(float samplerate);
    virtual VstSpeakerArrangement* getOutputSpeakerArrangement();
    virtual VstSpeakerArrangement* getInputSpeakerArrangement();
    virtual void* openWindow(VstWindow* window);
    virtual bool closeWindow(VstWindow* window);
    virtual bool getChunkFile(void* nativePath);
};
