#include "platform/MouseTracker.h"

View* MouseTracker::press(View& root, Point p)
{
    target = root.hitTest(p);
    if (target)
        target->mouseDown({target->convertFromRoot(p)});
    return target;
}

void MouseTracker::drag(Point p)
{
    if (target)
        target->mouseDragged({target->convertFromRoot(p)});
}

void MouseTracker::release(Point p)
{
    View* released = target;
    target = nullptr;
    if (released)
        released->mouseUp({released->convertFromRoot(p)});
}
