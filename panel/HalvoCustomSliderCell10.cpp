#include "panel/HalvoCustomSliderCell10.h"
#include "panel/PanelPictures.h"

HalvoCustomSliderCell10::HalvoCustomSliderCell10()
    : HalvoCustomSliderCell10(panelPicture("bmp00131"), panelPicture("bmp00130"))
{
}

HalvoCustomSliderCell10::HalvoCustomSliderCell10(Image background, Image knob)
    : backgroundImage(std::move(background)), thumbImage(std::move(knob))
{
}

void HalvoCustomSliderCell10::drawBarInside(cairo_t* cr, const Rect&, bool) const
{
    backgroundImage.drawInRect(cr, {0.0, 0.0, static_cast<double>(_sliderCellWidth),
                                    static_cast<double>(_sliderCellHeight)},
                               Compositing::SourceOver);
}

void HalvoCustomSliderCell10::drawKnob(cairo_t* cr, const Rect& knobRect) const
{
    thumbImage.drawAtPoint(cr, {knobRect.x + 4.0, knobRect.y + 4.0}, Compositing::SourceOver);
}
