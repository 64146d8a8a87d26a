#include "host/AudioEffectX.h"

#include "host/AEffEditor.h"

namespace {

VstIntPtr pass(bool answer)
{
    return answer ? 1 : 0;
}

} // namespace

VstIntPtr AudioEffectX::dispatcher(VstInt32 opcode, VstInt32 index, VstIntPtr value, void* ptr,
                                   float opt)
{
    auto text = static_cast<char*>(ptr);
    switch (opcode) {
    case effProcessEvents:
        return processEvents(static_cast<VstEvents*>(ptr));
    case effCanBeAutomated:
        return pass(canParameterBeAutomated(index));
    case effString2Parameter:
        return pass(string2parameter(index, text));
    case effGetProgramNameIndexed:
        return pass(getProgramNameIndexed(static_cast<VstInt32>(value), index, text));
    case effGetInputProperties:
        return pass(getInputProperties(index, static_cast<VstPinProperties*>(ptr)));
    case effGetOutputProperties:
        return pass(getOutputProperties(index, static_cast<VstPinProperties*>(ptr)));
    case effGetPlugCategory:
        return getPlugCategory();
    case effOfflineNotify:
        return pass(offlineNotify(static_cast<VstAudioFile*>(ptr), static_cast<VstInt32>(value),
                                  index != 0));
    case effOfflinePrepare:
        return pass(offlinePrepare(static_cast<VstOfflineTask*>(ptr), static_cast<VstInt32>(value)));
    case effOfflineRun:
        return pass(offlineRun(static_cast<VstOfflineTask*>(ptr), static_cast<VstInt32>(value)));
    case effProcessVarIo:
        return pass(processVariableIo(static_cast<VstVariableIo*>(ptr)));
    case effSetSpeakerArrangement:
        return pass(setSpeakerArrangement(reinterpret_cast<VstSpeakerArrangement*>(value),
                                          static_cast<VstSpeakerArrangement*>(ptr)));
    case effSetBypass:
        return pass(setBypass(value != 0));
    case effGetEffectName:
        return pass(getEffectName(text));
    case effGetVendorString:
        return pass(getVendorString(text));
    case effGetProductString:
        return pass(getProductString(text));
    case effGetVendorVersion:
        return getVendorVersion();
    case effVendorSpecific:
        return vendorSpecific(index, value, ptr, opt);
    case effCanDo:
        return canDo(text);
    case effGetTailSize:
        return getGetTailSize();
    case effGetParameterProperties:
        return pass(getParameterProperties(index, static_cast<VstParameterProperties*>(ptr)));
    case effGetVstVersion:
        return getVstVersion();
    case effEditKeyDown:
    case effEditKeyUp:
    case effSetEditKnobMode: {
        if (!editor)
            return 0;
        if (opcode == effSetEditKnobMode)
            return pass(editor->setKnobMode(static_cast<VstInt32>(value)));
        VstKeyCode key{};
        key.character = index;
        key.virt = static_cast<unsigned char>(value);
        // opt truncated toward zero; a value no integer holds counts as 0 rather than being
        // undefined behaviour.
        const bool inRange = opt > -2147483648.0f && opt < 2147483648.0f;
        key.modifier = static_cast<unsigned char>(inRange ? static_cast<VstInt32>(opt) : 0);
        return pass(opcode == effEditKeyDown ? editor->onKeyDown(key) : editor->onKeyUp(key));
    }
    case effGetMidiProgramName:
        return getMidiProgramName(index, static_cast<MidiProgramName*>(ptr));
    case effGetCurrentMidiProgram:
        return getCurrentMidiProgram(index, static_cast<MidiProgramName*>(ptr));
    case effGetMidiProgramCategory:
        return getMidiProgramCategory(index, static_cast<MidiProgramCategory*>(ptr));
    case effHasMidiProgramsChanged:
        return pass(hasMidiProgramsChanged(index));
    case effGetMidiKeyName:
        return pass(getMidiKeyName(index, static_cast<MidiKeyName*>(ptr)));
    case effBeginSetProgram:
        return pass(beginSetProgram());
    case effEndSetProgram:
        return pass(endSetProgram());
    case effGetSpeakerArrangement:
        return pass(getSpeakerArrangement(reinterpret_cast<VstSpeakerArrangement**>(value),
                                          static_cast<VstSpeakerArrangement**>(ptr)));
    case effShellGetNextPlugin:
        return getNextShellPlugin(text);
    case effStartProcess:
        return startProcess();
    case effStopProcess:
        return stopProcess();
    case effSetTotalSampleToProcess:
        return setTotalSampleToProcess(static_cast<VstInt32>(value));
    case effSetPanLaw:
        return pass(setPanLaw(static_cast<VstInt32>(value), opt));
    case effBeginLoadBank:
        return beginLoadBank(static_cast<VstPatchChunkInfo*>(ptr));
    case effBeginLoadProgram:
        return beginLoadProgram(static_cast<VstPatchChunkInfo*>(ptr));
    case effSetProcessPrecision:
        return pass(setProcessPrecision(static_cast<VstInt32>(value)));
    case effGetNumMidiInputChannels:
        return getNumMidiInputChannels();
    case effGetNumMidiOutputChannels:
        return getNumMidiOutputChannels();
    default:
        // Everything else, the 2.x opcodes this level does not handle included, goes to the
        // base level, which answers 0 above 24.
        return AudioEffect::dispatcher(opcode, index, value, ptr, opt);
    }
}

