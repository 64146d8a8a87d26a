// What the panel's controls tell their controller. Controls hold the controller through this
// interface only.
#pragma once

#include <cstdint>
#include <optional>

class View;

class FlatKnobProtocol {
public:
    // A control changed: the knob's overlay passes its new step, the step's entry of its data and
    // the knob; other controls pass 0 and nothing. The controller sends every knob value.
    virtual void knobUpdatedWithIndex(int32_t index, std::optional<int32_t> value,
                                      View* sender) = 0;
    // The mouse went down on a knob (sender) and came up again: one gesture, whatever steps the
    // drag between them changed.
    virtual void knobPressed(View* sender) = 0;
    virtual void knobReleased(View* sender) = 0;
    // A rate button was pressed; buttonType is the rate choice it stands for.
    virtual void updateGroupButtons(int32_t buttonType) = 0;

    // Our own gestures on a knob (sender), beyond the plain drag. A fine drag's motion (rise:
    // points the pointer went up since the press) and a double-click come between knobPressed
    // and knobReleased; a wheel turn by notches (positive up) is a gesture by itself.
    virtual void knobFineDragged(View* sender, int32_t rise) = 0;
    virtual void knobDoubleClicked(View* sender) = 0;
    virtual void knobScrolled(View* sender, int32_t notches, bool fine) = 0;

protected:
    ~FlatKnobProtocol() = default;
};
