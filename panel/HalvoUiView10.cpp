#include "panel/HalvoUiView10.h"

#include "engine/Parameters.h"
#include "panel/PanelPictures.h"

HalvoUiView10::HalvoUiView10(const Rect& frame, PanelParameters* effect, int scale)
    : View(frame), _effect(effect), pictureScale(scale)
{
}

// A panel that goes in the middle of a drag (the host closed the editor) ends the gesture, so
// that the host is not left waiting for it.
HalvoUiView10::~HalvoUiView10()
{
    for (int32_t index = 0; index < kNumParameters; ++index)
        if (openGestures & (1u << index))
            endGesture(index);
}

void HalvoUiView10::awakeFromNib()
{
    BackgroundImage = panelPicture("bmp00131", pictureScale);
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
    if (_effect && isParameter(index))
        _effect->setParameter(index, value);
    setNeedsDisplay();
}

void HalvoUiView10::beginGesture(int32_t index)
{
    if (!_effect || !isParameter(index) || (openGestures & (1u << index)))
        return;
    openGestures |= 1u << index;
    _effect->beginGesture(index);
}

void HalvoUiView10::endGesture(int32_t index)
{
    if (!_effect || !isParameter(index) || !(openGestures & (1u << index)))
        return;
    openGestures &= ~(1u << index);
    _effect->endGesture(index);
}

void HalvoUiView10::idle(std::chrono::steady_clock::time_point now)
{
    if (KnobView)
        KnobView->idle(now);
}

void HalvoUiView10::mouseMoved(const MouseEvent& event)
{
    if (KnobView)
        KnobView->pointerMoved(event.location);
}

void HalvoUiView10::mouseExited()
{
    if (KnobView)
        KnobView->pointerLeft();
}
