// The panel's controller: builds the background, the five knobs, the four rate buttons and the
// value readout, and carries every value between them and the effect (through the panel view).
//
// Besides the plain drag and the rate buttons, whose writes follow fixed rules, a knob takes our
// own gestures: the wheel, a Shift drag and a double-click. Each writes only its own knob's
// parameter, bracketed as one gesture like a drag, and the knob then shows the frame nearest to
// the value written.
//
// Threads: the UI thread only. Changes from the effect arrive through the editor's mailbox.
#pragma once

#include <cstdint>
#include <vector>

#include "panel/FlatKnobProtocol.h"
#include "panel/ReadoutTiming.h"
#include "platform/Geometry.h"
#include "platform/Image.h"

class FlatKnob10;
class HalvoCustomGroupButton10;
class HalvoUiView10;
class ValueReadout;

class KnobDelegate10 : public FlatKnobProtocol {
public:
    // Builds the panel's controls into view and shows the effect's current values.
    explicit KnobDelegate10(HalvoUiView10* view);

    // Sends all five knob values to the effect, in the order of parameters 0, 2, 1, 3, 4.
    void knobUpdatedWithIndex(int32_t index, std::optional<int32_t> value,
                              View* sender) override;
    // A press on a knob starts a gesture on its parameter, the release ends it.
    void knobPressed(View* sender) override;
    void knobReleased(View* sender) override;
    // Selects the button of rate choice buttonType (7 to 10) and writes it into parameter 5;
    // any other choice switches all four off and writes nothing.
    void updateGroupButtons(int32_t buttonType) override;
    // Moves the control of parameter index to a value that came from the effect, writing nothing.
    void updateControllers(int32_t index, float value);

    void knobFineDragged(View* sender, int32_t rise) override;
    void knobDoubleClicked(View* sender) override;
    void knobScrolled(View* sender, int32_t notches, bool fine) override;

    // The pointer moved without a button to p (panel coordinates), or left the panel's window.
    void pointerMoved(Point p);
    void pointerLeft();
    // Time passes for the readout; also shows it changes the effect made since.
    void idle(ReadoutTiming::Clock::time_point now);

    // The knob of parameter 0 to 4, or null.
    FlatKnob10* knobForParameter(int32_t index) const;
    // The rate buttons for choices 7, 8, 9, 10, in that order.
    const std::vector<HalvoCustomGroupButton10*>& rateButtons() const { return groupButtons; }

    const ValueReadout* readout() const { return valueReadout; }

    // The 128 knob frames drawn for scale: "knob0" to "knob127", frame i at index i.
    static void fillArray(std::vector<Image>& pictures, int scale = 1);
    // a, a + 1, ..., b - 1; empty when a >= b.
    static std::vector<int32_t> generateArrayFrom(int32_t a, int32_t b);

private:
    void createSubView();
    void createKnobs();
    void createSwitches();
    void createReadout();
    void selectRateButton(int32_t rateChoice);
    void redisplayRateButtons();
    // The parameter a knob controls, or -1 for a view that is none of the knobs.
    int32_t parameterOfKnob(const View* knob) const;
    // The value parameter has now: the effect's, or without one what its knob shows.
    float currentValue(int32_t parameter) const;
    // One of our gestures' writes: parameter alone, its knob showing value.
    void writeOwn(int32_t parameter, float value);
    // Shows, moves or hides the readout as the timing says, with the values of now.
    void refreshReadout();

    HalvoUiView10* MainView; // owns this controller
    FlatKnob10* tremolDepthKnob = nullptr;
    FlatKnob10* tremoloSpeedKnob = nullptr;
    FlatKnob10* pannerDepthKnob = nullptr;
    FlatKnob10* pannerSpeedKnob = nullptr;
    FlatKnob10* mixKnob = nullptr;
    // _fourtyfourk, _fourtyeightk, _eightyeightk, _ninetysixk: choices 7, 8, 9, 10.
    std::vector<HalvoCustomGroupButton10*> groupButtons;
    ValueReadout* valueReadout = nullptr; // the frontmost subview of the panel
    ReadoutTiming readoutTiming;
    // The knob gesture under way: the value at its press, and the thousandths a fine drag last
    // wrote (or the press's value had).
    float valueAtPress = 0.0f;
    int32_t fineThousandths = 0;
};
