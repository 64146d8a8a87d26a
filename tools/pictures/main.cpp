// hvtremolo-pictures: draws every picture the panel shows, at every scale the panel draws at, and
// writes them as PNG files into one folder:
//   hvtremolo-pictures resources/
// The results are committed, so a build never runs this.
#include <cstdio>
#include <string>

#include "panel/PictureNames.h"
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
    if (argc != 2) {
        std::fprintf(stderr, "usage: hvtremolo-pictures OUTPUT-FOLDER\n");
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
