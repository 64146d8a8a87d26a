// Carries one press-drag-release sequence to the view that was pressed (see View.h for the order).
// A window back end feeds it points in root coordinates (y up).
#pragma once

#include "platform/View.h"

class MouseTracker {
public:
    // Sends mouseDown to the frontmost view under p and returns it; null when p misses root.
    View* press(View& root, Point p);
    // Both go to the pressed view, wherever the pointer now is; without a press they do nothing.
    void drag(Point p);
    void release(Point p);
    // Forgets the pressed view without telling it, before the tree it belongs to goes away.
    void cancel() { target = nullptr; }

private:
    View* target = nullptr;
};
