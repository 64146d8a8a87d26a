// The editor base: a fixed rectangle the host reads, the defaults of an editor that keeps no keys
// and ignores the knob mode, and how an effect tells its editor of a parameter change. An effect
// knows its editor through this class only.
#pragma once

#include <atomic>

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
    // A change the editor should show, from any thread (the audio thread included).
    virtual void setParameter(VstInt32, float) {}
    // Whether the editor is showing a panel that changes should reach.
    virtual bool isEditorOpen() const { return false; }

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
