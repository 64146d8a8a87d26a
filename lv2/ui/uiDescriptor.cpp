// The UI binary's one entry: the descriptor of the panel UI. No exception crosses into the host.
#include <lv2/ui/ui.h>

#include <cstring>

#include "lv2/Ports.h"
#include "lv2/ui/PanelUi.h"

namespace {

LV2UI_Handle instantiate(const LV2UI_Descriptor*, const char*, const char*,
                         LV2UI_Write_Function write, LV2UI_Controller controller,
                         LV2UI_Widget* widget, const LV2_Feature* const* features)
{
    try {
        return PanelUi::create(write, controller, features, widget).release();
    } catch (...) {
        return nullptr;
    }
}

void cleanup(LV2UI_Handle ui)
{
    delete static_cast<PanelUi*>(ui);
}

void portEvent(LV2UI_Handle ui, uint32_t port, uint32_t size, uint32_t protocol,
               const void* buffer)
{
    try {
        static_cast<PanelUi*>(ui)->portEvent(port, size, protocol, buffer);
    } catch (...) {
    }
}

int idle(LV2UI_Handle ui)
{
    try {
        static_cast<PanelUi*>(ui)->idle();
    } catch (...) {
    }
    return 0;
}

const LV2UI_Idle_Interface kIdle = {idle};

const void* extensionData(const char* uri)
{
    return uri && std::strcmp(uri, LV2_UI__idleInterface) == 0 ? &kIdle : nullptr;
}

constexpr LV2UI_Descriptor kDescriptor = {lv2_ports::kUiUri, instantiate, cleanup, portEvent,
                                          extensionData};

} // namespace

extern "C" LV2_SYMBOL_EXPORT const LV2UI_Descriptor* lv2ui_descriptor(uint32_t index)
{
    return index == 0 ? &kDescriptor : nullptr;
}
