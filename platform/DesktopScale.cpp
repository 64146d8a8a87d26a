#include "platform/DesktopScale.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <string>
#include <string_view>

#include <xcb/xcb.h>

namespace {

// A whole number of at least 1 and nothing else, or 0.
long wholeNumber(const char* text)
{
    if (!text || !*text)
        return 0;
    char* end = nullptr;
    const long value = std::strtol(text, &end, 10);
    return *end == 0 && value >= 1 ? value : 0;
}

// The Xft.dpi resource, or 0 when it is absent or no positive number.
double xftDpi(std::string_view resources)
{
    constexpr std::string_view kName = "Xft.dpi:";
    for (size_t start = 0; start < resources.size();) {
        size_t end = resources.find('\n', start);
        if (end == std::string_view::npos)
            end = resources.size();
        const std::string_view line = resources.substr(start, end - start);
        if (line.substr(0, kName.size()) == kName) {
            const std::string value(line.substr(kName.size()));
            char* parsedEnd = nullptr;
            const double dpi = std::strtod(value.c_str(), &parsedEnd);
            return parsedEnd != value.c_str() && std::isfinite(dpi) && dpi > 0.0 ? dpi : 0.0;
        }
        start = end + 1;
    }
    return 0.0;
}

std::string rootResources()
{
    int screenNumber = 0;
    xcb_connection_t* connection = xcb_connect(nullptr, &screenNumber);
    std::string resources;
    if (!xcb_connection_has_error(connection)) {
        xcb_screen_iterator_t screens = xcb_setup_roots_iterator(xcb_get_setup(connection));
        for (int i = 0; i < screenNumber && screens.rem; ++i)
            xcb_screen_next(&screens);
        if (screens.rem) {
            // Up to 1 MiB, in the request's 32-bit units: far more than any desktop sets.
            const xcb_get_property_cookie_t cookie =
                xcb_get_property(connection, 0, screens.data->root, XCB_ATOM_RESOURCE_MANAGER,
                                 XCB_ATOM_STRING, 0, 1 << 18);
            if (auto* reply = xcb_get_property_reply(connection, cookie, nullptr)) {
                resources.assign(static_cast<const char*>(xcb_get_property_value(reply)),
                                 static_cast<size_t>(xcb_get_property_value_length(reply)));
                free(reply);
            }
        }
    }
    xcb_disconnect(connection);
    return resources;
}

// The rule: gdkScale is GDK_SCALE's value (null when unset), resources the text of the
// RESOURCE_MANAGER property ("Xft.dpi:\t144\n..."), empty when there is none.
int desktopScaleFrom(const char* gdkScale, std::string_view resources, int largest)
{
    largest = std::max(largest, 1);
    if (const long scale = wholeNumber(gdkScale))
        return static_cast<int>(std::min<long>(scale, largest));
    const double dpi = xftDpi(resources);
    if (dpi <= 0.0)
        return 1;
    return static_cast<int>(std::clamp(std::floor(dpi / 96.0 + 0.5), 1.0, double(largest)));
}

} // namespace

int desktopScale(int largest)
{
    const char* gdkScale = std::getenv("GDK_SCALE");
    if (wholeNumber(gdkScale))
        return desktopScaleFrom(gdkScale, {}, largest);
    return desktopScaleFrom(gdkScale, rootResources(), largest);
}
