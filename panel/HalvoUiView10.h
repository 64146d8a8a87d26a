// The control panel: a 253 x 400 point view whose controller builds and drives every control. An
// editor makes one per open, for the scale it draws at (1, 2 or 3 device pixels a point; the
// panel's pictures are drawn for it):
//     auto panel = std::make_unique<HalvoUiView10>(HalvoUiView10::kFrame, parameters, scale);
//     panel->awakeFromNib();
//     auto window = X11Window::create(parent, *panel, scale);
// then, on the UI thread at every idle: window->handleEvents(), the plug-in's changes to
// updateView, panel->idle(std::chrono::steady_clock::now()), window->draw(). The panel writes
// through its PanelParameters (updateParameters); what the host is told of it is the
// implementation's business.
//
// Threads: the UI thread only.
#pragma once

#include <chrono>
#include <cstdint>
#include <memory>

#include "panel/KnobDelegate10.h"
#include "panel/PanelLayout.h"
#include "panel/PanelParameters.h"
#include "platform/Image.h"
#include "platform/View.h"

class HalvoUiView10 : public View {
public:
    static constexpr Rect kFrame = panel_layout::kPanelFrame;

    // Builds nothing yet; awakeFromNib does. effect may be null: the controls then start at 0
    // and write nowhere. scale: what the pictures are drawn for (1 to 3).
    HalvoUiView10(const Rect& frame, PanelParameters* effect, int scale = 1);
    ~HalvoUiView10() override;

    // Builds the controls and reads the effect's current values once. Call exactly once.
    void awakeFromNib();

    // A change the effect reports: the controls follow, nothing is written back.
    void updateView(int32_t index, float value);
    // Writes one value into the plug-in as the panel's own, so that it is not echoed.
    void updateParameters(int32_t index, float value);
    // Bracket one gesture's writes to parameter index. A gesture is begun once and ended once,
    // however often the controls ask.
    void beginGesture(int32_t index);
    void endGesture(int32_t index);

    // Lets time pass for the value readout (see ReadoutTiming.h).
    void idle(std::chrono::steady_clock::time_point now);
    // The pointer over the panel without a button, and leaving its window: for the readout.
    void mouseMoved(const MouseEvent& event) override;
    void mouseExited() override;

    int scale() const { return pictureScale; }

    PanelParameters* getEffect() const { return _effect; }
    void setEffect(PanelParameters* effect) { _effect = effect; }
    KnobDelegate10* knobView() const { return KnobView.get(); }
    const Image& backgroundImage() const { return BackgroundImage; }

    // The figures a text view of the panel shows (sTextView10).
    int32_t volumeSliderVal() const { return _volumeSliderVal; }
    void setVolumeSliderVal(int32_t value) { _volumeSliderVal = value; }
    int32_t panningSliderVal() const { return _panningSliderVal; }
    void setPanningSliderVal(int32_t value) { _panningSliderVal = value; }

private:
    Image BackgroundImage; // loaded with the controls, never drawn
    std::unique_ptr<KnobDelegate10> KnobView;
    int32_t _volumeSliderVal = 0;
    int32_t _panningSliderVal = 0;
    PanelParameters* _effect; // borrowed: it outlives its panels
    int pictureScale;
    uint32_t openGestures = 0; // bit i: a gesture on parameter i is under way
};