void AudioEffectX::resume()
{
    char receiveMidi[] = "receiveVstMidiEvent";
    if ((cEffect.flags & effFlagsIsSynth) || canDo(receiveMidi) == 1)
        wantEvents(1);
}

VstInt32 AudioEffectX::getPlugCategory()
{
    return (cEffect.flags & effFlagsIsSynth) ? kPlugCategSynth : kPlugCategUnknown;
}

bool AudioEffectX::getSpeakerArrangement(VstSpeakerArrangement** input,
                                         VstSpeakerArrangement** output)
{
    // Hosts pass both pointers; a careless one may pass null, which must not crash it.
    if (input)
        *input = nullptr;
    if (output)
        *output = nullptr;
    return false;
}

// --- Requests into the host: each answers a fixed default when there is no callback ---

bool AudioEffectX::beginEdit(VstInt32 index)
{
    return audioMaster && callHost(audioMasterBeginEdit, index) != 0;
}

bool AudioEffectX::endEdit(VstInt32 index)
{
    return audioMaster && callHost(audioMasterEndEdit, index) != 0;
}

bool AudioEffectX::ioChanged()
{
    return audioMaster && callHost(audioMasterIOChanged) != 0;
}

double AudioEffectX::updateSampleRate()
{
    if (audioMaster) {
        const VstIntPtr answer = callHost(audioMasterGetSampleRate);
        if (answer > 0)
            sampleRate = static_cast<float>(answer);
    }
    return sampleRate;
}

VstInt32 AudioEffectX::updateBlockSize()
{
    if (audioMaster) {
        const VstIntPtr answer = callHost(audioMasterGetBlockSize);
        if (answer > 0)
            blockSize = static_cast<VstInt32>(answer);
    }
    return blockSize;
}

VstInt32 AudioEffectX::getInputLatency()
{
    return audioMaster ? static_cast<VstInt32>(callHost(audioMasterGetInputLatency)) : 0;
}

VstInt32 AudioEffectX::getOutputLatency()
{
    return audioMaster ? static_cast<VstInt32>(callHost(audioMasterGetOutputLatency)) : 0;
}

VstTimeInfo* AudioEffectX::getTimeInfo(VstInt32 filter)
{
    if (!audioMaster)
        return nullptr;
    return reinterpret_cast<VstTimeInfo*>(callHost(audioMasterGetTime, 0, filter));
}

VstInt32 AudioEffectX::getCurrentProcessLevel()
{
    return audioMaster ? static_cast<VstInt32>(callHost(audioMasterGetCurrentProcessLevel)) : 0;
}

VstInt32 AudioEffectX::getAutomationState()
{
    return audioMaster ? static_cast<VstInt32>(callHost(audioMasterGetAutomationState)) : 0;
}

bool AudioEffectX::sendVstEventsToHost(VstEvents* events)
{
    return audioMaster && callHost(audioMasterProcessEvents, 0, 0, events) == 1;
}

bool AudioEffectX::getHostVendorString(char* text)
{
    return audioMaster && callHost(audioMasterGetVendorString, 0, 0, text) != 0;
}

bool AudioEffectX::getHostProductString(char* text)
{
    return audioMaster && callHost(audioMasterGetProductString, 0, 0, text) != 0;
}

VstInt32 AudioEffectX::getHostVendorVersion()
{
    return audioMaster ? static_cast<VstInt32>(callHost(audioMasterGetVendorVersion)) : 0;
}

VstIntPtr AudioEffectX::hostVendorSpecific(VstInt32 arg1, VstIntPtr arg2, void* ptrArg,
                                           float floatArg)
{
    return audioMaster ? callHost(audioMasterVendorSpecific, arg1, arg2, ptrArg, floatArg) : 0;
}

// Any non-zero answer counts, so a host's -1 ("no") reads as 1 here just as its "yes" does.
VstInt32 AudioEffectX::canHostDo(char* text)
{
    return audioMaster && callHost(audioMasterCanDo, 0, 0, text) != 0 ? 1 : 0;
}

VstInt32 AudioEffectX::getHostLanguage()
{
    return audioMaster ? static_cast<VstInt32>(callHost(audioMasterGetLanguage)) : 0;
}

