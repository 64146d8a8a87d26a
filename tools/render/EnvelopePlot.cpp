#include "tools/render/EnvelopePlot.h"

#include <cairo.h>
#include <fontconfig/fontconfig.h>

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdio>
#include <memory>
#include <utility>
#include <vector>

namespace {

struct Colour {
    double r, g, b;
};
constexpr Colour kInputColour{0.62, 0.62, 0.62};
constexpr Colour kLeftColour{0.12, 0.40, 0.80};
constexpr Colour kRightColour{0.93, 0.45, 0.05};
constexpr Colour kBothColour{0.45, 0.20, 0.65};
constexpr Colour kTextColour{0.10, 0.10, 0.10};
constexpr Colour kGridColour{0.88, 0.88, 0.88};

constexpr double kMarginLeft = 62.0;
constexpr double kMarginRight = 18.0;
// The title and, below it, the legend: outside the plot area, so they never cover data.
constexpr double kMarginTop = 52.0;
constexpr double kLegendY = 38.0;
constexpr double kMarginBottom = 46.0;

// Quieter than this is drawn at the bottom edge: below it nothing is audible in a mix.
constexpr double kFloorDb = -60.0;
// A float file may be far above full scale; the axis grows to show it, within reason.
constexpr double kHighestTopDb = 24.0;

struct Frame {
    double x0, y0, x1, y1; // plot area in pixels, y grows downwards
    double seconds;
    double bottomDb, topDb;

