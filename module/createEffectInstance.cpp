// The one place that puts the effect and its editor together: the effect knows the editor only
// through AEffGUIEditor, the editor knows the effect only through the base classes.
#include <new>

#include "editor/hveditor10.h"
#include "effect/VstXSynth.h"

AudioEffect* createEffectInstance(audioMasterCallback audioMaster)
{
    // A host expects null, not an exception, when an effect cannot be made.
    auto* effect = new (std::nothrow) VstXSynth(audioMaster);
    if (!effect)
        return nullptr;
    // Without an editor the effect still runs; it then tells the host it has none.
    effect->setGuiEditor(new (std::nothrow) hveditor10(effect));
    return effect;
}
