// Shared by the panel tests: an effect that records what the panel writes, offscreen rendering
// and pixel access, and mouse gestures in panel coordinates.
#pragma once

#include <cstdint>
#include <vector>

#include <cairo.h>

#include "host/AudioEffect.h"
#include "panel/HalvoUiView10.h"
#include "platform/Image.h"
#include "platform/MouseTracker.h"

// Holds six values and records every setParameter with the state of inPanelUpdate at that moment.
class RecordingEffect : public AudioEffect {
public:
    struct Write {
        int32_t index;
        float value;
        bool inPanelUpdate;
    };

    RecordingEffect() : AudioEffect(nullptr, 1, 6) {}

    void processReplacing(float**, float**, VstInt32) override {}
    void setParameter(VstInt32 index, float value) override;
    float getParameter(VstInt32 index) override;

    float values[6] = {};
    std::vector<Write> writes;
};

// A panel built as the editor builds it.
std::unique_ptr<HalvoUiView10> makePanel(AudioEffect* effect);

// An ARGB32 image surface that frees itself.
class Canvas {
public:
    Canvas(int width, int height);
    ~Canvas();
    Canvas(const Canvas&) = delete;
    Canvas& operator=(const Canvas&) = delete;

    cairo_t* context() const { return cr; }
    cairo_surface_t* surface() const { return target; }
    // Premultiplied ARGB at device pixel (x, y), y down.
    uint32_t pixel(int x, int y) const;
    void fill(double red, double green, double blue, double alpha);

private:
    cairo_surface_t* target;
    cairo_t* cr;
};

// Premultiplied ARGB of a picture's pixel (x, y), y down.
uint32_t picturePixel(const Image& image, int x, int y);
inline uint32_t alphaOf(uint32_t argb)
{
    return argb >> 24;
}

// Counts the pixels of a picture placed on the canvas with its upper-left corner at (left, top)
// whose opaque (or fully transparent) pixels differ from the canvas. Transparent pixels are
// compared with under, the picture the canvas should show there instead, unless under is empty.
struct PictureMatch {
    int opaqueChecked = 0;
    int opaqueMismatched = 0;
    int clearChecked = 0;
    int clearMismatched = 0;
};
PictureMatch matchPicture(const Canvas& canvas, const Image& picture, int left, int top,
                          const Image& under);

// A press at from, a drag through each point of path, a release at the last point; panel
// coordinates, y up.
void dragOn(View& root, Point from, const std::vector<Point>& path);
