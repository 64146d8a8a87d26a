// Draws a view tree into any cairo surface: an X11 window's or an image in memory. The surface's
// device origin is the root view's upper-left corner; the root's own frame origin is not used.
#pragma once

#include <cairo.h>

#include "platform/View.h"

// An area of the target surface in device pixels, y down from the top edge.
struct DeviceRect {
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;

    bool isEmpty() const { return width <= 0 || height <= 0; }
    bool operator==(const DeviceRect&) const = default;
};

class Renderer {
public:
    // Draws every view that needs display, together with whatever lies above or below it, and
    // returns the device area drawn (empty when nothing was marked). The marks are cleared before
    // any drawing, so a view that asks for display while drawing is drawn again in the next pass.
    static DeviceRect render(cairo_t* cr, View& root);

    // Marks the whole tree and draws it, as after an expose of the whole window.
    static DeviceRect renderAll(cairo_t* cr, View& root);

private:
    static Rect takeDirtyArea(View& view, Point origin);
    static void drawTree(cairo_t* cr, View& view, const Rect& area);
    static void drawLayer(cairo_t* cr, View& view);
};
