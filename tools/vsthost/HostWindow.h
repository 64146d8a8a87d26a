// A top-level X11 window of the host's own, as a host makes one to embed a plug-in's editor in.
// Used by the stand-alone editor preview and the end-to-end tests.
#pragma once

#include <cstdint>
#include <string>

#include <xcb/xcb.h>

class HostWindow {
public:
    // Connects to $DISPLAY and maps a window of the given size at (x, y); ok() tells whether it
    // worked.
    HostWindow(int x, int y, int width, int height, const std::string& title);
    ~HostWindow();

    HostWindow(const HostWindow&) = delete;
    HostWindow& operator=(const HostWindow&) = delete;

    bool ok() const { return window != 0; }
    uint32_t id() const { return window; }
    xcb_connection_t* connection() const { return xcb; }

    // Handles pending events; false once the user asked the window manager to close it.
    bool pump();
    // Destroys the window now, as a host does that tears down before closing the editor.
    void destroy();

private:
    xcb_connection_t* xcb = nullptr;
    xcb_window_t window = 0;
    xcb_atom_t deleteAtom = 0;
    bool closed = false;
};
