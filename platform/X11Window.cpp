#include "platform/X11Window.h"

#include <algorithm>

#include <cairo-xcb.h>

#include "platform/DevicePixels.h"

namespace {

xcb_screen_t* screenOf(xcb_connection_t* connection, int number)
{
    xcb_screen_iterator_t it = xcb_setup_roots_iterator(xcb_get_setup(connection));
    for (int i = 0; it.rem; xcb_screen_next(&it), ++i)
        if (i == number)
            return it.data;
    return nullptr;
}

xcb_visualtype_t* visualOf(xcb_screen_t* screen, xcb_visualid_t id)
{
    for (auto depths = xcb_screen_allowed_depths_iterator(screen); depths.rem;
         xcb_depth_next(&depths)) {
        for (auto visuals = xcb_depth_visuals_iterator(depths.data); visuals.rem;
             xcb_visualtype_next(&visuals)) {
            if (visuals.data->visual_id == id)
                return visuals.data;
        }
    }
    return nullptr;
}

// Our own connection to the default display, and its screen; null when there is no X server.
xcb_connection_t* connectToScreen(xcb_screen_t*& screen)
{
    int screenNumber = 0;
    xcb_connection_t* connection = xcb_connect(nullptr, &screenNumber);
    screen = xcb_connection_has_error(connection) ? nullptr : screenOf(connection, screenNumber);
    if (!screen) {
        xcb_disconnect(connection);
        return nullptr;
    }
    return connection;
}

// Hosts size their window from the editor rectangle; the hints tell window managers of hosts
// that reparent us that the panel does not resize.
void setFixedSize(xcb_connection_t* connection, xcb_window_t window, uint16_t width,
                  uint16_t height)
{
    constexpr uint32_t kMinSize = 1 << 4;
    constexpr uint32_t kMaxSize = 1 << 5;
    uint32_t hints[18] = {};
    hints[0] = kMinSize | kMaxSize;
    hints[5] = hints[7] = width;
    hints[6] = hints[8] = height;
    xcb_change_property(connection, XCB_PROP_MODE_REPLACE, window, XCB_ATOM_WM_NORMAL_HINTS,
                        XCB_ATOM_WM_SIZE_HINTS, 32, 18, hints);
}

DeviceRect unite(const DeviceRect& a, const DeviceRect& b)
{
    if (a.isEmpty())
        return b;
    if (b.isEmpty())
        return a;
    const int left = std::min(a.x, b.x);
    const int top = std::min(a.y, b.y);
    return {left, top, std::max(a.x + a.width, b.x + b.width) - left,
            std::max(a.y + a.height, b.y + b.height) - top};
}

} // namespace

std::unique_ptr<X11Window> X11Window::create(uint32_t parent, View& root, int scale)
{
    xcb_screen_t* screen = nullptr;
    xcb_connection_t* connection = connectToScreen(screen);
    if (!connection)
        return nullptr;
    xcb_visualtype_t* visual = visualOf(screen, screen->root_visual);
    if (!visual) {
        xcb_disconnect(connection);
        return nullptr;
    }
    std::unique_ptr<X11Window> window = createChild(
        connection, screen, parent, {screen->root_depth, visual, screen->default_colormap}, root,
        scale);
    if (window)
        xcb_flush(connection);
    return window;
}

std::unique_ptr<X11Window> X11Window::createLikeParent(uint32_t parent, View& root, int scale)
{
    xcb_screen_t* screen = nullptr;
    xcb_connection_t* connection = connectToScreen(screen);
    if (!connection)
        return nullptr;
    auto* attributes = xcb_get_window_attributes_reply(
        connection, xcb_get_window_attributes(connection, parent), nullptr);
    auto* geometry =
        xcb_get_geometry_reply(connection, xcb_get_geometry(connection, parent), nullptr);
    xcb_visualtype_t* visual = attributes ? visualOf(screen, attributes->visual) : nullptr;
    const uint8_t depth = geometry ? geometry->depth : 0;
    free(attributes);
    free(geometry);
    if (!visual || depth == 0) {
        xcb_disconnect(connection);
        return nullptr;
    }
    xcb_colormap_t colormap = screen->default_colormap;
    if (visual->visual_id != screen->root_visual) {
        // Freed with the connection, like everything else we create.
        colormap = xcb_generate_id(connection);
        xcb_create_colormap(connection, XCB_COLORMAP_ALLOC_NONE, colormap, parent,
                            visual->visual_id);
    }
    std::unique_ptr<X11Window> window =
        createChild(connection, screen, parent, {depth, visual, colormap}, root, scale);
    // A round trip: when the reply is here, the server has made and mapped the window.
    if (window)
        free(xcb_get_geometry_reply(connection, xcb_get_geometry(connection, window->id()),
                                    nullptr));
    return window;
}

