// The control panel: a 253 x 400 view whose controller builds and drives every control. The
// editor makes one per open:
//     auto panel = std::make_unique<HalvoUiView10>(HalvoUiView10::kFrame, parameters);
//     panel->awakeFromNib();
// then, on the UI thread, passes the plug-in's changes to updateView and draws the panel with
// Renderer. The panel writes through its PanelParameters (updateParameters); what the host is
// told of it is the implementation's business.
//
// Threads: the UI thread only.
#pragma once

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
    // and write nowhere.
    HalvoUiView10(const Rect& frame, PanelParameters* effect);
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
    uint32_t openGestures = 0; // bit i: a gesture on parameter i is under way
};
