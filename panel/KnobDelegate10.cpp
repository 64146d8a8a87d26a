#include "panel/KnobDelegate10.h"

#include <memory>
#include <string>

#include "common/truncate.h"
#include "engine/FactoryPrograms.h"
#include "engine/Parameters.h"

#include "panel/DetatchedView10.h"
#include "panel/FineKnobArithmetic.h"
#include "panel/FlatKnob10.h"
#include "panel/HalvoCustomGroupButton10.h"
#include "panel/HalvoUiView10.h"
#include "panel/KnobArithmetic.h"
#include "panel/PanelPictures.h"
#include "panel/ReadoutText.h"
#include "panel/ValueReadout.h"

namespace {

using panel_layout::kKnobPlaces;
using panel_layout::kRateButtonFrames;

// The knob's steps: 0 to 99 from a drag.
constexpr int32_t kSteps = 100;

// The button of a rate choice, or -1 when no button shows it. Compared before subtracting: the
// choice can be any int, down to INT32_MIN (what a NaN or huge value truncates to).
int32_t rateButtonIndex(int32_t rateChoice)
{
    return isRateChoice(rateChoice) ? rateChoice - kFirstRateChoice : -1;
}

} // namespace

KnobDelegate10::KnobDelegate10(HalvoUiView10* view) : MainView(view)
{
    createSubView();
    createKnobs();
    createSwitches();
    createReadout();
}

void KnobDelegate10::createSubView()
{
    MainView->addSubviewBelowAll(std::make_unique<DetatchedView10>(
        panelPicture("tremolobk", MainView->scale()), MainView->bounds()));
}

void KnobDelegate10::createKnobs()
{
    PanelParameters* effect = MainView->getEffect();
    auto pictures = std::make_shared<std::vector<Image>>();
    fillArray(*pictures, MainView->scale());
    const KnobFilmstrip filmstrip = pictures;

    FlatKnob10** fields[] = {&tremolDepthKnob, &pannerDepthKnob, &tremoloSpeedKnob,
                             &pannerSpeedKnob, &mixKnob};
    std::unique_ptr<FlatKnob10> knobs[std::size(kKnobPlaces)];
    float value = 0.0f; // without an effect every knob shows 0
    for (size_t i = 0; i < std::size(kKnobPlaces); ++i) {
        if (effect)
            value = effect->getParameter(kKnobPlaces[i].parameter);
        knobs[i] = std::make_unique<FlatKnob10>(kKnobPlaces[i].frame, 2, 3, filmstrip);
        knobs[i]->setControl(0);
        ControlPoint10* overlay = knobs[i]->controlPoint();
        overlay->setDelegate(this);
        overlay->setData(generateArrayFrom(0, kSteps));
        overlay->setIntValue(knob::initialStepForValue(value));
    }
    for (size_t i = 0; i < std::size(kKnobPlaces); ++i)
        *fields[i] = MainView->addSubview(std::move(knobs[i]));
}

void KnobDelegate10::createSwitches()
{
    const Image off = panelPicture("ringbutton1", MainView->scale());
    const Image on = panelPicture("ringbutton2", MainView->scale());
    for (int32_t i = 0; i < kNumRateChoices; ++i) {
        auto button = std::make_unique<HalvoCustomGroupButton10>(kRateButtonFrames[i], off, on,
                                                                 kFirstRateChoice + i);
        button->setNewDelegate(this);
        groupButtons.push_back(MainView->addSubview(std::move(button)));
    }
    if (PanelParameters* effect = MainView->getEffect())
        selectRateButton(truncateToInt32(effect->getParameter(kSampleRate)));
}

// In front of everything, so that it shows over any control; the mouse passes through it.
void KnobDelegate10::createReadout()
{
    valueReadout = MainView->addSubview(std::make_unique<ValueReadout>());
}

void KnobDelegate10::fillArray(std::vector<Image>& pictures, int scale)
{
    for (int32_t frame = 0; frame < knob::kFilmstripFrames; ++frame)
        pictures.push_back(panelPicture("knob" + std::to_string(frame), scale));
}

std::vector<int32_t> KnobDelegate10::generateArrayFrom(int32_t a, int32_t b)
{
    std::vector<int32_t> steps;
    for (int64_t step = a; step < b; ++step)
        steps.push_back(static_cast<int32_t>(step));
    return steps;
}

FlatKnob10* KnobDelegate10::knobForParameter(int32_t index) const
{
    switch (index) {
    case kTremoloDepth:
        return tremolDepthKnob;
    case kTremoloSpeed:
        return tremoloSpeedKnob;
    case kStereoPanner:
        return pannerDepthKnob;
    case kPannerSpeed:
        return pannerSpeedKnob;
    case kMix:
        return mixKnob;
    default:
        return nullptr;
    }
}

void KnobDelegate10::knobUpdatedWithIndex(int32_t, std::optional<int32_t>, View*)
{
    for (const panel_layout::KnobPlace& place : kKnobPlaces) {
        const int32_t step = knobForParameter(place.parameter)->controlPoint()->ReturnValue();
        MainView->updateParameters(place.parameter, knob::valueForStep(step));
    }
    refreshReadout();
}

// Switches every rate button off, then on the one for rateChoice if there is one.
void KnobDelegate10::selectRateButton(int32_t rateChoice)
{
    for (HalvoCustomGroupButton10* button : groupButtons)
        button->setImageState(0);
    const int32_t index = rateButtonIndex(rateChoice);
    if (index >= 0)
        groupButtons[static_cast<size_t>(index)]->setImageState(1);
}

