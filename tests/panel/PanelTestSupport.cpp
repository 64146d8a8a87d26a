#include "tests/panel/PanelTestSupport.h"

void RecordingEffect::setParameter(VstInt32 index, float value)
{
    writes.push_back({index, value, inPanelUpdate.load()});
    if (index >= 0 && index < 6)
        values[index] = value;
}

float RecordingEffect::getParameter(VstInt32 index)
{
    return index >= 0 && index < 6 ? values[index] : 0.0f;
}

std::unique_ptr<HalvoUiView10> makePanel(AudioEffect* effect)
{
    auto panel = std::make_unique<HalvoUiView10>(HalvoUiView10::kFrame, effect);
    panel->awakeFromNib();
    return panel;
}

Canvas::Canvas(int width, int height)
    : target(cairo_image_surface_create(CAIRO_FORMAT_ARGB32, width, height)),
      cr(cairo_create(target))
{
}

Canvas::~Canvas()
{
    cairo_destroy(cr);
    cairo_surface_destroy(target);
}

uint32_t Canvas::pixel(int x, int y) const
{
    cairo_surface_flush(target);
    const unsigned char* data = cairo_image_surface_get_data(target);
    const int stride = cairo_image_surface_get_stride(target);
    return reinterpret_cast<const uint32_t*>(data + y * stride)[x];
}

void Canvas::fill(double red, double green, double blue, double alpha)
{
    cairo_save(cr);
    cairo_set_operator(cr, CAIRO_OPERATOR_SOURCE);
    cairo_set_source_rgba(cr, red, green, blue, alpha);
    cairo_paint(cr);
    cairo_restore(cr);
}

uint32_t picturePixel(const Image& image, int x, int y)
{
    cairo_surface_t* surface = image.surface();
    cairo_surface_flush(surface);
    const unsigned char* data = cairo_image_surface_get_data(surface);
    const int stride = cairo_image_surface_get_stride(surface);
    const uint32_t raw = reinterpret_cast<const uint32_t*>(data + y * stride)[x];
    // Pictures without alpha are RGB24, whose unused byte may be anything.
    if (cairo_image_surface_get_format(surface) == CAIRO_FORMAT_RGB24)
        return raw | 0xff000000u;
    return raw;
}

PictureMatch matchPicture(const Canvas& canvas, const Image& picture, int left, int top,
                          const Image& under)
{
    PictureMatch match;
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x) {
            const uint32_t expected = picturePixel(picture, x, y);
            const uint32_t shown = canvas.pixel(left + x, top + y) | 0xff000000u;
            if (alphaOf(expected) == 255) {
                ++match.opaqueChecked;
                match.opaqueMismatched += shown != expected;
            } else if (alphaOf(expected) == 0 && !under.isEmpty()) {
                ++match.clearChecked;
                match.clearMismatched += shown != picturePixel(under, left + x, top + y);
            }
        }
    }
    return match;
}

void dragOn(View& root, Point from, const std::vector<Point>& path)
{
    MouseTracker mouse;
    mouse.press(root, from);
    for (const Point& p : path)
        mouse.drag(p);
    mouse.release(path.empty() ? from : path.back());
}
