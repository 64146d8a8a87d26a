// What the tests of a panel shown in a real X server share, whichever plug-in format shows it:
// the panel's areas, an idle timer, and the window's pixels compared with our pictures.
#pragma once

#include <gtest/gtest.h>

#include <xcb/xcb.h>

#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <functional>
#include <thread>

#include "platform/Image.h"
#include "tests/panel/PictureCheck.h"

constexpr int kWidth = 253;
constexpr int kHeight = 400;

// Panel areas, origin lower left and y up: the knobs by parameter, the rate buttons by choice.
struct Area {
    int x, y, w, h;
};
constexpr Area kKnobs[5] = {{48, 202, 48, 48}, {45, 128, 48, 48}, {154, 202, 48, 48},
                            {156, 128, 48, 48}, {104, 77, 48, 48}};
constexpr Area kButtons[4] = {
    {48, 46, 13, 13}, {78, 46, 13, 13}, {160, 46, 13, 13}, {190, 46, 13, 13}};
constexpr Area kTopStrip = {0, 260, kWidth, 140}; // legends, no control

// Calls serve every period milliseconds, as a host's idle timer does.
inline void serveFor(int milliseconds, const std::function<void()>& serve, int period = 5)
{
    for (int elapsed = 0; elapsed < milliseconds; elapsed += period) {
        serve();
        std::this_thread::sleep_for(std::chrono::milliseconds(period));
    }
}

// The window's pixels in a device rectangle (y down), or nothing.
struct WindowPixels {
    WindowPixels(xcb_connection_t* c, xcb_window_t window, int left, int top, int width, int height)
        : left(left), top(top), width(width)
    {
        reply = xcb_get_image_reply(c,
                                    xcb_get_image(c, XCB_IMAGE_FORMAT_Z_PIXMAP, window, left, top,
                                                  width, height, ~0u),
                                    nullptr);
        if (reply && xcb_get_image_data_length(reply) < width * height * 4) {
            free(reply);
            reply = nullptr;
        }
    }
    ~WindowPixels() { free(reply); }
    WindowPixels(const WindowPixels&) = delete;
    WindowPixels& operator=(const WindowPixels&) = delete;

    // The colour of window pixel (x, y), as RGB.
    uint32_t operator()(int x, int y) const
    {
        const auto* data = reinterpret_cast<const uint32_t*>(xcb_get_image_data(reply));
        return data[(y - top) * width + x - left] & 0xffffff;
    }

    xcb_get_image_reply_t* reply = nullptr;
    int left, top, width;
};

// Whether a window showing the panel at scale shows picture in a panel area (see showsPicture).
inline testing::AssertionResult shows(xcb_connection_t* c, xcb_window_t window, const Area& a,
                                      const Image& picture, int scale = 1)
{
    const int left = a.x * scale;
    const int top = (kHeight - a.y - a.h) * scale;
    const WindowPixels shown(c, window, left, top, a.w * scale, a.h * scale);
    if (!shown.reply)
        return testing::AssertionFailure() << "no pixels from the server";
    return showsPicture(shown, picture, left, top, a.w * scale, a.h * scale, scale);
}
