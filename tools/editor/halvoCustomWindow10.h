// The panel's floating window: a top-level window of its own that the editor embeds the panel in,
// for trying the panel without a host. Closing it closes the editor first, so the effect stops
// passing changes to a panel that is going away.
#pragma once

#include "tools/vsthost/HostWindow.h"
#include "tools/vsthost/VstPlugin.h"

class halvoCustomWindow10 : public HostWindow {
public:
    halvoCustomWindow10(const VstPlugin& plugin, int width, int height);
    ~halvoCustomWindow10();

    // The handle the editor was opened with.
    void* winPointerRef() const { return reinterpret_cast<void*>(uintptr_t{id()}); }
    // Opens the editor in this window; false when it refused.
    bool show();
    void close();

private:
    const VstPlugin& plugin;
    bool editorOpen = false;
};
