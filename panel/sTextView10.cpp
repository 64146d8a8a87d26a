#include "panel/sTextView10.h"

#include <cstdio>

#include "panel/HalvoUiView10.h"
#include "platform/Text.h"

PanFigures panFigures(int p)
{
    if (p >= 51)
        return {0, 2 * p - 100};
    if (p <= 49)
        return {(50 - p) * 2, 0};
    return {0, 0};
}

sTextView10::sTextView10(const Rect& frame)
    : View(frame), tColor{242.0 / 255.0, 240.0 / 255.0, 238.0 / 256.0, 1.0}
{
}

void sTextView10::drawRect(cairo_t* cr, const Rect&)
{
    // Nothing is filled: the view stays see-through.
    if (_owner) {
        const PanFigures figures = panFigures(_owner->panningSliderVal());
        const TextStyle style{12.0, tColor};
        const int shown[] = {_owner->volumeSliderVal(), figures.left, figures.right};
        const Point places[] = {{120.0, 234.0}, {363.0, 234.0}, {494.0, 234.0}};
        for (int i = 0; i < 3; ++i) {
            char text[16];
            std::snprintf(text, sizeof text, "%d%%", shown[i]);
            drawTextAtPoint(cr, text, places[i], style);
        }
    }
    setNeedsDisplay(false);
}
