#include "platform/MouseTracker.h"

View* MouseTracker::press(View& root, Point p, bool shift, int clickCount)
{
    target = root.hitTest(p);
    if (target)
        target->mouseDown({target->convertFromRoot(p), shift, clickCount});
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

void MouseTracker::move(View& root, Point p)
{
    root.mouseMoved({p});
}

void MouseTracker::leave(View& root)
{
    root.mouseExited();
}

void MouseTracker::scroll(View& root, Point p, int notches, bool shift)
{
    if (View* under = root.hitTest(p))
        under->scrollWheel({under->convertFromRoot(p), notches, shift});
}
