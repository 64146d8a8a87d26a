#include "panel/HalvoCustomKickButton10.h"

HalvoCustomKickButton10::HalvoCustomKickButton10(const Rect& frame, Image imageOne,
                                                 Image imageTwo, int32_t buttonType)
    : HalvoCustomImageView10(frame, std::move(imageOne), std::move(imageTwo)),
      _buttonType(buttonType)
{
}

void HalvoCustomKickButton10::mouseDown(const MouseEvent& event)
{
    HalvoCustomImageView10::mouseDown(event);
    setImageState(1);
    setNeedsDisplay();
}

void HalvoCustomKickButton10::mouseUp(const MouseEvent&)
{
    setImageState(0);
    setNeedsDisplay();
}
