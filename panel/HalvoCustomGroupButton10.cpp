#include "panel/HalvoCustomGroupButton10.h"

void HalvoCustomGroupButton10::mouseDown(const MouseEvent&)
{
    if (FlatKnobProtocol* controller = delegate())
        controller->updateGroupButtons(buttonType());
    setNeedsDisplay();
}
