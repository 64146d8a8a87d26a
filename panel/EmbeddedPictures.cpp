#include "panel/EmbeddedPictures.h"

#include <algorithm>

const EmbeddedPicture* findEmbeddedPicture(std::string_view name)
{
    const auto table = embeddedPictures();
    const auto byName = [](const EmbeddedPicture& picture, std::string_view key) {
        return std::string_view(picture.name) < key;
    };
    const auto found = std::lower_bound(table.begin(), table.end(), name, byName);
    if (found == table.end() || std::string_view(found->name) != name)
        return nullptr;
    return &*found;
}
