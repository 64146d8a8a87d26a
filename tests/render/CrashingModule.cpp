// A stereo effect that crashes (abort) in its 20th processing call, so that a render through it
// is well under way: its output file has been started.
#include <cstdlib>

#include "host/vst2.h"

namespace {

int calls = 0;

VstIntPtr dispatch(AEffect*, VstInt32, VstInt32, VstIntPtr, void*, float)
{
    return 0;
}

void process(AEffect*, float** inputs, float** outputs, VstInt32 frames)
{
    if (++calls == 20)
        std::abort();
    for (int c = 0; c < 2; ++c)
        for (VstInt32 i = 0; i < frames; ++i)
            outputs[c][i] = inputs[c][i];
}

void setParameter(AEffect*, VstInt32, float) {}

float getParameter(AEffect*, VstInt32)
{
    return 0.0f;
}

AEffect effect = [] {
    AEffect record{};
    record.magic = kEffectMagic;
    record.dispatcher = dispatch;
    record.setParameter = setParameter;
    record.getParameter = getParameter;
    record.numInputs = 2;
    record.numOutputs = 2;
    record.flags = effFlagsCanReplacing;
    record.processReplacing = process;
    return record;
}();

} // namespace

extern "C" __attribute__((visibility("default"))) AEffect* VSTPluginMain(audioMasterCallback)
{
    return &effect;
}
