#include "panel/ControlPoint10.h"

#include <algorithm>
#include <cmath>

#include "common/truncate.h"
#include "panel/KnobArithmetic.h"

ControlPoint10::ControlPoint10(const Rect& frame, int32_t insets, int32_t controlPointDiameter,
                               int32_t position)
    : View(frame), _insets(insets), _controlPointDiameter(controlPointDiameter)
{
    if (position == 0) {
        _currentAngle = 225;
        _currentDraggedAngle = 225.0f;
    } else if (position == 1) {
        // 85 degrees, a little past step 50's 88.6: where a fresh knob's drag starts.
        _currentAngle = 85;
        _currentDraggedAngle = 85.0f;
        _previousValue = 50;
        _value = 50;
    }
}

void ControlPoint10::setIntValue(int32_t v)
{
    _fineValue.reset();
    _value = v;
    _currentDraggedAngle = knob::angleForStep(v, count());
    _currentAngle = knob::dragStartForStep(v, count());
    _previousValue = v;
    setNeedsDisplay();
}

void ControlPoint10::setFineValue(float value)
{
    setIntValue(knob::stepForValue(value));
    _fineValue = value;
}

void ControlPoint10::mouseDown(const MouseEvent& event)
{
    _mouseDownPosition = truncateToInt32(event.location.y);
    _press = event.clickCount >= 2 ? Press::Reset : event.shift ? Press::Fine : Press::Plain;
    if (!_delegate)
        return;
    _delegate->knobPressed(superview());
    if (_press == Press::Reset)
        _delegate->knobDoubleClicked(superview());
}

void ControlPoint10::mouseDragged(const MouseEvent& event)
{
    switch (_press) {
    case Press::Plain:
        updateWithYcoord(event);
        break;
    case Press::Fine: {
        // In 64 bits: a pointer far outside the window must not overflow.
        const int64_t rise = int64_t{truncateToInt32(event.location.y)} - _mouseDownPosition;
        if (_delegate)
            _delegate->knobFineDragged(
                superview(), static_cast<int32_t>(std::clamp<int64_t>(rise, INT32_MIN, INT32_MAX)));
        break;
    }
    case Press::Reset: // the rest of a double-click's press does nothing
        break;
    }
}

void ControlPoint10::mouseUp(const MouseEvent&)
{
    // Our gestures leave the drag start where the value they wrote put it.
    if (_press == Press::Plain)
        _currentAngle = truncateToInt32(_currentDraggedAngle);
    _press = Press::Plain;
    if (_delegate)
        _delegate->knobReleased(superview());
}

void ControlPoint10::scrollWheel(const ScrollEvent& event)
{
    if (_delegate)
        _delegate->knobScrolled(superview(), event.notches, event.shift);
}

void ControlPoint10::updateWithYcoord(const MouseEvent& event)
{
    const int32_t y = truncateToInt32(event.location.y);
    const float angle = knob::dragAngle(_currentAngle, _mouseDownPosition, y);
    _currentDraggedAngle = angle;
    const int32_t step = knob::stepForAngle(angle, count());
    _value = step;
    if (step == _previousValue)
        return;
    _fineValue.reset();
    _previousValue = step;
    if (_delegate) {
        std::optional<int32_t> entry;
        if (step >= 0 && step < count())
            entry = _data[static_cast<size_t>(step)];
        _delegate->knobUpdatedWithIndex(step, entry, superview());
    }
    _currentDraggedAngle = knob::angleForStep(step, count());
    setNeedsDisplay();
}

void ControlPoint10::drawRect(cairo_t* cr, const Rect& rect)
{
    if (View* knobView = superview())
        knobView->drawRect(cr, rect);
}

Rect ControlPoint10::makeRectWithWidth(int32_t w) const
{
    const Rect b = bounds();
    const double radius = std::trunc(b.width * 0.5 - _insets - 4.0);
    const double theta = _currentDraggedAngle * M_PI / 180.0;
    const int32_t half = w / 2;
    return {radius * std::cos(theta) + b.width * 0.5 - half,
            radius * std::sin(theta) + b.height * 0.5 - half, static_cast<double>(w),
            static_cast<double>(w)};
}
