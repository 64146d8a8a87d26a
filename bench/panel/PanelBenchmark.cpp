// What a redraw of the panel costs, at scale 1 and 2 (the argument): the whole panel (an expose of
// the window), one knob (a host change or a drag step), the value readout appearing or going
// (its area and what lies beneath), and a drag step with the readout showing (the knob and the
// readout's new value). Goal: a full redraw within 0.5 ms at scale 1.
#include <benchmark/benchmark.h>

#include <cairo.h>

#include <chrono>

#include "panel/FlatKnob10.h"
#include "panel/HalvoUiView10.h"
#include "panel/PanelLayout.h"
#include "platform/MouseTracker.h"
#include "platform/Renderer.h"

namespace {

struct PanelOnScreen {
    explicit PanelOnScreen(int scale)
        : scale(scale),
          panel(HalvoUiView10::kFrame, nullptr, scale),
          target(cairo_image_surface_create(CAIRO_FORMAT_RGB24, panel_layout::kPanelWidth * scale,
                                            panel_layout::kPanelHeight * scale)),
          cr(cairo_create(target))
    {
        panel.awakeFromNib();
        Renderer::renderAll(cr, panel, scale); // pictures decoded, layers made
    }
    ~PanelOnScreen()
    {
        cairo_destroy(cr);
        cairo_surface_destroy(target);
    }
    DeviceRect render() { return Renderer::render(cr, panel, scale); }
    Point middleOf(int32_t parameter)
    {
        const Rect& f = panel.knobView()->knobForParameter(parameter)->frame();
        return {f.x + f.width / 2, f.y + f.height / 2};
    }

    int scale;
    HalvoUiView10 panel;
    cairo_surface_t* target;
    cairo_t* cr;
};

void fullRedraw(benchmark::State& state)
{
    PanelOnScreen screen(static_cast<int>(state.range(0)));
    for (auto _ : state) {
        benchmark::DoNotOptimize(Renderer::renderAll(screen.cr, screen.panel, screen.scale));
        cairo_surface_flush(screen.target);
    }
}
BENCHMARK(fullRedraw)->Arg(1)->Arg(2)->Unit(benchmark::kMicrosecond);

void oneKnobRedraw(benchmark::State& state)
{
    PanelOnScreen screen(static_cast<int>(state.range(0)));
    ControlPoint10* mix = screen.panel.knobView()->knobForParameter(4)->controlPoint();
    int32_t step = 0;
    for (auto _ : state) {
        step = (step + 37) % 100;
        mix->setIntValue(step);
        benchmark::DoNotOptimize(screen.render());
        cairo_surface_flush(screen.target);
    }
}
BENCHMARK(oneKnobRedraw)->Arg(1)->Arg(2)->Unit(benchmark::kMicrosecond);

// The pointer rests on the tremolo speed knob until the readout shows, then moves off the knobs,
// and back: every pass draws the readout appearing or going.
void readoutRedraw(benchmark::State& state)
{
    PanelOnScreen screen(static_cast<int>(state.range(0)));
    const Point onKnob = screen.middleOf(1);
    auto now = std::chrono::steady_clock::time_point{};
    bool shown = false;
    for (auto _ : state) {
        if (shown) {
            MouseTracker::move(screen.panel, {126, 300});
        } else {
            MouseTracker::move(screen.panel, onKnob);
            screen.panel.idle(now);
            now += std::chrono::seconds(1);
            screen.panel.idle(now);
        }
        shown = !shown;
        benchmark::DoNotOptimize(screen.render());
        cairo_surface_flush(screen.target);
    }
}
BENCHMARK(readoutRedraw)->Arg(1)->Arg(2)->Unit(benchmark::kMicrosecond);

// A drag on the tremolo speed knob, up and down by a step: the knob and the readout's value.
void dragStepWithReadout(benchmark::State& state)
{
    PanelOnScreen screen(static_cast<int>(state.range(0)));
    const Point press = screen.middleOf(1);
    MouseTracker mouse;
    mouse.press(screen.panel, press);
    screen.render();
    double rise = 0;
    for (auto _ : state) {
        rise = rise == 0 ? 3 : 0;
        mouse.drag({press.x, press.y + rise});
        benchmark::DoNotOptimize(screen.render());
        cairo_surface_flush(screen.target);
    }
    mouse.release(press);
}
BENCHMARK(dragStepWithReadout)->Arg(1)->Arg(2)->Unit(benchmark::kMicrosecond);

// Opening the editor: building the panel and its first drawing.
void buildAndDraw(benchmark::State& state)
{
    const int scale = static_cast<int>(state.range(0));
    cairo_surface_t* target = cairo_image_surface_create(
        CAIRO_FORMAT_RGB24, panel_layout::kPanelWidth * scale, panel_layout::kPanelHeight * scale);
    cairo_t* cr = cairo_create(target);
    for (auto _ : state) {
        HalvoUiView10 panel(HalvoUiView10::kFrame, nullptr, scale);
        panel.awakeFromNib();
        benchmark::DoNotOptimize(Renderer::renderAll(cr, panel, scale));
    }
    cairo_destroy(cr);
    cairo_surface_destroy(target);
}
BENCHMARK(buildAndDraw)->Arg(1)->Arg(2)->Unit(benchmark::kMicrosecond);

} // namespace

BENCHMARK_MAIN();
