// The view layer under the panel: drawing order, compositing, redisplay and mouse delivery.
#include <gtest/gtest.h>

#include "platform/MouseTracker.h"
#include "platform/Renderer.h"
#include "tests/panel/PanelTestSupport.h"

namespace {

constexpr uint32_t kRed = 0xffff0000u;
constexpr uint32_t kBlue = 0xff0000ffu;

// Fills itself with one colour and counts its drawings; optionally asks to be drawn again.
class FilledView : public View {
public:
    FilledView(const Rect& frame, Color color) : View(frame), color(color) {}

    void drawRect(cairo_t* cr, const Rect& rect) override
    {
        ++drawings;
        cairo_set_source_rgba(cr, color.red, color.green, color.blue, color.alpha);
        cairo_rectangle(cr, rect.x, rect.y, rect.width, rect.height);
        cairo_fill(cr);
        if (askAgain)
            setNeedsDisplay();
    }
    void mouseDown(const MouseEvent& e) override { events.push_back({'d', e.location}); }
    void mouseDragged(const MouseEvent& e) override { events.push_back({'m', e.location}); }
    void mouseUp(const MouseEvent& e) override { events.push_back({'u', e.location}); }

    struct Event {
        char kind;
        Point at;
    };
    Color color;
    int drawings = 0;
    bool askAgain = false;
    std::vector<Event> events;
};

// Draws one picture with a chosen compositing.
class PictureView : public View {
public:
    PictureView(const Rect& frame, Image picture, Compositing operation, double opacity = 1.0)
        : View(frame), picture(std::move(picture)), operation(operation), opacity(opacity)
    {
    }
    void drawRect(cairo_t* cr, const Rect& rect) override
    {
        picture.drawInRect(cr, rect, operation, opacity);
    }

