// Every picture the panel shows, drawn at a whole-number scale. Output is deterministic: the
// brushed metal comes from a fixed pseudo-random sequence.
//
// Pictures are drawn in y-down point coordinates onto a surface of scale pixels a point, so a
// scale-2 picture is drawn anew with twice the detail, never stretched; at scale 1 the transform
// is the identity. The panel's tables give frames with y up from the bottom edge, so a frame
// (x, y, w, h) of the 400-point panel lies at row 400 - y - h.
#include "tools/pictures/PictureDrawing.h"

#include <cctype>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "engine/Parameters.h"
#include "panel/PanelLayout.h"
#include "panel/PictureNames.h"

namespace {

constexpr double kPanelWidth = panel_layout::kPanelWidth;
constexpr double kPanelHeight = panel_layout::kPanelHeight;
constexpr int kKnobFrames = panel_layout::kFilmstripFrames;
constexpr double kKnobSize = panel_layout::kKnobSize;
constexpr double kButtonSize = panel_layout::kRateButtonSize;
constexpr const char* kFont = "DejaVu Sans";

struct Rgb {
    double r, g, b;
};

constexpr Rgb kAmber = {1.0, 0.655, 0.149};
constexpr Rgb kLegend = {0.86, 0.87, 0.89};
constexpr Rgb kDimLegend = {0.56, 0.59, 0.63};

double radians(double degrees)
{
    return degrees * M_PI / 180.0;
}

// A point at a mathematical angle (counter-clockwise from the right, y up) around a centre in
// y-down image coordinates.
void polar(double cx, double cy, double radius, double degrees, double& x, double& y)
{
    x = cx + radius * std::cos(radians(degrees));
    y = cy - radius * std::sin(radians(degrees));
}

class Random {
public:
    double next()
    {
        state = state * 6364136223846793005ull + 1442695040888963407ull;
        return static_cast<double>(state >> 11) / static_cast<double>(1ull << 53);
    }

private:
    uint64_t state = 0x48765472656d6f6cull;
};

// Ends drawing; a drawing error (a bad text, say) leaves no picture rather than a broken one.
cairo_surface_t* finish(cairo_t* cr, cairo_surface_t* surface)
{
    const cairo_status_t status = cairo_status(cr);
    cairo_destroy(cr);
    if (status == CAIRO_STATUS_SUCCESS)
        return surface;
    std::fprintf(stderr, "hvtremolo-pictures: %s\n", cairo_status_to_string(status));
    cairo_surface_destroy(surface);
    return nullptr;
}

// A surface of width x height points at scale pixels a point, and a context that draws in points.
cairo_t* canvas(cairo_format_t format, double width, double height, int scale,
                cairo_surface_t*& surface)
{
    surface = cairo_image_surface_create(format, static_cast<int>(width) * scale,
                                         static_cast<int>(height) * scale);
    cairo_t* cr = cairo_create(surface);
    cairo_scale(cr, scale, scale);
    return cr;
}

void roundedRectangle(cairo_t* cr, double x, double y, double w, double h, double radius)
{
    cairo_new_sub_path(cr);
    cairo_arc(cr, x + w - radius, y + radius, radius, radians(-90), 0.0);
    cairo_arc(cr, x + w - radius, y + h - radius, radius, 0.0, radians(90));
    cairo_arc(cr, x + radius, y + h - radius, radius, radians(90), radians(180));
    cairo_arc(cr, x + radius, y + radius, radius, radians(180), radians(270));
    cairo_close_path(cr);
}

// The letters of a UTF-8 text, each as its own string.
std::vector<std::string> letters(const std::string& text)
{
    std::vector<std::string> result;
    for (size_t i = 0; i < text.size();) {
        size_t length = 1;
        while (i + length < text.size() && (text[i + length] & 0xc0) == 0x80)
            ++length;
        result.push_back(text.substr(i, length));
        i += length;
    }
    return result;
}

// Text centred on cx with extra space between letters, as engraved legends are set.
void spacedText(cairo_t* cr, const std::string& text, double cx, double baseline, double size,
                double spacing, Rgb colour, bool bold = true)
{
    cairo_select_font_face(cr, kFont, CAIRO_FONT_SLANT_NORMAL,
                           bold ? CAIRO_FONT_WEIGHT_BOLD : CAIRO_FONT_WEIGHT_NORMAL);
    cairo_set_font_size(cr, size);
    const std::vector<std::string> parts = letters(text);
    double width = -spacing;
    for (const std::string& letter : parts) {
        cairo_text_extents_t extents;
        cairo_text_extents(cr, letter.c_str(), &extents);
        width += extents.x_advance + spacing;
    }
    double x = std::round(cx - width * 0.5);
    for (const std::string& letter : parts) {
        cairo_text_extents_t extents;
        cairo_text_extents(cr, letter.c_str(), &extents);
        // Engraved: a dark edge one pixel below the letter.
        cairo_set_source_rgba(cr, 0.0, 0.0, 0.0, 0.55);
        cairo_move_to(cr, x, baseline + 1.0);
        cairo_show_text(cr, letter.c_str());
        cairo_set_source_rgb(cr, colour.r, colour.g, colour.b);
        cairo_move_to(cr, x, baseline);
        cairo_show_text(cr, letter.c_str());
        x += extents.x_advance + spacing;
    }
}

void screw(cairo_t* cr, double cx, double cy, double slotDegrees)
{
    cairo_arc(cr, cx, cy + 0.8, 4.2, 0.0, 2.0 * M_PI);
    cairo_set_source_rgba(cr, 0.0, 0.0, 0.0, 0.5);
    cairo_fill(cr);
    cairo_pattern_t* head = cairo_pattern_create_radial(cx - 1.5, cy - 1.5, 0.5, cx, cy, 4.0);
    cairo_pattern_add_color_stop_rgb(head, 0.0, 0.78, 0.80, 0.83);
    cairo_pattern_add_color_stop_rgb(head, 1.0, 0.30, 0.32, 0.35);
    cairo_arc(cr, cx, cy, 3.8, 0.0, 2.0 * M_PI);
    cairo_set_source(cr, head);
    cairo_fill(cr);
    cairo_pattern_destroy(head);
    double x0, y0, x1, y1;
    polar(cx, cy, 2.8, slotDegrees, x0, y0);
    polar(cx, cy, 2.8, slotDegrees + 180.0, x1, y1);
    cairo_move_to(cr, x0, y0);
    cairo_line_to(cr, x1, y1);
    cairo_set_line_width(cr, 1.1);
    cairo_set_source_rgba(cr, 0.08, 0.08, 0.09, 0.9);
    cairo_stroke(cr);
}

void brushedMetal(cairo_t* cr, double width, double height)
{
    cairo_pattern_t* base = cairo_pattern_create_linear(0.0, 0.0, 0.0, height);
    cairo_pattern_add_color_stop_rgb(base, 0.0, 0.235, 0.247, 0.267);
    cairo_pattern_add_color_stop_rgb(base, 0.45, 0.176, 0.184, 0.200);
    cairo_pattern_add_color_stop_rgb(base, 1.0, 0.110, 0.114, 0.125);
    cairo_rectangle(cr, 0.0, 0.0, width, height);
    cairo_set_source(cr, base);
    cairo_fill(cr);
    cairo_pattern_destroy(base);

    // Grain: every row a faint light or dark streak of random length.
    Random random;
    cairo_set_line_width(cr, 1.0);
    for (int row = 0; row < static_cast<int>(height); ++row) {
        for (int streak = 0; streak < 3; ++streak) {
            const double start = random.next() * width - 40.0;
            const double length = 30.0 + random.next() * 160.0;
            const bool light = random.next() < 0.5;
            const double alpha = 0.015 + random.next() * 0.035;
            cairo_move_to(cr, start, row + 0.5);
            cairo_line_to(cr, start + length, row + 0.5);
            if (light)
                cairo_set_source_rgba(cr, 1.0, 1.0, 1.0, alpha);
            else
                cairo_set_source_rgba(cr, 0.0, 0.0, 0.0, alpha * 1.6);
            cairo_stroke(cr);
        }
    }

    // Bevelled edge: lit from above.
    cairo_rectangle(cr, 0.5, 0.5, width - 1.0, height - 1.0);
    cairo_set_source_rgba(cr, 0.0, 0.0, 0.0, 0.8);
    cairo_stroke(cr);
    cairo_move_to(cr, 1.5, height - 1.5);
    cairo_line_to(cr, 1.5, 1.5);
    cairo_line_to(cr, width - 1.5, 1.5);
    cairo_set_source_rgba(cr, 1.0, 1.0, 1.0, 0.14);
    cairo_stroke(cr);
}

// A recessed area: darker inside, shadow along its upper edge, light along its lower edge.
void recess(cairo_t* cr, double x, double y, double w, double h, double radius, double depth)
{
    roundedRectangle(cr, x, y, w, h, radius);
    cairo_set_source_rgba(cr, 0.0, 0.0, 0.0, depth);
    cairo_fill(cr);
    cairo_pattern_t* edge = cairo_pattern_create_linear(0.0, y, 0.0, y + h);
    cairo_pattern_add_color_stop_rgba(edge, 0.0, 0.0, 0.0, 0.0, 0.7);
    cairo_pattern_add_color_stop_rgba(edge, 0.5, 0.0, 0.0, 0.0, 0.3);
    cairo_pattern_add_color_stop_rgba(edge, 1.0, 1.0, 1.0, 1.0, 0.12);
    roundedRectangle(cr, x + 0.5, y + 0.5, w - 1.0, h - 1.0, radius);
    cairo_set_source(cr, edge);
    cairo_set_line_width(cr, 1.0);
    cairo_stroke(cr);
    cairo_pattern_destroy(edge);
}

// The scale printed around a knob: eleven ticks over the 270 degrees of travel.
void knobScale(cairo_t* cr, double cx, double cy)
{
    cairo_set_line_cap(cr, CAIRO_LINE_CAP_ROUND);
    for (int tick = 0; tick <= 10; ++tick) {
        const double degrees = 225.0 - 27.0 * tick;
        const bool end = tick == 0 || tick == 10;
        double x0, y0, x1, y1;
        polar(cx, cy, 26.5, degrees, x0, y0);
        polar(cx, cy, end ? 31.0 : 29.5, degrees, x1, y1);
        cairo_move_to(cr, x0, y0);
        cairo_line_to(cr, x1, y1);
        cairo_set_line_width(cr, end ? 1.6 : 1.1);
        cairo_set_source_rgba(cr, 0.70, 0.73, 0.77, end ? 0.9 : 0.6);
        cairo_stroke(cr);
    }
    cairo_set_line_cap(cr, CAIRO_LINE_CAP_BUTT);
}

// A panel frame (x, y up from the bottom, w, h) as the centre of its picture area.
void frameCentre(double x, double y, double w, double h, double& cx, double& cy)
{
    cx = x + w * 0.5;
    cy = kPanelHeight - y - h * 0.5;
}

void nameplate(cairo_t* cr)
{
    const double x = 18.0, y = 18.0, w = kPanelWidth - 36.0, h = 80.0;
    cairo_pattern_t* plate = cairo_pattern_create_linear(0.0, y, 0.0, y + h);
    cairo_pattern_add_color_stop_rgb(plate, 0.0, 0.075, 0.080, 0.090);
    cairo_pattern_add_color_stop_rgb(plate, 1.0, 0.035, 0.037, 0.042);
    roundedRectangle(cr, x, y, w, h, 7.0);
    cairo_set_source(cr, plate);
    cairo_fill(cr);
    cairo_pattern_destroy(plate);
    recess(cr, x, y, w, h, 7.0, 0.0);

    // The name glows amber: wide faint strokes of the outline beneath the filled letters.
    cairo_select_font_face(cr, kFont, CAIRO_FONT_SLANT_NORMAL, CAIRO_FONT_WEIGHT_BOLD);
    cairo_set_font_size(cr, 31.0);
    cairo_text_extents_t extents;
    cairo_text_extents(cr, "HvTremolo", &extents);
    const double textX = std::round(kPanelWidth * 0.5 - extents.width * 0.5 - extents.x_bearing);
    const double baseline = 64.0;
    for (double glow : {9.0, 6.0, 3.5}) {
        cairo_move_to(cr, textX, baseline);
        cairo_text_path(cr, "HvTremolo");
        cairo_set_line_width(cr, glow);
        cairo_set_line_join(cr, CAIRO_LINE_JOIN_ROUND);
        cairo_set_source_rgba(cr, kAmber.r, kAmber.g * 0.8, kAmber.b, 0.07);
        cairo_stroke(cr);
    }
    cairo_pattern_t* fill = cairo_pattern_create_linear(0.0, baseline - 24.0, 0.0, baseline);
    cairo_pattern_add_color_stop_rgb(fill, 0.0, 1.0, 0.86, 0.55);
    cairo_pattern_add_color_stop_rgb(fill, 1.0, 0.96, 0.56, 0.10);
    cairo_move_to(cr, textX, baseline);
    cairo_text_path(cr, "HvTremolo");
    cairo_set_source(cr, fill);
    cairo_fill(cr);
    cairo_pattern_destroy(fill);

    cairo_move_to(cr, 40.0, 74.5);
    cairo_line_to(cr, kPanelWidth - 40.0, 74.5);
    cairo_set_line_width(cr, 1.0);
    cairo_set_source_rgba(cr, kAmber.r, kAmber.g, kAmber.b, 0.25);
    cairo_stroke(cr);
    spacedText(cr, "STEREO TREMOLO \xc2\xb7 AUTO-PANNER", kPanelWidth * 0.5, 88.0, 7.5, 1.2,
               kDimLegend);
}

// A dark socket for a rate button; the button's picture sits in it.
void buttonSocket(cairo_t* cr, double cx, double cy)
{
    cairo_arc(cr, cx, cy, 9.0, 0.0, 2.0 * M_PI);
    cairo_set_source_rgba(cr, 0.0, 0.0, 0.0, 0.45);
    cairo_fill(cr);
    cairo_arc(cr, cx, cy, 8.5, radians(20), radians(160));
    cairo_set_source_rgba(cr, 1.0, 1.0, 1.0, 0.10);
    cairo_set_line_width(cr, 1.0);
    cairo_stroke(cr);
}

cairo_surface_t* drawBackground(int scale)
{
    cairo_surface_t* surface = nullptr;
    cairo_t* cr = canvas(CAIRO_FORMAT_RGB24, kPanelWidth, kPanelHeight, scale, surface);
    brushedMetal(cr, kPanelWidth, kPanelHeight);
    screw(cr, 9.0, 9.0, 30.0);
    screw(cr, kPanelWidth - 9.0, 9.0, 75.0);
    screw(cr, 9.0, kPanelHeight - 9.0, 110.0);
    screw(cr, kPanelWidth - 9.0, kPanelHeight - 9.0, 160.0);
    nameplate(cr);

    // The knob field, split into a tremolo and a panner column above the shared mix knob.
    recess(cr, 14.0, 112.0, kPanelWidth - 28.0, 218.0, 8.0, 0.22);
    cairo_move_to(cr, 126.0, 124.0);
    cairo_line_to(cr, 126.0, 258.0);
    cairo_set_source_rgba(cr, 0.0, 0.0, 0.0, 0.45);
    cairo_set_line_width(cr, 1.0);
    cairo_stroke(cr);
    cairo_move_to(cr, 127.0, 124.0);
    cairo_line_to(cr, 127.0, 258.0);
    cairo_set_source_rgba(cr, 1.0, 1.0, 1.0, 0.07);
    cairo_stroke(cr);

    // Each knob's legend is its parameter's name in capitals.
    for (const panel_layout::KnobPlace& knob : panel_layout::kKnobPlaces) {
        double cx, cy;
        frameCentre(knob.frame.x, knob.frame.y, kKnobSize, kKnobSize, cx, cy);
        knobScale(cr, cx, cy);
        std::string legend = kParameterInfo[knob.parameter].name;
        for (char& c : legend)
            c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
        spacedText(cr, legend.c_str(), cx, cy - 35.5, 7.5, 0.9, kLegend);
    }

    // The rate row: two buttons each side of its title, each with its rate beneath.
    recess(cr, 30.0, 334.0, kPanelWidth - 60.0, 42.0, 6.0, 0.18);
    constexpr const char* kRateLegends[kNumRateChoices] = {"44.1k", "48k", "88.2k", "96k"};
    for (int i = 0; i < kNumRateChoices; ++i) {
        const Rect& frame = panel_layout::kRateButtonFrames[i];
        double cx, cy;
        frameCentre(frame.x, frame.y, kButtonSize, kButtonSize, cx, cy);
        buttonSocket(cr, cx, cy);
        spacedText(cr, kRateLegends[i], cx, cy + 20.0, 7.0, 0.3, kLegend);
    }
    spacedText(cr, "SAMPLE", 125.5, 347.0, 7.0, 1.0, kDimLegend);
    spacedText(cr, "RATE", 125.5, 357.0, 7.0, 1.0, kDimLegend);

    spacedText(cr, "HALVO MUSIC", kPanelWidth * 0.5, kPanelHeight - 7.0, 6.0, 2.0, kDimLegend);
    return finish(cr, surface);
}

// Frame i of the filmstrip: the knob turned i/127 of its travel, from 225 degrees clockwise to
// -45. The corners stay transparent so the panel shows through.
cairo_surface_t* drawKnob(int frame, int scale)
{
    const double degrees = 225.0 - 270.0 * frame / (kKnobFrames - 1);
    const double c = kKnobSize * 0.5;
    cairo_surface_t* surface = nullptr;
    cairo_t* cr = canvas(CAIRO_FORMAT_ARGB32, kKnobSize, kKnobSize, scale, surface);

    // Value ring: a dark track over the whole travel, lit amber up to the pointer. Cairo's angles
    // run clockwise in image space, the negative of the mathematical ones.
    cairo_set_line_width(cr, 3.0);
    cairo_arc(cr, c, c, 21.5, radians(-225.0), radians(45.0));
    cairo_set_source_rgba(cr, 0.0, 0.0, 0.0, 0.75);
    cairo_stroke(cr);
    if (frame > 0) {
        cairo_arc(cr, c, c, 21.5, radians(-225.0), radians(-degrees));
        cairo_set_source_rgba(cr, kAmber.r, kAmber.g, kAmber.b, 0.30);
        cairo_set_line_width(cr, 3.4);
        cairo_stroke_preserve(cr);
        cairo_set_source_rgb(cr, kAmber.r, kAmber.g, kAmber.b);
        cairo_set_line_width(cr, 1.8);
        cairo_stroke(cr);
    }

    // Drop shadow, then the skirt with its knurled rim turning with the knob.
    cairo_arc(cr, c, c + 1.5, 18.8, 0.0, 2.0 * M_PI);
    cairo_set_source_rgba(cr, 0.0, 0.0, 0.0, 0.55);
    cairo_fill(cr);
    cairo_pattern_t* skirt = cairo_pattern_create_linear(0.0, c - 18.0, 0.0, c + 18.0);
    cairo_pattern_add_color_stop_rgb(skirt, 0.0, 0.36, 0.38, 0.41);
    cairo_pattern_add_color_stop_rgb(skirt, 1.0, 0.10, 0.105, 0.115);
    cairo_arc(cr, c, c, 18.0, 0.0, 2.0 * M_PI);
    cairo_set_source(cr, skirt);
    cairo_fill(cr);
    cairo_pattern_destroy(skirt);
    cairo_set_line_width(cr, 1.0);
    for (int ridge = 0; ridge < 36; ++ridge) {
        double x0, y0, x1, y1;
        const double at = degrees + ridge * 10.0;
        polar(c, c, 15.2, at, x0, y0);
        polar(c, c, 17.6, at, x1, y1);
        cairo_move_to(cr, x0, y0);
        cairo_line_to(cr, x1, y1);
        // Ridges facing the light are brighter.
        const double light = 0.5 + 0.5 * std::sin(radians(at));
        cairo_set_source_rgba(cr, 0.0, 0.0, 0.0, 0.55 - 0.3 * light);
        cairo_stroke(cr);
    }

    // The cap: brushed top, lit from above, with a soft highlight.
    cairo_pattern_t* cap = cairo_pattern_create_linear(0.0, c - 14.0, 0.0, c + 14.0);
    cairo_pattern_add_color_stop_rgb(cap, 0.0, 0.40, 0.42, 0.46);
    cairo_pattern_add_color_stop_rgb(cap, 1.0, 0.17, 0.18, 0.20);
    cairo_arc(cr, c, c, 14.0, 0.0, 2.0 * M_PI);
    cairo_set_source(cr, cap);
    cairo_fill(cr);
    cairo_pattern_destroy(cap);
    cairo_pattern_t* shine = cairo_pattern_create_radial(c - 4.0, c - 7.0, 0.0, c - 4.0, c - 7.0,
                                                         13.0);
    cairo_pattern_add_color_stop_rgba(shine, 0.0, 1.0, 1.0, 1.0, 0.22);
    cairo_pattern_add_color_stop_rgba(shine, 1.0, 1.0, 1.0, 1.0, 0.0);
    cairo_arc(cr, c, c, 14.0, 0.0, 2.0 * M_PI);
    cairo_set_source(cr, shine);
    cairo_fill(cr);
    cairo_pattern_destroy(shine);
    cairo_pattern_t* rim = cairo_pattern_create_linear(0.0, c - 14.0, 0.0, c + 14.0);
    cairo_pattern_add_color_stop_rgba(rim, 0.0, 1.0, 1.0, 1.0, 0.35);
    cairo_pattern_add_color_stop_rgba(rim, 1.0, 0.0, 0.0, 0.0, 0.6);
    cairo_arc(cr, c, c, 13.5, 0.0, 2.0 * M_PI);
    cairo_set_source(cr, rim);
    cairo_stroke(cr);
    cairo_pattern_destroy(rim);

    // The pointer: a bright line from near the centre to the rim.
    double x0, y0, x1, y1;
    polar(c, c, 4.5, degrees, x0, y0);
    polar(c, c, 12.5, degrees, x1, y1);
    cairo_set_line_cap(cr, CAIRO_LINE_CAP_ROUND);
    cairo_move_to(cr, x0, y0);
    cairo_line_to(cr, x1, y1);
    cairo_set_source_rgba(cr, 0.0, 0.0, 0.0, 0.6);
    cairo_set_line_width(cr, 4.0);
    cairo_stroke_preserve(cr);
    cairo_set_source_rgb(cr, 1.0, 0.93, 0.80);
    cairo_set_line_width(cr, 2.2);
    cairo_stroke(cr);

    return finish(cr, surface);
}

// A round rate button: a metal bezel around a lamp that is dark when off and glows when on.
cairo_surface_t* drawButton(bool on, int scale)
{
    const double c = kButtonSize * 0.5;
    cairo_surface_t* surface = nullptr;
    cairo_t* cr = canvas(CAIRO_FORMAT_ARGB32, kButtonSize, kButtonSize, scale, surface);
    cairo_pattern_t* bezel = cairo_pattern_create_linear(0.0, 0.0, 0.0, kButtonSize);
    cairo_pattern_add_color_stop_rgb(bezel, 0.0, 0.78, 0.80, 0.83);
    cairo_pattern_add_color_stop_rgb(bezel, 1.0, 0.22, 0.23, 0.25);
    cairo_arc(cr, c, c, 6.3, 0.0, 2.0 * M_PI);
    cairo_set_source(cr, bezel);
    cairo_fill(cr);
    cairo_pattern_destroy(bezel);
    cairo_arc(cr, c, c, 4.6, 0.0, 2.0 * M_PI);
    cairo_set_source_rgb(cr, 0.05, 0.05, 0.06);
    cairo_fill(cr);

    cairo_pattern_t* lamp = cairo_pattern_create_radial(c - 1.0, c - 1.2, 0.3, c, c, 4.2);
    if (on) {
        cairo_pattern_add_color_stop_rgb(lamp, 0.0, 1.0, 0.98, 0.85);
        cairo_pattern_add_color_stop_rgb(lamp, 0.45, 1.0, 0.74, 0.18);
        cairo_pattern_add_color_stop_rgb(lamp, 1.0, 0.80, 0.38, 0.0);
    } else {
        cairo_pattern_add_color_stop_rgb(lamp, 0.0, 0.36, 0.30, 0.22);
        cairo_pattern_add_color_stop_rgb(lamp, 1.0, 0.13, 0.10, 0.07);
    }
    cairo_arc(cr, c, c, 4.0, 0.0, 2.0 * M_PI);
    cairo_set_source(cr, lamp);
    cairo_fill(cr);
    cairo_pattern_destroy(lamp);
    return finish(cr, surface);
}

// The slider's bar: a groove with a printed scale.
cairo_surface_t* drawSliderBar(int scale)
{
    const int width = 160, height = 20;
    cairo_surface_t* surface = nullptr;
    cairo_t* cr = canvas(CAIRO_FORMAT_ARGB32, width, height, scale, surface);
    for (int tick = 0; tick <= 10; ++tick) {
        const double x = 10.5 + tick * (width - 21.0) / 10.0;
        cairo_move_to(cr, std::round(x) + 0.5, 2.0);
        cairo_line_to(cr, std::round(x) + 0.5, tick % 5 == 0 ? 6.5 : 5.0);
    }
    cairo_set_source_rgba(cr, 0.70, 0.73, 0.77, 0.7);
    cairo_set_line_width(cr, 1.0);
    cairo_stroke(cr);
    roundedRectangle(cr, 6.0, 9.0, width - 12.0, 6.0, 3.0);
    cairo_set_source_rgb(cr, 0.04, 0.04, 0.05);
    cairo_fill(cr);
    recess(cr, 6.0, 9.0, width - 12.0, 6.0, 3.0, 0.0);
    return finish(cr, surface);
}

// The slider's thumb: a small round cap with an amber mark.
cairo_surface_t* drawSliderThumb(int scale)
{
    const double size = 12.0, c = size * 0.5;
    cairo_surface_t* surface = nullptr;
    cairo_t* cr = canvas(CAIRO_FORMAT_ARGB32, size, size, scale, surface);
    cairo_pattern_t* cap = cairo_pattern_create_linear(0.0, 0.0, 0.0, size);
    cairo_pattern_add_color_stop_rgb(cap, 0.0, 0.62, 0.64, 0.68);
    cairo_pattern_add_color_stop_rgb(cap, 1.0, 0.20, 0.21, 0.23);
    cairo_arc(cr, c, c, 5.5, 0.0, 2.0 * M_PI);
    cairo_set_source(cr, cap);
    cairo_fill(cr);
    cairo_move_to(cr, c, 2.5);
    cairo_line_to(cr, c, 9.5);
    cairo_set_source_rgb(cr, kAmber.r, kAmber.g, kAmber.b);
    cairo_set_line_width(cr, 1.5);
    cairo_stroke(cr);
    return finish(cr, surface);
}

} // namespace

std::vector<std::string> pictureNames()
{
    std::vector<std::string> names = {"tremolobk"};
    for (int frame = 0; frame < kKnobFrames; ++frame)
        names.push_back("knob" + std::to_string(frame));
    names.insert(names.end(), {"ringbutton1", "ringbutton2", "bmp00131", "bmp00130"});
    return names;
}

cairo_surface_t* drawPicture(const std::string& name, int scale)
{
    if (scale < 1 || scale > picture_names::kLargestScale)
        return nullptr;
    if (name == "tremolobk")
        return drawBackground(scale);
    if (name == "ringbutton1" || name == "ringbutton2")
        return drawButton(name == "ringbutton2", scale);
    if (name == "bmp00131")
        return drawSliderBar(scale);
    if (name == "bmp00130")
        return drawSliderThumb(scale);
    const std::string prefix = "knob";
    if (name.rfind(prefix, 0) == 0) {
        for (int frame = 0; frame < kKnobFrames; ++frame)
            if (name == prefix + std::to_string(frame))
                return drawKnob(frame, scale);
    }
    return nullptr;
}
