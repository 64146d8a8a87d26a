// When the value readout shows, and for which control: for the whole of a gesture on a control,
// from the press (or a wheel turn) on; and once the pointer has rested over a control for half a
// second. It goes on release, when the pointer leaves the control, and when it leaves the window.
// After a press, resting shows nothing until the pointer has moved again, so that a readout
// that went on release does not come back by itself.
//
// Time comes only from the idle calls (every 5 to 66 ms in hosts): a rest starts at the first
// idle after the last motion, which is as precise as the readout can show it anyway.
#pragma once

#include <chrono>

class View;

class ReadoutTiming {
public:
    using Clock = std::chrono::steady_clock;
    static constexpr Clock::duration kRest = std::chrono::milliseconds(500);

    // The pointer moved without a button and is now over control (null: over no control).
    void pointerMoved(View* control);
    // The pointer left the window.
    void pointerLeft();
    // A press on control starts a gesture, the release ends it.
    void gestureBegan(View* control);
    void gestureEnded();
    // A wheel turn on control: shown at once, and for as long as the pointer stays on it.
    void wheelTurned(View* control);
    void idle(Clock::time_point now);

    // The control the readout is for now, or null.
    View* shown() const;

private:
    View* hovered = nullptr;
    View* pressed = nullptr;
    bool moved = false;      // a motion came since the last idle
    bool restArmed = false;  // the pointer moved since the last press
    bool restShown = false;  // the readout shows for hovered
    Clock::time_point restSince;
};