std::unique_ptr<X11Window> X11Window::createChild(xcb_connection_t* connection,
                                                  xcb_screen_t* screen, uint32_t parent,
                                                  const Look& look, View& root, int scale)
{
    scale = std::max(scale, 1);
    const auto width = static_cast<uint16_t>(root.frame().width * scale);
    const auto height = static_cast<uint16_t>(root.frame().height * scale);
    const xcb_window_t window = xcb_generate_id(connection);
    // Border pixel and colormap are given so that a parent of another depth is no error.
    const uint32_t mask = XCB_CW_BACK_PIXEL | XCB_CW_BORDER_PIXEL | XCB_CW_EVENT_MASK | XCB_CW_COLORMAP;
    const uint32_t values[] = {screen->black_pixel, 0,
                               XCB_EVENT_MASK_EXPOSURE | XCB_EVENT_MASK_BUTTON_PRESS |
                                   XCB_EVENT_MASK_BUTTON_RELEASE | XCB_EVENT_MASK_POINTER_MOTION |
                                   XCB_EVENT_MASK_LEAVE_WINDOW | XCB_EVENT_MASK_STRUCTURE_NOTIFY,
                               look.colormap};
    xcb_void_cookie_t cookie =
        xcb_create_window_checked(connection, look.depth, window, parent, 0, 0, width, height, 0,
                                  XCB_WINDOW_CLASS_INPUT_OUTPUT, look.visual->visual_id, mask,
                                  values);
    if (xcb_generic_error_t* error = xcb_request_check(connection, cookie)) {
        free(error);
        xcb_disconnect(connection);
        return nullptr;
    }
    setFixedSize(connection, window, width, height);
    xcb_map_window(connection, window);

    cairo_surface_t* surface =
        cairo_xcb_surface_create(connection, window, look.visual, width, height);
    return std::unique_ptr<X11Window>(new X11Window(connection, window, surface, root, scale));
}

X11Window::X11Window(xcb_connection_t* connection, xcb_window_t window,
                     cairo_surface_t* windowSurface, View& root, int scale)
    : connection(connection),
      window(window),
      windowSurface(windowSurface),
      backBuffer(cairo_image_surface_create(CAIRO_FORMAT_RGB24,
                                            static_cast<int>(root.frame().width) * scale,
                                            static_cast<int>(root.frame().height) * scale)),
      root(root),
      scale(scale)
{
    cairo_t* cr = cairo_create(backBuffer);
    addToBlit(Renderer::renderAll(cr, root, scale));
    cairo_destroy(cr);
}

X11Window::~X11Window()
{
    tracker.cancel();
    // Our window goes away with the connection; never destroy it ourselves, the host may have
    // destroyed its parent already.
    cairo_device_t* device = cairo_device_reference(cairo_surface_get_device(windowSurface));
    cairo_surface_destroy(windowSurface);
    cairo_device_finish(device);
    cairo_device_destroy(device);
    cairo_surface_destroy(backBuffer);
    xcb_disconnect(connection);
}

Point X11Window::toView(int16_t x, int16_t y) const
{
    return pointOfDevicePixel(x, y, scale, root.frame().height);
}

void X11Window::addToBlit(const DeviceRect& area)
{
    pendingBlit = unite(pendingBlit, area);
}

void X11Window::handleEvents()
{
    while (xcb_generic_event_t* event = xcb_poll_for_event(connection)) {
        handle(*event);
        free(event);
    }
}

void X11Window::handle(const xcb_generic_event_t& event)
{
    switch (event.response_type & ~0x80) {
    case XCB_EXPOSE: {
        const auto& expose = reinterpret_cast<const xcb_expose_event_t&>(event);
        addToBlit({expose.x, expose.y, expose.width, expose.height});
        break;
    }
    case XCB_BUTTON_PRESS: {
        const auto& press = reinterpret_cast<const xcb_button_press_event_t&>(event);
        const Point p = toView(press.event_x, press.event_y);
        const bool shift = press.state & XCB_MOD_MASK_SHIFT;
        // The server grabs the pointer for us until release, so the drag follows the pointer
        // outside the window.
        if (press.detail == XCB_BUTTON_INDEX_1)
            tracker.press(root, p, shift, clicks.press(press.time, press.event_x, press.event_y));
        // A wheel notch is a press and release of button 4 (up) or 5 (down); none during a drag.
        else if ((press.detail == XCB_BUTTON_INDEX_4 || press.detail == XCB_BUTTON_INDEX_5) &&
                 !tracker.dragging())
            MouseTracker::scroll(root, p, press.detail == XCB_BUTTON_INDEX_4 ? 1 : -1, shift);
        break;
    }
    case XCB_MOTION_NOTIFY: {
        const auto& motion = reinterpret_cast<const xcb_motion_notify_event_t&>(event);
        clicks.moved(motion.event_x, motion.event_y);
        if (tracker.dragging())
            tracker.drag(toView(motion.event_x, motion.event_y));
        else
            MouseTracker::move(root, toView(motion.event_x, motion.event_y));
        break;
    }
    case XCB_LEAVE_NOTIFY:
        MouseTracker::leave(root);
        break;
    case XCB_BUTTON_RELEASE: {
        const auto& release = reinterpret_cast<const xcb_button_release_event_t&>(event);
        if (release.detail == XCB_BUTTON_INDEX_1)
            tracker.release(toView(release.event_x, release.event_y));
        break;
    }
    default: // errors on our connection and everything else
        break;
    }
}

void X11Window::draw()
{
    if (xcb_connection_has_error(connection))
        return;
    cairo_t* back = cairo_create(backBuffer);
    addToBlit(Renderer::render(back, root, scale));
    cairo_destroy(back);
    if (pendingBlit.isEmpty())
        return;

    cairo_t* cr = cairo_create(windowSurface);
    cairo_set_operator(cr, CAIRO_OPERATOR_SOURCE);
    cairo_set_source_surface(cr, backBuffer, 0, 0);
    cairo_rectangle(cr, pendingBlit.x, pendingBlit.y, pendingBlit.width, pendingBlit.height);
    cairo_fill(cr);
    cairo_destroy(cr);
    cairo_surface_flush(windowSurface);
    xcb_flush(connection);
    pendingBlit = {};
}
