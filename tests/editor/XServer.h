// A private X server for one test: Xvfb on a display number it picks itself, DISPLAY pointed at
// it, and helpers to drive it with xdotool and read back pixels. Ends only what it started.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include <xcb/xcb.h>

class XServer {
public:
    XServer();
    ~XServer();
    bool running() const { return pid > 0 && !display.empty(); }
    const std::string& name() const { return display; }

private:
    pid_t pid = -1;
    std::string display;
};

// Runs a program to completion, calling whileWaiting every few milliseconds meanwhile (a UI
// thread must keep serving its windows while xdotool moves the mouse). Returns its exit status.
int runWhileServing(const std::vector<std::string>& argv, const std::function<void()>& whileWaiting);

// The window's pixels as 0xRRGGBB, row by row from the top.
struct Screenshot {
    int width = 0;
    int height = 0;
    std::vector<uint32_t> pixels;
    uint32_t at(int x, int y) const { return pixels[static_cast<size_t>(y) * width + x] & 0xFFFFFF; }
    // The pixels of an area given in panel coordinates (origin lower left, y up).
    std::vector<uint32_t> area(int x, int y, int w, int h) const;
};
Screenshot screenshot(xcb_connection_t* connection, xcb_window_t window, int width, int height);

// Where a window is on the screen.
struct ScreenPoint {
    int x = 0;
    int y = 0;
};
ScreenPoint screenOrigin(xcb_connection_t* connection, xcb_window_t window);
