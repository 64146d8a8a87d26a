// A picture slider from 0 to 1, horizontal when wider than tall. Every drawing reports its case
// value to the delegate, which then sends the knob values to the effect.
#pragma once

#include <cstdint>

#include "panel/FlatKnobProtocol.h"
#include "panel/HalvoCustomSliderCell10.h"
#include "platform/View.h"

class HalvoCustomSlider10 : public View {
public:
    // The cell takes the frame's size, each side truncated to whole points; the value starts
    // at 0.5.
    HalvoCustomSlider10(const Rect& frame, Image background, Image knob);

    void drawRect(cairo_t* cr, const Rect& rect) override;
    // Pressing or dragging moves the thumb under the pointer.
    void mouseDown(const MouseEvent& event) override;
    void mouseDragged(const MouseEvent& event) override;

    float floatValue() const { return sliderValue; }
    // Clamped to 0..1; anything that is not a number counts as 0.
    void setFloatValue(float value);
    // Where the thumb is drawn for the current value.
    Rect knobRect() const;

    const HalvoCustomSliderCell10& cell() const { return sliderCell; }
    int32_t caseValue() const { return _caseValue; }
    void setCaseValue(int32_t index) { _caseValue = index; }
    FlatKnobProtocol* delegate() const { return _delegate; }
    void setDelegate(FlatKnobProtocol* delegate) { _delegate = delegate; }

private:
    bool isHorizontal() const { return frame().width >= frame().height; }
    void track(Point p);

    HalvoCustomSliderCell10 sliderCell;
    float sliderValue = 0.0f;
    FlatKnobProtocol* _delegate = nullptr; // not owned
    int32_t _caseValue = 0;
};
