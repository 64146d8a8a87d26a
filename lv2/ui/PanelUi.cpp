#include "lv2/ui/PanelUi.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstring>

#include "lv2/ui/HostOptions.h"
#include "panel/HalvoUiView10.h"
#include "panel/PanelLayout.h"
#include "panel/PictureNames.h"
#include "platform/DesktopScale.h"

namespace {

// The host's ui:scaleFactor when it gives one, rounded to the whole scales the panel has pictures
// for; else what the desktop asks for, as in the VST editor.
int panelScale(float hostScaleFactor)
{
    if (hostScaleFactor > 0.0f)
        return std::clamp(static_cast<int>(std::lround(hostScaleFactor)), 1,
                          picture_names::kLargestScale);
    return desktopScale(picture_names::kLargestScale);
}

} // namespace

PanelUi::PanelUi(LV2UI_Write_Function write, LV2UI_Controller controller, const LV2UI_Touch* touch,
                 int scale)
    : parameters(write, controller, touch), root(HalvoUiView10::kFrame), scale(scale)
{
}

PanelUi::~PanelUi() = default;

// The panel fills the root from its origin: the root's points are the panel's.
void PanelUi::Root::mouseMoved(const MouseEvent& event)
{
    if (panel)
        panel->mouseMoved(event);
}

void PanelUi::Root::mouseExited()
{
    if (panel)
        panel->mouseExited();
}

std::unique_ptr<PanelUi> PanelUi::create(LV2UI_Write_Function write, LV2UI_Controller controller,
                                         const LV2_Feature* const* features, LV2UI_Widget* widget)
{
    // The parent is the window's id itself, carried in the pointer.
    const auto parent = reinterpret_cast<uintptr_t>(hostFeature(features, LV2_UI__parent));
    if (!parent || !widget)
        return nullptr;
    const auto* touch = static_cast<const LV2UI_Touch*>(hostFeature(features, LV2_UI__touch));
    const HostOptions options = readHostOptions(features);
    std::unique_ptr<PanelUi> ui(
        new PanelUi(write, controller, touch, panelScale(options.scaleFactor)));
    ui->parameters.setHostSampleRate(options.sampleRate);
    ui->window = X11Window::createLikeParent(static_cast<uint32_t>(parent), ui->root, ui->scale);
    if (!ui->window)
        return nullptr;
    *widget = reinterpret_cast<LV2UI_Widget>(uintptr_t{ui->window->id()});
    if (const auto* resize =
            static_cast<const LV2UI_Resize*>(hostFeature(features, LV2_UI__resize)))
        resize->ui_resize(resize->handle, panel_layout::kPanelWidth * ui->scale,
                          panel_layout::kPanelHeight * ui->scale);
    return ui;
}

void PanelUi::portEvent(uint32_t port, uint32_t size, uint32_t protocol, const void* buffer)
{
    if (protocol != 0 || size != sizeof(float) || !buffer)
        return;
    float value;
    std::memcpy(&value, buffer, sizeof value);
    const int32_t parameter = parameters.portEvent(port, value);
    if (root.panel && parameter >= 0)
        root.panel->updateView(parameter, parameters.getParameter(parameter));
}

void PanelUi::idle()
{
    if (!root.panel) {
        auto built = std::make_unique<HalvoUiView10>(HalvoUiView10::kFrame, &parameters, scale);
        built->awakeFromNib();
        root.panel = root.addSubview(std::move(built));
    }
    window->handleEvents();
    if (parameters.takeRateRedisplay())
        root.panel->updateView(kSampleRate, parameters.getParameter(kSampleRate));
    root.panel->idle(std::chrono::steady_clock::now());
    window->draw();
}
