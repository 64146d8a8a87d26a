// A see-through text view showing three percentages read from its owner: the volume, and the
// pan position split into a left and a right figure.
#pragma once

#include "platform/View.h"

class HalvoUiView10;

struct PanFigures {
    int left = 0;
    int right = 0;
};

// Pan position p (50 is the centre) as left and right percentages: p = 75 gives 0 and 50,
// p = 20 gives 60 and 0.
PanFigures panFigures(int p);

class sTextView10 : public View {
public:
    explicit sTextView10(const Rect& frame);

    // Draws the three figures, then clears its own redisplay request.
    void drawRect(cairo_t* cr, const Rect& rect) override;

    HalvoUiView10* owner() const { return _owner; }
    void setOwner(HalvoUiView10* owner) { _owner = owner; }
    const Color& textColor() const { return tColor; }

private:
    Color tColor;
    HalvoUiView10* _owner = nullptr; // not owned
};
