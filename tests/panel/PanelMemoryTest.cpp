// Opening the editor builds a new panel every time; a thousand panels must cost no more memory
// than one, since the pictures are decoded once and shared.
#include <gtest/gtest.h>

#include <malloc.h>

#include "platform/Renderer.h"
#include "tests/panel/PanelTestSupport.h"

namespace {

size_t heapInUse()
{
    return mallinfo2().uordblks;
}

void buildDrawAndDestroy(AudioEffect& effect, Canvas& canvas)
{
    auto panel = makePanel(&effect);
    Renderer::renderAll(canvas.context(), *panel);
    panel->updateView(4, 0.3f);
    Renderer::render(canvas.context(), *panel);
}

TEST(PanelMemory, AThousandPanelsBuiltAndDestroyedDoNotGrowTheHeap)
{
    RecordingEffect effect;
    Canvas canvas(253, 400);
    // The first panels decode the pictures and warm cairo's caches.
    for (int i = 0; i < 20; ++i)
        buildDrawAndDestroy(effect, canvas);
    const size_t before = heapInUse();
    for (int i = 0; i < 1000; ++i)
        buildDrawAndDestroy(effect, canvas);
    const size_t after = heapInUse();
    // One panel's own allocations (views, layers, the filmstrip vector) come to some 60 KB; a
    // leak of any of them a thousand times would show as megabytes.
    EXPECT_LT(after, before + 64 * 1024) << "before " << before << ", after " << after;
}

} // namespace
