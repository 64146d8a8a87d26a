#include "panel/ValueReadout.h"

#include <algorithm>
#include <cmath>

#include "platform/Text.h"

namespace {

// Space kept between the box and the control, and between the box and the panel's edges.
constexpr double kGap = 2.0;
constexpr double kRadius = 5.0;
constexpr TextStyle kNameStyle = {8.0, {0.70, 0.72, 0.76, 1.0}};
constexpr TextStyle kValueStyle = {11.0, {1.0, 0.80, 0.45, 1.0}};

} // namespace

ValueReadout::ValueReadout() : View({})
{
    setHidden(true);
}

void ValueReadout::show(const Rect& control, const ReadoutText& text)
{
    Rect place = {control.x + (control.width - kWidth) * 0.5, control.maxY() + kGap, kWidth,
                  kHeight};
    if (const View* panel = superview()) {
        const Rect within = panel->bounds();
        place.x = std::clamp(place.x, kGap, within.width - kWidth - kGap);
        place.y = std::min(place.y, within.height - kHeight - kGap);
    }
    if (!isHidden() && place == frame() && text == shown)
        return;
    if (place != frame())
        setFrame(place);
    shown = text;
    setHidden(false);
    setNeedsDisplay();
}

void ValueReadout::hide()
{
    setHidden(true);
}

void ValueReadout::drawRect(cairo_t* cr, const Rect& rect)
{
    cairo_save(cr);
    cairo_new_sub_path(cr);
    const double r = kRadius;
    const double inset = 0.5; // the border's line centred on whole-point pixels
    const Rect box = {inset, inset, rect.width - 2 * inset, rect.height - 2 * inset};
    cairo_arc(cr, box.maxX() - r, box.y + r, r, -M_PI_2, 0.0);
    cairo_arc(cr, box.maxX() - r, box.maxY() - r, r, 0.0, M_PI_2);
    cairo_arc(cr, box.x + r, box.maxY() - r, r, M_PI_2, M_PI);
    cairo_arc(cr, box.x + r, box.y + r, r, M_PI, 3.0 * M_PI_2);
    cairo_close_path(cr);
    cairo_set_source_rgba(cr, 0.03, 0.03, 0.035, 0.92);
    cairo_fill_preserve(cr);
    cairo_set_source_rgba(cr, 1.0, 0.655, 0.149, 0.55);
    cairo_set_line_width(cr, 1.0);
    cairo_stroke(cr);
    cairo_restore(cr);

    drawTextCentredInRect(cr, shown.name.c_str(), {0.0, 0.0, rect.width, rect.height - 4.0},
                          kNameStyle);
    drawTextCentredInRect(cr, shown.value.c_str(), {0.0, 0.0, rect.width, rect.height - 14.0},
                          kValueStyle);
}
