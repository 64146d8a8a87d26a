// A two-state picture: picture one in state 0, picture two in any other state, blended over what
// lies beneath. A press toggles the state and tells the delegate that a control changed.
#pragma once

#include <cstdint>

#include "panel/FlatKnobProtocol.h"
#include "platform/Image.h"
#include "platform/View.h"

class HalvoCustomImageView10 : public View {
public:
    HalvoCustomImageView10(const Rect& frame, Image imageOne, Image imageTwo);

    void drawRect(cairo_t* cr, const Rect& rect) override;
    void mouseDown(const MouseEvent& event) override;

    uint8_t imageState() const { return _imageState; }
    // Does not request redisplay; whoever changes the state does.
    void setImageState(uint8_t state) { _imageState = state; }
    FlatKnobProtocol* delegate() const { return _delegate; }
    void setDelegate(FlatKnobProtocol* delegate) { _delegate = delegate; }

private:
    FlatKnobProtocol* _delegate = nullptr; // the panel controller; not owned
    Image state1Image;
    Image state2Image;
    uint8_t _imageState = 0;
};
