#include "panel/HalvoCustomImageView10.h"

HalvoCustomImageView10::HalvoCustomImageView10(const Rect& frame, Image imageOne, Image imageTwo)
    : View(frame), state1Image(std::move(imageOne)), state2Image(std::move(imageTwo))
{
}

void HalvoCustomImageView10::drawRect(cairo_t* cr, const Rect& rect)
{
    const Image& shown = _imageState == 0 ? state1Image : state2Image;
    shown.drawInRect(cr, {0.0, 0.0, rect.width, rect.height}, Compositing::SourceOver, 1.0);
}

void HalvoCustomImageView10::mouseDown(const MouseEvent&)
{
    _imageState = _imageState == 0 ? 1 : 0;
    if (_delegate)
        _delegate->knobUpdatedWithIndex(0, std::nullopt, nullptr);
    setNeedsDisplay();
}
