// Where a window's device pixels lie in view coordinates, for a view tree drawn at a whole-number
// scale (device pixels a point).
#pragma once

#include <cmath>

#include "platform/Geometry.h"

// Pixel (x, y) of the window, from its top-left corner with y down, as a point of the root view,
// rootHeight points tall: x / scale and rootHeight - y / scale, both divisions rounded down. So the
// pixels of a point at scale 2 are exactly the doubled ones of that point's pixel at scale 1, and
// the root's views are hit by the same areas of a screen at every scale.
inline Point pointOfDevicePixel(int x, int y, int scale, double rootHeight)
{
    return {std::floor(static_cast<double>(x) / scale),
            rootHeight - std::floor(static_cast<double>(y) / scale)};
}
