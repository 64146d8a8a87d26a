#include "panel/HalvoCustomSlider10.h"

#include <algorithm>
#include <cmath>

#include "common/truncate.h"

HalvoCustomSlider10::HalvoCustomSlider10(const Rect& frame, Image background, Image knob)
    : View(frame), sliderCell(std::move(background), std::move(knob))
{
    sliderCell.setSliderCellHeight(truncateToInt32(frame.height));
    sliderCell.setSliderCellWidth(truncateToInt32(frame.width));
    setFloatValue(0.5f);
}

void HalvoCustomSlider10::setFloatValue(float value)
{
    sliderValue = std::isnan(value) ? 0.0f : std::clamp(value, 0.0f, 1.0f);
    setNeedsDisplay();
}

Rect HalvoCustomSlider10::knobRect() const
{
    const Rect b = bounds();
    const Image& thumb = sliderCell.knobImage();
    if (isHorizontal()) {
        const double width = std::min<double>(thumb.width(), b.width);
        return {(b.width - width) * sliderValue, 0.0, width, b.height};
    }
    const double height = std::min<double>(thumb.height(), b.height);
    return {0.0, (b.height - height) * sliderValue, b.width, height};
}

void HalvoCustomSlider10::drawRect(cairo_t* cr, const Rect& rect)
{
    sliderCell.drawBarInside(cr, rect, false);
    sliderCell.drawKnob(cr, knobRect());
    if (_delegate)
        _delegate->knobUpdatedWithIndex(_caseValue, std::nullopt, nullptr);
}

void HalvoCustomSlider10::track(Point p)
{
    const Rect thumb = knobRect();
    if (isHorizontal()) {
        const double travel = frame().width - thumb.width;
        setFloatValue(travel > 0.0 ? static_cast<float>((p.x - thumb.width * 0.5) / travel) : 0.0f);
    } else {
        const double travel = frame().height - thumb.height;
        setFloatValue(travel > 0.0 ? static_cast<float>((p.y - thumb.height * 0.5) / travel)
                                   : 0.0f);
    }
}

void HalvoCustomSlider10::mouseDown(const MouseEvent& event)
{
    track(event.location);
}

void HalvoCustomSlider10::mouseDragged(const MouseEvent& event)
{
    track(event.location);
}
