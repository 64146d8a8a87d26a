// The value readout: a small box showing a parameter's name and value, placed above the control
// it speaks of. It only shows: the mouse passes through it to whatever lies beneath. Hidden, it
// draws nothing, and hiding or moving it redraws what it covered, so the panel is then as if it
// had never been shown.
#pragma once

#include "panel/ReadoutText.h"
#include "platform/View.h"

class ValueReadout : public View {
public:
    static constexpr double kWidth = 84.0;
    static constexpr double kHeight = 30.0;

    ValueReadout();

    // Shows text above control (both in the superview's coordinates), kept inside the
    // superview. Nothing is redrawn when neither changed.
    void show(const Rect& control, const ReadoutText& text);
    void hide();
    const ReadoutText& text() const { return shown; }

    bool takesMouse() const override { return false; }
    void drawRect(cairo_t* cr, const Rect& rect) override;

private:
    ReadoutText shown;
};
