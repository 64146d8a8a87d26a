#include "panel/FlatKnob10.h"

#include "panel/FineKnobArithmetic.h"
#include "panel/KnobArithmetic.h"

FlatKnob10::FlatKnob10(const Rect& frame, int32_t insets, int32_t controlPointDiameter,
                       KnobFilmstrip pictures)
    : View(frame), _animationImages(std::move(pictures))
{
    setWantsLayer(true);
    setLayerBackgroundColor(Color::clear());
    setLayerCornerRadius(15.0);
    _controlPoint = addSubview(std::make_unique<ControlPoint10>(
        Rect{0.0, 0.0, frame.width, frame.height}, insets, controlPointDiameter, 1));
}

void FlatKnob10::drawRect(cairo_t* cr, const Rect& rect)
{
    // No redisplay request from here: a knob is drawn again only when its step changes.
    if (!_animationImages)
        return;
    const std::optional<float> fine = _controlPoint->fineValue();
    const size_t frame = static_cast<size_t>(fine ? knob::frameForValue(*fine)
                                                  : knob::frameForStep(_controlPoint->ReturnValue()));
    if (frame < _animationImages->size())
        (*_animationImages)[frame].drawInRect(cr, {0.0, 0.0, rect.width, rect.height},
                                              Compositing::Copy);
}
