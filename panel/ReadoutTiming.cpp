#include "panel/ReadoutTiming.h"

void ReadoutTiming::pointerMoved(View* control)
{
    if (control != hovered)
        restShown = false;
    hovered = control;
    moved = true;
    restArmed = true;
}

void ReadoutTiming::pointerLeft()
{
    hovered = nullptr;
    restShown = false;
}

void ReadoutTiming::gestureBegan(View* control)
{
    pressed = control;
    restArmed = false;
    restShown = false;
}

void ReadoutTiming::gestureEnded()
{
    pressed = nullptr;
}

void ReadoutTiming::wheelTurned(View* control)
{
    hovered = control;
    restShown = true;
}

void ReadoutTiming::idle(Clock::time_point now)
{
    if (moved) {
        moved = false;
        restSince = now;
        return;
    }
    if (hovered && restArmed && now - restSince >= kRest)
        restShown = true;
}

View* ReadoutTiming::shown() const
{
    if (pressed)
        return pressed;
    return restShown ? hovered : nullptr;
}
