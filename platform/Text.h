// Short texts in the view layer's default face (cairo's own text, "sans"). cr's user space has
// y up (see View.h); the text is drawn upright.
#pragma once

#include <cairo.h>

#include "platform/Geometry.h"

struct TextStyle {
    double size = 12.0;
    Color color = Color::white();
};

// The line's lower-left corner (its descent below the baseline) at p.
void drawTextAtPoint(cairo_t* cr, const char* text, Point p, const TextStyle& style);

// Centred across r, the line's top at r's top edge.
void drawTextCentredInRect(cairo_t* cr, const char* text, const Rect& r, const TextStyle& style);