    Image picture;
    Compositing operation;
    double opacity;
};

// A 2 x 2 picture: top row red and blue, bottom row transparent and blue.
Image quadrantPicture()
{
    cairo_surface_t* surface = cairo_image_surface_create(CAIRO_FORMAT_ARGB32, 2, 2);
    cairo_surface_flush(surface);
    auto* pixels = reinterpret_cast<uint32_t*>(cairo_image_surface_get_data(surface));
    const int stride = cairo_image_surface_get_stride(surface) / 4;
    pixels[0] = kRed;
    pixels[1] = kBlue;
    pixels[stride] = 0;
    pixels[stride + 1] = kBlue;
    cairo_surface_mark_dirty(surface);
    return Image(surface);
}

TEST(ViewLayer, DrawsSubviewsBackToFrontWithYUpFromTheLowerLeftCorner)
{
    View root({0, 0, 10, 10});
    root.addSubview(std::make_unique<FilledView>(Rect{0, 0, 10, 10}, Color{1, 0, 0, 1}));
    root.addSubview(std::make_unique<FilledView>(Rect{0, 0, 5, 5}, Color{0, 0, 1, 1}));
    Canvas canvas(10, 10);
    Renderer::renderAll(canvas.context(), root);
    EXPECT_EQ(canvas.pixel(1, 8), kBlue); // device row 8 is panel y 1
    EXPECT_EQ(canvas.pixel(1, 1), kRed);
    EXPECT_EQ(canvas.pixel(8, 8), kRed);
}

TEST(ViewLayer, AViewAddedBelowAllIsDrawnFirst)
{
    View root({0, 0, 4, 4});
    root.addSubview(std::make_unique<FilledView>(Rect{0, 0, 4, 4}, Color{1, 0, 0, 1}));
    root.addSubviewBelowAll(std::make_unique<FilledView>(Rect{0, 0, 4, 4}, Color{0, 0, 1, 1}));
    Canvas canvas(4, 4);
    Renderer::renderAll(canvas.context(), root);
    EXPECT_EQ(canvas.pixel(2, 2), kRed);
}

TEST(ViewLayer, PicturesStandUprightAndScaleToTheirRectangle)
{
    View root({0, 0, 4, 4});
    root.addSubview(
        std::make_unique<PictureView>(Rect{0, 0, 4, 4}, quadrantPicture(), Compositing::Copy));
    Canvas canvas(4, 4);
    canvas.fill(0, 1, 0, 1);
    Renderer::renderAll(canvas.context(), root);
    // Nearest pixels of each 2 x 2 quadrant keep the picture's colours (scaling may blend edges).
    EXPECT_EQ(canvas.pixel(0, 0), kRed);
    EXPECT_EQ(canvas.pixel(3, 0), kBlue);
    EXPECT_EQ(canvas.pixel(3, 3), kBlue);
    EXPECT_EQ(alphaOf(canvas.pixel(0, 3)), 0u); // copy replaced the green with transparency
}

TEST(ViewLayer, CopyReplacesOnlyItsRectangleAndSourceOverBlends)
{
    View root({0, 0, 6, 2});
    root.addSubview(std::make_unique<FilledView>(Rect{0, 0, 6, 2}, Color{0, 1, 0, 1}));
    root.addSubview(
        std::make_unique<PictureView>(Rect{0, 0, 2, 2}, quadrantPicture(), Compositing::Copy));
    root.addSubview(std::make_unique<PictureView>(Rect{4, 0, 2, 2}, quadrantPicture(),
                                                  Compositing::SourceOver));
    Canvas canvas(6, 2);
    Renderer::renderAll(canvas.context(), root);
    EXPECT_EQ(alphaOf(canvas.pixel(0, 1)), 0u);   // copied transparency
    EXPECT_EQ(canvas.pixel(2, 1), 0xff00ff00u);   // untouched beside the copy
    EXPECT_EQ(canvas.pixel(4, 1), 0xff00ff00u);   // blended transparency shows the green
    EXPECT_EQ(canvas.pixel(4, 0), kRed);
}

TEST(ViewLayer, OpacityWeightsTheBlend)
{
    View root({0, 0, 2, 2});
    root.addSubview(std::make_unique<FilledView>(Rect{0, 0, 2, 2}, Color{0, 0, 0, 1}));
    root.addSubview(std::make_unique<PictureView>(Rect{0, 0, 2, 2}, quadrantPicture(),
                                                  Compositing::SourceOver, 0.5));
    Canvas canvas(2, 2);
    Renderer::renderAll(canvas.context(), root);
    const uint32_t red = (canvas.pixel(0, 0) >> 16) & 0xff;
    EXPECT_NEAR(red, 128u, 1u);
}

TEST(ViewLayer, ALayerBackedViewIsBlendedOverItsSuperview)
{
    // The copy inside the layer clears the layer, not the green beneath it.
    View root({0, 0, 2, 2});
    root.addSubview(std::make_unique<FilledView>(Rect{0, 0, 2, 2}, Color{0, 1, 0, 1}));
    auto* layered = root.addSubview(
        std::make_unique<PictureView>(Rect{0, 0, 2, 2}, quadrantPicture(), Compositing::Copy));
    layered->setWantsLayer(true);
    Canvas canvas(2, 2);
    Renderer::renderAll(canvas.context(), root);
    EXPECT_EQ(canvas.pixel(0, 1), 0xff00ff00u);
    EXPECT_EQ(canvas.pixel(0, 0), kRed);

    layered->setLayerBackgroundColor({0, 0, 1, 1});
    Renderer::renderAll(canvas.context(), root);
    EXPECT_EQ(canvas.pixel(0, 0), kRed); // the copy still replaces the layer colour
}

TEST(ViewLayer, AMissingPictureDrawsNothing)
{
    const Image missing = Image::named("no such picture");
    EXPECT_TRUE(missing.isEmpty());
    View root({0, 0, 2, 2});
    root.addSubview(std::make_unique<FilledView>(Rect{0, 0, 2, 2}, Color{0, 1, 0, 1}));
    root.addSubview(std::make_unique<PictureView>(Rect{0, 0, 2, 2}, missing, Compositing::Copy));
    Canvas canvas(2, 2);
    Renderer::renderAll(canvas.context(), root);
    EXPECT_EQ(canvas.pixel(1, 1), 0xff00ff00u);
}

TEST(ViewLayer, NamedPicturesAreDecodedOnceAndShared)
{
    const Image first = Image::named("knob0");
    const Image second = Image::named("knob0");
    ASSERT_FALSE(first.isEmpty());
    EXPECT_EQ(first.surface(), second.surface());
    EXPECT_EQ(first.width(), 48);
    EXPECT_EQ(Image::named("tremolobk").width(), 253);
    EXPECT_EQ(Image::named("tremolobk").height(), 400);
}

TEST(ViewLayer, SetNeedsDisplayOnlyMarksAndAPassDrawsOnlyTheMarkedArea)
{
    View root({0, 0, 20, 20});
    auto* back = root.addSubview(std::make_unique<FilledView>(Rect{0, 0, 20, 20}, Color{}));
    auto* small = root.addSubview(std::make_unique<FilledView>(Rect{2, 3, 4, 5}, Color{}));
    Canvas canvas(20, 20);
    Renderer::renderAll(canvas.context(), root);
    EXPECT_FALSE(root.needsDisplayAnywhere());
    EXPECT_TRUE(Renderer::render(canvas.context(), root).isEmpty());

    small->setNeedsDisplay();
    EXPECT_EQ(small->drawings, 1); // marking draws nothing
    const DeviceRect drawn = Renderer::render(canvas.context(), root);
    EXPECT_EQ(drawn, (DeviceRect{2, 20 - 3 - 5, 4, 5}));
    EXPECT_EQ(small->drawings, 2);
    EXPECT_EQ(back->drawings, 2); // what lies beneath is drawn again, clipped to the area
}

TEST(ViewLayer, ARequestMadeWhileDrawingLandsInTheNextPass)
{
    View root({0, 0, 4, 4});
    auto* restless = root.addSubview(std::make_unique<FilledView>(Rect{0, 0, 4, 4}, Color{}));
    restless->askAgain = true;
    Canvas canvas(4, 4);
    Renderer::render(canvas.context(), root);
    EXPECT_EQ(restless->drawings, 1);
    EXPECT_TRUE(root.needsDisplayAnywhere());
    Renderer::render(canvas.context(), root);
    EXPECT_EQ(restless->drawings, 2);

    restless->askAgain = false;
    Renderer::render(canvas.context(), root);
    EXPECT_FALSE(root.needsDisplayAnywhere());
    EXPECT_TRUE(Renderer::render(canvas.context(), root).isEmpty());
    EXPECT_EQ(restless->drawings, 3);
}

TEST(ViewLayer, HitTestingFindsTheFrontmostViewUnderThePoint)
{
    View root({0, 0, 10, 10});
    auto* back = root.addSubview(std::make_unique<FilledView>(Rect{0, 0, 10, 10}, Color{}));
    auto* front = root.addSubview(std::make_unique<FilledView>(Rect{5, 5, 5, 5}, Color{}));
    EXPECT_EQ(root.hitTest({6, 6}), front);
    EXPECT_EQ(root.hitTest({4, 6}), back);
    EXPECT_EQ(root.hitTest({10, 10}), nullptr); // right and top edges lie outside
    EXPECT_EQ(root.hitTest({-1, 0}), nullptr);
}

TEST(ViewLayer, ThePressedViewGetsEveryEventInItsOwnCoordinates)
{
    View root({0, 0, 10, 10});
    auto* target = root.addSubview(std::make_unique<FilledView>(Rect{5, 5, 5, 5}, Color{}));
    MouseTracker mouse;
    EXPECT_EQ(mouse.press(root, {6, 7}), target);
    mouse.drag({6, 9});
    mouse.drag({-20, 30}); // far outside: still the pressed view's
    mouse.release({0, 0});
    mouse.drag({6, 7}); // after the release nothing is delivered
    ASSERT_EQ(target->events.size(), 4u);
    EXPECT_EQ(target->events[0].kind, 'd');
    EXPECT_EQ(target->events[0].at.x, 1.0);
    EXPECT_EQ(target->events[0].at.y, 2.0);
    EXPECT_EQ(target->events[1].kind, 'm');
    EXPECT_EQ(target->events[1].at.y, 4.0);
    EXPECT_EQ(target->events[2].at.x, -25.0);
    EXPECT_EQ(target->events[3].kind, 'u');
    EXPECT_EQ(target->events[3].at.y, -5.0);
    EXPECT_EQ(mouse.press(root, {11, 5}), nullptr);
}

} // namespace
