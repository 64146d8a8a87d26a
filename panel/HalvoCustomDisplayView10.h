// A number display: the value in white, centred, in the default face.
#pragma once

#include <cstdint>

#include "platform/View.h"

class HalvoCustomDisplayView10 : public View {
public:
    HalvoCustomDisplayView10(const Rect& frame, int32_t value);

    void drawRect(cairo_t* cr, const Rect& rect) override;

    int32_t SValue() const { return _sValue; }
    void setSValue(int32_t value) { _sValue = value; }

private:
    int32_t _sValue;
};
