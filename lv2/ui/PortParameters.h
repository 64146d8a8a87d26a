// The panel's parameters over the LV2 plug-in's ports, as the UI sees them: the values the host
// last reported (port_event) or the panel last wrote, and the host's write function for the
// panel's own changes, bracketed by ui:touch when the host offers it.
//
// The rate buttons: port 9 holds a chosen tuning (7 to 10) or "Session rate" (0), and the lit
// button shows the tuning in use, port 10, while port 9 follows the session. A button writes its
// tuning into port 9; the button of the tuning port 9 already holds writes "Session rate".
//
// Echoes: some hosts (jalv) report every value the UI wrote back through port_event. An echo
// must not move a control: the knob at step 99 writes 1.0, which read back would show step 100.
// The values written and not yet reported back are kept per port; a report of one of them, in
// the order written, is an echo and is dropped.
//
// Threads: the host's UI thread only (the LV2 UI's functions all run there).
#pragma once

#include <lv2/ui/ui.h>

#include <cstddef>
#include <cstdint>

#include "engine/Parameters.h"
#include "panel/PanelParameters.h"

class PortParameters final : public PanelParameters {
public:
    PortParameters(LV2UI_Write_Function write, LV2UI_Controller controller,
                   const LV2UI_Touch* touch);

    // The knobs' values; for the rate choice, the tuning the lit button shows (0: none known).
    float getParameter(int32_t index) override;
    void setParameter(int32_t index, float value) override;
    void beginGesture(int32_t index) override;
    void endGesture(int32_t index) override;
    // The session's rate when the host said it (param:sampleRate), else the rate of the tuning in
    // use, which "Session rate" chose as the nearest to the session's.
    float sampleRate() override;
    // LV2 has no programs the UI could see: a double-click goes back to the port's default,
    // which is program 0's value.
    int32_t currentProgram() override { return 0; }

    void setHostSampleRate(float rate) { hostSampleRate = rate; }

    // A value the host reports for a port. Answers the parameter whose control is to show a new
    // value (getParameter), or -1 when nothing shown changes (an echo, the same value, a port
    // without a control).
    int32_t portEvent(uint32_t port, float value);
    // Whether a rate button press changed what the lit button is to show since the last call:
    // the panel lights the button pressed, which after a return to "Session rate" is the wrong
    // one when the session runs at another rate.
    bool takeRateRedisplay();

private:
    // The values written to one port and not yet reported back, oldest first.
    class Echoes {
    public:
        void wrote(float value);
        // Whether value is one of them; if so, it and the older ones are forgotten, else all.
        bool take(float value);

    private:
        static constexpr size_t kCapacity = 16;
        float values[kCapacity] = {};
        size_t count = 0;
    };

    void write(uint32_t port, float value);
    float shownRate() const;

    LV2UI_Write_Function writeFunction;
    LV2UI_Controller controller;
    const LV2UI_Touch* touch; // null when the host offers no ui:touch
    float values[kNumParameters]; // port 9's own value for the rate choice
    float tuning = 0.0f;          // port 10, 0 until the host reports it
    float hostSampleRate = 0.0f;  // 0: the host did not say
    bool rateRedisplay = false;
    Echoes echoes[kNumParameters];
};
