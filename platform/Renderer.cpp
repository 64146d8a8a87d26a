#include "platform/Renderer.h"

#include <algorithm>
#include <cmath>

namespace {

// Makes cr's user space the view's coordinates: origin at its lower-left corner, y up.
void flipToViewCoordinates(cairo_t* cr, double height)
{
    cairo_translate(cr, 0.0, height);
    cairo_scale(cr, 1.0, -1.0);
}

void addRoundedRectangle(cairo_t* cr, const Rect& r, double radius)
{
    radius = std::min(radius, std::min(r.width, r.height) * 0.5);
    if (radius <= 0.0) {
        cairo_rectangle(cr, r.x, r.y, r.width, r.height);
        return;
    }
    cairo_new_sub_path(cr);
    cairo_arc(cr, r.maxX() - radius, r.y + radius, radius, -M_PI_2, 0.0);
    cairo_arc(cr, r.maxX() - radius, r.maxY() - radius, radius, 0.0, M_PI_2);
    cairo_arc(cr, r.x + radius, r.maxY() - radius, radius, M_PI_2, M_PI);
    cairo_arc(cr, r.x + radius, r.y + radius, radius, M_PI, 3.0 * M_PI_2);
    cairo_close_path(cr);
}

Rect intersection(const Rect& a, const Rect& b)
{
    const double left = std::max(a.x, b.x);
    const double bottom = std::max(a.y, b.y);
    const double right = std::min(a.maxX(), b.maxX());
    const double top = std::min(a.maxY(), b.maxY());
    if (right <= left || top <= bottom)
        return {};
    return {left, bottom, right - left, top - bottom};
}

} // namespace

DeviceRect Renderer::render(cairo_t* cr, View& root, int scale)
{
    const Rect rootBounds = root.bounds();
    Rect area = intersection(takeDirtyArea(root, {-root.frame().x, -root.frame().y}), rootBounds);
    if (area.isEmpty())
        return {};
    // Whole pixels, so that copies stay exact and no half-covered edge pixel is left behind.
    const double left = std::floor(area.x);
    const double bottom = std::floor(area.y);
    area = {left, bottom, std::ceil(area.maxX()) - left, std::ceil(area.maxY()) - bottom};

    cairo_save(cr);
    cairo_scale(cr, scale, scale);
    flipToViewCoordinates(cr, rootBounds.height);
    cairo_rectangle(cr, area.x, area.y, area.width, area.height);
    cairo_clip(cr);
    drawTree(cr, root, area, scale);
    cairo_restore(cr);

    return {static_cast<int>(area.x) * scale,
            static_cast<int>(rootBounds.height - area.maxY()) * scale,
            static_cast<int>(area.width) * scale, static_cast<int>(area.height) * scale};
}

DeviceRect Renderer::renderAll(cairo_t* cr, View& root, int scale)
{
    root.setNeedsDisplay();
    return render(cr, root, scale);
}

// Collects the marked views' frames in root coordinates and clears their marks.
Rect Renderer::takeDirtyArea(View& view, Point origin)
{
    const Rect frame = {origin.x + view.viewFrame.x, origin.y + view.viewFrame.y,
                        view.viewFrame.width, view.viewFrame.height};
    Rect area = {origin.x + view.vacatedArea.x, origin.y + view.vacatedArea.y,
                 view.vacatedArea.width, view.vacatedArea.height};
    view.vacatedArea = {};
    if (view.displayMarked)
        area = area.united(frame);
    view.displayMarked = false;
    for (auto& child : view.children)
        area = area.united(takeDirtyArea(*child, {frame.x, frame.y}));
    return area;
}

// Draws view and its subtree; area is the part being redrawn, in the view's coordinates.
void Renderer::drawTree(cairo_t* cr, View& view, const Rect& area, int scale)
{
    const Rect bounds = view.bounds();
    cairo_save(cr);
    cairo_rectangle(cr, 0.0, 0.0, bounds.width, bounds.height);
    cairo_clip(cr);
    view.drawRect(cr, bounds);
    for (auto& child : view.children) {
        const Rect& f = child->viewFrame;
        const Rect childArea = intersection({area.x - f.x, area.y - f.y, area.width, area.height},
                                            child->bounds());
        if (childArea.isEmpty() || child->hidden)
            continue;
        cairo_save(cr);
        cairo_translate(cr, f.x, f.y);
        if (child->layered)
            drawLayer(cr, *child, scale);
        else
            drawTree(cr, *child, childArea, scale);
        cairo_restore(cr);
    }
    cairo_restore(cr);
}

// The layer is drawn whole (it is small) and blended over what lies beneath it. It has scale
// pixels a point; its device scale lets both its drawing and its blending work in points.
void Renderer::drawLayer(cairo_t* cr, View& view, int scale)
{
    const int width = static_cast<int>(std::ceil(view.viewFrame.width));
    const int height = static_cast<int>(std::ceil(view.viewFrame.height));
    if (width <= 0 || height <= 0)
        return;
    if (view.layerSurface &&
        (cairo_image_surface_get_width(view.layerSurface) != width * scale ||
         cairo_image_surface_get_height(view.layerSurface) != height * scale)) {
        cairo_surface_destroy(view.layerSurface);
        view.layerSurface = nullptr;
    }
    if (!view.layerSurface) {
        view.layerSurface =
            cairo_image_surface_create(CAIRO_FORMAT_ARGB32, width * scale, height * scale);
        cairo_surface_set_device_scale(view.layerSurface, scale, scale);
    }

    cairo_t* layer = cairo_create(view.layerSurface);
    cairo_set_operator(layer, CAIRO_OPERATOR_CLEAR);
    cairo_paint(layer);
    flipToViewCoordinates(layer, height);
    const Color& c = view.layerColor;
    if (c.alpha > 0.0) {
        cairo_set_operator(layer, CAIRO_OPERATOR_SOURCE);
        cairo_set_source_rgba(layer, c.red, c.green, c.blue, c.alpha);
        addRoundedRectangle(layer, view.bounds(), view.layerRadius);
        cairo_fill(layer);
    }
    cairo_set_operator(layer, CAIRO_OPERATOR_OVER);
    drawTree(layer, view, view.bounds(), scale);
    cairo_destroy(layer);

    cairo_save(cr);
    cairo_translate(cr, 0.0, height);
    cairo_scale(cr, 1.0, -1.0);
    cairo_set_source_surface(cr, view.layerSurface, 0.0, 0.0);
    cairo_set_operator(cr, CAIRO_OPERATOR_OVER);
    cairo_paint(cr);
    cairo_restore(cr);
}