void* AudioEffectX::getDirectory()
{
    return audioMaster ? reinterpret_cast<void*>(callHost(audioMasterGetDirectory)) : nullptr;
}

bool AudioEffectX::updateDisplay()
{
    return audioMaster && callHost(audioMasterUpdateDisplay) != 0;
}

bool AudioEffectX::sizeWindow(VstInt32 width, VstInt32 height)
{
    return audioMaster && callHost(audioMasterSizeWindow, width, height) != 0;
}

bool AudioEffectX::openFileSelector(VstFileSelect* ptr)
{
    return audioMaster && ptr && callHost(audioMasterOpenFileSelector, 0, 0, ptr) != 0;
}

bool AudioEffectX::closeFileSelector(VstFileSelect* ptr)
{
    return audioMaster && ptr && callHost(audioMasterCloseFileSelector, 0, 0, ptr) != 0;
}

void AudioEffectX::wantEvents(VstInt32 filter)
{
    if (audioMaster)
        callHost(audioMasterWantMidi, 0, filter);
}

bool AudioEffectX::offlineStart(VstAudioFile* files, VstInt32 numAudioFiles,
                                VstInt32 numNewAudioFiles)
{
    return audioMaster &&
           callHost(audioMasterOfflineStart, numNewAudioFiles, numAudioFiles, files) != 0;
}

bool AudioEffectX::offlineRead(VstOfflineTask* offline, VstInt32 option, bool readSource)
{
    return audioMaster &&
           callHost(audioMasterOfflineRead, readSource ? 1 : 0, option, offline) != 0;
}

bool AudioEffectX::offlineWrite(VstOfflineTask* offline, VstInt32 option)
{
    return audioMaster && callHost(audioMasterOfflineWrite, 0, option, offline) != 0;
}

VstInt32 AudioEffectX::offlineGetCurrentPass()
{
    return audioMaster && callHost(audioMasterOfflineGetCurrentPass) != 0 ? 1 : 0;
}

VstInt32 AudioEffectX::offlineGetCurrentMetaPass()
{
    return audioMaster && callHost(audioMasterOfflineGetCurrentMetaPass) != 0 ? 1 : 0;
}

// --- Deprecated requests ---

VstInt32 AudioEffectX::tempoAt(VstInt32 pos)
{
    return audioMaster ? static_cast<VstInt32>(callHost(audioMasterTempoAt, 0, pos)) : 0;
}

VstInt32 AudioEffectX::getNumAutomatableParameters()
{
    return audioMaster ? static_cast<VstInt32>(callHost(audioMasterGetNumAutomatableParameters))
                       : 0;
}

VstInt32 AudioEffectX::getParameterQuantization()
{
    return audioMaster ? static_cast<VstInt32>(callHost(audioMasterGetParameterQuantization))
                       : 0;
}

VstInt32 AudioEffectX::willProcessReplacing()
{
    return audioMaster ? static_cast<VstInt32>(callHost(audioMasterWillReplaceOrAccumulate)) : 0;
}

bool AudioEffectX::needIdle()
{
    return audioMaster && callHost(audioMasterNeedIdle) != 0;
}

// The interface's pin argument was never passed on; the host answers for the first pin.
AEffect* AudioEffectX::getPreviousPlug(VstInt32)
{
    return audioMaster ? reinterpret_cast<AEffect*>(callHost(audioMasterGetPreviousPlug))
                       : nullptr;
}

AEffect* AudioEffectX::getNextPlug(VstInt32)
{
    return audioMaster ? reinterpret_cast<AEffect*>(callHost(audioMasterGetNextPlug)) : nullptr;
}

bool AudioEffectX::setOutputSamplerate(float samplerate)
{
    return audioMaster && callHost(audioMasterSetOutputSampleRate, 0, 0, nullptr, samplerate) != 0;
}

VstSpeakerArrangement* AudioEffectX::getOutputSpeakerArrangement()
{
    return audioMaster ? reinterpret_cast<VstSpeakerArrangement*>(
                             callHost(audioMasterGetOutputSpeakerArrangement))
                       : nullptr;
}

VstSpeakerArrangement* AudioEffectX::getInputSpeakerArrangement()
{
    return audioMaster ? reinterpret_cast<VstSpeakerArrangement*>(
                             callHost(audioMasterGetInputSpeakerArrangement))
                       : nullptr;
}

void* AudioEffectX::openWindow(VstWindow* window)
{
    return audioMaster ? reinterpret_cast<void*>(callHost(audioMasterOpenWindow, 0, 0, window))
                       : nullptr;
}

bool AudioEffectX::closeWindow(VstWindow* window)
{
    return audioMaster && callHost(audioMasterCloseWindow, 0, 0, window) != 0;
}

bool AudioEffectX::getChunkFile(void* nativePath)
{
    return audioMaster && nativePath && callHost(audioMasterGetChunkFile, 0, 0, nativePath) != 0;
}
