// The effect's editor. Each open builds a fresh panel and, given a host window, shows it in a
// child window of that; parameter changes from any thread reach the panel through a mailbox
// that idle empties on the UI thread.
//
// It draws at the scale the desktop asks for (platform/DesktopScale.h), read once when the
// editor is made with its effect, so that the rectangle a host sizes its window from is right
// from the first question: 253 x 400 times the scale.
//
// Threads: open, close and idle run on the host's UI thread (every Linux host uses one thread for
// all three); setParameter on any thread, the audio thread included.
#pragma once

#include <atomic>
#include <memory>

#include "editor/EffectParameters.h"
#include "editor/ParameterMailbox.h"
#include "host/AEffGUIEditor.h"

class HalvoUiView10;
class X11Window;

class hveditor10 : public AEffGUIEditor {
public:
    // Reads HVTREMOLO_SILENT_PANEL here, once: whether panel edits are told to the host; and the
    // desktop's scale.
    explicit hveditor10(AudioEffectX* effect);
    ~hveditor10() override;

    bool open(void* parent) override;
    void close() override;
    void idle() override;

    // Called by the effect after a change it did not get from the panel; any thread.
    void setParameter(VstInt32 index, float value) override;
    bool isEditorOpen() const override { return editorOpen.load(std::memory_order_relaxed); }

private:
    // What the panel reads and writes, and how the host hears of it.
    EffectParameters parameters;
    const int scale;
    std::atomic<bool> editorOpen{false};
    ParameterMailbox mailbox;
    // UI thread only. The window goes before the panel it shows.
    std::unique_ptr<HalvoUiView10> panelView;
    std::unique_ptr<X11Window> window;
};
