#include "panel/HalvoCustomDisplayView10.h"

#include <cstdio>

#include "platform/Text.h"

HalvoCustomDisplayView10::HalvoCustomDisplayView10(const Rect& frame, int32_t value)
    : View(frame), _sValue(value)
{
}

void HalvoCustomDisplayView10::drawRect(cairo_t* cr, const Rect& rect)
{
    char text[16];
    std::snprintf(text, sizeof text, "%d", _sValue);
    drawTextCentredInRect(cr, text, rect, TextStyle{12.0, Color::white()});
}
