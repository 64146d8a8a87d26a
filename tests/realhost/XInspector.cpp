#include "tests/realhost/XInspector.h"

#include <cstdlib>
#include <cstring>
#include <memory>

namespace {

// xcb replies are malloc'd.
template <typename Reply>
using Owned = std::unique_ptr<Reply, decltype(&std::free)>;

template <typename Reply>
Owned<Reply> own(Reply* reply)
{
    return Owned<Reply>(reply, &std::free);
}

} // namespace

XInspector::XInspector() : connection(xcb_connect(nullptr, nullptr))
{
    if (connected())
        root = xcb_setup_roots_iterator(xcb_get_setup(connection)).data->root;
}

XInspector::~XInspector()
{
    xcb_disconnect(connection);
}

xcb_window_t XInspector::findWindowOfSize(int width, int height)
{
    std::vector<xcb_window_t> pending = {root};
    while (!pending.empty()) {
        const xcb_window_t window = pending.back();
        pending.pop_back();
        auto geometry = own(xcb_get_geometry_reply(connection, xcb_get_geometry(connection, window),
                                                   nullptr));
        auto attributes = own(xcb_get_window_attributes_reply(
            connection, xcb_get_window_attributes(connection, window), nullptr));
        if (geometry && attributes && geometry->width == width && geometry->height == height &&
            attributes->map_state == XCB_MAP_STATE_VIEWABLE)
            return window;
        auto tree = own(xcb_query_tree_reply(connection, xcb_query_tree(connection, window),
                                             nullptr));
        if (!tree)
            continue;
        const xcb_window_t* children = xcb_query_tree_children(tree.get());
        const int count = xcb_query_tree_children_length(tree.get());
        pending.insert(pending.end(), children, children + count);
    }
    return 0;
}

std::vector<XInspector::TopLevel> XInspector::topLevels()
{
    std::vector<TopLevel> found;
    auto tree = own(xcb_query_tree_reply(connection, xcb_query_tree(connection, root), nullptr));
    if (!tree)
        return found;
    const xcb_window_t* children = xcb_query_tree_children(tree.get());
    for (int i = 0; i < xcb_query_tree_children_length(tree.get()); ++i) {
        std::string title = property(children[i], atom("_NET_WM_NAME"));
        if (title.empty())
            title = property(children[i], XCB_ATOM_WM_NAME);
        found.push_back({children[i], title});
    }
    return found;
}

std::vector<uint32_t> XInspector::pixels(xcb_window_t window, int width, int height)
{
    auto image = own(xcb_get_image_reply(
        connection,
        xcb_get_image(connection, XCB_IMAGE_FORMAT_Z_PIXMAP, window, 0, 0,
                      static_cast<uint16_t>(width), static_cast<uint16_t>(height), ~0u),
        nullptr));
    const size_t count = static_cast<size_t>(width) * static_cast<size_t>(height);
    // 24-bit depth comes as 32 bits a pixel, the unused byte anything.
    if (!image || image->depth != 24 ||
        static_cast<size_t>(xcb_get_image_data_length(image.get())) < count * 4)
        return {};
    std::vector<uint32_t> shown(count);
    std::memcpy(shown.data(), xcb_get_image_data(image.get()), count * 4);
    for (uint32_t& pixel : shown)
        pixel &= 0xffffff;
    return shown;
}

std::string XInspector::property(xcb_window_t window, xcb_atom_t name)
{
    const auto cookie =
        xcb_get_property(connection, 0, window, name, XCB_GET_PROPERTY_TYPE_ANY, 0, 1024);
    auto reply = own(xcb_get_property_reply(connection, cookie, nullptr));
    if (!reply || reply->format != 8)
        return {};
    return std::string(static_cast<const char*>(xcb_get_property_value(reply.get())),
                       static_cast<size_t>(xcb_get_property_value_length(reply.get())));
}

xcb_atom_t XInspector::atom(const char* name)
{
    auto reply = own(xcb_intern_atom_reply(
        connection, xcb_intern_atom(connection, 0, static_cast<uint16_t>(std::strlen(name)), name),
        nullptr));
    return reply ? reply->atom : xcb_atom_t{XCB_ATOM_NONE};
}
