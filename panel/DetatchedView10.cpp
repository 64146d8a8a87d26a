#include "panel/DetatchedView10.h"

DetatchedView10::DetatchedView10(Image image, const Rect& frame)
    : View(frame), BackgroundImage(std::move(image))
{
}

void DetatchedView10::drawRect(cairo_t* cr, const Rect& rect)
{
    BackgroundImage.drawInRect(cr, {0.0, 0.0, rect.width, rect.height}, Compositing::Copy, 1.0);
}
