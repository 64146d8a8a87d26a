// The knob's transparent overlay: holds the knob's step and turns vertical drags into steps, which
// it reports to its delegate. Values from the effect arrive through setIntValue, which reports
// nothing. Drawing repeats the knob's picture.
//
// Our own gestures go to the delegate instead of the step arithmetic: a press with Shift held
// drags finely (knobFineDragged), the second press of a double-click resets (knobDoubleClicked),
// the wheel turns (knobScrolled). What they write is shown with setFineValue.
#pragma once

#include <cstdint>
#include <optional>
#include <utility>
#include <vector>

#include "panel/FlatKnobProtocol.h"
#include "platform/View.h"

class ControlPoint10 : public View {
public:
    // Position 1 starts at step 50 with a drag start of 85 degrees, position 0 at step 0 and 225
    // degrees; any other position starts everything at 0.
    ControlPoint10(const Rect& frame, int32_t insets, int32_t controlPointDiameter,
                   int32_t position);

    // Shows step v. The drag start and the last reported step move to v as well, so that the
    // next drag continues from what is shown.
    void setIntValue(int32_t v);
    int32_t ReturnValue() const { return _value; }
    // Shows value, finer than a step: the step is the one a value from the effect would give, the
    // picture the frame nearest to value. Anything that sets a step goes back to step pictures.
    void setFineValue(float value);
    std::optional<float> fineValue() const { return _fineValue; }

    void mouseDown(const MouseEvent& event) override;
    void mouseDragged(const MouseEvent& event) override;
    void mouseUp(const MouseEvent& event) override;
    void scrollWheel(const ScrollEvent& event) override;
    void updateWithYcoord(const MouseEvent& event);
    void drawRect(cairo_t* cr, const Rect& rect) override;

    // Where a pointer dot of size w would sit on the knob's rim; nothing on the panel draws it.
    Rect makeRectWithWidth(int32_t w) const;

    float currentDraggedAngle() const { return _currentDraggedAngle; }
    void setCurrentDraggedAngle(float angle) { _currentDraggedAngle = angle; }
    int32_t currentAngle() const { return _currentAngle; }
    void setCurrentAngle(int32_t angle) { _currentAngle = angle; }
    int32_t mouseDownPosition() const { return _mouseDownPosition; }
    void setMouseDownPosition(int32_t y) { _mouseDownPosition = y; }
    int32_t previousValue() const { return _previousValue; }
    void setPreviousValue(int32_t step) { _previousValue = step; }
    int32_t value() const { return _value; }
    void setValue(int32_t step) { _value = step; }
    int32_t insets() const { return _insets; }
    void setInsets(int32_t insets) { _insets = insets; }
    int32_t controlPointDiameter() const { return _controlPointDiameter; }
    void setControlPointDiameter(int32_t diameter) { _controlPointDiameter = diameter; }
    const std::vector<int32_t>& data() const { return _data; }
    void setData(std::vector<int32_t> steps) { _data = std::move(steps); }
    FlatKnobProtocol* delegate() const { return _delegate; }
    void setDelegate(FlatKnobProtocol* delegate) { _delegate = delegate; }

private:
    // What the press under way does with the drag that follows.
    enum class Press { Plain, Fine, Reset };

    int32_t count() const { return static_cast<int32_t>(_data.size()); }

    float _currentDraggedAngle = 0.0f;
    int32_t _currentAngle = 0;
    int32_t _mouseDownPosition = 0;
    int32_t _previousValue = 0;
    int32_t _value = 0;
    int32_t _insets = 0;
    int32_t _controlPointDiameter = 0;
    std::vector<int32_t> _data;
    FlatKnobProtocol* _delegate = nullptr; // the panel controller; not owned
    Press _press = Press::Plain;
    std::optional<float> _fineValue;
};
