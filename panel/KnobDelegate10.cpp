#include "panel/KnobDelegate10.h"

#include <memory>
#include <string>

#include "common/truncate.h"
#include "engine/Parameters.h"

#include "panel/DetatchedView10.h"
#include "panel/FlatKnob10.h"
#include "panel/HalvoCustomGroupButton10.h"
#include "panel/HalvoUiView10.h"
#include "panel/KnobArithmetic.h"
#include "panel/PanelPictures.h"

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
}

void KnobDelegate10::createSubView()
{
    MainView->addSubviewBelowAll(
        std::make_unique<DetatchedView10>(panelPicture("tremolobk"), MainView->bounds()));
}

void KnobDelegate10::createKnobs()
{
    PanelParameters* effect = MainView->getEffect();
    auto pictures = std::make_shared<std::vector<Image>>();
    fillArray(*pictures);
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
    const Image off = panelPicture("ringbutton1");
    const Image on = panelPicture("ringbutton2");
    for (int32_t i = 0; i < kNumRateChoices; ++i) {
        auto button = std::make_unique<HalvoCustomGroupButton10>(kRateButtonFrames[i], off, on,
                                                                 kFirstRateChoice + i);
        button->setNewDelegate(this);
        groupButtons.push_back(MainView->addSubview(std::move(button)));
    }
    if (PanelParameters* effect = MainView->getEffect())
        selectRateButton(truncateToInt32(effect->getParameter(kSampleRate)));
}

void KnobDelegate10::fillArray(std::vector<Image>& pictures)
{
    for (int32_t frame = 0; frame < knob::kFilmstripFrames; ++frame)
        pictures.push_back(panelPicture("knob" + std::to_string(frame)));
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
    if (const int32_t parameter = parameterOfKnob(sender); parameter >= 0)
        MainView->beginGesture(parameter);
}

void KnobDelegate10::knobReleased(View* sender)
{
    if (const int32_t parameter = parameterOfKnob(sender); parameter >= 0)
        MainView->endGesture(parameter);
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
}
