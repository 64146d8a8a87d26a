// Carries one press-drag-release sequence to the view that was pressed, wheel notches to the view
// under the pointer, and motion without a button to the root (see View.h for the order). A
// window back end feeds it points in root coordinates (y up).
#pragma once

#include "platform/View.h"

class MouseTracker {
public:
    // Sends mouseDown to the frontmost view under p and returns it; null when p misses root.
    // shift and clickCount are passed on in the event.
    View* press(View& root, Point p, bool shift = false, int clickCount = 1);
    // Both go to the pressed view, wherever the pointer now is; without a press they do nothing.
    void drag(Point p);
    void release(Point p);
    // Forgets the pressed view without telling it, before the tree it belongs to goes away.
    void cancel() { target = nullptr; }
    bool dragging() const { return target != nullptr; }

    // Motion with no button held, and the pointer leaving the window: root alone hears of them.
    static void move(View& root, Point p);
    static void leave(View& root);
    // Sends scrollWheel to the frontmost view under p; nothing when p misses root.
    static void scroll(View& root, Point p, int notches, bool shift);

private:
    View* target = nullptr;
};
