// Looks into an X server from outside, as a person looking at the screen would: which windows
// there are, what their titles say and which pixels they show. For tests that drive another
// program's GUI (Ardour's) and can only see its windows.
#pragma once

#include <xcb/xcb.h>

#include <cstdint>
#include <string>
#include <vector>

class XInspector {
public:
    // Connects to $DISPLAY.
    XInspector();
    ~XInspector();
    XInspector(const XInspector&) = delete;
    XInspector& operator=(const XInspector&) = delete;

    bool connected() const { return !xcb_connection_has_error(connection); }

    // The first mapped window of exactly this size anywhere in the tree, or 0.
    xcb_window_t findWindowOfSize(int width, int height);

    struct TopLevel {
        xcb_window_t window;
        std::string title;
    };
    // The top-level windows and their titles (_NET_WM_NAME, else WM_NAME).
    std::vector<TopLevel> topLevels();

    // The window's pixels row by row from its top left corner, as 0xRRGGBB; empty when the
    // server gives none (no such window, or not that large).
    std::vector<uint32_t> pixels(xcb_window_t window, int width, int height);

private:
    std::string property(xcb_window_t window, xcb_atom_t name);
    xcb_atom_t atom(const char* name);

    xcb_connection_t* connection;
    xcb_window_t root = 0;
};
