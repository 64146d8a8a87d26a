#include "panel/HalvoUiView10.h"

HalvoUiView10::HalvoUiView10(const Rect& frame, AudioEffect* effect)
    : View(frame), _effect(effect)
{
}

HalvoUiView10::~HalvoUiView10() = default;

void HalvoUiView10::awakeFromNib()
{
    BackgroundImage = Image::named("bmp00131");
    KnobView = std::make_unique<KnobDelegate10>(this);
}

void HalvoUiView10::updateView(int32_t index, float value)
{
    if (KnobView)
        KnobView->updateControllers(index, value);
    setNeedsDisplay();
}

void HalvoUiView10::updateParameters(int32_t index, float value)
{
    if (_effect)
        _effect->inPanelUpdate = true;
    if (_effect && index >= 0 && index <= 5)
        _effect->setParameter(index, value);
    if (_effect)
        _effect->inPanelUpdate = false;
    setNeedsDisplay();
}
