#include "editor/hveditor10.h"

#include <chrono>
#include <cstdint>

#include "panel/HalvoUiView10.h"
#include "panel/PanelLayout.h"
#include "panel/PictureNames.h"
#include "platform/DesktopScale.h"
#include "platform/X11Window.h"

namespace {

// The panel's size on screen at scale.
ERect panelRect(int scale)
{
    return {0, 0, static_cast<VstInt16>(panel_layout::kPanelHeight * scale),
            static_cast<VstInt16>(panel_layout::kPanelWidth * scale)};
}

} // namespace

hveditor10::hveditor10(AudioEffectX* effect)
    : AEffGUIEditor(effect),
      parameters(effect, !EffectParameters::silentPanelRequested()),
      scale(desktopScale(picture_names::kLargestScale))
{
    // Some hosts size their window from the rectangle before the first open.
    rect = panelRect(scale);
}

// Only the effect deletes its editor, from its own destructor: what is left of it must not be
// called, and the host, which is closing it, must not be called back. A gesture still open
// stays unended.
hveditor10::~hveditor10()
{
    if (panelView)
        panelView->setEffect(nullptr);
}

bool hveditor10::open(void* parent)
{
    // Some hosts open twice without a close: the first panel and window simply go.
    window.reset();
    rect = {0, 0, 100, 100};
    // Open before the panel reads the effect, so that no change falls between the two: one made
    // after the read arrives through the mailbox.
    mailbox.clear();
    editorOpen = true;
    panelView = std::make_unique<HalvoUiView10>(HalvoUiView10::kFrame, &parameters, scale);
    panelView->awakeFromNib();
    // Without a parent the panel is shown nowhere and the rectangle stays 100 x 100. On X11 a
    // parent is always a window (some hosts pass their Display* in value, which we ignore).
    if (parent) {
        window = X11Window::create(static_cast<uint32_t>(reinterpret_cast<uintptr_t>(parent)),
                                   *panelView, scale);
        rect = panelRect(scale);
        // No X server, or no such window: say so rather than leave the host an empty frame.
        if (!window) {
            close();
            return false;
        }
    }
    return true;
}

void hveditor10::close()
{
    editorOpen = false;
    window.reset();
    panelView.reset();
}

void hveditor10::idle()
{
    if (!editorOpen || !panelView)
        return;
    if (window)
        window->handleEvents();
    mailbox.take([this](int index, float value) { panelView->updateView(index, value); });
    panelView->idle(std::chrono::steady_clock::now());
    if (window)
        window->draw();
}

void hveditor10::setParameter(VstInt32 index, float value)
{
    mailbox.post(index, value);
}
