// A rotary knob: shows the filmstrip frame of its overlay's step, or of its finer value (see
// ControlPoint10::setFineValue). Layer-backed, so that the frame's transparent corners let the
// panel show through. The overlay (ControlPoint10) covers it and takes the mouse.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "panel/ControlPoint10.h"
#include "platform/Image.h"
#include "platform/View.h"

// The 128 frames of the knob, shared by every knob of a panel.
using KnobFilmstrip = std::shared_ptr<const std::vector<Image>>;

class FlatKnob10 : public View {
public:
    FlatKnob10(const Rect& frame, int32_t insets, int32_t controlPointDiameter,
               KnobFilmstrip pictures);

    // Draws the frame of the overlay's step. A missing frame draws nothing.
    void drawRect(cairo_t* cr, const Rect& rect) override;

    ControlPoint10* controlPoint() const { return _controlPoint; }
    const KnobFilmstrip& animationImages() const { return _animationImages; }
    int32_t control() const { return _control; }
    void setControl(int32_t control) { _control = control; }

private:
    KnobFilmstrip _animationImages;
    int32_t _control = 0;
    ControlPoint10* _controlPoint; // the only subview
};
