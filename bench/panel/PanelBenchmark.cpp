// What a redraw of the panel costs: the whole panel (an expose of the window) and one knob (a
// host change or a drag step). Goal: a full redraw within 0.5 ms.
#include <benchmark/benchmark.h>

#include <cairo.h>

#include "panel/FlatKnob10.h"
#include "panel/HalvoUiView10.h"
#include "platform/Renderer.h"

namespace {

struct PanelOnScreen {
    PanelOnScreen()
        : panel(HalvoUiView10::kFrame, nullptr),
          target(cairo_image_surface_create(CAIRO_FORMAT_RGB24, 253, 400)),
          cr(cairo_create(target))
    {
        panel.awakeFromNib();
        Renderer::renderAll(cr, panel); // pictures decoded, layers made
    }
    ~PanelOnScreen()
    {
        cairo_destroy(cr);
        cairo_surface_destroy(target);
    }

    HalvoUiView10 panel;
    cairo_surface_t* target;
    cairo_t* cr;
};

void fullRedraw(benchmark::State& state)
{
    PanelOnScreen screen;
    for (auto _ : state) {
        benchmark::DoNotOptimize(Renderer::renderAll(screen.cr, screen.panel));
        cairo_surface_flush(screen.target);
    }
}
BENCHMARK(fullRedraw)->Unit(benchmark::kMicrosecond);

void oneKnobRedraw(benchmark::State& state)
{
    PanelOnScreen screen;
    ControlPoint10* mix = screen.panel.knobView()->knobForParameter(4)->controlPoint();
    int32_t step = 0;
    for (auto _ : state) {
        step = (step + 37) % 100;
        mix->setIntValue(step);
        benchmark::DoNotOptimize(Renderer::render(screen.cr, screen.panel));
        cairo_surface_flush(screen.target);
    }
}
BENCHMARK(oneKnobRedraw)->Unit(benchmark::kMicrosecond);

// Opening the editor: building the panel and its first drawing.
void buildAndDraw(benchmark::State& state)
{
    cairo_surface_t* target = cairo_image_surface_create(CAIRO_FORMAT_RGB24, 253, 400);
    cairo_t* cr = cairo_create(target);
    for (auto _ : state) {
        HalvoUiView10 panel(HalvoUiView10::kFrame, nullptr);
        panel.awakeFromNib();
        benchmark::DoNotOptimize(Renderer::renderAll(cr, panel));
    }
    cairo_destroy(cr);
    cairo_surface_destroy(target);
}
BENCHMARK(buildAndDraw)->Unit(benchmark::kMicrosecond);

} // namespace

BENCHMARK_MAIN();
