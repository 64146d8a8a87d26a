#include "tests/lv2/LilvHost.h"

#include <lv2/presets/presets.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace lilv_host {

std::string lv2Path()
{
    return std::string(HVT_LV2_DIR) + ":/usr/lib/lv2";
}

World::World()
{
    setenv("LV2_PATH", lv2Path().c_str(), 1);
    lilv = lilv_world_new();
    lilv_world_load_all(lilv);
}

World::~World()
{
    lilv_world_free(lilv);
}

const LilvPlugin* World::plugin() const
{
    LilvNode* ours = uri("urn:halvo:hvtremolo");
    const LilvPlugin* found = lilv_plugins_get_by_uri(lilv_world_get_all_plugins(lilv), ours);
    lilv_node_free(ours);
    return found;
}

LV2_URID World::mapUri(LV2_URID_Map_Handle handle, const char* uri)
{
    auto& uris = static_cast<World*>(handle)->uris;
    const auto known = std::find(uris.begin(), uris.end(), uri);
    if (known != uris.end())
        return static_cast<LV2_URID>(known - uris.begin() + 1);
    uris.emplace_back(uri);
    return static_cast<LV2_URID>(uris.size());
}

std::vector<World::Preset> World::presets() const
{
    std::vector<Preset> found;
    LilvNode* presetClass = uri(LV2_PRESETS__Preset);
    LilvNodes* related = lilv_plugin_get_related(plugin(), presetClass);
    LILV_FOREACH (nodes, i, related) {
        const LilvNode* preset = lilv_nodes_get(related, i);
        lilv_world_load_resource(lilv, preset);
        LilvState* state =
            lilv_state_new_from_world(lilv, const_cast<World*>(this)->map(), preset);
        if (!state)
            continue;
        Preset read{lilv_node_as_uri(preset), lilv_state_get_label(state) ? lilv_state_get_label(state) : "", {}};
        lilv_state_restore(
            state, nullptr,
            [](const char* symbol, void* data, const void* value, uint32_t size, uint32_t) {
                float number = 0.0f;
                if (size == sizeof number)
                    std::memcpy(&number, value, sizeof number);
                static_cast<Preset*>(data)->values[symbol] = number;
            },
            &read, 0, nullptr);
        lilv_state_free(state);
        found.push_back(read);
    }
    lilv_nodes_free(related);
    lilv_node_free(presetClass);
    return found;
}

Instance::Instance(const World& world, double sampleRate)
{
    const LilvPlugin* plugin = world.plugin();
    if (!plugin)
        return;
    instance = lilv_plugin_instantiate(plugin, sampleRate, nullptr);
    if (!instance)
        return;
    // Every control starts at its default, as hosts set them.
    float defaults[11];
    lilv_plugin_get_port_ranges_float(plugin, nullptr, nullptr, defaults);
    for (int parameter = 0; parameter < 6; ++parameter) {
        controls[parameter] = defaults[4 + parameter];
        lilv_instance_connect_port(instance, 4 + parameter, &controls[parameter]);
    }
    lilv_instance_connect_port(instance, 10, &outputControl);
    lilv_instance_activate(instance);
}

Instance::~Instance()
{
    if (instance) {
        lilv_instance_deactivate(instance);
        lilv_instance_free(instance);
    }
}

void Instance::setControl(int parameter, float value)
{
    controls[parameter] = value;
}

StereoBuffer Instance::process(StereoBuffer input, size_t block, bool inPlace)
{
    const size_t frames = input.left.size();
    StereoBuffer separate(inPlace ? 0 : frames);
    StereoBuffer& output = inPlace ? input : separate;
    for (size_t done = 0; done < frames; done += block) {
        lilv_instance_connect_port(instance, 0, input.left.data() + done);
        lilv_instance_connect_port(instance, 1, input.right.data() + done);
        lilv_instance_connect_port(instance, 2, output.left.data() + done);
        lilv_instance_connect_port(instance, 3, output.right.data() + done);
        lilv_instance_run(instance, static_cast<uint32_t>(std::min(block, frames - done)));
    }
    return output;
}

} // namespace lilv_host
