// The panel's pictures as the generator draws them, for the tool that writes them into
// resources/ and for the test that checks the committed files against it.
#pragma once

#include <cairo.h>

#include <string>
#include <vector>

// Every picture's name ("tremolobk", "knob0" ... "knob127", ...), without a scale.
std::vector<std::string> pictureNames();

// Picture name drawn at scale 1, 2 or 3 (its size in points times scale pixels); null for an
// unknown name or scale, or when drawing failed. The caller owns the surface.
cairo_surface_t* drawPicture(const std::string& name, int scale);
