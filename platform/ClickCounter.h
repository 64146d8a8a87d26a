// Tells a double-click from two single clicks, as desktops do: a press is the second of a
// double-click when it comes within the double-click time of the press before it and the pointer
// did not move in between. So a press that went on into a drag is never half of one, and the
// press after a double-click starts a new count. A motion event that leaves the pointer where it
// was pressed is no movement: servers send them (XTEST moves to the same spot, sub-pixel motion
// of a fine mouse), and a double-click must survive them.
#pragma once

#include <cstdint>

class ClickCounter {
public:
    // GTK's and Qt's default; desktops rarely change it.
    static constexpr uint32_t kDoubleClickMilliseconds = 400;

    // A press at time (milliseconds of a wrapping 32-bit clock, as X11 event times) at (x, y) in
    // the window's pixels: 2 when it completes a double-click, else 1.
    int press(uint32_t time, int32_t x, int32_t y)
    {
        if (waiting && static_cast<uint32_t>(time - firstTime) <= kDoubleClickMilliseconds) {
            waiting = false;
            return 2;
        }
        waiting = true;
        firstTime = time;
        pressX = x;
        pressY = y;
        return 1;
    }

    // Any pointer motion, with or without a button held, to (x, y) in the window's pixels.
    void moved(int32_t x, int32_t y)
    {
        if (x != pressX || y != pressY)
            waiting = false;
    }

private:
    bool waiting = false; // a first press was made and nothing has moved since
    uint32_t firstTime = 0;
    int32_t pressX = 0, pressY = 0; // where the first press was made
};
