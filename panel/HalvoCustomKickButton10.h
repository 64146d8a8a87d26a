// A momentary picture button that stands for a value (its type): picture two while held.
#pragma once

#include "panel/HalvoCustomImageView10.h"

class HalvoCustomKickButton10 : public HalvoCustomImageView10 {
public:
    HalvoCustomKickButton10(const Rect& frame, Image imageOne, Image imageTwo,
                            int32_t buttonType);

    void mouseDown(const MouseEvent& event) override;
    void mouseUp(const MouseEvent& event) override;

    void setNewDelegate(FlatKnobProtocol* controller) { setDelegate(controller); }
    int32_t buttonType() const { return _buttonType; }

private:
    int32_t _buttonType;
};
