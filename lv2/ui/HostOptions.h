// What a host may tell the UI through its options (opts:options, keys mapped with urid:map): the
// display's scale factor (ui:scaleFactor) and the session's sample rate (param:sampleRate).
// Zero for what the host does not say.
#pragma once

#include <lv2/core/lv2.h>

struct HostOptions {
    float scaleFactor = 0.0f;
    float sampleRate = 0.0f;
};

HostOptions readHostOptions(const LV2_Feature* const* features);

// The data of the host's feature uri, or null when the host does not offer it.
const void* hostFeature(const LV2_Feature* const* features, const char* uri);
