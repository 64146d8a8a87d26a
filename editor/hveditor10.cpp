#include "editor/hveditor10.h"

namespace {

constexpr VstInt16 kPanelWidth = 253;
constexpr VstInt16 kPanelHeight = 400;

} // namespace

hveditor10::hveditor10(AudioEffect* effect) : AEffGUIEditor(effect), synth(effect)
{
    // Some hosts size their window from the rectangle before the first open.
    rect = {0, 0, kPanelHeight, kPanelWidth};
}

hveditor10::~hveditor10() = default;

bool hveditor10::open(void* parent)
{
    // Without a parent the panel is shown nowhere and the rectangle stays 100 x 100; a parent is
    // always a window on X11, which gets the panel's own size.
    rect = {0, 0, 100, 100};
    if (parent)
        rect = {0, 0, kPanelHeight, kPanelWidth};
    mailbox.clear();
    editorOpen = true;
    return true;
}

void hveditor10::close()
{
    editorOpen = false;
}

void hveditor10::setParameter(VstInt32 index, float value)
{
    mailbox.post(index, value);
}
