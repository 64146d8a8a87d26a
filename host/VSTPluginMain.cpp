// The module's one exported function.
#include "host/AudioEffect.h"
#include "host/guarded.h"

extern "C" __attribute__((visibility("default"))) AEffect* VSTPluginMain(audioMasterCallback audioMaster)
{
    // Every host passes a callback; a null one is refused rather than called.
    if (!audioMaster)
        return nullptr;
    if (audioMaster(nullptr, audioMasterVersion, 0, 0, nullptr, 0.0f) == 0)
        return nullptr;
    AudioEffect* effect = guarded(static_cast<AudioEffect*>(nullptr),
                                  [&] { return createEffectInstance(audioMaster); });
    return effect ? effect->getAeffect() : nullptr;
}
