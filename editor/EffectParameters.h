// The panel's parameters over a VST 2.4 effect. The panel's writes are marked as its own
// (inPanelUpdate) so that the effect does not echo them to the panel, and are told to the host
// the way VST 2.4 hosts expect: audioMasterBeginEdit when a gesture starts, audioMasterAutomate
// for every value the panel changes, audioMasterEndEdit when it ends. Without that a host keeps
// its own copy of the old value: it neither marks the session modified nor saves the change.
//
// Silent (HVTREMOLO_SILENT_PANEL=1 in the environment): the panel writes into the effect and
// tells the host nothing, for hosts or tests that want the effect alone to hear the panel.
//
// Threads: the UI thread (the one that runs effEditIdle); so are the host calls made from here.
#pragma once

#include "host/AudioEffectX.h"
#include "panel/PanelParameters.h"

class EffectParameters final : public PanelParameters {
public:
    EffectParameters(AudioEffectX* effect, bool tellHost) : effect(effect), tellHost(tellHost) {}

    float getParameter(int32_t index) override { return effect->getParameter(index); }
    void setParameter(int32_t index, float value) override;
    void beginGesture(int32_t index) override;
    void endGesture(int32_t index) override;
    // As the host set it (effSetSampleRate), and as the host chose the program.
    float sampleRate() override { return effect->getSampleRate(); }
    int32_t currentProgram() override { return effect->getProgram(); }

    // Whether the environment asks for the silent panel: HVTREMOLO_SILENT_PANEL=1.
    static bool silentPanelRequested();

private:
    AudioEffectX* effect; // borrowed: the effect owns the editor that owns this
    bool tellHost;
};