    double x(double t) const { return x0 + (x1 - x0) * (seconds > 0.0 ? t / seconds : 0.0); }
    double y(double db) const
    {
        const double clamped = std::clamp(db, bottomDb, topDb);
        return y1 - (y1 - y0) * (clamped - bottomDb) / (topDb - bottomDb);
    }
};

void setColour(cairo_t* cr, const Colour& c)
{
    cairo_set_source_rgb(cr, c.r, c.g, c.b);
}

// A tick spacing of 1, 2 or 5 times a power of ten giving at most `most` ticks over `span`.
double tickStep(double span, int most)
{
    double step = 0.001;
    for (;;) {
        for (double factor : {1.0, 2.0, 5.0}) {
            if (span / (step * factor) <= most)
                return step * factor;
        }
        step *= 10.0;
    }
}

std::string formatTick(double value, double step)
{
    char text[32];
    const int decimals = step >= 1.0 ? 0 : step >= 0.1 ? 1 : step >= 0.01 ? 2 : 3;
    std::snprintf(text, sizeof text, "%.*f", decimals, value);
    return text;
}

void drawText(cairo_t* cr, const std::string& text, double x, double y, double alignX,
              double alignY)
{
    cairo_text_extents_t extents;
    cairo_text_extents(cr, text.c_str(), &extents);
    cairo_move_to(cr, x - extents.x_bearing - extents.width * alignX,
                  y - extents.y_bearing - extents.height * alignY);
    cairo_show_text(cr, text.c_str());
}

void drawAxes(cairo_t* cr, const Frame& f)
{
    cairo_set_font_size(cr, 12.0);
    cairo_set_line_width(cr, 1.0);

    const double timeStep = tickStep(f.seconds > 0.0 ? f.seconds : 1.0, 12);
    for (double t = 0.0; t <= f.seconds + timeStep * 1e-6; t += timeStep) {
        const double x = std::round(f.x(t)) + 0.5;
        setColour(cr, kGridColour);
        cairo_move_to(cr, x, f.y0);
        cairo_line_to(cr, x, f.y1);
        cairo_stroke(cr);
        setColour(cr, kTextColour);
        drawText(cr, formatTick(t, timeStep), x, f.y1 + 6.0, 0.5, 0.0);
    }
    for (double db = std::ceil(f.bottomDb / 10.0) * 10.0; db <= f.topDb; db += 10.0) {
        const double y = std::round(f.y(db)) + 0.5;
        setColour(cr, kGridColour);
        cairo_move_to(cr, f.x0, y);
        cairo_line_to(cr, f.x1, y);
        cairo_stroke(cr);
        setColour(cr, kTextColour);
        drawText(cr, formatTick(db, 10.0), f.x0 - 6.0, y, 1.0, 0.5);
    }

    setColour(cr, kTextColour);
    cairo_rectangle(cr, f.x0 + 0.5, f.y0 + 0.5, f.x1 - f.x0 - 1.0, f.y1 - f.y0 - 1.0);
    cairo_stroke(cr);
    drawText(cr, "time (s)", (f.x0 + f.x1) / 2.0, f.y1 + 24.0, 0.5, 0.0);
    cairo_save(cr);
    cairo_translate(cr, 16.0, (f.y0 + f.y1) / 2.0);
    cairo_rotate(cr, -M_PI / 2.0);
    drawText(cr, "level (dBFS, RMS over 30 ms)", 0.0, 0.0, 0.5, 0.5);
    cairo_restore(cr);
}

// Where a long file puts many levels on one pixel column, the line goes from the column's
// quietest to its loudest level: the same picture as every point drawn, at a fraction of the
// cost (an hour of audio has 720000 levels).
std::vector<std::pair<double, double>> envelopePoints(const Frame& f,
                                                      const std::vector<float>& levels,
                                                      double secondsPerLevel)
{
    std::vector<std::pair<double, double>> points;
    const double columns = f.x1 - f.x0;
    // Each level is drawn at the middle of its window.
    auto xOf = [&](size_t i) {
        return f.x(std::min((static_cast<double>(i) + 0.5) * secondsPerLevel, f.seconds));
    };
    if (static_cast<double>(levels.size()) <= 2.0 * columns) {
        for (size_t i = 0; i < levels.size(); ++i)
            points.emplace_back(xOf(i), f.y(levels[i]));
        return points;
    }
    size_t i = 0;
    while (i < levels.size()) {
        const double column = std::floor(xOf(i));
        double quietest = levels[i], loudest = levels[i];
        for (; i < levels.size() && std::floor(xOf(i)) == column; ++i) {
            quietest = std::min(quietest, static_cast<double>(levels[i]));
            loudest = std::max(loudest, static_cast<double>(levels[i]));
        }
        points.emplace_back(column + 0.5, f.y(quietest));
        points.emplace_back(column + 0.5, f.y(loudest));
    }
    return points;
}

void drawEnvelope(cairo_t* cr, const Frame& f, const std::vector<float>& levels,
                  double secondsPerLevel, const Colour& colour, double width)
{
    if (levels.empty())
        return;
    cairo_save(cr);
    cairo_rectangle(cr, f.x0, f.y0, f.x1 - f.x0, f.y1 - f.y0);
    cairo_clip(cr);
    for (const auto& [x, y] : envelopePoints(f, levels, secondsPerLevel))
        cairo_line_to(cr, x, y);
    setColour(cr, colour);
    cairo_set_line_width(cr, width);
    cairo_set_line_join(cr, CAIRO_LINE_JOIN_ROUND);
    cairo_stroke(cr);
    cairo_restore(cr);
}

// One row, right-aligned above the plot area.
void drawLegend(cairo_t* cr, const Frame& f, bool sidesEqual)
{
    struct Entry {
        const char* label;
        Colour colour;
    };
    std::vector<Entry> entries = {{"input", kInputColour}};
    if (sidesEqual)
        entries.push_back({"output (L = R)", kBothColour});
    else
        entries.insert(entries.end(), {{"output left", kLeftColour}, {"output right", kRightColour}});
    cairo_set_font_size(cr, 12.0);
    constexpr double kSwatch = 24.0, kGap = 6.0, kSpacing = 18.0;
    double width = 0.0;
    for (const Entry& entry : entries) {
        cairo_text_extents_t extents;
        cairo_text_extents(cr, entry.label, &extents);
        width += kSwatch + kGap + extents.x_advance + kSpacing;
    }
    double x = f.x1 - (width - kSpacing);
    for (const Entry& entry : entries) {
        setColour(cr, entry.colour);
        cairo_set_line_width(cr, 3.0);
        cairo_move_to(cr, x, kLegendY);
        cairo_line_to(cr, x + kSwatch, kLegendY);
        cairo_stroke(cr);
        setColour(cr, kTextColour);
        drawText(cr, entry.label, x + kSwatch + kGap, kLegendY, 0.0, 0.5);
        cairo_text_extents_t extents;
        cairo_text_extents(cr, entry.label, &extents);
        x += kSwatch + kGap + extents.x_advance + kSpacing;
    }
}

double topOfScale(const PlotData& data)
{
    double loudest = kFloorDb;
    for (const auto* levels : {&data.input, &data.left, &data.right})
        for (float level : *levels)
            if (std::isfinite(level))
                loudest = std::max(loudest, static_cast<double>(level));
    if (loudest <= 0.0)
        return 0.0;
    return std::min(kHighestTopDb, std::ceil(loudest / 6.0) * 6.0);
}


cairo_status_t writeToDescriptor(void* closure, const unsigned char* data, unsigned int length)
{
    const int descriptor = *static_cast<int*>(closure);
    while (length > 0) {
        const ssize_t written = write(descriptor, data, length);
        if (written < 0 && errno == EINTR)
            continue;
        if (written <= 0)
            return CAIRO_STATUS_WRITE_ERROR;
        data += written;
        length -= static_cast<unsigned int>(written);
    }
    return CAIRO_STATUS_SUCCESS;
}

bool drawEnvelopePlot(const PlotData& data, int descriptor, std::string& error)
{
    using Surface = std::unique_ptr<cairo_surface_t, decltype(&cairo_surface_destroy)>;
    using Context = std::unique_ptr<cairo_t, decltype(&cairo_destroy)>;
    Surface surface(cairo_image_surface_create(CAIRO_FORMAT_RGB24, kPlotWidth, kPlotHeight),
                    cairo_surface_destroy);
    Context context(cairo_create(surface.get()), cairo_destroy);
    cairo_t* cr = context.get();

    cairo_set_source_rgb(cr, 1.0, 1.0, 1.0);
    cairo_paint(cr);

    const Frame frame{.x0 = kMarginLeft,
                      .y0 = kMarginTop,
                      .x1 = kPlotWidth - kMarginRight,
                      .y1 = kPlotHeight - kMarginBottom,
                      .seconds = data.totalSeconds,
                      .bottomDb = kFloorDb,
                      .topDb = topOfScale(data)};
    drawAxes(cr, frame);
    drawEnvelope(cr, frame, data.input, data.secondsPerLevel, kInputColour, 2.0);
    if (data.sidesEqual) {
        drawEnvelope(cr, frame, data.left, data.secondsPerLevel, kBothColour, 2.0);
    } else {
        // Left is drawn wider beneath right, so both stay visible where they are equal.
        drawEnvelope(cr, frame, data.left, data.secondsPerLevel, kLeftColour, 3.0);
        drawEnvelope(cr, frame, data.right, data.secondsPerLevel, kRightColour, 1.2);
    }
    drawLegend(cr, frame, data.sidesEqual);

    setColour(cr, kTextColour);
    cairo_select_font_face(cr, "sans-serif", CAIRO_FONT_SLANT_NORMAL, CAIRO_FONT_WEIGHT_BOLD);
    // A long title is set smaller, so that it always fits the width.
    double titleSize = 15.0;
    cairo_set_font_size(cr, titleSize);
    cairo_text_extents_t title;
    cairo_text_extents(cr, data.title.c_str(), &title);
    if (title.width > kPlotWidth - 20.0) {
        titleSize *= (kPlotWidth - 20.0) / title.width;
        cairo_set_font_size(cr, titleSize);
    }
    drawText(cr, data.title, kPlotWidth / 2.0, 8.0, 0.5, 0.0);

    cairo_surface_flush(surface.get());
    const cairo_status_t status =
        cairo_surface_write_to_png_stream(surface.get(), writeToDescriptor, &descriptor);
    if (status != CAIRO_STATUS_SUCCESS) {
        error = std::string("cannot write plot: ") + cairo_status_to_string(status);
        return false;
    }
    return true;
}

} // namespace

bool writeEnvelopePlot(const PlotData& data, int descriptor, std::string& error)
{
    const bool written = drawEnvelopePlot(data, descriptor, error);
    // Cairo and fontconfig keep font caches for the life of the process; they are let go here,
    // with every cairo object already destroyed, so leak checkers see a clean exit.
    cairo_debug_reset_static_data();
    FcFini();
    return written;
}
