// hvtremolo-pictures: draws every picture the panel shows, at every scale the panel draws at, and
// writes them as PNG files into one folder:
//   hvtremolo-pictures resources/
// The results are committed, so a build never runs this.
#include <cstdio>
#include <cstring>
#include <string>

#include "panel/PictureNames.h"
#include "tools/Version.h"
#include "tools/pictures/PictureDrawing.h"

namespace {

bool save(cairo_surface_t* surface, const std::string& path)
{
    if (!surface)
        return false;
    const cairo_status_t status = cairo_surface_write_to_png(surface, path.c_str());
    cairo_surface_destroy(surface);
    if (status != CAIRO_STATUS_SUCCESS) {
        std::fprintf(stderr, "hvtremolo-pictures: cannot write %s: %s\n", path.c_str(),
                     cairo_status_to_string(status));
        return false;
    }
    return true;
}

} // namespace

int main(int argc, char** argv)
{
    if (argc == 2 && (!std::strcmp(argv[1], "--help") || !std::strcmp(argv[1], "-h"))) {
        std::printf("Usage: hvtremolo-pictures OUTPUT-FOLDER\n"
                    "       hvtremolo-pictures --help | --version\n\n"
                    "Draws every picture the panel shows (background, knob frames, rate buttons,\n"
                    "slider) at scales 1, 2 and 3 as PNG files into OUTPUT-FOLDER, which must\n"
                    "exist (name.png, name@2x.png, name@3x.png); the same files every time.\n\n"
                    "  OUTPUT-FOLDER  where the PNG files go, e.g. resources\n"
                    "  --help, -h     print this text\n"
                    "  --version      print the program's name and version\n\n"
                    "Exit status: 0 when every picture is written, 1 when one is not, 2 for a\n"
                    "wrong command line.\n");
        return 0;
    }
    if (argc == 2 && !std::strcmp(argv[1], "--version")) {
        std::printf("hvtremolo-pictures %s\n", HVT_VERSION);
        return 0;
    }
    if (argc != 2 || argv[1][0] == '-') {
        std::fprintf(stderr, "usage: hvtremolo-pictures OUTPUT-FOLDER (see --help)\n");
        return 2;
    }
    const std::string folder = argv[1];
    bool written = true;
    for (int scale = 1; scale <= picture_names::kLargestScale; ++scale)
        for (const std::string& name : pictureNames())
            written = save(drawPicture(name, scale), folder + "/" +
                                                         picture_names::scaled(name, scale) +
                                                         ".png") &&
                      written;
    return written ? 0 : 1;
}
