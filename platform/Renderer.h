// Draws a view tree into any cairo surface: an X11 window's or an image in memory. The surface's
// device origin is the root view's upper-left corner; the root's own frame origin is not used.
//
// Scale: the tree is drawn at a whole number of device pixels a point (1, 2, 3), views still
// drawing in points. A view's pictures must be drawn for that scale to come out sharp: a picture
// of scale times the pixels drawn into a rectangle of points lands pixel for pixel. At scale 1
// every pixel is what it was before scales existed.
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
    static DeviceRect render(cairo_t* cr, View& root, int scale = 1);

    // Marks the whole tree and draws it, as after an expose of the whole window.
    static DeviceRect renderAll(cairo_t* cr, View& root, int scale = 1);

private:
    static Rect takeDirtyArea(View& view, Point origin);
    static void drawTree(cairo_t* cr, View& view, const Rect& area, int scale);
    static void drawLayer(cairo_t* cr, View& view, int scale);
};
