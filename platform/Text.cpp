#include "platform/Text.h"

namespace {

void useStyle(cairo_t* cr, const TextStyle& style)
{
    cairo_select_font_face(cr, "sans", CAIRO_FONT_SLANT_NORMAL, CAIRO_FONT_WEIGHT_NORMAL);
    cairo_set_font_size(cr, style.size);
    cairo_set_source_rgba(cr, style.color.red, style.color.green, style.color.blue,
                          style.color.alpha);
    cairo_set_operator(cr, CAIRO_OPERATOR_OVER);
}

// Glyphs are laid out y down; flip around the baseline so they stand upright.
void showAtBaseline(cairo_t* cr, const char* text, double x, double baseline)
{
    cairo_translate(cr, x, baseline);
    cairo_scale(cr, 1.0, -1.0);
    cairo_move_to(cr, 0.0, 0.0);
    cairo_show_text(cr, text);
}

} // namespace

void drawTextAtPoint(cairo_t* cr, const char* text, Point p, const TextStyle& style)
{
    cairo_save(cr);
    useStyle(cr, style);
    cairo_font_extents_t font;
    cairo_font_extents(cr, &font);
    showAtBaseline(cr, text, p.x, p.y + font.descent);
    cairo_restore(cr);
}

void drawTextCentredInRect(cairo_t* cr, const char* text, const Rect& r, const TextStyle& style)
{
    cairo_save(cr);
    useStyle(cr, style);
    cairo_font_extents_t font;
    cairo_font_extents(cr, &font);
    cairo_text_extents_t extents;
    cairo_text_extents(cr, text, &extents);
    showAtBaseline(cr, text, r.x + (r.width - extents.x_advance) * 0.5, r.maxY() - font.ascent);
    cairo_restore(cr);
}
