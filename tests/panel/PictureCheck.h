// Compares what a panel area shows with our pictures, offscreen here and in the X server in
// tests/editor.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <string>

#include "panel/PanelPictures.h"
#include "platform/Image.h"

// Premultiplied ARGB of pixel (x, y), y down; the unused byte of RGB24 may hold anything.
inline uint32_t pixelAt(cairo_surface_t* surface, int x, int y)
{
    cairo_surface_flush(surface);
    const int stride = cairo_image_surface_get_stride(surface);
    const uint32_t argb = reinterpret_cast<const uint32_t*>(
        cairo_image_surface_get_data(surface) + y * stride)[x];
    return cairo_image_surface_get_format(surface) == CAIRO_FORMAT_RGB24 ? argb | 0xff000000u
                                                                         : argb;
}

inline Image knobFrame(int frame, int scale = 1)
{
    return panelPicture("knob" + std::to_string(frame), scale);
}

// Whether shown(x, y), the colour of the panel's device pixel (x, y), shows the width x height
// corner of picture placed at (left, top): its opaque pixels exactly and the background (drawn for
// the panel's scale) through its transparent ones. Blended edge pixels are not compared, and a
// picture that is mostly transparent would prove nothing.
template <typename Shown>
testing::AssertionResult showsPicture(const Shown& shown, const Image& picture, int left, int top,
                                      int width, int height, int scale = 1)
{
    const Image background = panelPicture("tremolobk", scale);
    int opaque = 0;
    int wrong = 0;
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            uint32_t expected = pixelAt(picture.surface(), x, y);
            if (expected >> 24 == 0)
                expected = pixelAt(background.surface(), left + x, top + y);
            else if (expected >> 24 == 255)
                ++opaque;
            else
                continue;
            wrong += ((shown(left + x, top + y) ^ expected) & 0xffffff) != 0;
        }
    }
    if (wrong > 0 || opaque < width * height / 4)
        return testing::AssertionFailure() << wrong << " pixels differ, " << opaque << " opaque";
    return testing::AssertionSuccess();
}
