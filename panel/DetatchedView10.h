// The panel's background: one picture copied over the whole view.
#pragma once

#include "platform/Image.h"
#include "platform/View.h"

class DetatchedView10 : public View {
public:
    DetatchedView10(Image image, const Rect& frame);

    void drawRect(cairo_t* cr, const Rect& rect) override;
    const Image& backgroundImage() const { return BackgroundImage; }

private:
    Image BackgroundImage;
};
