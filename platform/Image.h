// A picture over a cairo image surface, shared by reference count. Drawing maps the two ways a
// picture meets what is beneath it: Copy replaces the destination rectangle (and only it),
// SourceOver blends. A picture drawn into a rectangle of another size is scaled to fill it.
// An empty Image (a missing picture) draws nothing.
#pragma once

#include <span>

#include <cairo.h>

#include "platform/Geometry.h"

enum class Compositing { Copy, SourceOver };

class Image {
public:
    Image() = default;
    // Takes over one reference to surface.
    explicit Image(cairo_surface_t* surface);
    ~Image();
    Image(const Image& other);
    Image(Image&& other) noexcept;
    Image& operator=(Image other) noexcept;

    // A PNG's bytes decoded; empty when they are not a PNG cairo reads.
    static Image fromPng(std::span<const unsigned char> bytes);

    bool isEmpty() const { return !image; }
    int width() const;
    int height() const;
    cairo_surface_t* surface() const { return image; }

    // cr's user space has y up (see View.h); the picture is drawn upright.
    void drawInRect(cairo_t* cr, const Rect& destination, Compositing operation,
                    double opacity = 1.0) const;
    // The picture at its own size with its lower-left corner at p.
    void drawAtPoint(cairo_t* cr, Point p, Compositing operation) const;

private:
    cairo_surface_t* image = nullptr;
};
