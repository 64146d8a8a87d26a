// A small LV2 host over lilv, as the LV2 tests use it: the world read from LV2_PATH (our bundle
// and the installed LV2 core bundles), the plug-in found by URI, instances whose ports it connects
// and runs in blocks, and the presets read back through lilv's state API.
#pragma once

#include <lilv/lilv.h>
#include <lv2/urid/urid.h>

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "tests/harness/TestHost.h"

namespace lilv_host {

using test_host::StereoBuffer;

// The built bundle's folder and the system's LV2 core bundles, for LV2_PATH.
std::string lv2Path();

class World {
public:
    World(); // reads LV2_PATH = lv2Path()
    ~World();
    World(const World&) = delete;
    World& operator=(const World&) = delete;

    LilvWorld* world() const { return lilv; }
    // Null when lilv does not know our URI.
    const LilvPlugin* plugin() const;
    LilvNode* uri(const char* text) const { return lilv_new_uri(lilv, text); }

    // A preset's label and its values by port symbol, as lilv restores them.
    struct Preset {
        std::string uri, label;
        std::map<std::string, float> values;
    };
    std::vector<Preset> presets() const;

    LV2_URID_Map* map() { return &mapFeature; }

private:
    static LV2_URID mapUri(LV2_URID_Map_Handle handle, const char* uri);

    LilvWorld* lilv;
    std::vector<std::string> uris; // URID i + 1 is uris[i]
    LV2_URID_Map mapFeature{this, mapUri};
};

// One instance of the plug-in, activated, every port connected to a buffer of its own.
class Instance {
public:
    Instance(const World& world, double sampleRate);
    ~Instance();
    Instance(const Instance&) = delete;
    Instance& operator=(const Instance&) = delete;

    bool ok() const { return instance != nullptr; }
    LilvInstance* lilv() const { return instance; }

    // Control input i (0 to 5: the parameters, ports 4 to 9).
    void setControl(int parameter, float value);
    float tuning() const { return outputControl; }

    // Runs the input through in blocks, into a new buffer or in place.
    StereoBuffer process(StereoBuffer input, size_t block, bool inPlace);

private:
    LilvInstance* instance = nullptr;
    float controls[6] = {};
    float outputControl = -1.0f;
};

} // namespace lilv_host
