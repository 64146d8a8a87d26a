// Renders the control panel into a PNG without any window system, so that it can be looked at:
//   hvtremolo-panel [--program N] [--param INDEX=VALUE]... [--scale 1|2|3] OUT.png
// The panel is built over a real tremolo effect holding program N (default 0), after the given
// parameter values have been set, as an editor opening at that moment would show it, and drawn
// as the editor draws it at that scale: from the pictures drawn for the scale.
#include <cairo.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>

#include "editor/EffectParameters.h"
#include "engine/Parameters.h"
#include "effect/VstXSynth.h"
#include "panel/HalvoUiView10.h"
#include "panel/PanelLayout.h"
#include "panel/PictureNames.h"
#include "platform/Renderer.h"
#include "tools/Version.h"

namespace {

int usage()
{
    std::fprintf(stderr, "usage: hvtremolo-panel [--program N] [--param INDEX=VALUE]... "
                         "[--scale 1|2|3] OUT.png (see --help)\n");
    return 2;
}

int help()
{
    std::printf("Usage: hvtremolo-panel [--program N] [--param INDEX=VALUE]... [--scale 1|2|3] OUT.png\n"
                "       hvtremolo-panel --help | --version\n\n"
                "Draws the plug-in's control panel into a PNG file, without any window system,\n"
                "as an editor opening at that moment would show it: the panel is built over a\n"
                "real tremolo effect holding program N after the given parameter values.\n\n"
                "  OUT.png            the picture to write, 253 x 400 pixels times the scale\n"
                "  --program N        factory program N, 0 to 9 (default 0, Wurli Classic)\n"
                "  --param INDEX=VALUE\n"
                "                     set parameter INDEX (0 to 5: 0 Tremolo Depth, 1 Tremolo\n"
                "                     Speed, 2 Stereo Panner, 3 Panner Speed, 4 Mix, 0 to 1;\n"
                "                     5 Sample Rate, 7 to 10) to VALUE after the program;\n"
                "                     repeatable, applied in the order given\n"
                "  --scale 1|2|3      draw the panel at that many pixels a point (default 1),\n"
                "                     from the pictures made for that scale, as an editor on\n"
                "                     a high-density screen shows it\n"
                "  --help, -h         print this text\n"
                "  --version          print the program's name and version\n\n"
                "Exit status: 0 when the picture is written, 1 when it cannot be, 2 for a\n"
                "wrong command line.\n");
    return 0;
}

bool parseParameter(const char* text, int& index, float& value)
{
    char* end = nullptr;
    const long parsedIndex = std::strtol(text, &end, 10);
    if (end == text || *end != '=' || parsedIndex < 0 || parsedIndex >= kNumParameters)
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
    int scale = 1;
    for (int i = 1; i < argc; ++i) {
        const bool hasValue = i + 1 < argc;
        if (std::strcmp(argv[i], "--help") == 0 || std::strcmp(argv[i], "-h") == 0)
            return help();
        if (std::strcmp(argv[i], "--version") == 0) {
            std::printf("hvtremolo-panel %s\n", HVT_VERSION);
            return 0;
        }
        if (std::strcmp(argv[i], "--param") == 0 && hasValue) {
            int index = 0;
            float value = 0.0f;
            if (!parseParameter(argv[++i], index, value))
                return usage();
            effect.setParameter(index, value);
        } else if (std::strcmp(argv[i], "--program") == 0 && hasValue) {
            effect.setProgram(std::atoi(argv[++i]));
        } else if (std::strcmp(argv[i], "--scale") == 0 && hasValue) {
            char* end = nullptr;
            const long parsed = std::strtol(argv[++i], &end, 10);
            if (*end != 0 || parsed < 1 || parsed > picture_names::kLargestScale)
                return usage();
            scale = static_cast<int>(parsed);
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
    HalvoUiView10 panel(HalvoUiView10::kFrame, &parameters, scale);
    panel.awakeFromNib();
    cairo_surface_t* image = cairo_image_surface_create(
        CAIRO_FORMAT_RGB24, panel_layout::kPanelWidth * scale, panel_layout::kPanelHeight * scale);
    cairo_t* cr = cairo_create(image);
    Renderer::renderAll(cr, panel, scale);
    cairo_destroy(cr);
    const cairo_status_t status = cairo_surface_write_to_png(image, output);
    cairo_surface_destroy(image);
    if (status != CAIRO_STATUS_SUCCESS) {
        std::fprintf(stderr, "hvtremolo-panel: cannot write %s: %s\n", output,
                     cairo_status_to_string(status));
        return 1;
    }
    return 0;
}
