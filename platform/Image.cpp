#include "platform/Image.h"

#include <cstring>
#include <span>
#include <utility>

namespace {

struct PngStream {
    std::span<const unsigned char> bytes;
    size_t position = 0;
};

cairo_status_t readPng(void* closure, unsigned char* data, unsigned int length)
{
    auto* stream = static_cast<PngStream*>(closure);
    if (stream->bytes.size() - stream->position < length)
        return CAIRO_STATUS_READ_ERROR;
    std::memcpy(data, stream->bytes.data() + stream->position, length);
    stream->position += length;
    return CAIRO_STATUS_SUCCESS;
}

cairo_surface_t* decodePng(std::span<const unsigned char> bytes)
{
    PngStream stream{bytes};
    cairo_surface_t* surface = cairo_image_surface_create_from_png_stream(readPng, &stream);
    if (cairo_surface_status(surface) == CAIRO_STATUS_SUCCESS)
        return surface;
    cairo_surface_destroy(surface);
    return nullptr;
}

} // namespace

Image::Image(cairo_surface_t* surface) : image(surface) {}

Image::~Image()
{
    if (image)
        cairo_surface_destroy(image);
}

Image::Image(const Image& other) : image(other.image)
{
    if (image)
        cairo_surface_reference(image);
}

Image::Image(Image&& other) noexcept : image(std::exchange(other.image, nullptr)) {}

Image& Image::operator=(Image other) noexcept
{
    std::swap(image, other.image);
    return *this;
}

Image Image::fromPng(std::span<const unsigned char> bytes)
{
    return Image(decodePng(bytes));
}

int Image::width() const
{
    return image ? cairo_image_surface_get_width(image) : 0;
}

int Image::height() const
{
    return image ? cairo_image_surface_get_height(image) : 0;
}

void Image::drawInRect(cairo_t* cr, const Rect& destination, Compositing operation,
                       double opacity) const
{
    if (!image || destination.isEmpty() || width() <= 0 || height() <= 0)
        return;
    cairo_save(cr);
    // Copy must be clipped: an unclipped SOURCE would clear everything outside the picture.
    cairo_rectangle(cr, destination.x, destination.y, destination.width, destination.height);
    cairo_clip(cr);
    // The surface's rows run top to bottom; flip them back so the picture stands upright.
    cairo_translate(cr, destination.x, destination.maxY());
    cairo_scale(cr, destination.width / width(), -destination.height / height());
    cairo_set_source_surface(cr, image, 0.0, 0.0);
    // Scaled edges take the picture's own edge pixels, not the transparency outside it.
    cairo_pattern_set_extend(cairo_get_source(cr), CAIRO_EXTEND_PAD);
    cairo_set_operator(cr, operation == Compositing::Copy ? CAIRO_OPERATOR_SOURCE
                                                          : CAIRO_OPERATOR_OVER);
    if (opacity >= 1.0)
        cairo_paint(cr);
    else
        cairo_paint_with_alpha(cr, opacity);
    cairo_restore(cr);
}

void Image::drawAtPoint(cairo_t* cr, Point p, Compositing operation) const
{
    drawInRect(cr, {p.x, p.y, static_cast<double>(width()), static_cast<double>(height())},
               operation);
}
