#include "panel/KnobDelegate10.h"

#include <memory>
#include <string>

#include "host/truncate.h"
#include "panel/DetatchedView10.h"
#include "panel/FlatKnob10.h"
#include "panel/HalvoCustomGroupButton10.h"
#include "panel/HalvoUiView10.h"
#include "panel/KnobArithmetic.h"

namespace {

constexpr int32_t kSteps = 100;
constexpr int32_t kFirstRateChoice = 7;
constexpr int32_t kRateButtons = 4;

// The knobs in the order they are built, stacked and sent: frames in panel coordinates.
struct KnobPlace {
    int32_t parameter;
    Rect frame;
};
constexpr KnobPlace kKnobPlaces[] = {
    {0, {48.0, 202.0, 48.0, 48.0}},  // tremolo depth
    {2, {154.0, 202.0, 48.0, 48.0}}, // stereo panner depth
    {1, {45.0, 128.0, 48.0, 48.0}},  // tremolo speed
    {3, {156.0, 128.0, 48.0, 48.0}}, // panner speed
    {4, {104.0, 77.0, 48.0, 48.0}},  // mix
};

// The rate buttons for choices 7, 8, 9, 10 (44.1, 48, 88.2, 96 kHz).
constexpr Rect kRateButtonFrames[kRateButtons] = {
    {48.0, 46.0, 13.0, 13.0},
    {78.0, 46.0, 13.0, 13.0},
    {160.0, 46.0, 13.0, 13.0},
    {190.0, 46.0, 13.0, 13.0},
};

// The button of a rate choice, or -1 when no button shows it. Compared before subtracting: the
// choice can be any int, down to INT32_MIN (what a NaN or huge value truncates to).
int32_t rateButtonIndex(int32_t rateChoice)
{
    if (rateChoice < kFirstRateChoice || rateChoice >= kFirstRateChoice + kRateButtons)
        return -1;
    return rateChoice - kFirstRateChoice;
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
        std::make_unique<DetatchedView10>(Image::named("tremolobk"), MainView->bounds()));
}

void KnobDelegate10::createKnobs()
{
    AudioEffect* effect = MainView->getEffect();
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
    const Image off = Image::named("ringbutton1");
    const Image on = Image::named("ringbutton2");
    for (int32_t i = 0; i < kRateButtons; ++i) {
        auto button = std::make_unique<HalvoCustomGroupButton10>(kRateButtonFrames[i], off, on,
                                                                 kFirstRateChoice + i);
        button->setNewDelegate(this);
        groupButtons.push_back(MainView->addSubview(std::move(button)));
    }
    if (AudioEffect* effect = MainView->getEffect())
        selectRateButton(truncateToInt32(effect->getParameter(5)));
}

void KnobDelegate10::fillArray(std::vector<Image>& pictures)
{
    for (int32_t frame = 0; frame < knob::kFilmstripFrames; ++frame)
        pictures.push_back(Image::named("knob" + std::to_string(frame)));
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
    case 0:
        return tremolDepthKnob;
    case 1:
        return tremoloSpeedKnob;
    case 2:
        return pannerDepthKnob;
    case 3:
        return pannerSpeedKnob;
    case 4:
        return mixKnob;
    default:
        return nullptr;
    }
}

void KnobDelegate10::knobUpdatedWithIndex(int32_t, std::optional<int32_t>, View*)
{
    for (const KnobPlace& place : kKnobPlaces) {
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

void KnobDelegate10::updateGroupButtons(int32_t buttonType)
{
    if (rateButtonIndex(buttonType) >= 0)
        MainView->updateParameters(5, static_cast<float>(buttonType));
    selectRateButton(buttonType);
    redisplayRateButtons();
}

void KnobDelegate10::updateControllers(int32_t index, float value)
{
    if (FlatKnob10* knobView = knobForParameter(index)) {
        knobView->controlPoint()->setIntValue(knob::stepForValue(value));
    } else if (index == 5) {
        selectRateButton(truncateToInt32(value));
        redisplayRateButtons();
    }
}
