#include "tools/vsthost/HostWindow.h"

#include <cstdlib>
#include <cstring>

namespace {

xcb_atom_t atom(xcb_connection_t* connection, const char* name)
{
    xcb_intern_atom_reply_t* reply = xcb_intern_atom_reply(
        connection, xcb_intern_atom(connection, 0, static_cast<uint16_t>(std::strlen(name)), name),
        nullptr);
    const xcb_atom_t result = reply ? reply->atom : 0;
    free(reply);
    return result;
}

} // namespace

HostWindow::HostWindow(int x, int y, int width, int height, const std::string& title)
{
    int screenNumber = 0;
    xcb = xcb_connect(nullptr, &screenNumber);
    if (xcb_connection_has_error(xcb))
        return;
    xcb_screen_iterator_t screens = xcb_setup_roots_iterator(xcb_get_setup(xcb));
    for (int i = 0; i < screenNumber && screens.rem; ++i)
        xcb_screen_next(&screens);
    if (!screens.rem)
        return;
    xcb_screen_t* screen = screens.data;

    window = xcb_generate_id(xcb);
    const uint32_t values[] = {screen->black_pixel, XCB_EVENT_MASK_STRUCTURE_NOTIFY};
    xcb_create_window(xcb, XCB_COPY_FROM_PARENT, window, screen->root, static_cast<int16_t>(x),
                      static_cast<int16_t>(y), static_cast<uint16_t>(width),
                      static_cast<uint16_t>(height), 0, XCB_WINDOW_CLASS_INPUT_OUTPUT,
                      screen->root_visual, XCB_CW_BACK_PIXEL | XCB_CW_EVENT_MASK, values);
    xcb_change_property(xcb, XCB_PROP_MODE_REPLACE, window, XCB_ATOM_WM_NAME, XCB_ATOM_STRING, 8,
                        static_cast<uint32_t>(title.size()), title.data());
    const xcb_atom_t protocols = atom(xcb, "WM_PROTOCOLS");
    deleteAtom = atom(xcb, "WM_DELETE_WINDOW");
    xcb_change_property(xcb, XCB_PROP_MODE_REPLACE, window, protocols, XCB_ATOM_ATOM, 32, 1,
                        &deleteAtom);
    xcb_map_window(xcb, window);
    xcb_flush(xcb);
}

HostWindow::~HostWindow()
{
    xcb_disconnect(xcb);
}

bool HostWindow::pump()
{
    while (xcb_generic_event_t* event = xcb_poll_for_event(xcb)) {
        if ((event->response_type & ~0x80) == XCB_CLIENT_MESSAGE) {
            const auto* message = reinterpret_cast<xcb_client_message_event_t*>(event);
            if (message->data.data32[0] == deleteAtom)
                closed = true;
        }
        free(event);
    }
    return !closed && !xcb_connection_has_error(xcb);
}

void HostWindow::destroy()
{
    xcb_destroy_window(xcb, window);
    xcb_flush(xcb);
    closed = true;
}
