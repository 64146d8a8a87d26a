// The effect's editor. Each open builds a fresh panel; parameter changes from any thread reach it
// through a mailbox that idle empties on the UI thread.
//
// Threads: open, close and idle run on the host's UI thread; setParameter on any thread.
#pragma once

#include <atomic>

#include "editor/AEffGUIEditor.h"
#include "editor/ParameterMailbox.h"

class hveditor10 : public AEffGUIEditor {
public:
    explicit hveditor10(AudioEffect* effect);
    ~hveditor10() override;

    bool open(void* parent) override;
    void close() override;

    // Called by the effect after a change it did not get from the panel; any thread.
    void setParameter(VstInt32 index, float value);
    bool isEditorOpen() const { return editorOpen.load(std::memory_order_relaxed); }

private:
    AudioEffect* synth;
    std::atomic<bool> editorOpen{false};
    ParameterMailbox mailbox;
};
