// The LV2 edition's UI: the panel in a child window of the host's (ui:parent), driven by the
// host's idle calls (ui:idleInterface) as the VST editor is by effEditIdle.
//
// The panel reads the plug-in's values once, when it is built, and shows later changes through
// updateView, as the VST editor does. LV2 has no read: the host reports every value through
// port_event right after instantiate, so the panel is built at the first idle call, from the
// values reported by then; until then the window shows black.
//
// Threads: the host's UI thread only.
#pragma once

#include <lv2/ui/ui.h>

#include <memory>

#include "lv2/ui/PortParameters.h"
#include "platform/View.h"
#include "platform/X11Window.h"

class HalvoUiView10;

class PanelUi {
public:
    // Null without a parent window or an X server.
    static std::unique_ptr<PanelUi> create(LV2UI_Write_Function write, LV2UI_Controller controller,
                                           const LV2_Feature* const* features,
                                           LV2UI_Widget* widget);
    ~PanelUi();

    void portEvent(uint32_t port, uint32_t size, uint32_t protocol, const void* buffer);
    void idle();

private:
    PanelUi(LV2UI_Write_Function write, LV2UI_Controller controller, const LV2UI_Touch* touch,
            int scale);

    // The window's root view: holds the panel once it is built and passes it the pointer's
    // moves and leaving, which the window gives the root alone (hover readout, and a readout
    // going when the pointer leaves). Presses and the wheel find the panel by hit test.
    class Root final : public View {
    public:
        using View::View;
        void mouseMoved(const MouseEvent& event) override;
        void mouseExited() override;
        HalvoUiView10* panel = nullptr; // owned by this view
    };

    // Declared in the order they are needed: the panel ends its open gestures through the
    // parameters when it goes, and the window goes before the views it shows.
    PortParameters parameters;
    Root root;
    std::unique_ptr<X11Window> window;
    int scale;
};
