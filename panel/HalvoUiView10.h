// The control panel: a 253 x 400 view whose controller builds and drives every control. The
// editor makes one per open:
//     auto panel = std::make_unique<HalvoUiView10>(Rect{0, 0, 253, 400}, effect);
//     panel->awakeFromNib();
// then, on the UI thread, passes the effect's changes to updateView and draws the panel with
// Renderer. The panel writes into the effect itself (updateParameters), never telling the host.
//
// Threads: the UI thread only.
#pragma once

#include <cstdint>
#include <memory>

#include "host/AudioEffect.h"
#include "panel/KnobDelegate10.h"
#include "platform/Image.h"
#include "platform/View.h"

class HalvoUiView10 : public View {
public:
    static constexpr Rect kFrame = {0.0, 0.0, 253.0, 400.0};

    // Builds nothing yet; awakeFromNib does. effect may be null: the controls then start at 0
    // and write nowhere.
    HalvoUiView10(const Rect& frame, AudioEffect* effect);
    ~HalvoUiView10() override;

    // Builds the controls and reads the effect's current values once. Call exactly once.
    void awakeFromNib();

    // A change the effect reports: the controls follow, nothing is written back.
    void updateView(int32_t index, float value);
    // Writes one value into the effect, marked as the panel's own so that it is not echoed.
    void updateParameters(int32_t index, float value);

    AudioEffect* getEffect() const { return _effect; }
    void setEffect(AudioEffect* effect) { _effect = effect; }
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
    AudioEffect* _effect; // borrowed: the effect outlives its panels
};
