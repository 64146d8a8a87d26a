#include "editor/EffectParameters.h"

#include <cstdlib>
#include <cstring>

#include "common/truncate.h"
#include "engine/Parameters.h"

namespace {

// What the effect will hold after a write of value: the rate choice keeps the whole part.
float storedValue(int32_t index, float value)
{
    return kParameterInfo[index].integer ? static_cast<float>(truncateToInt32(value)) : value;
}

} // namespace

void EffectParameters::setParameter(int32_t index, float value)
{
    // Decided before the write, so that the effect gets exactly one setParameter either way. A
    // NaN never equals what was there, and is reported like any other change.
    const bool changed =
        isParameter(index) && storedValue(index, value) != effect->getParameter(index);
    // Raised around the host call as well: a host that sets the parameter again from inside its
    // audioMasterAutomate handler (some do, on this same thread) is then not echoed to the panel.
    effect->inPanelUpdate = true;
    if (tellHost && changed)
        effect->setParameterAutomated(index, value);
    else
        effect->setParameter(index, value);
    effect->inPanelUpdate = false;
}

void EffectParameters::beginGesture(int32_t index)
{
    if (tellHost)
        effect->beginEdit(index);
}

void EffectParameters::endGesture(int32_t index)
{
    if (tellHost)
        effect->endEdit(index);
}

bool EffectParameters::silentPanelRequested()
{
    const char* value = std::getenv("HVTREMOLO_SILENT_PANEL");
    return value && std::strcmp(value, "1") == 0;
}
