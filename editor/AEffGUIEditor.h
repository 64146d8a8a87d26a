// The editor base: a fixed rectangle the host reads, and the defaults of an editor that keeps
// no keys and ignores the knob mode.
#pragma once

#include "host/AEffEditor.h"
#include "host/AudioEffect.h"

class AEffGUIEditor : public AEffEditor {
public:
    explicit AEffGUIEditor(AudioEffect* effect) : AEffEditor(effect)
    {
        effect->setEditor(this);
    }

    bool getRect(ERect** answer) override
    {
        if (!answer)
            return false;
        *answer = &rect;
        return true;
    }
    bool onKeyDown(VstKeyCode&) override { return false; }
    bool onKeyUp(VstKeyCode&) override { return false; }
    bool onWheel(float) override { return false; }
    bool setKnobMode(VstInt32 mode) override
    {
        knobMode = mode;
        return true;
    }

    // One value for every editor of the module; nothing consults it, hosts only set it.
    static inline std::atomic<VstInt32> knobMode{0};

protected:
    ERect rect{};
};
