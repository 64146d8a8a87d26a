// All the panel knows of the plug-in it controls: read a parameter, write one, and say when a
// gesture on one begins and ends (a drag, a button press), so that a host can record it as one
// edit. Each plug-in format implements it: the VST editor over the effect (editor/), the LV2 UI
// over its port writes.
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
};