void KnobDelegate10::redisplayRateButtons()
{
    for (HalvoCustomGroupButton10* button : groupButtons)
        button->setNeedsDisplay();
    MainView->setNeedsDisplay();
}

void KnobDelegate10::knobPressed(View* sender)
{
    const int32_t parameter = parameterOfKnob(sender);
    if (parameter < 0)
        return;
    MainView->beginGesture(parameter);
    valueAtPress = currentValue(parameter);
    fineThousandths = knob::thousandthsForValue(valueAtPress);
    readoutTiming.gestureBegan(sender);
    refreshReadout();
}

void KnobDelegate10::knobReleased(View* sender)
{
    if (const int32_t parameter = parameterOfKnob(sender); parameter >= 0)
        MainView->endGesture(parameter);
    readoutTiming.gestureEnded();
    refreshReadout();
}

void KnobDelegate10::knobFineDragged(View* sender, int32_t rise)
{
    const int32_t parameter = parameterOfKnob(sender);
    const float value = knob::fineDragValue(valueAtPress, rise);
    const int32_t thousandths = knob::thousandthsForValue(value);
    if (parameter < 0 || thousandths == fineThousandths)
        return;
    fineThousandths = thousandths;
    writeOwn(parameter, value);
}

void KnobDelegate10::knobDoubleClicked(View* sender)
{
    const int32_t parameter = parameterOfKnob(sender);
    PanelParameters* effect = MainView->getEffect();
    if (parameter < 0 || !effect)
        return;
    // The program's own record follows live edits, so its factory values come from the table.
    const int32_t program = effect->currentProgram();
    if (program >= 0 && program < kNumPrograms)
        writeOwn(parameter, factoryValue(program, parameter));
}

void KnobDelegate10::knobScrolled(View* sender, int32_t notches, bool fine)
{
    const int32_t parameter = parameterOfKnob(sender);
    if (parameter < 0)
        return;
    const float before = currentValue(parameter);
    const float after = knob::wheelValue(before, notches, fine);
    readoutTiming.wheelTurned(sender);
    if (after != before) {
        MainView->beginGesture(parameter);
        writeOwn(parameter, after);
        MainView->endGesture(parameter);
    }
    refreshReadout();
}

float KnobDelegate10::currentValue(int32_t parameter) const
{
    if (PanelParameters* effect = MainView->getEffect())
        return effect->getParameter(parameter);
    const ControlPoint10* overlay = knobForParameter(parameter)->controlPoint();
    return overlay->fineValue().value_or(knob::valueForStep(overlay->ReturnValue()));
}

void KnobDelegate10::writeOwn(int32_t parameter, float value)
{
    MainView->updateParameters(parameter, value);
    knobForParameter(parameter)->controlPoint()->setFineValue(value);
    refreshReadout();
}

void KnobDelegate10::pointerMoved(Point p)
{
    View* under = MainView->hitTest(p);
    // A knob is hit through its overlay; a rate button is hit itself.
    View* control = nullptr;
    if (under && parameterOfKnob(under->superview()) >= 0)
        control = under->superview();
    for (HalvoCustomGroupButton10* button : groupButtons)
        if (under == button)
            control = button;
    readoutTiming.pointerMoved(control);
    refreshReadout();
}

void KnobDelegate10::pointerLeft()
{
    readoutTiming.pointerLeft();
    refreshReadout();
}

void KnobDelegate10::idle(ReadoutTiming::Clock::time_point now)
{
    readoutTiming.idle(now);
    refreshReadout();
}

void KnobDelegate10::refreshReadout()
{
    View* control = readoutTiming.shown();
    if (!control) {
        valueReadout->hide();
        return;
    }
    PanelParameters* effect = MainView->getEffect();
    int32_t parameter = parameterOfKnob(control);
    float value = 0.0f;
    if (parameter >= 0) {
        value = currentValue(parameter);
    } else {
        // A rate button speaks of the rate it chooses.
        parameter = kSampleRate;
        value = static_cast<float>(static_cast<HalvoCustomGroupButton10*>(control)->buttonType());
    }
    const float rateChoice = effect ? effect->getParameter(kSampleRate) : kFirstRateChoice;
    const float sampleRate = effect ? effect->sampleRate() : kRateChoiceHz[0];
    valueReadout->show(control->frame(), readoutText(parameter, value, rateChoice, sampleRate));
}

int32_t KnobDelegate10::parameterOfKnob(const View* knob) const
{
    for (const panel_layout::KnobPlace& place : kKnobPlaces)
        if (knob && knob == knobForParameter(place.parameter))
            return place.parameter;
    return -1;
}

void KnobDelegate10::updateGroupButtons(int32_t buttonType)
{
    // A press, and so no readout until the pointer moves again.
    readoutTiming.gestureBegan(nullptr);
    readoutTiming.gestureEnded();
    refreshReadout();
    if (rateButtonIndex(buttonType) >= 0) {
        MainView->beginGesture(kSampleRate);
        MainView->updateParameters(kSampleRate, static_cast<float>(buttonType));
        MainView->endGesture(kSampleRate);
    }
    selectRateButton(buttonType);
    redisplayRateButtons();
}

void KnobDelegate10::updateControllers(int32_t index, float value)
{
    if (FlatKnob10* knobView = knobForParameter(index)) {
        knobView->controlPoint()->setIntValue(knob::stepForValue(value));
    } else if (index == kSampleRate) {
        selectRateButton(truncateToInt32(value));
        redisplayRateButtons();
    }
    refreshReadout();
}
