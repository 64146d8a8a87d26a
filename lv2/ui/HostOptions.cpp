#include "lv2/ui/HostOptions.h"

#include <lv2/atom/atom.h>
#include <lv2/options/options.h>
#include <lv2/parameters/parameters.h>
#include <lv2/ui/ui.h>
#include <lv2/urid/urid.h>

#include <cmath>
#include <cstdint>
#include <cstring>

namespace {

// A number of any of the types hosts use for these options, or 0.
float numberOf(const LV2_Options_Option& option, LV2_URID floatType, LV2_URID doubleType,
               LV2_URID intType)
{
    if (!option.value)
        return 0.0f;
    float value = 0.0f;
    if (option.type == floatType && option.size == sizeof(float)) {
        std::memcpy(&value, option.value, sizeof value);
    } else if (option.type == doubleType && option.size == sizeof(double)) {
        double wide;
        std::memcpy(&wide, option.value, sizeof wide);
        value = static_cast<float>(wide);
    } else if (option.type == intType && option.size == sizeof(int32_t)) {
        int32_t whole;
        std::memcpy(&whole, option.value, sizeof whole);
        value = static_cast<float>(whole);
    }
    return std::isfinite(value) && value > 0.0f ? value : 0.0f;
}

} // namespace

const void* hostFeature(const LV2_Feature* const* features, const char* uri)
{
    for (; features && *features; ++features)
        if ((*features)->URI && std::strcmp((*features)->URI, uri) == 0)
            return (*features)->data;
    return nullptr;
}

HostOptions readHostOptions(const LV2_Feature* const* features)
{
    HostOptions found;
    const auto* map = static_cast<const LV2_URID_Map*>(hostFeature(features, LV2_URID__map));
    const auto* options =
        static_cast<const LV2_Options_Option*>(hostFeature(features, LV2_OPTIONS__options));
    if (!map || !map->map || !options)
        return found;
    const LV2_URID scaleFactor = map->map(map->handle, LV2_UI__scaleFactor);
    const LV2_URID sampleRate = map->map(map->handle, LV2_PARAMETERS__sampleRate);
    const LV2_URID floatType = map->map(map->handle, LV2_ATOM__Float);
    const LV2_URID doubleType = map->map(map->handle, LV2_ATOM__Double);
    const LV2_URID intType = map->map(map->handle, LV2_ATOM__Int);
    for (const LV2_Options_Option* option = options; option->key; ++option) {
        if (option->key == scaleFactor)
            found.scaleFactor = numberOf(*option, floatType, doubleType, intType);
        else if (option->key == sampleRate)
            found.sampleRate = numberOf(*option, floatType, doubleType, intType);
    }
    return found;
}
