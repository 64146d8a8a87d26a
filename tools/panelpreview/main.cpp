// Renders the control panel into a PNG without any window system, so that it can be looked at:
//   hvtremolo-panel [--program N] [--param INDEX=VALUE]... [--scale S] OUT.png
// The panel is built over a real tremolo effect holding program N (default 0), after the given
// parameter values have been set, as an editor opening at that moment would show it.
#include <cairo.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>

#include "editor/EffectParameters.h"
#include "effect/VstXSynth.h"
#include "panel/HalvoUiView10.h"
#include "panel/PanelLayout.h"
#include "platform/Renderer.h"

namespace {

int usage()
{
    std::fprintf(stderr, "usage: hvtremolo-panel [--program N] [--param INDEX=VALUE]... "
                         "[--scale S] OUT.png\n");
    return 2;
}

bool parseParameter(const char* text, int& index, float& value)
{
    char* end = nullptr;
    const long parsedIndex = std::strtol(text, &end, 10);
    if (end == text || *end != '=' || parsedIndex < 0 || parsedIndex > 5)
        return false;
    const char* valueText = end + 1;
    value = std::strtof(valueText, &end);
    if (end == valueText || *end != 0)
        return false;
    index = static_cast<int>(parsedIndex);
    return true;
}

} // namespace

int main(int argc, char** argv)
{
    VstXSynth effect(nullptr);
    const char* output = nullptr;
    double scale = 1.0;
    for (int i = 1; i < argc; ++i) {
        const bool hasValue = i + 1 < argc;
        if (std::strcmp(argv[i], "--param") == 0 && hasValue) {
            int index = 0;
            float value = 0.0f;
            if (!parseParameter(argv[++i], index, value))
                return usage();
            effect.setParameter(index, value);
        } else if (std::strcmp(argv[i], "--program") == 0 && hasValue) {
            effect.setProgram(std::atoi(argv[++i]));
        } else if (std::strcmp(argv[i], "--scale") == 0 && hasValue) {
            scale = std::atof(argv[++i]);
            if (!(scale > 0.0 && scale <= 8.0))
                return usage();
        } else if (!output && argv[i][0] != '-') {
            output = argv[i];
        } else {
            return usage();
        }
    }
    if (!output)
        return usage();

    // A still picture: nothing the panel could write reaches a host.
    EffectParameters parameters(&effect, false);
    HalvoUiView10 panel(HalvoUiView10::kFrame, &parameters);
    panel.awakeFromNib();
    cairo_surface_t* image = cairo_image_surface_create(CAIRO_FORMAT_RGB24, panel_layout::kPanelWidth,
                                                        panel_layout::kPanelHeight);
    cairo_t* cr = cairo_create(image);
    Renderer::renderAll(cr, panel);
    cairo_destroy(cr);

    cairo_surface_t* result = image;
    if (scale != 1.0) {
        result = cairo_image_surface_create(CAIRO_FORMAT_RGB24, static_cast<int>(panel_layout::kPanelWidth * scale),
                                            static_cast<int>(panel_layout::kPanelHeight * scale));
        cr = cairo_create(result);
        cairo_scale(cr, scale, scale);
        cairo_set_source_surface(cr, image, 0.0, 0.0);
        cairo_pattern_set_filter(cairo_get_source(cr), CAIRO_FILTER_NEAREST);
        cairo_paint(cr);
        cairo_destroy(cr);
        cairo_surface_destroy(image);
    }
    const cairo_status_t status = cairo_surface_write_to_png(result, output);
    cairo_surface_destroy(result);
    if (status != CAIRO_STATUS_SUCCESS) {
        std::fprintf(stderr, "hvtremolo-panel: cannot write %s: %s\n", output,
                     cairo_status_to_string(status));
        return 1;
    }
    return 0;
}
