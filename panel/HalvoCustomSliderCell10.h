// The drawing of a picture slider: a bar picture stretched over the cell's size and a thumb
// picture at the thumb's place.
#pragma once

#include <cstdint>

#include <cairo.h>

#include "platform/Image.h"

class HalvoCustomSliderCell10 {
public:
    // The panel's own pictures: bar "bmp00131", thumb "bmp00130".
    HalvoCustomSliderCell10();
    HalvoCustomSliderCell10(Image background, Image knob);

    // The bar fills (0, 0, width, height) of the cell; the rectangle passed is not used.
    void drawBarInside(cairo_t* cr, const Rect& rect, bool flipped) const;
    // The thumb at its own size, its lower-left corner 4 points right of and 4 points above the
    // thumb rectangle's lower-left corner.
    void drawKnob(cairo_t* cr, const Rect& knobRect) const;

    const Image& knobImage() const { return thumbImage; }
    int32_t SliderCellWidth() const { return _sliderCellWidth; }
    void setSliderCellWidth(int32_t width) { _sliderCellWidth = width; }
    int32_t SliderCellHeight() const { return _sliderCellHeight; }
    void setSliderCellHeight(int32_t height) { _sliderCellHeight = height; }

private:
    Image backgroundImage;
    Image thumbImage;
    int32_t _sliderCellWidth = 0;
    int32_t _sliderCellHeight = 0;
};
