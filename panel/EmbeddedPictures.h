// The panel's pictures, compiled into the module as PNG bytes. The table itself is generated at
// build time from resources/*.png (cmake/EmbedResources.cmake).
#pragma once

#include <cstddef>
#include <span>
#include <string_view>

struct EmbeddedPicture {
    const char* name; // the file name without ".png"
    const unsigned char* data;
    size_t size;
};

// Every embedded picture, sorted by name (bytewise).
std::span<const EmbeddedPicture> embeddedPictures();

// The picture called name, or null.
const EmbeddedPicture* findEmbeddedPicture(std::string_view name);
