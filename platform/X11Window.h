// The X11 back end of the view layer: one child window of a host's window, on an xcb connection
// of its own, showing a view tree at a whole-number scale (device pixels a point). Converts
// coordinates only here (see DevicePixels.h): view x = X11 x / scale, view y = height - X11 y /
// scale.
//
// Mouse: button 1 presses, drags and releases (a press carries Shift and whether it completes a
// double-click), wheel notches (buttons 4 and 5), motion without a button and the pointer leaving
// the window, each passed to the view tree as View.h describes.
//
// Threads: create, idle and destruction must all run on one thread (the host's UI thread).
// X errors arrive as events on our own connection and are ignored, so a host that destroys its
// window before closing the editor costs nothing but a few ignored errors.
#pragma once

#include <cstdint>
#include <memory>

#include <cairo.h>
#include <xcb/xcb.h>

#include "platform/ClickCounter.h"
#include "platform/MouseTracker.h"
#include "platform/Renderer.h"
#include "platform/View.h"

class X11Window {
public:
    // A child of parent at its top-left corner, the size of root's frame times scale (at least 1);
    // null when there is no X server or parent is not a window.
    static std::unique_ptr<X11Window> create(uint32_t parent, View& root, int scale = 1);
    // The same, with the parent's depth and visual instead of the root window's (a parent of
    // another visual refuses a child of the root's: GTK hosts' sockets), and known to the server
    // when this returns, so that a host may use its id on another connection at once.
    static std::unique_ptr<X11Window> createLikeParent(uint32_t parent, View& root, int scale = 1);
    ~X11Window();

    X11Window(const X11Window&) = delete;
    X11Window& operator=(const X11Window&) = delete;

    // Delivers every pending mouse event to the views and remembers exposed areas.
    void handleEvents();
    // Draws what needs display and copies it, with any exposed area, to the window.
    void draw();

    xcb_window_t id() const { return window; }

private:
    struct Look {
        uint8_t depth;
        xcb_visualtype_t* visual;
        xcb_colormap_t colormap;
    };
    // A mapped child of parent with that look on connection, which it takes over; null (and
    // the connection closed) when the server refuses it.
    static std::unique_ptr<X11Window> createChild(xcb_connection_t* connection, xcb_screen_t* screen,
                                                  uint32_t parent, const Look& look, View& root,
                                                  int scale);
    X11Window(xcb_connection_t* connection, xcb_window_t window, cairo_surface_t* windowSurface,
              View& root, int scale);
    void handle(const xcb_generic_event_t& event);
    Point toView(int16_t x, int16_t y) const;
    void addToBlit(const DeviceRect& area);

    xcb_connection_t* connection;
    xcb_window_t window;
    cairo_surface_t* windowSurface;
    cairo_surface_t* backBuffer;
    View& root;
    int scale;
    MouseTracker tracker;
    ClickCounter clicks;
    DeviceRect pendingBlit;
};
