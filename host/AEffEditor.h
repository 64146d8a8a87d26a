// The editor as the dispatcher sees it: the operations the editor opcodes reach.
#pragma once

#include "host/vst2.h"

class AudioEffect;

class AEffEditor {
public:
    explicit AEffEditor(AudioEffect* effect) : effect(effect) {}
    virtual ~AEffEditor() = default;

    AEffEditor(const AEffEditor&) = delete;
    AEffEditor& operator=(const AEffEditor&) = delete;

    virtual AudioEffect* getEffect() { return effect; }
    virtual bool getRect(ERect** rect)
    {
        *rect = nullptr;
        return false;
    }
    virtual bool open(void* ptr)
    {
        systemWindow = ptr;
        return false;
    }
    virtual void close() { systemWindow = nullptr; }
    virtual bool isOpen() { return systemWindow != nullptr; }
    virtual void idle() {}
    virtual bool onKeyDown(VstKeyCode&) { return false; }
    virtual bool onKeyUp(VstKeyCode&) { return false; }
    virtual bool onWheel(float) { return false; }
    virtual bool setKnobMode(VstInt32) { return false; }

protected:
    AudioEffect* effect;
    void* systemWindow = nullptr;
};
