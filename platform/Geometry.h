// Points, sizes and rectangles of the view layer, in points. Coordinates have their origin at the
// lower-left corner and y grows upward (see View.h).
#pragma once

#include <algorithm>

struct Point {
    double x = 0.0;
    double y = 0.0;
};

struct Rect {
    double x = 0.0;
    double y = 0.0;
    double width = 0.0;
    double height = 0.0;

    double maxX() const { return x + width; }
    double maxY() const { return y + height; }
    bool isEmpty() const { return !(width > 0.0 && height > 0.0); }

    // Half-open: the left and bottom edges belong to the rectangle, the right and top do not.
    bool contains(Point p) const { return p.x >= x && p.x < maxX() && p.y >= y && p.y < maxY(); }

    bool intersects(const Rect& other) const
    {
        return !isEmpty() && !other.isEmpty() && x < other.maxX() && other.x < maxX() &&
               y < other.maxY() && other.y < maxY();
    }

    // The smallest rectangle holding both; an empty rectangle adds nothing.
    Rect united(const Rect& other) const
    {
        if (isEmpty())
            return other;
        if (other.isEmpty())
            return *this;
        const double left = std::min(x, other.x);
        const double bottom = std::min(y, other.y);
        return {left, bottom, std::max(maxX(), other.maxX()) - left,
                std::max(maxY(), other.maxY()) - bottom};
    }

    bool operator==(const Rect&) const = default;
};

struct Color {
    double red = 0.0;
    double green = 0.0;
    double blue = 0.0;
    double alpha = 0.0;

    static constexpr Color clear() { return {0.0, 0.0, 0.0, 0.0}; }
    static constexpr Color white() { return {1.0, 1.0, 1.0, 1.0}; }
};
