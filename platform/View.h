// The view layer: a retained tree of rectangular views that Renderer draws into any cairo surface
// and MouseTracker feeds with mouse events. It needs no window system; a window back end only
// converts coordinates at its edge, forwards the mouse and blits what Renderer drew.
//
// Coordinates: every view has its origin at its own lower-left corner, x to the right, y up, and
// its frame is given in its superview's coordinates. Pictures are drawn upright. Only the window
// edge knows y-down device coordinates: root y = root height - device y.
//
// Order: subviews are drawn back to front (the first added is at the back) and hit-tested front to
// back. A press goes to the frontmost view under the pointer; that view gets mouseDown, then
// mouseDragged for every motion and mouseUp on release, also when the pointer has left it. A
// wheel notch goes to the frontmost view under the pointer. Pointer motion without a button, and
// the pointer leaving the window, go to the root view alone, which decides what lies under the
// pointer. Every event carries the pointer in the receiving view's own coordinates.
//
// Redisplay: setNeedsDisplay only marks. The renderer's next pass draws what is marked, and a mark
// made while drawing is left for the pass after, so drawing never recurses.
//
// Threads: views belong to the UI thread; nothing here may be touched from any other.
#pragma once

#include <cstddef>
#include <memory>
#include <vector>

#include <cairo.h>

#include "platform/Geometry.h"

struct MouseEvent {
    Point location; // in the receiving view's coordinates
    bool shift = false;
    // 2 for the second press of a double-click, 1 for any other press and for other events.
    int clickCount = 1;
};

struct ScrollEvent {
    Point location; // in the receiving view's coordinates
    int notches = 0; // wheel notches, positive away from the user (up)
    bool shift = false;
};

class View {
public:
    explicit View(const Rect& frame);
    virtual ~View();

    View(const View&) = delete;
    View& operator=(const View&) = delete;

    const Rect& frame() const { return viewFrame; }
    // Marks both the old and the new frame's area, so that nothing is left where the view was.
    void setFrame(const Rect& frame);
    Rect bounds() const { return {0.0, 0.0, viewFrame.width, viewFrame.height}; }

    View* superview() const { return parent; }
    const std::vector<std::unique_ptr<View>>& subviews() const { return children; }

    // Adds a view in front of all others and returns it, still owned by this view.
    template <typename T>
    T* addSubview(std::unique_ptr<T> view)
    {
        T* added = view.get();
        insertSubview(std::move(view), children.size());
        return added;
    }

    // Adds a view behind all others.
    template <typename T>
    T* addSubviewBelowAll(std::unique_ptr<T> view)
    {
        T* added = view.get();
        insertSubview(std::move(view), 0);
        return added;
    }

    void setNeedsDisplay(bool flag = true) { displayMarked = flag; }
    bool needsDisplay() const { return displayMarked; }
    bool needsDisplayAnywhere() const;

    // A hidden view and its subviews are neither drawn nor hit. Hiding or showing marks the
    // view's area, so the next pass draws what lies beneath it.
    void setHidden(bool flag);
    bool isHidden() const { return hidden; }
    // A view that only shows something (a readout over the controls) lets the mouse through to
    // what lies beneath it.
    virtual bool takesMouse() const { return true; }

    // A layer-backed view draws itself and its subviews into a picture of its own, cleared to the
    // layer colour (rounded by the corner radius), and that picture is blended over its superview.
    void setWantsLayer(bool flag) { layered = flag; }
    bool wantsLayer() const { return layered; }
    void setLayerBackgroundColor(const Color& color) { layerColor = color; }
    const Color& layerBackgroundColor() const { return layerColor; }
    void setLayerCornerRadius(double radius) { layerRadius = radius; }
    double layerCornerRadius() const { return layerRadius; }

    // The frontmost view under p (in this view's coordinates) that takes the mouse, this view
    // itself when no subview is hit, null when p lies outside this view.
    View* hitTest(Point p);

    Point convertFromRoot(Point p) const;
    Rect convertToRoot(const Rect& r) const;

    // Draws the view's own content into cr, whose coordinates are this view's, clipped to the area
    // being redrawn. rect is the view's bounds.
    virtual void drawRect(cairo_t* cr, const Rect& rect);

    virtual void mouseDown(const MouseEvent& event);
    virtual void mouseDragged(const MouseEvent& event);
    virtual void mouseUp(const MouseEvent& event);
    virtual void scrollWheel(const ScrollEvent& event);
    // Root view only (see Order above).
    virtual void mouseMoved(const MouseEvent& event);
    virtual void mouseExited();

private:
    friend class Renderer;

    void insertSubview(std::unique_ptr<View> view, size_t position);

    Rect viewFrame;
    View* parent = nullptr;
    std::vector<std::unique_ptr<View>> children;
    bool displayMarked = true; // a new view has never been drawn
    Rect vacatedArea;          // where the view was before a move, in the superview's coordinates
    bool hidden = false;
    bool layered = false;
    Color layerColor = Color::clear();
    double layerRadius = 0.0;
    cairo_surface_t* layerSurface = nullptr; // kept between passes; owned
};
