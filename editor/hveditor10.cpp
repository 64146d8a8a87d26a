#include "editor/hveditor10.h"

#include <cstdint>

#include "panel/HalvoUiView10.h"
#include "panel/PanelLayout.h"
#include "platform/X11Window.h"

namespace {

constexpr VstInt16 kPanelWidth = panel_layout::kPanelWidth;
constexpr VstInt16 kPanelHeight = panel_layout::kPanelHeight;

} // namespace

hveditor10::hveditor10(AudioEffectX* effect)
    : AEffGUIEditor(effect), parameters(effect, !EffectParameters::silentPanelRequested())
{
    // Some hosts size their window from the rectangle before the first open.
    rect = {0, 0, kPanelHeight, kPanelWidth};
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
    panelView = std::make_unique<HalvoUiView10>(HalvoUiView10::kFrame, &parameters);
    panelView->awakeFromNib();
    // Without a parent the panel is shown nowhere and the rectangle stays 100 x 100. On X11 a
    // parent is always a window (some hosts pass their Display* in value, which we ignore).
    if (parent) {
        window = X11Window::create(static_cast<uint32_t>(reinterpret_cast<uintptr_t>(parent)),
                                   *panelView);
        rect = {0, 0, kPanelHeight, kPanelWidth};
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
    if (window)
        window->draw();
}

void hveditor10::setParameter(VstInt32 index, float value)
{
    mailbox.post(index, value);
}
