// All the panel knows of the plug-in it controls: read a parameter, write one, and say when a
// gesture on one begins and ends (a drag, a button press, a wheel turn), so that a host can record
// it as one edit; and, for what the panel shows and resets to, the sample rate the plug-in runs at
// and its current program. Each plug-in format implements it: the VST editor over the effect
// (editor/), the LV2 UI over its port writes.
//
// Threads: the UI thread only, like the panel.
#pragma once

#include <cstdint>

class PanelParameters {
public:
    virtual ~PanelParameters() = default;

    // The value the plug-in runs with now.
    virtual float getParameter(int32_t index) = 0;
    // The panel's own write. A change the panel makes is never echoed back to it.
    virtual void setParameter(int32_t index, float value) = 0;
    // Bracket the writes of one gesture on parameter index.
    virtual void beginGesture(int32_t index) = 0;
    virtual void endGesture(int32_t index) = 0;

    // The host's sample rate in Hz, which the readout turns the speeds into cycles per second
    // with (the engine counts in frames).
    virtual float sampleRate() = 0;
    // The factory program (0 to kNumPrograms - 1) the plug-in has chosen, whose factory values
    // a double-click on a knob goes back to; any other number disables that reset.
    virtual int32_t currentProgram() = 0;
};
