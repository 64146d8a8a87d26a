#include "platform/View.h"

View::View(const Rect& frame) : viewFrame(frame) {}

View::~View()
{
    if (layerSurface)
        cairo_surface_destroy(layerSurface);
}

void View::setFrame(const Rect& frame)
{
    vacatedArea = vacatedArea.united(viewFrame);
    viewFrame = frame;
    displayMarked = true;
}

void View::setHidden(bool flag)
{
    if (hidden != flag)
        displayMarked = true;
    hidden = flag;
}

void View::insertSubview(std::unique_ptr<View> view, size_t position)
{
    if (!view)
        return;
    view->parent = this;
    children.insert(children.begin() + static_cast<std::ptrdiff_t>(position), std::move(view));
}

bool View::needsDisplayAnywhere() const
{
    if (displayMarked)
        return true;
    for (const auto& child : children)
        if (child->needsDisplayAnywhere())
            return true;
    return false;
}

View* View::hitTest(Point p)
{
    if (hidden || !takesMouse() || !bounds().contains(p))
        return nullptr;
    for (auto child = children.rbegin(); child != children.rend(); ++child) {
        const Rect& f = (*child)->frame();
        if (View* hit = (*child)->hitTest({p.x - f.x, p.y - f.y}))
            return hit;
    }
    return this;
}

Point View::convertFromRoot(Point p) const
{
    for (const View* v = this; v->parent; v = v->parent) {
        p.x -= v->viewFrame.x;
        p.y -= v->viewFrame.y;
    }
    return p;
}

Rect View::convertToRoot(const Rect& r) const
{
    Rect result = r;
    for (const View* v = this; v->parent; v = v->parent) {
        result.x += v->viewFrame.x;
        result.y += v->viewFrame.y;
    }
    return result;
}

void View::drawRect(cairo_t*, const Rect&) {}

void View::mouseDown(const MouseEvent&) {}

void View::mouseDragged(const MouseEvent&) {}

void View::mouseUp(const MouseEvent&) {}

void View::scrollWheel(const ScrollEvent&) {}

void View::mouseMoved(const MouseEvent&) {}

void View::mouseExited() {}
