#include "panel/PanelPictures.h"

#include <mutex>
#include <vector>

#include "panel/EmbeddedPictures.h"
#include "panel/PictureNames.h"

namespace {

// One decoded picture per embedded one, made on first use and kept until the module goes.
// Panels are built on the UI thread, but two hosts' UI threads may share one process.
class DecodedPictures {
public:
    DecodedPictures() : entries(embeddedPictures().size()) {}

    Image find(std::string_view name)
    {
        const EmbeddedPicture* picture = findEmbeddedPicture(name);
        if (!picture)
            return {};
        Entry& entry = entries[static_cast<size_t>(picture - embeddedPictures().data())];
        std::lock_guard<std::mutex> guard(lock);
        // A picture that does not decode is not tried again on every lookup.
        if (!entry.tried) {
            entry.tried = true;
            entry.image = Image::fromPng({picture->data, picture->size});
        }
        return entry.image;
    }

private:
    struct Entry {
        Image image;
        bool tried = false;
    };

    std::mutex lock;
    std::vector<Entry> entries;
};

} // namespace

Image panelPicture(std::string_view name, int scale)
{
    static DecodedPictures pictures;
    if (scale < 1 || scale > picture_names::kLargestScale)
        return {};
    return pictures.find(picture_names::scaled(name, scale));
}
