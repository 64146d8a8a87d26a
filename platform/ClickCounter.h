// Tells a double-click from two single clicks, as desktops do: a press is the second of a
// double-click when it comes within the double-click time of the press before it and the pointer
// did not move in between. So a press that went on into a drag is never half of one, and the
// press after a double-click starts a new count.
#pragma once

#include <cstdint>

class ClickCounter {
public:
    // GTK's and Qt's default; desktops rarely change it.
    static constexpr uint32_t kDoubleClickMilliseconds = 400;

    // A press at time (milliseconds of a wrapping 32-bit clock, as X11 event times): 2 when it
    // completes a double-click, else 1.
    int press(uint32_t time)
    {
        if (waiting && static_cast<uint32_t>(time - firstTime) <= kDoubleClickMilliseconds) {
            waiting = false;
            return 2;
        }
        waiting = true;
        firstTime = time;
        return 1;
    }

    // Any pointer motion, with or without a button held.
    void moved() { waiting = false; }

private:
    bool waiting = false; // a first press was made and nothing has moved since
    uint32_t firstTime = 0;
};
